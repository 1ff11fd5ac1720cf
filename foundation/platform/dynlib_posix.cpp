#include <dlfcn.h>

#include "foundation/platform/dynlib.h"
#include "foundation/platform/posixsupport_posix.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QV_LEAK_CHECKED 1
#endif
#endif

// Under the leak checker a library stays mapped after it is freed, so
// that what it left behind at exit is reported with its name (and can be
// told apart from the program's own leaks) rather than as an unknown place.
#if defined(QV_LEAK_CHECKED)
constexpr int kKeepMapped = RTLD_NODELETE;
#else
constexpr int kKeepMapped = 0;
#endif

clLibraryHandle PlatformLoadLibrary(const char16_t* path) {
    return reinterpret_cast<clLibraryHandle>(::dlopen(NativePath(path).c_str(), RTLD_NOW | RTLD_LOCAL | kKeepMapped));
}

void* PlatformGetSymbol(clLibraryHandle library, const char* name) {
    return library == 0 ? nullptr : ::dlsym(reinterpret_cast<void*>(library), name);
}

void PlatformFreeLibrary(clLibraryHandle library) {
    if (library != 0) ::dlclose(reinterpret_cast<void*>(library));
}

const char16_t* PlatformLibrarySuffix() { return u".so"; }
