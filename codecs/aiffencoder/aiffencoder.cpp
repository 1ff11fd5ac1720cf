// Encoder "AIFF": big-endian PCM in AIFF files, or 32-bit float in AIFF-C
// ("fl32"). The title, artist, copyright and comment tags go into the
// NAME, AUTH, "(c) " and ANNO chunks as UTF-8.
//
// Option string:
//   -bits="8|16|24|32|float"   the sample format written; without it the
//                              stream's own: integer audio at its depth
//                              (rounded up to whole bytes), float as float
#include <cmath>
#include <new>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

void Be(std::string& out, uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

// A sample rate as an 80-bit extended float.
std::string Extended(uint32_t rate) {
    std::string out;
    if (rate == 0) return std::string(10, '\0');
    int exponent = 31;
    uint64_t mantissa = rate;
    while ((mantissa & 0x80000000u) == 0) {
        mantissa <<= 1;
        --exponent;
    }
    Be(out, static_cast<uint64_t>(16383 + exponent), 2);
    Be(out, mantissa << 32, 8);
    return out;
}

std::string Chunk(const char* id, const std::string& body) {
    std::string out(id, 4);
    Be(out, body.size(), 4);
    out += body;
    if (body.size() % 2 != 0) out.push_back('\0');
    return out;
}

struct Encoder : qvc::UncompressedWriter {
    uint64_t framesAt = 0;  // where the frame count of COMM goes
    uint64_t soundAt = 0;   // where the SSND chunk begins

    bool Begin(qv_encoder_begin_record& record) {
        channels = record.format->channels;
        rate = record.format->samplesPerSecond;
        if (channels == 0 || rate == 0) return Fail("the stream has no channels or no rate");
        if (const char* wrong = qvc::ChooseLayout(record, layout)) return Fail(wrong);
        file.reset(qvc::OpenOutput(record.outputPath, false));
        if (file == nullptr) return Fail("the output file can't be created");
        std::string head = "FORM";
        Be(head, 0, 4);
        head += layout.isFloat ? "AIFC" : "AIFF";
        if (layout.isFloat) {
            std::string version;
            Be(version, 0xA2805140u, 4);  // AIFF-C version 1
            head += Chunk("FVER", version);
        }
        std::string comm;
        Be(comm, channels, 2);
        framesAt = head.size() + 8 + 2;
        Be(comm, 0, 4);
        Be(comm, layout.isFloat ? 32 : layout.bits, 2);
        comm += Extended(rate);
        if (layout.isFloat) {
            comm += "fl32";
            comm += std::string(
                "\x0c"
                "32-bit float\0",
                14);
        }
        head += Chunk("COMM", comm);
        soundAt = head.size();
        head += "SSND";
        Be(head, 0, 4);
        Be(head, 0, 8);  // offset and block size
        if (!Write(head)) return Fail("the output file can't be written");
        Accept(*record.format);
        return true;
    }

    bool Encode(const qv_audio_block& block) { return WriteBlock(block, true, false); }

    bool End(const qv_encoder_end_record& record) {
        if (Aborted(record)) return true;
        if (file == nullptr) return Fail("the output file is not open");
        if (dataBytes + 8 > 0xFFFFFFF0ull) return Fail("the audio is too long for an AIFF file");
        std::string tail;
        if ((dataBytes & 1) != 0) tail.push_back('\0');
        static const struct {
            const char* id;
            const char16_t* name;
        } kTexts[] = {{"NAME", u"title"}, {"AUTH", u"artist"}, {"(c) ", u"copyright"}, {"ANNO", u"comment"}};
        std::vector<qvc::Tag> tags = qvc::ReadTagBlock(record.tags, record.tagsSize);
        for (const auto& entry : kTexts) {
            for (const qvc::Tag& tag : tags) {
                std::u16string lower = tag.name;
                for (char16_t& c : lower) c = c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
                if (lower != entry.name || tag.value.empty()) continue;
                tail += Chunk(entry.id, qvc::ToUtf8(tag.value.substr(0, tag.value.find(u'\r'))));
                break;
            }
        }
        uint64_t bytesPerFrame = static_cast<uint64_t>(layout.isFloat ? 4 : layout.bytes) * channels;
        uint64_t formSize = soundAt + 16 + dataBytes + tail.size() - 8;
        std::string form;
        Be(form, formSize, 4);
        std::string frames;
        Be(frames, dataBytes / bytesPerFrame, 4);
        std::string sound;
        Be(sound, dataBytes + 8, 4);
        bool ok = Write(tail) && qvc::Seek(file.get(), 4) && Write(form) && qvc::Seek(file.get(), framesAt) &&
                  Write(frames) && qvc::Seek(file.get(), soundAt + 4) && Write(sound);
        return Finish(ok);
    }
};

constexpr const char* kExtension = ".aiff";
// What "qvt plugins" shows of the options (see the top of this file).
constexpr qvc::OptionTable kOptions = qvc::UncompressedWriter::kOptions;
constexpr bool kLossless = true;
constexpr const char* kRequiredEffect = nullptr;
uint64_t EstimatedSize(uint64_t lengthMs, const qv_stream_facts* facts) {
    return qvc::UncompressedWriter::SizeOf(lengthMs, facts, 54);
}

}  // namespace

#include "codecs/common/encoderexports.h"
