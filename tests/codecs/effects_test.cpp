// The in-house effects ("Channel Count", "Bit Depth", "ID Tag Processing")
// in real conversions through ConvertWorker, WAVE in and out, on every
// platform.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"

namespace {

int32_t SampleAt(const std::string& data, size_t index, int bytes) {
    uint32_t u = 0;
    for (int k = 0; k < bytes; ++k)
        u |= static_cast<uint32_t>(static_cast<unsigned char>(data[index * bytes + k])) << (8 * k);
    u <<= 32 - 8 * bytes;
    return static_cast<int32_t>(u) >> (32 - 8 * bytes);
}

// 16-bit audio where channel c carries `levels[c]` times a tone.
std::string Tones(size_t frames, const std::vector<double>& levels) {
    std::string out;
    for (size_t i = 0; i < frames; ++i) {
        double v = std::sin(static_cast<double>(i) * 0.05);
        for (double level : levels) Le(out, static_cast<uint16_t>(static_cast<int16_t>(std::lround(level * v))), 2);
    }
    return out;
}

std::string Info(std::initializer_list<std::pair<const char*, std::string>> texts) {
    std::string body = "INFO";
    for (const auto& [id, text] : texts) body += Chunk(id, text + std::string(1, '\0'));
    return Chunk("LIST", body);
}

class Effects : public CodecTest {
protected:
    // Converts in.wav to 16-bit out.wav through `effects`; its data chunk.
    std::string Run(const std::u16string& effects, const char16_t* bits = u"16") {
        std::u16string options = effects + u" -bits=" + bits;
        std::u16string log = Convert(u"in.wav", u"out.wav", u"Wave", options.c_str());
        EXPECT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << std::string(log.begin(), log.end());
        out = ReadBytes(dir.File(u"out.wav"));
        return FindChunk(out, "data");
    }
    std::string out;
};

}  // namespace

TEST_F(Effects, ChannelCountMixesByThePositionsOfTheSpeakers) {
    const size_t frames = 2000;
    struct Case {
        std::vector<double> levels;
        const char16_t* settings;
        int outChannels;
        std::vector<double> expected;  // gain of the tone in each output channel
    } cases[] = {
        // 5.1 to stereo: centre and surrounds at -3 dB, the LFE left out,
        // all scaled by 1 / (1 + 2 x 0.7071) so nothing can clip.
        {{0, 0, 10000, 0, 0, 0}, u"-channels=2", 2, {0.7071 / 2.4142, 0.7071 / 2.4142}},
        {{10000, 0, 0, 0, 0, 0}, u"-channels=2", 2, {1 / 2.4142, 0}},
        {{0, 0, 0, 10000, 0, 0}, u"-channels=2", 2, {0, 0}},
        {{0, 0, 0, 0, 0, 10000}, u"-channels=2", 2, {0, 0.7071 / 2.4142}},
        // Stereo to mono is the mean; mono to stereo a copy in both.
        {{10000, 6000}, u"-channels=1", 1, {0.8}},
        {{10000}, u"-channels=2", 2, {1, 1}},
        // Stereo to 5.1: the front pair, the rest silent.
        {{10000, 5000}, u"-channels=6", 6, {1, 0.5, 0, 0, 0, 0}},
        // -max only ever mixes down.
        {{10000, 5000}, u"-max=1", 1, {0.75}},
        {{10000, 5000}, u"-max=6", 2, {1, 0.5}},
    };
    for (const Case& c : cases) {
        const auto inChannels = static_cast<uint16_t>(c.levels.size());
        ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"),
                               Riff(FormatBody(1, inChannels, 44100, 2, 16, inChannels > 2, inChannels > 2 ? 0x3F : 0),
                                    Tones(frames, c.levels))));
        std::string data = Run(u"-dspeffect1=\"Channel Count=" + std::u16string(c.settings) + u"\"");
        ASSERT_EQ(data.size(), frames * 2 * static_cast<size_t>(c.outChannels)) << c.levels.size();
        // At the tone's peak (sample 31: sin(1.55)), channel by channel.
        const double peak = std::sin(31 * 0.05) * 10000;
        for (int ch = 0; ch < c.outChannels; ++ch) {
            double got = SampleAt(data, 31 * static_cast<size_t>(c.outChannels) + static_cast<size_t>(ch), 2);
            EXPECT_NEAR(got, c.expected[static_cast<size_t>(ch)] * peak, 2.0) << c.levels.size() << " ch, out " << ch;
        }
    }
    // Nothing to do: the samples pass bit for bit.
    std::string pcm = Tones(frames, {1234, -4321});
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), pcm)));
    EXPECT_EQ(Run(u"-dspeffect1=\"Channel Count=-max=2\""), pcm);
    // Bad settings fail the file with the effect's reason.
    std::u16string log = Convert(u"in.wav", u"bad.wav", u"Wave", u"-dspeffect1=\"Channel Count=-channels=9\"");
    EXPECT_NE(log.find(u"-channels takes 1|2|3|4|5|6|7|8, not '9'"), std::u16string::npos)
        << std::string(log.begin(), log.end());
    EXPECT_TRUE(ReadBytes(dir.File(u"bad.wav")).empty());
}

