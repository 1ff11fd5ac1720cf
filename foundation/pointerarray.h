// clPointerArray: an array of pointers with room for 16 of them inside the
// object, so the many small lists of the program stay off the heap.
//
// Rules: indices are 0-based (unlike string positions). The array does not
// own what its pointers point to; RemoveAt and Reset never release them.
// Capacity grows 16, 48, 112, 240, ...: each growth adds `growStep`, which
// then doubles until it reaches 500000. Because the first 16 slots live
// inside the object, an array is neither copied nor moved.
#pragma once

#include <cstdint>
#include <functional>

class clPointerArray {
public:
    using LessFunction = std::function<bool(void* a, void* b, void* context)>;

    void** items;
    int64_t count;
    int64_t capacity;
    int64_t growStep;
    void* inlineItems[16];

    clPointerArray();
    ~clPointerArray();
    clPointerArray(const clPointerArray&) = delete;
    clPointerArray& operator=(const clPointerArray&) = delete;

    void Add(void* item);
    // An index past the end, or -1, means the end.
    void InsertAt(int64_t index, void* item);
    // An index out of range does nothing; the pointer is not released.
    void RemoveAt(int64_t index);
    // Back to the inline state: count 0, capacity 16, step 32.
    void Reset();
    // Unstable quicksort between two indices (-1 for `lower` is 0, -1 for
    // `upper` is count - 1).
    void Sort(const LessFunction& less, void* context, int64_t lower = -1, int64_t upper = -1);

    void* operator[](int64_t index) const { return items[index]; }
    template <class T>
    T* At(int64_t index) const {
        return static_cast<T*>(items[index]);
    }

private:
    void Grow();
};

// A list that owns its items: each added item is deleted with the list or
// by Clear. For the many small record lists built once and read in order.
template <class T>
class clOwningList {
public:
    clPointerArray entries;  // of T, owned, in order

    clOwningList() = default;
    ~clOwningList() { Clear(); }
    clOwningList(const clOwningList&) = delete;
    clOwningList& operator=(const clOwningList&) = delete;

    int64_t Count() const { return entries.count; }
    T& operator[](int64_t index) const { return *entries.At<T>(index); }
    // Takes ownership of `item`.
    void Add(T* item) { entries.Add(item); }
    void RemoveAt(int64_t index) {
        if (index < 0 || index >= entries.count) return;
        delete entries.At<T>(index);
        entries.RemoveAt(index);
    }
    void Clear() {
        for (int64_t i = 0; i < entries.count; ++i) delete entries.At<T>(i);
        entries.Reset();
    }
};
