#include "tests/support/toolkittest.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "foundation/clstring.h"
#include "foundation/utf.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"

uint32_t PixelOf(clWindowHandle window, int32_t x, int32_t y) {
    Pump();
    clImageHandle grab = WindowGrab(window);
    if (grab == nullptr) return clNoColor;
    uint32_t color = ImagePixel(grab, x, y);
    DestroyImage(grab);
    return color;
}

std::string SaveGrab(clWindowHandle window, const std::string& name) {
    Pump();
    clImageHandle grab = WindowGrab(window);
    if (grab == nullptr) return std::string();
    std::filesystem::path folder = std::filesystem::current_path() / "grabs";
    std::filesystem::create_directories(folder);
    std::string path = (folder / (name + ".png")).string();
    clString wide;
    Utf8ToString(path.c_str(), static_cast<int64_t>(path.size()), wide);
    SaveImagePng(grab, wide);
    DestroyImage(grab);
    return path;
}

void SaveGrabIfFailed(clWindowHandle window) {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    if (test == nullptr || !::testing::Test::HasFailure()) return;
    std::string path = SaveGrab(window, std::string(test->test_suite_name()) + "." + test->name());
    if (!path.empty()) std::printf("the window as it was: %s\n", path.c_str());
}

void Pump() {
    for (int i = 0; i < 3; ++i) ToolkitProcessPending();
}

bool NearColor(uint32_t a, uint32_t b, int tolerance) {
    auto near = [tolerance](uint32_t x, uint32_t y) { return std::abs(static_cast<int>(x) - static_cast<int>(y)) <= tolerance; };
    return near(clRed(a), clRed(b)) && near(clGreen(a), clGreen(b)) && near(clBlue(a), clBlue(b));
}
