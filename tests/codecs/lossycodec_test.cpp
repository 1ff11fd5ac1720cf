// The lossy encoders and decoders ("MP3 (Lame)", "Ogg Vorbis", "Opus")
// against the reference tools, and tags over every pair of the tagged
// formats: what a file made by `flac` carries reaches every output and
// comes back, as `metaflac` reads it, after a second conversion.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"
#include "foundation/utf.h"
#include "plugins/xdll.h"
#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"

namespace {

// 16-bit audio with `channels` channels in which only `loud` carries a
// tone (all channels when `loud` is negative).
std::string Tone(size_t frames, int channels, int loud = -1) {
    std::string out;
    for (size_t i = 0; i < frames; ++i) {
        auto v = static_cast<int16_t>(8000 * std::sin(static_cast<double>(i) * 0.05));
        for (int c = 0; c < channels; ++c) Le(out, static_cast<uint16_t>(loud < 0 || loud == c ? v : 0), 2);
    }
    return out;
}

// The energy of each channel of 16-bit interleaved samples.
std::vector<double> Energies(const std::string& data, int channels) {
    std::vector<double> energy(static_cast<size_t>(channels));
    for (size_t i = 0; i + 1 < data.size(); i += 2) {
        auto v =
            static_cast<int16_t>(static_cast<unsigned char>(data[i]) | (static_cast<unsigned char>(data[i + 1]) << 8));
        energy[(i / 2) % static_cast<size_t>(channels)] += static_cast<double>(v) * v;
    }
    return energy;
}

std::vector<std::string> SortedLines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        if (end > start) lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

struct Format {
    const char16_t* encoder;
    const char16_t* extension;
};
const Format kTagged[] = {{u"FLAC", u".flac"}, {u"MP3 (Lame)", u".mp3"}, {u"Ogg Vorbis", u".ogg"}, {u"Opus", u".opus"}};

class LossyCodec : public CodecTest {
protected:
    // Decodes `file` with the worker to 16-bit WAVE; the data chunk.
    std::string Decoded(const char16_t* file) {
        std::u16string log = Convert(file, u"decoded.wav", u"Wave", u"-bits=16");
        EXPECT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << std::string(log.begin(), log.end());
        return FindChunk(ReadBytes(dir.File(u"decoded.wav")), "data");
    }
    std::string Reference(const char16_t* program, std::initializer_list<clString> words) {
        Tool(program, words);
        return FindChunk(ReadBytes(dir.File(u"ref.wav")), "data");
    }
};

}  // namespace

TEST_F(LossyCodec, OurEncodingsKeepTheExactLengthForOurAndTheReferenceDecoders) {
    for (size_t frames : {48000u * 2 + 123u, 960u * 5u}) {
        ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 48000, 2, 16, false), Tone(frames, 2))));
        const size_t bytes = frames * 2 * 2;
        ASSERT_NE(Convert(u"in.wav", u"out.mp3", u"MP3 (Lame)").find(u"PCDone: 100"), std::u16string::npos);
        EXPECT_EQ(Reference(u"/usr/bin/mpg123",
                            {clString(u"-q"), clString(u"-w"), dir.File(u"ref.wav"), dir.File(u"out.mp3")})
                      .size(),
                  bytes);
        EXPECT_EQ(Decoded(u"out.mp3").size(), bytes) << frames;

        ASSERT_NE(Convert(u"in.wav", u"out.ogg", u"Ogg Vorbis").find(u"PCDone: 100"), std::u16string::npos);
        std::string reference = Reference(
            u"/usr/bin/oggdec", {clString(u"-Q"), clString(u"-o"), dir.File(u"ref.wav"), dir.File(u"out.ogg")});
        EXPECT_EQ(reference.size(), bytes);
        EXPECT_EQ(Decoded(u"out.ogg"), reference) << frames;

        ASSERT_NE(Convert(u"in.wav", u"out.opus", u"Opus").find(u"PCDone: 100"), std::u16string::npos);
        EXPECT_EQ(Reference(u"/usr/bin/opusdec", {clString(u"--quiet"), clString(u"--rate"), clString(u"48000"),
                                                  dir.File(u"out.opus"), dir.File(u"ref.wav")})
                      .size(),
                  bytes);
        EXPECT_EQ(Decoded(u"out.opus").size(), bytes) << frames;
    }
}

