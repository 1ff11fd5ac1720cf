#include "naming/namingfunctions.h"

#include "foundation/pathtext.h"
#include "foundation/stringlist.h"
#include "naming/expandnaming.h"
#include "plugins/taglist.h"

const char16_t* const clNamingTokens[25] = {u"[UPPER]",          u"[LOWER]",     u"[RIGHT]",       u"[GRAB]",
                                            u"[TRIM]",           u"[DEL]",       u"[SETLEN]",      u"[IFCOMP]",
                                            u"[IF!COMP]",        u"[IFMULTI]",   u"[IF!MULTI]",    u"[IFEQUALS]",
                                            u"[IF!EQUALS]",      u"[IF]",        u"[IFVALUE]",     u"[TRIMFIRSTFOLDER]",
                                            u"[TRIMLASTFOLDER]", u"[MAXLENGTH]", u"[FRONTFOLDER]", u"[BACKFOLDER]",
                                            u"[REPLACE]",        u"[WORD]",      u"[GROUP]",       u"[SPLIT]",
                                            u"[SOURCE_DATE]"};

namespace {

enum Token {
    kUpper,
    kLower,
    kRight,
    kGrab,
    kTrim,
    kDel,
    kSetLen,
    kIfComp,
    kIfNotComp,
    kIfMulti,
    kIfNotMulti,
    kIfEquals,
    kIfNotEquals,
    kIf,
    kIfValue,
    kTrimFirstFolder,
    kTrimLastFolder,
    kMaxLength,
    kFrontFolder,
    kBackFolder,
    kReplace,
    kWord,
    kGroup,
    kSplit,
    kSourceDate
};

// Positions and counts come as 64-bit numbers from the text; clString
// works in 32-bit positions.
int32_t Clamp(int64_t value) {
    if (value > clNamingMaxText) return clNamingMaxText + 1;
    if (value < -clNamingMaxText) return -clNamingMaxText - 1;
    return static_cast<int32_t>(value);
}

int32_t NumberArgument(clString& arguments, bool last) { return Clamp(NextArgument(arguments, last).ToInt64()); }

void TrimSpaces(clString& text) {
    int32_t length = text.Length();
    while (length > 0 && text.CharAt(length) == u' ') --length;
    text.SetLength(length);
    text.TrimLeft();
}

clString SetLength(int32_t count, int32_t pre, int32_t post, clString text) {
    if (count < 0) return text;
    if (count > clNamingMaxText) count = clNamingMaxText;
    int32_t length = text.Length();
    if (length > count) {
        text.SetLength(count);
    } else if (length < count) {
        auto padFront = static_cast<char16_t>(pre);
        auto padBack = static_cast<char16_t>(post);
        if (padBack == 0) padBack = u' ';
        char16_t one[2] = {padFront != 0 ? padFront : padBack, 0};
        clString pad;
        for (int32_t i = length; i < count; ++i) pad.AppendGrowing(one);
        if (padFront != 0) {
            text.Insert(pad, 1);
        } else {
            text.Append(pad);
        }
    }
    return text;
}

bool EqualsTagOrValue(const clString& tag, const clString& equals, const clTagList& tags) {
    if (tag.EqualsNoCase(equals)) return true;
    clStringList values;
    values.Split(tags.GetTagValue(tag.text).text, u"\r");
    return values.Find(equals.text, true);
}

clString If(clString& arguments) {
    clString value = NextArgument(arguments, false);
    clString condition = NextArgument(arguments, false);
    clString match = NextArgument(arguments, false);
    clString onMatch = NextArgument(arguments, false);
    clString onNoMatch = NextArgument(arguments, true);
    onMatch.Replace(u"_COMMA_", u",");
    onNoMatch.Replace(u"_COMMA_", u",");
    bool yes = false;
    int64_t length = value.Length();
    if (condition.Equals(u"=")) {
        yes = value.EqualsNoCase(match);
    } else if (condition.Equals(u"len<")) {
        yes = length < match.ToInt64();
    } else if (condition.Equals(u"len>")) {
        yes = length > match.ToInt64();
    } else if (condition.Equals(u"len=")) {
        yes = length == match.ToInt64();
    }
    return yes ? onMatch : onNoMatch;
}

// Folder surgery works on the language's own separator, `\`, on every
// platform, so a naming string keeps its meaning everywhere.
clString TrimFirstFolder(const clString& path) {
    clString rest(path);
    clStringList collected;
    for (;;) {
        clString component = PopLastComponent(rest, WindowsPathSyntax());
        if (component.IsEmpty()) break;
        collected.Add(component);
    }
    if (!rest.IsEmpty()) collected.Add(rest);
    if (collected.Count() > 0) collected.RemoveAt(collected.Count() - 1);
    clString joined;
    for (int64_t i = collected.Count() - 1; i >= 0; --i) {
        joined.AppendGrowing(collected[i]);
        if (i > 0) joined.AppendGrowing(u"\\");
    }
    return joined;
}

clString TrimLastFolder(clString path) {
    if (GetRootLength(path, WindowsPathSyntax()) == 1) return path;
    PopLastComponent(path, WindowsPathSyntax());
    return path;
}

clString Folder(const clStringList& folders, int32_t position, bool fromBack) {
    int64_t index = fromBack ? folders.Count() - position : position - 1;
    if (position < 1 || index < 0 || index >= folders.Count()) return clString();
    return folders[index];
}

clString MaxLength(int32_t limit, clString text) {
    UnquoteNamingText(text);
    if (limit < 0) limit = 0;
    if (text.Length() > limit) {
        // A character beyond U+FFFF is cut whole, never in half.
        char16_t last = limit > 0 ? text.CharAt(limit) : 0;
        text.SetLength(last >= 0xD800 && last <= 0xDBFF ? limit - 1 : limit);
    }
    QuoteNamingText(text);
    return text;
}

clString Replace(clString& arguments) {
    clString search = NextArgument(arguments, false);
    clString replacement = NextArgument(arguments, false);
    clString text = NextArgument(arguments, true);
    search.Replace(u"<comma_>", u",", true);
    replacement.Replace(u"<comma_>", u",", true);
    UnquoteNamingText(text);
    ReplaceWithin(text, search.text, replacement.text, true);
    QuoteNamingText(text);
    return text;
}

clString Word(clString text, int32_t count) {
    if (count <= 0) return text;
    int32_t counter = 1;
    int32_t i = 1;
    int32_t length = text.Length();
    while (i <= length) {
        if (text.CharAt(i) != u' ') {
            ++i;
            continue;
        }
        if (counter == count) {
            text.SetLength(i - 1);
            if (text.CharAt(text.Length()) == u';') text.SetLength(text.Length() - 1);
            int32_t cut = text.Length() - 7;
            if (cut >= 1 && text.Mid(cut, text.Length()).EqualsNoCase(u"<comma_>")) text.SetLength(cut - 1);
            return text;
        }
        while (i <= length && text.CharAt(i) == u' ') ++i;
        ++counter;
    }
    return text;
}

clString Group(int32_t count, const clString& text) {
    if (count < 1) count = 1;
    clString lower = text.Lower();
    lower.TrimLeft();
    char16_t first = lower.CharAt(1);
    if (first >= u'0' && first <= u'9') return clString(u"0-9");
    if (first < u'a' || first > u'z') return clString(u"@");
    int32_t start = (first - u'a') / count * count;
    int32_t end = start + count - 1;
    if (end > 25) end = 25;
    char16_t run[4] = {static_cast<char16_t>(u'a' + start), u'-', static_cast<char16_t>(u'a' + end), 0};
    if (count == 1) run[1] = 0;
    return clString(run);
}

clString Split(clString& arguments) {
    clString on = NextArgument(arguments, false);
    clString text = NextArgument(arguments, false);
    int32_t index = NumberArgument(arguments, true);
    if (index < 1) index = 1;
    on.Replace(u"<comma_>", u",", true);
    UnquoteNamingText(text);
    clStringList pieces;
    pieces.Split(text.text, on.text);
    return index <= pieces.Count() ? clString(pieces[index - 1]) : clString();
}

clString Padded(const clString& number, int32_t digits) {
    clString padded(number);
    while (padded.Length() < digits) padded.Insert(u"0", 1);
    return padded;
}

clString SourceDate(clString format, const clTagList& given) {
    clStringList parts;
    parts.Split(given.GetTagValue(u"SOURCE_DATE").text, u",");
    if (parts.Count() != 7) return clString();
    const clString& year = parts[0];
    // Longer letter groups first: "mm" before "m", "ms" before them all.
    format.Replace(u"ms", Padded(parts[6], 3).text);
    format.Replace(u"yyyy", year.text);
    format.Replace(u"yy", year.Mid(3, year.Length()).text);
    format.Replace(u"mm", Padded(parts[1], 2).text);
    format.Replace(u"m", parts[1].text);
    format.Replace(u"dd", Padded(parts[2], 2).text);
    format.Replace(u"d", parts[2].text);
    format.Replace(u"hh", Padded(parts[3], 2).text);
    format.Replace(u"h", parts[3].text);
    format.Replace(u"xx", Padded(parts[4], 2).text);
    format.Replace(u"x", parts[4].text);
    format.Replace(u"ss", Padded(parts[5], 2).text);
    format.Replace(u"s", parts[5].text);
    return format;
}

}  // namespace

