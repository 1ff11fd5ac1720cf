// The canvas and pictures of the Qt back end: a QPainter, and QImage.
#pragma once

#include <QFont>
#include <QImage>
#include <QPainter>
#include <QString>

#include "foundation/clstring.h"
#include "toolkit/canvas.h"

struct clQtImage {
    QImage image;
};

QString ToQString(const clString& text);
clString FromQString(const QString& text);
QColor ToQColor(uint32_t color);
QFont ToQFont(const clFontSpec& spec);
inline clQtImage* QtImageOf(clImageHandle image) { return reinterpret_cast<clQtImage*>(image); }

class clQtCanvas : public clCanvas {
public:
    explicit clQtCanvas(QPainter& target) : painter(target) {}

    void FillRect(const clRect& rect, uint32_t color) override;
    void FramedRect(const clRect& rect, uint32_t fill, uint32_t pen, int32_t radius, int32_t penWidth) override;
    void Gradient(const clRect& rect, uint32_t from, uint32_t to, bool horizontal) override;
    void Line(int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint32_t color, int32_t width) override;
    void Image(clImageHandle image, const clRect& rect) override;
    void SetFont(const clFontSpec& font) override;
    void Text(int32_t x, int32_t y, const clString& text, uint32_t color, uint32_t background) override;
    clSize MeasureText(const clString& text) override;
    void SetClip(const clRect& rect) override;

private:
    QPainter& painter;
};

// A canvas that owns its painter, on an image.
class clQtImageCanvas : public clQtCanvas {
public:
    explicit clQtImageCanvas(QImage& image) : clQtCanvas(ownPainter), ownPainter(&image) {}

private:
    QPainter ownPainter;
};
