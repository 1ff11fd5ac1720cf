#include "foundation/clstring.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "foundation/platform/textcodec.h"
#include "foundation/utf.h"

namespace {

// The one shared empty text. Read-only: every write path tests for it.
const char16_t kSentinel = 0;

char16_t* SentinelText() { return const_cast<char16_t*>(&kSentinel); }

// Size arithmetic is done in 64 bits and saturates: a request past the
// 32-bit size limit fails in the allocator instead of wrapping around.
int32_t Saturate(int64_t value) {
    if (value > INT32_MAX) throw std::bad_alloc();
    return static_cast<int32_t>(value);
}

bool PointsInto(const char16_t* p, const clString& s) {
    return s.capacity > 0 && p >= s.text && p < s.text + s.capacity;
}

}  // namespace

int32_t clTextLength(const char16_t* text) {
    if (text == nullptr) return 0;
    const char16_t* p = text;
    while (*p != 0) ++p;
    return Saturate(p - text);
}

clString::clString() : text(SentinelText()), size(1), tag(0), narrow(nullptr), narrowSize(0), capacity(0) {}

clString::clString(const char16_t* source) : clString() { Assign(source); }

clString::clString(const char16_t* first, const char16_t* second) : clString() {
    Assign(first);
    if (second != nullptr) Append(second);
}

clString::clString(int32_t value) : clString() { FromInt64(value); }

clString::clString(int64_t value) : clString() { FromInt64(value); }

clString::clString(const clString& other) : clString() { Assign(other.text); }

clString::clString(clString&& other) noexcept
    : text(other.text), size(other.size), tag(other.tag), narrow(nullptr), narrowSize(0), capacity(other.capacity) {
    other.text = SentinelText();
    other.size = 1;
    other.capacity = 0;
    other.tag = 0;
}

clString::~clString() {
    if (!OnSentinel()) delete[] text;
    delete[] narrow;
    text = SentinelText();
    narrow = nullptr;
}

clString& clString::operator=(const clString& other) {
    if (this != &other) Assign(other.text);
    return *this;
}

clString& clString::operator=(const char16_t* source) {
    Assign(source);
    return *this;
}

clString& clString::operator=(clString&& other) noexcept {
    if (this == &other) return *this;
    if (!OnSentinel()) delete[] text;
    delete[] narrow;
    narrow = nullptr;
    narrowSize = 0;
    text = other.text;
    size = other.size;
    capacity = other.capacity;
    tag = other.tag;
    other.text = SentinelText();
    other.size = 1;
    other.capacity = 0;
    other.tag = 0;
    return *this;
}

// By capacity, not by address: a string made in another module (the
// toolkit library links its own copy of this code) points at that
// module's sentinel, and must still never be freed here.
bool clString::OnSentinel() const { return capacity == 0; }

void clString::TakeBuffer(int32_t characters) {
    if (characters < 1) characters = 1;
    auto* fresh = new char16_t[static_cast<size_t>(characters)];
    if (!OnSentinel()) delete[] text;
    text = fresh;
    capacity = characters;
}

void clString::Clear() {
    if (OnSentinel()) return;
    text[0] = 0;
    size = 1;
}

void clString::Assign(const char16_t* source, int32_t length) {
    if (length <= 0 || length == clStringLast)
        length = source == nullptr ? 1 : Saturate(int64_t{clTextLength(source)} + 1);
    if (source == nullptr || length == 1) {
        Clear();
        return;
    }
    if (capacity < length) {
        // A source inside our own buffer always fits it, so dropping the old
        // buffer here never loses the source.
        TakeBuffer(length);
    }
    std::memmove(text, source, static_cast<size_t>(length - 1) * sizeof(char16_t));
    text[length - 1] = 0;
    size = length;
}

void clString::AssignAnsi(const char* source) {
    if (source == nullptr) {
        Clear();
        return;
    }
    PlatformAnsiToWide(source, Saturate(static_cast<int64_t>(std::strlen(source))), *this);
}

void clString::SetCapacity(int32_t characters) {
    if (capacity < characters) TakeBuffer(characters);
    if (capacity < 1) TakeBuffer(1);
}

void clString::Reserve(int32_t needed, int32_t extra) {
    if (capacity >= needed) return;
    int32_t room = Saturate(int64_t{needed} + (extra > 0 ? extra : 0));
    if (room < 1) room = 1;
    auto* fresh = new char16_t[static_cast<size_t>(room)];
    std::memcpy(fresh, text, static_cast<size_t>(size) * sizeof(char16_t));
    if (!OnSentinel()) delete[] text;
    text = fresh;
    capacity = room;
}

void clString::SetLength(int32_t characters) {
    if (characters < 0) return;
    int32_t newSize = Saturate(int64_t{characters} + 1);
    Reserve(newSize, 0);
    if (OnSentinel()) return;  // only possible for length 0 on an empty string
    for (int32_t i = size - 1; i < characters; ++i) text[i] = u' ';
    text[characters] = 0;
    size = newSize;
}

