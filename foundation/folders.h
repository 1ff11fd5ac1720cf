// File-system work beyond a single file: existence, deleting, moving,
// making and removing folder trees, temporary files and the process id
// text. No function here raises or shows anything; each answers false, an
// empty text or 0. Long names go through GetLongPath with the limit 248.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

// An empty path is false. A root for which the find gives nothing still
// counts as an existing folder (through the drive test).
bool PathExists(const clString& path, bool* isFolder = nullptr);
uint32_t GetFileAttributesOf(const clString& path, bool* failed = nullptr);
// On "access denied" clears the read-only attribute and tries once more.
bool DeleteFileEx(const clString& path, bool retried = false);
bool MoveFileEx2(const clString& oldName, const clString& newName);
// Deletes what matches `pattern` ("*.*" by default) below `folder`, then the
// folder. Names of fewer than three characters (drive and file-system
// roots) are refused. Links are removed, never followed.
bool DeleteFolderTree(const clString& folder, const char16_t* pattern = nullptr);
// Creates every missing folder of `path`; an existing one is no failure.
bool MakeFolders(const clString& path);
// The temporary folder with a trailing separator.
clString GetTempFolder();
// Creates an empty file "<prefix>-<process id>-<n>" in the temporary
// folder and returns its name in `name` (a name given in is deleted first:
// temporary names are replaced, not reused). False, with `name` empty,
// only when the folder refuses every attempt.
bool MakeTempFile(clString& name, const char* prefix = nullptr);
// 32 upper-case hex digits, made once per process.
const clString& GetProcessGuidText();
