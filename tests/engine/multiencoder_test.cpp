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

// What the multi encoder's page writes: read back item for item, with the
// quotes of options and effects nested as {mqt}, and empty targets left
// empty (a run fills them in, the page shows them as they are).
TEST(MultiEncoder, ItemsWrittenReadBackTheSame) {
    clMultiEncoderItems items;
    auto* first = new clMultiEncoderItem();
    first->encoderName = u"Wave";
    first->encoderOptions = u"-bits=\"24\"";
    first->folder = u"/out/wave";
    first->namingRule = u"[artist] - [title]";
    first->dspEffects = u"-dspeffect1=\"Resample=-rate={qt}44100{qt}\"";
    items.Add(first);
    auto* second = new clMultiEncoderItem();
    second->encoderName = u"MP3 (Lame)";
    items.Add(second);
    const clString text = BuildMultiItems(items);
    EXPECT_EQ(Text(text),
              u"-enc1=\"Wave=-bits={mqt}24{mqt}\" -encMopt1=\"-tofolder={mqt}/out/wave{mqt} -dynamic={mqt}[artist] - "
              u"[title]{mqt}\" -encDSP1=\"-dspeffect1={mqt}Resample=-rate={qt}44100{qt}{mqt}\" -enc2=\"MP3 (Lame)=\" "
              u"-encMopt2=\"\" -encDSP2=\"\"");
    EXPECT_EQ(CountMultiItems(clString(u"[Multi Encoder]"), text), 2);

    clMultiEncoderItems read;
    ReadMultiItems(text, read);
    ASSERT_EQ(read.Count(), 2);
    for (int64_t i = 0; i < 2; ++i) {
        EXPECT_EQ(Text(read[i].encoderName), Text(items[i].encoderName));
        EXPECT_EQ(Text(read[i].encoderOptions), Text(items[i].encoderOptions));
        EXPECT_EQ(Text(read[i].folder), Text(items[i].folder));
        EXPECT_EQ(Text(read[i].namingRule), Text(items[i].namingRule));
        EXPECT_EQ(Text(read[i].dspEffects), Text(items[i].dspEffects));
    }
    // The same text for a run: the second item's target is filled in.
    ParseMultiItems(text, read);
    EXPECT_EQ(Text(read[0].folder), u"/out/wave");
    EXPECT_EQ(Text(read[1].namingRule), u"[origpath]\\[origfilename]");
    EXPECT_FALSE(read[1].folder.IsEmpty());

    EXPECT_TRUE(MultiItemTextFits(clString(u"[artist]\\[title]")));
    EXPECT_FALSE(MultiItemTextFits(clString(u"say \"hi\"")));
    EXPECT_TRUE(BuildMultiItems(clMultiEncoderItems()).IsEmpty());
}
