// The platform's modal question: MessageBoxW on Windows; on POSIX, until a
// window toolkit is present, a prompt on the controlling terminal.
// Returns the button id (1 OK, 2 Cancel, 3 Abort, 4 Retry, 5 Ignore, 6 Yes,
// 7 No), or -1 when nobody can be asked (no terminal); the caller then takes
// the default answer.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

int PlatformMessageBox(const clString& text, const clString& caption, uint32_t type);
