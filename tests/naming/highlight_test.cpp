// The coloured view of a naming rule: items as blue labels, functions kept
// in green capitals, the rest black, and the marker between folder and
// naming gone; the runs read back from the markup.
#include "naming/highlight.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

constexpr uint32_t kBlue = 0x780000;  // 0x00BBGGRR of 000-000-120
constexpr uint32_t kGreen = 0x007800;
constexpr uint32_t kBlack = 0;

using Runs = std::vector<std::pair<uint32_t, std::u16string>>;

Runs RunsOf(const char16_t* naming) {
    clMarkupRuns runs;
    RenderMarkup(HighlightNaming(clString(naming)), runs);
    Runs out;
    for (int64_t i = 0; i < runs.Count(); ++i) out.emplace_back(runs[i].color, std::u16string(runs[i].text.text));
    return out;
}

}  // namespace

TEST(HighlightNaming, ItemsBecomeBlueLabelsWhateverTheirCase) {
    EXPECT_EQ(RunsOf(u"[artist]\\[title]"), (Runs{{kBlue, u"Artist"}, {kBlack, u"\\"}, {kBlue, u"Title"}}));
    EXPECT_EQ(RunsOf(u"[ARTIST]"), (Runs{{kBlue, u"Artist"}}));
    EXPECT_EQ(RunsOf(u"[chorus]"), (Runs{{kBlue, u"Chorus"}}));
    // "[album]" doesn't take the start of "[album artist]": a token ends at
    // its bracket.
    EXPECT_EQ(RunsOf(u"[album artist]"), (Runs{{kBlue, u"Album Artist"}}));
    // The second "[extension]" row is never reached.
    EXPECT_EQ(RunsOf(u"[extension]"), (Runs{{kBlue, u"Encoder Extension"}}));
    EXPECT_EQ(RunsOf(u"[work]"), (Runs{{kBlue, u"work"}}));
}

TEST(HighlightNaming, FunctionsStayGreenInCapitalsAndUnknownTextStaysBlack) {
    EXPECT_EQ(RunsOf(u"[multitag]artist[]"), (Runs{{kBlack, u"[multitag]artist"}, {kGreen, u"[]"}}));
    EXPECT_EQ(RunsOf(u"[upper][title][]"), (Runs{{kGreen, u"[UPPER]"}, {kBlue, u"Title"}, {kGreen, u"[]"}}));
    // "[IF]" and "[IFVALUE]" don't disturb each other.
    EXPECT_EQ(RunsOf(u"[IFVALUE]year|x|[][IF]a|b[]"),
              (Runs{{kGreen, u"[IFVALUE]"}, {kBlack, u"year|x|"}, {kGreen, u"[]"}, {kGreen, u"[IF]"}, {kBlack, u"a|b"},
                    {kGreen, u"[]"}}));
    EXPECT_EQ(RunsOf(u"no tokens here"), (Runs{{kBlack, u"no tokens here"}}));
}

TEST(HighlightNaming, TheOutputMarkerVanishesSoFolderAndNamingRunOn) {
    EXPECT_EQ(RunsOf(u"[origdrive]{_._}[origpath]\\[origfilename]"),
              (Runs{{kBlue, u"Source Drive:\\"}, {kBlue, u"Source Path"}, {kBlack, u"\\"}, {kBlue, u"Source Filename"}}));
    EXPECT_EQ(std::u16string(MarkupPlainText(HighlightNaming(clString(u"/m/{_._}[track] [title]"))).text),
              u"/m/TrackNum Title");
}

// A mark whose colour has fewer than three digits puts the reader off:
// the fixed widths are the format's only protection.
TEST(RenderMarkup, ReadsFixedWidthComponents) {
    clMarkupRuns runs;
    RenderMarkup(clString(u"a_RGB_-RGB-255-000-001b"), runs);
    ASSERT_EQ(runs.Count(), 2);
    EXPECT_EQ(runs[0].color, 0u);
    EXPECT_EQ(runs[1].color, 0x0100FFu);
    EXPECT_EQ(std::u16string(runs[1].text.text), u"b");
}
