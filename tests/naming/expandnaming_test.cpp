#include "naming/expandnaming.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "foundation/stringlist.h"
#include "plugins/taglist.h"
#include "tests/support/testfolder.h"

namespace {

using Tags = std::initializer_list<std::pair<const char16_t*, const char16_t*>>;

// Expands in Windows syntax (the language's own), so the examples read as
// they would be typed.
std::u16string Expand(const char16_t* naming, Tags tags = {}, const clStringList* extras = nullptr) {
    clTagList list;
    for (const auto& [name, value] : tags) list.AddTag(name, value);
    return U(ExpandNaming(clString(naming), list, extras, WindowsPathSyntax()));
}

}  // namespace

TEST(ExpandNaming, WorkedExampleAndQuoting) {
    EXPECT_EQ(Expand(u"[MAXLENGTH]8,[UPPER][artist][][]", {{u"artist", u"Ann, Beth"}}), u"ANN, BET");
    EXPECT_EQ(Expand(u""), u"");
    // A value can't break the syntax: its bracket and comma stay literal.
    EXPECT_EQ(Expand(u"[title]", {{u"title", u"[artist]"}, {u"artist", u"A"}}), u"[artist]");
    EXPECT_EQ(Expand(u"[UPPER][title][]", {{u"title", u"a,b[c]"}}), u"A,B[C]");
    // A value never makes a folder; the naming string's own \ do.
    EXPECT_EQ(Expand(u"[artist]\\[title]", {{u"artist", u"Up\\Down"}, {u"title", u"x"}}), u"Up-Down\\x");
    EXPECT_EQ(Expand(u"[origpath]", {{u"origpath", u"Music\\Album"}}), u"Music\\Album");
    // Users may type the substitutes themselves.
    EXPECT_EQ(Expand(u"a<COMMA_>b<brackets_>c"), u"a,b[c");
}

TEST(ExpandNaming, ItemsMultiValuesAndTagForms) {
    Tags tags = {{u"artist", u"Alpha & Beta\rGamma"}};
    EXPECT_EQ(Expand(u"[artist]", tags), u"Alpha & Beta");
    EXPECT_EQ(Expand(u"[ARTIST]", tags), u"Alpha & Beta");
    EXPECT_EQ(Expand(u"[multitag]artist[]", tags), u"Alpha & Beta; Gamma");
    EXPECT_EQ(Expand(u"[tags]artist,_COMMA_[]", tags), u"Alpha & Beta,Gamma");
    EXPECT_EQ(Expand(u"[tags]artist[]x", tags), u"x");        // not two pieces: the form vanishes
    EXPECT_EQ(Expand(u"[tag]artist", tags), u"[tag]artist");  // no end mark: stays
    EXPECT_EQ(Expand(u"[Title]-[foo]-[album]", {{u"title", u"T"}}), u"T-[foo]-");
    // The first item of a name wins.
    EXPECT_EQ(Expand(u"[genre]", {{u"genre", u"Pop"}, {u"GENRE", u"Rock"}}), u"Pop");
}

TEST(ExpandNaming, NumberItems) {
    Tags fifteen = {{u"track", u"5/15"}, {u"disc", u"1/2"}};
    EXPECT_EQ(Expand(u"[track]|[track_unpad]|[track_total]|[track_total_unpad]", fifteen), u"05|5|15|15");
    EXPECT_EQ(Expand(u"[disc]|[disc_total]", fifteen), u"1|2");
    EXPECT_EQ(Expand(u"[track]|[track_unpad]|[track_total]", {{u"track", u"05"}}), u"05|5|");
    EXPECT_EQ(Expand(u"[track]", {{u"track", u"100"}}), u"100");
    EXPECT_EQ(Expand(u"[track_unpad]", {{u"track", u"007"}}), u"07");
    EXPECT_EQ(Expand(u"[disc_total]", {{u"disc", u"1"}}), u"");
}

