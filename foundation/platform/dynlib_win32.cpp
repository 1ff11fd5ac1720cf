#include <windows.h>

#include "foundation/platform/dynlib.h"

clLibraryHandle PlatformLoadLibrary(const char16_t* path) {
    return reinterpret_cast<clLibraryHandle>(LoadLibraryW(reinterpret_cast<LPCWSTR>(path)));
}

void* PlatformGetSymbol(clLibraryHandle library, const char* name) {
    if (library == 0) return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

void PlatformFreeLibrary(clLibraryHandle library) {
    if (library != 0) FreeLibrary(reinterpret_cast<HMODULE>(library));
}

const char16_t* PlatformLibrarySuffix() { return u".dll"; }
