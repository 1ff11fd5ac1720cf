// The "FLAC" decoder against the reference tool: files made by `flac` from
// test WAVE files decode through the real ConvertWorker to exactly the
// samples `flac -d` gives, with their tags; damaged files fail.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"

namespace {

std::string Wave(uint16_t channels, uint32_t rate, uint16_t bits, const std::string& data) {
    // The usual speaker layouts, as the reference encoder wants them.
    static const uint32_t kMasks[9] = {0, 0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x13F, 0x63F};
    bool extensible = channels > 2 || bits > 16;
    return Riff(FormatBody(1, channels, rate, static_cast<uint16_t>((bits + 7) / 8), bits, extensible,
                           extensible ? kMasks[channels] : 0),
                data);
}

// Samples of `bits` in `bytes`-byte containers, low bits zero.
std::string Samples(size_t count, int bits) {
    int bytes = (bits + 7) / 8;
    std::string out;
    uint32_t x = 99;
    for (size_t i = 0; i < count; ++i) {
        x = x * 1664525u + 1013904223u;
        uint32_t v = x & (bits >= 32 ? 0xFFFFFFFFu : ((1u << bits) - 1));
        v <<= bytes * 8 - bits;
        Le(out, v, bytes);
    }
    return out;
}

class FlacCodec : public CodecTest {};

}  // namespace

TEST_F(FlacCodec, DecodesWhatTheReferenceEncoderMadeBitExact) {
    struct Case {
        uint16_t channels;
        uint32_t rate;
        uint16_t bits;
    } cases[] = {{1, 8000, 8}, {2, 44100, 16}, {2, 96000, 24}, {6, 48000, 24}, {8, 192000, 16}, {2, 44100, 32}};
    for (const Case& c : cases) {
        std::string data = Samples(30000u * c.channels, c.bits);
        ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(c.channels, c.rate, c.bits, data)));
        ASSERT_EQ(Tool(u"/usr/bin/flac",
                       {clString(u"-s"), clString(u"-f"), clString(u"-o"), dir.File(u"in.flac"), dir.File(u"in.wav")}),
                  0)
            << c.bits << " bits";
        std::u16string log = Convert(u"in.flac", u"out.wav", u"Wave");
        EXPECT_EQ(FindChunk(ReadBytes(dir.File(u"out.wav")), "data"), data)
            << c.channels << " ch " << c.bits << " bits: " << std::string(log.begin(), log.end());
    }
}

TEST_F(FlacCodec, TagsComeThroughAndAPictureDoesNoHarm) {
    std::string data = Samples(20000, 16);
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(2, 44100, 16, data)));
    // A tiny PNG-like picture; the decoder passes its bytes as they are.
    ASSERT_TRUE(WriteBytes(dir.File(u"cover.png"), std::string("\x89PNG\r\n\x1a\n", 8) + std::string(300, 'p')));
    ASSERT_EQ(Tool(u"/usr/bin/flac",
                   {clString(u"-s"), clString(u"-f"), clString(u"-T"), clString(u"TITLE=Caf\u00e9"), clString(u"-T"),
                    clString(u"ARTIST=One"), clString(u"-T"), clString(u"ARTIST=Two"), clString(u"-T"),
                    clString(u"TRACKNUMBER=3"), clString(u"-T"), clString(u"TRACKTOTAL=12"), clString(u"--picture"),
                    clString(u"3|image/png|front|16x16x24|", dir.File(u"cover.png").text), clString(u"-o"),
                    dir.File(u"in.flac"), dir.File(u"in.wav")}),
              0);
    Convert(u"in.flac", u"out.wav", u"Wave");
    std::string out = ReadBytes(dir.File(u"out.wav"));
    EXPECT_EQ(FindChunk(out, "data"), data);
    // The Wave encoder keeps the first value of a tag; "3/12" is the track.
    EXPECT_NE(out.find("Caf\xC3\xA9"), std::string::npos);
    EXPECT_NE(out.find("One"), std::string::npos);
    EXPECT_NE(out.find("3/12"), std::string::npos);
}