bool CompilationIsTrue(const clString& value) {
    return !value.IsEmpty() && !value.EqualsNoCase(u"nO") && !value.EqualsNoCase(u"fAlse") && !value.Equals(u"0");
}

bool IsMultiDisc(const clString& disc) { return NumberPart(disc, true).ToInt64() > 1; }

void QuoteNamingText(clString& text) {
    text.Replace(u",", u"<comma_>");
    text.Replace(u"[", u"<brackets_>");
}

void UnquoteNamingText(clString& text) {
    text.Replace(u"<comma_>", u",", true);
    text.Replace(u"<brackets_>", u"[", true);
}

bool ReplaceWithin(clString& text, const char16_t* search, const char16_t* replacement, bool ignoreCase) {
    int32_t searchLength = clTextLength(search);
    if (searchLength == 0) return true;
    int64_t hits = 0;
    for (int32_t at = text.Find(search, 1, ignoreCase); at != 0;
         at = text.Find(search, at + searchLength, ignoreCase)) {
        ++hits;
    }
    int64_t grown = text.Length() + hits * (int64_t{clTextLength(replacement)} - searchLength);
    if (grown > clNamingMaxText) return false;
    text.Replace(search, replacement, ignoreCase);
    return true;
}

int FindRightmostFunction(const clString& text, int32_t& at) {
    struct TokenLengths {
        int32_t of[25];
        TokenLengths() {
            for (int token = 0; token < 25; ++token) of[token] = clTextLength(clNamingTokens[token]);
        }
    };
    static const TokenLengths lengths;  // made once, safely from any thread
    for (int32_t position = text.Length(); position >= 1; --position) {
        if (text.text[position - 1] != u'[') continue;
        for (int token = 0; token < 25; ++token) {
            const char16_t* name = clNamingTokens[token];
            int32_t length = lengths.of[token];
            if (position + length - 1 > text.Length()) continue;
            // The tokens are upper case; the text may be in any case.
            bool same = true;
            for (int32_t i = 1; i < length && same; ++i) same = clAsciiUpper(text.text[position - 1 + i]) == name[i];
            if (same) {
                at = position;
                return token;
            }
        }
    }
    return -1;
}

