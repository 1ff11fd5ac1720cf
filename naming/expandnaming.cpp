#include "naming/expandnaming.h"

#include <cstring>

#include "foundation/stringlist.h"
#include "naming/namingfunctions.h"
#include "plugins/taglist.h"

namespace {

// What an item stands for: a tag by the item's own name, or one of the
// number parts of `track` and `disc`.
enum class clItemKind { Tag, Track, TrackUnpadded, TrackTotal, TrackTotalUnpadded, Disc, DiscTotal };

struct clNamingItem {
    const char16_t* key;
    clItemKind kind;
    // Its presence makes a batch read its sources' tags and facts
    // (NamingNeedsTags).
    bool needsTags;
};

// The items, in the order of expansion.
constexpr clNamingItem kItems[] = {
    {u"[artist]", clItemKind::Tag, true},
    {u"[album]", clItemKind::Tag, true},
    {u"[album artist]", clItemKind::Tag, true},
    {u"[composer]", clItemKind::Tag, true},
    {u"[conductor]", clItemKind::Tag, true},
    {u"[title]", clItemKind::Tag, true},
    {u"[genre]", clItemKind::Tag, true},
    {u"[year]", clItemKind::Tag, true},
    {u"[track]", clItemKind::Track, true},
    {u"[track_unpad]", clItemKind::TrackUnpadded, true},
    {u"[track_total]", clItemKind::TrackTotal, true},
    {u"[track_total_unpad]", clItemKind::TrackTotalUnpadded, true},
    {u"[disc]", clItemKind::Disc, true},
    {u"[disc_total]", clItemKind::DiscTotal, true},
    {u"[band]", clItemKind::Tag, true},
    {u"[rating]", clItemKind::Tag, true},
    {u"[tempo]", clItemKind::Tag, true},
    {u"[label]", clItemKind::Tag, true},
    {u"[isrc]", clItemKind::Tag, true},
    {u"[upc]", clItemKind::Tag, true},
    {u"[compilation]", clItemKind::Tag, true},
    {u"[mood]", clItemKind::Tag, true},
    {u"[style]", clItemKind::Tag, true},
    {u"[copyright]", clItemKind::Tag, true},
    {u"[subtitle]", clItemKind::Tag, true},
    {u"[orchestra]", clItemKind::Tag, true},
    {u"[soloists]", clItemKind::Tag, true},
    {u"[instrument]", clItemKind::Tag, true},
    {u"[period]", clItemKind::Tag, true},
    {u"[chorus]", clItemKind::Tag, true},
    {u"[catalog #]", clItemKind::Tag, true},
    {u"[work]", clItemKind::Tag, true},
    {u"[movement name]", clItemKind::Tag, true},
    {u"[movement count]", clItemKind::Tag, true},
    {u"[movement number]", clItemKind::Tag, true},
    {u"[title sort]", clItemKind::Tag, false},
    {u"[artist sort]", clItemKind::Tag, false},
    {u"[album artist sort]", clItemKind::Tag, false},
    {u"[album sort]", clItemKind::Tag, false},
    {u"[soloistssort]", clItemKind::Tag, false},
    {u"[composersort]", clItemKind::Tag, false},
    {u"[conductorsort]", clItemKind::Tag, false},
    {u"[unique]", clItemKind::Tag, false},
    {u"[discunique]", clItemKind::Tag, false},
    {u"[length]", clItemKind::Tag, true},
    {u"[length_seconds]", clItemKind::Tag, false},
    {u"[length_mmss]", clItemKind::Tag, true},
    {u"[length_hhmmss]", clItemKind::Tag, true},
    {u"[encoder]", clItemKind::Tag, false},
    {u"[encoder+]", clItemKind::Tag, false},
    {u"[extension]", clItemKind::Tag, false},
    {u"[cddb_id]", clItemKind::Tag, false},
    {u"[origdrive]", clItemKind::Tag, false},
    {u"[origpath]", clItemKind::Tag, false},
    {u"[subpath]", clItemKind::Tag, false},
    {u"[origfilename]", clItemKind::Tag, false},
    {u"[protected]", clItemKind::Tag, false},
    {u"[id_tag]", clItemKind::Tag, true},
    {u"[audio_quality]", clItemKind::Tag, true},
    {u"[gapless]", clItemKind::Tag, true},
    {u"[date]", clItemKind::Tag, false},
    {u"[time]", clItemKind::Tag, false},
    {u"[day_of_week]", clItemKind::Tag, false},
    {u"[now_year]", clItemKind::Tag, false},
    {u"[frequency]", clItemKind::Tag, true},
    {u"[channels]", clItemKind::Tag, true},
    {u"[channels_subone]", clItemKind::Tag, true},
    {u"[bits_per_sample]", clItemKind::Tag, true},
    {u"[bytes_per_sample]", clItemKind::Tag, true},
    {u"[bitrate]", clItemKind::Tag, true},
    {u"[k_bitrate]", clItemKind::Tag, true},
};
constexpr int kItemCount = sizeof kItems / sizeof kItems[0];
static_assert(kItemCount == 71, "the language has 71 items");

// The forms and functions whose presence makes a batch read its sources,
// beside the items so marked. The sort items, [length_seconds] and a few
// more are deliberately not among them: the list is the design as it
// stands.
const char16_t* const kOtherKeysNeedingTags[] = {u"[tag]",    u"[ifequals]", u"[IFVALUE]", u"[IF!EQUALS]", u"[TAGS]",
                                                 u"[IFCOMP]", u"[IF!COMP]",  u"[IFMULTI]", u"[IF!MULTI]"};

bool IsPathItem(const clString& name) {
    return name.EqualsNoCase(u"origpath") || name.EqualsNoCase(u"origfilename") || name.EqualsNoCase(u"origdrive") ||
           name.EqualsNoCase(u"subpath");
}

// A value of nothing but dots and blanks would name the folder itself or
// its parent ("..") once the blanks and trailing dots go; its dots become
// "_" so it stays a name.
void DefuseDotNames(clString& value) {
    bool dots = false;
    for (int32_t i = 1; i <= value.Length(); ++i) {
        char16_t c = value.CharAt(i);
        if (c != u'.' && c != u' ') return;
        dots = dots || c == u'.';
    }
    if (dots) value.Replace(u".", u"_");
}

// Step 2: no value may break the syntax or make a folder, apart from the
// path items and the extras, which are meant to.
// One value as it may land in a path: quoted, and unless it may make
// folders, no dot-only name and no separator.
void QuoteValue(clString& value, bool mayMakeFolders, bool isPathItem, const clPathSyntax& syntax) {
    QuoteNamingText(value);
    if (!mayMakeFolders) DefuseDotNames(value);
    if (syntax.IsWindows()) {
        if (!mayMakeFolders) value.Replace(u"\\", u"-");
    } else if (!mayMakeFolders) {
        value.Replace(u"\\", u"-");
        value.Replace(u"/", u"-");
    } else {
        // A backslash in a POSIX name is a character, not a separator.
        if (isPathItem) value.Replace(u"\\", u"-");
        value.Replace(u"/", u"\\");
    }
}

void QuoteValues(clTagList& tags, const clStringList* extrasNames, const clPathSyntax& syntax) {
    for (int64_t i = 0; i < tags.Count(); ++i) {
        clTagItem& item = tags[i];
        bool mayMakeFolders =
            IsPathItem(item.name) || (extrasNames != nullptr && extrasNames->Find(item.name.text, true));
        QuoteValue(item.value, mayMakeFolders, IsPathItem(item.name), syntax);
    }
}

// Step 3.
void NormaliseCompilation(clTagList& tags) {
    clString value = tags.GetTagValue(u"compilation");
    if (value.ToInt64() != 0 || value.EqualsNoCase(u"yEs")) {
        tags.RemoveTag(u"compilation");
        tags.AddTag(u"compilation", u"1");
    }
}

// Step 4: "[IFVALUE][tag]name[],..." and "[IFVALUE][name],..." become
// "[IFVALUE]name,...", so the operand reaches the function as a name.
void UnwrapOperands(clString& text) {
    for (const char16_t* token : {u"[ifvAlue]", u"[ifequals]", u"[if!equals]"}) {
        clString withTag(token, u"[tag]");
        int32_t tokenLength = clTextLength(token);
        for (int32_t at = text.Find(withTag, 1, true); at != 0; at = text.Find(withTag, at + 1, true)) {
            text.Delete(at + tokenLength, at + tokenLength + 4);
            int32_t end = text.Find(u"[]", at);
            if (end != 0) text.Delete(end, end + 1);
        }
        clString withBracket(token, u"[");
        for (int32_t at = text.Find(withBracket, 1, true); at != 0; at = text.Find(withBracket, at + 1, true)) {
            text.Delete(at + tokenLength, at + tokenLength);
            int32_t close = text.FindChar(u']', at + tokenLength);
            if (close != 0) text.Delete(close, close);
        }
    }
}

clString PadToTwo(clString value) {
    if (value.Length() == 1) value.Insert(u"0", 1);
    return value;
}

clString DropLeadingZero(clString value) {
    if (value.CharAt(1) == u'0') value.Delete(1, 1);
    return value;
}

// A number item: the first value of the tag as given, split at its "/"
// before anything replaces that "/", and only then quoted for the path.
clString NumberItem(const clTagList& given, const char16_t* name, bool wantTotal, const clPathSyntax& syntax) {
    clString value = NumberPart(FirstValue(given.GetTagValue(name)), wantTotal);
    QuoteValue(value, false, false, syntax);
    return value;
}

// The value an item stands for.
clString ItemValue(clItemKind kind, bool isItem, const char16_t* key, const clTagList& tags, const clTagList& given,
                   const clPathSyntax& syntax) {
    switch (kind) {
        case clItemKind::Track: return PadToTwo(NumberItem(given, u"track", false, syntax));
        case clItemKind::TrackUnpadded: return DropLeadingZero(NumberItem(given, u"track", false, syntax));
        case clItemKind::TrackTotal: return PadToTwo(NumberItem(given, u"track", true, syntax));
        case clItemKind::TrackTotalUnpadded: return DropLeadingZero(NumberItem(given, u"track", true, syntax));
        case clItemKind::Disc: return NumberItem(given, u"disc", false, syntax);
        case clItemKind::DiscTotal: return NumberItem(given, u"disc", true, syntax);
        case clItemKind::Tag: break;
    }
    clString name(key);
    if (isItem) name = name.Mid(2, name.Length() - 1);  // the tag's name without brackets
    return FirstValue(tags.GetTagValue(name.text));
}

// Keeps the phases of one expansion within their bound.
class clBound {
public:
    // True while another round may run on `text`.
    bool Allows(const clString& text) {
        work += text.Length();
        return ++rounds <= clNamingMaxRounds && text.Length() <= clNamingMaxText && work <= clNamingMaxWork;
    }

private:
    int32_t rounds = 0;
    int64_t work = 0;
};

// The text lowered, with the places of its "[": every item begins with
// one, and a text holds few of them, so an item is looked for there only
// instead of along the whole text (71 items are looked for per expansion).
class clKeySearch {
public:
    explicit clKeySearch(const clString& text) { Refresh(text); }

