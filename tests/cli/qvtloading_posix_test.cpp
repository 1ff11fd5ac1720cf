// What a conversion from the terminal loads: the program shows it on the
// terminal without its forms module and the window toolkit under it (Qt,
// some fifty libraries), even with a display at hand. The window runs of
// the frontend tests load them.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/cli/faultfixture.h"

namespace {

// Sets the variables for the programs a test starts, until the object goes.
class LoaderReport {
public:
    explicit LoaderReport(const std::string& folder) : prefix(folder + "loader") {
        ::setenv("LD_DEBUG", "files", 1);
        ::setenv("LD_DEBUG_OUTPUT", prefix.c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    ~LoaderReport() {
        ::unsetenv("LD_DEBUG");
        ::unsetenv("LD_DEBUG_OUTPUT");
        ::unsetenv("QT_QPA_PLATFORM");
    }
    // Every process's report, one after the other.
    std::string Text() const {
        std::string text;
        std::filesystem::path folder = std::filesystem::path(prefix).parent_path();
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().filename().string().rfind("loader.", 0) != 0) continue;
            std::ifstream in(entry.path());
            std::stringstream part;
            part << in.rdbuf();
            text += part.str();
        }
        return text;
    }

private:
    std::string prefix;
};

}  // namespace

TEST_F(FaultTest, ATerminalRunLoadsNeitherTheFormsNorQt) {
    Source(u"a.wav", 0.3);
    std::string report;
    {
        LoaderReport loader(StringToUtf8(dir.Path()));
        QvtRun run = Qvt({u"convert", u"--to", u"Wave", u"--folder", out, src});
        EXPECT_EQ(run.code, 0) << run.output;
        report = loader.Text();
    }
    ASSERT_TRUE(Contains(report, "TrackConverter")) << "the loader's report was not read";
    EXPECT_TRUE(Contains(report, "decoder/Wave.so")) << report;
    EXPECT_FALSE(Contains(report, "libqv_forms")) << report;
    EXPECT_FALSE(Contains(report, "libQt6")) << report;
    EXPECT_TRUE(PathExists(Out(u"a.wav")));
}