clString RunNamingFunction(int token, clString& arguments, const clNamingContext& context) {
    switch (token) {
        case kUpper: return NextArgument(arguments, true).Upper();
        case kLower: return NextArgument(arguments, true).Lower();
        case kRight: {
            int32_t count = NumberArgument(arguments, false);
            return NextArgument(arguments, true).Right(count);
        }
        case kGrab:
        case kDel: {
            int32_t from = NumberArgument(arguments, false);
            int32_t to = NumberArgument(arguments, false);
            clString text = NextArgument(arguments, true);
            if (to < 1) to = text.Length();
            if (token == kGrab) return text.Mid(from, to);
            text.Delete(from, to);
            return text;
        }
        case kTrim: {
            clString text = NextArgument(arguments, true);
            TrimSpaces(text);
            return text;
        }
        case kSetLen: {
            int32_t count = NumberArgument(arguments, false);
            int32_t pre = NumberArgument(arguments, false);
            int32_t post = NumberArgument(arguments, false);
            return SetLength(count, pre, post, NextArgument(arguments, true));
        }
        case kIfComp:
        case kIfNotComp: {
            bool yes = CompilationIsTrue(context.quoted.GetTagValue(u"compilation"));
            clString text = NextArgument(arguments, true);
            return yes == (token == kIfComp) ? text : clString();
        }
        case kIfMulti:
        case kIfNotMulti: {
            // The tag as given: its "/" is what separates the total.
            bool yes = IsMultiDisc(FirstValue(context.given.GetTagValue(u"disc")));
            clString text = NextArgument(arguments, true);
            return yes == (token == kIfMulti) ? text : clString();
        }
        case kIfEquals:
        case kIfNotEquals: {
            clString tag = NextArgument(arguments, false);
            clString equals = NextArgument(arguments, false);
            clString text = NextArgument(arguments, true);
            text.Replace(u"_COMMA_", u",");
            bool yes = EqualsTagOrValue(tag, equals, context.quoted);
            return yes == (token == kIfEquals) ? text : clString();
        }
        case kIf: return If(arguments);
        case kIfValue: {
            clString tag = NextArgument(arguments, false);
            clString withValue = NextArgument(arguments, false);
            clString without = NextArgument(arguments, true);
            return context.quoted.GetTagValue(tag.text).IsEmpty() ? without : withValue;
        }
        case kTrimFirstFolder: return TrimFirstFolder(NextArgument(arguments, true));
        case kTrimLastFolder: return TrimLastFolder(NextArgument(arguments, true));
        case kMaxLength: {
            int32_t limit = NumberArgument(arguments, false);
            return MaxLength(limit, NextArgument(arguments, true));
        }
        case kFrontFolder:
        case kBackFolder: return Folder(context.folders, NumberArgument(arguments, true), token == kBackFolder);
        case kReplace: return Replace(arguments);
        case kWord: {
            clString text = NextArgument(arguments, false);
            return Word(text, NumberArgument(arguments, true));
        }
        case kGroup: {
            int32_t count = NumberArgument(arguments, false);
            return Group(count, NextArgument(arguments, true));
        }
        case kSplit: return Split(arguments);
        case kSourceDate: return SourceDate(NextArgument(arguments, false), context.given);
        default: return clString();
    }
}