    void Refresh(const clString& text) {
        lowered = text.Lower();
        count = 0;
        overflow = false;
        for (int32_t at = lowered.FindChar(u'['); at != 0; at = lowered.FindChar(u'[', at + 1)) {
            if (count == kMaxBrackets) {
                overflow = true;
                break;
            }
            brackets[count++] = at;
        }
    }

    // The first place of `key` (lower case), 0 for none.
    int32_t Find(const char16_t* key, int32_t keyLength) const {
        if (key[0] != u'[' || overflow) return lowered.Find(key, 1, false);
        for (int32_t i = 0; i < count; ++i) {
            int32_t at = brackets[i];
            if (at + keyLength - 1 <= lowered.Length() &&
                std::memcmp(lowered.text + at - 1, key, static_cast<size_t>(keyLength) * sizeof(char16_t)) == 0) {
                return at;
            }
        }
        return 0;
    }

private:
    static constexpr int32_t kMaxBrackets = 128;
    clString lowered;
    int32_t brackets[kMaxBrackets] = {};
    int32_t count = 0;
    bool overflow = false;
};

// Step 5: items, then the extras' names, each key as long as it is found.
// The keys are lower case, and the text is searched lowered.
void ExpandItems(clString& text, const clTagList& tags, const clTagList& given, const clStringList* extrasNames,
                 const clPathSyntax& syntax) {
    clBound bound;
    clKeySearch search(text);
    int64_t extras = extrasNames != nullptr ? extrasNames->Count() : 0;
    for (int64_t index = 0; index < kItemCount + extras; ++index) {
        const bool isItem = index < kItemCount;
        const char16_t* key = isItem ? kItems[index].key : (*extrasNames)[index - kItemCount].text;
        const clItemKind kind = isItem ? kItems[index].kind : clItemKind::Tag;
        int32_t keyLength = clTextLength(key);
        for (;;) {
            if (!bound.Allows(text)) return;
            int32_t at = search.Find(key, keyLength);
            if (at == 0) break;
            text.Delete(at, at + keyLength - 1);
            text.Insert(ItemValue(kind, isItem, key, tags, given, syntax), at);
            search.Refresh(text);
        }
    }
}

enum class clTagForm { Single, Multi, Delimited };

// Steps 6-8: "[tag]name[]", "[multitag]name[]", "[tags]name,delimiter[]".
void ExpandTagForm(clString& text, const clTagList& tags, const char16_t* opener, clTagForm form) {
    clBound bound;
    int32_t openerLength = clTextLength(opener);
    while (bound.Allows(text)) {
        int32_t at = text.Find(opener, 1, true);  // the opener is lower case
        if (at == 0) return;
        int32_t end = text.Find(u"[]", at);
        if (end == 0) return;
        clString inner = text.Mid(at + openerLength, end - 1);
        clString value;
        if (form == clTagForm::Delimited) {
            clStringList pieces;
            pieces.Split(inner.text, u",");
            if (pieces.Count() == 2) {
                clString delimiter(pieces[1]);
                delimiter.Replace(u"_COMMA_", u"<comma_>");
                value = tags.GetTagValue(pieces[0].text);
                if (!ReplaceWithin(value, u"\r", delimiter.text, false)) return;
            }
        } else {
            value = tags.GetTagValue(inner.text);
            if (form == clTagForm::Single) {
                value = FirstValue(value);
            } else if (!ReplaceWithin(value, u"\r", u"; ", false)) {
                return;
            }
        }
        text.Delete(at, end + 1);
        text.Insert(value, at);
    }
}

// Step 10: the rightmost function, again and again.
void RunFunctions(clString& text, const clNamingContext& context) {
    clBound bound;
    while (bound.Allows(text)) {
        int32_t at = 0;
        int token = FindRightmostFunction(text, at);
        if (token < 0) return;
        int32_t end = text.Find(u"[]", at);
        if (end == 0) return;
        int32_t tokenLength = clTextLength(clNamingTokens[token]);
        clString arguments = text.Mid(at + tokenLength, end - 1);
        text.Delete(at, end + 1);
        text.Insert(RunNamingFunction(token, arguments, context), at);
    }
}

}  // namespace

