// clStringList: a list of heap-allocated clString objects that it owns.
//
// Rules: indices are 0-based. Every item is a separate heap clString owned
// by the list; RemoveAt and Clear delete them. Items keep their `tag`
// through Add and AddAll. Like clPointerArray, a list is neither copied nor
// moved (use AddAll).
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"

class clByteBuffer;

class clStringList {
public:
    clPointerArray array;

    clStringList() = default;
    ~clStringList();
    clStringList(const clStringList&) = delete;
    clStringList& operator=(const clStringList&) = delete;

    int64_t Count() const { return array.count; }
    clString& operator[](int64_t index) const { return *array.At<clString>(index); }

    void Add(const char16_t* text, uint64_t tag = 0);
    void Add(const clString& text) { Add(text.text, text.tag); }
    void AddMove(clString&& text);
    void AddAll(const clStringList& other);
    void InsertAt(int64_t index, const char16_t* text);
    void RemoveAt(int64_t index);
    void Clear();
    // True when found; the 0-based index of the first match goes to `index`.
    bool Find(const char16_t* text, bool ignoreCase, int64_t* index = nullptr) const;
    // Ascending by code unit order (Compare), optionally ignoring case.
    void Sort(bool ignoreCase);

    // Lines end at CR; LF right behind a CR is skipped, LF alone is text.
    void SplitLines(const clString& text);
    // Pieces between occurrences of `delimiter` (case significant).
    void Split(const char16_t* text, const char16_t* delimiter);

    // Double-NUL block; an empty item is written as "[Empty]".
    bool PackMultiString(clByteBuffer& out) const;
    void UnpackMultiString(const void* block, uint64_t byteLength);
};
