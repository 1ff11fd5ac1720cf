// The desktop's own dialogs and file drops: choosing files to open and a
// folder, and the paths dropped on a window from a file manager. Each
// back end uses the platform's dialogs (Qt's on Linux, the common dialogs
// on Windows); a form sees the same answers from both.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/messages.h"
#include "toolkit/toolkitapi.h"

class clStringList;

// Asks for one or more existing files. `filters` holds one entry per line
// of the type box: a display text, CR, and the patterns separated by ";".
// False on cancel, with `chosen` empty.
QV_TOOLKIT_API bool ChooseFiles(clWindowHandle owner, const clString& title, const clStringList& filters,
                                const clString& initialFolder, clStringList& chosen);
// Asks where to save a file: one filter line as for ChooseFiles; a name
// typed without an extension gets `defaultExtension` (no dot), and an
// existing file is replaced only once the user agreed. Empty on cancel.
QV_TOOLKIT_API clString ChooseSaveFile(clWindowHandle owner, const clString& title, const clString& filter,
                                       const clString& defaultExtension);
// Asks for a folder; empty on cancel.
QV_TOOLKIT_API clString ChooseFolder(clWindowHandle owner, const clString& title);

// Lets files be dropped on a window: each drop reaches it as kWmDropFiles,
// whose wParam DroppedPaths reads.
QV_TOOLKIT_API void WindowAcceptDrops(clWindowHandle window, bool accept);
QV_TOOLKIT_API void DroppedPaths(uintptr_t drop, clStringList& paths);
// Sends a drop of `paths` to a window as the desktop would, for tests.
QV_TOOLKIT_API void SimulateDrop(clWindowHandle window, const clStringList& paths);

// Brings a top window to the front and gives it the input.
QV_TOOLKIT_API void WindowBringToFront(clWindowHandle window);
