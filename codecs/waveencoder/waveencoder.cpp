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

// The value of `-key="value"` (or -key=value) in an option string.
std::u16string Option(const std::u16string& options, const std::u16string& key) {
    std::u16string find = u"-" + key + u"=";
    size_t at = options.find(find);
    if (at == std::u16string::npos) return std::u16string();
    at += find.size();
    if (at < options.size() && options[at] == u'"') {
        size_t end = options.find(u'"', at + 1);
        return options.substr(at + 1, end == std::u16string::npos ? std::u16string::npos : end - at - 1);
    }
    size_t end = options.find(u' ', at);
    return options.substr(at, end == std::u16string::npos ? std::u16string::npos : end - at);
}

struct Encoder {
    FILE* file = nullptr;
    bool isFloat = false;
    uint16_t channels = 0;
    uint32_t rate = 0;
    uint16_t bits = 16;
    uint16_t bytes = 2;
    uint16_t streamBits = 16;  // of integer audio coming in
    uint32_t channelMask = 0;
    uint64_t dataBytes = 0;
    uint64_t formatAt = 0;
    uint64_t dataAt = 0;
    std::string buffer;
    qvc::Answer text1;
    qvc::Answer page;  // the option string a settings page was shown with
    std::u16string error;
    qvc::Answer errorAnswer;

    bool Fail(const char* why) {
        error = qvc::FromAscii(why);
        if (file != nullptr) std::fclose(file);
        file = nullptr;
        return false;
    }
    bool Write(const std::string& data) { return std::fwrite(data.data(), 1, data.size(), file) == data.size(); }

    std::string FormatChunk() const {
        bool extensible = channels > 2 || (!isFloat && bits > 16) || channelMask != 0;
        std::string fmt;
        Put16(fmt, extensible ? 0xFFFE : (isFloat ? 3 : 1));
        Put16(fmt, channels);
        qvc::PutU32(fmt, rate);
        qvc::PutU32(fmt, rate * bytes * channels);
        Put16(fmt, bytes * channels);
        Put16(fmt, bytes * 8);
        if (extensible) {
            Put16(fmt, 22);
            Put16(fmt, bits);
            qvc::PutU32(fmt, channelMask);
            static const unsigned char kGuidTail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                                        0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
            Put16(fmt, isFloat ? 3 : 1);
            fmt.append(reinterpret_cast<const char*>(kGuidTail), sizeof kGuidTail);
        }
        std::string chunk = "fmt ";
        qvc::PutU32(chunk, static_cast<uint32_t>(fmt.size()));
        return chunk + fmt;
    }

    bool Begin(const qv_encoder_begin_record& record) {
        const qv_audio_format& format = *record.format;
        channels = format.channels;
        rate = format.samplesPerSecond;
        channelMask = format.channelMask;
        streamBits = format.sampleType == QV_SAMPLES_INT32 ? format.validBits : 32;
        if (channels == 0 || rate == 0) return Fail("the stream has no channels or no rate");
        std::u16string wanted = Option(record.optionString != nullptr ? record.optionString : u"", u"bits");
        if (wanted.empty()) {
            isFloat = format.sampleType == QV_SAMPLES_FLOAT32;
            bits = isFloat ? 32 : std::clamp<uint16_t>(format.validBits, 8, 32);
        } else if (wanted == u"float") {
            isFloat = true;
            bits = 32;
        } else {
            isFloat = false;
            int value = std::atoi(qvc::ToUtf8(wanted).c_str());
            if (value != 8 && value != 16 && value != 24 && value != 32)
                return Fail("-bits takes 8, 16, 24, 32 or float");
            bits = static_cast<uint16_t>(value);
        }
        bytes = static_cast<uint16_t>((bits + 7) / 8);
        file = qvc::OpenFile(record.outputPath, "wb");
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
        return true;
    }

    bool Encode(const qv_audio_block& block) {
        size_t count = static_cast<size_t>(block.frames) * channels;
        buffer.resize(count * bytes);
        char* out = buffer.data();
        if (isFloat) {
            std::memcpy(out, block.samples, count * 4);  // little-endian hosts only, as the ABI is
        } else {
            const auto* in = static_cast<const int32_t*>(block.samples);
            // Fewer bits than the stream has: rounded to the nearest step.
            const int64_t half = streamBits > bytes * 8 && bytes < 4 ? int64_t{1} << (31 - bytes * 8) : 0;
            for (size_t i = 0; i < count; ++i) {
                auto u =
                    static_cast<uint32_t>(static_cast<int32_t>(std::min<int64_t>(int64_t{in[i]} + half, INT32_MAX)));
                if (bytes == 1) u ^= 0x80000000u;  // 8-bit WAVE data is unsigned
                for (int k = 0; k < bytes; ++k) *out++ = static_cast<char>((u >> (8 * (4 - bytes + k))) & 0xFF);
            }
        }
        if (!Write(buffer)) return Fail("the output file can't be written (is the disk full?)");
        dataBytes += buffer.size();
        return true;
    }

