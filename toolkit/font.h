// clFont and clBrush: the text and fill state a painted control keeps. A
// device context of the platform is a clCanvas here.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/stringlist.h"
#include "toolkit/canvas.h"
#include "toolkit/toolkitapi.h"

class QV_TOOLKIT_API clFont {
public:
    bool isSelected = false;
    clCanvas* deviceContext = nullptr;
    bool transparent = true;
    clFontSpec font;
    uint32_t textColor = 0;
    uint32_t backgroundColor = 0xFFFFFF;  // behind the text when not transparent
    int32_t lineGap = 0;                  // extra pixels between lines

    // A null, empty or over-long face name (32 characters or more) gives
    // "Tahoma". With a canvas the font is selected into it.
    void CreateFont(clCanvas* canvas, const char* faceName, int32_t height, uint32_t color, int32_t reserved, bool bold,
                    bool italic, bool underline);
    void Select(clCanvas* canvas);
    void Restore();
    // With `multiLine`, the text is split at line ends and each line drawn
    // below the last by the height of "Ay" plus lineGap.
    void DrawText(int32_t x, int32_t y, const clString& text, bool multiLine = false);
    clSize MeasureText(const clString& text);
};

class QV_TOOLKIT_API clBrush {
public:
    uint32_t color = clNoColor;
    clCanvas* deviceContext = nullptr;
    bool isStock = true;  // the hollow brush: nothing is filled

    void SetColor(uint32_t newColor, clCanvas* canvas);
    void Fill(const clRect& rect);
};
