// The effects on Debian's signal libraries: "Resample", "Volume Normalize"
// and "ReplayGain", in real conversions, checked against libebur128
// measurements made here on the same samples.
#include <ebur128.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"
#include "plugins/xdll.h"
#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"

namespace {

// 16-bit stereo: a tone at `level` (of full scale) whose loudness changes
// over the file, so that gating matters.
std::vector<int16_t> Music(size_t frames, double level, double frequency) {
    std::vector<int16_t> samples;
    for (size_t i = 0; i < frames; ++i) {
        double swell = 0.3 + 0.7 * std::fabs(std::sin(static_cast<double>(i) / 40000.0));
        double v = level * swell * std::sin(static_cast<double>(i) * frequency) * 32767;
        samples.push_back(static_cast<int16_t>(std::lround(v)));
        samples.push_back(static_cast<int16_t>(std::lround(v * 0.8)));
    }
    return samples;
}

std::string Pcm(const std::vector<int16_t>& samples) {
    std::string out;
    for (int16_t s : samples) Le(out, static_cast<uint16_t>(s), 2);
    return out;
}

std::vector<float> Floats(const std::string& data) {
    std::vector<float> out(data.size() / 4);
    for (size_t i = 0; i < out.size(); ++i) {
        uint32_t u = 0;
        for (int k = 0; k < 4; ++k) u |= static_cast<uint32_t>(static_cast<unsigned char>(data[4 * i + k])) << (8 * k);
        std::memcpy(&out[i], &u, 4);
    }
    return out;
}

ebur128_state* Meter(const std::vector<int16_t>& samples) {
    ebur128_state* meter = ebur128_init(2, 44100, EBUR128_MODE_I | EBUR128_MODE_SAMPLE_PEAK);
    ebur128_add_frames_short(meter, samples.data(), samples.size() / 2);
    return meter;
}

// The integrated loudness of stereo 44.1 kHz float samples.
double IntegratedLoudness(const std::vector<float>& samples) {
    ebur128_state* meter = ebur128_init(2, 44100, EBUR128_MODE_I);
    ebur128_add_frames_float(meter, samples.data(), samples.size() / 2);
    double loudness = 0;
    ebur128_loudness_global(meter, &loudness);
    ebur128_destroy(&meter);
    return loudness;
}

double Gain(const std::string& text) { return std::atof(text.c_str()); }

class Loudness : public CodecTest {
protected:
    std::string Tag(const char16_t* file, const char16_t* name) {
        Tool(u"/usr/bin/metaflac", {clString(u"--show-tag=", name), dir.File(file)});
        std::string line = ReadBytes(dir.File(u"tool.log"));
        size_t equals = line.find('=');
        return equals == std::string::npos ? std::string() : line.substr(equals + 1);
    }
};

}  // namespace

TEST_F(Loudness, ResampleKeepsTheLengthAndTheTone) {
    const size_t frames = 48000 * 2 + 17;
    std::vector<int16_t> samples = Music(frames, 0.5, 2 * M_PI * 1000 / 48000);
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 48000, 2, 16, false), Pcm(samples))));
    std::u16string log = Convert(u"in.wav", u"out.wav", u"Wave", u"-dspeffect1=\"Resample=-rate=44100\"");
    ASSERT_NE(log.find(u"PCDone: 100"), std::u16string::npos) << std::string(log.begin(), log.end());
    std::string out = ReadBytes(dir.File(u"out.wav"));
    std::vector<float> resampled = Floats(FindChunk(out, "data"));
    EXPECT_NEAR(static_cast<double>(resampled.size() / 2), frames * 44100.0 / 48000.0, 1.0);
    // A 1 kHz tone stays 1 kHz: the same number of rising zero crossings
    // in the first second, and the same level.
    int crossings = 0;
    double energyIn = 0, energyOut = 0;
    for (size_t i = 1; i < 44100; ++i) crossings += resampled[2 * (i - 1)] < 0 && resampled[2 * i] >= 0;
    for (size_t i = 4800; i < 43200; ++i) energyIn += std::pow(samples[2 * i] / 32768.0, 2) / 38400;
    for (size_t i = 4410; i < 39690; ++i) energyOut += std::pow(resampled[2 * i], 2) / 35280;
    EXPECT_NEAR(crossings, 1000, 1);
    EXPECT_NEAR(10 * std::log10(energyOut / energyIn), 0.0, 0.05);
    EXPECT_NE(Convert(u"in.wav", u"bad.wav", u"Wave", u"-dspeffect1=\"Resample=-rate=5\"").find(u"-rate takes"),
              std::u16string::npos);
}

