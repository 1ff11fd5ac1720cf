// Whether a process runs, by its id: this one does, ids no process has
// don't. (A process that ended is covered where qvt clears the settings a
// killed run left behind.)
#include <gtest/gtest.h>

#include "foundation/platform/crashdump.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

TEST(ProcessRunning, ThisProcessRunsAndUnusedIdsDont) {
    EXPECT_TRUE(PlatformProcessRunning(PlatformProcessId()));
    EXPECT_FALSE(PlatformProcessRunning(0));
    EXPECT_FALSE(PlatformProcessRunning(0x7FFFFFF0u));
    EXPECT_FALSE(PlatformProcessRunning(0xFFFFFFFFu)) << "beyond what an id can be";
}

// A program that does not exist is a failure at once, not one waited on
// as the failures that may pass are; its output file is still made.
TEST(ProcessRunning, AMissingProgramFailsAndLeavesItsOutputFileEmpty) {
    TestFolder dir;
    clStringList arguments;
    int code = -7;
    clString missing = dir.File(u"no such program");
    missing.Append(PlatformExecutableSuffix());
    EXPECT_FALSE(PlatformRunProcess(missing, arguments, dir.File(u"out.txt"), &code));
    EXPECT_EQ(code, -7) << "no exit code of a process that never ran";
    EXPECT_EQ(ReadBytes(dir.File(u"out.txt")), "");
}
