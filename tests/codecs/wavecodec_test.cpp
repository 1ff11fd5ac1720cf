// The "Wave" decoder and encoder through the real ConvertWorker of the
// build (<build>/bin), on files the tests write: every container and
// sample layout the decoder reads goes to a WAVE file with the same
// samples, bit for bit; damaged files fail with a line that says why.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"
#include "tests/support/testfolder.h"

namespace {

// Samples as bytes: `count` values, `bytes` each, little-endian, in a
// fixed pseudo-random walk.
std::string Samples(size_t count, int bytes) {
    std::string out;
    uint32_t x = 12345;
    for (size_t i = 0; i < count * static_cast<size_t>(bytes); ++i) {
        x = x * 1103515245u + 12345u;
        out.push_back(static_cast<char>(x >> 16));
    }
    return out;
}

std::string FloatSamples(size_t count) {
    std::string out;
    for (size_t i = 0; i < count; ++i) {
        float f = static_cast<float>((static_cast<int>(i * 7919 % 2001) - 1000) / 1000.0);
        char b[4];
        std::memcpy(b, &f, 4);
        out.append(b, 4);
    }
    return out;
}

std::string Extended(uint32_t rate) {
    // 80-bit extended float of an integer rate.
    int exponent = 31;
    uint64_t mantissa = rate;
    while ((mantissa & 0x80000000u) == 0) {
        mantissa <<= 1;
        --exponent;
    }
    std::string out;
    Be(out, 16383 + exponent, 2);
    Be(out, mantissa << 32, 8);
    return out;
}

std::string Aiff(uint16_t channels, uint32_t rate, uint16_t bits, const std::string& bigEndianData,
                 const char* compression = nullptr) {
    uint32_t frames = static_cast<uint32_t>(bigEndianData.size() / channels / ((bits + 7) / 8));
    std::string comm;
    Be(comm, channels, 2);
    Be(comm, frames, 4);
    Be(comm, bits, 2);
    comm += Extended(rate);
    if (compression != nullptr) comm += std::string(compression, 4) + std::string("\0", 1) + std::string("\0", 1);
    std::string ssnd(8, '\0');
    ssnd += bigEndianData;
    std::string body = std::string(compression != nullptr ? "AIFC" : "AIFF");
    auto BeChunk = [](const char* id, const std::string& b) {
        std::string out(id, 4);
        Be(out, b.size(), 4);
        out += b;
        if (b.size() % 2 != 0) out.push_back('\0');
        return out;
    };
    body += BeChunk("COMM", comm) + BeChunk("NAME", "Aiff Song") + BeChunk("SSND", ssnd);
    std::string out = "FORM";
    Be(out, body.size(), 4);
    return out + body;
}

std::string Swap(const std::string& data, int bytes) {
    std::string out = data;
    for (size_t i = 0; i + static_cast<size_t>(bytes) <= out.size(); i += static_cast<size_t>(bytes)) {
        for (int k = 0; k < bytes / 2; ++k) std::swap(out[i + k], out[i + bytes - 1 - k]);
    }
    return out;
}

class WaveCodec : public CodecTest {
protected:
    // Writes `name` and converts it to out.wav; the worker's report lines.
    std::u16string Convert(const char16_t* name, const std::string& bytes, const char16_t* options = u"") {
        EXPECT_TRUE(WriteBytes(dir.File(name), bytes));
        return CodecTest::Convert(name, u"out.wav", u"Wave", options);
    }
    std::string Output() { return ReadBytes(dir.File(u"out.wav")); }
};

}  // namespace

TEST_F(WaveCodec, EveryIntegerLayoutRoundTripsBitExact) {
    struct Case {
        uint16_t channels;
        uint32_t rate;
        uint16_t bytes;
        uint16_t validBits;
        bool extensible;
    } cases[] = {{1, 8000, 1, 8, false},   {2, 44100, 2, 16, false}, {2, 48000, 3, 24, false}, {6, 96000, 3, 24, true},
                 {8, 192000, 4, 32, true}, {3, 44100, 2, 16, true},  {2, 44100, 3, 20, true}};
    for (const Case& c : cases) {
        std::string data = Samples(40000u * c.channels, c.bytes);
        if (c.validBits % 8 != 0) {
            // The bits below the depth are zero in a valid file.
            for (size_t i = 0; i < data.size(); i += c.bytes) data[i] = static_cast<char>(data[i] & 0xF0);
        }
        std::u16string log = Convert(
            u"in.wav",
            Riff(FormatBody(1, c.channels, c.rate, c.bytes, c.validBits, c.extensible, c.extensible ? 0x3F : 0), data));
        std::string out = Output();
        EXPECT_EQ(FindChunk(out, "data"), data) << c.channels << " ch " << c.validBits << " bits";
        std::string fmt = FindChunk(out, "fmt ");
        ASSERT_GE(fmt.size(), 16u);
        EXPECT_EQ(static_cast<unsigned char>(fmt[2]), c.channels);
        EXPECT_NE(log.find(u"PCDone: 100"), std::u16string::npos);
    }
}

