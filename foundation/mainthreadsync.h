// XMainThreadSync: runs tasks on the main thread, in the order they were
// posted, with no lock held while a task runs.
//
// Any thread may Post. The first post into an empty queue asks the main
// loop to wake once (a burst of posts gives one wake-up); the main loop
// then calls RunPending. The window toolkit supplies the wake-up (a message
// to a hidden window); until one is installed, posts only queue. A task
// that throws is dropped and the queue goes on.
#pragma once

#include <functional>
#include <list>
#include <mutex>

class XMainThreadSync {
public:
    using Task = std::function<void()>;
    // Asks the main loop to call RunPending; true when the request was made.
    using Wake = std::function<bool()>;

    static XMainThreadSync& Instance();

    void Post(Task task);
    void SetWake(Wake wake);
    // Called by the main loop when woken.
    void RunPending();

private:
    std::mutex lock;
    std::list<Task> tasks;
    bool messagePending = false;
    Wake wakeMainLoop;
};