TEST_F(LossyCodec, ReferenceEncodingsDecodeToTheirLengthAndSamples) {
    const size_t frames = 44100 + 777;
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Tone(frames, 2))));
    Tool(u"/usr/bin/oggenc",
         {clString(u"-Q"), clString(u"-q5"), clString(u"-o"), dir.File(u"ref.ogg"), dir.File(u"in.wav")});
    std::string reference =
        Reference(u"/usr/bin/oggdec", {clString(u"-Q"), clString(u"-o"), dir.File(u"ref.wav"), dir.File(u"ref.ogg")});
    EXPECT_EQ(reference.size(), frames * 4);
    EXPECT_EQ(Decoded(u"ref.ogg"), reference);
    // Opus codes at 48 kHz: the length follows the rate.
    ASSERT_TRUE(WriteBytes(dir.File(u"in48.wav"), Riff(FormatBody(1, 2, 48000, 2, 16, false), Tone(frames, 2))));
    Tool(u"/usr/bin/opusenc", {clString(u"--quiet"), clString(u"--bitrate"), clString(u"128"), dir.File(u"in48.wav"),
                               dir.File(u"ref.opus")});
    EXPECT_EQ(Decoded(u"ref.opus").size(), frames * 4);
}

TEST_F(LossyCodec, SurroundChannelsKeepTheirPlaces) {
    // Vorbis and Opus store 5.1 as L C R BL BR LFE; the program's order is
    // L R C LFE BL BR. A tone in one channel must come back in that one.
    for (const Format& format : {kTagged[2], kTagged[3]}) {
        for (int loud : {1, 2, 3}) {
            ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"),
                                   Riff(FormatBody(1, 6, 48000, 2, 16, true, 0x3F), Tone(48000, 6, loud))));
            std::u16string out = std::u16string(u"out") + format.extension;
            ASSERT_NE(Convert(u"in.wav", out.c_str(), format.encoder).find(u"PCDone: 100"), std::u16string::npos);
            std::vector<double> energy = Energies(Decoded(out.c_str()), 6);
            size_t largest = static_cast<size_t>(std::max_element(energy.begin(), energy.end()) - energy.begin());
            EXPECT_EQ(largest, static_cast<size_t>(loud)) << std::u16string(format.encoder).size();
        }
    }
}

