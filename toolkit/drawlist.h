// clDrawList: a retained list of drawing elements that paints a control.
// Every control's look comes from one: the buttons' state pictures, the
// value list's rows, the conversion window's bars and title strip.
//
// Elements lie in eight lists by kind but are painted in one common order:
// the order a caller gives, or 0 for the next free one. Each Add answers
// the element's order plus 1, so that related elements can be given
// neighbouring places and found again (Element) to be changed later.
//
// Coordinates and sizes are packed 32-bit values: the pixels in the low 16
// bits, flags above them (the kPack* constants). A coordinate may count
// from the middle or the far edge of the canvas and may subtract the
// element's own size, so a list laid out once stays right when its window
// is resized. A size counts from the canvas's extent the same way; a size
// of 0 for a text or an image is its own natural size.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "toolkit/canvas.h"
#include "toolkit/toolkitapi.h"

constexpr uint32_t kPackFromMiddle = 0x10000;
constexpr uint32_t kPackFromFarEdge = 0x20000;
constexpr uint32_t kPackEndsHere = 0x40000;
constexpr uint32_t kPackCentredHere = 0x80000;
// The pixel part is negative: the value is kPackNegative plus the pixels
// taken away. So "2 pixels short of the far edge" is
// kPackFromFarEdge | kPackNegative | 2.
constexpr uint32_t kPackNegative = 0x100000;
constexpr uint32_t kPackFlags = 0x1F0000;

// Packs a signed pixel value with flags.
constexpr uint32_t clPack(int32_t pixels, uint32_t flags = 0) {
    return pixels < 0 ? (flags | kPackNegative | (static_cast<uint32_t>(-pixels) & 0xFFFF))
                      : (flags | (static_cast<uint32_t>(pixels) & 0xFFFF));
}
// The signed pixel part of a packed value.
constexpr int32_t clPackedPixels(uint32_t packed) {
    int32_t pixels = static_cast<int32_t>(packed & 0xFFFF);
    return (packed & kPackNegative) != 0 ? -pixels : pixels;
}
// A coordinate on a canvas of `extent` pixels, for an element `ownSize` long.
QV_TOOLKIT_API int32_t ResolveCoordinate(uint32_t packed, int32_t extent, int32_t ownSize);
// A size on a canvas of `extent` pixels; `natural` stands for a size of 0.
QV_TOOLKIT_API int32_t ResolveSize(uint32_t packed, int32_t extent, int32_t natural);

enum clDrawKind : int32_t {
    kDrawFill = 0,
    kDrawFramedRect = 1,
    kDrawFrame = 2,
    kDrawGradient = 3,
    kDrawLine = 4,
    kDrawImage = 5,
    kDrawIcon = 6,
    kDrawText = 7,
};
constexpr int32_t kDrawKinds = 8;

// Text style flags and alignment.
constexpr uint32_t kTextBold = 0x1;
constexpr uint32_t kTextItalic = 0x2;
constexpr uint32_t kTextUnderline = 0x4;
constexpr uint32_t kTextEllipsis = 0x8;  // cut to its width, ending in "..."
constexpr uint32_t kTextMultiLine = 0x10;
constexpr uint32_t kAlignLeft = 0;
constexpr uint32_t kAlignCenter = 1;
constexpr uint32_t kAlignRight = 2;
constexpr uint32_t kAlignVCenter = 4;  // centred in the element's height

struct clDrawElement {
    int32_t kind = kDrawFill;
    uint32_t x = 0, y = 0, width = 0, height = 0;  // packed
    uint32_t order = 0;
    bool visible = true;
    uint32_t colors[4] = {0, 0, 0, 0};  // fill/pen/gradient colours, text colour
    int32_t value = 0;                  // radius, line or pen width, gradient split (percent)
    int32_t lineX1 = 0, lineY1 = 0, lineX2 = 0, lineY2 = 0;  // a line's ends, from the element's corner
    clImageHandle image = nullptr;                           // not owned
    clString text;
    clString face;
    int32_t fontSize = 13;
    uint32_t style = 0;
    uint32_t alignment = 0;
    bool horizontal = false;  // a gradient's direction
};

class QV_TOOLKIT_API clDrawList {
public:
    clPointerArray lists[kDrawKinds];  // of clDrawElement, owned
    bool dirty = true;
    int32_t width = 0;   // the canvas; 0 takes the extent of the elements
    int32_t height = 0;
    uint32_t nextOrder = 0;

    clDrawList() = default;
    ~clDrawList();
    clDrawList(const clDrawList&) = delete;
    clDrawList& operator=(const clDrawList&) = delete;

    uint32_t AddFill(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t color, uint32_t order = 0);
    uint32_t AddFramedRect(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t fill, uint32_t pen, int32_t radius,
                           int32_t penWidth = 1, uint32_t order = 0);
    uint32_t AddFrame(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t color, int32_t penWidth = 1,
                      uint32_t order = 0);
    // Two bands: the upper `splitPercent` of the height from c1 to c2, the
    // rest from c3 to c4 (left and right parts when horizontal).
    uint32_t AddGradient(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t c1, uint32_t c2, uint32_t c3,
                         uint32_t c4, int32_t splitPercent = 50, bool horizontal = false, uint32_t order = 0);
    uint32_t AddLine(uint32_t x, uint32_t y, int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint32_t color,
                     int32_t penWidth = 1, uint32_t order = 0);
    uint32_t AddImage(uint32_t x, uint32_t y, uint32_t w, uint32_t h, clImageHandle image, uint32_t order = 0);
    uint32_t AddIcon(uint32_t x, uint32_t y, clImageHandle icon, int32_t iconWidth, int32_t iconHeight,
                     uint32_t order = 0);
    uint32_t AddText(uint32_t x, uint32_t y, uint32_t w, uint32_t h, const clString& text, const clString& face,
                     int32_t fontSize, uint32_t color, uint32_t style = 0, uint32_t alignment = 0, uint32_t order = 0);

    // The element of an order (as Add answered it, less 1), or null.
    clDrawElement* Element(uint32_t order) const;
    void Clear();
    void SetCanvas(int32_t canvasWidth, int32_t canvasHeight);
    // Paints every visible element in order, the canvas's corner at x, y.
    void Paint(clCanvas& canvas, int32_t x, int32_t y);
    // Where an element lands on the canvas (text sizes measured on `canvas`).
    clRect Place(const clDrawElement& element, clCanvas& canvas) const;

private:
    clPointerArray byOrder;  // element of each order, or null; not owned
    uint32_t Insert(clDrawElement* element, uint32_t order);
    void ComputeExtent(clCanvas& canvas);
};

// `text` cut so that it fits `width` pixels on `canvas`, ending in "...".
QV_TOOLKIT_API clString FitText(clCanvas& canvas, const clString& text, int32_t width);
