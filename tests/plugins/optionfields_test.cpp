// A library's option description read into fields, values checked against
// it, and the option string made from chosen values.
#include "plugins/optionfields.h"

#include <gtest/gtest.h>

#include "tests/support/testfolder.h"

namespace {

const char16_t* const kSpec =
    u"level|integer|5|0..8|Compression level|how hard\n"
    u"verify|flag|||Verify|decode again\n"
    u"mode|choice|vbr|vbr=Variable,cbr=Constant|Mode|the mode\n"
    u"quality|decimal|5|-1..10|Quality|q\n"
    u"bits|choice||=Same as the source,16=16-bit|Format|f\n"
    u"broken|nonsense|1|2|3|4\n"
    u"short|integer|1\n";

}  // namespace

TEST(OptionFields, TheDescriptionReadsIntoFieldsAndBadLinesAreLeftOut) {
    clOptionFields fields;
    ParseOptionSpec(clString(kSpec), fields);
    ASSERT_EQ(fields.Count(), 5);
    EXPECT_EQ(fields[0].kind, kOptionInteger);
    EXPECT_EQ(fields[0].low, 0);
    EXPECT_EQ(fields[0].high, 8);
    EXPECT_EQ(U(fields[2].choiceLabels[1]), u"Constant");
    EXPECT_EQ(U(fields[4].choices[0]), u"") << "an empty value stands for not given";
    EXPECT_EQ(U(fields[4].choiceLabels[0]), u"Same as the source");
    EXPECT_EQ(fields[3].low, -1);
}

TEST(OptionFields, ValuesAreCheckedAgainstKindAndRange) {
    clOptionFields fields;
    ParseOptionSpec(clString(kSpec), fields);
    EXPECT_TRUE(OptionValueAllowed(fields[0], clString(u"8")));
    EXPECT_FALSE(OptionValueAllowed(fields[0], clString(u"9")));
    EXPECT_FALSE(OptionValueAllowed(fields[0], clString(u"abc")));
    EXPECT_FALSE(OptionValueAllowed(fields[0], clString(u"3x")));
    EXPECT_FALSE(OptionValueAllowed(fields[0], clString(u"2.5"))) << "an integer takes no decimals";
    EXPECT_TRUE(OptionValueAllowed(fields[3], clString(u"-0.5")));
    EXPECT_FALSE(OptionValueAllowed(fields[3], clString(u"-1.5")));
    EXPECT_TRUE(OptionValueAllowed(fields[1], clString(u"1")));
    EXPECT_FALSE(OptionValueAllowed(fields[1], clString(u"yes")));
    EXPECT_TRUE(OptionValueAllowed(fields[2], clString(u"cbr")));
    EXPECT_FALSE(OptionValueAllowed(fields[2], clString(u"CBR"))) << "choices are exact";
    EXPECT_TRUE(OptionValueAllowed(fields[2], clString())) << "not given is always allowed";
}

// Defaults are left out, the description's order is kept, and what the
// description doesn't know stays.
TEST(OptionFields, TheOptionStringHoldsWhatDiffersFromTheDefaultsAndKeepsTheRest) {
    clOptionFields fields;
    ParseOptionSpec(clString(kSpec), fields);
    ReadOptionValues(clString(u"-mode=\"cbr\" -custom=\"a b\" -level=\"5\" -verify=\"1\""), fields);
    EXPECT_EQ(U(fields[2].value), u"cbr");
    EXPECT_EQ(U(fields[0].value), u"5");
    EXPECT_EQ(U(ComposeOptions(fields, clString(u"-mode=\"cbr\" -custom=\"a b\" -level=\"5\" -verify=\"1\""))),
              u"-verify=\"1\" -mode=\"cbr\" -custom=\"a b\"");
    fields[0].value = u"8";
    fields[1].value.Clear();
    EXPECT_EQ(U(ComposeOptions(fields, clString())), u"-level=\"8\" -mode=\"cbr\"");
}
