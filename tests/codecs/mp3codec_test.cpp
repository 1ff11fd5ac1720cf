// The "MP3" decoder against the reference tools: files made by `lame`
// decode through the real ConvertWorker to exactly the number of samples
// they were made from, as `mpg123` decodes them, with their ID3 tags.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "foundation/platform/filesystem.h"
#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"

namespace {

// A tone that an MP3 encoder keeps, as 16-bit stereo.
std::string Tone(size_t frames) {
    std::string out;
    for (size_t i = 0; i < frames; ++i) {
        auto v = static_cast<int16_t>(8000 * std::sin(static_cast<double>(i) * 0.05));
        Le(out, static_cast<uint16_t>(v), 2);
        Le(out, static_cast<uint16_t>(v), 2);
    }
    return out;
}

class Mp3Codec : public CodecTest {};

}  // namespace

TEST_F(Mp3Codec, LameFilesDecodeToTheirExactLengthWithTheirTags) {
    for (size_t frames : {44100u * 3 + 123u, 1152u * 10u, 5000u}) {
        ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Tone(frames))));
        ASSERT_EQ(
            Tool(u"/usr/bin/lame",
                 {clString(u"--quiet"), clString(u"-V2"), clString(u"--tt"), clString(u"Caf\u00e9"), clString(u"--ta"),
                  clString(u"Artist"), clString(u"--tn"), clString(u"3/12"), dir.File(u"in.wav"), dir.File(u"in.mp3")}),
            0);
        std::u16string log = Convert(u"in.mp3", u"out.wav", u"Wave");
        std::string out = ReadBytes(dir.File(u"out.wav"));
        std::string data = FindChunk(out, "data");
        EXPECT_EQ(data.size(), frames * 2 * 4) << frames << ": " << std::string(log.begin(), log.end());  // float
        // The reference decoder agrees on the length.
        ASSERT_EQ(
            Tool(u"/usr/bin/mpg123", {clString(u"-q"), clString(u"-w"), dir.File(u"ref.wav"), dir.File(u"in.mp3")}), 0);
        EXPECT_EQ(FindChunk(ReadBytes(dir.File(u"ref.wav")), "data").size(), frames * 2 * 2);
        std::string list = FindChunk(out, "LIST");
        EXPECT_NE(list.find("Caf\xC3\xA9"), std::string::npos);
        EXPECT_NE(list.find("Artist"), std::string::npos);
        EXPECT_NE(list.find("3/12"), std::string::npos);
    }
}

TEST_F(Mp3Codec, NotAnMp3Fails) {
    ASSERT_TRUE(WriteBytes(dir.File(u"text.mp3"), std::string(5000, 'x')));
    std::u16string log = Convert(u"text.mp3", u"out.wav", u"Wave");
    EXPECT_NE(log.find(u"Unable to open source file '" + std::u16string(dir.File(u"text.mp3").text)),
              std::u16string::npos)
        << std::string(log.begin(), log.end());
    EXPECT_TRUE(ReadBytes(dir.File(u"out.wav")).empty());
    ASSERT_TRUE(WriteBytes(dir.File(u"empty.mp3"), ""));
    log = Convert(u"empty.mp3", u"out.wav", u"Wave");
    EXPECT_NE(log.find(u"Unable to open source file"), std::u16string::npos);
}

