// clAsciiFoldTable: 531 pairs that fold accented and variant Latin letters
// to plain ASCII letters, for file names that must stay within ASCII.
// It is a character table in the form CleanPath takes: pairs of units,
// ended by a pair whose first or second member is zero. Where a character
// stands twice (thorn, eth), the first row wins.
#pragma once

extern const char16_t clAsciiFoldTable[(531 + 1) * 2];