TEST_F(WaveCodec, FloatWave64Rf64AndAiffVariantsReadTheSameSamples) {
    std::string floats = FloatSamples(20000);
    Convert(u"float.wav", Riff(FormatBody(3, 2, 44100, 4, 32, false), floats));
    EXPECT_EQ(FindChunk(Output(), "data"), floats);
    EXPECT_EQ(static_cast<unsigned char>(FindChunk(Output(), "fmt ")[0]), 3);

    std::string pcm = Samples(20000, 2);
    // RF64: sizes in the ds64 chunk, all ones in the RIFF header.
    std::string ds64;
    Le(ds64, 0, 8);
    Le(ds64, pcm.size(), 8);
    Le(ds64, pcm.size() / 4, 8);
    Le(ds64, 0, 4);
    std::string rf64body = "WAVE" + Chunk("ds64", ds64) + Chunk("fmt ", FormatBody(1, 2, 44100, 2, 16, false));
    rf64body += "data";
    Le(rf64body, 0xFFFFFFFF, 4);
    rf64body += pcm;
    std::string rf64 = "RF64";
    Le(rf64, 0xFFFFFFFF, 4);
    Convert(u"big.rf64", rf64 + rf64body);
    EXPECT_EQ(FindChunk(Output(), "data"), pcm);

    // Wave64: GUID chunk ids, 64-bit sizes, 8-byte alignment.
    const std::string riffGuid("riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\x00\x00", 16);
    const std::string waveGuid("wave\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 16);
    const std::string fmtGuid("fmt \xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 16);
    const std::string dataGuid("data\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A", 16);
    std::string fmt = FormatBody(1, 2, 44100, 2, 16, false);
    std::string w64body = fmtGuid;
    Le(w64body, 24 + fmt.size(), 8);
    w64body += fmt;
    while (w64body.size() % 8 != 0) w64body.push_back('\0');
    w64body += dataGuid;
    Le(w64body, 24 + pcm.size(), 8);
    w64body += pcm;
    std::string w64 = riffGuid;
    Le(w64, 40 + w64body.size(), 8);
    Convert(u"x.w64", w64 + waveGuid + w64body);
    EXPECT_EQ(FindChunk(Output(), "data"), pcm);

    // AIFF is big-endian; AIFC "sowt" little-endian; "fl32" big-endian float.
    std::string pcm24 = Samples(30000, 3);
    Convert(u"x.aiff", Aiff(2, 48000, 24, Swap(pcm24, 3)));
    EXPECT_EQ(FindChunk(Output(), "data"), pcm24);
    EXPECT_NE(FindChunk(Output(), "LIST").find("Aiff Song"), std::string::npos);  // NAME became the title
    Convert(u"x.aifc", Aiff(2, 44100, 16, pcm, "sowt"));
    EXPECT_EQ(FindChunk(Output(), "data"), pcm);
    Convert(u"f.aifc", Aiff(2, 44100, 32, Swap(floats, 4), "fl32"));
    EXPECT_EQ(FindChunk(Output(), "data"), floats);
    // 8-bit AIFF is signed, 8-bit WAVE unsigned.
    std::string signed8 = Samples(1000, 1);
    std::string unsigned8 = signed8;
    for (char& b : unsigned8) b = static_cast<char>(b ^ 0x80);
    Convert(u"x8.aif", Aiff(1, 22050, 8, signed8));
    EXPECT_EQ(FindChunk(Output(), "data"), unsigned8);
}

// WAVE to AIFF and back gives the same samples and keeps the texts AIFF
// has room for.
TEST_F(WaveCodec, AiffEncoderRoundTripsEveryDepthAndFloat) {
    std::string info = "INFO";
    info += Chunk("INAM", std::string("Title \xC3\xA9\0", 9));
    info += Chunk("IART", std::string("Artist\0", 7));
    for (uint16_t bytes : {1, 2, 3, 4}) {
        std::string data = Samples(30000u * 2, bytes);
        ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"),
                               Riff(FormatBody(1, 2, 44100, bytes, bytes * 8, bytes > 2), data, Chunk("LIST", info))));
        CodecTest::Convert(u"in.wav", u"mid.aiff", u"AIFF");
        std::string aiff = ReadBytes(dir.File(u"mid.aiff"));
        ASSERT_EQ(aiff.compare(0, 4, "FORM"), 0);
        EXPECT_NE(aiff.find("NAME"), std::string::npos);
        CodecTest::Convert(u"mid.aiff", u"out.wav", u"Wave");
        std::string out = Output();
        EXPECT_EQ(FindChunk(out, "data"), data) << bytes << " bytes";
        EXPECT_NE(FindChunk(out, "LIST").find("Title \xC3\xA9"), std::string::npos);
        EXPECT_NE(FindChunk(out, "LIST").find("Artist"), std::string::npos);
    }
    std::string floats = FloatSamples(20000);
    ASSERT_TRUE(WriteBytes(dir.File(u"f.wav"), Riff(FormatBody(3, 2, 96000, 4, 32, false), floats)));
    CodecTest::Convert(u"f.wav", u"f.aifc", u"AIFF");
    EXPECT_EQ(ReadBytes(dir.File(u"f.aifc")).compare(8, 4, "AIFC"), 0);
    CodecTest::Convert(u"f.aifc", u"out.wav", u"Wave");
    EXPECT_EQ(FindChunk(Output(), "data"), floats);
}

