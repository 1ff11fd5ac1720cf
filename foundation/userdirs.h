// Reading of the XDG `user-dirs.dirs` file, which names the user's music,
// pictures, videos, documents and desktop folders on Linux. Its lines look
// like XDG_MUSIC_DIR="$HOME/Music"; only "$HOME/..." and absolute paths are
// valid there, and `\` escapes the next character. Lines that do not fit
// are skipped.
#pragma once

#include "foundation/clstring.h"

// The folder for `key` (for example u"XDG_MUSIC_DIR") in `text`, with
// $HOME replaced by `home`; false when the key is absent or its value
// is unusable. The last valid line for a key wins, as in the shell.
bool FindUserDir(const clString& text, const char16_t* key, const clString& home, clString& folder);