TEST(ExpandNaming, Conditionals) {
    EXPECT_EQ(Expand(u"[IFCOMP]x[]", {{u"compilation", u"maybe"}}), u"x");
    EXPECT_EQ(Expand(u"[IFCOMP]x[]", {{u"compilation", u"no"}}), u"");
    EXPECT_EQ(Expand(u"[IFCOMP]x[]|[compilation]", {{u"compilation", u"YES"}}), u"x|1");
    EXPECT_EQ(Expand(u"[IF!COMP]x[]"), u"x");
    // Not a compilation: empty, "0", "false" and "no" in any case; any other
    // number is, and reads as "1".
    for (const char16_t* no : {u"", u"0", u"false", u"FALSE", u"No", u"nO"}) {
        EXPECT_EQ(Expand(u"[IFCOMP]c[][IF!COMP]n[]", {{u"compilation", no}}), u"n")
            << std::string(no, no + clTextLength(no));
    }
    EXPECT_EQ(Expand(u"[IFCOMP]c[]|[compilation]", {{u"compilation", u"2"}}), u"c|1");
    EXPECT_EQ(Expand(u"[IFCOMP]c[]|[compilation]", {{u"compilation", u"-1"}}), u"c|1");
    EXPECT_EQ(Expand(u"[IFMULTI]m[][IF!MULTI]s[]", {{u"disc", u"1/2"}}), u"m");
    EXPECT_EQ(Expand(u"[IFMULTI]m[][IF!MULTI]s[]", {{u"disc", u"3"}}), u"s");
    EXPECT_EQ(Expand(u"[IFEQUALS]genre,Rock,x[]", {{u"genre", u"Pop\rRock"}}), u"x");
    EXPECT_EQ(Expand(u"[IFEQUALS]Rock,Rock,x[]"), u"x");
    EXPECT_EQ(Expand(u"[IF!EQUALS]genre,rock,a_COMMA_b[]", {{u"genre", u"Jazz"}}), u"a,b");
    EXPECT_EQ(Expand(u"[IFVALUE]unknown tag,a,b[]"), u"b");
    // The operand is the tag, however it is written.
    Tags artist = {{u"artist", u"Z"}};
    EXPECT_EQ(Expand(u"[IFVALUE][artist],a,b[]", artist), u"a");
    EXPECT_EQ(Expand(u"[IFVALUE][tag]artist[],a,b[]", artist), u"a");
    EXPECT_EQ(Expand(u"[IF][artist],=,,a,b[]"), u"a");
    EXPECT_EQ(Expand(u"[IF][year],len=,4,x,y[]", {{u"year", u"1999"}}), u"x");
    EXPECT_EQ(Expand(u"[IF][year],len<,4,x,y_COMMA_z[]", {{u"year", u"1999"}}), u"y,z");
    EXPECT_EQ(Expand(u"[IF]a,LEN=,1,x,y[]"), u"y");  // conditions are exact
}

TEST(ExpandNaming, StringFunctions) {
    EXPECT_EQ(Expand(u"[RIGHT]0,abc[]|[RIGHT]10,abc[]|[RIGHT]2,abc[]"), u"|abc|bc");
    EXPECT_EQ(Expand(u"[GRAB]2,3,abcd[]|[GRAB]2,0,abcd[]"), u"bc|bcd");
    EXPECT_EQ(Expand(u"[GRAB]1,1,[artist][]\\x"), u"\\x");
    EXPECT_EQ(Expand(u"[DEL]2,3,abcd[]|[DEL]2,0,abcd[]"), u"ad|a");
    EXPECT_EQ(Expand(u"[TRIM]  a b  []"), u"a b");
    EXPECT_EQ(Expand(u"[SETLEN]5,48,0,7[]"), u"00007");
    EXPECT_EQ(Expand(u"[SETLEN]5,0,45,7[]"), u"7----");
    EXPECT_EQ(Expand(u"[SETLEN]5,0,0,7[]"), u"7    ");
    EXPECT_EQ(Expand(u"[SETLEN]2,0,0,abcd[]|[SETLEN]-1,48,0,abc[]"), u"ab|abc");
    EXPECT_EQ(Expand(u"[MAXLENGTH]3,a,b,c[]"), u"a,b");
    // A quoted comma is one character to MAXLENGTH, eight to RIGHT.
    EXPECT_EQ(Expand(u"[MAXLENGTH]3,[title][]", {{u"title", u"a,bc"}}), u"a,b");
    EXPECT_EQ(Expand(u"[RIGHT]8,[title][]", {{u"title", u"a,bc"}}), u"omma_>bc");
    EXPECT_EQ(Expand(u"[REPLACE]THE ,,[title][]", {{u"title", u"The Band, the Fans"}}), u"Band, Fans");
    EXPECT_EQ(Expand(u"[REPLACE],x,abc[]"), u"abc");
    EXPECT_EQ(Expand(u"[WORD][artist],1[]", {{u"artist", u"Smith, John"}}), u"Smith");
    EXPECT_EQ(Expand(u"[WORD]a;  b c,2[]|[WORD]a b,5[]|[WORD]a b,0[]"), u"a;  b|a b|a b");
    EXPECT_EQ(Expand(u"[WORD]one; two,1[]"), u"one");
    EXPECT_EQ(Expand(u"[SPLIT]-,a-b-c,2[]|[SPLIT]-,a-b,5[]|[SPLIT]-,a-b,0[]"), u"b||a");
    EXPECT_EQ(Expand(u"[UPPER]ab<comma_>é[]|[LOWER]ÀB[]"), u"AB,é|Àb");
}

