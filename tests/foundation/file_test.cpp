#include "foundation/file.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/folders.h"
#include "foundation/messagebox.h"
#include "foundation/pathsyntax.h"
#include "foundation/pathtext.h"
#include "foundation/platform/filesystem.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

namespace {

std::vector<std::u16string> Lines(const clString& path, bool wide, bool utf8) {
    clFile file;
    file.fileName = path;
    file.Open(clAccessRead, clOpenExisting, false, true);
    std::vector<std::u16string> lines;
    clString line;
    while (file.ReadLine(line, wide, utf8)) {
        lines.push_back(U(line));
        if (lines.size() > 100000) break;  // a loop that never ends is a failure, not a hang
    }
    return lines;
}

struct AnswerScript {
    std::vector<std::u16string> asked;
    int retries;
    AnswerScript(int retryCount) : retries(retryCount) {
        SetMessageBoxHandler([this](const clString& text, const clString& caption, uint32_t type) {
            asked.push_back(U(caption) + u"|" + U(text) + u"|" + static_cast<char16_t>(u'0' + (type % 10)));
            return retries-- > 0 ? clIdRetry : clIdCancel;
        });
    }
    ~AnswerScript() { SetMessageBoxHandler(nullptr); }
};

}  // namespace

TEST(File, ReadLine_ByteMode) {
    TestFolder dir;
    clString path = dir.File(u"lines.txt");
    WriteBytes(path, "a\r\nb\r\n\r\nc\nd\re");
    EXPECT_EQ(Lines(path, false, false), (std::vector<std::u16string>{u"a", u"b", u"", u"c", u"d", u"e"}));
    WriteBytes(path, "last\r");
    // Reading taken: a CR at the very end gives the line once; nothing is
    // stepped back over when no byte followed it.
    EXPECT_EQ(Lines(path, false, false), (std::vector<std::u16string>{u"last"}));
    WriteBytes(path, "");
    EXPECT_TRUE(Lines(path, false, false).empty());
    WriteBytes(path, "\r");
    EXPECT_EQ(Lines(path, false, false), (std::vector<std::u16string>{u""}));
}

TEST(File, ReadLine_Utf8ModeAndByteOrderMarkOnlyAtLineStart) {
    TestFolder dir;
    clString path = dir.File(u"utf8.txt");
    WriteBytes(path,
               "\xEF\xBB\xBF"
               "caf\xC3\xA9\r\n\xEF\xBB\xBFx\r\ny\xEF\xBB\xBF\r\n\xEF"
               "ab\r\n\xF0\x9F\x8E\xB5");
    EXPECT_EQ(Lines(path, false, true),
              (std::vector<std::u16string>{u"caf\u00e9", u"x", u"y\uFEFF", u"\uFFFDab", u"\U0001F3B5"}));
}

TEST(File, ReadLine_WideModeWithMarksOddBytesAndSurrogates) {
    TestFolder dir;
    clString path = dir.File(u"wide.txt");
    WriteBytes(path, Utf16Le(u"\uFEFFa\r\nb\r\n\uFEFFc\rd\n\U0001F3B5\u00e9\r\n") + "Z");
    EXPECT_EQ(Lines(path, true, false), (std::vector<std::u16string>{u"a", u"b", u"c", u"d", u"\U0001F3B5\u00e9"}));
    const char lone[] = {0x00, static_cast<char>(0xD8), '\r', 0, '\n', 0};
    WriteBytes(path, std::string(lone, sizeof lone));
    auto lines = Lines(path, true, false);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], std::u16string(1, static_cast<char16_t>(0xD800)));
}

TEST(File, ReadShortAtEndIsNoFailureAndClosedFileFails) {
    TestFolder dir;
    clString path = dir.File(u"forty.bin");
    WriteBytes(path, std::string(40, 'x'));
    clFile file;
    file.fileName = path;
    file.Open(clAccessRead, clOpenExisting, false, true);
    ASSERT_NE(file.handle, clInvalidHandle);
    char buffer[100];
    bool failed = true;
    EXPECT_EQ(file.Read(buffer, 100, &failed), 40u);
    EXPECT_FALSE(failed);
    file.Close();
    EXPECT_EQ(file.Read(buffer, 100, &failed), 0u);
    EXPECT_TRUE(failed);
    EXPECT_TRUE(file.Write(nullptr, 0));
    EXPECT_FALSE(file.Write(buffer, 1));
    EXPECT_EQ(clFile::GetFileSize64(path), 40u);
    bool sizeFailed = false;
    EXPECT_EQ(clFile::GetFileSize64(dir.File(u"missing"), &sizeFailed), 0u);
    EXPECT_TRUE(sizeFailed);
}

TEST(File, OpenFailureAsksRetryAndRepeats) {
    TestFolder dir;
    AnswerScript script(2);
    clFile file;
    file.fileName = dir.File(u"missing\u00e9.txt");
    file.Open(clAccessRead, clOpenExisting, true, true);
    EXPECT_EQ(file.handle, clInvalidHandle);
    ASSERT_EQ(script.asked.size(), 3u);
    EXPECT_EQ(script.asked[0], u"File Read Error|Unable to open '" + U(file.fileName) + u"'|9");
    clFile empty;
    AnswerScript once(0);
    empty.Open(clAccessWrite, clCreateAlways, true, false);
    ASSERT_EQ(once.asked.size(), 1u);
    EXPECT_EQ(once.asked[0], u"File Write Error|Unable to open ''|9");
}

