#include "engine/conversioninput.h"

#include <gtest/gtest.h>

#include "foundation/folders.h"
#include "plugins/sourcefile.h"
#include "tests/support/testfolder.h"

namespace {

void Accept(clConversionInput& input) {
    input.extensions.Add(u".flac");
    input.extensions.Add(u".MP3");
}

}  // namespace

TEST(ConversionInput, AddSourceByExtensionAndDuplicates) {
    clConversionInput input;
    Accept(input);
    input.AddSource(clString(u"C:\\a.FLAC"), true);
    input.AddSource(clString(u"c:\\A.flac"), true);
    input.AddSource(clString(u"c:\\A.flac"), false);
    input.AddSource(clString(u"C:\\b.mp3"), true);
    input.AddSource(clString(u"C:\\notes.txt"), true);
    input.AddSource(clString(u"C:\\noext"), true);
    ASSERT_EQ(input.sources.count, 3);
    EXPECT_EQ(U(input.Source(2).path), u"C:\\b.mp3");
    ASSERT_EQ(input.excludedFiles.Count(), 2);
    EXPECT_EQ(U(input.excludedFiles[0]), u"C:\\notes.txt");
}

TEST(ConversionInput, ListFile_SortedEmptyLinesDroppedAndDeleted) {
    TestFolder dir;
    clConversionInput input;
    Accept(input);
    clString list = dir.File(u"list.txt");
    ASSERT_TRUE(WriteBytes(list, Utf16Le(u"z.flac\r\n\r\nB.mp3\r\n\u00e9\U0001F3B5.flac\r\na.FLAC\r\nreadme.txt")));
    input.LoadListFile(list);
    ASSERT_EQ(input.sources.count, 4);
    EXPECT_EQ(U(input.Source(0).path), u"a.FLAC");
    EXPECT_EQ(U(input.Source(1).path), u"B.mp3");
    EXPECT_EQ(U(input.Source(2).path), u"z.flac");
    EXPECT_EQ(U(input.Source(3).path), u"\u00e9\U0001F3B5.flac");
    EXPECT_EQ(input.excludedFiles.Count(), 1);
    EXPECT_FALSE(PathExists(list));
}

TEST(ConversionInput, BadListFilesReadWhatTheyCan) {
    TestFolder dir;
    struct Case {
        std::string bytes;
        int64_t sources;
    } cases[] = {
        {"", 0},
        {Utf16Le(u"a.flac") + "x", 1},                            // odd byte count: the half unit is dropped
        {Utf16Le(u"a\xD800.flac\r\nb.flac"), 2},                  // a lone high surrogate is kept as a unit
        {Utf16Le(u"\r\r\r\n"), 0},                                // lines with only CR
        {Utf16Le(u"a.flac\r\n\uFEFFb.flac\r\nc\uFEFF.flac"), 3},  // a mark in the middle
    };
    for (const Case& c : cases) {
        clConversionInput input;
        Accept(input);
        clString list = dir.File(u"bad.txt");
        ASSERT_TRUE(WriteBytes(list, c.bytes));
        input.LoadListFile(list);
        EXPECT_EQ(input.sources.count, c.sources) << c.bytes.size();
        EXPECT_FALSE(PathExists(list));
    }
    clConversionInput missing;
    missing.LoadListFile(dir.File(u"does-not-exist.txt"));
    EXPECT_EQ(missing.sources.count, 0);
}

TEST(ConversionInput, TenMegabyteListFile) {
    TestFolder dir;
    std::u16string text;
    int lines = 0;
    while (text.size() * 2 < 10 * 1024 * 1024) {
        text += u"/music/some folder/track number " + std::u16string(1, static_cast<char16_t>(u'a' + lines % 26)) +
                u".flac\r\n";
        ++lines;
    }
    clString list = dir.File(u"big.txt");
    ASSERT_TRUE(WriteBytes(list, Utf16Le(text)));
    clConversionInput input;
    Accept(input);
    input.LoadListFile(list);
    EXPECT_EQ(input.sources.count, lines);
    EXPECT_EQ(U(input.Source(0).path).substr(0, 8), u"/music/s");
}
