#include "naming/outputpath.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/specialfolder.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"
#include "tests/support/testfolder.h"

namespace {

class OutputPath : public ::testing::Test {
protected:
    void SetUp() override {
        SetSettingsRoot(kSettingsHive, kSettingsRoot);
        SetSettingText(clString(), u"FileNameChrReplace");
        SetSettingNumber(0, u"FileNameANSIFilenameOnly");
    }
};

std::unique_ptr<clSourceFile> Tagged(const char16_t* path,
                                     std::initializer_list<std::pair<const char16_t*, const char16_t*>> tags) {
    auto source = std::make_unique<clSourceFile>(clString(path));
    clTagList list;
    for (const auto& [name, value] : tags) list.AddTag(name, value);
    list.SaveBlock(source->tagBlock);
    return source;
}

std::u16string Windows(const clSourceFile& source, const char16_t* folder, const char16_t* naming,
                       const char16_t* fixed = u"") {
    return U(ComputeOutputPath(source, clString(folder), clString(naming), clString(u".mp3"), clString(fixed),
                               clString(), WindowsPathSyntax()));
}

}  // namespace

TEST_F(OutputPath, FastPathBesideTheSource) {
    clSourceFile source{clString(u"C:\\A\\b.c.flac")};
    EXPECT_EQ(Windows(source, u"[origdrive]", u"[origpath]\\[origfilename]"), u"C:\\A\\b.c.mp3");
    // Everything from the last dot of the whole path goes.
    clSourceFile bare{clString(u"C:\\A.B\\track")};
    EXPECT_EQ(Windows(bare, u"[origdrive]", u"[origpath]\\[origfilename]"), u"C:\\A.mp3");
    EXPECT_EQ(Windows(source, u"D:\\Out", u""), u"D:\\Out\\b.c.mp3");
    EXPECT_EQ(Windows(source, u"", u"[artist]"), u"C:\\A\\b.c.mp3");
    EXPECT_EQ(Windows(source, u"D:\\Out", u"[artist]", u"E:\\Mine\\name"), u"E:\\Mine\\name.mp3");
}

TEST_F(OutputPath, NamingCleansTheValuesNotTheStructure) {
    auto source = Tagged(u"C:\\In\\x.flac", {{u"artist", u"Up/Down"}, {u"title", u"Why?"}});
    EXPECT_EQ(Windows(*source, u"D:\\Out", u"[artist]\\[title]"), u"D:\\Out\\Up-Down\\Why\u00bf.mp3");
    auto noArtist = Tagged(u"C:\\In\\x.flac", {{u"title", u"Why?"}});
    EXPECT_EQ(Windows(*noArtist, u"D:\\Out", u"[artist]\\[title]"), u"D:\\Out\\Why\u00bf.mp3");
    EXPECT_EQ(Windows(*noArtist, u"[origdrive]Converted", u"[origpath]\\[title]"), u"C:\\Converted\\In\\Why\u00bf.mp3");
}

// Deliberately unlike the letter of the path rules, where an empty name
// leaves the folder's own name with the extension ("D:\Out.mp3", beside the
// folder, and every such file on one name): the file name takes the
// source's base name, inside the folder the rule named.
TEST_F(OutputPath, AnEmptyNameTakesTheSourcesNameInsideTheFolder) {
    auto untitled = Tagged(u"C:\\In\\x.flac", {{u"artist", u"A"}, {u"title", u"   "}});
    EXPECT_EQ(Windows(*untitled, u"D:\\Out", u"[title]"), u"D:\\Out\\x.mp3");
    EXPECT_EQ(Windows(*untitled, u"D:\\Out", u"[album]"), u"D:\\Out\\x.mp3");
    EXPECT_EQ(Windows(*untitled, u"D:\\Out", u"[artist]\\[title]"), u"D:\\Out\\A\\x.mp3");
    EXPECT_EQ(Windows(*untitled, u"D:\\Out", u"[artist]\\..."), u"D:\\Out\\A\\x.mp3");
    // A source whose base name is dots only ("...wav" has "..") gives "_"s.
    auto dots = Tagged(u"/in/...wav", {});
    EXPECT_EQ(U(ComputeOutputPath(*dots, clString(u"/out"), clString(u"[origfilename]"), clString(u".flac"), clString(),
                                  clString(), PosixPathSyntax())),
              u"/out/__.flac");
    EXPECT_EQ(U(ComputeOutputPath(*dots, clString(u"/out"), clString(), clString(u".flac"), clString(), clString(),
                                  PosixPathSyntax())),
              u"/out/__.flac");
    auto blank = Tagged(u"/in/song.wav", {{u"title", u""}});
    EXPECT_EQ(U(ComputeOutputPath(*blank, clString(u"/out"), clString(u"[title]"), clString(u".flac"), clString(),
                                  clString(), PosixPathSyntax())),
              u"/out/song.flac");
}

