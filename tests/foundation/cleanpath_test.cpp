#include "foundation/cleanpath.h"

#include <gtest/gtest.h>

#include "foundation/asciifold.h"
#include "tests/support/testfolder.h"

namespace {

clString Clean(const char16_t* path, const clPathSyntax& syntax, bool limit = false, const char16_t* table = nullptr) {
    clString p(path);
    clCleanPathOptions options;
    options.limitLength = limit;
    options.table = table;
    CleanPath(p, options, syntax);
    return p;
}

clString Repeat(char16_t c, int n) {
    clString s;
    s.SetLength(n);
    for (int i = 0; i < n; ++i) s.text[i] = c;
    return s;
}

const clPathSyntax& Win = WindowsPathSyntax();
const clPathSyntax& Posix = PosixPathSyntax();

}  // namespace

TEST(CleanPath, ExamplesWindowsAndPosix) {
    struct Case {
        const char16_t* in;
        const char16_t* out;
        bool posix;
    } cases[] = {
        {u"C:\\a:b\\c?.wav", u"C:\\a;b\\c\u00bf.wav", false},
        {u"C:\\nul\\x.mp3", u"C:\\nul_\\x.mp3", false},
        {u"C:\\folder. \\x.mp3", u"C:\\folder\\x.mp3", false},
        {u"C:\\...hidden\\x.mp3", u"C:\\hidden\\x.mp3", false},
        {u"C:\\con.mp3", u"C:\\con.mp3", false},
        {u"C:\\AuX\\PRN\\f", u"C:\\AuX_\\PRN_\\f", false},
        {u"C:\\a\\\\b\\x.mp3 ", u"C:\\a\\b\\x.mp3", false},
        {u"C:\\a<b>|\"c\"*\\x/y.mp3", u"C:\\a\u00abb\u00bb-'c'-\\x-y.mp3", false},
        {u"\\\\server\\share\\a?\\b", u"\\\\server\\share\\a\u00bf\\b", false},
        {u"/a:b/c?.wav", u"/a;b/c\u00bf.wav", true},
        {u"/nul/x.mp3", u"/nul_/x.mp3", true},
        {u"/folder. /x.mp3", u"/folder/x.mp3", true},
        {u"/...hidden/x.mp3", u"/hidden/x.mp3", true},
        {u"/a\\b/x.mp3", u"/a-b/x.mp3", true},
        {u"/a//b/x.mp3", u"/a/b/x.mp3", true},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(U(Clean(c.in, c.posix ? Posix : Win)), c.out) << clString(c.in).ToUtf8();
    }
}

TEST(CleanPath, ControlCharactersAndDotOfExtension) {
    EXPECT_EQ(U(Clean(u"C:\\a\tb\\x\x1f.mp3", Win)), u"C:\\a_b\\x\x1f.mp3");
    const char16_t deleteDots[] = {u'.', u'*', 0, 0};
    // The last dot of the path survives a table that deletes dots.
    EXPECT_EQ(U(Clean(u"C:\\a.b\\c.d.mp3", Win, false, deleteDots)), u"C:\\ab\\cd.mp3");
}

TEST(CleanPath, LongComponentsKeepTheirExtension) {
    clString name = Repeat(u'n', 300);
    clString path(u"C:\\", name.text);
    path.Append(u".flac");
    clString cleaned = Clean(path.text, Win);
    EXPECT_EQ(cleaned.Length(), 3 + 254);
    EXPECT_EQ(U(cleaned.Right(5)), u".flac");
    clString noDot(u"C:\\", Repeat(u'n', 300).text);
    clString cleanedNoDot = Clean(noDot.text, Win);
    EXPECT_EQ(cleanedNoDot.Length(), 3 + 254);
    EXPECT_EQ(cleanedNoDot.CharAt(clStringLast), u'.');  // the extension rule adds a dot, which stays
    clString folder(u"C:\\", Repeat(u'f', 300).text);
    folder.Append(u"\\x.mp3");
    EXPECT_EQ(Clean(folder.text, Win).Length(), 3 + 254 + 1 + 5);
}

// The name limit at its edge: 254 characters stay as they are, 255 lose
// one, in either syntax.
TEST(CleanPath, NamesOfTwoHundredFiftyFourStayAndTwoHundredFiftyFiveLoseOne) {
    for (const clPathSyntax* syntax : {&Win, &Posix}) {
        const char16_t* root = syntax->IsWindows() ? u"C:\\" : u"/";
        for (int length : {253, 254}) {
            clString name = Repeat(u'n', length - 4);
            name.Append(u".wav");
            clString path(root, name.text);
            EXPECT_EQ(U(Clean(path.text, *syntax)), U(path)) << length;
        }
        clString name = Repeat(u'n', 251);
        name.Append(u".wav");
        clString cleaned = Clean(clString(root, name.text).text, *syntax);
        EXPECT_EQ(cleaned.Length(), clTextLength(root) + 254);
        EXPECT_EQ(U(cleaned.Right(4)), u".wav");
    }
}

TEST(CleanPath, PosixLimitsCountUtf8Bytes) {
    clString name = Repeat(u'\u00e9', 150);  // 300 bytes in UTF-8
    clString path(u"/m/", name.text);
    path.Append(u".flac");
    clString cleaned = Clean(path.text, Posix);
    clString fileName = cleaned.Mid(4, cleaned.Length());
    EXPECT_EQ(Posix.Measure(fileName), 254);
    EXPECT_EQ(U(fileName.Right(5)), u".flac");
    // 249 bytes for the base name: a cut never splits a character, so a
    // blank makes up the odd byte.
    EXPECT_EQ(fileName.CharAt(fileName.Length() - 5), u' ');
    EXPECT_EQ(fileName.CharAt(fileName.Length() - 6), u'\u00e9');
}

