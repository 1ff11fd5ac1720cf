// What every codec plug-in of this project needs around the plug-in
// header: files opened by UTF-16 name, text answers that outlive the call,
// and tag blocks (u32 count; per entry u32 size, name and value as
// UTF-16LE with NULs, then binary data). Header only, standard C++ only,
// so that each plug-in stays one library that sees nothing but the ABI.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "codecs/common/optionspec.h"

#include "plugins/quillotone_plugin.h"

namespace qvc {

inline bool KeyIs(const qv_char* key, const char* name) {
    if (key == nullptr) return false;
    size_t i = 0;
    for (; key[i] != 0 && name[i] != 0; ++i) {
        if (key[i] != static_cast<unsigned char>(name[i])) return false;
    }
    return key[i] == 0 && name[i] == 0;
}

inline std::u16string FromAscii(const char* text) {
    std::u16string out;
    for (; *text != 0; ++text) out.push_back(static_cast<unsigned char>(*text));
    return out;
}

inline bool IsUtf8(const std::string& bytes) {
    for (size_t i = 0; i < bytes.size();) {
        auto c = static_cast<unsigned char>(bytes[i]);
        size_t extra = c < 0x80 ? 0 : (c & 0xE0) == 0xC0 ? 1 : (c & 0xF0) == 0xE0 ? 2 : (c & 0xF8) == 0xF0 ? 3 : 9;
        if (extra == 9 || i + extra >= bytes.size()) return false;
        for (size_t k = 1; k <= extra; ++k) {
            if ((static_cast<unsigned char>(bytes[i + k]) & 0xC0) != 0x80) return false;
        }
        i += extra + 1;
    }
    return true;
}

// Text bytes of a file format to UTF-16: valid UTF-8 as UTF-8, anything
// else as Latin-1 (as RIFF INFO texts are commonly written).
inline std::u16string FromBytes(const std::string& bytes) {
    std::u16string out;
    if (!IsUtf8(bytes)) {
        for (char c : bytes) out.push_back(static_cast<unsigned char>(c));
        return out;
    }
    for (size_t i = 0; i < bytes.size();) {
        auto c = static_cast<unsigned char>(bytes[i]);
        uint32_t code = c;
        size_t extra = 0;
        if (c >= 0xF0) {
            code = c & 0x07;
            extra = 3;
        } else if (c >= 0xE0) {
            code = c & 0x0F;
            extra = 2;
        } else if (c >= 0xC0) {
            code = c & 0x1F;
            extra = 1;
        }
        for (size_t k = 1; k <= extra; ++k) code = (code << 6) | (static_cast<unsigned char>(bytes[i + k]) & 0x3F);
        i += extra + 1;
        if (code >= 0x10000) {
            code -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(code));
        }
    }
    return out;
}

inline std::string ToUtf8(const std::u16string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
        }
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else if (c < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else if (c < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (c >> 18)));
            out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return out;
}

// The bytes of a file name on POSIX: UTF-8, except that a lone surrogate
// U+DC80-U+DCFF stands for the byte 0x80-0xFF of a name that is not UTF-8
// (the program reads such names so), and any other lone surrogate is
// written as U+FFFD. The program's own file calls use the same mapping, so
// a plug-in opens exactly the file the program reserved or listed.
inline std::string FileName(const std::u16string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        uint32_t c = text[i];
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            out += ToUtf8(text.substr(i, 2));
            ++i;
        } else if (c >= 0xDC80 && c <= 0xDCFF) {
            out.push_back(static_cast<char>(c - 0xDC00));
        } else if (c >= 0xD800 && c < 0xE000) {
            out += "\xEF\xBF\xBD";
        } else {
            out += ToUtf8(text.substr(i, 1));
        }
    }
    return out;
}

// A C library's handle that frees itself: `Free` runs once, on a handle
// that is not null, when its owner is reset or goes. Members go in the
// reverse order of their declaration, so a handle that writes through
// another is declared after it.
template <auto Free>
struct FreeWith {
    template <class T>
    void operator()(T* handle) const {
        Free(handle);
    }
};
template <class T, auto Free>
using Owned = std::unique_ptr<T, FreeWith<Free>>;

