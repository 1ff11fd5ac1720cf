// Decoder "Wave": uncompressed audio in RIFF WAVE (PCM 8 to 32 bits,
// IEEE float 32 and 64 bits, WAVE_FORMAT_EXTENSIBLE, RF64 for files over
// 4 GB), Sony Wave64, and AIFF / AIFC (uncompressed, "sowt", "fl32",
// "fl64"). Integer audio is delivered as left-justified 32-bit integers
// at its own depth, float audio as 32-bit float. Tags: the RIFF "LIST"
// "INFO" texts and the AIFF name, author, copyright and annotation texts;
// where TagLib is built in, also an ID3v2 tag in an "id3 " chunk (WAVE) or
// "ID3 " chunk (AIFF), whose tags take the place of the texts of the same
// name. No options.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

#ifdef QVC_WAVE_ID3
#include "waveid3.h"
#ifdef QVC_WAVE_ID3_MODULE
#include <dlfcn.h>
#endif
#endif

namespace {

// Small enough that a block, its samples and what the encoder makes of
// them stay in a core's own cache while two conversions run side by side.
constexpr uint32_t kFramesPerBlock = 4096;
// The file is read through a buffer of this size: one read call for
// several blocks instead of two or three for each.
constexpr size_t kReadBuffer = 64 * 1024;
constexpr uint16_t kFormatPcm = 1;
constexpr uint16_t kFormatFloat = 3;
constexpr uint16_t kFormatExtensible = 0xFFFE;

enum class Container { Wave, Wave64, Aiff };

uint16_t Le16(const unsigned char* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }
uint32_t Le32(const unsigned char* p) {
    return static_cast<uint32_t>(p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24));
}
uint64_t Le64(const unsigned char* p) { return Le32(p) | (static_cast<uint64_t>(Le32(p + 4)) << 32); }
uint16_t Be16(const unsigned char* p) { return static_cast<uint16_t>((p[0] << 8) | p[1]); }
uint32_t Be32(const unsigned char* p) {
    return (static_cast<uint32_t>(p[0]) << 24) | static_cast<uint32_t>(p[1] << 16) | static_cast<uint32_t>(p[2] << 8) |
           p[3];
}

// The 80-bit extended float of an AIFF sample rate.
double Extended(const unsigned char* p) {
    int exponent = ((p[0] & 0x7F) << 8) | p[1];
    uint64_t mantissa = 0;
    for (int i = 0; i < 8; ++i) mantissa = (mantissa << 8) | p[2 + i];
    if (exponent == 0 && mantissa == 0) return 0;
    double value = std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
    return (p[0] & 0x80) != 0 ? -value : value;
}

struct Decoder : qvc::DecoderBase {
    std::vector<char> readBuffer;  // the stream's buffer: it must outlive the stream
    qvc::OwnedFile file;
    Container container = Container::Wave;
    bool bigEndian = false;
    bool isFloat = false;
    uint16_t formatTag = kFormatPcm;
    uint16_t channels = 0;
    uint32_t rate = 0;
    uint16_t bits = 0;             // significant bits
    uint16_t container_bytes = 0;  // bytes per sample as stored
    uint32_t channelMask = 0;
    uint64_t dataStart = 0;
    uint64_t frames = 0;     // as the header declares them
    uint64_t available = 0;  // as the file holds them; fewer: the file is cut short
    uint64_t position = 0;
    // Where the last block's bytes ended: the next block starts there
    // unless a rewind moved it, and then no seek is needed.
    uint64_t readEnd = UINT64_MAX;
    std::string encoderName;
    std::vector<qvc::Tag> tags;
    bool hasId3 = false;  // an ID3 chunk was seen
    std::vector<unsigned char> raw;
    std::vector<int32_t> ints;
    std::vector<float> floats;

    void Close() override { file.reset(); }
    bool ReadAt(uint64_t offset, void* buffer, size_t count) {
        readEnd = UINT64_MAX;
        return qvc::Seek(file.get(), offset) && std::fread(buffer, 1, count, file.get()) == count;
    }
    uint64_t FileSize() {
        readEnd = UINT64_MAX;
        if (std::fseek(file.get(), 0, SEEK_END) != 0) return 0;
        int64_t size = qvc::Tell(file.get());
        return size > 0 ? static_cast<uint64_t>(size) : 0;
    }

