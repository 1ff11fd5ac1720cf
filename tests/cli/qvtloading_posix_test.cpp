// What a conversion from the terminal loads: the program shows it on the
// terminal without its forms module and the window toolkit under it (Qt,
// some fifty libraries), even with a display at hand. The window runs of
// the frontend tests load them.
#include <cstdlib>

#include "tests/cli/faultfixture.h"
#include "tests/support/loaderreport.h"

namespace {

// A display at hand, for the programs a test starts, until the object goes.
class OffscreenDisplay {
public:
    OffscreenDisplay() { ::setenv("QT_QPA_PLATFORM", "offscreen", 1); }
    ~OffscreenDisplay() { ::unsetenv("QT_QPA_PLATFORM"); }
};

}  // namespace

TEST_F(FaultTest, ATerminalRunLoadsNeitherTheFormsNorQt) {
    Source(u"a.wav", 0.3);
    std::string report;
    {
        OffscreenDisplay display;
        LoaderReport loader(StringToUtf8(dir.Path()));
        QvtRun run = Qvt({u"convert", u"--to", u"Wave", u"--folder", out, src});
        EXPECT_EQ(run.code, 0) << run.output;
        report = loader.Take();
    }
    ASSERT_TRUE(Contains(report, "TrackConverter")) << "the loader's report was not read";
    EXPECT_TRUE(Contains(report, "decoder/Wave.so")) << report;
    EXPECT_FALSE(Contains(report, "libqv_forms")) << report;
    EXPECT_FALSE(Contains(report, "libQt6")) << report;
    EXPECT_TRUE(PathExists(Out(u"a.wav")));
}
