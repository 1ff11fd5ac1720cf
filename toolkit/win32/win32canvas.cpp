#include "toolkit/win32/win32canvas.h"

#include <shellapi.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

std::wstring Wide(const clString& text) {
    return std::wstring(reinterpret_cast<const wchar_t*>(text.text), static_cast<size_t>(text.Length()));
}

}  // namespace

HFONT FontFor(const clFontSpec& spec) {
    static std::map<std::wstring, HFONT> fonts;
    std::wstring key = Wide(spec.face) + L"|" + std::to_wstring(spec.height) + (spec.bold ? L"b" : L"") +
                       (spec.italic ? L"i" : L"") + (spec.underline ? L"u" : L"");
    auto found = fonts.find(key);
    if (found != fonts.end()) return found->second;
    LOGFONTW record{};
    record.lfHeight = -(spec.height > 0 ? spec.height : 13);
    record.lfWeight = spec.bold ? FW_BOLD : FW_NORMAL;
    record.lfItalic = spec.italic ? TRUE : FALSE;
    record.lfUnderline = spec.underline ? TRUE : FALSE;
    record.lfCharSet = DEFAULT_CHARSET;
    record.lfQuality = CLEARTYPE_QUALITY;
    std::wstring face = spec.face.IsEmpty() ? std::wstring(L"Tahoma") : Wide(spec.face);
    wcsncpy(record.lfFaceName, face.c_str(), LF_FACESIZE - 1);
    HFONT made = CreateFontIndirectW(&record);
    fonts[key] = made;
    return made;
}

clGdiCanvas::~clGdiCanvas() {
    if (savedFont != nullptr) SelectObject(dc, savedFont);
}

void clGdiCanvas::FillRect(const clRect& rect, uint32_t color) {
    if (color == clNoColor || rect.IsEmpty()) return;
    RECT area{rect.left, rect.top, rect.right, rect.bottom};
    HBRUSH brush = CreateSolidBrush(color);
    ::FillRect(dc, &area, brush);
    DeleteObject(brush);
}

void clGdiCanvas::FramedRect(const clRect& rect, uint32_t fill, uint32_t pen, int32_t radius, int32_t penWidth) {
    if (rect.IsEmpty()) return;
    HGDIOBJ brush = fill == clNoColor ? GetStockObject(HOLLOW_BRUSH) : CreateSolidBrush(fill);
    HGDIOBJ outline = pen == clNoColor || penWidth <= 0 ? GetStockObject(NULL_PEN)
                                                        : CreatePen(PS_SOLID | PS_INSIDEFRAME, penWidth, pen);
    HGDIOBJ oldBrush = SelectObject(dc, brush);
    HGDIOBJ oldPen = SelectObject(dc, outline);
    // Without a pen GDI leaves the right and bottom edge out: one more.
    int32_t extra = pen == clNoColor || penWidth <= 0 ? 1 : 0;
    if (radius > 0) {
        RoundRect(dc, rect.left, rect.top, rect.right + extra, rect.bottom + extra, radius * 2, radius * 2);
    } else {
        Rectangle(dc, rect.left, rect.top, rect.right + extra, rect.bottom + extra);
    }
    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
    if (fill != clNoColor) DeleteObject(brush);
    if (!(pen == clNoColor || penWidth <= 0)) DeleteObject(outline);
}

void clGdiCanvas::Gradient(const clRect& rect, uint32_t from, uint32_t to, bool horizontal) {
    if (rect.IsEmpty()) return;
    int32_t steps = horizontal ? rect.Width() : rect.Height();
    for (int32_t i = 0; i < steps; ++i) {
        auto mix = [&](uint32_t a, uint32_t b) {
            return static_cast<uint32_t>((static_cast<int64_t>(a) * (steps - 1 - i) + static_cast<int64_t>(b) * i) /
                                         std::max(1, steps - 1));
        };
        uint32_t color = clRgb(mix(clRed(from), clRed(to)), mix(clGreen(from), clGreen(to)),
                               mix(clBlue(from), clBlue(to)));
        clRect band = horizontal ? clRect{rect.left + i, rect.top, rect.left + i + 1, rect.bottom}
                                 : clRect{rect.left, rect.top + i, rect.right, rect.top + i + 1};
        FillRect(band, color);
    }
}