void clString::Append(const char16_t* source) {
    if (source == nullptr) return;
    if (PointsInto(source, *this)) {
        clString copy(source);
        Append(copy.text);
        return;
    }
    int32_t length = clTextLength(source);
    if (length == 0) return;
    int32_t newSize = Saturate(int64_t{size} + length);
    Reserve(newSize, 25);
    std::memcpy(text + size - 1, source, static_cast<size_t>(length) * sizeof(char16_t));
    text[newSize - 1] = 0;
    size = newSize;
}

void clString::AppendGrowing(const char16_t* source) {
    if (source == nullptr || source[0] == 0) return;
    if (PointsInto(source, *this)) {
        clString copy(source);
        AppendGrowing(copy.text);
        return;
    }
    int32_t length = clTextLength(source);
    int32_t newSize = Saturate(int64_t{size} + length);
    Reserve(newSize, newSize / 3);
    std::memcpy(text + size - 1, source, static_cast<size_t>(length) * sizeof(char16_t));
    text[newSize - 1] = 0;
    size = newSize;
}

void clString::Insert(const char16_t* source, int32_t position) {
    if (source == nullptr || source[0] == 0) return;
    if (PointsInto(source, *this)) {
        clString copy(source);
        Insert(copy.text, position);
        return;
    }
    int32_t length = clTextLength(source);
    int32_t newSize = Saturate(int64_t{size} + length);
    Reserve(newSize, 32);
    if (position < 1 || position > size) return;
    std::memmove(text + position - 1 + length, text + position - 1,
                 static_cast<size_t>(size - position + 1) * sizeof(char16_t));
    std::memcpy(text + position - 1, source, static_cast<size_t>(length) * sizeof(char16_t));
    size = newSize;
}

void clString::InsertCharAt(char16_t character, int32_t position) {
    if (position == clStringLast) position = size;
    if (position < 1 || position > size) return;
    Reserve(Saturate(int64_t{size} + 1), 32);
    std::memmove(text + position, text + position - 1, static_cast<size_t>(size - position + 1) * sizeof(char16_t));
    text[position - 1] = character;
    ++size;
}

char16_t clString::CharAt(int32_t position) const {
    if (position == clStringLast) position = size - 1;
    if (position < 1 || position >= size) return 0;
    return text[position - 1];
}

char16_t clString::RemoveCharAt(int32_t position) {
    if (position == clStringLast) position = size - 1;
    if (position < 1 || position >= size) return 0;
    char16_t removed = text[position - 1];
    std::memmove(text + position - 1, text + position, static_cast<size_t>(size - position) * sizeof(char16_t));
    --size;
    return removed;
}

clString clString::Mid(int32_t from, int32_t to) const {
    clString result;
    if (from < 1 || from >= size) return result;
    if (to >= size) to = size - 1;
    if (to < from) return result;
    result.Assign(text + from - 1, to - from + 2);
    return result;
}

clString clString::Right(int32_t count) const {
    int64_t from = int64_t{size} - count;
    if (from < 1) from = 1;
    return Mid(static_cast<int32_t>(from), size - 1);
}

void clString::Delete(int32_t from, int32_t to) {
    if (from < 1 || from >= size) return;
    int64_t count = int64_t{to} - from + 1;
    if (count < 1) return;
    // `to` is trusted, not clamped: a `to` past the end takes the surplus
    // from what would have been kept. Callers pass the last character at most.
    int64_t newSize = int64_t{size} - count;
    if (newSize < 1) newSize = 1;
    if (to < size - 1) {
        std::memmove(text + from - 1, text + to, static_cast<size_t>(size - 1 - to) * sizeof(char16_t));
    }
    size = static_cast<int32_t>(newSize);
    text[size - 1] = 0;
}

void clString::TrimLeft() {
    int32_t n = 0;
    while (n < size - 1 && text[n] == u' ') ++n;
    if (n > 0) Delete(1, n);
}

void clString::Trim() {
    TrimLeft();
    int32_t length = size - 1;
    while (length > 0 && text[length - 1] == u' ') --length;
    if (length < size - 1) SetLength(length);
}

clString clString::Upper() const {
    clString result(text);
    for (int32_t i = 0; i < result.size - 1; ++i) result.text[i] = clAsciiUpper(result.text[i]);
    return result;
}

clString clString::Lower() const {
    clString result(text);
    for (int32_t i = 0; i < result.size - 1; ++i) result.text[i] = clAsciiLower(result.text[i]);
    return result;
}