    bool End(const qv_encoder_end_record& record) {
        if (record.aborted != 0) {
            if (file != nullptr) std::fclose(file);
            file = nullptr;
            return true;
        }
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
        bool ok = qvc::Seek(file, 0) && Write(riff) && qvc::Seek(file, dataAt - 4) && Write(dataSize);
        if (ok && rf64) {
            std::string ds64 = "ds64";
            qvc::PutU32(ds64, kJunkSize);
            qvc::PutU32(ds64, static_cast<uint32_t>(riffSize));
            qvc::PutU32(ds64, static_cast<uint32_t>(riffSize >> 32));
            qvc::PutU32(ds64, static_cast<uint32_t>(dataBytes));
            qvc::PutU32(ds64, static_cast<uint32_t>(dataBytes >> 32));
            uint64_t frames = dataBytes / (static_cast<uint64_t>(bytes) * channels);
            qvc::PutU32(ds64, static_cast<uint32_t>(frames));
            qvc::PutU32(ds64, static_cast<uint32_t>(frames >> 32));
            qvc::PutU32(ds64, 0);
            ok = qvc::Seek(file, 12) && Write(ds64);
        }
        if (std::fflush(file) != 0) ok = false;
        if (std::fclose(file) != 0) ok = false;
        file = nullptr;
        return ok || Fail("the output file can't be finished (is the disk full?)");
    }
};

Encoder* Self(uint64_t handle) { return reinterpret_cast<Encoder*>(static_cast<uintptr_t>(handle)); }

}  // namespace

extern "C" {

QV_EXPORT uint64_t ENC_Create(const qv_log_record*) {
    return static_cast<uint64_t>(reinterpret_cast<uintptr_t>(new (std::nothrow) Encoder()));
}

QV_EXPORT void ENC_Destroy(uint64_t handle) {
    Encoder* self = Self(handle);
    if (self->file != nullptr) std::fclose(self->file);
    delete self;
}

QV_EXPORT int32_t ENC_Get(uint64_t handle, const qv_char* key, qv_query_record* record) {
    Encoder* self = Self(handle);
    if (qvc::KeyIs(key, "Extension")) {
        record->text1 = self->text1.Set(".wav");
        return 1;
    }
    if (qvc::KeyIs(key, "IsLossless")) {
        record->estimate = 1;
        return 1;
    }
    if (qvc::KeyIs(key, "GetEstimatedFileSize")) {
        const auto* facts = static_cast<const qv_stream_facts*>(record->facts);
        uint64_t perSecond = facts != nullptr ? facts->bytesPerSecond : 0;
        record->estimate = record->lengthMs * perSecond / 1000 + 44;
        return 1;
    }
    int32_t shared = qvc::AnswerShared(key, record, self->error, self->errorAnswer);
    return shared < 0 ? 0 : shared;
}

QV_EXPORT int32_t ENC_Set(uint64_t, const qv_char*, qv_query_record*) { return 0; }

// No settings page until the window toolkit exists: the option string
// given is the one handed back.
QV_EXPORT void* ENC_ShowConfigBit(uint64_t handle, void*, int32_t, int32_t, const qv_char* options) {
    Self(handle)->page.Set(options != nullptr ? std::u16string(options) : std::u16string());
    return nullptr;
}

QV_EXPORT const qv_char* ENC_RemoveConfigBit(uint64_t handle, void*) { return Self(handle)->page.Get(); }

QV_EXPORT int32_t ENC_BeginConversion(uint64_t handle, qv_encoder_begin_record* record) {
    Encoder* self = Self(handle);
    if (!self->Begin(*record)) return 0;
    record->format->acceptedTypes = self->isFloat ? QV_SAMPLES_FLOAT32 : QV_SAMPLES_INT32;
    if (!self->isFloat) record->format->validBits = self->bits;
    return 1;
}

QV_EXPORT int32_t ENC_EncodeBlock(uint64_t handle, const qv_audio_block* block) {
    return Self(handle)->Encode(*block) ? 1 : 0;
}

QV_EXPORT int32_t ENC_EndConversion(uint64_t handle, const qv_encoder_end_record* record) {
    return Self(handle)->End(*record) ? 1 : 0;
}

}  // extern "C"