TEST_F(Mp3Codec, CutAndCorruptedStreamsEndWithoutHangOrCrash) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Tone(44100 * 2))));
    ASSERT_EQ(
        Tool(u"/usr/bin/lame", {clString(u"--quiet"), clString(u"-V2"), dir.File(u"in.wav"), dir.File(u"in.mp3")}), 0);
    std::string good = ReadBytes(dir.File(u"in.mp3"));
    std::string corrupt = good;
    for (size_t i = good.size() / 3; i < good.size(); i += 11) corrupt[i] = static_cast<char>(corrupt[i] ^ 0x33);
    // An MP3 stream has no length of its own to break: a cut file is a
    // shorter stream, and damaged frames are skipped to the next sync.
    // Either way the file converts or fails with its name, and the worker
    // ends.
    for (const std::string& content : {good.substr(0, good.size() / 2), corrupt, good.substr(0, 300)}) {
        ASSERT_TRUE(WriteBytes(dir.File(u"bad.mp3"), content));
        std::u16string log = Convert(u"bad.mp3", u"out.wav", u"Wave");
        bool converted = log.find(u"PCDone: 100") != std::u16string::npos;
        bool named = log.find(std::u16string(dir.File(u"bad.mp3").text)) != std::u16string::npos;
        EXPECT_TRUE(converted || named) << content.size() << ": " << std::string(log.begin(), log.end());
    }
    // The first half decodes to about half the samples.
    ASSERT_TRUE(WriteBytes(dir.File(u"bad.mp3"), good.substr(0, good.size() / 2)));
    Convert(u"bad.mp3", u"out.wav", u"Wave");
    size_t frames = FindChunk(ReadBytes(dir.File(u"out.wav")), "data").size() / 8;
    EXPECT_NEAR(static_cast<double>(frames), 44100.0, 4410.0);
}

// What a download, a tagger or a copy leaves at the end of a file: every
// good frame before it converts, with an information line saying the end
// was damaged; the same damage in the middle of a file still fails, where
// it happened.
TEST_F(Mp3Codec, ADamagedEndConvertsEveryGoodFrameAndSaysSo) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Tone(44100 * 4))));
    ASSERT_EQ(
        Tool(u"/usr/bin/lame", {clString(u"--quiet"), clString(u"-b128"), dir.File(u"in.wav"), dir.File(u"in.mp3")}),
        0);
    std::string good = ReadBytes(dir.File(u"in.mp3"));
    // No sync word in it, and longer than libmpg123 looks for one.
    std::string garbage;
    for (int i = 0; i < 3000; ++i) garbage += static_cast<char>('a' + i % 23);
    std::string id3v2 = std::string("ID3\x04\0\0\0\0\0\x20", 10) + std::string(32, '\0');
    std::string id3v1 = "TAG" + std::string(125, 'a');
    struct Case {
        const char* what;
        std::string content;
    } cases[] = {
        {"trailing garbage", good + garbage},
        {"a cut last frame", good.substr(0, good.size() - 200)},
        {"an ID3v2 tag after the ID3v1 tail", good + id3v1 + id3v2 + garbage.substr(0, 100)},
        // The LAME header counts more frames than are left: libmpg123
        // drops the gapless trimming when a full scan finds this out.
        {"a file cut in the middle", good.substr(0, good.size() / 2)},
        // Two files joined: the header counts only the first one's.
        {"two files joined", good + good},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(WriteBytes(dir.File(u"tail.mp3"), c.content));
        std::u16string log = Convert(u"tail.mp3", u"out.wav", u"Wave");
        std::string text(log.begin(), log.end());
        EXPECT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << c.what << ": " << text;
        EXPECT_EQ(log.find(u"Error"), std::u16string::npos) << c.what << ": " << text;
        // Only the garbage is damage to speak of: libmpg123 ends the
        // other streams quietly, as the reference decoder does.
        bool noted = log.find(u"the end of the file is damaged; the 4.0 s of audio before it were converted") !=
                     std::u16string::npos;
        EXPECT_EQ(noted, c.content == good + garbage) << c.what << ": " << text;
        ASSERT_TRUE(WriteBytes(dir.File(u"tail.mp3"), c.content));
        ASSERT_EQ(Tool(u"/usr/bin/mpg123",
                       {clString(u"-q"), clString(u"-w"), dir.File(u"ref.wav"), dir.File(u"tail.mp3")}),
                  0);
        size_t frames = FindChunk(ReadBytes(dir.File(u"out.wav")), "data").size() / 8;
        size_t reference = FindChunk(ReadBytes(dir.File(u"ref.wav")), "data").size() / 4;
        EXPECT_EQ(frames, reference) << c.what << ": " << text;
    }
    // The same garbage in the middle of the file is an error, at the block
    // that met it (blocks are 8192 frames: the one from 1.86 s).
    std::string middle = good.substr(0, good.size() / 2) + garbage + good.substr(good.size() / 2);
    ASSERT_TRUE(WriteBytes(dir.File(u"tail.mp3"), middle));
    ASSERT_TRUE(PlatformDeleteFile(dir.File(u"out.wav").text));
    std::u16string log = Convert(u"tail.mp3", u"out.wav", u"Wave");
    EXPECT_NE(log.find(u"Error decoding '" + std::u16string(dir.File(u"tail.mp3").text) + u"' at 00:01"),
              std::u16string::npos)
        << std::string(log.begin(), log.end());
    EXPECT_TRUE(ReadBytes(dir.File(u"out.wav")).empty());
}

