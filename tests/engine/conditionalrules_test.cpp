#include "engine/conditionalrules.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>

#include "foundation/findfiles.h"
#include "foundation/platform/thread.h"
#include "plugins/quillotone_plugin.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"
#include "tests/support/testfolder.h"

namespace {

std::u16string Text(const clString& text) { return std::u16string(text.text); }

// A source with these stream facts and, when given, an "Audio Quality"
// property as a decoder of this program reports it.
void SetFacts(clSourceFile& source, uint32_t rate, uint16_t bits, uint32_t bitrate, const char16_t* quality) {
    qv_stream_facts facts{};
    facts.samplesPerSecond = rate;
    facts.bitsPerSample = bits;
    facts.bitrate = bitrate;
    std::memcpy(source.facts, &facts, sizeof facts);
    if (quality != nullptr) {
        clTagList properties;
        properties.AddTag(u"Audio Quality", quality);
        properties.SaveBlock(source.extraBlock);
    }
}

clRuleDecision Decide(const char16_t* effects, const clSourceFile& source, clString& outputPath) {
    clConditionalRules rules;
    ParseConditionalRules(clString(effects), rules);
    return EvaluateRules(rules, source, outputPath);
}

void Age(const clString& path, int seconds) {
    std::filesystem::path native(std::u16string(path.text));
    std::filesystem::last_write_time(native,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::seconds(seconds));
}

}  // namespace

TEST(ConditionalRules, ParsingReadsEveryKeyAndTellsWhetherFactsAreNeeded) {
    clConditionalRules rules;
    EXPECT_FALSE(ParseConditionalRules(
        clString(u" -dspeffect1=\"Conditional Encoding=-action=1 -cond=1 -ext={qt}.mp3; .ogg{qt} -gen=4\""
                 u" -dspeffect2=\"Resample=-rate=48000\" -dspeffect3=\"conditional encoding=-bitrate=1\""),
        rules));
    ASSERT_EQ(rules.Count(), 1);  // the name is compared exactly
    EXPECT_EQ(rules[0].action, 1);
    EXPECT_EQ(rules[0].condition, 1);
    ASSERT_EQ(rules[0].extensions.Count(), 2);
    EXPECT_EQ(Text(rules[0].extensions[1]), u".ogg");
    EXPECT_EQ(rules[0].general, 4);
    EXPECT_TRUE(ParseConditionalRules(clString(u" -dspeffect1=\"Conditional Encoding=-freq=44100\""), rules));
    EXPECT_EQ(rules.Count(), 1);
}

TEST(ConditionalRules, CriteriaCombineByAnyOrAll) {
    clSourceFile source(clString(u"/music/a.MP3"));
    SetFacts(source, 44100, 16, 128000, u"Lossy");
    clString out(u"/out/a.flac");
    // A copy takes the source's extension.
    clRuleDecision d = Decide(u" -dspeffect1=\"Conditional Encoding=-action=0 -ext={qt}.flac; .mp3{qt}\"", source, out);
    EXPECT_TRUE(d.directCopy);
    EXPECT_FALSE(d.skip);
    EXPECT_EQ(Text(out), u"/out/a.MP3");
    // cond=1: an extension match and a failed bitrate test don't act; cond=0 does.
    out = u"/out/a.flac";
    d = Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -cond=1 -ext=.mp3 -bitrate={qt}-96{qt}\"", source, out);
    EXPECT_FALSE(d.skip);
    d = Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -cond=0 -ext=.mp3 -bitrate={qt}-96{qt}\"", source, out);
    EXPECT_TRUE(d.skip);
    // cond=1 with no criterion holds for every file; other conditions never act.
    EXPECT_TRUE(Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -cond=1\"", source, out).skip);
    EXPECT_FALSE(Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -cond=2 -ext=.mp3\"", source, out).skip);
    // Bitrates: above and below n kbit/s; lossless and lossy by "Audio Quality".
    EXPECT_TRUE(Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -bitrate=127\"", source, out).skip);
    EXPECT_FALSE(Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -bitrate=128\"", source, out).skip);
    EXPECT_TRUE(Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -bitrate=2\"", source, out).skip);
    EXPECT_FALSE(Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -bitrate=1\"", source, out).skip);
    clSourceFile flac(clString(u"/music/b.flac"));
    SetFacts(flac, 96000, 24, 2000000, u"Lossless");
    EXPECT_TRUE(Decide(u" -dspeffect1=\"Conditional Encoding=-action=1 -bitrate=1\"", flac, out).skip);
    // The first rule that leaves a file out ends the walk.
    out = u"/out/b.mp3";
    d = Decide(
        u" -dspeffect1=\"Conditional Encoding=-action=1 -bitrate=1\""
        u" -dspeffect2=\"Conditional Encoding=-action=0 -cond=1\"",
        flac, out);
    EXPECT_TRUE(d.skip);
    EXPECT_FALSE(d.directCopy);
    EXPECT_EQ(Text(out), u"/out/b.mp3");
}