void clGdiCanvas::Line(int32_t x1, int32_t y1, int32_t x2, int32_t y2, uint32_t color, int32_t width) {
    HPEN pen = CreatePen(PS_SOLID, width > 0 ? width : 1, color);
    HGDIOBJ old = SelectObject(dc, pen);
    MoveToEx(dc, x1, y1, nullptr);
    LineTo(dc, x2, y2);
    SelectObject(dc, old);
    DeleteObject(pen);
}

void clGdiCanvas::Image(clImageHandle image, const clRect& rect) {
    clWinImage* picture = WinImageOf(image);
    if (picture == nullptr || picture->bitmap == nullptr) return;
    HDC source = CreateCompatibleDC(dc);
    HGDIOBJ old = SelectObject(source, picture->bitmap);
    BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    AlphaBlend(dc, rect.left, rect.top, rect.Width(), rect.Height(), source, 0, 0, picture->width, picture->height,
               blend);
    SelectObject(source, old);
    DeleteDC(source);
}

void clGdiCanvas::SetFont(const clFontSpec& spec) {
    font = FontFor(spec);
    HGDIOBJ old = SelectObject(dc, font);
    if (savedFont == nullptr) savedFont = old;
}

void clGdiCanvas::Text(int32_t x, int32_t y, const clString& text, uint32_t color, uint32_t background) {
    SetTextColor(dc, color);
    if (background == clNoColor) {
        SetBkMode(dc, TRANSPARENT);
    } else {
        SetBkMode(dc, OPAQUE);
        SetBkColor(dc, background);
    }
    SetTextAlign(dc, TA_LEFT | TA_TOP | TA_NOUPDATECP);
    ExtTextOutW(dc, x, y, 0, nullptr, reinterpret_cast<const wchar_t*>(text.text), static_cast<UINT>(text.Length()),
                nullptr);
}

clSize clGdiCanvas::MeasureText(const clString& text) {
    SIZE size{};
    GetTextExtentPoint32W(dc, reinterpret_cast<const wchar_t*>(text.text), text.Length(), &size);
    TEXTMETRICW metrics{};
    GetTextMetricsW(dc, &metrics);
    return clSize{size.cx, metrics.tmHeight};
}

void clGdiCanvas::SetClip(const clRect& rect) {
    if (rect.IsEmpty()) {
        SelectClipRgn(dc, nullptr);
        return;
    }
    SelectClipRgn(dc, nullptr);
    IntersectClipRect(dc, rect.left, rect.top, rect.right, rect.bottom);
}

static clWinImage* NewImage(int32_t width, int32_t height) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;  // top-down
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap == nullptr) return nullptr;
    auto* image = new clWinImage;
    image->bitmap = bitmap;
    image->bits = static_cast<uint32_t*>(bits);
    image->width = width;
    image->height = height;
    std::memset(bits, 0, static_cast<size_t>(width) * height * 4);
    return image;
}

namespace {

clImageHandle FromShell(const wchar_t* path, DWORD attributes, int32_t size) {
    SHFILEINFOW info{};
    UINT flags = SHGFI_ICON | (size > 16 ? SHGFI_LARGEICON : SHGFI_SMALLICON);
    if (attributes != 0) flags |= SHGFI_USEFILEATTRIBUTES;
    if (SHGetFileInfoW(path, attributes, &info, sizeof info, flags) == 0 || info.hIcon == nullptr) {
        // A path the shell can't see stands for the plain folder or file.
        if (attributes != 0) return nullptr;
        return FromShell(L"C:\\folder", FILE_ATTRIBUTE_DIRECTORY, size);
    }
    clWinImage* image = NewImage(size, size);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, image->bitmap);
    DrawIconEx(dc, 0, 0, info.hIcon, size, size, 0, nullptr, DI_NORMAL);
    SelectObject(dc, old);
    DeleteDC(dc);
    DestroyIcon(info.hIcon);
    return reinterpret_cast<clImageHandle>(image);
}

}  // namespace