inline void CloseFile(FILE* file) { std::fclose(file); }
using OwnedFile = Owned<FILE, CloseFile>;

#ifdef _WIN32
inline FILE* OpenFile(const qv_char* name, const char* mode) {
    wchar_t wideMode[4] = {0, 0, 0, 0};
    for (int i = 0; i < 3 && mode[i] != 0; ++i) wideMode[i] = static_cast<wchar_t>(mode[i]);
    return _wfopen(reinterpret_cast<const wchar_t*>(name), wideMode);
}
inline FILE* OpenOutput(const qv_char* name, bool readBack) { return OpenFile(name, readBack ? "w+b" : "wb"); }
inline bool Seek(FILE* file, uint64_t offset) { return _fseeki64(file, static_cast<int64_t>(offset), SEEK_SET) == 0; }
inline int64_t Tell(FILE* file) { return _ftelli64(file); }
#else
inline FILE* OpenFile(const qv_char* name, const char* mode) {
    return std::fopen(FileName(std::u16string(name)).c_str(), mode);
}
// An encoder's output, created or emptied, for writing (and reading back
// with `readBack`). The worker has made the file already, empty, to hold
// its name: opening it with O_TRUNC all the same would have ext4 write it
// out at its close (its guard for files rewritten in place), a millisecond
// and more of the worker's time on every file. So only a file that holds
// something is cut.
inline FILE* OpenOutput(const qv_char* name, bool readBack) {
    int fd = ::open(FileName(std::u16string(name)).c_str(), (readBack ? O_RDWR : O_WRONLY) | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0) return nullptr;
    struct stat status {};
    FILE* file = nullptr;
    if (::fstat(fd, &status) == 0 && (status.st_size == 0 || ::ftruncate(fd, 0) == 0)) {
        file = ::fdopen(fd, readBack ? "w+b" : "wb");
    }
    if (file == nullptr) ::close(fd);
    return file;
}
inline bool Seek(FILE* file, uint64_t offset) { return fseeko(file, static_cast<off_t>(offset), SEEK_SET) == 0; }
inline int64_t Tell(FILE* file) { return ftello(file); }
#endif

// A text answer: kept by the instance until its next call.
class Answer {
public:
    const qv_char* Set(const std::u16string& value) {
        text = value;
        return text.c_str();
    }
    const qv_char* Set(const char* value) { return Set(FromAscii(value)); }
    const qv_char* Get() const { return text.c_str(); }

private:
    std::u16string text;
};

// The keys every plug-in answers alike: "LastError" (the text of the last
// failure, if any) and "AbiVersion". -1 for any other key.
inline int32_t AnswerShared(const qv_char* key, qv_query_record* record, const std::u16string& error,
                            Answer& errorAnswer, const char* optionHelp = nullptr) {
    if (KeyIs(key, "OptionHelp")) {
        if (optionHelp == nullptr) return 0;
        // One text per library, made on the first question.
        static const std::u16string help = FromAscii(optionHelp);
        record->text1 = help.c_str();
        return 1;
    }
    if (KeyIs(key, "LastError")) {
        if (error.empty()) return 0;
        record->text1 = errorAnswer.Set(error);
        return 1;
    }
    if (KeyIs(key, "AbiVersion")) {
        record->estimate = QV_ABI_VERSION;
        return 1;
    }
    return -1;
}

