// The platform's known folders by CSIDL number, plus the program's own ids
// 20480-20484. Windows asks the shell and the registry. POSIX maps the ids
// that have a meaning there (see knownfolders_posix.cpp) and answers false
// for the rest, so that the caller's fallbacks apply.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

bool PlatformGetKnownFolder(int32_t id, clString& path);
