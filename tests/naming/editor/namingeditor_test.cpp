// The naming editor's vocabulary and rules: every item its menus insert
// means something on the example track, the example follows the two
// check boxes, and a saved destination splits, joins and is checked as
// the window needs.
#include <gtest/gtest.h>

#include <string>

#include "foundation/utf.h"
#include "naming/editor/namingeditor.h"
#include "tests/support/testfolder.h"

namespace {

std::string Utf8(const clString& text) { return StringToUtf8(text); }

}  // namespace

TEST(NamingEditor, EveryMenuItemExpandsOnTheExampleTrack) {
    for (clNamingMenu menu : {kNamingMenuTags, kNamingMenuProperties, kNamingMenuFunctions, kNamingMenuExamples}) {
        int32_t count = 0;
        const clNamingMenuEntry* entries = NamingMenuEntries(menu, count);
        ASSERT_GT(count, 0);
        for (int32_t i = 0; i < count; ++i) {
            clString example = NamingExample(clString(entries[i].text), true, true);
            std::string text = Utf8(example);
            // An item left as written would show its brackets.
            EXPECT_EQ(text.find('['), std::string::npos) << Utf8(clString(entries[i].label)) << " -> " << text;
            EXPECT_EQ(text.find(']'), std::string::npos) << Utf8(clString(entries[i].label)) << " -> " << text;
        }
    }
    int32_t count = 0;
    EXPECT_EQ(NamingMenuEntries(kNamingMenuTags, count)[16].text, std::u16string(u"[track]"));
    EXPECT_EQ(count, 41);
    NamingMenuEntries(kNamingMenuProperties, count);
    EXPECT_EQ(count, 25);
    NamingMenuEntries(kNamingMenuFunctions, count);
    EXPECT_EQ(count, 24);
    NamingMenuEntries(kNamingMenuExamples, count);
    EXPECT_EQ(count, 5);
}

TEST(NamingEditor, TheExampleTrackFollowsTheCheckBoxes) {
    EXPECT_EQ(U(NamingExample(clString(u"[track] [artist] - [title]"), false, false)), u"05 Artist - Title")
        << "the first of several artists, the track number padded";
    EXPECT_EQ(U(NamingExample(clString(u"[disc] of [disc_total], [track_total]"), false, false)), u"1 of 1, 15");
    EXPECT_EQ(U(NamingExample(clString(u"[disc] of [disc_total][IFMULTI], Disc [disc][]"), false, true)),
              u"2 of 3, Disc 2");
    EXPECT_EQ(U(NamingExample(clString(u"[album][IFMULTI] (multi)[]"), false, false)), u"Album Title");
    EXPECT_EQ(U(NamingExample(clString(u"[album][IFMULTI] (multi)[]"), false, true)), u"Album Title (multi)");
    EXPECT_EQ(U(NamingExample(clString(u"[IFCOMP]Various[][IF!COMP]One[]"), false, false)), u"One");
    EXPECT_EQ(U(NamingExample(clString(u"[IFCOMP]Various[][IF!COMP]One[]"), true, false)), u"Various");
    EXPECT_EQ(U(NamingExample(clString(u"[k_bitrate] [frequency] [length_mmss]"), false, false)), u"128 44100 10.51");
    EXPECT_EQ(U(NamingExample(clString(u"[origfilename]\\\\"), false, false)), u"A Filename")
        << "no trailing separators";
}

TEST(NamingEditor, TheRippersExampleNamesAlbumFolders) {
    int32_t count = 0;
    const clNamingMenuEntry* examples = NamingMenuEntries(kNamingMenuExamples, count);
    ASSERT_EQ(std::u16string(examples[1].label), u"Default Disc Ripper Naming");
    clString single = NamingExample(clString(examples[1].text), false, false);
    clString set = NamingExample(clString(examples[1].text), true, true);
    clString separator(u"\\");
#if !defined(_WIN32)
    separator = clString(u"/");
#endif
    clString expected(u"Album Artist");
    expected.Append(separator);
    expected.Append(u"Album Title");
    expected.Append(separator);
    expected.Append(u"05 Artist - Title");
    EXPECT_EQ(U(single), U(expected));
    EXPECT_NE(U(set).find(u"Album Title, Disc 2"), std::u16string::npos) << U(set).size();
}

// The saved text "base{_._}naming": split at the first marker, with the
// defaults for what is missing.
TEST(NamingEditor, ASavedDestinationSplitsIntoBaseAndNaming) {
    clString base, naming;
    SplitSavedNaming(clString(u"D:\\Out\\{_._}[artist]"), base, naming);
    EXPECT_EQ(U(base), u"D:\\Out\\");
    EXPECT_EQ(U(naming), u"[artist]");
    SplitSavedNaming(clString(u"[origdrive]"), base, naming);
    EXPECT_EQ(U(base), u"[origdrive]");
    EXPECT_EQ(U(naming), u"[origpath]\\[origfilename]");
    SplitSavedNaming(clString(), base, naming);
    EXPECT_EQ(U(base), u"[origdrive]");
    EXPECT_EQ(U(naming), u"[origpath]\\[origfilename]");
    SplitSavedNaming(clString(u"/m/{_._}[a]{_._}[b]"), base, naming);
    EXPECT_EQ(U(base), u"/m/");
    EXPECT_EQ(U(naming), u"[a]{_._}[b]") << "only the first marker splits";
}

// A base gets the separator "\" whatever the system, as the saved text is
// portable; "[origdrive]" gets none and stays as typed.
TEST(NamingEditor, JoiningAddsTheSeparatorAndTheCheckWantsAnItemPerTrack) {
    EXPECT_EQ(U(JoinSavedNaming(clString(u"D:\\Out"), clString(u"[title]"))), u"D:\\Out\\{_._}[title]");
    EXPECT_EQ(U(JoinSavedNaming(clString(u"/home/u/Out/"), clString(u"[title]"))), u"/home/u/Out/{_._}[title]");
    EXPECT_EQ(U(JoinSavedNaming(clString(u"[ORIGDRIVE]"), clString(u"[title]"))), u"[ORIGDRIVE]{_._}[title]");
    EXPECT_EQ(U(JoinSavedNaming(clString(u"D:\\Out"), clString())), u"D:\\Out\\");
    EXPECT_TRUE(NamingNamesEachTrack(clString(u"D:\\Out\\{_._}[title]")));
    EXPECT_TRUE(NamingNamesEachTrack(clString(u"D:\\[unique]\\")));
    EXPECT_TRUE(NamingNamesEachTrack(clString(u"[origdrive]{_._}[origpath]\\[origfilename]")));
    EXPECT_FALSE(NamingNamesEachTrack(clString(u"D:\\Out\\{_._}[TITLE]"))) << "the check is a plain search";
    EXPECT_FALSE(NamingNamesEachTrack(clString(u"D:\\Out\\{_._}[artist]")));
}

TEST(NamingEditor, AnItemGoesInAtTheCaretAndTheCaretFollowsIt) {
    int32_t caret = -1;
    EXPECT_EQ(U(InsertAtCaret(clString(u"ab"), 1, clString(u"[x]"), caret)), u"a[x]b");
    EXPECT_EQ(caret, 4);
    EXPECT_EQ(U(InsertAtCaret(clString(u"ab"), 99, clString(u"[x]"), caret)), u"ab[x]");
    EXPECT_EQ(caret, 5) << "clamped to the end";
    EXPECT_EQ(U(InsertAtCaret(clString(), 0, clString(u"[x]"), caret)), u"[x]");
    EXPECT_EQ(caret, 3);
}
