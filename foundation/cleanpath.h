// CleanPath turns a proposed output path into one the file system accepts.
//
// The steps run in a fixed order, and the order matters: characters are
// replaced through a table (the default one below, or clAsciiFoldTable,
// or the caller's), the path is split into components, each component is
// cut to the name limit and trimmed (folders also lose trailing dots and
// avoid the device names con/aux/prn/nul), the whole path is shortened
// below the path limit (the base name first down to 60 characters, then
// the innermost folder), doubled separators collapse and `.\` and ` \` at
// the end of folder names are removed. Limits follow the syntax: UTF-16
// units in Windows syntax, UTF-8 bytes in POSIX syntax.
//
// A table is a run of pairs (character, replacement) ended by a pair that
// begins with zero or has zero as its second member; a replacement of `*`
// deletes the character.
#pragma once

#include "foundation/clstring.h"
#include "foundation/pathsyntax.h"

extern const char16_t clDefaultPathTable[];

struct clCleanPathOptions {
    bool limitLength = false;         // shorten the whole path below the path limit
    const char16_t* table = nullptr;  // null: clDefaultPathTable
    bool hasRoot = true;              // leave the root out of the character pass
    // The shortening never deletes within the first `keepLength`
    // characters: an output folder the user chose stays as it is, and only
    // what was named into it gets shorter.
    int32_t keepLength = 0;
};

void CleanPath(clString& path, const clCleanPathOptions& options, const clPathSyntax& syntax = NativePathSyntax());
