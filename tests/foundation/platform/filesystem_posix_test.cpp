// File-system facts only POSIX has: hard links, and pipes and devices
// with names like audio files.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/platform/filesystem.h"
#include "tests/support/testfolder.h"

TEST(FileSystemPosix, AHardLinkIsTheSameFileAndAPipeIsNoRegularFile) {
    TestFolder dir;
    clString file = dir.File(u"a.wav");
    ASSERT_TRUE(WriteBytes(file, "x"));
    clString link = dir.File(u"b.wav");
    ASSERT_EQ(::link(file.ToUtf8(), link.ToUtf8()), 0);
    EXPECT_TRUE(PlatformSameFile(file.text, link.text));
    clString pipe = dir.File(u"x.wav");
    ASSERT_EQ(::mkfifo(pipe.ToUtf8(), 0600), 0);
    EXPECT_EQ(PlatformFileKind(pipe.text), clFileKind::Other);
    EXPECT_EQ(PlatformFileKind(u"/dev/null"), clFileKind::Other);
    EXPECT_FALSE(PlatformIsReadOnlyVolume(dir.Path().text));
}
