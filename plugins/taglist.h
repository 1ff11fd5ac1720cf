// clTagList: a track's metadata as an ordered list of name and value pairs.
//
// Rules: names compare ignoring ASCII case and are not unique; adding never
// replaces, and a lookup takes the first item of a name. That is the whole
// priority rule of the program: tags read from a file come first, computed
// facts are added behind them. Several values of one tag are one item, its
// value joined by CR (U+000D). Binary data (pictures) rides in `binary`.
//
// The tag block is the list's one flat form, the form that crosses the
// plug-in boundary: u32 count, then per entry u32 total size (these four
// bytes included), the name and the value as UTF-16LE with their NULs, and
// the rest of the entry as binary data. The reader never fails: it stops at
// the first entry that can't be read and keeps what came before.
#pragma once

#include <cstdint>

#include "foundation/bytebuffer.h"
#include "foundation/clstring.h"
#include "foundation/pointerarray.h"

class clTagItem {
public:
    clString name;
    clString value;
    clByteBuffer binary;  // empty for text tags
};

class clTagList {
public:
    clPointerArray items;  // of clTagItem, owned, in order of adding

    clTagList() = default;
    ~clTagList();
    clTagList(const clTagList&) = delete;
    clTagList& operator=(const clTagList&) = delete;

    int64_t Count() const { return items.count; }
    clTagItem& operator[](int64_t index) const { return *items.At<clTagItem>(index); }

    clTagItem& AddTag(const char16_t* name, const char16_t* value);
    // The first item of that name (ignoring case), or null.
    clTagItem* FindTag(const char16_t* name) const;
    // The value of FindTag; empty when absent (absent and empty are alike).
    clString GetTagValue(const char16_t* name) const;
    // Removes every item of that name; true if any went.
    bool RemoveTag(const char16_t* name);
    // Appends a deep copy of each item of `other` whose name is absent here.
    void MergeMissing(const clTagList& other);
    // Adds a copy of every item of `other`, duplicates included: as fast as
    // a copy gets, for callers that only look names up.
    void AddAll(const clTagList& other);
    void Clear();

    void LoadBlock(const void* block, uint64_t size);
    bool SaveBlock(clByteBuffer& block) const;

private:
    void AddCopy(const clTagItem& from);
};

// The text up to the first CR: the first of several values.
clString FirstValue(const clString& text);
// "5/15": the number (false) or the total (true), trimmed of blanks.
clString NumberPart(const clString& text, bool wantTotal);
