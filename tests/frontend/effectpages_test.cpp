// The program's own effect pages, in their settings window: a rule of
// "Conditional Encoding", the processors of "Multi-CPU Force" and the tag
// edits of "ID Tag Processing". Each shows the settings it is given and
// writes settings that the engine and the effect read as the user meant.
#include "frontend/effectpages.h"

#include <gtest/gtest.h>

#include <functional>

#include "engine/conditionalrules.h"
#include "engine/slotcount.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "frontend/dlgdspsettings.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/controls.h"

namespace {

std::function<void(dlgDSPSettings&)> drive;

void Drive(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgDSPSettings*>(&window);
    ASSERT_NE(dialog, nullptr);
    Pump();
    drive(*dialog);
    WindowSend(window.windowHandle, kWmClose, 0, 0);
}

clString Edit(const char16_t* effect, const char16_t* settings, std::function<void(dlgDSPSettings&)> steps) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    drive = std::move(steps);
    SetModalHook(Drive, nullptr);
    clString result = EditEffectSettings(nullptr, clString(effect), clString(settings));
    SetModalHook(nullptr, nullptr);
    return result;
}

std::u16string Text(clWindowHandle control) { return U(WindowGetText(control)); }

// The rules of an effect string with one "Conditional Encoding".
void RulesOf(const clString& settings, clConditionalRules& rules) {
    clString effects(u"-dspeffect1=\"Conditional Encoding=");
    clString quoted(settings);
    quoted.Replace(u"\"", u"{qt}");
    effects.Append(quoted);
    effects.Append(u"\"");
    ParseConditionalRules(effects, rules);
}

}  // namespace

TEST(EffectPages, ARuleShowsItsTestsAndWritesWhatTheEngineReads) {
    const char16_t* given =
        u"-action=\"1\" -cond=\"1\" -ext=\".mp3; .ogg\" -bitrate=\"-128\" -freq=\"-568388\" -bitdepth=\"16\" "
        u"-gen=\"5\" -later=\"kept\"";
    clString unchanged = Edit(u"Conditional Encoding", given, [](dlgDSPSettings& dialog) {
        clEffectPage& page = dialog.effectPage;
        ASSERT_EQ(page.kind, kRulePage);
        EXPECT_EQ(U(ComboItemText(page.Field(u"action"), ComboGetSelection(page.Field(u"action")))),
                  u"Leave the file out");
        EXPECT_EQ(ComboGetSelection(page.Field(u"cond")), 1);
        EXPECT_EQ(Text(page.Field(u"ext")), u".mp3; .ogg");
        EXPECT_EQ(ComboGetSelection(page.Field(u"bitratetest")), 3) << "below";
        EXPECT_EQ(Text(page.Field(u"bitrate")), u"128");
        EXPECT_EQ(ComboGetSelection(page.Field(u"freqtest")), 2) << "at or below: the equality bit";
        EXPECT_EQ(Text(page.Field(u"freq")), u"44100");
        EXPECT_EQ(ComboGetSelection(page.Field(u"depthtest")), 3) << "above";
        EXPECT_EQ(ComboGetSelection(page.Field(u"gen")), 5);
        SaveGrab(dialog.windowHandle, "dspsettings-rule");
    });
    EXPECT_EQ(U(unchanged), given) << "shown and closed, a rule stays as it was";

    clString changed = Edit(u"Conditional Encoding", given, [](dlgDSPSettings& dialog) {
        clEffectPage& page = dialog.effectPage;
        EXPECT_TRUE(page.SetField(clString(u"action"), clString(u"Copy the file instead of converting it")));
        EXPECT_TRUE(page.SetField(clString(u"cond"), clString(u"Any one test holds")));
        EXPECT_TRUE(page.SetField(clString(u"ext"), clString(u"flac, wav")));
        // "Above 2" would read as the lossy test: the test stays as it was.
        EXPECT_TRUE(page.SetField(clString(u"bitratetest"), clString(u"Above")));
        EXPECT_TRUE(page.SetField(clString(u"bitrate"), clString(u"2")));
        EXPECT_TRUE(page.SetField(clString(u"freqtest"), clString(u"At or above")));
        EXPECT_TRUE(page.SetField(clString(u"freq"), clString(u"48000")));
        EXPECT_TRUE(page.SetField(clString(u"depthtest"), clString(u"No test")));
        EXPECT_TRUE(page.SetField(clString(u"gen"), clString(u"The output is newer than the source")));
        EXPECT_FALSE(page.SetField(clString(u"gen"), clString(u"Whenever")));
    });
    EXPECT_EQ(U(changed), u"-ext=\".flac; .wav\" -bitrate=\"-128\" -freq=\"572288\" -gen=\"6\" -later=\"kept\"");
    clConditionalRules rules;
    RulesOf(changed, rules);
    ASSERT_EQ(rules.Count(), 1);
    const clConditionalRule& rule = rules[0];
    EXPECT_EQ(rule.action, 0);
    EXPECT_EQ(rule.condition, 0);
    ASSERT_EQ(rule.extensions.Count(), 2);
    EXPECT_EQ(U(rule.extensions[1]), u".wav");
    EXPECT_EQ(rule.frequency, 48000 + 0x80000);
    EXPECT_EQ(rule.bitDepth, 0);
    EXPECT_EQ(rule.general, 6);
}

