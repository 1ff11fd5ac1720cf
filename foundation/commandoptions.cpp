#include "foundation/commandoptions.h"

#include "foundation/platform/processinfo.h"

namespace {

// The first `"`, `=` or blank at or after `from`, or one past the end.
int32_t KeyEnd(const clString& text, int32_t from) {
    int32_t p = from;
    for (; p <= text.Length(); ++p) {
        char16_t c = text.text[p - 1];
        if (c == u'"' || c == u'=' || c == u' ') break;
    }
    return p;
}

}  // namespace

void clCommandOptions::ParseProcessCommandLine() {
    clString commandLine;
    PlatformGetCommandLine(commandLine);
    ParseCommandLine(commandLine);
}

void clCommandOptions::ParseCommandLine(const clString& commandLine) {
    line = commandLine;
    int32_t start = 1;
    if (line.CharAt(1) == u'"') {
        int32_t close = line.FindChar(u'"', 2);
        start = close == 0 ? line.size : close + 1;
    }
    Parse(line, start);
}

void clCommandOptions::Parse(const clString& text, int32_t start) {
    keys.Clear();
    values.Clear();
    int32_t length = text.Length();
    int32_t p = start < 1 ? 1 : start;
    while (p <= length) {
        int32_t dash = text.FindChar(u'-', p);
        if (dash == 0) break;
        int32_t keyStart = dash + 1;
        if (text.CharAt(keyStart) == u'-') ++keyStart;
        int32_t keyEnd = keyStart <= length ? KeyEnd(text, keyStart) : length + 1;
        if (keyEnd <= keyStart) {
            p = keyEnd + 1;
            continue;
        }
        clString key = text.Mid(keyStart, keyEnd - 1);
        p = keyEnd;
        while (text.CharAt(p) == u' ' || text.CharAt(p) == u'=') ++p;
        clString value;
        char16_t c = text.CharAt(p);
        if (c == u'"') {
            int32_t close = text.FindChar(u'"', p + 1);
            if (close != 0) {
                value = text.Mid(p + 1, close - 1);
                p = close + 1;
            } else {
                ++p;  // no closing quote: empty value, go on behind the quote
            }
        } else if (c != 0 && c != u'-') {
            int32_t blank = text.FindChar(u' ', p);
            int32_t end = blank == 0 ? length : blank - 1;
            value = text.Mid(p, end);
            p = end + 1;
        }
        keys.AddMove(static_cast<clString&&>(key));
        values.AddMove(static_cast<clString&&>(value));
    }
}

clString clCommandOptions::GetRawArguments() const {
    clString raw;
    if (line.CharAt(1) == u'"') {
        int32_t close = line.FindChar(u'"', 2);
        raw = close == 0 ? line : line.Mid(close + 1, line.Length());
    } else {
        int32_t blank = line.FindChar(u' ');
        if (blank != 0) raw = line.Mid(blank + 1, line.Length());
    }
    raw.TrimLeft();
    int32_t end = raw.Length();
    while (end > 0 && raw.text[end - 1] == u' ') --end;
    if (end < raw.Length()) raw.Delete(end + 1, raw.Length());
    return raw;
}

int64_t clCommandOptions::IndexOf(const char16_t* key) const {
    for (int64_t i = 0; i < keys.Count(); ++i) {
        if (keys[i].Compare(key, 0, true) == 0) return i;
    }
    return -1;
}

clString clCommandOptions::Get(const char16_t* key) const {
    int64_t i = IndexOf(key);
    return i < 0 ? clString() : values[i];
}
