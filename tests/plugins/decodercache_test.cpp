#include "plugins/decodercache.h"

#include <gtest/gtest.h>

#include <cstring>

#include "foundation/pathtext.h"
#include "foundation/settings.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"
#include "plugins/xdll.h"
#include "tests/support/testfolder.h"

namespace {

const char16_t* kCache = u"Software\\Harrowmere\\Quillotone\\DecoderCache64";
const qv_log_record kNoLog{};

clString Cached(const char16_t* extension) { return GetFileName(GetSettingText(extension, clHiveCurrentUser, kCache)); }

clString Library(const char16_t* base) { return clString(base, PlatformLibrarySuffix()); }

class DecoderCache : public ::testing::Test {
protected:
    void SetUp() override { DeleteSettingKeyTree(u"Software\\Harrowmere\\Quillotone", u"DecoderCache64"); }
};

}  // namespace

TEST_F(DecoderCache, ScanFindsTheLibraryAndTheCacheRemembersIt) {
    clQvDecoder decoder;
    ASSERT_TRUE(LoadForFile(clString(u"/music/song.aaa"), decoder, &kNoLog));
    EXPECT_NE(decoder.instance, 0u);
    EXPECT_EQ(U(GetFileName(decoder.libraryPath)), U(Library(u"qvtest_decoder")));
    EXPECT_EQ(U(Cached(u".aaa")), U(Library(u"qvtest_decoder")));
    // The extension is compared ignoring ASCII case: ".bbb" finds ".BBB".
    clQvDecoder other;
    EXPECT_TRUE(LoadForFile(clString(u"/music/x.bbb"), other, &kNoLog));
}

TEST_F(DecoderCache, SameExtensionTakesTheWrapperShortCut) {
    clQvDecoder decoder;
    ASSERT_TRUE(LoadForFile(clString(u"a.aaa"), decoder, &kNoLog));
    clLibraryHandle held = decoder.module;
    SetSettingText(clString(u"poisoned"), u".aaa", clHiveCurrentUser, kCache);  // not read on the short cut
    ASSERT_TRUE(LoadForFile(clString(u"B.AAA"), decoder, &kNoLog));
    EXPECT_EQ(decoder.module, held);
    EXPECT_EQ(U(Cached(u".aaa")), u"poisoned");
}

TEST_F(DecoderCache, NoDecoderLeavesTheWrapperEmptyAndTheCacheUnchanged) {
    clQvDecoder decoder;
    EXPECT_FALSE(LoadForFile(clString(u"/music/readme"), decoder, &kNoLog));  // extension "."
    EXPECT_EQ(decoder.module, 0);
    EXPECT_FALSE(LoadForFile(clString(u"/music/x.zzz"), decoder, &kNoLog));
    EXPECT_EQ(decoder.module, 0);
    EXPECT_TRUE(Cached(u".zzz").IsEmpty());
}

TEST_F(DecoderCache, BadEntriesAreReplacedByTheScan) {
    // A stored path from elsewhere keeps only its name; that library lacks
    // an export, so the scan finds the real one and overwrites the entry.
    SetSettingText(clString(u"C:\\Old Place\\decoder\\qvtest_missing.dll"), u".aaa", clHiveCurrentUser, kCache);
    clQvDecoder decoder;
    ASSERT_TRUE(LoadForFile(clString(u"x.aaa"), decoder, &kNoLog));
    EXPECT_EQ(U(Cached(u".aaa")), U(Library(u"qvtest_decoder")));
    // A cached library that no longer lists the extension is replaced too.
    SetSettingText(JoinPath(DecoderFolder(), Library(u"qvtest_decoder")), u".hid", clHiveCurrentUser, kCache);
    clQvDecoder hidden;
    ASSERT_TRUE(LoadForFile(clString(u"x.hid"), hidden, &kNoLog));
    EXPECT_EQ(U(Cached(u".hid")), U(Library(u"qvtest_unlisted")));
}

TEST_F(DecoderCache, ReadFileFactsFillsTheSourceRecord) {
    clSourceFile source(clString(u"/music/track.aaa"));
    clQvDecoder decoder;
    ASSERT_TRUE(ReadFileFacts(source, decoder));
    qv_stream_facts facts{};
    std::memcpy(&facts, source.facts, sizeof facts);
    EXPECT_EQ(facts.channels, 2);
    uint64_t lengthMs = facts.lengthMs;  // packed record: copy before taking a reference
    EXPECT_EQ(lengthMs, 1000u);
    clTagList tags;
    tags.LoadBlock(source.tagBlock.data, source.tagBlock.size);
    EXPECT_EQ(U(tags.GetTagValue(u"title")), u"T");
    clSourceFile none(clString(u"/music/track.zzz"));
    EXPECT_FALSE(ReadFileFacts(none, decoder));
}
