// The direct copy run on the test's thread: whole copies only, a cancel
// that leaves the old output as it was, and the failures it reports.
#include "engine/directcopy.h"

#include <gtest/gtest.h>

#include "engine/workerslot.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathsyntax.h"
#include "foundation/pathtext.h"
#include "foundation/syncobjects.h"
#include "tests/support/testfolder.h"

namespace {

class DirectCopyTest : public ::testing::Test {
protected:
    TestFolder dir;
    clWorkerEnvironment env;
    clWorkerSlot slot{env};
    XEvent stop;
    std::string sourceBytes;

    DirectCopyTest() {
        stop.Create(nullptr);
        slot.cancelEvent.Create(nullptr);
        // Several blocks and a short one at the end.
        for (int i = 0; i < 200000; ++i) sourceBytes.push_back(static_cast<char>(i * 7 % 251));
        slot.sourcePath = dir.File(u"in.flac");
        WriteBytes(slot.sourcePath, sourceBytes);
        slot.outputPath = JoinPath(Folder(), clString(u"out.flac"));
    }
    clString Folder() const { return dir.File(u"new folder"); }
    clString Temporary() const { return JoinPath(Folder(), clString(u"out.tmp")); }
};

}  // namespace

TEST_F(DirectCopyTest, CopiesWholeIntoANewFolderAndReplacesAnOldOutput) {
    RunDirectCopy(stop, slot);
    EXPECT_EQ(U(slot.copyErrors), u"");
    EXPECT_EQ(slot.copyPercent.load(), 100);
    EXPECT_TRUE(ReadBytes(slot.outputPath) == sourceBytes);
    EXPECT_FALSE(PathExists(Temporary()));

    WriteBytes(slot.sourcePath, "shorter");
    RunDirectCopy(stop, slot);
    EXPECT_EQ(ReadBytes(slot.outputPath), "shorter");
    EXPECT_TRUE(ReadBytes(slot.sourcePath) == "shorter");
}

TEST_F(DirectCopyTest, ACancelLeavesTheOldOutputAndNoTemporary) {
    MakeFolders(Folder());
    WriteBytes(slot.outputPath, "old output");
    slot.cancelEvent.Set();
    RunDirectCopy(stop, slot);
    EXPECT_EQ(ReadBytes(slot.outputPath), "old output");
    EXPECT_FALSE(PathExists(Temporary()));
    slot.cancelEvent.Reset();
    stop.Set();  // the thread's own stop event counts the same
    RunDirectCopy(stop, slot);
    EXPECT_EQ(ReadBytes(slot.outputPath), "old output");
    EXPECT_FALSE(PathExists(Temporary()));
}

TEST_F(DirectCopyTest, CopyOntoItselfAndAMissingSourceTouchNothing) {
    slot.outputPath = slot.sourcePath;
    RunDirectCopy(stop, slot);
    EXPECT_EQ(slot.copyPercent.load(), 100);
    EXPECT_TRUE(ReadBytes(slot.sourcePath) == sourceBytes);

    slot.sourcePath = dir.File(u"gone.flac");
    slot.outputPath = JoinPath(Folder(), clString(u"out.flac"));
    RunDirectCopy(stop, slot);
    EXPECT_EQ(U(slot.copyErrors), u"Error accessing source file (is open in another program?)");
    EXPECT_FALSE(PathExists(slot.outputPath));
}

// Windows refuses to delete an output another program holds open; the
// copy then reports it and keeps that output. POSIX lets the name go while
// the holder keeps reading the old data, so there the copy takes its place.
TEST_F(DirectCopyTest, AnOutputHeldOpenElsewhere) {
    MakeFolders(Folder());
    WriteBytes(slot.outputPath, "old output");
    clFile holder;
    holder.fileName = slot.outputPath;
    holder.shareMode = 0;
    holder.Open(clAccessRead, clOpenExisting, false, true);
    ASSERT_NE(holder.handle, clInvalidHandle);
    RunDirectCopy(stop, slot);
    EXPECT_FALSE(PathExists(Temporary()));
    if (NativePathSyntax().IsWindows()) {
        EXPECT_EQ(U(slot.copyErrors), u"Error deleting existing destination file (is open in another program?)");
        holder.Close();
        EXPECT_EQ(ReadBytes(slot.outputPath), "old output");
    } else {
        EXPECT_EQ(U(slot.copyErrors), u"");
        holder.Close();
        EXPECT_TRUE(ReadBytes(slot.outputPath) == sourceBytes);
    }
}