    bool TakeFormat(const unsigned char* fmt, uint64_t size) {
        if (size < 16) return Fail("the format chunk is too short");
        formatTag = Le16(fmt);
        channels = Le16(fmt + 2);
        rate = Le32(fmt + 4);
        uint16_t blockAlign = Le16(fmt + 12);
        bits = Le16(fmt + 14);
        uint16_t tag = formatTag;
        if (tag == kFormatExtensible) {
            if (size < 40) return Fail("the extensible format chunk is too short");
            uint16_t validBits = Le16(fmt + 18);
            channelMask = Le32(fmt + 20);
            tag = Le16(fmt + 24);  // the sub-format GUID begins with the format tag
            if (validBits != 0 && validBits <= bits) bits = validBits;
        }
        if (tag != kFormatPcm && tag != kFormatFloat) return Fail("the audio is compressed, not plain PCM or float");
        isFloat = tag == kFormatFloat;
        if (channels == 0 || channels > 32 || rate == 0 || rate > 1536000) return Fail("the format is not valid");
        if (channels == 0 || blockAlign % channels != 0) return Fail("the block size does not fit the channels");
        container_bytes = static_cast<uint16_t>(blockAlign / channels);
        if (isFloat ? (container_bytes != 4 && container_bytes != 8)
                    : (container_bytes < 1 || container_bytes > 4 || bits < 1 || bits > container_bytes * 8)) {
            return Fail("the sample size is not supported");
        }
        if (isFloat) bits = 32;
        return true;
    }

    void AddInfo(const char* id, const std::string& value) {
        static const struct {
            const char* id;
            const char* name;
        } kNames[] = {{"INAM", "title"},     {"IART", "artist"},   {"IPRD", "album"},    {"ICRD", "year"},
                      {"IGNR", "genre"},     {"ITRK", "track"},    {"IPRT", "track"},    {"ICMT", "comment"},
                      {"ICOP", "copyright"}, {"IMUS", "composer"}, {"IENG", "engineer"}, {"ISFT", "encoder"}};
        std::string trimmed = value.substr(0, value.find('\0'));
        if (trimmed.empty()) return;
        for (const auto& entry : kNames) {
            if (std::memcmp(entry.id, id, 4) != 0) continue;
            if (std::strcmp(entry.name, "encoder") == 0) {
                encoderName = trimmed;
                return;
            }
            for (const qvc::Tag& tag : tags) {
                if (tag.name == qvc::FromAscii(entry.name)) return;  // ITRK and IPRT: the first wins
            }
            tags.push_back({qvc::FromAscii(entry.name), qvc::FromBytes(trimmed), std::string()});
            return;
        }
    }

    bool OpenRiff(uint64_t fileSize, bool rf64) {
        unsigned char head[12];
        uint64_t dataSize = 0;
        uint64_t ds64Data = 0;
        bool haveFormat = false;
        bool haveData = false;
        uint64_t at = 12;
        while (at + 8 <= fileSize) {
            if (!ReadAt(at, head, 8)) break;
            uint64_t size = Le32(head + 4);
            uint64_t body = at + 8;
            if (std::memcmp(head, "ds64", 4) == 0 && size >= 16) {
                unsigned char ds[16];
                if (!ReadAt(body, ds, 16)) return Fail("the ds64 chunk can't be read");
                ds64Data = Le64(ds + 8);
            } else if (std::memcmp(head, "fmt ", 4) == 0) {
                if (size > 4096) return Fail("the format chunk is too long");
                std::vector<unsigned char> fmt(static_cast<size_t>(size));
                if (!ReadAt(body, fmt.data(), fmt.size()) || !TakeFormat(fmt.data(), size)) {
                    if (error.empty()) return Fail("the format chunk can't be read");
                    return false;
                }
                haveFormat = true;
            } else if (std::memcmp(head, "data", 4) == 0) {
                dataStart = body;
                dataSize = rf64 && size == 0xFFFFFFFF ? ds64Data : size;
                // A writer that could not go back leaves 0 or all ones:
                // the audio then runs to the end of the file.
                if (!rf64 && (size == 0 || size == 0xFFFFFFFF)) dataSize = fileSize - body;
                haveData = true;
                size = dataSize;
            } else if (std::memcmp(head, "id3 ", 4) == 0 || std::memcmp(head, "ID3 ", 4) == 0) {
                hasId3 = true;
            } else if (std::memcmp(head, "LIST", 4) == 0 && size >= 4 && size <= (1u << 20)) {
                std::vector<unsigned char> list(static_cast<size_t>(size));
                if (ReadAt(body, list.data(), list.size()) && std::memcmp(list.data(), "INFO", 4) == 0) {
                    for (size_t p = 4; p + 8 <= list.size();) {
                        uint32_t itemSize = Le32(list.data() + p + 4);
                        if (itemSize > list.size() - p - 8) break;
                        AddInfo(reinterpret_cast<const char*>(list.data() + p),
                                std::string(reinterpret_cast<const char*>(list.data() + p + 8), itemSize));
                        p += 8 + itemSize + (itemSize & 1);
                    }
                }
            }
            at = body + size + (size & 1);
        }
        if (!haveFormat) return Fail("the file has no format chunk");
        if (!haveData) return Fail("the file has no audio data");
        SetLengths(dataSize, fileSize);
        return true;
    }