// A FLAC whose comment block stands `copies` times: the metadata blocks
// walked and the comment block repeated, the audio left as it is.
std::string RepeatCommentBlock(const std::string& flac, int copies) {
    std::string out = flac.substr(0, 4), comment;
    std::vector<std::string> blocks;
    size_t position = 4;
    for (bool last = false; !last && position + 4 <= flac.size();) {
        auto header = static_cast<unsigned char>(flac[position]);
        last = (header & 0x80) != 0;
        size_t length = (static_cast<size_t>(static_cast<unsigned char>(flac[position + 1])) << 16) |
                        (static_cast<size_t>(static_cast<unsigned char>(flac[position + 2])) << 8) |
                        static_cast<unsigned char>(flac[position + 3]);
        std::string block = flac.substr(position, 4 + length);
        block[0] = static_cast<char>(header & 0x7F);
        if ((header & 0x7F) == 4) {
            for (int i = 0; i < copies; ++i) blocks.push_back(block);
        } else {
            blocks.push_back(block);
        }
        position += 4 + length;
    }
    blocks.back()[0] = static_cast<char>(blocks.back()[0] | 0x80);
    for (const std::string& block : blocks) out += block;
    return out + flac.substr(position);
}

TEST_F(FlacCodec, ACommentBlockRepeatedAThousandTimesIsReadOnce) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(2, 44100, 16, Samples(20000, 16))));
    ASSERT_EQ(Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-f"), clString(u"-T"), clString(u"TITLE=Hello"),
                                      clString(u"-o"), dir.File(u"one.flac"), dir.File(u"in.wav")}),
              0);
    ASSERT_TRUE(WriteBytes(dir.File(u"many.flac"), RepeatCommentBlock(ReadBytes(dir.File(u"one.flac")), 1000)));
    ASSERT_EQ(Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-t"), dir.File(u"many.flac")}), 0);
    Convert(u"many.flac", u"out.flac", u"FLAC");
    ASSERT_EQ(Tool(u"/usr/bin/metaflac", {clString(u"--show-tag=TITLE"), dir.File(u"out.flac")}), 0);
    EXPECT_EQ(ReadBytes(dir.File(u"tool.log")), "TITLE=Hello\n");
}

TEST_F(FlacCodec, DamagedFilesFail) {
    std::string data = Samples(200000, 16);
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(2, 44100, 16, data)));
    ASSERT_EQ(Tool(u"/usr/bin/flac",
                   {clString(u"-s"), clString(u"-f"), clString(u"-o"), dir.File(u"in.flac"), dir.File(u"in.wav")}),
              0);
    std::string flac = ReadBytes(dir.File(u"in.flac"));
    ASSERT_TRUE(WriteBytes(dir.File(u"cut.flac"), flac.substr(0, flac.size() / 2)));
    std::u16string cut = Convert(u"cut.flac", u"cut.wav", u"Wave");
    EXPECT_NE(cut.find(u"Error decoding '" + std::u16string(dir.File(u"cut.flac").text)), std::u16string::npos)
        << std::string(cut.begin(), cut.end());
    EXPECT_TRUE(ReadBytes(dir.File(u"cut.wav")).empty());
    std::string flipped = flac;
    for (size_t i = flipped.size() / 3; i < flipped.size() / 3 + 64; ++i)
        flipped[i] = static_cast<char>(flipped[i] ^ 0x5A);
    ASSERT_TRUE(WriteBytes(dir.File(u"bad.flac"), flipped));
    std::u16string bad = Convert(u"bad.flac", u"bad.wav", u"Wave");
    EXPECT_NE(bad.find(u"Error decoding"), std::u16string::npos) << std::string(bad.begin(), bad.end());
    // The error says where: damage two thirds into the 2.27 s is met
    // after 1.4 s of good audio.
    std::string late = flac;
    for (size_t i = late.size() * 2 / 3; i < late.size() * 2 / 3 + 64; ++i) late[i] = static_cast<char>(late[i] ^ 0x5A);
    ASSERT_TRUE(WriteBytes(dir.File(u"late.flac"), late));
    std::u16string lateLog = Convert(u"late.flac", u"late.wav", u"Wave");
    EXPECT_NE(lateLog.find(u"late.flac' at 00:01: "), std::u16string::npos)
        << std::string(lateLog.begin(), lateLog.end());
    EXPECT_TRUE(ReadBytes(dir.File(u"bad.wav")).empty());
    ASSERT_TRUE(WriteBytes(dir.File(u"text.flac"), "this is not audio"));
    std::u16string text = Convert(u"text.flac", u"text.wav", u"Wave");
    EXPECT_NE(text.find(u"is not a FLAC file"), std::u16string::npos) << std::string(text.begin(), text.end());
}

