// Writing and reading WAVE files in the codec tests: little helpers over
// byte strings, so that every test states its file exactly.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

inline void Le(std::string& out, uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

inline void Be(std::string& out, uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

inline std::string Chunk(const char* id, const std::string& body) {
    std::string out(id, 4);
    Le(out, body.size(), 4);
    out += body;
    if (body.size() % 2 != 0) out.push_back('\0');
    return out;
}

inline std::string FormatBody(uint16_t tag, uint16_t channels, uint32_t rate, uint16_t bytes, uint16_t validBits,
                              bool extensible, uint32_t mask = 0) {
    std::string fmt;
    Le(fmt, extensible ? 0xFFFE : tag, 2);
    Le(fmt, channels, 2);
    Le(fmt, rate, 4);
    Le(fmt, rate * bytes * channels, 4);
    Le(fmt, bytes * channels, 2);
    Le(fmt, bytes * 8, 2);
    if (extensible) {
        Le(fmt, 22, 2);
        Le(fmt, validBits, 2);
        Le(fmt, mask, 4);
        Le(fmt, tag, 2);
        fmt += std::string("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);
    }
    return fmt;
}

inline std::string Riff(const std::string& fmt, const std::string& data, const std::string& extra = std::string()) {
    std::string body = "WAVE" + Chunk("fmt ", fmt) + extra + Chunk("data", data);
    std::string out = "RIFF";
    Le(out, body.size(), 4);
    return out + body;
}

inline std::string FindChunk(const std::string& file, const char* id) {
    for (size_t at = 12; at + 8 <= file.size();) {
        uint32_t size = static_cast<unsigned char>(file[at + 4]) | (static_cast<unsigned char>(file[at + 5]) << 8) |
                        (static_cast<unsigned char>(file[at + 6]) << 16) |
                        (static_cast<uint32_t>(static_cast<unsigned char>(file[at + 7])) << 24);
        if (file.compare(at, 4, id) == 0) return file.substr(at + 8, size);
        at += 8 + size + (size & 1);
    }
    return std::string();
}

// A stereo 16-bit tone of `seconds`, its pitch set by `n`.
inline std::string ToneWave(int n, double seconds) {
    const uint32_t rate = 44100;
    std::string data;
    auto frames = static_cast<size_t>(seconds * rate);
    for (size_t i = 0; i < frames; ++i) {
        double v =
            0.3 * (1 + n % 3) / 3 * std::sin(2 * 3.141592653589793 * (220.0 + 20 * n) * static_cast<double>(i) / rate);
        auto s = static_cast<int16_t>(v * 32767);
        Le(data, static_cast<uint16_t>(s), 2);
        Le(data, static_cast<uint16_t>(s), 2);
    }
    return Riff(FormatBody(1, 2, rate, 2, 16, false, 0), data);
}

// An ID3v2.4 tag with UTF-8 text frames.
inline std::string Id3Tag(const std::vector<std::pair<const char*, std::string>>& frames) {
    auto syncsafe = [](std::string& out, size_t value) {
        for (int shift = 21; shift >= 0; shift -= 7) out.push_back(static_cast<char>((value >> shift) & 0x7F));
    };
    std::string body;
    for (const auto& [id, text] : frames) {
        body += id;
        syncsafe(body, text.size() + 1);
        body += std::string("\0\0\x03", 3) + text;
    }
    std::string tag = "ID3";
    tag += std::string("\x04\0\0", 3);
    syncsafe(tag, body.size());
    return tag + body;
}
