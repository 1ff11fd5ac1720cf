// Whether the process has a desktop to open windows on. Asked before the
// window toolkit is loaded at all, so that a run in a terminal never pays
// for loading it.
#pragma once

// Windows: always. POSIX: a platform named for Qt (QT_QPA_PLATFORM, the
// tests' offscreen one among them), a Wayland socket, or an X display
// whose local socket exists (a remote one counts: Qt says if it can't be
// reached). Qt would end the process if it could not reach the display it
// was told of, so a named local display without its socket is none.
bool PlatformHasDisplay();
