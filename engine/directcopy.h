// The direct copy: a job whose source is copied byte for byte instead of
// converted, on the slot's copy thread, reporting to the slot as a worker
// would. Only one copy runs at a time on the whole machine (the mutex
// "mutReadFileOneAtTime"), so that copies from one disk don't thrash it.
// The copy goes to a ".tmp" beside the output and takes its place only
// when complete; a cancel or a failure leaves the old output untouched.
#pragma once

class XEvent;
class clWorkerSlot;

// The body of the copy thread; `stop` is the thread's stop event.
void RunDirectCopy(XEvent& stop, clWorkerSlot& slot);
