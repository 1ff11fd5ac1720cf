// The canvas and pictures of the Win32 back end: GDI on a device context,
// and 32-bit DIB sections.
#pragma once

#include <windows.h>

#include "toolkit/canvas.h"

struct clWinImage {
    HBITMAP bitmap = nullptr;
    uint32_t* bits = nullptr;  // top-down BGRA rows
    int32_t width = 0;
    int32_t height = 0;
};

inline clWinImage* WinImageOf(clImageHandle image) { return reinterpret_cast<clWinImage*>(image); }

class clGdiCanvas : public clCanvas {
public:
    explicit clGdiCanvas(HDC target) : dc(target) {}
    ~clGdiCanvas() override;

    void FillRect(const clRect& rect, uint32_t color) override;
    void FramedRect(const clRect& rect, uint32_t fill, uint32_t pen, int32_t radius, int32_t penWidth) override;
    void Gradient(const clRect& rect, uint32_t from, uint32_t to, bool horizontal) override;
    void Line(int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint32_t color, int32_t width) override;
    void Image(clImageHandle image, const clRect& rect) override;
    void SetFont(const clFontSpec& font) override;
    void Text(int32_t x, int32_t y, const clString& text, uint32_t color, uint32_t background) override;
    clSize MeasureText(const clString& text) override;
    void SetClip(const clRect& rect) override;

    HDC dc;

private:
    HFONT font = nullptr;
    HGDIOBJ savedFont = nullptr;
};

// The font of a spec, made once and kept for the process.
HFONT FontFor(const clFontSpec& spec);