int32_t clString::Find(const char16_t* needle, int32_t start, bool ignoreCase) const {
    if (start < 1 || start >= size) return 0;
    if (needle == nullptr || needle[0] == 0) return start;
    int32_t needleLength = clTextLength(needle);
    if (ignoreCase) {
        // As Upper on both sides would, without making the copies.
        char16_t first = clAsciiUpper(needle[0]);
        for (int32_t i = start - 1; i + needleLength <= size - 1; ++i) {
            if (clAsciiUpper(text[i]) != first) continue;
            int32_t k = 1;
            while (k < needleLength && clAsciiUpper(text[i + k]) == clAsciiUpper(needle[k])) ++k;
            if (k == needleLength) return i + 1;
        }
        return 0;
    }
    for (int32_t i = start - 1; i + needleLength <= size - 1; ++i) {
        if (text[i] == needle[0] &&
            std::memcmp(text + i, needle, static_cast<size_t>(needleLength) * sizeof(char16_t)) == 0) {
            return i + 1;
        }
    }
    return 0;
}

int32_t clString::FindChar(char16_t character, int32_t start) const {
    if (start < 1 || start >= size) return 0;
    for (int32_t i = start - 1; i < size - 1; ++i) {
        if (text[i] == character) return i + 1;
    }
    return 0;
}

int32_t clString::FindLastChar(char16_t character) const {
    for (int32_t i = size - 2; i >= 0; --i) {
        if (text[i] == character) return i + 1;
    }
    return 0;
}

void clString::Replace(const char16_t* oldText, const char16_t* newText, bool ignoreCase) {
    if (oldText == nullptr || oldText[0] == 0) return;
    if (Find(oldText, 1, ignoreCase) == 0) return;  // the common case, without copies
    // Copies: the arguments may point into this string.
    clString oldCopy(oldText);
    clString newCopy(newText);
    int32_t oldLength = oldCopy.Length();
    int32_t newLength = newCopy.Length();
    if (!ignoreCase) {
        int32_t position = Find(oldCopy.text, 1, false);
        while (position != 0) {
            Delete(position, position + oldLength - 1);
            Insert(newCopy.text, position);
            position = Find(oldCopy.text, position + newLength, false);
        }
        return;
    }
    // The upper-case shadow gets the same edits, with the new text in the
    // case given, so that positions in the two stay in step.
    clString shadow = Upper();
    clString upperOld = oldCopy.Upper();
    int32_t position = shadow.Find(upperOld.text, 1, false);
    while (position != 0) {
        shadow.Delete(position, position + oldLength - 1);
        shadow.Insert(newCopy.text, position);
        Delete(position, position + oldLength - 1);
        Insert(newCopy.text, position);
        position = shadow.Find(upperOld.text, position + newLength, false);
    }
}

int clString::Compare(const char16_t* other, int32_t limit, bool ignoreCase) const {
    if (other == nullptr) return 1;
    if (limit == -1) {
        // "Starts with": an empty other text is a prefix of everything.
        limit = clTextLength(other);
        if (limit == 0) return 0;
    }
    for (int32_t i = 0;; ++i) {
        if (limit > 0 && i == limit) return 0;
        char16_t a = text[i];
        char16_t b = other[i];
        if (ignoreCase) {
            a = clAsciiLower(a);
            b = clAsciiLower(b);
        }
        if (a != b) return a < b ? -1 : 1;
        if (a == 0) return 0;
    }
}

void clString::FromUInt64(uint64_t value) {
    char16_t digits[24];
    int n = 0;
    do {
        digits[n++] = static_cast<char16_t>(u'0' + value % 10);
        value /= 10;
    } while (value != 0);
    char16_t out[24];
    for (int i = 0; i < n; ++i) out[i] = digits[n - 1 - i];
    out[n] = 0;
    Assign(out);
}

void clString::FromInt64(int64_t value) {
    if (value >= 0) {
        FromUInt64(static_cast<uint64_t>(value));
        return;
    }
    FromUInt64(0 - static_cast<uint64_t>(value));
    Insert(u"-", 1);
}

void clString::FromHex(uint64_t value) {
    static const char16_t kDigits[] = u"0123456789ABCDEF";
    char16_t digits[20];
    int n = 0;
    do {
        digits[n++] = kDigits[value & 0xF];
        value >>= 4;
    } while (value != 0);
    char16_t out[20];
    for (int i = 0; i < n; ++i) out[i] = digits[n - 1 - i];
    out[n] = 0;
    Assign(out);
}

int64_t clString::ToInt64() const {
    clString copy(text);
    copy.TrimLeft();
    int32_t i = 0;
    bool negative = false;
    if (copy.text[0] == u'-') {
        negative = true;
        i = 1;
    } else if (copy.text[0] == u'+') {
        i = 1;
    }
    uint64_t value = 0;  // wraps at 64 bits, as documented
    for (; copy.text[i] >= u'0' && copy.text[i] <= u'9'; ++i) value = value * 10 + (copy.text[i] - u'0');
    return static_cast<int64_t>(negative ? 0 - value : value);
}

const char* clString::ToUtf8() {
    int32_t block = Saturate((int64_t{size} + 2) * 6);
    if (block != narrowSize) {
        delete[] narrow;
        narrow = new char[static_cast<size_t>(block)];
        narrowSize = block;
    }
    int64_t written = Utf16ToUtf8(text, size - 1, narrow);
    narrow[written] = 0;
    return narrow;
}
