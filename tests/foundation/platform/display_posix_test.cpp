// Whether there is a display, from the environment alone: the program asks
// before it loads the window toolkit, and a wrong yes would end it inside
// Qt, a wrong no would convert on the terminal behind the user's back.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "foundation/platform/display.h"
#include "foundation/utf.h"
#include "tests/support/testfolder.h"

namespace {

class Display : public ::testing::Test {
protected:
    static constexpr const char* kNames[] = {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR", "DISPLAY"};
    std::string saved[4];
    bool had[4] = {};

    void SetUp() override {
        for (int i = 0; i < 4; ++i) {
            const char* value = std::getenv(kNames[i]);
            had[i] = value != nullptr;
            if (had[i]) saved[i] = value;
            ::unsetenv(kNames[i]);
        }
    }
    void TearDown() override {
        for (int i = 0; i < 4; ++i) {
            if (had[i]) {
                ::setenv(kNames[i], saved[i].c_str(), 1);
            } else {
                ::unsetenv(kNames[i]);
            }
        }
    }
};

}  // namespace

TEST_F(Display, NamedPlatformsAndRemoteDisplaysCountLocalOnesNeedTheirSocket) {
    EXPECT_FALSE(PlatformHasDisplay());
    ::setenv("DISPLAY", "", 1);
    EXPECT_FALSE(PlatformHasDisplay()) << "an empty variable names nothing";
    ::setenv("DISPLAY", ":98765.0", 1);
    EXPECT_FALSE(PlatformHasDisplay()) << "no socket /tmp/.X11-unix/X98765";
    ::setenv("DISPLAY", "far.example:0", 1);
    EXPECT_TRUE(PlatformHasDisplay());
    ::unsetenv("DISPLAY");
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    EXPECT_TRUE(PlatformHasDisplay());
}

TEST_F(Display, AWaylandSocketCountsByPathOrInTheRuntimeFolder) {
    TestFolder dir;
    std::string folder = StringToUtf8(dir.Path());
    std::ofstream(folder + "wayland-7").put('x');
    ::setenv("WAYLAND_DISPLAY", (folder + "wayland-7").c_str(), 1);
    EXPECT_TRUE(PlatformHasDisplay());
    ::setenv("WAYLAND_DISPLAY", "wayland-7", 1);
    EXPECT_FALSE(PlatformHasDisplay()) << "a bare name needs the runtime folder";
    ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    EXPECT_TRUE(PlatformHasDisplay());
    ::setenv("WAYLAND_DISPLAY", "wayland-8", 1);
    EXPECT_FALSE(PlatformHasDisplay());
}
