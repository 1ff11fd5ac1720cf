// A Windows process always has its desktop, whatever the environment says.
#include <gtest/gtest.h>

#include <cstdlib>

#include "foundation/platform/display.h"

TEST(Display, AWindowsProcessAlwaysHasOne) {
    _putenv_s("DISPLAY", "");
    EXPECT_TRUE(PlatformHasDisplay());
}
