#include <dlfcn.h>

#include "foundation/platform/dynlib.h"
#include "foundation/platform/posixsupport_posix.h"

clLibraryHandle PlatformLoadLibrary(const char16_t* path) {
    return reinterpret_cast<clLibraryHandle>(::dlopen(NativePath(path).c_str(), RTLD_NOW | RTLD_LOCAL));
}

void* PlatformGetSymbol(clLibraryHandle library, const char* name) {
    return library == 0 ? nullptr : ::dlsym(reinterpret_cast<void*>(library), name);
}

void PlatformFreeLibrary(clLibraryHandle library) {
    if (library != 0) ::dlclose(reinterpret_cast<void*>(library));
}

const char16_t* PlatformLibrarySuffix() { return u".so"; }