TEST_F(Effects, BitDepthDithersOnlyWhenItReduces) {
    // 24-bit samples that sit between 16-bit steps.
    std::string pcm;
    const size_t frames = 20000;
    std::vector<int32_t> source;
    for (size_t i = 0; i < frames; ++i) {
        auto v = static_cast<int32_t>(std::lround(3000000 * std::sin(static_cast<double>(i) * 0.01))) + 77;
        source.push_back(v);
        Le(pcm, static_cast<uint32_t>(v) & 0xFFFFFF, 3);
    }
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 1, 44100, 3, 24, false), pcm)));
    std::string plain = Run(u"-dspeffect1=\"Bit Depth=-bits=16 -dither=0\"");
    std::string dithered = Run(u"-dspeffect1=\"Bit Depth=-bits=16\"");
    ASSERT_EQ(plain.size(), frames * 2);
    ASSERT_EQ(dithered.size(), frames * 2);
    double errorSum = 0;
    int differ = 0;
    for (size_t i = 0; i < frames; ++i) {
        double exact = source[i] / 256.0;
        int32_t rounded = SampleAt(plain, i, 2), noisy = SampleAt(dithered, i, 2);
        ASSERT_EQ(rounded, static_cast<int32_t>(std::floor(exact + 0.5))) << i;  // halves go up
        // Triangular dither of one step peak to peak moves a sample by at
        // most one step from the rounded value, and by nothing on average.
        ASSERT_LE(std::abs(noisy - rounded), 1) << i;
        errorSum += noisy - exact;
        differ += noisy != rounded;
    }
    EXPECT_LT(std::fabs(errorSum / frames), 0.05);
    EXPECT_GT(differ, static_cast<int>(frames / 10));
    // The same file dithers the same way twice.
    EXPECT_EQ(Run(u"-dspeffect1=\"Bit Depth=-bits=16\""), dithered);
    // Going up only widens: every 16-bit sample comes back as it was.
    std::string pcm16 = Tones(1000, {12345});
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 1, 44100, 2, 16, false), pcm16)));
    std::string wide = Run(u"-dspeffect1=\"Bit Depth=-bits=24\"", u"24");
    for (size_t i = 0; i < 1000; ++i) ASSERT_EQ(SampleAt(wide, i, 3), SampleAt(pcm16, i, 2) * 256) << i;
}

TEST_F(Effects, IdTagProcessingEditsTheTagsOfTheOutput) {
    std::string tagged = Info({{"INAM", "Old Title"}, {"IART", "Artist"}, {"IPRD", "Album"}, {"ICMT", "Note"}});
    ASSERT_TRUE(
        WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 1, 44100, 2, 16, false), Tones(100, {1000}), tagged)));
    Run(u"-dspeffect1=\"ID Tag Processing=-set=%22title=New%22 -append=%22artist=Guest%22 "
        u"-append=%22genre=Ambient%22 -remove=%22comment%22\"");
    std::string list = FindChunk(out, "LIST");
    EXPECT_NE(list.find("New"), std::string::npos);
    EXPECT_EQ(list.find("Old Title"), std::string::npos);
    // RIFF INFO keeps one value a tag: the first, which an append leaves.
    EXPECT_NE(list.find("Artist"), std::string::npos);
    EXPECT_NE(list.find("Ambient"), std::string::npos);
    EXPECT_NE(list.find("Album"), std::string::npos);
    EXPECT_EQ(list.find("Note"), std::string::npos);
    // -delexcept keeps the named tags only; -delall keeps nothing but
    // what is set after it, whatever the order the options are written in.
    Run(u"-dspeffect1=\"ID Tag Processing=-delexcept=%22album; title%22\"");
    list = FindChunk(out, "LIST");
    EXPECT_NE(list.find("Old Title"), std::string::npos);
    EXPECT_NE(list.find("Album"), std::string::npos);
    EXPECT_EQ(list.find("Artist"), std::string::npos);
    Run(u"-dspeffect1=\"ID Tag Processing=-set=%22album=Only%22 -delall\"");
    list = FindChunk(out, "LIST");
    EXPECT_NE(list.find("Only"), std::string::npos);
    EXPECT_EQ(list.find("Artist"), std::string::npos);
    EXPECT_EQ(list.find("Old Title"), std::string::npos);
    // The spellings the front end uses for names delete nothing.
    Run(u"-dspeffect1=\"ID Tag Processing=-replaceddelall -replaceddelexcept=%22album%22 -set=%22title=T%22\"");
    list = FindChunk(out, "LIST");
    EXPECT_NE(list.find("Artist"), std::string::npos);
    EXPECT_NE(list.find("Note"), std::string::npos);
    EXPECT_NE(list.find("IART"), std::string::npos);
}

TEST_F(Effects, PageOnlyEffectsPassTheAudioUntouched) {
    std::string pcm = Tones(3000, {1000, -2000});
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), pcm)));
    EXPECT_EQ(Run(u"-dspeffect1=\"Conditional Encoding=-rule1=%22x%22\" -dspeffect2=\"Multi-CPU Force=-cpu2=1\""),
              pcm);
    // [Multi Encoder] is a name to choose, never a converter of its own.
    std::u16string log = Convert(u"in.wav", u"multi.wav", u"[Multi Encoder]");
    EXPECT_NE(log.find(u"converts through the encoders of its items"), std::u16string::npos)
        << std::string(log.begin(), log.end());
}
