// clByteBuffer: a growable block of bytes from the plain heap (malloc/free).
//
// Unlike clString it survives exhausted memory: when a block can't be had,
// `size` and `capacity` become 0 and Resize returns false. The cursors
// `writePos` and `readPos` never exceed `size`. Not copyable; use Assign or
// MoveFrom.
#pragma once

#include <cstdint>

class clByteBuffer {
public:
    unsigned char* data;
    uint64_t size;
    uint64_t capacity;
    uint64_t writePos;
    uint64_t readPos;

    clByteBuffer();
    ~clByteBuffer();
    clByteBuffer(const clByteBuffer&) = delete;
    clByteBuffer& operator=(const clByteBuffer&) = delete;

    // When the block must grow, its new size (and `size`) is newSize +
    // extra; otherwise `size` becomes newSize. Cursors are then clamped.
    bool Resize(uint64_t newSize, bool keepContents, bool zeroFill, uint64_t extra);
    bool Assign(const clByteBuffer& other);
    void MoveFrom(clByteBuffer& other);
    void Free();
};
