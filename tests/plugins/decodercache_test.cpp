#include "plugins/decodercache.h"

#include <gtest/gtest.h>

#include <cstring>

#include "foundation/pathtext.h"
#include "foundation/pointerarray.h"
#include "foundation/settings.h"
#include "foundation/syncobjects.h"
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

TEST_F(DecoderCache, BulkReadingBringsEachRecordToTheWantedLevel) {
    TestFolder dir;
    ASSERT_TRUE(WriteBytes(dir.File(u"one.aaa"), std::string(100, 'x')));
    ASSERT_TRUE(WriteBytes(dir.File(u"two.zzz"), std::string(7, 'x')));
    clSourceFile one(dir.File(u"one.aaa"));
    clSourceFile two(dir.File(u"two.zzz"));  // no decoder: size only
    clSourceFile done(dir.File(u"gone.aaa"));
    done.level = 2;
    done.fileSize = 5;
    clPointerArray sources;
    sources.Add(&one);
    sources.Add(&two);
    sources.Add(&done);

    ASSERT_TRUE(ReadSourcesToLevel(sources, 1, nullptr));
    EXPECT_EQ(one.level, 1u);
    EXPECT_EQ(one.fileSize, 100u);
    EXPECT_EQ(one.tagBlock.size, 0u);  // level 1 opens no decoder
    EXPECT_EQ(done.fileSize, 5u);      // a record at or above the level is left alone

    ASSERT_TRUE(ReadSourcesToLevel(sources, 2, nullptr));
    EXPECT_EQ(one.level, 2u);
    EXPECT_NE(one.tagBlock.size, 0u);
    EXPECT_EQ(two.level, 2u);
    EXPECT_EQ(two.fileSize, 7u);
    EXPECT_EQ(two.tagBlock.size, 0u);
    EXPECT_EQ(done.fileSize, 5u);
}

TEST_F(DecoderCache, BulkReadingStopsBeforeTheNextFileOnceTheEventIsSet) {
    clSourceFile one(clString(u"/nowhere/one.aaa"));
    clPointerArray sources;
    sources.Add(&one);
    XEvent stop;
    ASSERT_TRUE(stop.Create(nullptr));
    stop.Set();
    EXPECT_FALSE(ReadSourcesToLevel(sources, 2, &stop));
    EXPECT_EQ(one.level, 0u);
    stop.Reset();
    EXPECT_TRUE(ReadSourcesToLevel(sources, 2, &stop));
    EXPECT_EQ(one.level, 2u);  // a file that can't be read still counts as examined
    EXPECT_EQ(one.fileSize, 0u);
}