    void SetLengths(uint64_t dataSize, uint64_t fileSize) {
        uint64_t frameBytes = static_cast<uint64_t>(container_bytes) * channels;
        frames = dataSize / frameBytes;
        available = dataStart >= fileSize ? 0 : std::min(dataSize, fileSize - dataStart) / frameBytes;
    }

    bool OpenWave64(uint64_t fileSize) {
        static const unsigned char kFmt[16] = {'f',  'm',  't',  ' ',  0xF3, 0xAC, 0xD3, 0x11,
                                               0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A};
        static const unsigned char kData[16] = {'d',  'a',  't',  'a',  0xF3, 0xAC, 0xD3, 0x11,
                                                0x8C, 0xD1, 0x00, 0xC0, 0x4F, 0x8E, 0xDB, 0x8A};
        bool haveFormat = false;
        bool haveData = false;
        uint64_t dataSize = 0;
        uint64_t at = 40;
        unsigned char head[24];
        while (at + 24 <= fileSize) {
            if (!ReadAt(at, head, 24)) break;
            uint64_t size = Le64(head + 16);
            if (size < 24) return Fail("a Wave64 chunk is damaged");
            uint64_t body = at + 24;
            uint64_t bodySize = size - 24;
            if (std::memcmp(head, kFmt, 16) == 0) {
                if (bodySize > 4096) return Fail("the format chunk is too long");
                std::vector<unsigned char> fmt(static_cast<size_t>(bodySize));
                if (!ReadAt(body, fmt.data(), fmt.size())) return Fail("the format chunk can't be read");
                if (!TakeFormat(fmt.data(), bodySize)) return false;
                haveFormat = true;
            } else if (std::memcmp(head, kData, 16) == 0) {
                dataStart = body;
                dataSize = bodySize;
                haveData = true;
            }
            // A size that runs past the end (or wraps) ends the walk.
            if (size > fileSize - at) break;
            at += (size + 7) & ~uint64_t{7};
        }
        if (!haveFormat) return Fail("the file has no format chunk");
        if (!haveData) return Fail("the file has no audio data");
        SetLengths(dataSize, fileSize);
        return true;
    }

