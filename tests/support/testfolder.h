// A fresh folder below the temporary folder for one test, removed with
// everything in it when the object goes; plus small file helpers.
#pragma once

#include <string>

#include "foundation/clstring.h"

class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    // The folder with a trailing separator.
    const clString& Path() const { return path; }
    clString File(const char16_t* name) const;

private:
    clString path;
};

// Writes raw bytes to a file (replacing it); true on success.
bool WriteBytes(const clString& path, const std::string& bytes);
// The whole file as bytes; empty if it can't be read.
std::string ReadBytes(const clString& path);
// The text of UTF-16LE bytes (an odd last byte is dropped).
std::u16string FromUtf16Le(const std::string& bytes);
// The text of a worker's pipes as a test captured it (UTF-8 on POSIX,
// UTF-16LE on Windows).
std::u16string FromPipeText(const std::string& bytes);
// UTF-16LE bytes of a UTF-8 literal, without a byte-order mark.
std::string Utf16Le(const std::u16string& text);
// The full path of one of the program's executables (TrackConverter,
// ConvertWorker, qvt) in the build's bin folder beside the tests' own.
clString ProgramPath(const char16_t* name);
// A std::u16string of a clString, for readable assertions.
inline std::u16string U(const clString& s) { return std::u16string(s.text); }
