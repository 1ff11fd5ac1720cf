// Files passed between processes: the hand-over to an open options window
// (both sides, and the real TrackConverter as the sender) and the
// re-convert launch.
#include "engine/handover.h"

#include <gtest/gtest.h>

#include "engine/conversioninput.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "foundation/syncobjects.h"
#include "plugins/sourcefile.h"
#include "tests/support/testfolder.h"

namespace {

// Each test keeps the hand-over file in a folder of its own (on Windows the
// application data folder is the test prefix's own) and starts without it.
class HandOverTest : public testing::Test {
protected:
    TestFolder dir;
    void SetUp() override {
        PlatformSetEnvironment(u"XDG_DATA_HOME", dir.Path().text);
        DeleteFileEx(HandOverFilePath());
    }
    void TearDown() override { DeleteFileEx(HandOverFilePath()); }

    clString List(const char16_t* name, const std::u16string& lines) {
        clString path = dir.File(name);
        WriteBytes(path, Utf16Le(lines));
        return path;
    }
};

}  // namespace

TEST_F(HandOverTest, NoOpenWindowMeansNoHandOver) {
    clString list = List(u"l.txt", u"b.wav\r\na.wav\r\n");
    EXPECT_FALSE(HandOverToOpenWindow(list));
    EXPECT_FALSE(PathExists(HandOverFilePath()));
    // The event this process created to look was closed again: a later
    // look still finds no window.
    EXPECT_FALSE(HandOverToOpenWindow(list));
}

TEST_F(HandOverTest, SendersQueueSortedLinesAndTheWindowTakesThemOnce) {
    XEvent window;
    ASSERT_TRUE(window.Create(kHandOverEventName));
    clString first = List(u"first.txt", u"c:\\B.wav\r\n\r\nc:\\a.wav\r\n");
    clString second = List(u"second.txt", u"c:\\c.wav\r\nc:\\A.WAV\r\n");
    ASSERT_TRUE(HandOverToOpenWindow(first));
    ASSERT_TRUE(HandOverToOpenWindow(second));
    EXPECT_TRUE(window.IsSet());
    // Appended per sender, each sorted ignoring case, no byte-order mark.
    EXPECT_EQ(ReadBytes(HandOverFilePath()), Utf16Le(u"c:\\a.wav\r\nc:\\B.wav\r\nc:\\A.WAV\r\nc:\\c.wav\r\n"));
    EXPECT_TRUE(PathExists(first));  // the senders' lists stay

    clConversionInput input;
    input.extensions.Add(u".wav");
    input.AddSource(clString(u"c:\\a.wav"), false);
    ASSERT_TRUE(TakeHandedOverFiles(window, input));
    ASSERT_EQ(input.sources.count, 3);  // both spellings of a.wav are one file
    EXPECT_EQ(U(input.Source(1).path), u"c:\\B.wav");
    EXPECT_EQ(U(input.Source(2).path), u"c:\\c.wav");
    EXPECT_FALSE(window.IsSet());
    EXPECT_FALSE(PathExists(HandOverFilePath()));
    EXPECT_FALSE(TakeHandedOverFiles(window, input));  // nothing until the next sender
}

TEST_F(HandOverTest, AMissingFileLeavesTheEventForTheNextTick) {
    XEvent window;
    ASSERT_TRUE(window.Create(kHandOverEventName));
    window.Set();
    clConversionInput input;
    EXPECT_FALSE(TakeHandedOverFiles(window, input));
    EXPECT_TRUE(window.IsSet());
}

// The real program as the second process: with a window open it appends
// its files and ends without converting anything.
TEST_F(HandOverTest, TrackConverterWithABareListHandsItsFilesOver) {
    XEvent window;
    ASSERT_TRUE(window.Create(kHandOverEventName));
    clString list = List(u"list.txt", u"x\\two.wav\r\nx\\one.wav\r\n");
    clStringList arguments;
    arguments.Add(clString(u"-list_to_conv=", list.text));
    int exitCode = -1;
    ASSERT_TRUE(PlatformRunProcess(ProgramPath(u"TrackConverter"), arguments, dir.File(u"out.txt"), &exitCode));
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(ReadBytes(dir.File(u"out.txt")), "");
    EXPECT_TRUE(window.IsSet());
    EXPECT_EQ(ReadBytes(HandOverFilePath()), Utf16Le(u"x\\one.wav\r\nx\\two.wav\r\n"));
    EXPECT_TRUE(PathExists(list));
}

TEST_F(HandOverTest, ReconvertStartsTrackConverterOnAListOfItsOwn) {
    clStringList failed;
    failed.Add(u"/music/b.flac");
    failed.Add(u"/music/a.flac");
    clString program;
    clStringList arguments;
    auto record = [&](const clString& p, const clStringList& a) {
        program = p;
        arguments.Clear();
        for (int64_t i = 0; i < a.Count(); ++i) arguments.Add(a[i]);
        return true;
    };
    ASSERT_TRUE(StartReconvert(failed, clString(u"/opt/qv"), record));
    EXPECT_EQ(U(GetFileName(program)), std::u16string(u"TrackConverter") + PlatformExecutableSuffix());
    ASSERT_EQ(arguments.Count(), 2);
    EXPECT_EQ(U(arguments[0]), u"-list_to_conv");
    clString listFile = arguments[1];
    EXPECT_EQ(U(GetFileName(listFile)).substr(0, 3), u"QvS");
    // In the order given: the receiving side sorts.
    EXPECT_EQ(ReadBytes(listFile), Utf16Le(u"/music/b.flac\r\n/music/a.flac\r\n"));
    DeleteFileEx(listFile);

    auto refuse = [&](const clString&, const clStringList& a) {
        arguments.Clear();
        arguments.Add(a[1]);
        return false;
    };
    EXPECT_FALSE(StartReconvert(failed, clString(u"/opt/qv"), refuse));
    EXPECT_FALSE(PathExists(arguments[0]));
}