namespace {

// An AIFF file with one more chunk at its end.
std::string WithAiffChunk(std::string aiff, const char* id, const std::string& body) {
    aiff += std::string(id, 4);
    Be(aiff, body.size(), 4);
    aiff += body;
    if (body.size() % 2 != 0) aiff.push_back('\0');
    std::string size;
    Be(size, aiff.size() - 8, 4);
    aiff.replace(4, 4, size);
    return aiff;
}

}  // namespace

// An ID3 chunk (WAVE "id3 ", AIFF "ID3 ") carries its tags over; where it
// names a tag the format's own texts name too, the ID3 value wins.
TEST_F(WaveCodec, TagsOfAnId3ChunkComeThrough) {
    std::string id3 = Id3Tag({{"TIT2", "Caf\xC3\xA9 Song"}, {"TPE1", "Ann"}, {"TALB", "First"}});
    std::string info = "INFO" + Chunk("INAM", std::string("Old\0", 4)) + Chunk("ICMT", std::string("Kept\0", 5));
    std::string wave = Riff(FormatBody(1, 2, 44100, 2, 16, false), Samples(2000, 2),
                            Chunk("LIST", info) + Chunk("id3 ", id3));
    std::string aiff = WithAiffChunk(Aiff(2, 44100, 16, Swap(Samples(2000, 2), 2)), "ID3 ", id3);
    // Names beyond any ANSI code page: TagLib opens by the name the
    // platform's wide calls take.
    for (const auto& [name, bytes] :
         {std::pair{u"\u66f2 caf\u00e9.wav", wave}, std::pair{u"\u66f2 caf\u00e9.aiff", aiff}}) {
        Convert(name, bytes);
        std::string list = FindChunk(Output(), "LIST");
#ifndef QV_TEST_CODEC_LIBRARIES
        // A Windows build without the codec libraries has no TagLib.
        EXPECT_FALSE(list.empty());
#else
        EXPECT_NE(list.find("Caf\xC3\xA9 Song"), std::string::npos) << list;
        EXPECT_NE(list.find("Ann"), std::string::npos) << list;
        EXPECT_NE(list.find("First"), std::string::npos) << list;
        EXPECT_EQ(list.find("Old"), std::string::npos) << "the ID3 title wins: " << list;
#endif
        if (std::u16string(name).back() == u'v') {  // the WAVE file
            EXPECT_NE(list.find("Kept"), std::string::npos) << "the other texts stay: " << list;
        }
    }
}

