#include "foundation/pathtext.h"

#include "foundation/platform/processinfo.h"

void AddBackslash(clString& path, const clPathSyntax& syntax) {
    if (path.CharAt(clStringLast) != syntax.separator) {
        char16_t one[2] = {syntax.separator, 0};
        path.Append(one);
    }
}

void RemoveBackslashes(clString& path, const clPathSyntax& syntax) {
    int32_t end = path.Length();
    while (end > 0 && path.text[end - 1] == syntax.separator) --end;
    if (end < path.Length()) path.Delete(end + 1, path.Length());
}

clString GetExtension(const clString& path, const clPathSyntax& syntax) {
    int32_t dot = path.FindLastChar(u'.');
    int32_t separator = path.FindLastChar(syntax.separator);
    if (dot != 0 && dot > separator) return path.Mid(dot, path.Length());
    return clString(u".");
}

clString GetFileName(const clString& path, const clPathSyntax& syntax) {
    int32_t separator = path.FindLastChar(syntax.separator);
    if (separator == 0) return path;
    return path.Mid(separator + 1, path.Length());
}

clString GetFileBaseName(const clString& path, const clPathSyntax& syntax) {
    clString name = GetFileName(path, syntax);
    int32_t dot = name.FindLastChar(u'.');
    if (dot != 0) name.Delete(dot, name.Length());
    return name;
}

clString RemoveExtension(const clString& path) {
    clString result(path);
    int32_t dot = result.FindLastChar(u'.');
    if (dot != 0) result.Delete(dot, result.Length());
    return result;
}

clString GetFolderPart(const clString& path, const clPathSyntax& syntax) {
    int32_t separator = path.FindLastChar(syntax.separator);
    if (separator == 0) return path;
    return path.Mid(1, separator);
}

clString JoinPath(const clString& first, const clString& second, const clPathSyntax& syntax) {
    clString result(first);
    AddBackslash(result, syntax);
    int32_t skip = 1;
    while (second.CharAt(skip) == syntax.separator) ++skip;
    result.Append(second.Mid(skip, second.Length()));
    return result;
}

int32_t GetRootLength(const clString& path, const clPathSyntax& syntax) {
    if (!syntax.IsWindows()) return path.CharAt(1) == u'/' ? 2 : 1;
    if (path.Compare(u"\\\\?\\", 4) == 0) {
        int32_t found = path.FindChar(u'\\', 7);
        return found == 0 ? 1 : found + 1;
    }
    int32_t found = path.FindChar(u'\\', 3);
    return found == 0 ? 1 : found + 1;
}

clString PopLastComponent(clString& path, const clPathSyntax& syntax) {
    int32_t rootLength = GetRootLength(path, syntax);
    // The root's own length in characters is one less than the position
    // behind it.
    if (rootLength == 1 || path.Length() <= rootLength - 1) return clString();
    int32_t end = path.Length();
    while (end > rootLength - 1 && path.text[end - 1] == syntax.separator) --end;
    if (end < path.Length()) path.Delete(end + 1, path.Length());
    int32_t separator = path.FindLastChar(syntax.separator);
    clString component = path.Mid(separator + 1, path.Length());
    if (!component.IsEmpty()) path.Delete(separator + 1, path.Length());
    return component;
}

void QuoteText(clString& text) {
    text.Insert(u"\"", 1);
    text.Append(u"\"");
}

clString GetLongPath(const clString& text, int32_t limit, const clPathSyntax& syntax) {
    if (syntax.IsWindows() && text.Compare(u"\\\\", 2) != 0 && text.Length() >= limit) {
        return clString(u"\\\\?\\", text.text);
    }
    return text;
}

clString GetProgramPath() {
    clString path;
    PlatformGetModuleFileName(path);
    if (path.CharAt(1) == u'"') {
        path.Delete(1, 1);
        int32_t quote = path.FindChar(u'"');
        if (quote != 0) path.Delete(quote, path.Length());
    }
    return path;
}

clString GetProgramFolder() {
    clString path = GetProgramPath();
    return GetFolderPart(path);
}