// The value of `-key="value"` (or -key=value) in an option string; empty
// when absent.
inline std::u16string Option(const std::u16string& options, const std::u16string& key) {
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

// The first refusal among the described options that `options` gives;
// empty when all are allowed. Options the table doesn't name are left to
// the library.
inline std::string CheckOptions(const OptionTable& table, const std::u16string& options) {
    for (size_t i = 0; i < table.count; ++i) {
        const OptionSpec& o = table.specs[i];
        std::u16string name;
        for (const char* c = o.name; *c != 0; ++c) name.push_back(static_cast<char16_t>(*c));
        std::string refusal = RefusalOf(o, ToUtf8(Option(options, name)));
        if (!refusal.empty()) return refusal;
    }
    return std::string();
}

// How an uncompressed encoder writes its samples: the stream's own kind
// and depth (whole bytes), or what `-bits="8|16|24|32|float"` asks for.
struct SampleLayout {
    bool isFloat = false;
    uint16_t bits = 16;        // significant bits written
    uint16_t bytes = 2;        // bytes per sample written
    uint16_t streamBits = 16;  // of integer audio coming in
};

inline const char* ChooseLayout(const qv_encoder_begin_record& record, SampleLayout& layout) {
    const qv_audio_format& format = *record.format;
    layout.streamBits = format.sampleType == QV_SAMPLES_INT32 ? format.validBits : 32;
    std::u16string wanted = Option(record.optionString != nullptr ? record.optionString : u"", u"bits");
    if (wanted.empty()) {
        layout.isFloat = format.sampleType == QV_SAMPLES_FLOAT32;
        layout.bits = layout.isFloat ? 32 : std::clamp<uint16_t>(format.validBits, 8, 32);
    } else if (wanted == u"float") {
        layout.isFloat = true;
        layout.bits = 32;
    } else {
        layout.isFloat = false;
        int value = std::atoi(ToUtf8(wanted).c_str());
        if (value != 8 && value != 16 && value != 24 && value != 32) return "-bits takes 8, 16, 24, 32 or float";
        layout.bits = static_cast<uint16_t>(value);
    }
    layout.bytes = static_cast<uint16_t>((layout.bits + 7) / 8);
    return nullptr;
}

// Packs a block's samples into `out`: float as 32-bit IEEE, integers in
// `layout.bytes` bytes, rounded to the nearest step when that is fewer bits
// than the stream has. `unsigned8`: 8-bit data is stored offset (WAVE).
inline void PackSamples(const void* samples, size_t count, const SampleLayout& layout, bool bigEndian, bool unsigned8,
                        std::string& out) {
    const int bytes = layout.isFloat ? 4 : layout.bytes;
    out.resize(count * static_cast<size_t>(bytes));
    char* p = out.data();
    const auto* in = static_cast<const uint32_t*>(samples);  // float bits or integers alike
    const int64_t half =
        !layout.isFloat && layout.streamBits > bytes * 8 && bytes < 4 ? int64_t{1} << (31 - bytes * 8) : 0;
    // The common cases in tight loops: little-endian float as it is, and
    // 16 or 24 bits that need no rounding.
    if (!bigEndian && layout.isFloat) {
        std::memcpy(p, in, count * 4);
        return;
    }
    if (!bigEndian && half == 0 && bytes == 2) {
        for (size_t i = 0; i < count; ++i, p += 2) {
            p[0] = static_cast<char>((in[i] >> 16) & 0xFF);
            p[1] = static_cast<char>(in[i] >> 24);
        }
        return;
    }
    if (!bigEndian && half == 0 && bytes == 3) {
        for (size_t i = 0; i < count; ++i, p += 3) {
            p[0] = static_cast<char>((in[i] >> 8) & 0xFF);
            p[1] = static_cast<char>((in[i] >> 16) & 0xFF);
            p[2] = static_cast<char>(in[i] >> 24);
        }
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        uint32_t u = in[i];
        if (!layout.isFloat) {
            int64_t rounded = std::min<int64_t>(int64_t{static_cast<int32_t>(u)} + half, INT32_MAX);
            u = static_cast<uint32_t>(static_cast<int32_t>(rounded));
            if (bytes == 1 && unsigned8) u ^= 0x80000000u;
        }
        for (int k = 0; k < bytes; ++k) {
            int shift = bigEndian ? 8 * (3 - k) : 8 * (4 - bytes + k);
            *p++ = static_cast<char>((u >> shift) & 0xFF);
        }
    }
}

// What every instance of a plug-in keeps for its failures: the reason,
// answered under "LastError", and the letting go of what it holds.
struct InstanceBase {
    std::u16string error;
    Answer errorAnswer;

    InstanceBase() = default;
    virtual ~InstanceBase() = default;
    InstanceBase(const InstanceBase&) = delete;
    InstanceBase& operator=(const InstanceBase&) = delete;

    // Lets go of the open file or the running state; an instance resets its
    // own handles here.
    virtual void Release() {}
    // Keeps the reason, lets go, and answers false.
    bool Fail(const char* why) {
        error = FromAscii(why);
        Release();
        return false;
    }
    // The same for a reason that quotes what a user gave (UTF-8).
    bool Fail(const std::string& why) {
        error = FromBytes(why);
        Release();
        return false;
    }
};

// What every encoder keeps for its answers.
struct EncoderBase : InstanceBase {
    Answer text1;
    Answer text2;
    Answer page;  // the option string a settings page was shown with
    // Flushes and closes an output file; false, with the reason kept, when
    // the last of it could not be written.
    bool CloseOutput(OwnedFile& out) {
        bool ok = std::fflush(out.get()) == 0;
        ok = std::fclose(out.release()) == 0 && ok;
        if (!ok) error = FromAscii("the output file can't be finished (is the disk full?)");
        return ok;
    }
};

// What the uncompressed encoders share: the open output, the layout, and
// the writing of audio blocks.
struct UncompressedWriter : EncoderBase {
    // Their one option; without it the stream's own format: integer audio
    // at its depth (rounded up to whole bytes), float as float.
    static constexpr OptionSpec kOptionList[] = {
        {"bits", OptionKind::Choice, "",
         "=Same as the source,8=8-bit integer,16=16-bit integer,24=24-bit integer,32=32-bit integer,float=32-bit float",
         "Sample format", "the sample format written; the source's own when not given"},
    };
    static constexpr OptionTable kOptions{kOptionList, 1, nullptr};

    OwnedFile file;
    SampleLayout layout;
    uint16_t channels = 0;
    uint32_t rate = 0;
    uint64_t dataBytes = 0;
    std::string buffer;

    void Release() override { file.reset(); }
    bool Write(const std::string& data) { return std::fwrite(data.data(), 1, data.size(), file.get()) == data.size(); }
    bool WriteBlock(const qv_audio_block& block, bool bigEndian, bool unsigned8) {
        PackSamples(block.samples, static_cast<size_t>(block.frames) * channels, layout, bigEndian, unsigned8, buffer);
        if (!Write(buffer)) return Fail("the output file can't be written (is the disk full?)");
        dataBytes += buffer.size();
        return true;
    }
    // Tells the worker what to hand over: the kind written, and for
    // integers the depth.
    void Accept(qv_audio_format& format) const {
        format.acceptedTypes = layout.isFloat ? QV_SAMPLES_FLOAT32 : QV_SAMPLES_INT32;
        if (!layout.isFloat) format.validBits = layout.bits;
    }
    // An uncompressed file: its audio and `headerBytes` around it.
    static uint64_t SizeOf(uint64_t lengthMs, const qv_stream_facts* facts, uint64_t headerBytes) {
        uint64_t perSecond = facts != nullptr ? facts->bytesPerSecond : 0;
        return lengthMs * perSecond / 1000 + headerBytes;
    }
    // True when the conversion was aborted and the file is closed as it is
    // (the worker deletes it).
    bool Aborted(const qv_encoder_end_record& record) {
        if (record.aborted == 0) return false;
        file.reset();
        return true;
    }
    // Flushes and closes; false (with the reason kept) on failure.
    bool Finish(bool ok) {
        return CloseOutput(file) && (ok || Fail("the output file can't be finished (is the disk full?)"));
    }
};

inline std::u16string LowerTag(const std::u16string& text) {
    std::u16string out = text;
    for (char16_t& c : out) {
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
    }
    return out;
}

// What every decoder keeps for its answers. Failing closes the source.
struct DecoderBase : InstanceBase {
    Answer text1;
    Answer text2;
    // What the user should know of a file that decoded all the same (a
    // damaged end), one line each; cleared by Open.
    std::vector<std::string> notes;
    std::string tagBlock;                 // of the last Open
    std::string propertyBlock;            // of the last Open
    std::vector<std::u16string> deleted;  // tag names left out, lower case

    // The exported Close; a decoder resets its own handles here.
    virtual void Close() {}
    void Release() final { Close(); }
};

struct Tag {
    std::u16string name;
    std::u16string value;
    std::string binary;
};

// What the decoders of lossy formats share: float audio of a known
// layout, facts from the stream's bitrate and length, and a properties
// block that says "Lossy". `channels` is 0 while no file is open.
struct LossyDecoderBase : DecoderBase {
    uint16_t formatTag = 0;
    int channels = 0;
    uint32_t rate = 0;
    int64_t frames = 0;
    int64_t position = 0;
    int64_t bitrate = 0;  // bits per second
    bool gapless = true;
    std::u16string encoder;
    std::u16string encoderSettings;
    std::vector<Tag> tags;

    // Hands out `got` frames of `block`; the last block of a known length
    // is marked.
    int32_t HandOut(std::vector<float>& block, int64_t got, qv_audio_block* out) {
        out->samples = block.data();
        out->frames = static_cast<uint32_t>(got);
        out->position = static_cast<uint64_t>(position);
        position += got;
        out->flags = frames > 0 && position >= frames ? QV_BLOCK_LAST : 0;
        return 1;
    }
    bool Format(qv_audio_format& format) const {
        if (channels == 0) return false;
        format.samplesPerSecond = rate;
        format.channels = static_cast<uint16_t>(channels);
        format.validBits = 32;
        format.sampleType = QV_SAMPLES_FLOAT32;
        return true;
    }
    void Facts(qv_stream_facts& facts) const {
        facts.formatTag = formatTag;
        facts.channels = static_cast<uint16_t>(channels);
        facts.samplesPerSecond = rate;
        facts.bitsPerSample = 16;
        facts.blockAlign = static_cast<uint16_t>(2 * channels);
        facts.bitrate = static_cast<uint32_t>(std::clamp<int64_t>(bitrate, 0, UINT32_MAX));
        facts.bytesPerSecond = facts.bitrate / 8;
        facts.lengthMs = rate > 0 ? static_cast<uint64_t>(frames) * 1000 / rate : 0;
    }
    std::vector<Tag> Tags() const { return tags; }
    std::vector<Tag> Properties() const {
        std::vector<Tag> properties = {{u"Audio Quality", u"Lossy", std::string()},
                                       {u"gapless", gapless ? u"Yes" : u"No", std::string()}};
        if (!encoder.empty()) properties.push_back({u"Encoder", encoder, std::string()});
        if (!encoderSettings.empty()) properties.push_back({u"Encoder Settings", encoderSettings, std::string()});
        return properties;
    }
};

// What every effect keeps, and the calls an effect has no use for: it
// defines its own to replace them.
struct EffectBase : InstanceBase {
    Answer page;            // the settings a settings page was shown with
    std::string finalTags;  // answered under "Tags" after the end
    bool hasFinalTags = false;

    // Hands every block on as it came.
    int32_t Pass(const qv_audio_block* in, qv_audio_block* out) {
        if (in == nullptr) return 0;
        *out = *in;
        return 1;
    }
    bool Analyse(const qv_audio_block&) { return true; }
    bool End() { return true; }
    bool After(const qv_after_record&) { return true; }
    bool BatchEnd(const qv_batch_end_record&) { return false; }
};

// Makes a link of the chain float: what the effect takes and gives.
inline void UseFloat(qv_audio_format& format) {
    format.acceptedTypes = QV_SAMPLES_FLOAT32;
    format.sampleType = QV_SAMPLES_FLOAT32;
    format.validBits = 32;
}

inline void PutBe32(std::string& out, uint32_t value) {
    for (int i = 3; i >= 0; --i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

// A picture as the binary of a "picture" tag: a FLAC picture block.
inline std::string PictureBlock(uint32_t type, const std::string& mime, const std::string& description, uint32_t width,
                                uint32_t height, uint32_t depth, uint32_t colors, const char* data, size_t size) {
    std::string out;
    PutBe32(out, type);
    PutBe32(out, static_cast<uint32_t>(mime.size()));
    out += mime;
    PutBe32(out, static_cast<uint32_t>(description.size()));
    out += description;
    PutBe32(out, width);
    PutBe32(out, height);
    PutBe32(out, depth);
    PutBe32(out, colors);
    PutBe32(out, static_cast<uint32_t>(size));
    out.append(data, size);
    return out;
}

// The fields of a picture block (as PictureBlock writes it); false when
// the block is damaged. `data` points into `block`.
struct Picture {
    uint32_t type = 0;
    std::string mime;
    std::string description;
    uint32_t width = 0, height = 0, depth = 0, colors = 0;
    const char* data = nullptr;
    size_t size = 0;
};

inline uint32_t Be32At(const std::string& bytes, size_t at) {
    if (at + 4 > bytes.size()) return 0;
    return (static_cast<uint32_t>(static_cast<unsigned char>(bytes[at])) << 24) |
           (static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + 1])) << 16) |
           (static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + 2])) << 8) |
           static_cast<unsigned char>(bytes[at + 3]);
}

