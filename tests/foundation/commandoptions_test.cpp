#include "foundation/commandoptions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/testfolder.h"

namespace {

using Pairs = std::vector<std::pair<std::u16string, std::u16string>>;

Pairs Parse(const char16_t* text, int32_t start = 1) {
    clCommandOptions o;
    o.Parse(clString(text), start);
    Pairs pairs;
    for (int64_t i = 0; i < o.keys.Count(); ++i) pairs.emplace_back(U(o.keys[i]), U(o.values[i]));
    return pairs;
}

}  // namespace

TEST(CommandOptions, Parse_AllSpellingsOfAValue) {
    Pairs one{{u"key", u"a b"}};
    EXPECT_EQ(Parse(u"-key=\"a b\""), one);
    EXPECT_EQ(Parse(u"-key \"a b\""), one);
    EXPECT_EQ(Parse(u"--key=\"a b\""), one);
    EXPECT_EQ(Parse(u"-key\"a b\""), one);
    EXPECT_EQ(Parse(u"-key = = value"), (Pairs{{u"key", u"value"}}));
    EXPECT_EQ(Parse(u"-list_to_conv C:\\a b.txt"), (Pairs{{u"list_to_conv", u"C:\\a"}}));
}

TEST(CommandOptions, Parse_PositionsAndOddInput) {
    EXPECT_EQ(Parse(u"-a -b=1"), (Pairs{{u"a", u""}, {u"b", u"1"}}));
    EXPECT_EQ(Parse(u"-a=-b"), (Pairs{{u"a", u""}, {u"b", u""}}));  // a value starting with `-` is a key
    EXPECT_EQ(Parse(u"-"), Pairs{});
    EXPECT_EQ(Parse(u"--"), Pairs{});
    EXPECT_EQ(Parse(u"- -x"), (Pairs{{u"x", u""}}));
    EXPECT_EQ(Parse(u"-=v -k"), (Pairs{{u"k", u""}}));
    EXPECT_EQ(Parse(u"-a=\"unbalanced -b=2"), (Pairs{{u"a", u""}, {u"b", u"2"}}));
    EXPECT_EQ(Parse(u"-a=\"x\"-b"), (Pairs{{u"a", u"x"}, {u"b", u""}}));
    EXPECT_EQ(Parse(u"no dash here"), Pairs{});
    EXPECT_EQ(Parse(u"-skip -a=1", 3), (Pairs{{u"a", u"1"}}));  // the search for `-` starts at 3
    EXPECT_EQ(Parse(u"-a=\"{qt}x{qt}\""), (Pairs{{u"a", u"{qt}x{qt}"}}));
}

TEST(CommandOptions, Parse_ManyKeysAndHugeValues) {
    std::u16string text;
    for (int i = 0; i < 4000; ++i) text += u"-k" + std::u16string(1, static_cast<char16_t>(u'a' + i % 26)) + u"=v ";
    clCommandOptions o;
    o.Parse(clString(text.c_str()));
    EXPECT_EQ(o.keys.Count(), 4000);
    std::u16string big(100000, u'x');
    o.Parse(clString((u"-big=\"" + big + u"\" -after").c_str()));
    ASSERT_EQ(o.keys.Count(), 2);
    EXPECT_EQ(o.values[0].Length(), 100000);
}

TEST(CommandOptions, LookupIgnoresCaseAndFirstWins) {
    clCommandOptions o;
    o.Parse(clString(u"-Mode=1 -mode=2 -x"));
    EXPECT_EQ(U(o.Get(u"MODE")), u"1");
    EXPECT_TRUE(o.Has(u"X"));
    EXPECT_FALSE(o.Has(u"y"));
    EXPECT_EQ(U(o.Get(u"y")), u"");
}

TEST(CommandOptions, ProcessLine_QuotedProgramIsSkippedUnquotedIsNot) {
    clCommandOptions quoted;
    quoted.ParseCommandLine(clString(u"\"C:\\Program Files\\x-y\\TrackConverter.exe\" -list_to_conv=\"C:\\a b.txt\""));
    ASSERT_EQ(quoted.keys.Count(), 1);
    EXPECT_EQ(U(quoted.keys[0]), u"list_to_conv");
    EXPECT_EQ(U(quoted.values[0]), u"C:\\a b.txt");
    EXPECT_EQ(U(quoted.GetRawArguments()), u"-list_to_conv=\"C:\\a b.txt\"");
    // Required asymmetry: an unquoted program path is parsed with the rest,
    // so its `-` begins a key.
    clCommandOptions unquoted;
    unquoted.ParseCommandLine(clString(u"C:\\x-y\\TrackConverter.exe -a=1"));
    ASSERT_EQ(unquoted.keys.Count(), 2);
    EXPECT_EQ(U(unquoted.keys[0]), u"y\\TrackConverter.exe");
    EXPECT_EQ(U(unquoted.GetRawArguments()), u"-a=1");
    clCommandOptions bare;
    bare.ParseCommandLine(clString(u"TrackConverter.exe"));
    EXPECT_EQ(U(bare.GetRawArguments()), u"");
    clCommandOptions open;
    open.ParseCommandLine(clString(u"\"no closing quote -a"));
    EXPECT_EQ(open.keys.Count(), 0);
    EXPECT_EQ(U(open.GetRawArguments()), u"\"no closing quote -a");
    clCommandOptions spaced;
    spaced.ParseCommandLine(clString(u"\"p\"    <config>   "));
    EXPECT_EQ(U(spaced.GetRawArguments()), u"<config>");
}
