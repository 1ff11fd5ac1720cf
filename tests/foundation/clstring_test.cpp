#include "foundation/clstring.h"

#include <gtest/gtest.h>

#include "tests/support/testfolder.h"

TEST(ClString, NewString_EmptyOnSentinelWithoutHeap) {
    clString s;
    EXPECT_EQ(s.size, 1);
    EXPECT_EQ(s.Length(), 0);
    EXPECT_TRUE(s.OnSentinel());
    EXPECT_EQ(s.capacity, 0);
    EXPECT_EQ(s.CharAt(1), 0);
    clString fromNull(static_cast<const char16_t*>(nullptr));
    EXPECT_TRUE(fromNull.OnSentinel());
}

TEST(ClString, AssignEmpty_KeepsSentinelOrBuffer) {
    clString s;
    s.Assign(u"");
    EXPECT_TRUE(s.OnSentinel());
    EXPECT_EQ(s.capacity, 0);
    s = u"abc";
    char16_t* buffer = s.text;
    s.Assign(u"");
    EXPECT_EQ(s.text, buffer);
    EXPECT_EQ(s.size, 1);
    EXPECT_EQ(s.text[0], 0);
    s.Clear();
    EXPECT_EQ(s.text, buffer);
}

TEST(ClString, Assign_LengthCountsTerminatorAndForcesLastUnitToZero) {
    clString s;
    s.Assign(u"abcdef", 4);
    EXPECT_EQ(U(s), u"abc");
    EXPECT_EQ(s.capacity, 4);
    s.Assign(u"xyz", 1);
    EXPECT_EQ(s.Length(), 0);
    s.Assign(u"hello", clStringLast);
    EXPECT_EQ(U(s), u"hello");
}

TEST(ClString, Assign_ReusesBufferWhenItFitsAndTakesExactSizeWhenNot) {
    clString s(u"abcdefgh");
    char16_t* buffer = s.text;
    s = u"xy";
    EXPECT_EQ(s.text, buffer);
    s = u"0123456789012";
    EXPECT_EQ(s.capacity, 14);
}

TEST(ClString, SetLength_PadsWithSpacesOrCuts) {
    clString s(u"ab");
    s.SetLength(5);
    EXPECT_EQ(U(s), u"ab   ");
    s.SetLength(1);
    EXPECT_EQ(U(s), u"a");
    s.SetLength(-1);
    EXPECT_EQ(U(s), u"a");
}

TEST(ClString, GrowthMargins_AppendInsertAndGrowing) {
    clString a(u"abc");  // capacity 4
    a.Append(u"de");
    EXPECT_EQ(a.capacity, 6 + 25);
    clString b(u"abc");
    b.Insert(u"X", 2);
    EXPECT_EQ(U(b), u"aXbc");
    EXPECT_EQ(b.capacity, 5 + 32);
    clString c(u"abc");
    c.AppendGrowing(u"defghi");
    EXPECT_EQ(c.capacity, 10 + 10 / 3);
    clString d(u"ab");
    d.InsertCharAt(u'Z', clStringLast);
    EXPECT_EQ(U(d), u"abZ");
    EXPECT_EQ(d.capacity, 4 + 32);
}

TEST(ClString, Insert_PositionsAndOutOfRange) {
    clString s(u"abc");
    s.Insert(u"<", 1);
    s.Insert(u">", s.size);
    EXPECT_EQ(U(s), u"<abc>");
    s.Insert(u"!", 0);
    EXPECT_EQ(U(s), u"<abc>");
    s.InsertCharAt(u'!', 0);
    s.InsertCharAt(u'!', 100);
    EXPECT_EQ(U(s), u"<abc>");
}

TEST(ClString, Append_OwnTextIsSafe) {
    clString s(u"ab");
    s.Append(s.text);
    EXPECT_EQ(U(s), u"abab");
    s.Insert(s.text, 1);
    EXPECT_EQ(U(s),
              u"ababab"
              u"ab");
}

TEST(ClString, CharAtAndRemoveCharAt_WithLastSentinelPosition) {
    clString s(u"abc");
    EXPECT_EQ(s.CharAt(clStringLast), u'c');
    EXPECT_EQ(s.CharAt(0), 0);
    EXPECT_EQ(s.CharAt(4), 0);
    EXPECT_EQ(s.RemoveCharAt(clStringLast), u'c');
    EXPECT_EQ(U(s), u"ab");
    EXPECT_EQ(s.RemoveCharAt(9), 0);
    EXPECT_EQ(U(s), u"ab");
}

TEST(ClString, MidAndRight_ClampAndEmptyCases) {
    clString s(u"abc");
    EXPECT_EQ(U(s.Mid(2, 100)), u"bc");
    EXPECT_EQ(U(s.Mid(0, 2)), u"");
    EXPECT_EQ(U(s.Mid(4, 4)), u"");
    EXPECT_EQ(U(s.Mid(3, 2)), u"");
    EXPECT_EQ(U(s.Right(10)), u"abc");
    EXPECT_EQ(U(s.Right(2)), u"bc");
    EXPECT_EQ(U(s.Right(0)), u"");
}

TEST(ClString, Delete_TrustsToAndDoesNotClamp) {
    clString s(u"abcd");
    s.Delete(2, 3);
    EXPECT_EQ(U(s), u"ad");
    clString t(u"abcd");
    t.Delete(3, 6);  // count 4 against size 5: everything goes
    EXPECT_EQ(U(t), u"");
    EXPECT_EQ(t.size, 1);
    clString u(u"abcd");
    u.Delete(3, 5);  // one past the end takes one more from what was kept
    EXPECT_EQ(U(u), u"a");
    clString v(u"abcd");
    v.Delete(3, 4);  // through the last character exactly
    EXPECT_EQ(U(v), u"ab");
    v.Delete(0, 1);
    v.Delete(3, 3);
    v.Delete(2, 1);
    EXPECT_EQ(U(v), u"ab");
}

