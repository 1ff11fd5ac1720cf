// Encoder "Wave": RIFF WAVE files, plain PCM or IEEE float, with
// WAVE_FORMAT_EXTENSIBLE where more than two channels or more than 16 bits
// need it, and RF64 once the audio passes 4 GB. Tags go into a "LIST"
// "INFO" chunk as UTF-8.
//
// Option string:
//   -bits="8|16|24|32|float"   the sample format written; without it the
//                              stream's own: integer audio at its depth
//                              (rounded up to whole bytes), float as float
#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

constexpr uint32_t kJunkSize = 28;  // room for a ds64 chunk, should RF64 be needed

void Put16(std::string& out, uint32_t v) {
    out.push_back(static_cast<char>(v & 0xFF));
    out.push_back(static_cast<char>((v >> 8) & 0xFF));
}

struct Encoder : qvc::UncompressedWriter {
    uint32_t channelMask = 0;
    uint64_t formatAt = 0;
    uint64_t dataAt = 0;

    std::string FormatChunk() const {
        bool extensible = channels > 2 || (!layout.isFloat && layout.bits > 16) || channelMask != 0;
        std::string fmt;
        Put16(fmt, extensible ? 0xFFFE : (layout.isFloat ? 3 : 1));
        Put16(fmt, channels);
        qvc::PutU32(fmt, rate);
        const uint32_t bytes = layout.isFloat ? 4 : layout.bytes;
        qvc::PutU32(fmt, rate * bytes * channels);
        Put16(fmt, bytes * channels);
        Put16(fmt, bytes * 8);
        if (extensible) {
            Put16(fmt, 22);
            Put16(fmt, layout.bits);
            qvc::PutU32(fmt, channelMask);
            static const unsigned char kGuidTail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                        0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
            Put16(fmt, layout.isFloat ? 3 : 1);
            fmt.append(reinterpret_cast<const char*>(kGuidTail), sizeof kGuidTail);
        }
        std::string chunk = "fmt ";
        qvc::PutU32(chunk, static_cast<uint32_t>(fmt.size()));
        return chunk + fmt;
    }

    bool Begin(qv_encoder_begin_record& record) {
        const qv_audio_format& format = *record.format;
        channels = format.channels;
        rate = format.samplesPerSecond;
        channelMask = format.channelMask;
        if (channels == 0 || rate == 0) return Fail("the stream has no channels or no rate");
        if (const char* wrong = qvc::ChooseLayout(record, layout)) return Fail(wrong);
        file.reset(qvc::OpenOutput(record.outputPath, false));
        if (file == nullptr) return Fail("the output file can't be created");
        std::string head = "RIFF";
        qvc::PutU32(head, 0);
        head += "WAVEJUNK";
        qvc::PutU32(head, kJunkSize);
        head.append(kJunkSize, '\0');
        formatAt = head.size();
        head += FormatChunk();
        head += "data";
        qvc::PutU32(head, 0);
        dataAt = head.size();
        if (!Write(head)) return Fail("the output file can't be written");
        Accept(*record.format);
        return true;
    }

    bool Encode(const qv_audio_block& block) { return WriteBlock(block, false, true); }

    bool End(const qv_encoder_end_record& record) {
        if (Aborted(record)) return true;
        if (file == nullptr) return Fail("the output file is not open");
        if ((dataBytes & 1) != 0 && !Write(std::string(1, '\0'))) return Fail("the output file can't be written");
        std::string info = "INFO";
        static const struct {
            const char* id;
            const char16_t* name;
        } kInfo[] = {{"INAM", u"title"},   {"IART", u"artist"},    {"IPRD", u"album"},
                     {"ICRD", u"year"},    {"IGNR", u"genre"},     {"ITRK", u"track"},
                     {"ICMT", u"comment"}, {"ICOP", u"copyright"}, {"IMUS", u"composer"}};
        std::vector<qvc::Tag> tags = qvc::ReadTagBlock(record.tags, record.tagsSize);
        for (const auto& entry : kInfo) {
            for (const qvc::Tag& tag : tags) {
                if (tag.name.size() != std::char_traits<char16_t>::length(entry.name)) continue;
                bool same = true;
                for (size_t i = 0; i < tag.name.size() && same; ++i) {
                    char16_t a = tag.name[i] >= u'A' && tag.name[i] <= u'Z' ? tag.name[i] + 32 : tag.name[i];
                    same = a == entry.name[i];
                }
                if (!same || tag.value.empty()) continue;
                std::string value = qvc::ToUtf8(tag.value.substr(0, tag.value.find(u'\r'))) + '\0';
                info += entry.id;
                qvc::PutU32(info, static_cast<uint32_t>(value.size()));
                info += value;
                if ((value.size() & 1) != 0) info.push_back('\0');
                break;
            }
        }
        uint64_t listAt = dataAt + dataBytes + (dataBytes & 1);
        if (info.size() > 4) {
            std::string list = "LIST";
            qvc::PutU32(list, static_cast<uint32_t>(info.size()));
            if (!Write(list + info)) return Fail("the output file can't be written");
            listAt += 8 + info.size();
        }
        uint64_t riffSize = listAt - 8;
        bool rf64 = riffSize > 0xFFFFFFFFull || dataBytes > 0xFFFFFFFFull;
        std::string riff = rf64 ? "RF64" : "RIFF";
        qvc::PutU32(riff, rf64 ? 0xFFFFFFFFu : static_cast<uint32_t>(riffSize));
        std::string dataSize;
        qvc::PutU32(dataSize, rf64 ? 0xFFFFFFFFu : static_cast<uint32_t>(dataBytes));
        bool ok = qvc::Seek(file.get(), 0) && Write(riff) && qvc::Seek(file.get(), dataAt - 4) && Write(dataSize);
        if (ok && rf64) {
            std::string ds64 = "ds64";
            qvc::PutU32(ds64, kJunkSize);
            qvc::PutU32(ds64, static_cast<uint32_t>(riffSize));
            qvc::PutU32(ds64, static_cast<uint32_t>(riffSize >> 32));
            qvc::PutU32(ds64, static_cast<uint32_t>(dataBytes));
            qvc::PutU32(ds64, static_cast<uint32_t>(dataBytes >> 32));
            uint64_t frames = dataBytes / (static_cast<uint64_t>(layout.isFloat ? 4 : layout.bytes) * channels);
            qvc::PutU32(ds64, static_cast<uint32_t>(frames));
            qvc::PutU32(ds64, static_cast<uint32_t>(frames >> 32));
            qvc::PutU32(ds64, 0);
            ok = qvc::Seek(file.get(), 12) && Write(ds64);
        }
        return Finish(ok);
    }
};

constexpr const char* kExtension = ".wav";
// What "qvt plugins" shows of the options (see the top of this file).
constexpr qvc::OptionTable kOptions = qvc::UncompressedWriter::kOptions;
constexpr bool kLossless = true;
constexpr const char* kRequiredEffect = nullptr;
uint64_t EstimatedSize(uint64_t lengthMs, const qv_stream_facts* facts) {
    return qvc::UncompressedWriter::SizeOf(lengthMs, facts, 44);
}

}  // namespace

#include "codecs/common/encoderexports.h"
