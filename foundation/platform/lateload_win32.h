// A function of a system library that only some of our programs need,
// found on its first use. Importing user32, shell32 or ole32 outright
// makes every worker load them as it starts (under Wine also their font
// and COM machinery, tens of milliseconds a file), though a worker shows
// no window and opens no document.
#pragma once

#include <windows.h>

template <typename Function>
Function LateProc(const wchar_t* library, const char* name) {
    // The library stays loaded: the functions are called again and again
    // by a program that needs them at all.
    HMODULE module = LoadLibraryW(library);
    if (module == nullptr) return nullptr;
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}
