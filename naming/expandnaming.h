// The naming language: a naming string such as "[artist]\[album]\[track]
// [title]" turned into one relative output path for one track.
//
// There is no parser. ExpandNaming holds one text and rewrites it in place
// by repeated search and replace, in fixed phases: tag values are quoted
// (a comma becomes "<comma_>", an opening bracket "<brackets_>", a
// backslash "-"), items are replaced by values, the tag forms by the tags
// they name, then the rightmost function is evaluated again and again
// until none is left, and the quoting is undone. What can't be evaluated
// stays as text; nothing reports an error.
//
// The result uses `\` between folders on every platform: in POSIX syntax
// `\` and `/` of the naming string both separate folders, the source's path
// items are taken with their `/` as separators, and a tag value never makes
// a folder (both its slashes become "-"). The caller turns the separators
// into the platform's.
//
// Every phase that could rebuild what it replaces stops after a bound
// (clNamingMaxRounds replacements, the text passing clNamingMaxText
// characters, or clNamingMaxWork characters searched: a rule of a few
// hundred characters needs some ten thousand), leaving the text as
// it stands: tags come from the files being converted, and no file may
// hang a batch. No naming string that ends within the bound is changed.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pathsyntax.h"

class clStringList;
class clTagList;

constexpr int32_t clNamingMaxRounds = 10000;
constexpr int32_t clNamingMaxText = 65536;
constexpr int64_t clNamingMaxWork = 10000000;

// `extrasNames`: the names of the naming extras (their values may make
// folders, and each is an item of its own), or null.
clString ExpandNaming(const clString& naming, const clTagList& tags, const clStringList* extrasNames,
                      const clPathSyntax& syntax = NativePathSyntax());
// True when the naming string needs the sources' tags or stream facts.
bool NamingNeedsTags(const clString& naming);
// The next argument of a function: up to the first comma (which goes too),
// or with `last` (or no comma) all that is left.
clString NextArgument(clString& arguments, bool last);