TEST_F(LossyCodec, TagsAndThePictureSurviveEveryPairOfFormats) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Tone(22050, 2))));
    std::string picture = "\x89PNG\r\n\x1a\n";
    for (int i = 0; i < 3000; ++i) picture.push_back(static_cast<char>(i * 7));
    ASSERT_TRUE(WriteBytes(dir.File(u"cover.png"), picture));
    const char* const fields[] = {"ARTIST=First Artist",
                                  "ARTIST=Second Artist",
                                  "ALBUM=Album \xC3\xA9t\xC3\xA9",
                                  "ALBUMARTIST=Various",
                                  "TITLE=A Title",
                                  "TRACKNUMBER=3",
                                  "TRACKTOTAL=12",
                                  "DISCNUMBER=1",
                                  "DISCTOTAL=2",
                                  "DATE=2021",
                                  "GENRE=Ambient",
                                  "COMPOSER=Composer",
                                  "COMPILATION=1",
                                  "ARTISTSORT=Artist, First",
                                  "ALBUMSORT=Album",
                                  "TITLESORT=Title, A",
                                  "ALBUMARTISTSORT=Various",
                                  "COMPOSERSORT=Composer",
                                  "CONDUCTOR=Conductor",
                                  "COMMENT=A comment",
                                  "LYRICS=Some words",
                                  "BPM=120",
                                  "LABEL=Label",
                                  "ISRC=GBAYE0000001",
                                  "COPYRIGHT=2021 Someone",
                                  "MOOD=Calm",
                                  "SUBTITLE=Sub",
                                  "MYFIELD=kept as it is"};
    clStringList arguments;
    arguments.Add(clString(u"--silent"));
    for (const char* field : fields) {
        clString value;
        Utf8ToString(field, static_cast<int64_t>(std::string(field).size()), value);
        arguments.Add(clString(u"--tag=", value.text));
    }
    arguments.Add(clString(u"--picture=3|image/png|cover|1x1x24|", dir.File(u"cover.png").text));
    arguments.Add(clString(u"-o"));
    arguments.Add(dir.File(u"master.flac"));
    arguments.Add(dir.File(u"in.wav"));
    int exitCode = -1;
    ASSERT_TRUE(PlatformRunProcess(clString(u"/usr/bin/flac"), arguments, dir.File(u"tool.log"), &exitCode));
    ASSERT_EQ(exitCode, 0) << ReadBytes(dir.File(u"tool.log"));

    auto exported = [this](const clString& flac, std::string& pictureBytes) {
        Tool(u"/usr/bin/metaflac", {clString(u"--export-tags-to=", dir.File(u"tags.txt").text),
                                    clString(u"--export-picture-to=", dir.File(u"picture.bin").text), flac});
        pictureBytes = ReadBytes(dir.File(u"picture.bin"));
        return SortedLines(ReadBytes(dir.File(u"tags.txt")));
    };
    std::string masterPicture;
    std::vector<std::string> master = exported(dir.File(u"master.flac"), masterPicture);
    ASSERT_EQ(master.size(), sizeof fields / sizeof fields[0]);
    ASSERT_EQ(masterPicture, picture);

    for (const Format& first : kTagged) {
        std::u16string middle = std::u16string(u"first") + first.extension;
        ASSERT_NE(Convert(u"master.flac", middle.c_str(), first.encoder).find(u"PCDone: 100"), std::u16string::npos);
        for (const Format& second : kTagged) {
            std::u16string last = std::u16string(u"second") + second.extension;
            std::u16string log = Convert(middle.c_str(), last.c_str(), second.encoder);
            ASSERT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << std::string(log.begin(), log.end());
            ASSERT_NE(Convert(last.c_str(), u"check.flac", u"FLAC").find(u"PCDone: 100"), std::u16string::npos);
            std::string pictureBytes;
            std::vector<std::string> tags = exported(dir.File(u"check.flac"), pictureBytes);
            std::string pair =
                std::string(first.extension, first.extension + std::u16string(first.extension).size()) + " to " +
                std::string(second.extension, second.extension + std::u16string(second.extension).size());
            EXPECT_EQ(tags, master) << pair;
            EXPECT_EQ(pictureBytes, picture) << pair;
        }
    }
}

TEST_F(LossyCodec, DamagedFilesFailWithALineAndNoOutput) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 48000, 2, 16, false), Tone(48000, 2))));
    for (const Format& format : {kTagged[2], kTagged[3]}) {
        std::u16string good = std::u16string(u"good") + format.extension;
        ASSERT_NE(Convert(u"in.wav", good.c_str(), format.encoder).find(u"PCDone: 100"), std::u16string::npos);
        std::string bytes = ReadBytes(dir.File(good.c_str()));
        std::u16string bad = std::u16string(u"bad") + format.extension;
        // Text, nothing, only the headers, and a stream whose pages are
        // overwritten half way.
        std::string corrupt = bytes;
        for (size_t i = corrupt.size() / 2; i < corrupt.size(); i += 7)
            corrupt[i] = static_cast<char>(corrupt[i] ^ 0x5A);
        for (const std::string& content : {std::string(3000, 't'), std::string(), bytes.substr(0, 200), corrupt}) {
            ASSERT_TRUE(WriteBytes(dir.File(bad.c_str()), content));
            ASSERT_TRUE(WriteBytes(dir.File(u"decoded.wav"), ""));
            std::u16string log = Convert(bad.c_str(), u"decoded.wav", u"Wave");
            // A damaged page in the middle is skipped by the Ogg layer; any
            // other fault fails the file.
            if (content.size() != corrupt.size()) {
                EXPECT_NE(log.find(std::u16string(dir.File(bad.c_str()).text)), std::u16string::npos)
                    << content.size() << ": " << std::string(log.begin(), log.end());
                EXPECT_TRUE(ReadBytes(dir.File(u"decoded.wav")).empty());
            }
        }
    }
}

namespace {

void SyncSafe(std::string& out, size_t value) {
    for (int shift = 21; shift >= 0; shift -= 7) out.push_back(static_cast<char>((value >> shift) & 0x7F));
}

std::string Id3Frame(const char* id, const std::string& content) {
    std::string frame = id;
    SyncSafe(frame, content.size());
    frame += std::string(2, '\0');
    return frame + content;
}

}  // namespace