// Half a surrogate pair, from a damaged tag or a cut, never reaches a name:
// it is U+FFFD by then, and a cut by length keeps a pair whole.
TEST_F(OutputPath, LoneSurrogatesInTagsBecomeReplacementCharacters) {
    auto damaged = Tagged(u"C:\\In\\x.flac", {{u"title", u"bad \xD83D half"}, {u"album", u"low \xDCE9"}});
    EXPECT_EQ(Windows(*damaged, u"D:\\Out", u"[title]"), u"D:\\Out\\bad \uFFFD half.mp3");
    EXPECT_EQ(Windows(*damaged, u"D:\\Out", u"[album]"), u"D:\\Out\\low \uFFFD.mp3");
    auto emoji = Tagged(u"C:\\In\\x.flac", {{u"title", u"ab\U0001F3B5cd"}});
    EXPECT_EQ(Windows(*emoji, u"D:\\Out", u"[MAXLENGTH]3,[title][]"), u"D:\\Out\\ab.mp3");
    EXPECT_EQ(Windows(*emoji, u"D:\\Out", u"[MAXLENGTH]4,[title][]"), u"D:\\Out\\ab\U0001F3B5.mp3");
    EXPECT_EQ(Windows(*emoji, u"D:\\Out", u"[RIGHT]3,[title][]"), u"D:\\Out\\\uFFFDcd.mp3");
    // The bytes of a source name that is not UTF-8 stay what they are.
    auto latin = Tagged(u"/in/caf\xDCE9.wav", {});
    EXPECT_EQ(U(ComputeOutputPath(*latin, clString(u"/out"), clString(u"[origfilename]"), clString(u".flac"),
                                  clString(), clString(), PosixPathSyntax())),
              u"/out/caf\xDCE9.flac");
}

TEST_F(OutputPath, CharacterTableAndPlainAscii) {
    auto source = Tagged(u"C:\\In\\x.flac", {{u"title", u"Why? Bl\u00e4ck \u6771\u4eac"}});
    SetSettingText(clString(u"?*"), u"FileNameChrReplace");
    EXPECT_EQ(Windows(*source, u"D:\\Out", u"[title]"), u"D:\\Out\\Why Bl\u00e4ck \u6771\u4eac.mp3");
    SetSettingText(clString(u"?"), u"FileNameChrReplace");  // one character is no pair
    EXPECT_EQ(Windows(*source, u"D:\\Out", u"[title]"), u"D:\\Out\\Why? Bl\u00e4ck \u6771\u4eac.mp3");
    SetSettingText(clString(), u"FileNameChrReplace");
    SetSettingNumber(1, u"FileNameANSIFilenameOnly");
    EXPECT_EQ(Windows(*source, u"D:\\Out", u"[title]"), u"D:\\Out\\Why\u00bf Black \u00bf\u00bf.mp3");
}

TEST_F(OutputPath, UniqueMovesOnEachComputation) {
    SetSettingNumber(41, u"Unique");
    clSourceFile source{clString(u"C:\\In\\x.flac")};
    EXPECT_EQ(Windows(source, u"D:\\Out", u"[unique]"), u"D:\\Out\\42.mp3");
    EXPECT_EQ(Windows(source, u"D:\\Out", u"[unique]"), u"D:\\Out\\43.mp3");
    EXPECT_EQ(Windows(source, u"D:\\Out", u""), u"D:\\Out\\x.mp3");
    EXPECT_EQ(GetSettingNumber(u"Unique"), 43u);
}

TEST_F(OutputPath, PosixGivesTheSameFolders) {
    auto source = Tagged(u"/home/u/Music/In/x.flac", {{u"artist", u"AC/DC"}, {u"album", u"Live\\1"}});
    auto posix = [&](const char16_t* folder, const char16_t* naming) {
        return U(ComputeOutputPath(*source, clString(folder), clString(naming), clString(u".mp3"), clString(),
                                   clString(), PosixPathSyntax()));
    };
    EXPECT_EQ(posix(u"/out", u"[artist]\\[album]/x"), u"/out/AC-DC/Live-1/x.mp3");
    EXPECT_EQ(posix(u"\\out\\sub", u"[artist]"), u"/out/sub/AC-DC.mp3");
    EXPECT_EQ(posix(u"[origdrive]", u"[origpath]\\new-[origfilename]"), u"/home/u/Music/In/new-x.mp3");
    EXPECT_EQ(posix(u"/out", u"[TRIMFIRSTFOLDER][origpath][]\\[origfilename]"), u"/out/u/Music/In/x.mp3");
}

TEST_F(OutputPath, AJoinedTrackIsNamedAfterItsFirstFile) {
    TestFolder dir;
    clString list = dir.File(u"join.quillotone-concat");
    ASSERT_TRUE(WriteBytes(list, Utf16Le(u"C:\\Album\\01 Intro.flac\r\nC:\\Album\\02.flac\r\n")));
    clSourceFile source{list};
    EXPECT_EQ(Windows(source, u"D:\\Out", u"[origpath]\\[origfilename]"), u"D:\\Out\\Album\\01 Intro.mp3");
    clSourceFile missing{dir.File(u"gone.quillotone-concat")};
    EXPECT_EQ(U(ComputeOutputPath(missing, dir.Path(), clString(u"[origfilename]"), clString(u".mp3"), clString(),
                                  clString())),
              U(dir.File(u"gone.mp3")));
}

