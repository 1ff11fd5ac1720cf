// clCommandOptions: the parser of `-key="value"` texts, used for the
// process command line and for encoder, effect and multi-encoder option
// strings.
//
// `-key=value`, `-key value`, `-key="a b"` and `-key "a b"` all mean the
// same, and `--key` is `-key`. There is no escape inside quotes: nested
// option texts avoid the quote by the substitutes {qt}, {mqt} and
// {profileqt}. A value that starts with `-` and is not quoted is read as
// the next key. Lookups ignore ASCII case and the first of a repeated key
// wins.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/stringlist.h"

class clCommandOptions {
public:
    clStringList keys;
    clStringList values;  // values[i] belongs to keys[i]; "" for a key without value
    clString line;        // the whole command line, once ParseProcessCommandLine ran

    // Parses the process command line. The program's name is skipped only
    // when the line begins with `"`; an unquoted name is parsed with the
    // rest, so a `-` inside an unquoted program path begins a key there.
    void ParseProcessCommandLine();
    void ParseCommandLine(const clString& commandLine);
    // Clears and fills from `text`, from the 1-based position `start`.
    void Parse(const clString& text, int32_t start = 1);
    // The command line behind the program's name, trimmed of blanks.
    clString GetRawArguments() const;

    // The index of the first key equal to `key` ignoring case, or -1.
    int64_t IndexOf(const char16_t* key) const;
    bool Has(const char16_t* key) const { return IndexOf(key) >= 0; }
    // The value of the first such key; "" when absent.
    clString Get(const char16_t* key) const;
};
