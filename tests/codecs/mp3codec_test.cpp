// The "MP3" decoder against the reference tools: files made by `lame`
// decode through the real ConvertWorker to exactly the number of samples
// they were made from, as `mpg123` decodes them, with their ID3 tags.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

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
