// The drawing list: packed coordinates, one painting order across the
// kinds, the canvas's extent, and texts cut to fit.
#include "toolkit/drawlist.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/support/toolkittest.h"

namespace {

// A canvas on a fresh white image.
struct Surface {
    clImageHandle image;
    std::unique_ptr<clCanvas> canvas;
    Surface(int w, int h) : image(CreateImage(w, h)), canvas(CanvasOnImage(image)) {
        canvas->FillRect(clRect{0, 0, w, h}, 0xFFFFFF);
    }
    ~Surface() {
        canvas.reset();
        DestroyImage(image);
    }
    uint32_t Pixel(int x, int y) {
        canvas.reset();  // the painter ends before the pixels are read
        uint32_t color = ImagePixel(image, x, y);
        canvas.reset(CanvasOnImage(image));
        return color;
    }
};

}  // namespace

TEST(DrawList, PackedCoordinatesCountFromTheirBaseAndTheElementsOwnSize) {
    EXPECT_EQ(ResolveCoordinate(clPack(10), 200, 30), 10);
    EXPECT_EQ(ResolveCoordinate(clPack(10, kPackFromMiddle), 200, 30), 110);
    EXPECT_EQ(ResolveCoordinate(clPack(-10, kPackFromFarEdge), 200, 30), 190);
    EXPECT_EQ(ResolveCoordinate(clPack(-10, kPackFromFarEdge | kPackEndsHere), 200, 30), 160);
    EXPECT_EQ(ResolveCoordinate(clPack(0, kPackFromMiddle | kPackCentredHere), 200, 30), 85);
    // Middle and far edge together add up: the far edge is "added to any
    // earlier base".
    EXPECT_EQ(ResolveCoordinate(clPack(0, kPackFromMiddle | kPackFromFarEdge), 200, 0), 300);
    // The negative flag reads as "minus the pixel part": 0x100000 | 5 is -5.
    EXPECT_EQ(clPack(-5), 0x100005u);
    EXPECT_EQ(clPackedPixels(0x100005u), -5);
    EXPECT_EQ(ResolveSize(clPack(-4, kPackFromFarEdge), 120, 0), 116);
    EXPECT_EQ(ResolveSize(0, 120, 37), 37) << "0 is the element's natural size";
    EXPECT_EQ(ResolveSize(clPack(-500, kPackFromFarEdge), 120, 0), 0) << "never negative";
}

TEST(DrawList, ElementsPaintInOneOrderWhateverTheirKind) {
    Surface surface(40, 40);
    clDrawList list;
    // Given order 2 and 1: the fill given order 2 lands on top.
    list.AddFramedRect(0, 0, clPack(40), clPack(40), 0x0000FF, clNoColor, 0, 0, 2);
    list.AddFill(0, 0, clPack(40), clPack(40), 0xFF0000, 1);
    list.Paint(*surface.canvas, 0, 0);
    EXPECT_TRUE(NearColor(surface.Pixel(20, 20), 0x0000FF, 2));
    // An order already taken pushes the elements from it on one place: the
    // new fill paints before the red rectangle.
    uint32_t green = list.AddFill(0, 0, clPack(40), clPack(40), 0x00FF00, 2);
    EXPECT_EQ(green, 3u) << "Add answers the order plus 1";
    EXPECT_EQ(list.Element(3)->colors[0], 0x0000FFu);
    list.Paint(*surface.canvas, 0, 0);
    EXPECT_TRUE(NearColor(surface.Pixel(20, 20), 0x0000FF, 2));
    // A hidden element is not painted.
    list.Element(3)->visible = false;
    list.Paint(*surface.canvas, 0, 0);
    EXPECT_TRUE(NearColor(surface.Pixel(20, 20), 0x00FF00, 2));
}

TEST(DrawList, ACanvasOfNoSizeTakesTheExtentOfItsElementsAndFarEdgesFollowIt) {
    Surface surface(100, 60);
    clDrawList list;
    list.AddFill(clPack(10), clPack(5), clPack(50), clPack(20), 0xFFFFFF);
    list.AddFill(clPack(-10, kPackFromFarEdge), 0, clPack(10), clPack(10), 0x000000);
    list.Paint(*surface.canvas, 0, 0);
    EXPECT_EQ(list.width, 60) << "10 + 50; the far-edge element doesn't count";
    EXPECT_EQ(list.height, 25);
    EXPECT_TRUE(NearColor(surface.Pixel(55, 3), 0x000000, 2));
    // A given canvas holds; resizing it moves the far-edge element.
    list.SetCanvas(100, 60);
    list.Paint(*surface.canvas, 0, 0);
    EXPECT_TRUE(NearColor(surface.Pixel(95, 3), 0x000000, 2));
}

TEST(DrawList, TextsCutToTheirWidthEndInDots) {
    Surface surface(200, 40);
    clFontSpec font;
    font.face = u"Tahoma";
    font.height = 13;
    surface.canvas->SetFont(font);
    clString longText(u"A rather long title that does not fit");
    clString cut = FitText(*surface.canvas, longText, 80);
    EXPECT_LE(surface.canvas->MeasureText(cut).width, 80);
    EXPECT_EQ(cut.Mid(cut.Length() - 2, cut.Length()).Compare(u"..."), 0) << cut.ToUtf8();
    EXPECT_GT(cut.Length(), 3);
    EXPECT_TRUE(FitText(*surface.canvas, clString(u"Fits"), 80).Equals(u"Fits"));
}