inline bool ParsePicture(const std::string& block, Picture& picture) {
    size_t at = 0;
    picture.type = Be32At(block, at);
    uint32_t mimeLength = Be32At(block, at + 4);
    at += 8;
    if (at > block.size() || mimeLength > block.size() - at) return false;
    picture.mime = block.substr(at, mimeLength);
    at += mimeLength;
    uint32_t descriptionLength = Be32At(block, at);
    at += 4;
    if (at > block.size() || descriptionLength > block.size() - at) return false;
    picture.description = block.substr(at, descriptionLength);
    at += descriptionLength;
    if (at + 20 > block.size()) return false;
    picture.width = Be32At(block, at);
    picture.height = Be32At(block, at + 4);
    picture.depth = Be32At(block, at + 8);
    picture.colors = Be32At(block, at + 12);
    uint32_t length = Be32At(block, at + 16);
    at += 20;
    if (length > block.size() - at) return false;
    picture.data = block.data() + at;
    picture.size = length;
    return true;
}

inline void PutU32(std::string& out, uint32_t value) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

inline void PutText(std::string& out, const std::u16string& text) {
    for (char16_t c : text) {
        out.push_back(static_cast<char>(c & 0xFF));
        out.push_back(static_cast<char>(c >> 8));
    }
    out.push_back(0);
    out.push_back(0);
}

