#include <gtest/gtest.h>

#include <vector>

#include "foundation/commandlinetext.h"
#include "foundation/messagebox.h"
#include "foundation/stringlist.h"
#include "foundation/userdirs.h"
#include "foundation/utf.h"
#include "foundation/wildcard.h"
#include "tests/support/testfolder.h"

TEST(Wildcard, WindowsFindRules) {
    EXPECT_TRUE(clWildcardMatch(u"*.*", u"noext"));
    EXPECT_TRUE(clWildcardMatch(u"*.mp3", u"A.MP3"));
    EXPECT_FALSE(clWildcardMatch(u"*.mp3", u"a.mp3x"));
    EXPECT_TRUE(clWildcardMatch(u"a?c*", u"abcdef"));
    EXPECT_TRUE(clWildcardMatch(u"*", u""));
    EXPECT_FALSE(clWildcardMatch(u"?", u""));
    EXPECT_TRUE(clWildcardMatch(u"*a*a*a*a*b", u"aaaaaaaaaaaaaaaaaaaaaaaaaaaaab"));
}

TEST(CommandLineText, RebuildFromArgvKeepsValuesWhole) {
    clStringList args;
    args.Add(u"-list_to_conv=/tmp/a b.txt");
    args.Add(u"-skip_ready_to_conv");
    args.Add(u"two words");
    args.Add(u"-x");
    EXPECT_EQ(U(BuildCommandLineText(clString(u"/opt/q/TrackConverter"), args)),
              u"\"/opt/q/TrackConverter\" -list_to_conv=\"/tmp/a b.txt\" -skip_ready_to_conv \"two words\" -x");
}

TEST(UserDirs, ParsesHomeRelativeAbsoluteAndSkipsJunk) {
    clString home(u"/home/u");
    clString text(
        u"# comment\nXDG_MUSIC_DIR=\"$HOME/Music\"\nXDG_DESKTOP_DIR=\"/data/Desk top\"\n"
        u"XDG_VIDEOS_DIR=\"relative\"\nXDG_PICTURES_DIR=\"$HOME/A\\\"B\"\nXDG_DOCUMENTS_DIR=\"$HOME\n");
    clString folder;
    ASSERT_TRUE(FindUserDir(text, u"XDG_MUSIC_DIR", home, folder));
    EXPECT_EQ(U(folder), u"/home/u/Music");
    ASSERT_TRUE(FindUserDir(text, u"XDG_DESKTOP_DIR", home, folder));
    EXPECT_EQ(U(folder), u"/data/Desk top");
    ASSERT_TRUE(FindUserDir(text, u"XDG_PICTURES_DIR", home, folder));
    EXPECT_EQ(U(folder), u"/home/u/A\"B");
    EXPECT_FALSE(FindUserDir(text, u"XDG_VIDEOS_DIR", home, folder));
    EXPECT_FALSE(FindUserDir(text, u"XDG_DOCUMENTS_DIR", home, folder));
    EXPECT_FALSE(FindUserDir(text, u"XDG_MUSIC", home, folder));
}

TEST(Utf8, DecodingReplacesMalformedBytes) {
    clString s;
    const char bytes[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\xB5\xC0\xAF\xED\xA0\x80\xFFz";
    Utf8ToString(bytes, sizeof bytes - 1, s);
    EXPECT_EQ(U(s), u"a\u00e9\u20ac\U0001F3B5\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDz");
}

TEST(MessageBox, DefaultAnswersNeverRiskAnything) {
    EXPECT_EQ(DefaultMessageBoxAnswer(5), clIdCancel);
    EXPECT_EQ(DefaultMessageBoxAnswer(69), clIdCancel);
    EXPECT_EQ(DefaultMessageBoxAnswer(4), clIdNo);
    EXPECT_EQ(DefaultMessageBoxAnswer(0x40000), clIdOk);
    EXPECT_EQ(DefaultMessageBoxAnswer(1), clIdCancel);
}

TEST(CommandLineText, SplitByWindowsRules) {
    struct Case {
        const char16_t* line;
        std::vector<std::u16string> words;
    } cases[] = {
        {u"\"C:\\Program Files\\x.exe\" -a=\"b c\"", {u"C:\\Program Files\\x.exe", u"-a=b c"}},
        {u"  a\tb  ", {u"a", u"b"}},
        {u"a\\\\\"b c\"", {u"a\\b c"}},
        {u"a\\\"b", {u"a\"b"}},
        {u"a\\b", {u"a\\b"}},
        {u"\"a\"\"b\"", {u"a\"b"}},
        {u"\"\"", {u""}},
        {u"", {}},
    };
    for (const Case& c : cases) {
        clStringList words;
        SplitCommandLine(clString(c.line), words);
        ASSERT_EQ(words.Count(), static_cast<int64_t>(c.words.size())) << clString(c.line).ToUtf8();
        for (size_t i = 0; i < c.words.size(); ++i) EXPECT_EQ(U(words[i]), c.words[i]);
    }
}