TEST_F(Loudness, VolumeNormalizeReachesItsPeakOrLoudnessTarget) {
    std::vector<int16_t> samples = Music(44100 * 4, 0.2, 0.05);
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Pcm(samples))));
    ASSERT_NE(
        Convert(u"in.wav", u"out.wav", u"Wave", u"-dspeffect1=\"Volume Normalize=-target=-1\"").find(u"PCDone: 100"),
        std::u16string::npos);
    std::vector<float> peaked = Floats(FindChunk(ReadBytes(dir.File(u"out.wav")), "data"));
    ASSERT_EQ(peaked.size(), samples.size());
    float peak = 0;
    for (float v : peaked) peak = std::max(peak, std::fabs(v));
    EXPECT_NEAR(20 * std::log10(peak), -1.0, 0.01);

    ASSERT_NE(Convert(u"in.wav", u"out.wav", u"Wave", u"-dspeffect1=\"Volume Normalize=-mode=loudness -target=-23\"")
                  .find(u"PCDone: 100"),
              std::u16string::npos);
    EXPECT_NEAR(IntegratedLoudness(Floats(FindChunk(ReadBytes(dir.File(u"out.wav")), "data"))), -23.0, 0.01);
}

TEST_F(Loudness, ReplayGainTrackAndAlbumGainMatchTheMeter) {
    ASSERT_TRUE(PlatformSetEnvironment(u"TMPDIR", dir.File(u"").text));
    const uint32_t batch = 4242;
    std::vector<std::vector<int16_t>> tracks = {Music(44100 * 3, 0.5, 0.03), Music(44100 * 5 + 999, 0.1, 0.07),
                                                Music(44100 * 2, 0.9, 0.011)};
    std::vector<ebur128_state*> meters;
    std::string block;
    std::vector<std::pair<std::u16string, std::u16string>> files;
    for (size_t t = 0; t < tracks.size(); ++t) {
        std::u16string in = u"in" + std::u16string(1, static_cast<char16_t>(u'0' + t)) + u".wav";
        std::u16string out = u"out" + std::u16string(1, static_cast<char16_t>(u'0' + t)) + u".flac";
        ASSERT_TRUE(WriteBytes(dir.File(in.c_str()), Riff(FormatBody(1, 2, 44100, 2, 16, false), Pcm(tracks[t]))));
        std::u16string command = u" -infile=\"" + std::u16string(dir.File(in.c_str()).text) + u"\" -outfile=\"" +
                                 std::u16string(dir.File(out.c_str()).text) +
                                 u"\" -convert_to=\"FLAC\" -evtquit=\"\" -evtwatchdog=\"\" -batchid=\"4242\" "
                                 u"-dspeffect1=\"ReplayGain=\" ";
        ASSERT_TRUE(WriteBytes(dir.File(u"cmd"), Utf16Le(command)));
        clStringList arguments;
        arguments.Add(clString(u"-qvcmd=", dir.File(u"cmd").text));
        int exitCode = -1;
        ASSERT_TRUE(PlatformRunProcess(BinPath(u"ConvertWorker"), arguments, dir.File(u"log"), &exitCode));
        ASSERT_EQ(exitCode, 0) << ReadBytes(dir.File(u"log"));
        meters.push_back(Meter(tracks[t]));
        double loudness = 0, peak = 0, channelPeak = 0;
        ebur128_loudness_global(meters.back(), &loudness);
        for (unsigned c = 0; c < 2; ++c) {
            ebur128_sample_peak(meters.back(), c, &channelPeak);
            peak = std::max(peak, channelPeak);
        }
        EXPECT_NEAR(Gain(Tag(out.c_str(), u"REPLAYGAIN_TRACK_GAIN")), -18.0 - loudness, 0.01) << t;
        EXPECT_NEAR(Gain(Tag(out.c_str(), u"REPLAYGAIN_TRACK_PEAK")), peak, 1e-5) << t;
        files.emplace_back(dir.File(in.c_str()).text, dir.File(out.c_str()).text);
    }
    // The end of the batch, as the front end sends it.
    std::vector<qvc::Tag> list;
    for (size_t i = 0; i < files.size(); ++i) {
        std::u16string n = std::u16string(1, static_cast<char16_t>(u'1' + i));
        list.push_back({u"file" + n + u"_in", files[i].first, std::string()});
        list.push_back({u"file" + n + u"_out", files[i].second, std::string()});
    }
    std::string flat = qvc::WriteTagBlock(list);
    clQvDSP dsp;
    clString library =
        JoinPath(JoinPath(GetFolderPart(BinPath(u"ConvertWorker")), clString(u"DSPs")), clString(u"ReplayGain.so"));
    ASSERT_TRUE(dsp.Bind(library.text));
    qv_log_record noLog{};
    ASSERT_TRUE(dsp.CreateInstance(&noLog));
    qv_batch_end_record record{};
    record.blockSize = static_cast<uint32_t>(flat.size());
    record.batchId = batch;
    record.settings = u"";
    record.encoderOptions = u"";
    record.encoderName = u"FLAC";
    record.block = flat.data();
    dsp.Get(dsp.instance, u"BatchEndConversion", reinterpret_cast<qv_query_record*>(&record));
    double album = 0;
    ASSERT_EQ(ebur128_loudness_global_multiple(meters.data(), meters.size(), &album), EBUR128_SUCCESS);
    for (const auto& file : files) {
        clString out(file.second.c_str());
        std::u16string name = std::u16string(out.text).substr(std::u16string(dir.File(u"").text).size());
        EXPECT_NEAR(Gain(Tag(name.c_str(), u"REPLAYGAIN_ALBUM_GAIN")), -18.0 - album, 0.01);
        EXPECT_NEAR(Gain(Tag(name.c_str(), u"REPLAYGAIN_ALBUM_PEAK")), 0.9, 0.01);
    }
    for (ebur128_state*& meter : meters) ebur128_destroy(&meter);
}