// Negative codes stand in quotes: the option parser reads an unquoted
// value that starts with a dash as no value at all.
TEST(ConditionalRules, RatesAndDepthsCompareAboveBelowOrEqual) {
    clSourceFile source(clString(u"/music/a.wav"));
    SetFacts(source, 44100, 16, 1411200, nullptr);
    clString out(u"/out/a.mp3");
    auto skips = [&](const char16_t* settings) {
        std::u16string effects = u" -dspeffect1=\"Conditional Encoding=-action=1 " + std::u16string(settings) + u"\"";
        return Decide(effects.c_str(), source, out).skip;
    };
    EXPECT_FALSE(skips(u"-freq=44100"));           // above only
    EXPECT_TRUE(skips(u"-freq=568388"));           // 44100 + 0x80000: at or above
    EXPECT_TRUE(skips(u"-freq={qt}-48000{qt}"));   // below
    EXPECT_TRUE(skips(u"-freq={qt}-568388{qt}"));  // at or below
    EXPECT_FALSE(skips(u"-freq={qt}-44100{qt}"));
    EXPECT_FALSE(skips(u"-freq=568389"));  // 44101 or above
    EXPECT_TRUE(skips(u"-bitdepth={qt}-24{qt}"));
    EXPECT_FALSE(skips(u"-bitdepth=16"));
    EXPECT_TRUE(skips(u"-bitdepth=524304"));  // 16 + 0x80000
}

TEST(ConditionalRules, FileTestsLookAtTheDisk) {
    TestFolder dir;
    clSourceFile source(dir.File(u"song.wav"));
    SetFacts(source, 44100, 16, 0, nullptr);
    ASSERT_TRUE(WriteBytes(source.path, "RIFF"));
    clString out = dir.File(u"song.mp3");
    auto skips = [&](const char16_t* settings) {
        std::u16string effects = u" -dspeffect1=\"Conditional Encoding=-action=1 " + std::u16string(settings) + u"\"";
        clString path = out;
        return Decide(effects.c_str(), source, path).skip;
    };
    EXPECT_FALSE(skips(u"-gen=4"));  // the output doesn't exist yet
    EXPECT_TRUE(skips(u"-gen=5"));
    EXPECT_TRUE(skips(u"-gen=1"));  // no chosen output: a missing file counts as time 0
    ASSERT_TRUE(WriteBytes(out, "ID3"));
    Age(source.path, 3600);
    EXPECT_TRUE(skips(u"-gen=4"));
    EXPECT_FALSE(skips(u"-gen=5"));
    EXPECT_TRUE(skips(u"-gen=6"));  // the output is newer than the source
    source.chosenOutput = out;
    EXPECT_FALSE(skips(u"-gen=1"));
    Age(out, 7200);
    EXPECT_FALSE(skips(u"-gen=6"));
    EXPECT_TRUE(skips(u"-gen=1"));
    EXPECT_FALSE(skips(u"-gen=9"));  // an unknown test never holds

    // Within one second: an output written a moment after its source is
    // newer. (Written, not stamped: a time set through the C library has
    // whole seconds on Windows.)
    bool sameSecond = false;
    for (int attempt = 0; attempt < 20 && !sameSecond; ++attempt) {
        ASSERT_TRUE(WriteBytes(source.path, "RIFF"));
        PlatformSleep(30);
        ASSERT_TRUE(WriteBytes(out, "ID3"));
        clFindFiles a(source.path), b(out);
        ASSERT_TRUE(a.Next() && b.Next());
        sameSecond = a.found.writeTime == b.found.writeTime && a.found.writeNanoseconds < b.found.writeNanoseconds;
    }
    ASSERT_TRUE(sameSecond);
    EXPECT_TRUE(skips(u"-gen=6"));
    EXPECT_FALSE(skips(u"-gen=1"));
}

// "Audio Quality" is looked up in the tags first, then in the decoder's
// properties, where this program's decoders report it.
TEST(ConditionalRules, LosslessIsReadFromTheTagsOrTheProperties) {
    clSourceFile source(clString(u"/music/a.wv"));
    EXPECT_FALSE(SourceIsLossless(source));
    SetFacts(source, 44100, 16, 0, u"LOSSLESS");
    EXPECT_TRUE(SourceIsLossless(source));
    clTagList tags;
    tags.AddTag(u"Audio Quality", u"Perfect (verified)");
    tags.SaveBlock(source.tagBlock);
    SetFacts(source, 44100, 16, 0, u"Lossy");
    EXPECT_TRUE(SourceIsLossless(source));  // the tag decides
}
