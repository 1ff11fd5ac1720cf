#include "foundation/optionvalue.h"

#include <gtest/gtest.h>

#include "tests/support/testfolder.h"

TEST(OptionValue, EscapesOnlyWhatWouldEndOrBreakAValue) {
    EXPECT_EQ(U(EscapeOptionValue(clString(u"C:\\Music\\a b=c.flac"))), u"C:\\Music\\a b=c.flac");
    EXPECT_EQ(U(EscapeOptionValue(clString(u"12\" 100% \r\n\x1f"))), u"12%22 100%25 %0D%0A%1F");
    EXPECT_EQ(U(EscapeOptionValue(clString())), u"");
}

TEST(OptionValue, EveryUnitButNulComesBack) {
    clString all;
    all.SetCapacity(0x10000);
    for (int32_t unit = 1; unit < 0x10000; ++unit) all.text[unit - 1] = static_cast<char16_t>(unit);
    all.text[0xFFFF] = 0;
    all.size = 0x10000;
    clString escaped = EscapeOptionValue(all);
    EXPECT_EQ(escaped.FindChar(u'"'), 0);
    clString back;
    ASSERT_TRUE(UnescapeOptionValue(escaped.text, escaped.Length(), back));
    EXPECT_EQ(U(back), U(all));
}

TEST(OptionValue, OnlyWellFormedEscapesAreRead) {
    clString value(u"keep");
    for (const char16_t* bad : {u"%", u"%2", u"%G0", u"a%2", u"%00"}) {
        EXPECT_FALSE(UnescapeOptionValue(bad, clTextLength(bad), value))
            << std::string(bad, bad + clTextLength(bad)).c_str();
        EXPECT_TRUE(value.IsEmpty());
    }
    ASSERT_TRUE(UnescapeOptionValue(u"%41%2a%2A", 9, value));
    EXPECT_EQ(U(value), u"A**");
}
