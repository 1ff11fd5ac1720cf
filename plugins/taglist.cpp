#include "plugins/taglist.h"

#include <cstring>

namespace {

uint32_t ReadU32(const unsigned char* p) {
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) | (static_cast<uint32_t>(p[2]) << 16) |
           (static_cast<uint32_t>(p[3]) << 24);
}

void WriteU32(unsigned char* p, uint32_t v) {
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
    p[2] = static_cast<unsigned char>(v >> 16);
    p[3] = static_cast<unsigned char>(v >> 24);
}

// Reads UTF-16LE units from [from, end) up to a NUL; `next` goes behind the
// NUL. False (and `next` at the end) when there is no NUL in the range.
bool ReadText(const unsigned char* block, uint64_t from, uint64_t end, clString& text, uint64_t& next) {
    uint64_t units = (end - from) / 2;
    uint64_t n = 0;
    while (n < units && (block[from + 2 * n] | block[from + 2 * n + 1]) != 0) ++n;
    text.Clear();
    if (n > 0) {
        text.SetCapacity(static_cast<int32_t>(n + 1));
        for (uint64_t k = 0; k < n; ++k) {
            text.text[k] = static_cast<char16_t>(block[from + 2 * k] | (block[from + 2 * k + 1] << 8));
        }
        text.text[n] = 0;
        text.size = static_cast<int32_t>(n + 1);
    }
    bool terminated = n < units;
    next = terminated ? from + 2 * (n + 1) : end;
    return terminated;
}

void TrimBlanks(clString& text) {
    text.TrimLeft();
    int32_t end = text.Length();
    while (end > 0 && text.text[end - 1] == u' ') --end;
    if (end < text.Length()) text.Delete(end + 1, text.Length());
}

}  // namespace

clTagList::~clTagList() { Clear(); }

void clTagList::Clear() {
    for (int64_t i = 0; i < items.count; ++i) delete items.At<clTagItem>(i);
    items.Reset();
}

clTagItem& clTagList::AddTag(const char16_t* name, const char16_t* value) {
    auto* item = new clTagItem;
    item->name = name;
    item->value = value;
    items.Add(item);
    return *item;
}

clTagItem* clTagList::FindTag(const char16_t* name) const {
    for (int64_t i = 0; i < items.count; ++i) {
        clTagItem* item = items.At<clTagItem>(i);
        if (item->name.Compare(name, 0, true) == 0) return item;
    }
    return nullptr;
}

clString clTagList::GetTagValue(const char16_t* name) const {
    clTagItem* item = FindTag(name);
    return item != nullptr ? item->value : clString();
}

bool clTagList::RemoveTag(const char16_t* name) {
    bool removed = false;
    for (int64_t i = items.count - 1; i >= 0; --i) {
        clTagItem* item = items.At<clTagItem>(i);
        if (item->name.Compare(name, 0, true) != 0) continue;
        delete item;
        items.RemoveAt(i);
        removed = true;
    }
    return removed;
}

void clTagList::AddCopy(const clTagItem& from) {
    clTagItem& copy = AddTag(from.name.text, from.value.text);
    copy.name.tag = from.name.tag;
    copy.value.tag = from.value.tag;
    copy.binary.Assign(from.binary);
}

void clTagList::MergeMissing(const clTagList& other) {
    for (int64_t i = 0; i < other.Count(); ++i) {
        if (FindTag(other[i].name.text) == nullptr) AddCopy(other[i]);
    }
}

void clTagList::AddAll(const clTagList& other) {
    for (int64_t i = 0; i < other.Count(); ++i) AddCopy(other[i]);
}

void clTagList::LoadBlock(const void* block, uint64_t size) {
    Clear();
    const auto* bytes = static_cast<const unsigned char*>(block);
    if (bytes == nullptr || size < 5) return;
    auto count = static_cast<int32_t>(ReadU32(bytes));
    uint64_t position = 4;
    for (int32_t i = 0; i < count; ++i) {
        if (position + 4 > size) return;
        auto entrySize = static_cast<int32_t>(ReadU32(bytes + position));
        // A negative size ends the block; so does one too small to hold its
        // own size field, which would otherwise never move the reader on.
        if (entrySize < 4 || position + static_cast<uint64_t>(entrySize) > size) return;
        uint64_t end = position + static_cast<uint64_t>(entrySize);
        uint64_t textStart = position + 4;
        auto* item = new clTagItem;
        uint64_t afterName = 0;
        if (!ReadText(bytes, textStart, end, item->name, afterName)) {
            // No NUL in the entry: the name is empty and its bytes are the value.
            item->name.Clear();
            afterName = textStart;
        } else if (afterName + 2 > end) {
            items.Add(item);  // ends right after its name: kept, and reading stops
            return;
        }
        uint64_t afterValue = 0;
        ReadText(bytes, afterName, end, item->value, afterValue);
        if (afterValue < end) {
            if (!item->binary.Resize(end - afterValue, false, false, 0)) {
                delete item;
                return;
            }
            std::memcpy(item->binary.data, bytes + afterValue, end - afterValue);
            item->binary.writePos = item->binary.size;
        }
        items.Add(item);
        position = end;
    }
}

bool clTagList::SaveBlock(clByteBuffer& block) const {
    uint64_t total = 4;
    for (int64_t i = 0; i < Count(); ++i) {
        const clTagItem& item = (*this)[i];
        total +=
            4 + 2 * (static_cast<uint64_t>(item.name.size) + static_cast<uint64_t>(item.value.size)) + item.binary.size;
    }
    if (total > 0xFFFFFFFFu || !block.Resize(total, false, false, 0)) return false;
    block.size = total;
    unsigned char* p = block.data;
    WriteU32(p, static_cast<uint32_t>(Count()));
    p += 4;
    for (int64_t i = 0; i < Count(); ++i) {
        const clTagItem& item = (*this)[i];
        uint64_t entry =
            4 + 2 * (static_cast<uint64_t>(item.name.size) + static_cast<uint64_t>(item.value.size)) + item.binary.size;
        WriteU32(p, static_cast<uint32_t>(entry));
        p += 4;
        for (const clString* text : {&item.name, &item.value}) {
            for (int32_t k = 0; k < text->size; ++k) {
                *p++ = static_cast<unsigned char>(text->text[k] & 0xFF);
                *p++ = static_cast<unsigned char>(text->text[k] >> 8);
            }
        }
        if (item.binary.size > 0) {
            std::memcpy(p, item.binary.data, item.binary.size);
            p += item.binary.size;
        }
    }
    block.writePos = total;
    return true;
}

clString FirstValue(const clString& text) {
    int32_t cr = text.FindChar(u'\r');
    return cr == 0 ? text : text.Mid(1, cr - 1);
}

clString NumberPart(const clString& text, bool wantTotal) {
    int32_t slash = text.FindChar(u'/');
    clString part;
    if (!wantTotal) {
        part = slash == 0 ? text : text.Mid(1, slash - 1);
    } else if (slash != 0) {
        part = text.Mid(slash + 1, text.Length());
    }
    TrimBlanks(part);
    return part;
}
