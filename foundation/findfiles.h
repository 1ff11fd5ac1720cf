// clFindFiles: iterates the entries of a folder that match a pattern.
// "." and ".." are never delivered; with `foldersOnly`, only folders are.
// Each Next fills `fullName` (folder part + entry name) and `found`.
#pragma once

#include "foundation/clstring.h"
#include "foundation/pathsyntax.h"
#include "foundation/platform/filesystem.h"

class clFindFiles {
public:
    clString fullName;
    clFindData found;
    clFindHandle handle;
    clString spec;  // the pattern; the folder part (with separator) once searching began
    bool foldersOnly;

    explicit clFindFiles(const clString& pattern);
    // The pattern joined to the folder; with an empty pattern the folder's
    // own entry is searched.
    clFindFiles(const clString& pattern, const clString& folder);
    ~clFindFiles();
    clFindFiles(const clFindFiles&) = delete;
    clFindFiles& operator=(const clFindFiles&) = delete;

    bool Next();
    void Close();
    bool IsFolder() const { return (found.attributes & clAttributeDirectory) != 0; }
};