TEST_F(WaveCodec, TagsAndADepthOptionReachTheOutput) {
    std::string info = "INFO";
    info += Chunk("INAM", std::string("Caf\xC3\xA9\0", 6));
    info += Chunk("IART", std::string("Band\0", 5));
    std::string data = Samples(10000, 3);
    Convert(u"tagged.wav", Riff(FormatBody(1, 2, 44100, 3, 24, false), data, Chunk("LIST", info)), u"-bits=\"16\"");
    std::string out = Output();
    std::string list = FindChunk(out, "LIST");
    EXPECT_NE(list.find("Caf\xC3\xA9"), std::string::npos);
    EXPECT_NE(list.find("Band"), std::string::npos);
    std::string written = FindChunk(out, "data");
    ASSERT_EQ(written.size(), data.size() / 3 * 2);
    // 24 to 16 bits: rounded to the nearest step, saturating at the top.
    for (size_t i = 0; i < 100; ++i) {
        int32_t in = static_cast<int32_t>((static_cast<uint32_t>(static_cast<unsigned char>(data[3 * i])) << 8) |
                                          (static_cast<uint32_t>(static_cast<unsigned char>(data[3 * i + 1])) << 16) |
                                          (static_cast<uint32_t>(static_cast<unsigned char>(data[3 * i + 2])) << 24));
        int64_t rounded = (static_cast<int64_t>(in) + (1 << 15)) >> 16;
        if (rounded > 32767) rounded = 32767;
        auto got = static_cast<int16_t>(static_cast<unsigned char>(written[2 * i]) |
                                        (static_cast<unsigned char>(written[2 * i + 1]) << 8));
        ASSERT_EQ(got, rounded) << i;
    }
}

// A value the encoder's or an effect's description doesn't allow is refused
// by name, with what it takes, and nothing is written: no number is made of
// a word.
TEST_F(WaveCodec, OptionValuesOutsideTheDescriptionAreRefusedByName) {
    const std::string wave = Riff(FormatBody(1, 2, 44100, 2, 16, false), Samples(1000, 2));
    struct Case {
        const char16_t* options;
        const char16_t* reason;
    } cases[] = {
        {u"-bits=\"abc\"", u"-bits takes 8|16|24|32|float, not 'abc'"},
        {u"-bits=\"16 \"", u"-bits takes 8|16|24|32|float, not '16 '"},
        {u"-dspeffect1=\"Bit Depth=-bits=%2212%22\"", u"-bits takes 8|16|24|32, not '12'"},
    };
    for (const Case& c : cases) {
        std::u16string log = Convert(u"in.wav", wave, c.options);
        EXPECT_NE(log.find(c.reason), std::u16string::npos) << std::string(log.begin(), log.end());
        EXPECT_FALSE(PathExists(dir.File(u"out.wav")));
    }
}

TEST_F(WaveCodec, DamagedFilesFailWithTheirReasonAndNoOutput) {
    std::string good = Riff(FormatBody(1, 2, 44100, 2, 16, false), Samples(20000, 2));
    struct Case {
        const char16_t* name;
        std::string bytes;
        const char16_t* reason;
    } cases[] = {
        {u"empty.wav", std::string(), u"the file is too short"},
        {u"text.wav", std::string(200, 'x'), u"is not a WAVE, Wave64 or AIFF file"},
        {u"nofmt.wav", std::string("RIFF\x10\0\0\0WAVEdata\x04\0\0\0abcd", 24), u"the file has no format chunk"},
        {u"mp3.wav", Riff(FormatBody(0x55, 2, 44100, 1, 0, false), Samples(100, 1)), u"the audio is compressed"},
    };
    for (const Case& c : cases) {
        std::u16string log = Convert(c.name, c.bytes);
        EXPECT_NE(log.find(c.reason), std::u16string::npos) << std::string(log.begin(), log.end());
        EXPECT_NE(log.find(std::u16string(dir.File(c.name).text)), std::u16string::npos);
        EXPECT_TRUE(Output().empty());
    }
    // A cut file, whose data chunk claims more than the file holds,
    // converts what it holds, and says so.
    std::string cut = good.substr(0, good.size() / 2);
    std::u16string cutLog = Convert(u"cut.wav", cut);
    EXPECT_NE(cutLog.find(u"the file ends before its audio does: it holds"), std::u16string::npos)
        << std::string(cutLog.begin(), cutLog.end());
    EXPECT_EQ(cutLog.find(u"Error"), std::u16string::npos) << std::string(cutLog.begin(), cutLog.end());
    EXPECT_EQ(FindChunk(Output(), "data"), cut.substr(44, (cut.size() - 44) / 4 * 4));
    // A size of all ones is a writer that could not go back: the audio runs
    // to the end of the file. Any other size beyond it is a cut file.
    std::string pcm = Samples(1000, 2);
    std::string open = Riff(FormatBody(1, 2, 44100, 2, 16, false), pcm);
    open.replace(open.size() - pcm.size() - 4, 4, "\xFF\xFF\xFF\xFF");
    Convert(u"stream.wav", open);
    EXPECT_EQ(FindChunk(Output(), "data"), pcm);
    std::string huge = Riff(FormatBody(1, 2, 44100, 2, 16, false), pcm);
    huge.replace(huge.size() - pcm.size() - 4, 4, "\xF0\xFF\xFF\xFF");
    ASSERT_TRUE(WriteBytes(dir.File(u"out.wav"), ""));
    std::u16string log = Convert(u"huge.wav", huge);
    EXPECT_NE(log.find(u"the file ends before its audio does"), std::u16string::npos);
}