TEST(EffectPages, ProcessorsAreAListOfNumbersAndSetTheSlots) {
    int32_t numbers[64];
    int32_t count = 0;
    ASSERT_TRUE(ParseProcessorList(clString(u" 6, 1-3;2 "), numbers, count));
    EXPECT_EQ(count, 4);
    EXPECT_EQ(U(ProcessorListText(numbers, count)), u"1-3, 6");
    ASSERT_TRUE(ParseProcessorList(clString(u"64"), numbers, count));
    EXPECT_EQ(numbers[0], 64);
    for (const char16_t* wrong : {u"65", u"0", u"3-1", u"1-", u"two", u"1.5"}) {
        EXPECT_FALSE(ParseProcessorList(clString(wrong), numbers, count)) << U(clString(wrong)).size();
    }

    clString changed = Edit(u"Multi-CPU Force", u"-noally -cpu1 -cpu2 -cpu3 -cpu6", [](dlgDSPSettings& dialog) {
        clEffectPage& page = dialog.effectPage;
        ASSERT_EQ(page.kind, kProcessorPage);
        EXPECT_EQ(Text(page.Field(u"cpus")), u"1-3, 6");
        EXPECT_TRUE(CheckBoxIsChecked(page.Field(u"noally")));
        SaveGrab(dialog.windowHandle, "dspsettings-cpus");
        page.SetField(clString(u"cpus"), clString(u"2, 4-5"));
        page.SetField(clString(u"noally"), clString(u"0"));
    });
    EXPECT_EQ(U(changed), u"-cpu2 -cpu4 -cpu5");
    clString effects(u"-dspeffect1=\"Multi-CPU Force=");
    effects.Append(changed);
    effects.Append(u"\"");
    clSlotPlan plan = ComputeSlotCount(2, false, 10, effects);
    EXPECT_EQ(plan.count, 3);
    EXPECT_EQ(plan.processors[2], 5);

    clString kept = Edit(u"Multi-CPU Force", u"-cpu1 -cpu2", [](dlgDSPSettings& dialog) {
        dialog.effectPage.SetField(clString(u"cpus"), clString(u"1-x"));
    });
    EXPECT_EQ(U(kept), u"-cpu1 -cpu2") << "a list that isn't one keeps the processors";
}

TEST(EffectPages, TagEditsAreRepeatedOptionsOneALine) {
    const char16_t* given =
        u"-delall -remove=\"comment\" -remove=\"lyrics\" -set=\"ARTIST=A\" -set=\"TITLE=T\" -append=\"GENRE=Rock\"";
    clString unchanged = Edit(u"ID Tag Processing", given, [](dlgDSPSettings& dialog) {
        clEffectPage& page = dialog.effectPage;
        ASSERT_EQ(page.kind, kTagPage);
        EXPECT_TRUE(CheckBoxIsChecked(page.Field(u"delall")));
        EXPECT_EQ(Text(page.Field(u"remove")), u"comment; lyrics");
        std::u16string lines = Text(page.Field(u"set"));
        EXPECT_NE(lines.find(u"ARTIST=A"), std::u16string::npos);
        EXPECT_NE(lines.find(u"TITLE=T"), std::u16string::npos);
        SaveGrab(dialog.windowHandle, "dspsettings-tags");
    });
    EXPECT_EQ(U(unchanged), given);

    clString changed = Edit(u"ID Tag Processing", u"", [](dlgDSPSettings& dialog) {
        clEffectPage& page = dialog.effectPage;
        page.SetField(clString(u"delexcept"), clString(u"artist;title"));
        page.SetField(clString(u"set"), clString(u"ALBUM=Say \"hi\"| |COMMENT=x"));
    });
    EXPECT_EQ(U(changed), u"-delexcept=\"artist;title\" -set=\"ALBUM=Say 'hi'\" -set=\"COMMENT=x\"")
        << "a double quote would end the value; empty lines are left out";
}

TEST(EffectPages, OnlyTheThreeEffectsHaveOne) {
    EXPECT_EQ(clEffectPage::KindOf(clString(u"Conditional Encoding")), kRulePage);
    EXPECT_EQ(clEffectPage::KindOf(clString(u"Multi-CPU Force")), kProcessorPage);
    EXPECT_EQ(clEffectPage::KindOf(clString(u"ID Tag Processing")), kTagPage);
    EXPECT_EQ(clEffectPage::KindOf(clString(u"ReplayGain")), kNoEffectPage);
    EXPECT_EQ(clEffectPage::KindOf(clString(u"conditional encoding")), kNoEffectPage) << "names are exact";
}