TEST(File, WriteOfNullBufferWithCountTellsTheUser) {
    AnswerScript script(0);
    clFile file;
    file.showErrors = true;
    EXPECT_FALSE(file.Write(nullptr, 5));
    ASSERT_EQ(script.asked.size(), 1u);
    EXPECT_EQ(script.asked[0], u"File Write Error|Error writing a NULL buffer to file|4");
}

TEST(File, CreateNewRefusesExistingAndFolderIsNoFile) {
    TestFolder dir;
    clFile file;
    file.fileName = dir.File(u"once");
    file.Open(clAccessWrite, clCreateNew, false, true);
    ASSERT_NE(file.handle, clInvalidHandle);
    file.Close();
    file.Open(clAccessWrite, clCreateNew, false, true);
    EXPECT_EQ(file.handle, clInvalidHandle);
    EXPECT_EQ(PlatformGetLastError(), clErrorFileExists);
    clFile folder;
    folder.fileName = dir.Path();
    folder.Open(clAccessRead, clOpenExisting, false, true);
    EXPECT_EQ(folder.handle, clInvalidHandle);
    clFile deep;
    deep.fileName = dir.File(u"no\u00e9such/x");
    if (NativePathSyntax().IsWindows()) deep.fileName = dir.File(u"no\u00e9such\\x");
    deep.Open(clAccessWrite, clCreateNew, false, true);
    EXPECT_EQ(PlatformGetLastError(), clErrorPathNotFound);
}

TEST(File, ReadAndWriteFailuresAskRetryWithTheirOwnWords) {
    TestFolder dir;
    clString path = dir.File(u"data.bin");
    ASSERT_TRUE(WriteBytes(path, "abc"));
    AnswerScript script(1);
    clFile writeOnly;
    writeOnly.fileName = path;
    writeOnly.Open(clAccessWrite, clOpenExisting, true, true);
    ASSERT_NE(writeOnly.handle, clInvalidHandle);
    char buffer[4];
    bool failed = false;
    EXPECT_EQ(writeOnly.Read(buffer, 3, &failed), 0u);
    EXPECT_TRUE(failed);
    writeOnly.Close();
    clFile readOnly;
    readOnly.fileName = path;
    readOnly.Open(clAccessRead, clOpenExisting, true, true);
    EXPECT_FALSE(readOnly.Write("xyz", 3));
    ASSERT_EQ(script.asked.size(), 3u);  // read: Retry, then Cancel; write: Cancel
    EXPECT_EQ(script.asked[0], u"File Read Error|Unable to read from '" + U(path) + u"'|9");
    EXPECT_EQ(script.asked[1], script.asked[0]);
    EXPECT_EQ(script.asked[2], u"File Write Error|Unable to write to '" + U(path) + u"'|9");
    EXPECT_EQ(ReadBytes(path), "abc");
}

// One file behind two paths is known as one; a folder, a missing path and
// a file are told apart, links followed.
TEST(FileSystem, SameFileAndKindOfFile) {
    TestFolder dir;
    clString file = dir.File(u"a.wav");
    ASSERT_TRUE(WriteBytes(file, "x"));
    ASSERT_TRUE(WriteBytes(dir.File(u"b.wav"), "x"));
    clString sub = dir.File(u"sub");
    ASSERT_TRUE(MakeFolders(sub));
    clString roundabout = JoinPath(JoinPath(sub, clString(u"..")), clString(u"a.wav"));
    EXPECT_TRUE(PlatformSameFile(file.text, roundabout.text));
    EXPECT_FALSE(PlatformSameFile(file.text, dir.File(u"b.wav").text));
    EXPECT_FALSE(PlatformSameFile(file.text, dir.File(u"missing.wav").text));
    EXPECT_FALSE(PlatformSameFile(dir.File(u"missing.wav").text, dir.File(u"missing.wav").text));
    EXPECT_EQ(PlatformFileKind(file.text), clFileKind::Regular);
    EXPECT_EQ(PlatformFileKind(sub.text), clFileKind::Folder);
    EXPECT_EQ(PlatformFileKind(dir.File(u"missing.wav").text), clFileKind::Missing);
}

// A list file holds one name a line: a name with a line break in it would
// arrive as two other names, so nothing of such a list is written.
TEST(File, ListFilesRefuseANameWithALineBreak) {
    TestFolder dir;
    clString list = dir.File(u"list.txt");
    clStringList lines;
    lines.Add(clString(u"/music/a.wav"));
    ASSERT_TRUE(WriteWideLines(list, lines, false));
    EXPECT_EQ(ReadBytes(list), Utf16Le(u"/music/a.wav\r\n"));
    for (const char16_t* bad : {u"/music/x\n/music/victim.wav", u"/music/x\r.wav"}) {
        clStringList more;
        more.Add(clString(u"/music/b.wav"));
        more.Add(clString(bad));
        EXPECT_FALSE(WriteWideLines(list, more, true));
        EXPECT_EQ(ReadBytes(list), Utf16Le(u"/music/a.wav\r\n"));
    }
}