TEST_F(LossyCodec, HugeTagsAndPicturesConvertOrFailClearly) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Tone(44100, 2))));
    Tool(u"/usr/bin/lame", {clString(u"--quiet"), clString(u"-V5"), dir.File(u"in.wav"), dir.File(u"plain.mp3")});
    // ID3v2.4: a text of 1 MB and a front cover of 50 MB.
    std::string frames =
        Id3Frame("TIT2", std::string("\x03") + "Title") +
        Id3Frame("TXXX", std::string("\x03") + "BIG" + '\0' + std::string(1 << 20, 'b')) +
        Id3Frame("APIC", std::string("\x00", 1) + "image/png" + '\0' + "\x03" + '\0' + std::string(50 << 20, 'p'));
    std::string tag = "ID3\x04";
    tag += std::string(2, '\0');
    SyncSafe(tag, frames.size());
    ASSERT_TRUE(WriteBytes(dir.File(u"huge.mp3"), tag + frames + ReadBytes(dir.File(u"plain.mp3"))));

    std::u16string log = Convert(u"huge.mp3", u"out.mp3", u"MP3 (Lame)");
    EXPECT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << std::string(log.begin(), log.end());
    EXPECT_GT(ReadBytes(dir.File(u"out.mp3")).size(), size_t{51} << 20);  // the picture came along
    log = Convert(u"huge.mp3", u"out.ogg", u"Ogg Vorbis");
    EXPECT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << std::string(log.begin(), log.end());
    EXPECT_GT(ReadBytes(dir.File(u"out.ogg")).size(), size_t{66} << 20);  // in base64
    // FLAC states a block's length in 24 bits: the file fails, saying why.
    log = Convert(u"huge.mp3", u"out.flac", u"FLAC");
    EXPECT_NE(log.find(u"larger than the 16 MB a FLAC file can hold"), std::u16string::npos)
        << std::string(log.begin(), log.end());
    EXPECT_TRUE(ReadBytes(dir.File(u"out.flac")).empty());
}

TEST_F(LossyCodec, PropertiesTellTheQualityAndTheEncoder) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 48000, 2, 16, false), Tone(48000, 2))));
    Tool(u"/usr/bin/opusenc",
         {clString(u"--quiet"), clString(u"--bitrate"), clString(u"96"), dir.File(u"in.wav"), dir.File(u"ref.opus")});
    Tool(u"/usr/bin/lame",
         {clString(u"--quiet"), clString(u"-b"), clString(u"128"), dir.File(u"in.wav"), dir.File(u"ref.mp3")});
    Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-o"), dir.File(u"ref.flac"), dir.File(u"in.wav")});
    struct Case {
        const char16_t* library;
        const char16_t* file;
        const char16_t* quality;
        const char16_t* settings;  // part of "Encoder Settings", or null when it has none
    } cases[] = {{u"Opus", u"ref.opus", u"Lossy", u"--bitrate 96"},
                 {u"MP3", u"ref.mp3", u"Lossy", u"CBR 128 kbit/s"},
                 {u"FLAC", u"ref.flac", u"Lossless", nullptr}};
    for (const Case& c : cases) {
        clQvDecoder decoder;
        clString library = JoinPath(JoinPath(GetFolderPart(BinPath(u"ConvertWorker")), clString(u"decoder")),
                                    clString(c.library, u".so"));
        ASSERT_TRUE(decoder.Bind(library.text));
        qv_log_record noLog{};
        ASSERT_TRUE(decoder.CreateInstance(&noLog));
        clString path = dir.File(c.file);
        qv_open_record record{};
        record.fileName = path.text;
        record.request = QV_OPEN_REQUEST;
        ASSERT_EQ(decoder.Open(decoder.instance, &record), 1);
        std::vector<qvc::Tag> properties = qvc::ReadTagBlock(record.extra, record.extraSize);
        auto value = [&properties](const std::u16string& name) {
            for (const qvc::Tag& tag : properties) {
                if (tag.name == name) return tag.value;
            }
            return std::u16string(u"(none)");
        };
        EXPECT_EQ(value(u"Audio Quality"), c.quality);
        EXPECT_NE(value(u"Encoder"), u"(none)");
        if (c.settings != nullptr) {
            EXPECT_NE(value(u"Encoder Settings").find(c.settings), std::u16string::npos)
                << std::string(value(u"Encoder Settings").begin(), value(u"Encoder Settings").end());
        }
        decoder.Close(decoder.instance);
    }
}