inline std::string WriteTagBlock(const std::vector<Tag>& tags) {
    std::string block;
    PutU32(block, static_cast<uint32_t>(tags.size()));
    for (const Tag& tag : tags) {
        std::string entry;
        PutText(entry, tag.name);
        PutText(entry, tag.value);
        entry += tag.binary;
        PutU32(block, static_cast<uint32_t>(entry.size() + 4));
        block += entry;
    }
    return block;
}

// Reads what it can and stops at the first entry that can't be read.
inline std::vector<Tag> ReadTagBlock(const void* data, size_t size) {
    std::vector<Tag> tags;
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (bytes == nullptr || size < 4) return tags;
    auto u32 = [bytes](size_t at) {
        return static_cast<uint32_t>(bytes[at] | (bytes[at + 1] << 8) | (bytes[at + 2] << 16) |
                                     (static_cast<uint32_t>(bytes[at + 3]) << 24));
    };
    uint32_t count = u32(0);
    size_t at = 4;
    for (uint32_t n = 0; n < count && at + 4 <= size; ++n) {
        uint32_t entry = u32(at);
        if (entry < 8 || entry > size - at) break;
        size_t end = at + entry;
        size_t p = at + 4;
        Tag tag;
        std::u16string* texts[2] = {&tag.name, &tag.value};
        bool ok = true;
        for (std::u16string* text : texts) {
            for (;;) {
                if (p + 2 > end) {
                    ok = false;
                    break;
                }
                auto unit = static_cast<char16_t>(bytes[p] | (bytes[p + 1] << 8));
                p += 2;
                if (unit == 0) break;
                text->push_back(unit);
            }
            if (!ok) break;
        }
        if (!ok) break;
        tag.binary.assign(reinterpret_cast<const char*>(bytes + p), end - p);
        tags.push_back(std::move(tag));
        at = end;
    }
    return tags;
}

}  // namespace qvc
