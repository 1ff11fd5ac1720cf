// The main of the window tests: the toolkit starts headless before any
// test runs. On Linux that is Qt's offscreen platform unless the caller
// chose one; under Wine the prefix's null display driver.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "toolkit/application.h"

#if defined(QV_LSAN_SUPPRESSIONS)
// Under LeakSanitizer: fontconfig, which Qt draws text through, keeps
// caches it never frees. Not this program's leaks.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
#endif

int main(int argc, char** argv) {
#if !defined(_WIN32)
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
#endif
#if defined(QV_LSAN_SUPPRESSIONS)
    // The same for the programs the tests start.
    setenv("LSAN_OPTIONS", "suppressions=" QV_LSAN_SUPPRESSIONS, 0);
#endif
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests (as the build does) needs no windows.
    if (::testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    if (!ToolkitStart()) {
        std::fprintf(stderr, "no window can be made here\n");
        return 1;
    }
    return RUN_ALL_TESTS();
}
