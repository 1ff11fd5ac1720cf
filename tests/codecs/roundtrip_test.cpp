// Every codec through the real worker and back, with nothing but the
// build's own plug-ins: the same test on Linux and, with the codec
// libraries cross-built for Windows, under Wine. Lossless comes back bit
// for bit, lossy at its exact length, tags and a picture survive, and the
// effects on those libraries change what they should.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"

namespace {

constexpr double kPi = 3.141592653589793;

// A stereo 16-bit tone with a different pitch on each side, so that a
// swap or a mix would show.
std::string StereoTone(size_t frames, uint32_t rate) {
    std::string data;
    for (size_t i = 0; i < frames; ++i) {
        double t = static_cast<double>(i) / rate;
        Le(data, static_cast<uint16_t>(static_cast<int16_t>(9000 * std::sin(2 * kPi * 440 * t))), 2);
        Le(data, static_cast<uint16_t>(static_cast<int16_t>(5000 * std::sin(2 * kPi * 660 * t))), 2);
    }
    return data;
}

std::string Tagged(const std::string& data, uint32_t rate) {
    std::string list = "INFO" + Chunk("INAM", std::string("Caf\xC3\xA9 Song") + '\0') +
                       Chunk("IART", std::string("The Band") + '\0');
    return Riff(FormatBody(1, 2, rate, 2, 16, false), data, Chunk("LIST", list));
}

class RoundTrip : public CodecTest {};

}  // namespace

TEST_F(RoundTrip, EveryCodecComesBackAtItsLengthWithItsTags) {
    const size_t frames = 48000 + 4321;
    const std::string data = StereoTone(frames, 48000);
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Tagged(data, 48000)));
    struct Case {
        const char16_t* encoder;
        const char16_t* file;
        bool exact;
    } cases[] = {
        {u"FLAC", u"out.flac", true},
        {u"MP3 (Lame)", u"out.mp3", false},
        {u"Ogg Vorbis", u"out.ogg", false},
        {u"Opus", u"out.opus", false},
    };
    for (const Case& c : cases) {
        std::u16string log = Convert(u"in.wav", c.file, c.encoder);
        std::string text(log.begin(), log.end());
        ASSERT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << text;
        log = Convert(c.file, u"back.wav", u"Wave", u"-bits=16");
        text = std::string(log.begin(), log.end());
        ASSERT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << text;
        std::string back = ReadBytes(dir.File(u"back.wav"));
        std::string decoded = FindChunk(back, "data");
        EXPECT_EQ(decoded.size(), data.size()) << text;
        if (c.exact) {
            EXPECT_EQ(decoded, data);
        } else {
            // Lossy: the left channel stays the louder one.
            double left = 0;
            double right = 0;
            for (size_t at = 4 * 4800; at + 4 <= decoded.size(); at += 4) {
                auto l = static_cast<int16_t>(static_cast<uint8_t>(decoded[at]) | decoded[at + 1] << 8);
                auto r = static_cast<int16_t>(static_cast<uint8_t>(decoded[at + 2]) | decoded[at + 3] << 8);
                left += static_cast<double>(l) * l;
                right += static_cast<double>(r) * r;
            }
            EXPECT_NEAR(left / right, 81.0 / 25.0, 0.2) << text;
        }
        std::string list = FindChunk(back, "LIST");
        EXPECT_NE(list.find("Caf\xC3\xA9 Song"), std::string::npos) << text;
        EXPECT_NE(list.find("The Band"), std::string::npos) << text;
    }
}

TEST_F(RoundTrip, ResampleAndLoudnessEffectsWork) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Tagged(StereoTone(44100, 44100), 44100)));
    std::u16string log =
        Convert(u"in.wav", u"out.wav", u"Wave", u"-dspeffect1=\"Resample=-rate=22050\" -bits=16");
    std::string text(log.begin(), log.end());
    ASSERT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << text;
    std::string out = ReadBytes(dir.File(u"out.wav"));
    std::string format = FindChunk(out, "fmt ");
    ASSERT_GE(format.size(), 16u);
    EXPECT_EQ(static_cast<uint8_t>(format[4]) | static_cast<uint8_t>(format[5]) << 8, 22050);
    EXPECT_NEAR(static_cast<double>(FindChunk(out, "data").size() / 4), 22050.0, 2.0);

    log = Convert(u"in.wav", u"gain.flac", u"FLAC", u"-dspeffect1=\"ReplayGain=-mode=track\"");
    text = std::string(log.begin(), log.end());
    ASSERT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << text;
    EXPECT_NE(ReadBytes(dir.File(u"gain.flac")).find("REPLAYGAIN_TRACK_GAIN="), std::string::npos) << text;

    // To a peak of -1 dB: the left channel's 9000 becomes about 29200.
    log = Convert(u"in.wav", u"loud.wav", u"Wave", u"-dspeffect1=\"Volume Normalize=-target=-1\" -bits=16");
    text = std::string(log.begin(), log.end());
    ASSERT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << text;
    std::string loud = FindChunk(ReadBytes(dir.File(u"loud.wav")), "data");
    int peak = 0;
    for (size_t at = 0; at + 2 <= loud.size(); at += 4) {
        peak = std::max(peak, std::abs(static_cast<int16_t>(static_cast<uint8_t>(loud[at]) | loud[at + 1] << 8)));
    }
    EXPECT_NEAR(peak, 29204, 40) << text;
}