clImageHandle FileTypeIcon(const clString& extension, int32_t size) {
    // The file needn't exist: the shell answers by the name's type.
    std::wstring name = L"C:\\file" + std::wstring(reinterpret_cast<const wchar_t*>(extension.text));
    return FromShell(name.c_str(), FILE_ATTRIBUTE_NORMAL, size);
}

clString FileTypeDescription(const clString& extension) {
    std::wstring name = L"C:\\file" + std::wstring(reinterpret_cast<const wchar_t*>(extension.text));
    SHFILEINFOW info{};
    if (SHGetFileInfoW(name.c_str(), FILE_ATTRIBUTE_NORMAL, &info, sizeof info, SHGFI_TYPENAME | SHGFI_USEFILEATTRIBUTES) ==
        0) {
        return clString();
    }
    return clString(reinterpret_cast<const char16_t*>(info.szTypeName));
}

clImageHandle FolderIcon(const clString& path, int32_t size) {
    return FromShell(reinterpret_cast<const wchar_t*>(path.text), 0, size);
}

clImageHandle CreateImage(int32_t width, int32_t height) {
    if (width <= 0 || height <= 0) return nullptr;
    return reinterpret_cast<clImageHandle>(NewImage(width, height));
}

clImageHandle LoadImageFile(const clString& path, int32_t width, int32_t height) {
    bool icon = path.Length() > 4 && path.Mid(path.Length() - 3, path.Length()).EqualsNoCase(u".ico");
    int w = width > 0 ? width : 16, h = height > 0 ? height : 16;
    if (icon) {
        HICON handle = static_cast<HICON>(
            LoadImageW(nullptr, reinterpret_cast<const wchar_t*>(path.text), IMAGE_ICON, w, h, LR_LOADFROMFILE));
        if (handle == nullptr) return nullptr;
        clWinImage* image = NewImage(w, h);
        HDC dc = CreateCompatibleDC(nullptr);
        HGDIOBJ old = SelectObject(dc, image->bitmap);
        DrawIconEx(dc, 0, 0, handle, w, h, 0, nullptr, DI_NORMAL);
        SelectObject(dc, old);
        DeleteDC(dc);
        DestroyIcon(handle);
        return reinterpret_cast<clImageHandle>(image);
    }
    HBITMAP bitmap = static_cast<HBITMAP>(LoadImageW(nullptr, reinterpret_cast<const wchar_t*>(path.text), IMAGE_BITMAP,
                                                     0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION));
    if (bitmap == nullptr) return nullptr;
    BITMAP facts{};
    GetObjectW(bitmap, sizeof(facts), &facts);
    clWinImage* image = NewImage(width > 0 ? width : facts.bmWidth, height > 0 ? height : facts.bmHeight);
    HDC target = CreateCompatibleDC(nullptr), source = CreateCompatibleDC(nullptr);
    HGDIOBJ oldTarget = SelectObject(target, image->bitmap), oldSource = SelectObject(source, bitmap);
    StretchBlt(target, 0, 0, image->width, image->height, source, 0, 0, facts.bmWidth, facts.bmHeight, SRCCOPY);
    SelectObject(target, oldTarget);
    SelectObject(source, oldSource);
    DeleteDC(target);
    DeleteDC(source);
    DeleteObject(bitmap);
    // A bitmap file has no alpha: opaque.
    for (int64_t i = 0; i < static_cast<int64_t>(image->width) * image->height; ++i) image->bits[i] |= 0xFF000000u;
    return reinterpret_cast<clImageHandle>(image);
}

clSize ImageSize(clImageHandle image) {
    clWinImage* picture = WinImageOf(image);
    return picture != nullptr ? clSize{picture->width, picture->height} : clSize{};
}

void DestroyImage(clImageHandle image) {
    clWinImage* picture = WinImageOf(image);
    if (picture == nullptr) return;
    DeleteObject(picture->bitmap);
    delete picture;
}

// A canvas that owns its memory context, with the image selected into it.
class clImageCanvas : public clGdiCanvas {
public:
    clImageCanvas(HDC memory, HGDIOBJ previous) : clGdiCanvas(memory), old(previous) {}
    ~clImageCanvas() override {
        GdiFlush();
        SelectObject(dc, old);
        DeleteDC(dc);
    }

private:
    HGDIOBJ old;
};

