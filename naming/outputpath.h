// The full destination of one source for one encoder, and the friendly
// folder names ("Music", "Desktop", ...) that users see and may type.
//
// A destination is: a base folder, "[origdrive]" or nothing; a naming rule
// expanded for the source; the encoder's extension. Tag values can't make
// folders or leave the base folder: their separators are taken in the
// naming language, and CleanPath removes "." and ".." folders and every
// character the file system refuses. Nothing is created on disk; only the
// unique counter may move.
#pragma once

#include "foundation/clstring.h"
#include "foundation/pathsyntax.h"

class clSourceFile;

// The extension that makes a source a joined track: a text file whose
// first line names the first audio file.
constexpr const char16_t* clConcatExtension = u".quillotone-concat";

// `fixedPath`, when not empty, is the destination without extension and
// overrides folder and naming. In POSIX syntax `\` in the folder text is a
// separator like `/`.
clString ComputeOutputPath(const clSourceFile& source, const clString& folder, const clString& namingRule,
                           const clString& extension, const clString& fixedPath, const clString& dspEffects,
                           const clPathSyntax& syntax = NativePathSyntax());
// "Music\Rock" to the real path below the user's music folder; "Data (D:)"
// to "D:\" (Windows syntax); anything else unchanged.
clString ResolveFriendlyFolder(const clString& text, const clPathSyntax& syntax = NativePathSyntax());
// The reverse, for showing a path: "Music\Rock", or "Data (D:)" for a
// drive root with a label.
clString FriendlyFolderName(const clString& path, bool isFile, const clPathSyntax& syntax = NativePathSyntax());
