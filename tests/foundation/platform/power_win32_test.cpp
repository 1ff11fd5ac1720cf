// Only what is safe to run: the real actions end the session.
#include <gtest/gtest.h>

#include "foundation/platform/power.h"

TEST(PowerAction, UnknownCodesDoNothingAndKeepAwakeTogglesQuietly) {
    EXPECT_FALSE(PlatformPowerAction(0));
    EXPECT_FALSE(PlatformPowerAction(6));
    PlatformKeepAwake(true);
    PlatformKeepAwake(false);
}
