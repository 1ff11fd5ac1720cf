#include "toolkit/drawlist.h"

#include <algorithm>

#include "foundation/stringlist.h"

int32_t ResolveCoordinate(uint32_t packed, int32_t extent, int32_t ownSize) {
    int32_t value = clPackedPixels(packed);
    if ((packed & kPackFromMiddle) != 0) value += extent / 2;
    if ((packed & kPackFromFarEdge) != 0) value += extent;
    if ((packed & kPackEndsHere) != 0) value -= ownSize;
    if ((packed & kPackCentredHere) != 0) value -= ownSize / 2;
    return value;
}

int32_t ResolveSize(uint32_t packed, int32_t extent, int32_t natural) {
    if (packed == 0) return natural;
    int32_t value = clPackedPixels(packed);
    if ((packed & kPackFromMiddle) != 0) value += extent / 2;
    if ((packed & kPackFromFarEdge) != 0) value += extent;
    return std::max(0, value);
}

clDrawList::~clDrawList() { Clear(); }

void clDrawList::Clear() {
    for (auto& list : lists) {
        for (int64_t i = 0; i < list.count; ++i) delete list.At<clDrawElement>(i);
        list.Reset();
    }
    byOrder.Reset();
    nextOrder = 0;
    dirty = true;
}

// An order already taken pushes the elements from it on one place later,
// so the new one paints right before what held its place; an order left
// free by a higher one given earlier is simply taken.
uint32_t clDrawList::Insert(clDrawElement* element, uint32_t order) {
    if (order == 0 || order >= nextOrder) {
        if (order > nextOrder) {
            while (byOrder.count < order) byOrder.Add(nullptr);
            nextOrder = order;
        }
        element->order = nextOrder;
        byOrder.Add(element);
        ++nextOrder;
    } else if (byOrder[order] == nullptr) {
        // A place skipped by an earlier order: the element fills it.
        element->order = order;
        byOrder.items[order] = element;
    } else {
        element->order = order;
        byOrder.InsertAt(order, element);
        for (int64_t i = order + 1; i < byOrder.count; ++i) {
            auto* later = byOrder.At<clDrawElement>(i);
            if (later != nullptr) later->order = static_cast<uint32_t>(i);
        }
        ++nextOrder;
    }
    lists[element->kind].Add(element);
    dirty = true;
    return element->order + 1;
}

clDrawElement* clDrawList::Element(uint32_t order) const {
    return order < byOrder.count ? byOrder.At<clDrawElement>(order) : nullptr;
}

static clDrawElement* NewElement(int32_t kind, uint32_t x, uint32_t y, uint32_t w, uint32_t h) {
    auto* element = new clDrawElement;
    element->kind = kind;
    element->x = x;
    element->y = y;
    element->width = w;
    element->height = h;
    return element;
}

uint32_t clDrawList::AddFill(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t color, uint32_t order) {
    auto* element = NewElement(kDrawFill, x, y, w, h);
    element->colors[0] = color;
    return Insert(element, order);
}

uint32_t clDrawList::AddFramedRect(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t fill, uint32_t pen,
                                   int32_t radius, int32_t penWidth, uint32_t order) {
    auto* element = NewElement(kDrawFramedRect, x, y, w, h);
    element->colors[0] = fill;
    element->colors[1] = pen;
    element->value = radius;
    element->lineX1 = penWidth;
    return Insert(element, order);
}

uint32_t clDrawList::AddFrame(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t color, int32_t penWidth,
                              uint32_t order) {
    auto* element = NewElement(kDrawFrame, x, y, w, h);
    element->colors[1] = color;
    element->lineX1 = penWidth;
    return Insert(element, order);
}

uint32_t clDrawList::AddGradient(uint32_t x, uint32_t y, uint32_t w, uint32_t h, uint32_t c1, uint32_t c2, uint32_t c3,
                                 uint32_t c4, int32_t splitPercent, bool horizontal, uint32_t order) {
    auto* element = NewElement(kDrawGradient, x, y, w, h);
    element->colors[0] = c1;
    element->colors[1] = c2;
    element->colors[2] = c3;
    element->colors[3] = c4;
    element->value = std::clamp(splitPercent, 0, 100);
    element->horizontal = horizontal;
    return Insert(element, order);
}