// Our FLAC files pass the reference tool's test and decode with it to the
// very samples they were made from, at every level, with and without
// verification.
TEST_F(FlacCodec, EncoderOutputPassesTheReferenceTestAndDecodesBitExact) {
    struct Case {
        uint16_t channels;
        uint32_t rate;
        uint16_t bits;
        const char16_t* options;
    } cases[] = {{1, 8000, 8, u""},
                 {2, 44100, 16, u"-level=\"0\""},
                 {2, 96000, 24, u"-level=\"8\" -verify=\"1\""},
                 {6, 48000, 24, u""},
                 {2, 44100, 32, u"-verify=\"1\""}};
    for (const Case& c : cases) {
        std::string data = Samples(30000u * c.channels, c.bits);
        ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(c.channels, c.rate, c.bits, data)));
        std::u16string log = Convert(u"in.wav", u"out.flac", u"FLAC", c.options);
        ASSERT_EQ(Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-t"), dir.File(u"out.flac")}), 0)
            << std::string(log.begin(), log.end());
        ASSERT_EQ(Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-f"), clString(u"-d"), clString(u"-o"),
                                          dir.File(u"back.wav"), dir.File(u"out.flac")}),
                  0);
        EXPECT_EQ(FindChunk(ReadBytes(dir.File(u"back.wav")), "data"), data) << c.channels << " ch " << c.bits;
    }
}

namespace {

// Where a FLAC file's first frame starts: behind "fLaC" and its metadata
// blocks; npos when the blocks don't add up.
size_t FirstFrame(const std::string& file) {
    size_t at = 4;
    for (;;) {
        if (at + 4 > file.size()) return std::string::npos;
        unsigned char head = static_cast<unsigned char>(file[at]);
        size_t length = (static_cast<size_t>(static_cast<unsigned char>(file[at + 1])) << 16) |
                        (static_cast<size_t>(static_cast<unsigned char>(file[at + 2])) << 8) |
                        static_cast<unsigned char>(file[at + 3]);
        at += 4 + length;
        if ((head & 0x80) != 0) return at <= file.size() ? at : std::string::npos;
    }
}

}  // namespace

// The encoder writes its output in chunks and completes the stream header
// at the end by going back to it. On a file of several chunks, the header
// (sizes, sample count, MD5) and every frame must be what the reference
// encoder writes itself.
TEST_F(FlacCodec, AnOutputOfManyWriteChunksIsTheReferenceEncodersFrameForFrame) {
    std::string data = Samples(2u * 700000u, 16);  // noise: about 2.8 MB of frames
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(2, 44100, 16, data)));
    std::u16string log = Convert(u"in.wav", u"out.flac", u"FLAC");
    ASSERT_EQ(Tool(u"/usr/bin/flac",
                   {clString(u"-s"), clString(u"-f"), clString(u"-5"), clString(u"-o"), dir.File(u"ref.flac"),
                    dir.File(u"in.wav")}),
              0);
    std::string ours = ReadBytes(dir.File(u"out.flac"));
    std::string reference = ReadBytes(dir.File(u"ref.flac"));
    ASSERT_GT(ours.size(), 2u << 20) << std::string(log.begin(), log.end());
    // STREAMINFO is the first block, 34 bytes behind its header.
    EXPECT_EQ(ours.substr(8, 34), reference.substr(8, 34));
    size_t ourFrames = FirstFrame(ours);
    size_t referenceFrames = FirstFrame(reference);
    ASSERT_NE(ourFrames, std::string::npos);
    ASSERT_NE(referenceFrames, std::string::npos);
    EXPECT_TRUE(ours.compare(ourFrames, std::string::npos, reference, referenceFrames) == 0);
}