TEST_F(Loudness, ReplayGainModesAndAppliedGain) {
    ASSERT_TRUE(PlatformSetEnvironment(u"TMPDIR", dir.File(u"").text));
    std::vector<int16_t> samples = Music(44100 * 3, 0.3, 0.04);
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Pcm(samples))));
    // Track mode leaves nothing for an album at the end of the batch.
    std::u16string first = Convert(u"in.wav", u"out.flac", u"FLAC", u"-dspeffect1=\"ReplayGain=-mode=track\"");
    ASSERT_NE(first.find(u"PCDone: 100"), std::u16string::npos) << std::string(first.begin(), first.end());
    EXPECT_FALSE(Tag(u"out.flac", u"REPLAYGAIN_TRACK_GAIN").empty());
    EXPECT_FALSE(PathExists(dir.File(u"Qv1")));
    ASSERT_NE(Convert(u"in.wav", u"out.flac", u"FLAC", u"-dspeffect1=\"ReplayGain=\"").find(u"PCDone: 100"),
              std::u16string::npos);
    EXPECT_TRUE(PathExists(dir.File(u"Qv1"))) << "album mode is the default";

    // Applied, the gain brings the audio to the reference loudness and the
    // output carries no gain tags.
    ASSERT_NE(Convert(u"in.wav", u"out.wav", u"Wave", u"-dspeffect1=\"ReplayGain=-mode=track -apply=gain\"")
                  .find(u"PCDone: 100"),
              std::u16string::npos);
    std::vector<float> applied = Floats(FindChunk(ReadBytes(dir.File(u"out.wav")), "data"));
    ASSERT_EQ(applied.size(), samples.size());
    EXPECT_NEAR(IntegratedLoudness(applied), -18.0, 0.01);
    ASSERT_NE(Convert(u"in.wav", u"out.flac", u"FLAC", u"-dspeffect1=\"ReplayGain=-mode=track -apply=gain\"")
                  .find(u"PCDone: 100"),
              std::u16string::npos);
    EXPECT_EQ(Tag(u"out.flac", u"REPLAYGAIN_TRACK_GAIN"), "");

    // A loud file stops where its peak reaches full scale.
    std::vector<int16_t> loud = Music(44100 * 2, 0.98, 0.02);
    for (size_t i = 0; i < loud.size(); i += 1000) loud[i] = 16000;  // quieter body, same peak
    ASSERT_TRUE(WriteBytes(dir.File(u"loud.wav"), Riff(FormatBody(1, 2, 44100, 2, 16, false), Pcm(loud))));
    ASSERT_NE(Convert(u"loud.wav", u"out.wav", u"Wave", u"-dspeffect1=\"ReplayGain=-mode=track -apply=gain\"")
                  .find(u"PCDone: 100"),
              std::u16string::npos);
    float peak = 0;
    for (float v : Floats(FindChunk(ReadBytes(dir.File(u"out.wav")), "data"))) peak = std::max(peak, std::fabs(v));
    EXPECT_LE(peak, 1.0f);

    // Album gain can't be applied, and a value out of its choices is named.
    std::u16string refused = Convert(u"in.wav", u"bad.wav", u"Wave", u"-dspeffect1=\"ReplayGain=-apply=gain\"");
    EXPECT_NE(refused.find(u"album gain can't be applied"), std::u16string::npos);
    EXPECT_FALSE(PathExists(dir.File(u"bad.wav")));
    refused = Convert(u"in.wav", u"bad.wav", u"Wave", u"-dspeffect1=\"ReplayGain=-mode=disc\"");
    EXPECT_NE(refused.find(u"-mode takes track|album, not 'disc'"), std::u16string::npos);
}
