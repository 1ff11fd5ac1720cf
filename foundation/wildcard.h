// Matching of a name against a find pattern with the Windows rules:
// `*` any run, `?` one character, ASCII case ignored, and the pattern "*.*"
// matching every name, with or without a dot. Used by the POSIX side of
// directory listing so that both platforms find the same entries.
#pragma once

bool clWildcardMatch(const char16_t* pattern, const char16_t* name);
