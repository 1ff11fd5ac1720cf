// The functions of the naming language ("[UPPER]x[]", "[RIGHT]2,x[]", ...)
// and the quoting that keeps tag values from breaking its syntax.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

class clStringList;
class clTagList;

// The function tokens, in the order the scan takes them.
extern const char16_t* const clNamingTokens[25];

// What a function may look at: the quoted private tags, the tags as given
// (for the source date), and the source's folder names, front to back.
struct clNamingContext {
    const clTagList& quoted;
    const clTagList& given;
    const clStringList& folders;
};

// The token that stands furthest right in `text` (ignoring ASCII case), its
// index in clNamingTokens and its position in `at`; -1 when there is none.
int FindRightmostFunction(const clString& text, int32_t& at);
// Carries out function `token` on its arguments (consumed).
clString RunNamingFunction(int token, clString& arguments, const clNamingContext& context);

// A comma becomes "<comma_>" and an opening bracket "<brackets_>".
void QuoteNamingText(clString& text);
// The reverse, the substitutes found ignoring case.
void UnquoteNamingText(clString& text);
// Replace that refuses (false, text unchanged) when the result would pass
// clNamingMaxText characters.
bool ReplaceWithin(clString& text, const char16_t* search, const char16_t* replacement, bool ignoreCase);

// A `compilation` value counts as true unless it is empty, "no", "false"
// or "0" (ignoring case).
bool CompilationIsTrue(const clString& value);
// A `disc` value "n/total" with a total above 1.
bool IsMultiDisc(const clString& disc);