clCanvas* CanvasOnImage(clImageHandle image) {
    clWinImage* picture = WinImageOf(image);
    if (picture == nullptr) return nullptr;
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, picture->bitmap);
    return new clImageCanvas(dc, old);
}

uint32_t ImagePixel(clImageHandle image, int32_t x, int32_t y) {
    clWinImage* picture = WinImageOf(image);
    if (picture == nullptr || x < 0 || y < 0 || x >= picture->width || y >= picture->height) return clNoColor;
    GdiFlush();
    uint32_t pixel = picture->bits[static_cast<int64_t>(y) * picture->width + x];
    return clRgb((pixel >> 16) & 0xFF, (pixel >> 8) & 0xFF, pixel & 0xFF);
}

namespace {

uint32_t Crc(const uint8_t* data, size_t length, uint32_t crc = 0) {
    static uint32_t table[256];
    static bool made = false;
    if (!made) {
        for (uint32_t n = 0; n < 256; ++n) {
            uint32_t c = n;
            for (int k = 0; k < 8; ++k) c = (c & 1) != 0 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            table[n] = c;
        }
        made = true;
    }
    crc = ~crc;
    for (size_t i = 0; i < length; ++i) crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

void Put32(std::vector<uint8_t>& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(value >> shift));
}

void Chunk(std::vector<uint8_t>& out, const char* type, const std::vector<uint8_t>& data) {
    Put32(out, static_cast<uint32_t>(data.size()));
    std::vector<uint8_t> body(type, type + 4);
    body.insert(body.end(), data.begin(), data.end());
    out.insert(out.end(), body.begin(), body.end());
    Put32(out, Crc(body.data(), body.size()));
}

}  // namespace

// PNG with the image data in stored (uncompressed) deflate blocks: no
// library is needed, and the pictures are for tests and screenshots.
bool SaveImagePng(clImageHandle image, const clString& path) {
    clWinImage* picture = WinImageOf(image);
    if (picture == nullptr) return false;
    GdiFlush();
    std::vector<uint8_t> raw;
    for (int32_t y = 0; y < picture->height; ++y) {
        raw.push_back(0);
        for (int32_t x = 0; x < picture->width; ++x) {
            uint32_t pixel = picture->bits[static_cast<int64_t>(y) * picture->width + x];
            raw.push_back(static_cast<uint8_t>(pixel >> 16));
            raw.push_back(static_cast<uint8_t>(pixel >> 8));
            raw.push_back(static_cast<uint8_t>(pixel));
        }
    }
    std::vector<uint8_t> deflate = {0x78, 0x01};
    size_t at = 0;
    do {
        size_t length = std::min<size_t>(65535, raw.size() - at);
        deflate.push_back(at + length == raw.size() ? 1 : 0);
        deflate.push_back(static_cast<uint8_t>(length));
        deflate.push_back(static_cast<uint8_t>(length >> 8));
        deflate.push_back(static_cast<uint8_t>(~length));
        deflate.push_back(static_cast<uint8_t>(~length >> 8));
        deflate.insert(deflate.end(), raw.begin() + static_cast<long>(at), raw.begin() + static_cast<long>(at + length));
        at += length;
    } while (at < raw.size());
    uint32_t a = 1, b = 0;
    for (uint8_t byte : raw) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    Put32(deflate, (b << 16) | a);
    std::vector<uint8_t> file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<uint8_t> header;
    Put32(header, static_cast<uint32_t>(picture->width));
    Put32(header, static_cast<uint32_t>(picture->height));
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8-bit RGB
    Chunk(file, "IHDR", header);
    Chunk(file, "IDAT", deflate);
    Chunk(file, "IEND", {});
    HANDLE handle = CreateFileW(reinterpret_cast<const wchar_t*>(path.text), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    BOOL ok = WriteFile(handle, file.data(), static_cast<DWORD>(file.size()), &written, nullptr);
    CloseHandle(handle);
    return ok != FALSE && written == file.size();
}