TEST(ClString, TrimLeftOnlySpacesAndCaseChangesOnlyAscii) {
    clString s(u"  \tx ");
    s.TrimLeft();
    EXPECT_EQ(U(s), u"\tx ");
    s.Trim();
    EXPECT_EQ(U(s), u"\tx");
    clString blanks(u"   ");
    blanks.Trim();
    EXPECT_TRUE(blanks.IsEmpty());
    clString none;
    none.Trim();
    EXPECT_TRUE(none.IsEmpty());
    clString mixed(u"aZ\u00e4\u00c4");
    EXPECT_EQ(U(mixed.Upper()), u"AZ\u00e4\u00c4");
    EXPECT_EQ(U(mixed.Lower()), u"az\u00e4\u00c4");
}

TEST(ClString, Find_StartRulesAndIgnoreCase) {
    clString empty;
    EXPECT_EQ(empty.Find(u"a"), 0);
    EXPECT_EQ(empty.Find(u""), 0);
    clString s(u"abcABC");
    EXPECT_EQ(s.Find(u"BC"), 5);
    EXPECT_EQ(s.Find(u"bc", 3), 0);
    EXPECT_EQ(s.Find(u"bc", 3, true), 5);
    EXPECT_EQ(s.Find(u"", 4), 4);
    EXPECT_EQ(s.Find(u"a", 0), 0);
    EXPECT_EQ(s.Find(u"a", 7), 0);
    EXPECT_EQ(s.FindChar(u'c', 4), 0);
    EXPECT_EQ(s.FindLastChar(u'a'), 1);
}

TEST(ClString, Replace_SkipsInsertedTextInBothModes) {
    clString s(u"aaa");
    s.Replace(u"a", u"aa");
    EXPECT_EQ(U(s), u"aaaaaa");
    clString t(u"xAbxaB");
    t.Replace(u"ab", u"ab-AB", true);
    EXPECT_EQ(U(t), u"xab-ABxab-AB");
    clString u(u"abc");
    u.Replace(u"", u"z");
    u.Replace(u"b", u"");
    EXPECT_EQ(U(u), u"ac");
}

TEST(ClString, Compare_LimitsCaseAndNull) {
    clString s(u"abc");
    EXPECT_EQ(s.Compare(u"ab", -1), 0);
    EXPECT_EQ(s.Compare(u"abd", -1), -1);
    EXPECT_EQ(s.Compare(nullptr), 1);
    EXPECT_EQ(s.Compare(u"abcd"), -1);
    EXPECT_EQ(s.Compare(u"ab"), 1);
    EXPECT_EQ(s.Compare(u"ABC", 0, true), 0);
    EXPECT_EQ(s.Compare(u"abX", 2), 0);
    EXPECT_EQ(clString(u"\u00c4").Compare(u"\u00e4", 0, true), -1);
    // Reading taken: with the limit -1 an empty other text is a prefix of
    // every text ("starts with" semantics), not "no limit".
    EXPECT_EQ(s.Compare(u"", -1), 0);
}

TEST(ClString, ToInt64_ReadsWhatItCanAndWraps) {
    struct Case {
        const char16_t* text;
        int64_t value;
    } cases[] = {
        {u"   +42", 42},
        {u"-", 0},
        {u"+-1", 0},
        {u"12abc", 12},
        {u"abc", 0},
        {u"", 0},
        {u"- 1", 0},
        {u"-9223372036854775808", INT64_MIN},
        {u"18446744073709551617", 1},
        {u"\t5", 0},
    };
    for (const Case& c : cases)
        EXPECT_EQ(clString(c.text).ToInt64(), c.value) << std::string(clString(c.text).ToUtf8());
}

TEST(ClString, NumberTexts) {
    clString s;
    s.FromInt64(INT64_MIN);
    EXPECT_EQ(U(s), u"-9223372036854775808");
    s.FromInt64(0);
    EXPECT_EQ(U(s), u"0");
    s.FromUInt64(UINT64_MAX);
    EXPECT_EQ(U(s), u"18446744073709551615");
    s.FromHex(0);
    EXPECT_EQ(U(s), u"0");
    s.FromHex(0xBEEF01);
    EXPECT_EQ(U(s), u"BEEF01");
}

TEST(ClString, ToUtf8_NonAsciiEmojiAndLoneSurrogate) {
    clString s(u"A\u00e9\U0001F3B5");
    EXPECT_STREQ(s.ToUtf8(), "A\xC3\xA9\xF0\x9F\x8E\xB5");
    EXPECT_EQ(s.narrowSize, (s.size + 2) * 6);
    const char16_t lone[] = {u'x', 0xD800, 0};
    clString bad(lone);
    EXPECT_STREQ(bad.ToUtf8(), "x\xEF\xBF\xBD");
}

TEST(ClString, Move_LeavesSourceOnSentinelAndKeepsTag) {
    clString a(u"text");
    a.tag = 7;
    a.ToUtf8();
    clString b(static_cast<clString&&>(a));
    EXPECT_EQ(U(b), u"text");
    EXPECT_EQ(b.tag, 7u);
    EXPECT_EQ(b.narrow, nullptr);
    EXPECT_TRUE(a.OnSentinel());
    EXPECT_EQ(a.tag, 0u);
    EXPECT_NE(a.narrow, nullptr);  // the source keeps its own cache
    clString c(u"other");
    c.tag = 3;
    c = u"assigned";
    EXPECT_EQ(c.tag, 3u);  // assigning leaves the tag alone
}
