#include "foundation/pathtext.h"

#include <gtest/gtest.h>

#include "tests/support/testfolder.h"

namespace {
const clPathSyntax& Win = WindowsPathSyntax();
const clPathSyntax& Posix = PosixPathSyntax();
}  // namespace

TEST(PathText, ExtensionNameAndFolderInBothSyntaxes) {
    EXPECT_EQ(U(GetExtension(clString(u"name"), Win)), u".");
    EXPECT_EQ(U(GetExtension(clString(u"a.b\\name"), Win)), u".");
    EXPECT_EQ(U(GetExtension(clString(u"name.tar.gz"), Win)), u".gz");
    EXPECT_EQ(U(GetExtension(clString(u"a.b/name"), Posix)), u".");
    EXPECT_EQ(U(GetExtension(clString(u"a.b\\name"), Posix)), u".b\\name");  // `\` is no separator there
    EXPECT_EQ(U(GetFileName(clString(u"C:\\x\\y.mp3"), Win)), u"y.mp3");
    EXPECT_EQ(U(GetFileName(clString(u"/x/y.mp3"), Posix)), u"y.mp3");
    EXPECT_EQ(U(GetFileBaseName(clString(u"C:\\x\\y.z.mp3"), Win)), u"y.z");
    EXPECT_EQ(U(RemoveExtension(clString(u"C:\\a.b\\name"))), u"C:\\a");
    EXPECT_EQ(U(GetFolderPart(clString(u"C:\\x\\y.mp3"), Win)), u"C:\\x\\");
    EXPECT_EQ(U(GetFolderPart(clString(u"y.mp3"), Win)), u"y.mp3");
    EXPECT_EQ(U(JoinPath(clString(u"C:\\a"), clString(u"\\\\b"), Win)), u"C:\\a\\b");
    EXPECT_EQ(U(JoinPath(clString(u"/a/"), clString(u"//b"), Posix)), u"/a/b");
    clString s(u"C:\\a\\\\\\");
    RemoveBackslashes(s, Win);
    EXPECT_EQ(U(s), u"C:\\a");
    clString e;
    AddBackslash(e, Posix);
    EXPECT_EQ(U(e), u"/");
    clString q(u"a b");
    QuoteText(q);
    EXPECT_EQ(U(q), u"\"a b\"");
}

TEST(PathText, RootLengthQuirks) {
    struct Case {
        const char16_t* path;
        int32_t root;
    } windows[] = {
        {u"C:\\x", 4}, {u"\\\\server\\share", 10}, {u"\\\\?\\C:\\x", 8}, {u"\\\\?\\C:", 1},
        {u"name", 1},  {u"a\\bc\\d", 6},           {u"C:", 1},           {u"\\x", 1},
    };
    for (const Case& c : windows) EXPECT_EQ(GetRootLength(clString(c.path), Win), c.root) << clString(c.path).ToUtf8();
    EXPECT_EQ(GetRootLength(clString(u"/x/y"), Posix), 2);
    EXPECT_EQ(GetRootLength(clString(u"x/y"), Posix), 1);
}

TEST(PathText, PopLastComponent_StopsAtRoot) {
    clString p(u"C:\\a\\b\\");
    EXPECT_EQ(U(PopLastComponent(p, Win)), u"b");
    EXPECT_EQ(U(p), u"C:\\a\\");
    EXPECT_EQ(U(PopLastComponent(p, Win)), u"a");
    EXPECT_EQ(U(PopLastComponent(p, Win)), u"");
    EXPECT_EQ(U(p), u"C:\\");
    // Trailing backslashes are stripped, never into the root.
    clString d(u"D:\\\\");
    EXPECT_EQ(U(PopLastComponent(d, Win)), u"");
    EXPECT_EQ(U(d), u"D:\\");
    // A relative path's "root" runs to its second separator: only the last
    // component comes off. (The first-folder trim of the naming language
    // relies on this.)
    clString r(u"a\\bc\\d");
    EXPECT_EQ(U(PopLastComponent(r, Win)), u"d");
    EXPECT_EQ(U(PopLastComponent(r, Win)), u"");
    clString x(u"/music/a/");
    EXPECT_EQ(U(PopLastComponent(x, Posix)), u"a");
    EXPECT_EQ(U(PopLastComponent(x, Posix)), u"music");
    EXPECT_EQ(U(PopLastComponent(x, Posix)), u"");
    EXPECT_EQ(U(x), u"/");
}

TEST(PathText, LongPathPrefixLimits) {
    clString p247(u"C:\\");
    p247.SetLength(247);
    clString p248(u"C:\\");
    p248.SetLength(248);
    EXPECT_EQ(GetLongPath(p247, 248, Win).Length(), 247);
    EXPECT_EQ(U(GetLongPath(p248, 248, Win).Mid(1, 4)), u"\\\\?\\");
    clString unc(u"\\\\server\\");
    unc.SetLength(300);
    EXPECT_EQ(GetLongPath(unc, 248, Win).Length(), 300);
    clString posix(u"/");
    posix.SetLength(5000);
    EXPECT_EQ(GetLongPath(posix, 248, Posix).Length(), 5000);
}

TEST(PathText, ProgramPathIsThisTestBinary) {
    clString path = GetProgramPath();
    EXPECT_TRUE(GetFileName(path).Find(u"foundation_tests") == 1) << path.ToUtf8();
    EXPECT_EQ(GetProgramFolder().CharAt(clStringLast), NativePathSyntax().separator);
}