// Two encodings joined into one file, the second at half the rate and in
// mono: the whole stream comes out in the first one's format, the second
// part resampled and spread over both channels, at its own pitch.
TEST_F(Mp3Codec, AStreamThatChangesItsFormatKeepsTheFirst) {
    const size_t second = 44100 * 2;  // frames of each part at 44100 Hz
    std::string mono;
    for (size_t i = 0; i < second / 2; ++i) {
        // 880 Hz at 22050 Hz.
        Le(mono, static_cast<uint16_t>(static_cast<int16_t>(8000 * std::sin(2 * M_PI * 880.0 * i / 22050))), 2);
    }
    ASSERT_TRUE(WriteBytes(dir.File(u"a.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Tone(second))));
    ASSERT_TRUE(WriteBytes(dir.File(u"b.wav"), Riff(FormatBody(1, 1, 22050, 2, 16, false), mono)));
    ASSERT_EQ(Tool(u"/usr/bin/lame", {clString(u"--quiet"), clString(u"-b192"), dir.File(u"a.wav"), dir.File(u"a.mp3")}),
              0);
    ASSERT_EQ(Tool(u"/usr/bin/lame", {clString(u"--quiet"), clString(u"-b64"), dir.File(u"b.wav"), dir.File(u"b.mp3")}),
              0);
    ASSERT_TRUE(WriteBytes(dir.File(u"ab.mp3"), ReadBytes(dir.File(u"a.mp3")) + ReadBytes(dir.File(u"b.mp3"))));
    std::u16string log = Convert(u"ab.mp3", u"out.wav", u"Wave");
    std::string text(log.begin(), log.end());
    EXPECT_NE(log.find(u"the audio changes to 22050 Hz, 1 channel at 2.0 s; it was converted to the file's first "
                       u"format, 44100 Hz, 2 channels"),
              std::u16string::npos)
        << text;
    std::string out = ReadBytes(dir.File(u"out.wav"));
    std::string format = FindChunk(out, "fmt ");
    ASSERT_GE(format.size(), 16u) << text;
    EXPECT_EQ(static_cast<uint8_t>(format[2]), 2);  // channels
    EXPECT_EQ(static_cast<uint8_t>(format[4]) | static_cast<uint8_t>(format[5]) << 8, 44100);
    std::string data = FindChunk(out, "data");
    std::vector<float> left;
    std::vector<float> right;
    for (size_t at = 0; at + 8 <= data.size(); at += 8) {
        float l = 0;
        float r = 0;
        std::memcpy(&l, data.data() + at, 4);
        std::memcpy(&r, data.data() + at + 4, 4);
        left.push_back(l);
        right.push_back(r);
    }
    // About four seconds: each part lasts as long as it did (the encoders'
    // delay and padding of the second one aside).
    EXPECT_NEAR(static_cast<double>(left.size()), 2.0 * second, 4096.0) << text;
    // The second part: both channels alike, 880 Hz at 44100 Hz, that is
    // 1760 zero crossings a second.
    size_t crossings = 0;
    const size_t from = second + 8192;
    const size_t to = std::min(left.size(), 2 * second - 8192);
    ASSERT_GT(to, from + 44100);
    for (size_t i = from + 1; i < to; ++i) {
        if ((left[i - 1] < 0) != (left[i] < 0)) ++crossings;
        EXPECT_EQ(left[i], right[i]) << i;
        if (left[i] != right[i]) break;
    }
    double perSecond = static_cast<double>(crossings) * 44100 / static_cast<double>(to - from - 1);
    EXPECT_NEAR(perSecond, 1760.0, 20.0);
}
