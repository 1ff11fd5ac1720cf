#include "foundation/cleanpath.h"

#include "foundation/pathtext.h"
#include "foundation/stringlist.h"

const char16_t clDefaultPathTable[] = {
    u'"',  u'\'', u'>', 0x00BB, u'<', 0x00AB, u'?', 0x00BF, u':', u';',
    u'\\', u'-',  u'/', u'-',   u'*', u'-',   u'|', u'-',   0,    0,
};

namespace {

constexpr int32_t kNameLimit = 255;
constexpr int32_t kShortName = 61;

const char16_t* Lookup(const char16_t* table, char16_t c) {
    for (const char16_t* p = table; p[0] != 0 && p[1] != 0; p += 2) {
        if (p[0] == c) return p + 1;
    }
    return nullptr;
}

// Cuts characters from the end until the measure is at most `limit`, then
// pads with blanks up to it (each blank counts one in either measure).
void FitTo(clString& text, int64_t limit, const clPathSyntax& syntax) {
    if (limit < 1) limit = 1;
    if (syntax.IsWindows()) {
        text.SetLength(static_cast<int32_t>(limit));
        return;
    }
    while (text.Length() > 0 && syntax.Measure(text) > limit) text.Delete(text.Length(), text.Length());
    for (int64_t m = syntax.Measure(text); m < limit; ++m) text.Append(u" ");
}

void StripTrailing(clString& text, char16_t c) {
    int32_t end = text.Length();
    while (end > 0 && text.text[end - 1] == c) --end;
    if (end < text.Length()) text.Delete(end + 1, text.Length());
}

void StripLeading(clString& text, char16_t c) {
    int32_t n = 0;
    while (n < text.Length() && text.text[n] == c) ++n;
    if (n > 0) text.Delete(1, n);
}

bool IsDeviceName(const clString& name) {
    static const char16_t* const kNames[] = {u"cOn", u"aUx", u"pRn", u"nUl"};
    for (const char16_t* device : kNames) {
        if (name.Compare(device, 0, true) == 0) return true;
    }
    return false;
}

void ReplaceCharacters(clString& path, int32_t start, const char16_t* table, const clPathSyntax& syntax) {
    int32_t lastDot = path.FindLastChar(u'.');
    int32_t i = start;
    while (i <= path.Length()) {
        char16_t c = path.text[i - 1];
        if (c == syntax.separator) {
            ++i;
            continue;
        }
        const char16_t* hit = Lookup(table, c);
        if (hit != nullptr && !(c == u'.' && i == lastDot)) {
            if (*hit == u'*') {
                path.Delete(i, i);
                lastDot = path.FindLastChar(u'.');
                continue;
            }
            path.text[i - 1] = *hit;
        }
        if (path.text[i - 1] < 31) path.text[i - 1] = u'_';
        ++i;
    }
}

void ShortenPath(clString& path, int32_t keepLength, const clPathSyntax& syntax) {
    while (syntax.Measure(path) >= syntax.pathLimit) {
        int32_t separator = path.FindLastChar(syntax.separator);
        int32_t dot = path.FindLastChar(u'.');
        int32_t rootLength = GetRootLength(path, syntax);
        if (separator == 0 || rootLength == 1) return;
        if (dot < separator) dot = path.Length();
        int32_t nameLength = dot - separator - 1;
        bool inRoot = separator + 1 == rootLength || separator - 1 <= keepLength;
        if (!inRoot && nameLength < kShortName) {
            path.Delete(separator - 1, separator - 1);
            continue;
        }
        // A name of one character (or none) can't get shorter.
        if (nameLength <= 1) return;
        path.Delete(dot - 1, dot - 1);
    }
}

void CollapseSeparators(clString& path, const clPathSyntax& syntax) {
    int32_t i = GetRootLength(path, syntax);
    if (i < 2) i = 2;
    while (i <= path.Length()) {
        if (path.text[i - 1] == syntax.separator && path.text[i - 2] == syntax.separator) {
            path.Delete(i, i);
        } else {
            ++i;
        }
    }
}

void RemoveUntilGone(clString& path, const char16_t* what, const char16_t* by) {
    while (path.Find(what) != 0) path.Replace(what, by);
}

}  // namespace

void CleanPath(clString& path, const clCleanPathOptions& options, const clPathSyntax& syntax) {
    const char16_t* table = options.table != nullptr ? options.table : clDefaultPathTable;
    // 1-2. Character pass behind the root.
    int32_t start = options.hasRoot ? GetRootLength(path, syntax) : 1;
    ReplaceCharacters(path, start, table, syntax);

    // 3. Split into components, file name first.
    clStringList popped;
    for (;;) {
        clString component = PopLastComponent(path, syntax);
        if (component.IsEmpty()) break;
        popped.AddMove(static_cast<clString&&>(component));
    }
    AddBackslash(path, syntax);

    // 4. Rebuild from the first folder down to the file name.
    for (int64_t k = popped.Count() - 1; k >= 0; --k) {
        clString component(popped[k]);
        bool isFile = k == 0;
        if (syntax.Measure(component) >= kNameLimit) {
            if (!isFile) {
                FitTo(component, kNameLimit - 1, syntax);
            } else {
                clString extension = GetExtension(component, syntax);
                clString base = RemoveExtension(component);
                FitTo(base, kNameLimit - 1 - syntax.Measure(extension), syntax);
                base.Append(extension);
                component = static_cast<clString&&>(base);
            }
        }
        if (!isFile) {
            StripTrailing(component, u' ');
            StripTrailing(component, u'.');
            if (IsDeviceName(component)) component.Append(u"_");
        }
        StripTrailing(component, u' ');
        StripLeading(component, u'.');
        path.Append(component);
        if (!isFile) AddBackslash(path, syntax);
    }

    // 5. Keep the whole path below the limit.
    if (options.limitLength) ShortenPath(path, options.keepLength, syntax);

    // 6-7. Tidy what the steps above may have left.
    CollapseSeparators(path, syntax);
    char16_t dotSeparator[3] = {u'.', syntax.separator, 0};
    char16_t blankSeparator[3] = {u' ', syntax.separator, 0};
    char16_t separator[2] = {syntax.separator, 0};
    RemoveUntilGone(path, dotSeparator, separator);
    RemoveUntilGone(path, blankSeparator, separator);

    // 8. No trailing separator behind a name.
    if (path.Length() > start && path.CharAt(clStringLast) == syntax.separator)
        path.Delete(path.Length(), path.Length());
}
