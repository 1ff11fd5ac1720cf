// clConversionInput: the one object the main flow hands from stage to
// stage. It lives for the whole process and owns its source records.
#pragma once

#include <cstdint>

#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"

class clSourceFile;

class clConversionInput {
public:
    int64_t centerOnWindow = 0;  // window to centre on, from -centeronwnd
    clStringList excludedFiles;  // paths whose extension no decoder accepts
    clPointerArray sources;      // of clSourceFile, owned, in order of arrival
    clStringList extensions;     // accepted extensions, dot included

    clConversionInput() = default;
    ~clConversionInput();
    clConversionInput(const clConversionInput&) = delete;
    clConversionInput& operator=(const clConversionInput&) = delete;

    clSourceFile& Source(int64_t index) const { return *sources.At<clSourceFile>(index); }

    // Appends a source if its extension is accepted, else an excluded path.
    // With `checkDuplicates`, a path already present (ignoring case) is
    // skipped.
    void AddSource(const clString& path, bool checkDuplicates);
    // Every file below `folder` whose extension is in `accepted`, with the
    // duplicate check; other files are left out without a word.
    void AddFolder(const clString& folder, const clStringList& accepted);
    // Reads a UTF-16LE list file (one path a line), drops empty lines,
    // sorts ignoring case, adds each path without the duplicate check and
    // deletes the file. A file that can't be read gives no sources and is
    // still deleted.
    void LoadListFile(const clString& listFile);
};
