// clCanvas: the few drawing operations every painted control is made of,
// implemented with QPainter and with GDI. Coordinates are pixels of the
// surface; colours 0x00BBGGRR.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/geometry.h"
#include "toolkit/toolkitapi.h"

// A font as asked for: the back end finds the nearest it has.
struct clFontSpec {
    clString face;        // "Tahoma" unless a form asks for another
    int32_t height = 13;  // character height in pixels
    bool bold = false;
    bool italic = false;
    bool underline = false;
};

// A picture (an icon or a bitmap) owned by the back end. Images with an
// alpha channel are drawn blended.
using clImageHandle = struct clImageTag*;

class QV_TOOLKIT_API clCanvas {
public:
    virtual ~clCanvas();

    virtual void FillRect(const clRect& rect, uint32_t color) = 0;
    // Rounded when `radius` > 0; no fill or no pen with clNoColor.
    virtual void FramedRect(const clRect& rect, uint32_t fill, uint32_t pen, int32_t radius, int32_t penWidth) = 0;
    // From `from` to `to`, top to bottom, or left to right when `horizontal`.
    virtual void Gradient(const clRect& rect, uint32_t from, uint32_t to, bool horizontal) = 0;
    virtual void Line(int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint32_t color, int32_t width) = 0;
    virtual void Image(clImageHandle image, const clRect& rect) = 0;

    virtual void SetFont(const clFontSpec& font) = 0;
    // The text's top left at x, y; on `background` unless that is clNoColor.
    virtual void Text(int32_t x, int32_t y, const clString& text, uint32_t color, uint32_t background) = 0;
    virtual clSize MeasureText(const clString& text) = 0;
    // Where drawing may reach; an empty rectangle lifts the limit.
    virtual void SetClip(const clRect& rect) = 0;
};

// Pictures: loaded from a file (.ico, .png, .bmp), made from 32-bit
// premultiplied-free BGRA pixels, or drawn on.
QV_TOOLKIT_API clImageHandle LoadImageFile(const clString& path, int32_t width, int32_t height);
QV_TOOLKIT_API clImageHandle CreateImage(int32_t width, int32_t height);
QV_TOOLKIT_API clSize ImageSize(clImageHandle image);
QV_TOOLKIT_API void DestroyImage(clImageHandle image);
// A canvas on an image, for drawing off screen; delete it when done.
QV_TOOLKIT_API clCanvas* CanvasOnImage(clImageHandle image);
// The colour of one pixel, 0x00BBGGRR; for tests of what was drawn.
QV_TOOLKIT_API uint32_t ImagePixel(clImageHandle image, int32_t x, int32_t y);
// The small icon the desktop shows for files with this extension (dot
// included), and for a folder: the shell's on Windows, the icon theme's
// (or the style's plain file and folder) on Linux. Never null while
// the toolkit runs; the caller owns it.
QV_TOOLKIT_API clImageHandle FileTypeIcon(const clString& extension, int32_t size);
QV_TOOLKIT_API clImageHandle FolderIcon(const clString& path, int32_t size);
// The desktop's name for files with this extension ("FLAC audio", "Wave
// Sound"); empty when it knows none.
QV_TOOLKIT_API clString FileTypeDescription(const clString& extension);
// Writes the image as PNG; false when it can't.
QV_TOOLKIT_API bool SaveImagePng(clImageHandle image, const clString& path);