uint32_t clDrawList::AddLine(uint32_t x, uint32_t y, int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint32_t color,
                             int32_t penWidth, uint32_t order) {
    auto* element = NewElement(kDrawLine, x, y, 0, 0);
    element->colors[0] = color;
    element->value = penWidth;
    element->lineX1 = x1;
    element->lineY1 = y1;
    element->lineX2 = x2;
    element->lineY2 = y2;
    return Insert(element, order);
}

uint32_t clDrawList::AddImage(uint32_t x, uint32_t y, uint32_t w, uint32_t h, clImageHandle image, uint32_t order) {
    auto* element = NewElement(kDrawImage, x, y, w, h);
    element->image = image;
    return Insert(element, order);
}

uint32_t clDrawList::AddIcon(uint32_t x, uint32_t y, clImageHandle icon, int32_t iconWidth, int32_t iconHeight,
                             uint32_t order) {
    auto* element = NewElement(kDrawIcon, x, y, clPack(iconWidth), clPack(iconHeight));
    element->image = icon;
    return Insert(element, order);
}

uint32_t clDrawList::AddText(uint32_t x, uint32_t y, uint32_t w, uint32_t h, const clString& text,
                             const clString& face, int32_t fontSize, uint32_t color, uint32_t style,
                             uint32_t alignment, uint32_t order) {
    auto* element = NewElement(kDrawText, x, y, w, h);
    element->text = text;
    element->face = face.IsEmpty() ? clString(u"Tahoma") : face;
    element->fontSize = fontSize;
    element->colors[0] = color;
    element->style = style;
    element->alignment = alignment;
    return Insert(element, order);
}

void clDrawList::SetCanvas(int32_t canvasWidth, int32_t canvasHeight) {
    width = canvasWidth;
    height = canvasHeight;
    dirty = true;
}

static void SelectFont(clCanvas& canvas, const clDrawElement& element) {
    clFontSpec font;
    font.face = element.face;
    font.height = element.fontSize;
    font.bold = (element.style & kTextBold) != 0;
    font.italic = (element.style & kTextItalic) != 0;
    font.underline = (element.style & kTextUnderline) != 0;
    canvas.SetFont(font);
}

// The element's own size before the canvas is known: what an absolute
// element adds to the extent, and what "ends here" subtracts.
static clSize NaturalSize(const clDrawElement& element, clCanvas& canvas) {
    if (element.kind == kDrawText) {
        SelectFont(canvas, element);
        if ((element.style & kTextMultiLine) == 0) return canvas.MeasureText(element.text);
        clStringList lines;
        lines.SplitLines(element.text);
        clSize size;
        for (int64_t i = 0; i < lines.Count(); ++i) {
            clSize line = canvas.MeasureText(lines[i]);
            size.width = std::max(size.width, line.width);
            size.height += line.height;
        }
        return size;
    }
    if ((element.kind == kDrawImage || element.kind == kDrawIcon) && element.image != nullptr) {
        return ImageSize(element.image);
    }
    return clSize{};
}

clRect clDrawList::Place(const clDrawElement& element, clCanvas& canvas) const {
    clSize natural = NaturalSize(element, canvas);
    int32_t w = ResolveSize(element.width, width, natural.width);
    int32_t h = ResolveSize(element.height, height, natural.height);
    int32_t left = ResolveCoordinate(element.x, width, w);
    int32_t top = ResolveCoordinate(element.y, height, h);
    return clRect::Sized(left, top, w, h);
}

void clDrawList::ComputeExtent(clCanvas& canvas) {
    int32_t right = 0, bottom = 0;
    for (int64_t i = 0; i < byOrder.count; ++i) {
        auto* element = byOrder.At<clDrawElement>(i);
        if (element == nullptr) continue;
        if (((element->x | element->width) & (kPackFromMiddle | kPackFromFarEdge)) == 0) {
            clSize natural = NaturalSize(*element, canvas);
            right = std::max(right, clPackedPixels(element->x) + ResolveSize(element->width, 0, natural.width));
        }
        if (((element->y | element->height) & (kPackFromMiddle | kPackFromFarEdge)) == 0) {
            clSize natural = NaturalSize(*element, canvas);
            bottom = std::max(bottom, clPackedPixels(element->y) + ResolveSize(element->height, 0, natural.height));
        }
    }
    if (width == 0) width = right;
    if (height == 0) height = bottom;
}

