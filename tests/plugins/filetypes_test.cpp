#include "plugins/filetypes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "plugins/decodercache.h"
#include "plugins/xdll.h"
#include "tests/support/testfolder.h"

namespace {

std::vector<std::u16string> Items(const clStringList& list) {
    std::vector<std::u16string> items;
    for (int64_t i = 0; i < list.Count(); ++i) items.push_back(U(list[i]));
    return items;
}

// The test decoders, as they are built: qvtest_decoder (.aaa .BBB .ccc,
// "Test audio"), qvtest_other (.ddd, "Test audio"), qvtest_case (.eee,
// "test audio"), qvtest_another (.fff, "Another format"), and three that
// add nothing: qvtest_unlisted (.hid), qvtest_ignore (.IGNORE),
// qvtest_endless (".more" without end) and qvtest_nulltext (".nul" with a
// null description). qvtest_missing lacks an export.
// Libraries come in file system order, so only the order inside one
// library's list is fixed.
size_t Position(const std::vector<std::u16string>& items, const std::u16string& item) {
    for (size_t i = 0; i < items.size(); ++i) {
        if (items[i] == item) return i;
    }
    return items.size();
}

}  // namespace

// On purpose, a library's list of extensions is read to at most
// clMaxDecodesEntries entries: one that never ends its list (a broken
// plug-in) would otherwise hang every scan. The scan leaves such a library
// out; the lookup still finds what it listed first.
TEST(ScanDecoders, ExtensionsLeaveOutUnlistedIgnoredAndEndlessLibraries) {
    clStringList extensions;
    extensions.Add(u"stale");
    ScanDecoders(false, &extensions, nullptr);
    std::vector<std::u16string> found = Items(extensions);
    ASSERT_EQ(found.size(), 6u);
    for (const char16_t* e : {u".aaa", u".BBB", u".ccc", u".ddd", u".eee", u".fff"}) {
        EXPECT_LT(Position(found, e), found.size()) << std::string(e, e + 4);
    }
    EXPECT_EQ(Position(found, u".BBB"), Position(found, u".aaa") + 1);
    EXPECT_EQ(Position(found, u".ccc"), Position(found, u".aaa") + 2);
    // The lookup still finds what the lists leave out.
    clQvDecoder decoder;
    const qv_log_record noLog{};
    EXPECT_TRUE(LoadForFile(clString(u"x.hid"), decoder, &noLog));
    EXPECT_TRUE(LoadForFile(clString(u"x.IGNORE"), decoder, &noLog));
    // A list that never ends is cut off; the lookup still finds what it
    // listed first, and gives up in time on what it never lists.
    EXPECT_TRUE(LoadForFile(clString(u"x.more"), decoder, &noLog));
    EXPECT_FALSE(LoadForFile(clString(u"x.none"), decoder, &noLog));
    // A null description ends the list for the filters; the lookup reads
    // only the extension.
    EXPECT_TRUE(LoadForFile(clString(u"x.nul"), decoder, &noLog));
}

TEST(ScanDecoders, FiltersGroupExactDescriptionsAndSortIgnoringCase) {
    clStringList extensions;
    clStringList filters;
    ScanDecoders(true, &extensions, &filters);
    std::vector<std::u16string> rows = Items(filters);
    ASSERT_EQ(rows.size(), 4u);
    // The first entry lists every extension in discovery order.
    std::u16string all = u"All Audio Files\r";
    for (int64_t i = 0; i < extensions.Count(); ++i) all += (i ? u";*" : u"*") + U(extensions[i]);
    EXPECT_EQ(rows[0], all);
    EXPECT_EQ(rows[1], u"Another format  (*.fff)\r*.fff");
    // "Test audio" and "test audio" are two runs, next to each other; one
    // run holds both libraries' extensions, each library's in its order.
    std::u16string mixed = rows[2].substr(0, 4) == u"Test" ? rows[2] : rows[3];
    std::u16string lower = rows[2].substr(0, 4) == u"Test" ? rows[3] : rows[2];
    EXPECT_EQ(lower, u"test audio  (*.eee)\r*.eee");
    const std::u16string ours = u"*.aaa; *.BBB; *.ccc";
    EXPECT_TRUE(mixed == u"Test audio  (" + ours + u"; *.ddd)\r*.aaa;*.BBB;*.ccc;*.ddd" ||
                mixed == u"Test audio  (*.ddd; " + ours + u")\r*.ddd;*.aaa;*.BBB;*.ccc")
        << std::string(mixed.begin(), mixed.end());

    clStringList noAll;
    noAll.Add(u"stale");
    ScanDecoders(false, nullptr, &noAll);
    ASSERT_EQ(noAll.Count(), 3);
    EXPECT_EQ(U(noAll[0]), rows[1]);
}

TEST(EnumerateEncoders, MultiEncoderFirstRealEncodersThenPseudoEncoders) {
    // A folder named like a library is no encoder.
    clString folder =
        JoinPath(JoinPath(GetProgramFolder(), clString(u"encoder")), clString(u"A folder", PlatformLibrarySuffix()));
    ASSERT_TRUE(MakeFolders(folder));
    clStringList names;
    names.Add(u"stale");
    EnumerateEncoders(names, clString());
    DeleteFolderTree(folder);
    // The digit sorts ahead of "[", and the multi encoder keeps its bracket
    // whatever the case of its file name.
    EXPECT_EQ(Items(names), (std::vector<std::u16string>{u"1st Encoder", u"[Multi encoder]", u"qvtest_encoder", u"Zeta",
                                                         u"[ReplayGain]"}));
    EnumerateEncoders(names, clString(u"zeta:[REPLAYGAIN]:not there"));
    EXPECT_EQ(Items(names), (std::vector<std::u16string>{u"1st Encoder", u"[Multi encoder]", u"qvtest_encoder"}));
}