clString NextArgument(clString& arguments, bool last) {
    int32_t comma = last ? 0 : arguments.FindChar(u',');
    if (comma == 0) {
        clString all(arguments);
        arguments.Clear();
        return all;
    }
    clString first = arguments.Mid(1, comma - 1);
    arguments.Delete(1, comma);
    return first;
}

bool NamingNeedsTags(const clString& naming) {
    for (const clNamingItem& item : kItems) {
        if (item.needsTags && naming.Find(item.key, 1, true) != 0) return true;
    }
    for (const char16_t* key : kOtherKeysNeedingTags) {
        if (naming.Find(key, 1, true) != 0) return true;
    }
    return false;
}

clString ExpandNaming(const clString& naming, const clTagList& tags, const clStringList* extrasNames,
                      const clPathSyntax& syntax) {
    // A lookup takes the first item of a name, so the later ones of a
    // duplicated name are copied along but never seen.
    clTagList quoted;
    quoted.AddAll(tags);
    clString text(naming);
    if (!syntax.IsWindows()) text.Replace(u"/", u"\\");
    QuoteValues(quoted, extrasNames, syntax);
    NormaliseCompilation(quoted);
    UnwrapOperands(text);
    ExpandItems(text, quoted, tags, extrasNames, syntax);
    ExpandTagForm(text, quoted, u"[tag]", clTagForm::Single);
    ExpandTagForm(text, quoted, u"[multitag]", clTagForm::Multi);
    ExpandTagForm(text, quoted, u"[tags]", clTagForm::Delimited);
    clStringList folders;
    folders.Split(tags.GetTagValue(u"origpath").text, syntax.IsWindows() ? u"\\" : u"/");
    clNamingContext context{quoted, tags, folders};
    RunFunctions(text, context);
    UnquoteNamingText(text);
    return text;
}