clString FitText(clCanvas& canvas, const clString& text, int32_t width) {
    if (canvas.MeasureText(text).width <= width) return text;
    clString dots(u"...");
    // The longest start of the text that fits with the dots behind it.
    int32_t low = 0, high = text.Length();
    while (low < high) {
        int32_t middle = (low + high + 1) / 2;
        clString trial = text.Mid(1, middle);
        trial.Append(dots);
        if (canvas.MeasureText(trial).width <= width) {
            low = middle;
        } else {
            high = middle - 1;
        }
    }
    clString fitted = low > 0 ? text.Mid(1, low) : clString();
    fitted.Append(dots);
    return fitted;
}

static void PaintText(clCanvas& canvas, const clDrawElement& element, const clRect& place) {
    SelectFont(canvas, element);
    clStringList lines;
    if ((element.style & kTextMultiLine) != 0) {
        lines.SplitLines(element.text);
    } else {
        lines.Add(element.text);
    }
    int32_t lineHeight = canvas.MeasureText(clString(u"Ay")).height;
    int32_t y = place.top;
    if ((element.alignment & kAlignVCenter) != 0) {
        y += (place.Height() - lineHeight * static_cast<int32_t>(lines.Count())) / 2;
    }
    for (int64_t i = 0; i < lines.Count(); ++i) {
        clString line = lines[i];
        if ((element.style & kTextEllipsis) != 0 && place.Width() > 0) line = FitText(canvas, line, place.Width());
        int32_t lineWidth = canvas.MeasureText(line).width;
        int32_t x = place.left;
        uint32_t horizontal = element.alignment & 3;
        if (horizontal == kAlignCenter) x += (place.Width() - lineWidth) / 2;
        if (horizontal == kAlignRight) x += place.Width() - lineWidth;
        canvas.Text(x, y, line, element.colors[0], clNoColor);
        y += lineHeight;
    }
}


static void PaintGradient(clCanvas& canvas, const clDrawElement& element, const clRect& place) {
    if (element.horizontal) {
        int32_t split = place.left + place.Width() * element.value / 100;
        canvas.Gradient(clRect{place.left, place.top, split, place.bottom}, element.colors[0], element.colors[1], true);
        canvas.Gradient(clRect{split, place.top, place.right, place.bottom}, element.colors[2], element.colors[3], true);
    } else {
        int32_t split = place.top + place.Height() * element.value / 100;
        canvas.Gradient(clRect{place.left, place.top, place.right, split}, element.colors[0], element.colors[1], false);
        canvas.Gradient(clRect{place.left, split, place.right, place.bottom}, element.colors[2], element.colors[3],
                        false);
    }
}

void clDrawList::Paint(clCanvas& canvas, int32_t x, int32_t y) {
    if (dirty) {
        dirty = false;
        ComputeExtent(canvas);
    }
    for (int64_t i = 0; i < byOrder.count; ++i) {
        auto* element = byOrder.At<clDrawElement>(i);
        if (element == nullptr || !element->visible) continue;
        clRect place = Place(*element, canvas);
        place.left += x;
        place.right += x;
        place.top += y;
        place.bottom += y;
        switch (element->kind) {
            case kDrawFill:
                if (element->colors[0] != clNoColor) canvas.FillRect(place, element->colors[0]);
                break;
            case kDrawFramedRect:
                canvas.FramedRect(place, element->colors[0], element->colors[1], element->value, element->lineX1);
                break;
            case kDrawFrame:
                canvas.FramedRect(place, clNoColor, element->colors[1], 0, element->lineX1);
                break;
            case kDrawGradient:
                PaintGradient(canvas, *element, place);
                break;
            case kDrawLine:
                canvas.Line(place.left + element->lineX1, place.top + element->lineY1, place.left + element->lineX2,
                            place.top + element->lineY2, element->colors[0], element->value);
                break;
            case kDrawImage:
            case kDrawIcon:
                if (element->image != nullptr) canvas.Image(element->image, place);
                break;
            case kDrawText:
                PaintText(canvas, *element, place);
                break;
            default:
                break;
        }
    }
}
