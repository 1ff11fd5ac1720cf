// Path text functions: splitting and joining names, the root of a path and
// the long-path prefix. They work on text only and never touch the file
// system, apart from asking the program's own name. Positions are 1-based.
//
// "Backslash" in the names means the separator of the syntax passed: `\`
// in Windows syntax, `/` in POSIX syntax. Each function takes the syntax as
// its last argument, the native one by default.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pathsyntax.h"

// Appends the separator unless the text already ends in one; "" gets one.
void AddBackslash(clString& path, const clPathSyntax& syntax = NativePathSyntax());
// Removes every trailing separator.
void RemoveBackslashes(clString& path, const clPathSyntax& syntax = NativePathSyntax());
// From the last `.` to the end if that dot is behind the last separator;
// otherwise the text "." (a lone dot, never an empty text).
clString GetExtension(const clString& path, const clPathSyntax& syntax = NativePathSyntax());
clString GetFileName(const clString& path, const clPathSyntax& syntax = NativePathSyntax());
clString GetFileBaseName(const clString& path, const clPathSyntax& syntax = NativePathSyntax());
// The whole path without its last `.` and what follows, wherever that dot
// is: a dot in a folder name counts if the file name has none.
clString RemoveExtension(const clString& path);
// Up to and including the last separator; the whole text if there is none.
clString GetFolderPart(const clString& path, const clPathSyntax& syntax = NativePathSyntax());
clString JoinPath(const clString& first, const clString& second, const clPathSyntax& syntax = NativePathSyntax());
// The position of the first character behind the root; 1 means no root.
// Windows: `C:\x` gives 4, `\\server\share` 10, `\\?\C:\x` 8; the search
// for the root's separator starts at position 3, so a relative `a\bc\d`
// gives 6. POSIX: 2 for a path that starts with `/`, else 1.
int32_t GetRootLength(const clString& path, const clPathSyntax& syntax = NativePathSyntax());
// Removes and returns the last component, leaving a trailing separator.
// Nothing happens (empty result) when there is no root or the path is no
// longer than its root; trailing separators are stripped but never into
// the root, so `D:\\` pops an empty component and keeps `D:\`.
clString PopLastComponent(clString& path, const clPathSyntax& syntax = NativePathSyntax());
void QuoteText(clString& text);
// Windows: `\\?\` + text when the text does not start with two backslashes
// and its length is at or above `limit` (260 for files, 248 otherwise).
// POSIX: the text unchanged.
clString GetLongPath(const clString& text, int32_t limit, const clPathSyntax& syntax = NativePathSyntax());
// The running program's full name; its folder with a trailing separator.
clString GetProgramPath();
clString GetProgramFolder();