TEST_F(LossyCodec, EveryPairOfFormatsConverts) {
    // 48 kHz, so that Opus keeps the length too; each lossy step may only
    // add the encoder's padding, which a gapless format takes off again.
    const size_t frames = 48000 + 321;
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 48000, 2, 16, false), Tone(frames, 2))));
    const Format all[] = {{u"Wave", u".wav"},       {u"AIFF", u".aif"},       {u"FLAC", u".flac"},
                          {u"MP3 (Lame)", u".mp3"}, {u"Ogg Vorbis", u".ogg"}, {u"Opus", u".opus"}};
    for (const Format& first : all) {
        std::u16string middle = std::u16string(u"first") + first.extension;
        ASSERT_NE(Convert(u"in.wav", middle.c_str(), first.encoder).find(u"PCDone: 100"), std::u16string::npos);
        for (const Format& second : all) {
            std::u16string last = std::u16string(u"second") + second.extension;
            std::u16string log = Convert(middle.c_str(), last.c_str(), second.encoder);
            EXPECT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << std::string(log.begin(), log.end());
            EXPECT_EQ(Decoded(last.c_str()).size(), frames * 4)
                << std::string(first.extension, first.extension + std::u16string(first.extension).size()) << " to "
                << std::string(second.extension, second.extension + std::u16string(second.extension).size());
        }
    }
}

// People save Opus and FLAC in Ogg as .ogg and .oga: such files decode by
// what their first packet says, to what they decode to under their own
// extension, with their tags. The .opus extension keeps its one decoder.
TEST_F(LossyCodec, OggFilesDecodeByWhatTheirStreamHolds) {
    const size_t frames = 48000 + 321;
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 48000, 2, 16, false), Tone(frames, 2))));
    Tool(u"/usr/bin/opusenc", {clString(u"--quiet"), clString(u"--title"), clString(u"Opus Title"),
                               dir.File(u"in.wav"), dir.File(u"in.opus")});
    std::string opus = ReadBytes(dir.File(u"in.opus"));
    ASSERT_TRUE(WriteBytes(dir.File(u"opus.ogg"), opus));
    std::string fromOpus = Decoded(u"in.opus");
    EXPECT_EQ(fromOpus.size(), frames * 4);
    EXPECT_EQ(Decoded(u"opus.ogg"), fromOpus);
    Convert(u"opus.ogg", u"tagged.flac", u"FLAC");
    EXPECT_NE(ReadBytes(dir.File(u"tagged.flac")).find("TITLE=Opus Title"), std::string::npos);

    // FLAC in Ogg is lossless: the samples come back bit-exact.
    Tool(u"/usr/bin/flac", {clString(u"-s"), clString(u"-f"), clString(u"--ogg"), clString(u"-T"),
                            clString(u"TITLE=Ogg FLAC"), clString(u"-o"), dir.File(u"flac.oga"), dir.File(u"in.wav")});
    EXPECT_EQ(Decoded(u"flac.oga"), FindChunk(ReadBytes(dir.File(u"in.wav")), "data"));
    Convert(u"flac.oga", u"tagged.flac", u"FLAC");
    EXPECT_NE(ReadBytes(dir.File(u"tagged.flac")).find("TITLE=Ogg FLAC"), std::string::npos);

    // Vorbis stays as it was, and what is not Ogg at all says so.
    Tool(u"/usr/bin/oggenc", {clString(u"-Q"), clString(u"-o"), dir.File(u"vorbis.oga"), dir.File(u"in.wav")});
    EXPECT_EQ(Decoded(u"vorbis.oga").size(), frames * 4);
    ASSERT_TRUE(WriteBytes(dir.File(u"text.ogg"), std::string(4000, 't')));
    std::u16string log = Convert(u"text.ogg", u"out.wav", u"Wave");
    EXPECT_NE(log.find(u"the file is not an Ogg Vorbis file"), std::u16string::npos) << std::string(log.begin(), log.end());
    // A damaged Opus stream inside .ogg fails with the Opus decoder's line.
    ASSERT_TRUE(WriteBytes(dir.File(u"cut.ogg"), opus.substr(0, 40)));
    log = Convert(u"cut.ogg", u"out.wav", u"Wave");
    EXPECT_NE(log.find(u"Opus"), std::u16string::npos) << std::string(log.begin(), log.end());
}
