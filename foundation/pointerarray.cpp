#include "foundation/pointerarray.h"

#include <cstring>

clPointerArray::clPointerArray() : items(inlineItems), count(0), capacity(16), growStep(32), inlineItems{} {}

clPointerArray::~clPointerArray() {
    if (items != inlineItems) delete[] items;
}

void clPointerArray::Grow() {
    int64_t newCapacity = capacity + growStep;
    auto** fresh = new void*[static_cast<size_t>(newCapacity)];
    std::memcpy(fresh, items, static_cast<size_t>(count) * sizeof(void*));
    if (items != inlineItems) delete[] items;
    items = fresh;
    capacity = newCapacity;
    growStep = growStep * 2 < 500000 ? growStep * 2 : 500000;
}

void clPointerArray::Add(void* item) {
    if (count == capacity) Grow();
    items[count++] = item;
}

void clPointerArray::InsertAt(int64_t index, void* item) {
    if (index < 0 || index > count) index = count;
    if (count == capacity) Grow();
    std::memmove(items + index + 1, items + index, static_cast<size_t>(count - index) * sizeof(void*));
    items[index] = item;
    ++count;
}

void clPointerArray::RemoveAt(int64_t index) {
    if (index < 0 || index >= count) return;
    std::memmove(items + index, items + index + 1, static_cast<size_t>(count - index - 1) * sizeof(void*));
    --count;
}

void clPointerArray::Reset() {
    if (items != inlineItems) delete[] items;
    items = inlineItems;
    count = 0;
    capacity = 16;
    growStep = 32;
}

void clPointerArray::Sort(const LessFunction& less, void* context, int64_t lower, int64_t upper) {
    if (lower == -1) lower = 0;
    if (upper == -1) upper = count - 1;
    if (count == 0 || upper <= lower || lower >= count || upper >= count || lower < 0) return;
    void* pivot = items[(lower + upper) / 2];
    int64_t i = lower;
    int64_t j = upper;
    for (;;) {
        while (less(items[i], pivot, context) && i < upper) ++i;
        while (less(pivot, items[j], context) && j > lower) --j;
        if (i > j) break;
        void* swap = items[i];
        items[i] = items[j];
        items[j] = swap;
        ++i;
        --j;
        if (i > j) break;
    }
    if (lower < j) Sort(less, context, lower, j);
    if (i < upper) Sort(less, context, i, upper);
}
