// clString: the only text type of the program.
//
// Rules every caller relies on:
// - Characters are UTF-16 code units (char16_t). Tests and case folding work
//   per unit; there is no surrogate or locale handling. "Letter case" means
//   A-Z and a-z only.
// - Positions are 1-based; 0 means "not found". `size` counts the
//   terminator, so an empty string has size 1 and Length() 0.
// - Every empty string that was never written to shares one read-only
//   sentinel (`text` points at it, `capacity` is 0). Never write through
//   `text` unless `capacity` > 0; use SetCapacity first.
// - The buffer never shrinks while the string lives. Assign reuses it when
//   it fits and does not keep old contents when it has to grow.
// - Bad positions and null texts are absorbed (nothing happens, 0 or an
//   empty string comes back); nothing here reports an error. Exhausted
//   memory throws std::bad_alloc, which nothing in this layer catches.
// - Ownership is single: no sharing, no copy-on-write. An object belongs to
//   one thread at a time.
// - clStringLast (-12345) as a position means "the last character" (CharAt,
//   RemoveCharAt) or "the end" (InsertCharAt); as a length in Assign it
//   means "measure the source".
#pragma once

#include <cstdarg>
#include <cstdint>

constexpr int32_t clStringLast = -12345;

class clString {
public:
    char16_t* text;      // NUL-terminated characters, or the shared sentinel
    int32_t size;        // characters in use including the terminator, >= 1
    uint64_t tag;        // owner's number; moves with a move, not assigned
    char* narrow;        // UTF-8 form built by the last ToUtf8, owned
    int32_t narrowSize;  // bytes of `narrow`, 0 when there is none
    int32_t capacity;    // room in `text` including the terminator; 0 on the sentinel

    clString();
    clString(const char16_t* source);  // NOLINT: implicit by design, null gives empty
    clString(const char16_t* first, const char16_t* second);
    explicit clString(int32_t value);
    explicit clString(int64_t value);
    clString(const clString& other);  // copies the text only, not the tag
    clString(clString&& other) noexcept;
    ~clString();

    clString& operator=(const clString& other);
    clString& operator=(const char16_t* source);
    clString& operator=(clString&& other) noexcept;

    // Formatted text (printf-style; %s takes a char16_t pointer).
    static clString Formatted(const char16_t* format, ...);
    void Format(const char16_t* format, ...);
    void FormatArgs(const char16_t* format, va_list args);
    void FormatOwn(const char16_t* format, va_list args);

    // Assignment and growth.
    void Assign(const char16_t* source, int32_t length = 0);
    void Assign(const clString& source) { Assign(source.text); }
    void AssignAnsi(const char* source);
    void SetCapacity(int32_t characters);
    void Reserve(int32_t needed, int32_t extra);
    void SetLength(int32_t characters);
    void Clear();

    // Appending and inserting, each with its own growth margin.
    void Append(const char16_t* source);
    void Append(const clString& source) { Append(source.text); }
    void AppendGrowing(const char16_t* source);
    void AppendGrowing(const clString& source) { AppendGrowing(source.text); }
    void Insert(const char16_t* source, int32_t position);
    void Insert(const clString& source, int32_t position) { Insert(source.text, position); }
    void InsertCharAt(char16_t character, int32_t position);

    // Reading and cutting.
    int32_t Length() const { return size - 1; }
    bool IsEmpty() const { return size <= 1; }
    char16_t CharAt(int32_t position) const;
    char16_t RemoveCharAt(int32_t position);
    clString Mid(int32_t from, int32_t to) const;
    clString Right(int32_t count) const;
    void Delete(int32_t from, int32_t to);
    void TrimLeft();
    // Blanks off both ends.
    void Trim();
    clString Upper() const;
    clString Lower() const;

    // Searching and comparing.
    int32_t Find(const char16_t* needle, int32_t start = 1, bool ignoreCase = false) const;
    int32_t Find(const clString& needle, int32_t start = 1, bool ignoreCase = false) const {
        return Find(needle.text, start, ignoreCase);
    }
    int32_t FindChar(char16_t character, int32_t start = 1) const;
    int32_t FindLastChar(char16_t character) const;
    void Replace(const char16_t* oldText, const char16_t* newText, bool ignoreCase = false);
    int Compare(const char16_t* other, int32_t limit = 0, bool ignoreCase = false) const;
    int Compare(const clString& other, int32_t limit = 0, bool ignoreCase = false) const {
        return Compare(other.text, limit, ignoreCase);
    }
    bool Equals(const char16_t* other) const { return Compare(other) == 0; }
    bool Equals(const clString& other) const { return Compare(other.text) == 0; }
    bool EqualsNoCase(const char16_t* other) const { return Compare(other, 0, true) == 0; }
    bool EqualsNoCase(const clString& other) const { return Compare(other.text, 0, true) == 0; }

    // Number and encoding conversions.
    void FromInt64(int64_t value);
    void FromUInt64(uint64_t value);
    void FromHex(uint64_t value);
    int64_t ToInt64() const;
    const char* ToUtf8();

    bool OnSentinel() const;

private:
    void TakeBuffer(int32_t characters);
};

// Length of a NUL-terminated wide text; 0 for null.
int32_t clTextLength(const char16_t* text);

// Folds A-Z to a-z, leaves every other unit alone.
inline char16_t clAsciiLower(char16_t c) { return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c; }
inline char16_t clAsciiUpper(char16_t c) { return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c; }
