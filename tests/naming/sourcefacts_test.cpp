#include "naming/sourcefacts.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "plugins/quillotone_plugin.h"
#include "plugins/sourcefile.h"
#include "tests/support/testfolder.h"

namespace {

void SetFacts(clSourceFile& source, uint32_t rate, uint16_t channels, uint16_t bits, uint32_t bitrate,
              uint64_t lengthMs) {
    qv_stream_facts facts{};
    facts.samplesPerSecond = rate;
    facts.channels = channels;
    facts.bitsPerSample = bits;
    facts.bitrate = bitrate;
    facts.lengthMs = lengthMs;
    std::memcpy(source.facts, &facts, sizeof facts);
}

}  // namespace

TEST(SourceFacts, FactsGoBehindTheFilesTags) {
    clSourceFile source(clString(u"C:\\Music\\Album\\x.y.flac"));
    SetFacts(source, 44100, 2, 24, 1411200, 185500);
    clTagList tags;
    tags.AddTag(u"frequency", u"x");
    tags.AddTag(u"title", u"   ");
    clTagList properties;
    properties.AddTag(u"Encoder", u"LAME");
    properties.AddTag(u"gapless", u"Yes");
    clStringList extrasNames;
    clString folder(u"[origdrive]Out\\[origdrive]");
    AddSourceFacts(tags, properties, extrasNames, source, source.path, clString(), clString(u"[title]"),
                   clString(u".mp3"), &folder, WindowsPathSyntax());
    EXPECT_EQ(U(folder), u"C:\\Out\\C:\\");
    EXPECT_EQ(U(tags.GetTagValue(u"frequency")), u"x");  // the file's tag wins
    EXPECT_EQ(U(tags.GetTagValue(u"title")), u"   ");    // spaces are a title: no Title is added
    EXPECT_EQ(tags.FindTag(u"unique"), nullptr);         // no [unique] in the rule: the counter stays
    for (auto [name, value] : {std::pair{u"origdrive", u"C:\\"},
                               {u"origpath", u"Music\\Album"},
                               {u"origfilename", u"x.y"},
                               {u"extension", u"mp3"},
                               {u"encoder", u"LAME"},
                               {u"protected", u"No"},
                               {u"gapless", u"Yes"},
                               {u"channels", u"2"},
                               {u"channels_subone", u"1"},
                               {u"bits_per_sample", u"24"},
                               {u"bytes_per_sample", u"3"},
                               {u"bitrate", u"1411200"},
                               {u"k_bitrate", u"1411"},
                               {u"length", u"185500"},
                               {u"length_seconds", u"185"},
                               {u"length_mmss", u"3.05"},
                               {u"length_hhmmss", u"00.03.05"},
                               {u"source_date", u"1601,1,1,0,0,0,0"}}) {
        EXPECT_EQ(U(tags.GetTagValue(name)), value) << std::string(name, name + clTextLength(name));
    }
    EXPECT_EQ(tags.FindTag(u"encoder+"), nullptr);
    EXPECT_EQ(tags.FindTag(u"id_tag"), nullptr);
    EXPECT_FALSE(tags.GetTagValue(u"date").IsEmpty());
    EXPECT_EQ(tags.GetTagValue(u"time").Length(), 11);  // "hh:mm:ss AM"
}

TEST(SourceFacts, NoFactsNoLengthAndAMissingTitleFromTheName) {
    clSourceFile source(clString(u"/m/song.ogg"));
    clTagList tags;
    clTagList properties;
    clStringList extrasNames;
    globalNamingExtras.AddTag(u"[sub]", u"S");
    tags.AddTag(u"[sub]", u"mine");
    AddSourceFacts(tags, properties, extrasNames, source, source.path, clString(), clString(), clString(u".mp3"),
                   nullptr, PosixPathSyntax());
    globalNamingExtras.Clear();
    EXPECT_EQ(U(tags.GetTagValue(u"[sub]")), u"mine");  // an extra never beats a file's tag
    ASSERT_EQ(extrasNames.Count(), 1);
    EXPECT_EQ(U(tags.GetTagValue(u"frequency")), u"0");
    EXPECT_EQ(U(tags.GetTagValue(u"channels_subone")), u"-1");
    EXPECT_EQ(tags.FindTag(u"length"), nullptr);
    EXPECT_EQ(U(tags.GetTagValue(u"origdrive")), u"/");
    EXPECT_EQ(U(tags.GetTagValue(u"origpath")), u"m");
    EXPECT_EQ(U(tags.GetTagValue(u"Title")), u"song");
}

TEST(SourceFacts, UniqueNumbersCountOnAndSourceDateComesFromTheFile) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    SetSettingNumber(0, u"Unique");
    clTagList first;
    clTagList second;
    AddUniqueTag(first);
    AddUniqueTag(second);
    EXPECT_EQ(U(first.GetTagValue(u"unique")), u"1");
    EXPECT_EQ(U(second.GetTagValue(u"unique")), u"2");

    TestFolder dir;
    ASSERT_TRUE(WriteBytes(dir.File(u"a.flac"), "x"));
    clSourceFile source(dir.File(u"a.flac"));
    clTagList tags;
    clTagList properties;
    clStringList extras;
    AddSourceFacts(tags, properties, extras, source, source.path, clString(), clString(u"[unique]"), clString(u".mp3"),
                   nullptr);
    EXPECT_EQ(U(tags.GetTagValue(u"unique")), u"3");
    clStringList parts;
    parts.Split(tags.GetTagValue(u"source_date").text, u",");
    ASSERT_EQ(parts.Count(), 7);
    EXPECT_GE(parts[0].ToInt64(), 2024);
}

// Two batches in two processes at once draw from the one counter: every
// number is handed out once, and the counter ends at the last of them.
TEST(SourceFacts, UniqueNumbersAreMachineWideAcrossProcesses) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    SetSettingNumber(0, u"Unique");
    TestFolder dir;
    clString helper = JoinPath(GetProgramFolder(), clString(u"qv_testhelper", PlatformExecutableSuffix()));
    constexpr int kProcesses = 2;
    constexpr int kEach = 300;
    std::vector<clString> outputs;
    for (int i = 0; i < kProcesses; ++i) outputs.push_back(dir.File(clString::Formatted(u"numbers-%d", i).text));
    int exitCodes[kProcesses] = {-1, -1};
    std::vector<std::thread> runners;
    for (int i = 0; i < kProcesses; ++i) {
        runners.emplace_back([&, i] {
            clStringList arguments;
            arguments.Add(u"unique-tag");
            arguments.Add(clString::Formatted(u"%d", kEach));
            arguments.Add(outputs[i]);
            if (!PlatformRunProcess(helper, arguments, dir.File(clString::Formatted(u"log-%d", i).text),
                                    &exitCodes[i])) {
                exitCodes[i] = -2;
            }
        });
    }
    for (auto& runner : runners) runner.join();
    std::set<unsigned> seen;
    size_t total = 0;
    for (int i = 0; i < kProcesses; ++i) {
        EXPECT_EQ(exitCodes[i], 0);
        std::istringstream in(ReadBytes(outputs[i]));
        unsigned n;
        while (in >> n) {
            seen.insert(n);
            ++total;
        }
    }
    EXPECT_EQ(total, static_cast<size_t>(kProcesses * kEach));
    EXPECT_EQ(seen.size(), total);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(*seen.begin(), 1u);
    EXPECT_EQ(*seen.rbegin(), GetSettingNumber(u"Unique"));
}
