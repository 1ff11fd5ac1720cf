// The main of the window tests: the toolkit starts headless before any
// test runs. On Linux that is Qt's offscreen platform unless the caller
// chose one; under Wine the prefix's null display driver.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "toolkit/application.h"

int main(int argc, char** argv) {
#if !defined(_WIN32)
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
#endif
    ::testing::InitGoogleTest(&argc, argv);
    if (!ToolkitStart()) {
        std::fprintf(stderr, "no window can be made here\n");
        return 1;
    }
    return RUN_ALL_TESTS();
}