    bool OpenAiff(uint64_t fileSize, bool aifc) {
        bool haveCommon = false;
        bool haveData = false;
        uint64_t dataSize = 0;
        uint64_t at = 12;
        unsigned char head[8];
        while (at + 8 <= fileSize) {
            if (!ReadAt(at, head, 8)) break;
            uint64_t size = Be32(head + 4);
            uint64_t body = at + 8;
            if (std::memcmp(head, "COMM", 4) == 0) {
                unsigned char comm[22] = {};
                if (size < 18 || !ReadAt(body, comm, std::min<uint64_t>(size, 22))) {
                    return Fail("the common chunk can't be read");
                }
                channels = Be16(comm);
                frames = Be32(comm + 2);
                bits = Be16(comm + 6);
                double sampleRate = Extended(comm + 8);
                rate = sampleRate > 0 && sampleRate < 2e6 ? static_cast<uint32_t>(std::lround(sampleRate)) : 0;
                bigEndian = true;
                isFloat = false;
                if (aifc && size >= 22) {
                    if (std::memcmp(comm + 18, "NONE", 4) == 0 || std::memcmp(comm + 18, "twos", 4) == 0) {
                    } else if (std::memcmp(comm + 18, "sowt", 4) == 0) {
                        bigEndian = false;
                    } else if (std::memcmp(comm + 18, "fl32", 4) == 0 || std::memcmp(comm + 18, "FL32", 4) == 0) {
                        isFloat = true;
                        bits = 32;
                    } else if (std::memcmp(comm + 18, "fl64", 4) == 0 || std::memcmp(comm + 18, "FL64", 4) == 0) {
                        isFloat = true;
                        bits = 64;
                    } else {
                        return Fail("the AIFC audio is compressed");
                    }
                }
                if (channels == 0 || channels > 32 || rate == 0 || bits == 0 || bits > 64) {
                    return Fail("the format is not valid");
                }
                container_bytes = static_cast<uint16_t>((bits + 7) / 8);
                if (!isFloat && container_bytes > 4) return Fail("the sample size is not supported");
                if (isFloat) bits = 32;
                formatTag = isFloat ? kFormatFloat : kFormatPcm;
                haveCommon = true;
            } else if (std::memcmp(head, "SSND", 4) == 0 && size >= 8) {
                unsigned char offset[4];
                if (!ReadAt(body, offset, 4)) return Fail("the sound chunk can't be read");
                dataStart = body + 8 + Be32(offset);
                dataSize = size - 8 - std::min<uint64_t>(size - 8, Be32(offset));
                haveData = true;
            } else if (std::memcmp(head, "ID3 ", 4) == 0 || std::memcmp(head, "id3 ", 4) == 0) {
                hasId3 = true;
            } else if ((std::memcmp(head, "NAME", 4) == 0 || std::memcmp(head, "AUTH", 4) == 0 ||
                        std::memcmp(head, "(c) ", 4) == 0 || std::memcmp(head, "ANNO", 4) == 0) &&
                       size <= 65536) {
                std::string value(static_cast<size_t>(size), '\0');
                if (ReadAt(body, value.data(), value.size())) {
                    value = value.substr(0, value.find('\0'));
                    const char* name = head[0] == 'N'                     ? "title"
                                       : head[0] == 'A' && head[1] == 'U' ? "artist"
                                       : head[0] == '('                   ? "copyright"
                                                                          : "comment";
                    if (!value.empty()) tags.push_back({qvc::FromAscii(name), qvc::FromBytes(value), std::string()});
                }
            }
            at = body + size + (size & 1);
        }
        if (!haveCommon) return Fail("the file has no common chunk");
        if (!haveData) return Fail("the file has no audio data");
        uint64_t declared = frames;
        SetLengths(dataSize, fileSize);
        // The common chunk's frame count is the length; the sound chunk
        // may carry padding behind it.
        if (declared <= frames) frames = declared;
        return true;
    }

    // The ID3v2 tag of the file, read by TagLib; its tags replace those of
    // the same name from the format's own texts.
    bool ReadId3(const qv_char* name) {
#ifdef QVC_WAVE_ID3
        qvc_read_wave_id3_fn read = Id3Reader();
        if (read == nullptr) return Fail(Id3ReaderError());
        std::vector<qvc::Tag> found;
        read(name, container == Container::Aiff ? 1 : 0, &AddFound, &found);
        for (qvc::Tag& tag : found) {
            auto same = std::find_if(tags.begin(), tags.end(), [&tag](const qvc::Tag& t) { return t.name == tag.name; });
            if (same != tags.end() && tag.name != u"picture") {
                *same = std::move(tag);
            } else {
                tags.push_back(std::move(tag));
            }
        }
#else
        (void)name;
#endif
        return true;
    }

#ifdef QVC_WAVE_ID3
    static void AddFound(void* context, const char16_t* name, size_t nameLength, const char16_t* value,
                         size_t valueLength, const char* binary, size_t binaryLength) {
        static_cast<std::vector<qvc::Tag>*>(context)->push_back(
            {std::u16string(name, nameLength), std::u16string(value, valueLength), std::string(binary, binaryLength)});
    }
#ifdef QVC_WAVE_ID3_MODULE
    // The reader library beside this decoder, loaded on the first file
    // that needs it and kept for as long as the process runs.
    struct Id3Library {
        qvc_read_wave_id3_fn read = nullptr;
        std::string error;
        Id3Library() {
            Dl_info self{};
            if (::dladdr(reinterpret_cast<void*>(&AddFound), &self) == 0 || self.dli_fname == nullptr) {
                error = "the decoder can't tell its own folder";
                return;
            }
            std::string path = self.dli_fname;
            path = path.substr(0, path.find_last_of('/') + 1) + "Wave/id3.so";
            void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
            if (library != nullptr) read = reinterpret_cast<qvc_read_wave_id3_fn>(::dlsym(library, QVC_READ_WAVE_ID3));
            if (read == nullptr) {
                const char* why = ::dlerror();
                error = "the file's ID3 tag can't be read: " + (why != nullptr ? std::string(why) : path);
            }
        }
    };
    static const Id3Library& Library() {
        static const Id3Library library;
        return library;
    }
    static qvc_read_wave_id3_fn Id3Reader() { return Library().read; }
    static const std::string& Id3ReaderError() { return Library().error; }
#else
    static qvc_read_wave_id3_fn Id3Reader() { return &qvc_read_wave_id3; }
    static std::string Id3ReaderError() { return std::string(); }
#endif
#endif

