// The toolkit is a shared library: the program and the plug-ins whose
// settings pages are built with it share one copy, and with it one
// application object per process. QV_TOOLKIT_API marks what it exports;
// everything else in it stays private to it.
#pragma once

#if defined(_WIN32)
#if defined(QV_TOOLKIT_BUILD)
#define QV_TOOLKIT_API __declspec(dllexport)
#else
#define QV_TOOLKIT_API __declspec(dllimport)
#endif
#else
#define QV_TOOLKIT_API __attribute__((visibility("default")))
#endif
