#include "foundation/findfiles.h"

#include "foundation/pathtext.h"

clFindFiles::clFindFiles(const clString& pattern) : handle(clInvalidFind), spec(pattern), foldersOnly(false) {}

clFindFiles::clFindFiles(const clString& pattern, const clString& folder) : handle(clInvalidFind), foldersOnly(false) {
    if (pattern.IsEmpty()) {
        spec = folder;
        RemoveBackslashes(spec);
    } else {
        spec = JoinPath(folder, pattern);
    }
}

clFindFiles::~clFindFiles() { Close(); }

void clFindFiles::Close() {
    if (handle != clInvalidFind) PlatformFindClose(handle);
    handle = clInvalidFind;
}

bool clFindFiles::Next() {
    for (;;) {
        if (handle == clInvalidFind) {
            if (spec.IsEmpty()) return false;
            clString longSpec = GetLongPath(spec, 248);
            handle = PlatformFindFirst(longSpec.text, found);
            spec = GetFolderPart(spec);
            if (spec.FindLastChar(NativePathSyntax().separator) == 0) spec.Clear();  // relative, no folder
            if (handle == clInvalidFind) {
                spec.Clear();  // nothing more to find
                return false;
            }
        } else if (!PlatformFindNext(handle, found)) {
            return false;
        }
        if (found.name.Equals(u".") || found.name.Equals(u"..")) continue;
        if (foldersOnly && !IsFolder()) continue;
        fullName = clString(spec.text, found.name.text);
        return true;
    }
}
