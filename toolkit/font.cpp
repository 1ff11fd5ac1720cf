#include "toolkit/font.h"

#include <cstring>

clCanvas::~clCanvas() = default;

void clFont::CreateFont(clCanvas* canvas, const char* faceName, int32_t height, uint32_t color, int32_t /*reserved*/,
                        bool bold, bool italic, bool underline) {
    if (faceName == nullptr || faceName[0] == 0 || std::strlen(faceName) >= 32) {
        font.face = u"Tahoma";
    } else {
        font.face.AssignAnsi(faceName);
    }
    font.height = height;
    font.bold = bold;
    font.italic = italic;
    font.underline = underline;
    textColor = color;
    if (canvas != nullptr) Select(canvas);
}

void clFont::Select(clCanvas* canvas) {
    Restore();
    deviceContext = canvas;
    if (canvas == nullptr) return;
    canvas->SetFont(font);
    isSelected = true;
}

// A canvas keeps no font stack of its own; the next Select sets its font.
void clFont::Restore() {
    isSelected = false;
    deviceContext = nullptr;
}

void clFont::DrawText(int32_t x, int32_t y, const clString& text, bool multiLine) {
    if (deviceContext == nullptr) return;
    uint32_t background = transparent ? clNoColor : backgroundColor;
    if (!multiLine) {
        deviceContext->Text(x, y, text, textColor, background);
        return;
    }
    clStringList lines;
    lines.SplitLines(text);
    int32_t step = deviceContext->MeasureText(clString(u"Ay")).height + lineGap;
    for (int64_t i = 0; i < lines.Count(); ++i) {
        deviceContext->Text(x, y, lines[i], textColor, background);
        y += step;
    }
}

clSize clFont::MeasureText(const clString& text) {
    if (deviceContext == nullptr) return clSize{};
    return deviceContext->MeasureText(text);
}

void clBrush::SetColor(uint32_t newColor, clCanvas* canvas) {
    color = newColor;
    isStock = newColor == clNoColor;
    deviceContext = canvas;
}

void clBrush::Fill(const clRect& rect) {
    if (isStock || deviceContext == nullptr) return;
    deviceContext->FillRect(rect, color);
}
