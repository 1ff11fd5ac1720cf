#include "engine/multiencoder.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/specialfolder.h"

namespace {

std::u16string Text(const clString& text) { return std::u16string(text.text); }

}  // namespace

TEST(MultiEncoder, ItemsCarryTheirOwnEncoderTargetAndEffects) {
    const clString options(
        u"-enc1=\"FLAC=-level={mqt}8{mqt}\" -encMopt1=\"-dynamic={mqt}[artist]\\[title]{mqt} "
        u"-tofolder={mqt}/music/flac{mqt}\""
        u" -encDSP1=\" -dspeffect1={mqt}ReplayGain={mqt}\""
        u" -enc2=\"no equals sign\" -enc3=\"MP3 (Lame)=\" -enc5=\"Opus=\"");
    const clString name(u"[multi encoder]");
    EXPECT_TRUE(IsMultiEncoder(name));
    // The item without "=" counts, the gap at 4 ends the count.
    EXPECT_EQ(CountMultiItems(name, options), 3);
    EXPECT_EQ(CountMultiItems(clString(u"FLAC"), options), 1);
    clMultiEncoderItems items;
    ParseMultiItems(options, items);
    ASSERT_EQ(items.Count(), 2);  // enc2 yields no item; enc5 lies behind the gap
    EXPECT_EQ(Text(items[0].encoderName), u"FLAC");
    EXPECT_EQ(Text(items[0].encoderOptions), u"-level=\"8\"");
    EXPECT_EQ(Text(items[0].namingRule), u"[artist]\\[title]");
    EXPECT_EQ(Text(items[0].folder), u"/music/flac");
    EXPECT_EQ(Text(items[0].dspEffects), u" -dspeffect1=\"ReplayGain=\"");
    EXPECT_EQ(Text(items[1].encoderName), u"MP3 (Lame)");
    EXPECT_EQ(Text(items[1].encoderOptions), u"");
    // No target: the music folder, under the source's own name.
    EXPECT_EQ(Text(items[1].folder), Text(GetSpecialFolder(13)));
    EXPECT_EQ(Text(items[1].namingRule), u"[origpath]\\[origfilename]");
    EXPECT_TRUE(items[1].dspEffects.IsEmpty());
}
