// Dynamic libraries: LoadLibraryW / GetProcAddress / FreeLibrary on
// Windows, dlopen / dlsym / dlclose on POSIX (RTLD_NOW | RTLD_LOCAL, so a
// library with unresolved symbols fails to load instead of failing later).
#pragma once

#include <cstdint>

using clLibraryHandle = intptr_t;  // 0 when none

clLibraryHandle PlatformLoadLibrary(const char16_t* path);
void* PlatformGetSymbol(clLibraryHandle library, const char* name);
void PlatformFreeLibrary(clLibraryHandle library);
// ".dll" on Windows, ".so" on POSIX.
const char16_t* PlatformLibrarySuffix();