TEST(CleanPath, LimitFlagShortensBaseNameThenInnermostFolder) {
    // Reading taken: the shortening runs while the length is 260 or more, so
    // a 265-character path loses six characters, not five.
    clString folder(u"C:\\", Repeat(u'f', 191).text);  // 194 characters
    clString longName(folder.text, u"\\");
    longName.Append(Repeat(u'n', 66));
    longName.Append(u".mp3");  // file name of 70 characters
    ASSERT_EQ(longName.Length(), 262 + 3);
    clString a = Clean(longName.text, Win, true);
    EXPECT_EQ(a.Length(), 259);
    EXPECT_EQ(U(a.Mid(1, 195)), U(clString(folder.text, u"\\")));  // no folder character lost
    clString shortName(u"C:\\", Repeat(u'f', 238).text);
    shortName.Append(u"\\");
    shortName.Append(Repeat(u'n', 16));
    shortName.Append(u".mp3");  // file name of 20 characters
    ASSERT_EQ(shortName.Length(), 262);
    clString b = Clean(shortName.text, Win, true);
    EXPECT_EQ(b.Length(), 259);
    EXPECT_EQ(U(b.Right(20)), U(shortName.Right(20)));  // the name is whole
}

// With the first characters kept, a short name before a too long path
// shortens itself down to one character rather than the kept folder.
TEST(CleanPath, KeptLengthIsNeverShortened) {
    clString path(u"D:\\Out\\", Repeat(u'f', 200).text);
    path.Append(u"\\n.");
    path.Append(Repeat(u'x', 60).text);
    clCleanPathOptions options;
    options.limitLength = true;
    options.keepLength = 7;
    clString kept(path);
    CleanPath(kept, options, Win);
    EXPECT_EQ(kept.Length(), 259);
    EXPECT_EQ(U(kept.Mid(1, 9)), u"D:\\Out\\ff");  // the rule's folder gave way, the kept one not
    clString tooLong(u"D:\\Out\\", Repeat(u'f', 300).text);
    CleanPath(tooLong, options, Win);
    EXPECT_EQ(U(tooLong.Mid(1, 7)), u"D:\\Out\\");
}

TEST(CleanPath, HostileInputsStayBoundedAndBelowTheRoot) {
    const char16_t* inputs[] = {u"C:\\..\\..\\x", u"C:\\. . .\\ \\x", u"C:\\\x01\x02\\\x7f"};
    for (auto* in : inputs) {
        clString out = Clean(in, Win, true);
        EXPECT_EQ(out.Compare(u"C:\\", 3), 0);
        EXPECT_EQ(out.Find(u"..\\"), 0) << out.ToUtf8();
    }
    clString huge(u"C:\\");
    for (int i = 0; i < 100; ++i) {
        huge.Append(Repeat(u'd', 49));
        huge.Append(u"\\");
    }
    huge.Append(u"song.mp3");
    clString out = Clean(huge.text, Win, true);
    EXPECT_LT(out.Length(), 260);
    EXPECT_EQ(U(out.Right(8)), u"song.mp3");
    clString posixHuge(u"/");
    for (int i = 0; i < 100; ++i) {
        posixHuge.Append(Repeat(u'\u00e9', 60));
        posixHuge.Append(u"/");
    }
    posixHuge.Append(u"x.mp3");
    clString posixOut = Clean(posixHuge.text, Posix, true);
    EXPECT_LT(Posix.Measure(posixOut), 4096);
}

TEST(AsciiFoldTable, SizeOrderAndFixedRows) {
    int pairs = 0;
    while (clAsciiFoldTable[2 * pairs] != 0 && clAsciiFoldTable[2 * pairs + 1] != 0) ++pairs;
    EXPECT_EQ(pairs, 531);
    auto first = [](char16_t c) -> char16_t {
        for (int i = 0; i < 531; ++i) {
            if (clAsciiFoldTable[2 * i] == c) return clAsciiFoldTable[2 * i + 1];
        }
        return char16_t{0};
    };
    EXPECT_EQ(first(0x00C1), u'A');  // Á
    EXPECT_EQ(first(0x0102), u'A');  // Ă
    EXPECT_EQ(first(0x017D), u'Z');  // Ž
    EXPECT_EQ(first(0x00C6), u'A');  // Æ
    EXPECT_EQ(first(0x0152), u'O');  // Œ
    EXPECT_EQ(first(0x00DF), u'b');  // ß
    EXPECT_EQ(first(0x00DE), u'P');  // Þ: P before T
    EXPECT_EQ(first(0x00D0), u'D');  // Ð: D before T
    EXPECT_EQ(first(0x00E9), u'e');
    // Upper-case forms first, then lower-case ones.
    bool seenLower = false;
    for (int i = 0; i < 531; ++i) {
        bool lower = clAsciiFoldTable[2 * i + 1] >= u'a';
        if (seenLower) {
            EXPECT_TRUE(lower) << i;
        }
        seenLower = seenLower || lower;
    }
    EXPECT_EQ(U(Clean(u"C:\\\u00c9t\u00e9\\\u00c6on.mp3", Win, false, clAsciiFoldTable)), u"C:\\Ete\\Aon.mp3");
}
