#include "toolkit/qt/qtcanvas.h"

#include <QApplication>
#include <QFileInfo>
#include <QFontMetrics>
#include <QIcon>
#include <QMimeDatabase>
#include <QStyle>
#include <QLinearGradient>
#include <QPainterPath>

QString ToQString(const clString& text) {
    return QString::fromUtf16(text.text, text.Length());
}

clString FromQString(const QString& text) {
    clString result;
    // Assign counts the terminator in its length.
    result.Assign(reinterpret_cast<const char16_t*>(text.utf16()), static_cast<int32_t>(text.size()) + 1);
    return result;
}

QColor ToQColor(uint32_t color) { return QColor(clRed(color), clGreen(color), clBlue(color)); }

QFont ToQFont(const clFontSpec& spec) {
    QFont font(ToQString(spec.face.IsEmpty() ? clString(u"Tahoma") : spec.face));
    font.setPixelSize(spec.height > 0 ? spec.height : 13);
    font.setBold(spec.bold);
    font.setItalic(spec.italic);
    font.setUnderline(spec.underline);
    return font;
}

void clQtCanvas::FillRect(const clRect& rect, uint32_t color) {
    if (color == clNoColor) return;
    painter.fillRect(QRect(rect.left, rect.top, rect.Width(), rect.Height()), ToQColor(color));
}

void clQtCanvas::FramedRect(const clRect& rect, uint32_t fill, uint32_t pen, int32_t radius, int32_t penWidth) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, radius > 0);
    if (pen == clNoColor || penWidth <= 0) {
        painter.setPen(Qt::NoPen);
    } else {
        painter.setPen(QPen(ToQColor(pen), penWidth));
    }
    painter.setBrush(fill == clNoColor ? QBrush(Qt::NoBrush) : QBrush(ToQColor(fill)));
    // The pen's centre runs half a pixel inside, so the frame stays within.
    double inset = (pen == clNoColor || penWidth <= 0) ? 0.0 : penWidth / 2.0;
    QRectF area(rect.left + inset, rect.top + inset, rect.Width() - 2 * inset, rect.Height() - 2 * inset);
    if (radius > 0) {
        painter.drawRoundedRect(area, radius, radius);
    } else {
        painter.drawRect(area);
    }
    painter.restore();
}

void clQtCanvas::Gradient(const clRect& rect, uint32_t from, uint32_t to, bool horizontal) {
    if (rect.IsEmpty()) return;
    QLinearGradient gradient(rect.left, rect.top, horizontal ? rect.right : rect.left,
                             horizontal ? rect.top : rect.bottom);
    gradient.setColorAt(0, ToQColor(from));
    gradient.setColorAt(1, ToQColor(to));
    painter.fillRect(QRect(rect.left, rect.top, rect.Width(), rect.Height()), gradient);
}

void clQtCanvas::Line(int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint32_t color, int32_t width) {
    painter.save();
    painter.setPen(QPen(ToQColor(color), width > 0 ? width : 1));
    painter.drawLine(x1, y1, x2, y2);
    painter.restore();
}

void clQtCanvas::Image(clImageHandle image, const clRect& rect) {
    clQtImage* picture = QtImageOf(image);
    if (picture == nullptr || picture->image.isNull()) return;
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect(rect.left, rect.top, rect.Width(), rect.Height()), picture->image);
    painter.restore();
}

void clQtCanvas::SetFont(const clFontSpec& font) { painter.setFont(ToQFont(font)); }

void clQtCanvas::Text(int32_t x, int32_t y, const clString& text, uint32_t color, uint32_t background) {
    QString line = ToQString(text);
    QFontMetrics metrics(painter.font());
    if (background != clNoColor) {
        painter.fillRect(QRect(x, y, metrics.horizontalAdvance(line), metrics.height()), ToQColor(background));
    }
    painter.save();
    painter.setPen(ToQColor(color));
    painter.drawText(x, y + metrics.ascent(), line);
    painter.restore();
}

clSize clQtCanvas::MeasureText(const clString& text) {
    QFontMetrics metrics(painter.font());
    return clSize{metrics.horizontalAdvance(ToQString(text)), metrics.height()};
}

void clQtCanvas::SetClip(const clRect& rect) {
    if (rect.IsEmpty()) {
        painter.setClipping(false);
    } else {
        painter.setClipRect(QRect(rect.left, rect.top, rect.Width(), rect.Height()));
    }
}

clImageHandle LoadImageFile(const clString& path, int32_t width, int32_t height) {
    QImage image(ToQString(path));
    if (image.isNull()) return nullptr;
    image = image.convertToFormat(QImage::Format_ARGB32);
    if (width > 0 && height > 0 && (image.width() != width || image.height() != height)) {
        image = image.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    return reinterpret_cast<clImageHandle>(new clQtImage{image});
}

namespace {

clImageHandle FromIcon(const QIcon& icon, int32_t size) {
    QImage image(size, size, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    icon.paint(&painter, QRect(0, 0, size, size));
    painter.end();
    return reinterpret_cast<clImageHandle>(new clQtImage{image});
}

}  // namespace

clImageHandle FileTypeIcon(const clString& extension, int32_t size) {
    // The theme's icon for the type, else its generic group's, else the
    // style's plain file: a machine without an icon theme still shows one.
    QMimeType type = QMimeDatabase().mimeTypeForFile(QStringLiteral("file") + ToQString(extension),
                                                     QMimeDatabase::MatchExtension);
    QIcon icon = QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
    if (icon.isNull()) icon = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    return FromIcon(icon, size);
}

clString FileTypeDescription(const clString& extension) {
    QMimeType type = QMimeDatabase().mimeTypeForFile(QStringLiteral("file") + ToQString(extension),
                                                     QMimeDatabase::MatchExtension);
    if (!type.isValid() || type.isDefault()) return clString();
    return FromQString(type.comment());
}

clImageHandle FolderIcon(const clString&, int32_t size) {
    QIcon icon = QIcon::fromTheme(QStringLiteral("folder"));
    if (icon.isNull()) icon = QApplication::style()->standardIcon(QStyle::SP_DirIcon);
    return FromIcon(icon, size);
}

clImageHandle CreateImage(int32_t width, int32_t height) {
    if (width <= 0 || height <= 0) return nullptr;
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    return reinterpret_cast<clImageHandle>(new clQtImage{image});
}

clSize ImageSize(clImageHandle image) {
    clQtImage* picture = QtImageOf(image);
    if (picture == nullptr) return clSize{};
    return clSize{picture->image.width(), picture->image.height()};
}

void DestroyImage(clImageHandle image) { delete QtImageOf(image); }

clCanvas* CanvasOnImage(clImageHandle image) {
    clQtImage* picture = QtImageOf(image);
    if (picture == nullptr) return nullptr;
    return new clQtImageCanvas(picture->image);
}

uint32_t ImagePixel(clImageHandle image, int32_t x, int32_t y) {
    clQtImage* picture = QtImageOf(image);
    if (picture == nullptr || !picture->image.valid(x, y)) return clNoColor;
    QRgb pixel = picture->image.pixel(x, y);
    return clRgb(qRed(pixel), qGreen(pixel), qBlue(pixel));
}

bool SaveImagePng(clImageHandle image, const clString& path) {
    clQtImage* picture = QtImageOf(image);
    return picture != nullptr && picture->image.save(ToQString(path), "PNG");
}