TEST_F(FlacCodec, TagsMultipleValuesAndPicturesSurviveFlacToFlac) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(2, 44100, 16, Samples(20000, 16))));
    std::string picture = std::string("\x89PNG\r\n\x1a\n", 8) + std::string(5000, 'p');
    ASSERT_TRUE(WriteBytes(dir.File(u"cover.png"), picture));
    ASSERT_EQ(Tool(u"/usr/bin/flac",
                   {clString(u"-s"),        clString(u"-f"),
                    clString(u"-T"),        clString(u"TITLE=Caf\u00e9"),
                    clString(u"-T"),        clString(u"ARTIST=One"),
                    clString(u"-T"),        clString(u"ARTIST=Two"),
                    clString(u"-T"),        clString(u"ALBUMARTIST=Various"),
                    clString(u"-T"),        clString(u"TRACKNUMBER=3"),
                    clString(u"-T"),        clString(u"TRACKTOTAL=12"),
                    clString(u"-T"),        clString(u"MYFIELD=kept"),
                    clString(u"-T"),        clString(u"BAND=The Band"),
                    clString(u"--picture"), clString(u"3|image/png|front|16x16x24|", dir.File(u"cover.png").text),
                    clString(u"-o"),        dir.File(u"in.flac"),
                    dir.File(u"in.wav")}),
              0);
    Convert(u"in.flac", u"out.flac", u"FLAC");
    ASSERT_EQ(Tool(u"/usr/bin/metaflac", {clString(u"--export-tags-to=-"), dir.File(u"out.flac")}), 0);
    std::string tags = ReadBytes(dir.File(u"tool.log"));
    for (const char* line : {"TITLE=Caf\xC3\xA9\n", "ARTIST=One\n", "ARTIST=Two\n", "ALBUMARTIST=Various\n",
                             "TRACKNUMBER=3\n", "TRACKTOTAL=12\n", "MYFIELD=kept\n", "BAND=The Band\n"}) {
        EXPECT_NE(tags.find(line), std::string::npos) << line << " in " << tags;
    }
    EXPECT_EQ(tags.find("ENSEMBLE="), std::string::npos) << "BAND stays BAND: " << tags;
    // Through MP3 and back, too.
    Convert(u"in.flac", u"mid.mp3", u"MP3 (Lame)");
    Convert(u"mid.mp3", u"back.flac", u"FLAC");
    ASSERT_EQ(Tool(u"/usr/bin/metaflac", {clString(u"--export-tags-to=-"), dir.File(u"back.flac")}), 0);
    std::string roundTrip = ReadBytes(dir.File(u"tool.log"));
    EXPECT_NE(roundTrip.find("BAND=The Band\n"), std::string::npos) << roundTrip;
    EXPECT_EQ(roundTrip.find("ENSEMBLE="), std::string::npos) << roundTrip;
    ASSERT_EQ(
        Tool(u"/usr/bin/metaflac", {clString(u"--export-picture-to"), dir.File(u"back.png"), dir.File(u"out.flac")}),
        0);
    EXPECT_EQ(ReadBytes(dir.File(u"back.png")), picture);
}

// Depths and rates outside the streamable subset (a 7-bit WAVE, 11 Hz)
// still make FLAC, not "the output file can't be created": the reference
// tool accepts the file and gives the samples back.
TEST_F(FlacCodec, DepthsAndRatesBeyondTheSubsetEncode) {
    struct Case {
        uint16_t bits;
        uint32_t rate;
    } cases[] = {{7, 44100}, {13, 22050}, {16, 11}};
    for (const Case& c : cases) {
        std::string data = Samples(8000, c.bits);
        ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Wave(1, c.rate, c.bits, data)));
        std::u16string log = Convert(u"in.wav", u"out.flac", u"FLAC");
        EXPECT_EQ(log.find(u"Unable"), std::u16string::npos) << std::string(log.begin(), log.end());
        ASSERT_EQ(Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-f"), clString(u"-d"), clString(u"-o"),
                                          dir.File(u"back.wav"), dir.File(u"out.flac")}),
                  0)
            << c.bits << " bits at " << c.rate << " Hz";
        EXPECT_EQ(FindChunk(ReadBytes(dir.File(u"back.wav")), "data"), data) << c.bits << " bits";
    }
}