namespace {

// The chunks of a RIFF (little-endian sizes) or FORM (big-endian) file, in
// order, checked to fill the file exactly: every odd chunk padded with one
// byte, the container's size field the file's length less 8.
std::vector<std::pair<std::string, uint32_t>> WalkChunks(const std::string& file, bool bigEndian, std::string& fault) {
    std::vector<std::pair<std::string, uint32_t>> chunks;
    auto size = [&](size_t at) {
        uint32_t v = 0;
        for (int k = 0; k < 4; ++k) {
            uint32_t b = static_cast<unsigned char>(file[at + k]);
            v |= bigEndian ? b << (8 * (3 - k)) : b << (8 * k);
        }
        return v;
    };
    if (file.size() < 12) {
        fault = "too short";
        return chunks;
    }
    if (size(4) != file.size() - 8) fault = "the container's size is not the file's length less 8";
    size_t at = 12;
    while (at + 8 <= file.size()) {
        uint32_t length = size(at + 4);
        chunks.emplace_back(file.substr(at, 4), length);
        at += 8 + length + (length & 1);
        if (at > file.size()) fault = "chunk " + chunks.back().first + " runs past the end (no pad byte?)";
    }
    if (at != file.size()) fault = "the chunks do not end where the file does";
    return chunks;
}

}  // namespace

// Odd sizes everywhere: 8- and 24-bit mono with an odd number of frames,
// one and eight channels, float. Each chunk is padded to even length, the
// sizes add up to the file, the tags written after the audio are read
// back, and the samples come back bit for bit through WAVE and AIFF.
TEST_F(WaveCodec, OddSizedChunksArePaddedAndEverythingReadsBack) {
    struct Case {
        uint16_t channels;
        uint16_t bytes;
        bool isFloat;
    } cases[] = {{1, 1, false}, {1, 3, false}, {8, 2, false}, {1, 4, true}, {8, 3, false}};
    std::string info = "INFO";
    info += Chunk("INAM", std::string("Odd\0", 4));
    for (const Case& c : cases) {
        const size_t frames = 10001;
        std::string data = c.isFloat ? FloatSamples(frames * c.channels) : Samples(frames * c.channels, c.bytes);
        std::string source = Riff(FormatBody(c.isFloat ? 3 : 1, c.channels, 44100, c.bytes, c.bytes * 8, c.channels > 2,
                                             c.channels > 2 ? 0x63F : 0),
                                  data, Chunk("LIST", info));
        std::string label =
            std::to_string(c.channels) + " ch " + std::to_string(c.bytes * 8) + (c.isFloat ? " float" : "");
        Convert(u"odd.wav", source);
        std::string wave = Output();
        std::string fault;
        std::vector<std::pair<std::string, uint32_t>> chunks = WalkChunks(wave, false, fault);
        EXPECT_EQ(fault, "") << label;
        EXPECT_EQ(FindChunk(wave, "data"), data) << label;
        EXPECT_NE(FindChunk(wave, "LIST").find("Odd"), std::string::npos) << label;
        // WAVE to WAVE again: the tags behind the audio are read back.
        ASSERT_TRUE(WriteBytes(dir.File(u"again.wav"), wave));
        CodecTest::Convert(u"again.wav", u"twice.wav", u"Wave");
        std::string twice = ReadBytes(dir.File(u"twice.wav"));
        EXPECT_EQ(FindChunk(twice, "data"), data) << label;
        EXPECT_NE(FindChunk(twice, "LIST").find("Odd"), std::string::npos) << label;
        // Through AIFF: the sound chunk padded too, and the samples back.
        CodecTest::Convert(u"odd.wav", u"odd.aiff", u"AIFF");
        std::string aiff = ReadBytes(dir.File(u"odd.aiff"));
        fault.clear();
        WalkChunks(aiff, true, fault);
        EXPECT_EQ(fault, "") << label << " (AIFF)";
        CodecTest::Convert(u"odd.aiff", u"back.wav", u"Wave");
        EXPECT_EQ(FindChunk(ReadBytes(dir.File(u"back.wav")), "data"), data) << label << " (AIFF)";
    }
}