TEST(ExpandNaming, GroupsAndDates) {
    for (auto [artist, group] :
         {std::pair{u"Zeta", u"y-z"}, {u"able", u"a-c"}, {u"2Late", u"0-9"}, {u"\u00c9mile", u"@"}, {u"", u"@"}}) {
        EXPECT_EQ(Expand(u"[GROUP]3,[artist][]", {{u"artist", artist}}), group);
    }
    EXPECT_EQ(Expand(u"[GROUP]1,  q[]|[GROUP]5,zz[]|[GROUP]0,b[]"), u"q|z-z|b");
    Tags date = {{u"source_date", u"2024,3,7,9,5,4,12"}};
    EXPECT_EQ(Expand(u"[source_date]yyyymmdd hh.xx.ss.ms[]", date), u"20240307 09.05.04.012");
    EXPECT_EQ(Expand(u"[SOURCE_DATE]yy-m-d h:x:s,ignored[]", date), u"24-3-7 9:5:4");
    EXPECT_EQ(Expand(u"[SOURCE_DATE]yyyy[]", {{u"source_date", u"2024,3"}}), u"");
}

TEST(ExpandNaming, FoldersAndTheirSurgery) {
    Tags path = {{u"origpath", u"Music\\Pop\\Album"}};
    EXPECT_EQ(Expand(u"[FRONTFOLDER]1[]|[BACKFOLDER]1[]|[BACKFOLDER]9[]|[FRONTFOLDER]0[]", path), u"Music|Album||");
    EXPECT_EQ(Expand(u"[TRIMFIRSTFOLDER][origpath][]", path), u"Pop\\Album");
    EXPECT_EQ(Expand(u"[TRIMFIRSTFOLDER][TRIMFIRSTFOLDER][origpath][][]", path), u"Album");
    EXPECT_EQ(Expand(u"[TRIMLASTFOLDER][origpath][]", path), u"Music\\Pop\\");
    EXPECT_EQ(Expand(u"[TRIMFIRSTFOLDER]Music[]|[TRIMLASTFOLDER]Music[]"), u"|Music");
    // The root search starts at the third character, so a one-letter first
    // folder takes the second with it.
    EXPECT_EQ(Expand(u"[TRIMFIRSTFOLDER]a\\bc\\d[]"), u"d");
}

TEST(ExpandNaming, EvaluationOrderAndWhatCannotBeEvaluated) {
    // Inner functions first; an inner result's commas part the outer's
    // arguments.
    EXPECT_EQ(Expand(u"[RIGHT]2,[LOWER]ABC[][]"), u"bc");
    EXPECT_EQ(Expand(u"[GRAB][SPLIT]-,1-2,1[],2,abcdef[]"), u"ab");
    // A rightmost function without end mark freezes everything to its left.
    EXPECT_EQ(Expand(u"[UPPER]a[] [LOWER]B"), u"[UPPER]a[] [LOWER]B");
    EXPECT_EQ(Expand(u"x[]y"), u"x[]y");
    // Too many arguments join the last one.
    EXPECT_EQ(Expand(u"[IFVALUE]t,a,b,c[]"), u"b,c");
}