// Where a FLAC file's frames begin, after its metadata blocks.
size_t FramesStart(const std::string& flac) {
    size_t position = 4;
    for (bool last = false; !last && position + 4 <= flac.size();) {
        last = (static_cast<unsigned char>(flac[position]) & 0x80) != 0;
        position += 4 + ((static_cast<size_t>(static_cast<unsigned char>(flac[position + 1])) << 16) |
                         (static_cast<size_t>(static_cast<unsigned char>(flac[position + 2])) << 8) |
                         static_cast<unsigned char>(flac[position + 3]));
    }
    return position;
}

// Frames of a 22050 Hz mono stream joined to a 44100 Hz stereo one (as
// stream editors that cut and join frames make them; the header's length
// and signature left unset): the whole file comes out at 44100 Hz in
// stereo, the first part bit-exact, the second resampled at its pitch.
TEST_F(FlacCodec, FramesThatChangeTheRateKeepTheFirstFormat) {
    std::string first = Samples(44100u * 2, 16);  // one second
    std::string second;
    for (size_t i = 0; i < 22050; ++i) {
        Le(second, static_cast<uint16_t>(static_cast<int16_t>(8000 * std::sin(2 * M_PI * 880.0 * i / 22050))), 2);
    }
    ASSERT_TRUE(WriteBytes(dir.File(u"a.wav"), Wave(2, 44100, 16, first)));
    ASSERT_TRUE(WriteBytes(dir.File(u"b.wav"), Wave(1, 22050, 16, second)));
    for (const char16_t* name : {u"a", u"b"}) {
        std::u16string base(name);
        ASSERT_EQ(Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-f"), clString(u"--no-seektable"),
                                          clString(u"-o"), dir.File((base + u".flac").c_str()),
                                          dir.File((base + u".wav").c_str())}),
                  0);
    }
    std::string a = ReadBytes(dir.File(u"a.flac"));
    std::string b = ReadBytes(dir.File(u"b.flac"));
    // STREAMINFO: total samples (the low 36 bits of bytes 13..17 of the
    // body) and the MD5 signature (its last 16 bytes) unset.
    const size_t body = 8;
    a[body + 13] = static_cast<char>(a[body + 13] & 0xF0);
    for (size_t i = body + 14; i < body + 34; ++i) a[i] = '\0';
    ASSERT_TRUE(WriteBytes(dir.File(u"ab.flac"), a + b.substr(FramesStart(b))));
    std::u16string log = Convert(u"ab.flac", u"out.wav", u"Wave");
    std::string text(log.begin(), log.end());
    EXPECT_NE(log.find(u"the audio changes to 22050 Hz, 1 channel at 1.0 s; it was converted to the file's first "
                       u"format, 44100 Hz, 2 channels"),
              std::u16string::npos)
        << text;
    std::string out = FindChunk(ReadBytes(dir.File(u"out.wav")), "data");
    ASSERT_GE(out.size(), first.size()) << text;
    EXPECT_EQ(out.substr(0, first.size()), first);
    // A second more, both channels alike, 880 Hz: 1760 zero crossings
    // a second.
    std::string rest = out.substr(first.size());
    EXPECT_NEAR(static_cast<double>(rest.size() / 4), 44100.0, 64.0);
    size_t crossings = 0;
    int16_t before = 0;
    for (size_t at = 4 * 4096; at + 4 <= rest.size() - 4 * 4096; at += 4) {
        auto left = static_cast<int16_t>(static_cast<uint8_t>(rest[at]) | static_cast<uint8_t>(rest[at + 1]) << 8);
        ASSERT_EQ(rest.substr(at, 2), rest.substr(at + 2, 2)) << at;
        if ((left < 0) != (before < 0) && at > 4 * 4096) ++crossings;
        before = left;
    }
    EXPECT_NEAR(static_cast<double>(crossings) * 44100 / (rest.size() / 4 - 2 * 4096), 1760.0, 20.0);
}