TEST_F(OutputPath, FriendlyFolders) {
    clString music = GetSpecialFolder(13);
    ASSERT_FALSE(music.IsEmpty());
    EXPECT_EQ(U(ResolveFriendlyFolder(clString(u"Music"))), U(music).substr(0, music.Length() - 1));
    std::u16string sep(1, NativePathSyntax().separator);
    clString inside = ResolveFriendlyFolder(clString((u"Music" + sep + u"Rock").c_str()));
    EXPECT_EQ(U(inside), U(music) + u"Rock");
    EXPECT_EQ(U(FriendlyFolderName(inside, false)), u"Music" + sep + u"Rock" + sep);
    EXPECT_EQ(U(ResolveFriendlyFolder(clString(u"Musical"))), u"Musical");
    EXPECT_EQ(U(ResolveFriendlyFolder(clString(u"music"))), u"music");  // case counts here
    EXPECT_EQ(U(ResolveFriendlyFolder(clString(u"Data (D:)"), WindowsPathSyntax())), u"D:\\");
    EXPECT_EQ(U(FriendlyFolderName(clString(u"Z:\\nowhere\\x"), true)), u"Z:\\nowhere\\x");
}

// No tag value can make a folder or leave the base folder, whatever it holds.
TEST_F(OutputPath, HostileValuesStayBelowTheBaseFolder) {
    std::vector<std::u16string> hostile = {
        u"..",      u".",     u"../../x",    u"..\\..\\x", u"/etc/passwd", u"C:\\Windows",  u"\\\\server\\share",
        u"~",       u"~/x",   u"con",        u"NUL.txt",   u"a\tb\nc",     u"\u0001\u001f", u" .. ",
        u"...",     u"x/./y", u"[origpath]", u"a,b[c]",    u"[UPPER]x",    u"\\\\?\\C:\\x", u"%",
        u"*?<>|\":"};
    for (const auto& seed : std::vector<std::u16string>(hostile)) {
        hostile.push_back(seed + u"/" + seed);
        hostile.push_back(u".." + seed);
    }
    hostile.push_back(std::u16string(10000, u'a'));
    hostile.push_back(std::u16string(3000, u'.') + u"/x");
    // Too long for the path limit with a short name before the last dot:
    // the shortening must cut what was named, never the chosen folder.
    hostile.push_back(std::u16string(60, u'a') + u"." + std::u16string(200, u'b'));
    hostile.push_back(u"." + std::u16string(300, u'c'));
    hostile.push_back(std::u16string(1500, u'\u00e9') + u"." + std::u16string(1500, u'\u4e2d'));
    const char16_t* rules[] = {
        u"[artist]\\[title]",  u"[artist]", u"[title]\\[artist]\\x", u"[tag]artist[]", u"[GROUP]1,[artist][]\\[title]",
        u"[RIGHT]5,[artist][]"};
    for (const clPathSyntax* syntax : {&WindowsPathSyntax(), &PosixPathSyntax()}) {
        std::u16string base = syntax->IsWindows() ? u"D:\\Out" : u"/out";
        char16_t separator = syntax->separator;
        for (const auto& value : hostile) {
            auto source = Tagged(syntax->IsWindows() ? u"C:\\In\\x.flac" : u"/in/x.flac",
                                 {{u"artist", value.c_str()}, {u"title", value.c_str()}});
            for (const char16_t* rule : rules) {
                std::u16string result = U(ComputeOutputPath(*source, clString(base.c_str()), clString(rule),
                                                            clString(u".mp3"), clString(), clString(), *syntax));
                std::u16string where = std::u16string(rule) + u" / " + value.substr(0, 40);
                ASSERT_EQ(result.substr(0, base.size() + 1), base + separator)
                    << std::string(where.begin(), where.end());
                std::u16string rest = result.substr(base.size() + 1);
                size_t ruleFolders = std::u16string(rule).find(u'\\') == std::u16string::npos ? 0 : 1;
                if (std::u16string(rule) == u"[title]\\[artist]\\x") ruleFolders = 2;
                size_t folders = 0;
                size_t start = 0;
                for (size_t i = 0; i <= rest.size(); ++i) {
                    if (i < rest.size() && rest[i] != separator) continue;
                    std::u16string component = rest.substr(start, i - start);
                    ASSERT_NE(component, u"..") << std::string(where.begin(), where.end());
                    ASSERT_NE(component, u".") << std::string(where.begin(), where.end());
                    if (i < rest.size()) ++folders;
                    start = i + 1;
                }
                ASSERT_LE(folders, ruleFolders) << std::string(where.begin(), where.end());
            }
        }
    }
}
