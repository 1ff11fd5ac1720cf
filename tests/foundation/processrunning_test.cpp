// Whether a process runs, by its id: this one does, ids no process has
// don't. (A process that ended is covered where qvt clears the settings a
// killed run left behind.)
#include <gtest/gtest.h>

#include "foundation/platform/crashdump.h"
#include "foundation/platform/processinfo.h"

TEST(ProcessRunning, ThisProcessRunsAndUnusedIdsDont) {
    EXPECT_TRUE(PlatformProcessRunning(PlatformProcessId()));
    EXPECT_FALSE(PlatformProcessRunning(0));
    EXPECT_FALSE(PlatformProcessRunning(0x7FFFFFF0u));
    EXPECT_FALSE(PlatformProcessRunning(0xFFFFFFFFu)) << "beyond what an id can be";
}
