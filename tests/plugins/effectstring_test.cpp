#include "plugins/effectstring.h"

#include <gtest/gtest.h>

#include "foundation/commandoptions.h"
#include "plugins/taglist.h"
#include "tests/support/testfolder.h"

namespace {

void Parse(const char16_t* text, clEffectList& list) {
    clCommandOptions options;
    options.Parse(clString(text));
    ParseEffectString(options, list);
}

}  // namespace

TEST(EffectString, GapEndsTheListAndEntriesWithoutEqualsVanish) {
    clEffectList list;
    Parse(
        u"-quality=5 -dspeffect1=\"Volume Normalize=-peak=95\" -DSPEFFECT2=\"NoEquals\" "
        u"-dspeffect3=\"=empty name\" -dspeffect5=\"Late=x\"",
        list);
    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(U(list[0].name), u"Volume Normalize");
    EXPECT_EQ(U(list[0].settings), u"-peak=95");  // only the first `=` splits
    EXPECT_EQ(U(list[1].name), u"");
    EXPECT_EQ(U(list[1].settings), u"empty name");
    clEffectList gap;
    Parse(u"-dspeffect1=\"A=1\" -dspeffect3=\"C=3\"", gap);
    EXPECT_EQ(gap.Count(), 1);
}

TEST(EffectString, QuotesAndEqualsSurviveWorkerAndStoredForms) {
    clEffectList list;
    list.Add(clString(u"ID Tag Processing"), clString(u"-set=\"title=A \"quoted\" b\" -x"));
    list.Add(clString(u"Resample"), clString(u""));
    clString worker = BuildEffectString(list);
    EXPECT_EQ(U(worker),
              u" -dspeffect1=\"ID Tag Processing=-set={qt}title=A {qt}quoted{qt} b{qt} -x\""
              u" -dspeffect2=\"Resample=\"");
    clString stored = BuildStoredEffectText(list);
    EXPECT_EQ(stored.CharAt(1), u'-');
    for (const clString* form : {&worker, &stored}) {
        clEffectList back;
        Parse(form->text, back);
        ASSERT_EQ(back.Count(), 2);
        EXPECT_EQ(U(back[0].settings), U(list[0].settings));
        EXPECT_EQ(U(back[1].name), u"Resample");
    }
    // Effects ride in an encoder's option string: other keys are ignored.
    clString options(u"-V 2 -joint");
    options.Append(worker);
    clEffectList inOptions;
    Parse(options.text, inOptions);
    EXPECT_EQ(inOptions.Count(), 2);
}

TEST(EffectString, LiteralQtComesBackAsAQuote) {
    clEffectList list;
    Parse(u"-dspeffect1=\"X=a{qt}b\"", list);
    ASSERT_EQ(list.Count(), 1);
    EXPECT_EQ(U(list[0].settings), u"a\"b");
}

TEST(EffectString, RequiredEffectTakesTheFirstFreeNumber) {
    clString empty;
    AddRequiredEffect(empty, clString(u"Bit Depth=-bits=16"));
    EXPECT_EQ(U(empty), u"-dspeffect1=\"Bit Depth=-bits=16\"");
    clString options(u"-b 320");
    AddRequiredEffect(options, clString(u"Resample=-rate=48000"));
    EXPECT_EQ(U(options), u"-b 320 -dspeffect1=\"Resample=-rate=48000\"");
    clString two(u"-dspeffect1=\"A=1\" -dspeffect2=\"B=2\"");
    AddRequiredEffect(two, clString(u"C=3"));
    clEffectList list;
    Parse(two.text, list);
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(U(list[2].name), u"C");
}

TEST(ApplyTagEffects, OnlyTagEffectsRunAndDeletingOptionsAreDefused) {
    clTagList tags;
    tags.AddTag(u"artist", u"A");
    // "qvtest_tageffect" is the same library under another name: it is never
    // loaded, so only one "edited" tag appears, from the real tag effect.
    ApplyTagEffects(tags, clString(u"-V 2 -dspeffect1=\"qvtest_tageffect=first\" "
                                   u"-dspeffect2=\"id tag processing=-delall -delexcept=x\" "
                                   u"-dspeffect3=\"Missing Library=y\""));
    EXPECT_EQ(U(tags.GetTagValue(u"artist")), u"A");
    EXPECT_EQ(U(tags.GetTagValue(u"edited")), u"-replaceddelall -replaceddelexcept=x");
    int edited = 0;
    for (int64_t i = 0; i < tags.Count(); ++i) edited += tags[i].name.Equals(u"edited") ? 1 : 0;
    EXPECT_EQ(edited, 1);
}
