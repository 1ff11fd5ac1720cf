// Files passed between processes of the program: the hand-over of a list
// file to an options window that is open in another process, and the
// re-convert launch that sends failed files back through the same road.
//
// The hand-over is one-way: the sender appends its paths to a file in the
// user's application data and sets a named event; the window that holds
// the event reads, resets and deletes. The event's existence is the only
// sign that such a window is open.
#pragma once

#include <functional>

#include "foundation/clstring.h"

class clConversionInput;
class clStringList;
class XEvent;

constexpr const char16_t* kHandOverEventName = u"evtCanAddFilesToExistingTC";

// The hand-over file: "Quillotone" + separator + "AddFilesToExistingTC.bin"
// in the application data folder.
clString HandOverFilePath();

// The sending side. True when an options window took the files: they are
// then appended to the hand-over file and the event is set. The list file
// itself stays where it is in that case.
bool HandOverToOpenWindow(const clString& listFile);

// The receiving side, one tick of the window's timer: when `event` is set,
// every non-empty line of the hand-over file goes through AddSource with
// the duplicate check, the event is reset and the file deleted. An
// unreadable file leaves the event set for the next tick. True when files
// were read.
bool TakeHandedOverFiles(XEvent& event, clConversionInput& input);

// Starts a process, not waiting for it; false when nothing was started.
using clProgramStarter = std::function<bool(const clString& program, const clStringList& arguments)>;

// The re-convert action: the paths go into a "QvS" temporary file in the
// hand-over format, and TrackConverter from `programFolder` is started on
// it with -list_to_conv. If the launch fails the temporary file is
// deleted. False when the file could not be written or nothing started.
bool StartReconvert(const clStringList& sourcePaths, const clString& programFolder, const clProgramStarter& start);
