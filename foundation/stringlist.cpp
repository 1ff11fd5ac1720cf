#include "foundation/stringlist.h"

#include <cstring>

#include "foundation/bytebuffer.h"

namespace {
const char16_t kEmptyItem[] = u"[Empty]";
}

clStringList::~clStringList() { Clear(); }

void clStringList::Add(const char16_t* text, uint64_t tag) {
    auto* item = new clString(text);
    item->tag = tag;
    array.Add(item);
}

void clStringList::AddMove(clString&& text) { array.Add(new clString(static_cast<clString&&>(text))); }

void clStringList::AddAll(const clStringList& other) {
    for (int64_t i = 0; i < other.Count(); ++i) Add(other[i].text, other[i].tag);
}

void clStringList::InsertAt(int64_t index, const char16_t* text) { array.InsertAt(index, new clString(text)); }

void clStringList::RemoveAt(int64_t index) {
    if (index < 0 || index >= array.count) return;
    delete array.At<clString>(index);
    array.RemoveAt(index);
}

void clStringList::Clear() {
    for (int64_t i = 0; i < array.count; ++i) delete array.At<clString>(i);
    array.Reset();
}

bool clStringList::Find(const char16_t* text, bool ignoreCase, int64_t* index) const {
    for (int64_t i = 0; i < array.count; ++i) {
        if ((*this)[i].Compare(text, 0, ignoreCase) == 0) {
            if (index != nullptr) *index = i;
            return true;
        }
    }
    return false;
}

void clStringList::Sort(bool ignoreCase) {
    bool flag = ignoreCase;
    array.Sort(
        [](void* a, void* b, void* context) {
            bool noCase = *static_cast<bool*>(context);
            return static_cast<clString*>(a)->Compare(*static_cast<clString*>(b), 0, noCase) == -1;
        },
        &flag);
}

void clStringList::SplitLines(const clString& text) {
    Clear();
    clString copy(text);
    int32_t length = copy.Length();
    int32_t start = 0;
    int32_t i = 0;
    while (i < length) {
        if (copy.text[i] == 13) {
            Add(copy.Mid(start + 1, i).text);
            ++i;
            while (i < length && copy.text[i] == 10) ++i;
            start = i;
        } else {
            ++i;
        }
    }
    if (start < length) Add(copy.Mid(start + 1, length).text);
}

void clStringList::Split(const char16_t* text, const char16_t* delimiter) {
    Clear();
    if (text == nullptr || delimiter == nullptr || text[0] == 0 || delimiter[0] == 0) return;
    clString whole(text);
    int32_t delimiterLength = clTextLength(delimiter);
    int32_t position = 1;
    for (;;) {
        int32_t hit = whole.Find(delimiter, position, false);
        if (hit == 0) {
            Add(whole.Mid(position, whole.Length()).text);
            return;
        }
        Add(whole.Mid(position, hit - 1).text);
        position = hit + delimiterLength;
        if (position >= whole.size) {
            Add(u"");  // a text ending in the delimiter has an empty last piece
            return;
        }
    }
}

bool clStringList::PackMultiString(clByteBuffer& out) const {
    uint64_t units = 1;
    for (int64_t i = 0; i < Count(); ++i) {
        const clString& item = (*this)[i];
        units += static_cast<uint64_t>(item.IsEmpty() ? 7 : item.Length()) + 1;
    }
    if (units < 2) units = 2;
    if (!out.Resize(units * sizeof(char16_t), false, true, 0)) return false;
    auto* p = reinterpret_cast<char16_t*>(out.data);
    for (int64_t i = 0; i < Count(); ++i) {
        const clString& item = (*this)[i];
        const char16_t* t = item.IsEmpty() ? kEmptyItem : item.text;
        int32_t n = clTextLength(t);
        std::memcpy(p, t, static_cast<size_t>(n) * sizeof(char16_t));
        p += n + 1;  // the terminator is already zero
    }
    out.writePos = out.size;
    return true;
}

void clStringList::UnpackMultiString(const void* block, uint64_t byteLength) {
    Clear();
    if (block == nullptr) return;
    const auto* bytes = static_cast<const unsigned char*>(block);
    uint64_t units = byteLength / 2;
    uint64_t i = 0;
    clString item;
    while (i < units) {
        uint64_t start = i;
        while (i < units && (bytes[2 * i] | (bytes[2 * i + 1] << 8)) != 0) ++i;
        if (i == start) return;  // an empty text ends the block
        item.Clear();
        item.SetCapacity(static_cast<int32_t>(i - start + 1));
        for (uint64_t k = start; k < i; ++k) {
            item.text[k - start] = static_cast<char16_t>(bytes[2 * k] | (bytes[2 * k + 1] << 8));
        }
        item.text[i - start] = 0;
        item.size = static_cast<int32_t>(i - start + 1);
        Add(item.Equals(kEmptyItem) ? u"" : item.text);
        ++i;
    }
}
