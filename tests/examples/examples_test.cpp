// The example plug-ins driven as the worker drives a conversion: decode,
// effect, encode, through the wrappers and the documented order of calls.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "foundation/pathtext.h"
#include "plugins/xdll.h"
#include "tests/support/testfolder.h"

namespace {

const qv_log_record kNoLog{};

clString Example(const char16_t* folder, const char16_t* name) {
    clString path = JoinPath(GetProgramFolder(), clString(u".."));
    path = JoinPath(JoinPath(JoinPath(path, clString(u"examples")), clString(folder)), clString(name));
    path.Append(PlatformLibrarySuffix());
    return path;
}

std::string Pcm16(const std::vector<int16_t>& samples) {
    std::string bytes;
    for (int16_t s : samples) {
        bytes.push_back(static_cast<char>(s & 0xFF));
        bytes.push_back(static_cast<char>(static_cast<uint16_t>(s) >> 8));
    }
    return bytes;
}

}  // namespace

TEST(Examples, DecoderEffectAndEncoderConvertAFile) {
    TestFolder dir;
    // 5,000 stereo frames: more than one decoder block.
    std::vector<int16_t> input;
    for (int i = 0; i < 10000; ++i) input.push_back(static_cast<int16_t>((i * 37) % 20000 - 10000));
    clString source = dir.File(u"tone \u00e9.raw16");
    ASSERT_TRUE(WriteBytes(source, Pcm16(input)));

    clQvDecoder decoder;
    clQvDSP gain;
    clQvEncoder encoder;
    ASSERT_TRUE(decoder.Bind(Example(u"decoder", u"Raw PCM").text));
    ASSERT_TRUE(gain.Bind(Example(u"DSPs", u"Example Gain").text));
    ASSERT_TRUE(encoder.Bind(Example(u"encoder", u"Raw PCM").text));
    ASSERT_TRUE(decoder.CreateInstance(&kNoLog) && gain.CreateInstance(&kNoLog) && encoder.CreateInstance(&kNoLog));

    qv_query_record decodes{};
    ASSERT_NE(decoder.Get(decoder.instance, u"Decodes", &decodes), 0);
    EXPECT_EQ(std::u16string(decodes.text1), u".raw16");
    qv_query_record extension{};
    ASSERT_NE(encoder.Get(encoder.instance, u"Extension", &extension), 0);
    EXPECT_EQ(std::u16string(extension.text1), u".raw16");

    qv_open_record open{};
    open.fileName = source.text;
    open.request = QV_OPEN_REQUEST;
    ASSERT_NE(decoder.Open(decoder.instance, &open), 0);
    uint64_t lengthMs = open.facts.lengthMs;
    EXPECT_EQ(lengthMs, 113u);  // 5000 frames at 44.1 kHz
    qv_audio_format format{};
    qv_query_record formatQuery{};
    formatQuery.facts = &format;
    ASSERT_NE(decoder.Get(decoder.instance, u"Format", &formatQuery), 0);
    ASSERT_EQ(format.sampleType, QV_SAMPLES_INT32);

    qv_audio_format link = format;
    qv_stream_facts facts = open.facts;
    qv_begin_record begin{};
    begin.text1 = begin.text2 = begin.text3 = u"";
    begin.facts = &facts;
    begin.format = &link;
    ASSERT_NE(gain.BeginConversion(gain.instance, &begin, u"-db=-6.0206"), 0);  // half the level
    ASSERT_EQ(link.acceptedTypes, QV_SAMPLES_FLOAT32);

    clString output = dir.File(u"out.raw16");
    qv_encoder_begin_record encoderBegin{};
    encoderBegin.outputPath = output.text;
    encoderBegin.optionString = u"";
    encoderBegin.sourcePath = source.text;
    encoderBegin.facts = &facts;
    encoderBegin.format = &link;
    ASSERT_NE(encoder.BeginConversion(encoder.instance, &encoderBegin), 0);

    // The live pass, with the worker's conversion from integers to floats.
    qv_audio_block block{};
    std::vector<float> floats;
    int32_t decoded;
    while ((decoded = decoder.DecodeBlock(decoder.instance, &block)) == 1) {
        const auto* ints = static_cast<const int32_t*>(block.samples);
        floats.assign(ints, ints + block.frames * format.channels);
        for (float& f : floats) f /= 2147483648.0f;
        qv_audio_block in = block;
        in.samples = floats.data();
        qv_audio_block out{};
        ASSERT_EQ(gain.PassAudioBlock(gain.instance, &in, &out), 1);
        ASSERT_NE(encoder.EncodeBlock(encoder.instance, &out), 0);
    }
    EXPECT_EQ(decoded, 0);
    qv_audio_block tail{};
    EXPECT_EQ(gain.PassAudioBlock(gain.instance, nullptr, &tail), 0);
    EXPECT_NE(gain.EndConversion(gain.instance), 0);
    qv_encoder_end_record end{};
    ASSERT_NE(encoder.EndConversion(encoder.instance, &end), 0);

    std::vector<int16_t> expected;
    for (int16_t s : input) expected.push_back(static_cast<int16_t>(std::floor(s / 2.0 + 0.5)));
    EXPECT_EQ(ReadBytes(output), Pcm16(expected));
}

TEST(Examples, DecoderExplainsAFileItCannotOpen) {
    clQvDecoder decoder;
    ASSERT_TRUE(decoder.Bind(Example(u"decoder", u"Raw PCM").text));
    ASSERT_TRUE(decoder.CreateInstance(&kNoLog));
    qv_open_record open{};
    open.fileName = u"/no/such/file.raw16";
    open.request = QV_OPEN_REQUEST;
    EXPECT_EQ(decoder.Open(decoder.instance, &open), 0);
    qv_query_record error{};
    ASSERT_NE(decoder.Get(decoder.instance, u"LastError", &error), 0);
    EXPECT_EQ(std::u16string(error.text1), u"the file can't be opened");
}