TEST(ExpandNaming, ExtrasAreItemsThatMayMakeFolders) {
    clStringList extras;
    extras.Add(u"[sub]");
    extras.Add(u"plain");
    extras.Add(u"[Caps]");
    Tags tags = {{u"[sub]", u"A\\B"}, {u"plain", u"P"}, {u"[Caps]", u"C"}, {u"title", u"T\\U"}};
    EXPECT_EQ(Expand(u"[sub]\\plain-[title]-[Caps]", tags, &extras), u"A\\B\\P-T-U-[Caps]");
}

TEST(ExpandNaming, PosixSyntaxGivesTheSameFolders) {
    clTagList tags;
    tags.AddTag(u"artist", u"AC/DC\\x");
    tags.AddTag(u"origpath", u"home/u/Music");
    tags.AddTag(u"origfilename", u"a\\b");
    clString result = ExpandNaming(clString(u"[artist]/[TRIMFIRSTFOLDER][origpath][]\\[origfilename]"), tags, nullptr,
                                   PosixPathSyntax());
    EXPECT_EQ(U(result), u"AC-DC-x\\u\\Music\\a-b");
    EXPECT_EQ(U(ExpandNaming(clString(u"[BACKFOLDER]1[]"), tags, nullptr, PosixPathSyntax())), u"Music");
}

TEST(NamingNeedsTags, ExactlyItsList) {
    // Every key of the list, and no other item: the items keep this mark
    // in their own table, beside the forms and functions.
    for (const char16_t* yes : {u"[artist]",
                                u"[album]",
                                u"[album artist]",
                                u"[composer]",
                                u"[conductor]",
                                u"[title]",
                                u"[genre]",
                                u"[year]",
                                u"[track]",
                                u"[tag]",
                                u"[track_unpad]",
                                u"[track_total_unpad]",
                                u"[track_total]",
                                u"[disc]",
                                u"[disc_total]",
                                u"[band]",
                                u"[rating]",
                                u"[tempo]",
                                u"[label]",
                                u"[isrc]",
                                u"[upc]",
                                u"[compilation]",
                                u"[mood]",
                                u"[style]",
                                u"[copyright]",
                                u"[subtitle]",
                                u"[length]",
                                u"[orchestra]",
                                u"[soloists]",
                                u"[instrument]",
                                u"[period]",
                                u"[chorus]",
                                u"[catalog #]",
                                u"[work]",
                                u"[movement name]",
                                u"[movement count]",
                                u"[movement number]",
                                u"[length_mmss]",
                                u"[length_hhmmss]",
                                u"[id_tag]",
                                u"[audio_quality]",
                                u"[gapless]",
                                u"[frequency]",
                                u"[channels]",
                                u"[channels_subone]",
                                u"[bits_per_sample]",
                                u"[bytes_per_sample]",
                                u"[bitrate]",
                                u"[k_bitrate]",
                                u"[ifequals]",
                                u"[IFVALUE]",
                                u"[IF!EQUALS]",
                                u"[TAGS]",
                                u"[IFCOMP]",
                                u"[IF!COMP]",
                                u"[IFMULTI]",
                                u"[IF!MULTI]"}) {
        EXPECT_TRUE(NamingNeedsTags(clString(yes))) << std::string(yes, yes + clTextLength(yes));
    }
    for (const char16_t* no :
         {u"[title sort]", u"[artist sort]", u"[album artist sort]", u"[album sort]", u"[soloistssort]",
          u"[composersort]", u"[conductorsort]", u"[unique]", u"[discunique]", u"[encoder+]", u"[extension]",
          u"[origdrive]", u"[subpath]", u"[protected]", u"[date]", u"[time]", u"[day_of_week]", u"[now_year]"}) {
        EXPECT_FALSE(NamingNeedsTags(clString(no))) << std::string(no, no + clTextLength(no));
    }
    EXPECT_TRUE(NamingNeedsTags(clString(u"[ARTIST]")));
    EXPECT_TRUE(NamingNeedsTags(clString(u"x[ifvalue]y")));
    EXPECT_TRUE(NamingNeedsTags(clString(u"[tags]a,b[]")));
    for (const char16_t* no : {u"[origpath]\\[origfilename]", u"[title sort]", u"[length_seconds]", u"[encoder]",
                               u"[multitag]x[]", u"[IF]a,=,b,c,d[]", u"[SOURCE_DATE]yyyy[]", u"[cddb_id]", u""}) {
        EXPECT_FALSE(NamingNeedsTags(clString(no))) << std::string(no, no + clTextLength(no));
    }
}

