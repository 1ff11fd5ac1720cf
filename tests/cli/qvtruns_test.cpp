// Runs of qvt never share their choices: each keeps them in a profile of
// its own, gone when it ends; one a killed run left behind goes with the
// next run; and a run names its encoder.
#include <thread>
#include <vector>

#include "foundation/platform/crashdump.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "plugins/encoderentries.h"
#include "tests/cli/faultfixture.h"

namespace {

// The profile of the run with that process id, as qvt --help names it.
clString RunProfileName(uint32_t processId) {
    return clString::Formatted(u"qvt-%llu", static_cast<unsigned long long>(processId));
}

// The profiles of runs below an entry.
int RunProfiles(const char16_t* entry) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    clStringList profiles;
    EnumSettingKeys(EntryKeyPath(clString(entry), clString()).text, profiles);
    int count = 0;
    for (int64_t i = 0; i < profiles.Count(); ++i) {
        count += profiles[i].Length() > 4 && profiles[i].Compare(u"qvt-", 4) == 0 ? 1 : 0;
    }
    return count;
}

// Looked up without opening the key (which would make it again).
bool HasProfile(const char16_t* entry, const clString& name) {
    clStringList profiles;
    EnumSettingKeys(EntryKeyPath(clString(entry), clString()).text, profiles);
    return profiles.Find(name.text, false);
}

}  // namespace

TEST_F(FaultTest, EightRunsAtOnceEachWriteIntoTheirOwnFolder) {
    const int kRuns = 8;
    std::vector<clString> sources;
    for (int i = 0; i < kRuns; ++i) sources.push_back(Source(clString::Formatted(u"s%d.wav", i).text, 0.5, i));
    std::vector<QvtRun> runs(kRuns);
    std::vector<std::thread> threads;
    for (int i = 0; i < kRuns; ++i) {
        threads.emplace_back([&, i] {
            clString folder = dir.File(clString::Formatted(u"out%d", i).text);
            clString log = clString::Formatted(u"run%d.log", i);
            runs[i] = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), folder,
                           sources[i]},
                          log.text);
        });
    }
    for (std::thread& t : threads) t.join();
    for (int i = 0; i < kRuns; ++i) {
        EXPECT_EQ(runs[i].code, 0) << runs[i].output;
        clString folder = dir.File(clString::Formatted(u"out%d", i).text);
        EXPECT_TRUE(PathExists(JoinPath(folder, clString::Formatted(u"s%d.wav", i)))) << i;
        EXPECT_EQ(CountFiles(folder, u".wav"), 1) << "out" << i << " holds only its own run's output";
    }
    EXPECT_EQ(RunProfiles(u"Wave"), 0) << "every run took its profile with it";
}

TEST_F(FaultTest, AProfileAKilledRunLeftGoesWithTheNextRun) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    clString entry(u"Wave");
    // No process has this id: the run that had it is gone. This process
    // runs, so a profile of its id stays.
    clString gone = RunProfileName(0x7FFFFFF0u), running = RunProfileName(PlatformProcessId());
    ASSERT_TRUE(SetSettingText(clString(u"x"), kEntryFolderSetting.name, 0, EntryKeyPath(entry, gone).text));
    ASSERT_TRUE(SetSettingText(clString(u"y"), kEntryFolderSetting.name, 0, EntryKeyPath(entry, running).text));
    EXPECT_EQ(RunProfiles(u"Wave"), 2);
    clString a = Source(u"a.wav", 0.3);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--to"), clString(u"Wave"), clString(u"--folder"), out, a});
    EXPECT_EQ(run.code, 0) << run.output;
    EXPECT_FALSE(HasProfile(u"Wave", gone));
    EXPECT_TRUE(HasProfile(u"Wave", running));
    DeleteSettingKeyTree(EntryKeyPath(entry, clString()).text, running.text);
    EXPECT_EQ(RunProfiles(u"Wave"), 0);
}

TEST_F(FaultTest, ARunWithoutAnEncoderIsAUsageErrorThatListsThem) {
    clString a = Source(u"a.wav", 0.3);
    QvtRun run = Qvt({clString(u"convert"), clString(u"--folder"), out, a});
    EXPECT_EQ(run.code, 2);
    EXPECT_TRUE(Contains(run.output, "no encoder given")) << run.output;
    EXPECT_TRUE(Contains(run.output, "Wave")) << run.output;
    EXPECT_FALSE(PathExists(out)) << "nothing was converted";
}
