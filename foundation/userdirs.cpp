#include "foundation/userdirs.h"

#include "foundation/stringlist.h"

namespace {

bool ParseValue(const clString& raw, const clString& home, clString& folder) {
    if (raw.CharAt(1) != u'"') return false;
    clString value;
    int32_t i = 2;
    for (;; ++i) {
        char16_t c = raw.CharAt(i);
        if (c == 0) return false;  // no closing quote
        if (c == u'"') break;
        if (c == u'\\') {
            c = raw.CharAt(++i);
            if (c == 0) return false;
        }
        char16_t one[2] = {c, 0};
        value.AppendGrowing(one);
    }
    if (value.Compare(u"$HOME", 5) == 0 && (value.CharAt(6) == u'/' || value.CharAt(6) == 0)) {
        folder = home;
        folder.AppendGrowing(value.Mid(6, value.Length()));
        return true;
    }
    if (value.CharAt(1) == u'/') {
        folder = static_cast<clString&&>(value);
        return true;
    }
    return false;
}

}  // namespace

bool FindUserDir(const clString& text, const char16_t* key, const clString& home, clString& folder) {
    clString lines(text);
    lines.Replace(u"\n", u"\r");
    clStringList list;
    list.SplitLines(lines);
    bool found = false;
    int32_t keyLength = clTextLength(key);
    for (int64_t i = 0; i < list.Count(); ++i) {
        clString line(list[i]);
        line.TrimLeft();
        if (line.CharAt(1) == u'#' || line.Compare(key, keyLength) != 0 || line.CharAt(keyLength + 1) != u'=') {
            continue;
        }
        clString candidate;
        if (ParseValue(line.Mid(keyLength + 2, line.Length()), home, candidate)) {
            folder = static_cast<clString&&>(candidate);
            found = true;
        }
    }
    return found;
}
