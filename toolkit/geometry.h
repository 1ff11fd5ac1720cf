// Rectangles, points and colours as the toolkit passes them. Colours are
// 0x00BBGGRR, the platform's byte order, as every colour of the forms is
// written.
#pragma once

#include <cstdint>

struct clPoint {
    int32_t x = 0;
    int32_t y = 0;
};

struct clSize {
    int32_t width = 0;
    int32_t height = 0;
};

// Edges: left and top inside, right and bottom just outside.
struct clRect {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    int32_t Width() const { return right - left; }
    int32_t Height() const { return bottom - top; }
    bool Contains(int32_t x, int32_t y) const { return x >= left && x < right && y >= top && y < bottom; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
    static clRect Sized(int32_t x, int32_t y, int32_t width, int32_t height) {
        return clRect{x, y, x + width, y + height};
    }
};

constexpr uint32_t clRgb(uint32_t red, uint32_t green, uint32_t blue) {
    return (red & 0xFF) | ((green & 0xFF) << 8) | ((blue & 0xFF) << 16);
}
constexpr uint32_t clRed(uint32_t color) { return color & 0xFF; }
constexpr uint32_t clGreen(uint32_t color) { return (color >> 8) & 0xFF; }
constexpr uint32_t clBlue(uint32_t color) { return (color >> 16) & 0xFF; }
// "No colour": a hollow brush, nothing is filled.
constexpr uint32_t clNoColor = 0xEEFFFFFF;
