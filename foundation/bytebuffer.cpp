#include "foundation/bytebuffer.h"

#include <cstdlib>
#include <cstring>

clByteBuffer::clByteBuffer() : data(nullptr), size(0), capacity(0), writePos(0), readPos(0) {}

clByteBuffer::~clByteBuffer() { Free(); }

void clByteBuffer::Free() {
    std::free(data);
    data = nullptr;
    size = capacity = writePos = readPos = 0;
}

bool clByteBuffer::Resize(uint64_t newSize, bool keepContents, bool zeroFill, uint64_t extra) {
    if (newSize > capacity) {
        uint64_t block = newSize + extra;
        if (block < newSize) block = UINT64_MAX;  // saturate; the allocation then fails
        void* fresh = keepContents ? std::realloc(data, block) : std::malloc(block);
        if (fresh == nullptr) {
            // A failed realloc leaves the old block; the buffer ends empty
            // either way, so it is released here.
            std::free(data);
            data = nullptr;
            size = capacity = writePos = readPos = 0;
            return false;
        }
        if (!keepContents) std::free(data);
        auto* bytes = static_cast<unsigned char*>(fresh);
        if (zeroFill) {
            uint64_t from = keepContents ? size : 0;
            if (from < block) std::memset(bytes + from, 0, block - from);
        }
        data = bytes;
        capacity = block;
        size = block;
    } else {
        if (zeroFill) {
            uint64_t from = keepContents ? (size < newSize ? size : newSize) : 0;
            if (data != nullptr && from < newSize) std::memset(data + from, 0, newSize - from);
        }
        size = newSize;
    }
    if (writePos > size) writePos = size;
    if (readPos > size) readPos = size;
    return true;
}

bool clByteBuffer::Assign(const clByteBuffer& other) {
    if (this == &other) return true;
    if (!Resize(other.size, false, false, 0)) return false;
    if (other.size > 0) std::memcpy(data, other.data, other.size);
    writePos = size;
    return true;
}

void clByteBuffer::MoveFrom(clByteBuffer& other) {
    if (this == &other) return;
    std::free(data);
    data = other.data;
    size = other.size;
    capacity = other.capacity;
    writePos = other.size;
    readPos = 0;
    other.data = nullptr;
    other.size = other.capacity = other.writePos = other.readPos = 0;
}