    bool Open(const qv_char* name) {
        hasId3 = false;
        if (!OpenContainer(name)) return false;
        return !hasId3 || ReadId3(name);
    }

    bool OpenContainer(const qv_char* name) {
        Close();
        tags.clear();
        encoderName.clear();
        channelMask = 0;
        bigEndian = false;
        position = 0;
        file.reset(qvc::OpenFile(name, "rb"));
        if (file == nullptr) return Fail("the file can't be opened");
        readBuffer.resize(kReadBuffer);
        std::setvbuf(file.get(), readBuffer.data(), _IOFBF, readBuffer.size());
        readEnd = UINT64_MAX;
        uint64_t size = FileSize();
        unsigned char head[40] = {};
        if (size < 12 || !ReadAt(0, head, std::min<uint64_t>(size, 40))) return Fail("the file is too short");
        static const unsigned char kRiff64[16] = {'r',  'i',  'f',  'f',  0x2E, 0x91, 0xCF, 0x11,
                                                  0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00};
        if ((std::memcmp(head, "RIFF", 4) == 0 || std::memcmp(head, "RF64", 4) == 0) &&
            std::memcmp(head + 8, "WAVE", 4) == 0) {
            container = Container::Wave;
            return OpenRiff(size, std::memcmp(head, "RF64", 4) == 0);
        }
        if (size >= 40 && std::memcmp(head, kRiff64, 16) == 0) {
            container = Container::Wave64;
            return OpenWave64(size);
        }
        if (std::memcmp(head, "FORM", 4) == 0 &&
            (std::memcmp(head + 8, "AIFF", 4) == 0 || std::memcmp(head + 8, "AIFC", 4) == 0)) {
            container = Container::Aiff;
            return OpenAiff(size, std::memcmp(head + 8, "AIFC", 4) == 0);
        }
        return Fail("the file is not a WAVE, Wave64 or AIFF file");
    }

    bool Format(qv_audio_format& format) const {
        if (file == nullptr) return false;
        format.samplesPerSecond = rate;
        format.channels = channels;
        format.validBits = bits;
        format.sampleType = isFloat ? QV_SAMPLES_FLOAT32 : QV_SAMPLES_INT32;
        format.channelMask = channelMask;
        return true;
    }

    void Facts(qv_stream_facts& facts) const {
        facts.formatTag = formatTag == kFormatExtensible ? kFormatExtensible : (isFloat ? kFormatFloat : kFormatPcm);
        facts.channels = channels;
        facts.samplesPerSecond = rate;
        facts.bitsPerSample = static_cast<uint16_t>(isFloat ? container_bytes * 8 : bits);
        facts.blockAlign = static_cast<uint16_t>(container_bytes * channels);
        facts.bytesPerSecond = rate * facts.blockAlign;
        facts.bitrate = facts.bytesPerSecond * 8;
        facts.lengthMs = rate != 0 ? frames * 1000 / rate : 0;
    }

    std::vector<qvc::Tag> Tags() const { return tags; }