TEST(NextArgument, TakesUpToTheCommaOrAll) {
    clString arguments(u"a,b,c");
    EXPECT_EQ(U(NextArgument(arguments, false)), u"a");
    EXPECT_EQ(U(arguments), u"b,c");
    EXPECT_EQ(U(NextArgument(arguments, true)), u"b,c");
    EXPECT_EQ(U(arguments), u"");
    EXPECT_EQ(U(NextArgument(arguments, false)), u"");
}

// Forms the language would evaluate for ever. Each must come back, as it
// stands once the bound is reached, and nothing else may change.
TEST(ExpandNaming, EveryExpansionEnds) {
    // A source folder named like a function call (folder names are not quoted).
    std::u16string folder = Expand(u"[BACKFOLDER]1[]", {{u"origpath", u"Music\\[BACKFOLDER]1[]"}});
    EXPECT_NE(folder.find(u"[BACKFOLDER]1"), std::u16string::npos);
    // A file's own source_date that holds the call that reads it.
    Tags date = {{u"source_date", u"[SOURCE_DATE]y[],1,1,1,1,1,1"}};
    EXPECT_LE(Expand(u"[SOURCE_DATE]yyyy[]", date).size(), size_t{clNamingMaxText} * 2);
    // A tag value passed through [SPLIT], which returns its piece unquoted.
    Tags split = {{u"title", u"[SOURCE_DATE]y[]"}, {u"source_date", u"[SOURCE_DATE]y[],1,1,1,1,1,1"}};
    EXPECT_FALSE(Expand(u"[SPLIT]|,[title],1[]", split).empty());
    // An empty extras name, and one whose value recreates it.
    clStringList empty;
    empty.Add(u"");
    EXPECT_FALSE(Expand(u"x", {{u"", u"y"}}, &empty).empty());
    clStringList again;
    again.Add(u"foo");
    EXPECT_NE(Expand(u"foo", {{u"foo", u"xfoo"}}, &again).find(u"xxx"), std::u16string::npos);
    // Growth is refused rather than let run to memory's end.
    EXPECT_EQ(Expand(u"[SETLEN]999999999,48,0,1[]").size(), size_t{clNamingMaxText});
    std::u16string doubled = Expand(u"[REPLACE]a,aaaaaaaaaaaaaaaa,[REPLACE]a,aaaaaaaaaaaaaaaa,[title][][]",
                                    {{u"title", std::u16string(2000, u'a').c_str()}});
    EXPECT_EQ(doubled.size(), 16u * 2000);  // the inner one fits, the outer one is refused
}

// Number items split the first value of the tag as it was written: the
// "/" before its total is no folder and no "-", and a second value is
// never part of the number.
TEST(ExpandNaming, NumberItemsTakeTheFirstValueBeforeTheTotal) {
    Tags tags = {{u"track", u"1/10"}, {u"disc", u"2/3"}};
    EXPECT_EQ(Expand(u"[track] [track_unpad] [track_total] [track_total_unpad]", tags), u"01 1 10 10");
    EXPECT_EQ(Expand(u"[disc] [disc_total]", tags), u"2 3");
    EXPECT_EQ(Expand(u"[IFMULTI]multi[][IF!MULTI]single[]", tags), u"multi");
    EXPECT_EQ(Expand(u"[IFMULTI]multi[][IF!MULTI]single[]", {{u"disc", u"1/1"}}), u"single");
    EXPECT_EQ(Expand(u"[track]", {{u"track", u"3\r4"}}), u"03") << "only the first of several values";
    EXPECT_EQ(Expand(u"[track]", {{u"track", u"a/b\\c/9"}}), u"0a") << "padded as any one character is";
    EXPECT_EQ(Expand(u"[disc_total]", {{u"disc", u"1/x\\y"}}), u"x-y");
}