    std::vector<qvc::Tag> Properties() const {
        std::vector<qvc::Tag> properties = {{u"Audio Quality", u"Lossless", std::string()}};
        if (!encoderName.empty()) properties.push_back({u"Encoder", qvc::FromBytes(encoderName), std::string()});
        return properties;
    }

    bool Rewind(uint64_t frame) {
        if (file == nullptr || frame > frames) return false;
        position = frame;
        return true;
    }

    // One block; 0 at the end, -1 on a read failure.
    int32_t Decode(qv_audio_block* block) {
        if (file == nullptr) return -1;
        if (position >= frames) return 0;
        if (position >= available) {
            if (available == 0) {
                error = qvc::FromAscii("the file ends before its audio does");
                return -1;
            }
            // A cut file (a download or copy that stopped): what it holds
            // converts, and the user is told.
            if (notes.empty()) {
                char note[160];
                std::snprintf(note, sizeof note,
                              "the file ends before its audio does: it holds %.1f s of the %.1f s its header names, "
                              "and that much was converted",
                              static_cast<double>(available) / rate, static_cast<double>(frames) / rate);
                notes.push_back(note);
            }
            return 0;
        }
        uint64_t want = std::min<uint64_t>({kFramesPerBlock, frames - position, available - position});
        size_t sampleCount = static_cast<size_t>(want) * channels;
        raw.resize(sampleCount * container_bytes);
        uint64_t offset = dataStart + position * channels * container_bytes;
        if ((offset != readEnd && !qvc::Seek(file.get(), offset)) ||
            std::fread(raw.data(), 1, raw.size(), file.get()) != raw.size()) {
            readEnd = UINT64_MAX;
            error = qvc::FromAscii("the audio data can't be read");
            return -1;
        }
        readEnd = offset + raw.size();
        const unsigned char* p = raw.data();
        if (isFloat) {
            floats.resize(sampleCount);
            for (size_t i = 0; i < sampleCount; ++i, p += container_bytes) {
                unsigned char b[8];
                for (int k = 0; k < container_bytes; ++k) b[k] = bigEndian ? p[container_bytes - 1 - k] : p[k];
                if (container_bytes == 4) {
                    uint32_t u = Le32(b);
                    float f;
                    std::memcpy(&f, &u, 4);
                    floats[i] = f;
                } else {
                    uint64_t u = Le64(b);
                    double d;
                    std::memcpy(&d, &u, 8);
                    floats[i] = static_cast<float>(d);
                }
            }
            block->samples = floats.data();
        } else {
            ints.resize(sampleCount);
            const uint32_t keep = bits >= 32 ? 0xFFFFFFFFu : ~((1u << (32 - bits)) - 1);
            if (!bigEndian && container_bytes == 2 && bits == 16) {  // the common case, in a tight loop
                for (size_t i = 0; i < sampleCount; ++i, p += 2) {
                    ints[i] =
                        static_cast<int32_t>((static_cast<uint32_t>(p[0]) << 16) | (static_cast<uint32_t>(p[1]) << 24));
                }
            } else {
                for (size_t i = 0; i < sampleCount; ++i, p += container_bytes) {
                    uint32_t u = 0;
                    for (int k = 0; k < container_bytes; ++k) {
                        unsigned char byte = bigEndian ? p[k] : p[container_bytes - 1 - k];
                        u = (u << 8) | byte;
                    }
                    u <<= 8 * (4 - container_bytes);
                    // 8-bit WAVE data is unsigned; everything else is signed.
                    if (container_bytes == 1 && container != Container::Aiff) u ^= 0x80000000u;
                    ints[i] = static_cast<int32_t>(u & keep);
                }
            }
            block->samples = ints.data();
        }
        block->frames = static_cast<uint32_t>(want);
        block->position = position;
        position += want;
        block->flags = position >= frames ? QV_BLOCK_LAST : 0;
        return 1;
    }
};

struct Listed {
    const char* extension;
    const char* description;
};
const Listed kDecodes[] = {{".wav", "Wave"}, {".wave", "Wave"}, {".rf64", "Wave (RF64)"}, {".w64", "Wave64"},
                           {".aif", "AIFF"}, {".aiff", "AIFF"}, {".aifc", "AIFF-C"}};

}  // namespace

#include "codecs/common/decoderexports.h"
