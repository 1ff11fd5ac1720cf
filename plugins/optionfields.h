// The options a codec library describes ("OptionSpec", one line an option:
// name|kind|default|values|label|help), read into fields, and the option
// string made from chosen values. The settings pages are built from these
// fields, so that a page writes the same string qvt's --options takes.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"

enum clOptionKind : int32_t { kOptionInteger, kOptionDecimal, kOptionChoice, kOptionFlag };

class clOptionField {
public:
    clString name;
    clOptionKind kind = kOptionInteger;
    clString defaultValue;
    clStringList choices;       // a choice's values ("" for "not given")
    clStringList choiceLabels;  // what the page shows of each
    double low = 0, high = 0;   // a number's range
    clString label;
    clString help;
    clString value;  // the value chosen; "" means not given
};
using clOptionFields = clOwningList<clOptionField>;

// Reads a description; lines that don't hold six fields, or name an unknown
// kind, are left out.
void ParseOptionSpec(const clString& spec, clOptionFields& fields);
// The library's description, asked of the loaded encoder or effect.
bool OptionSpecOf(const clString& name, bool effect, clOptionFields& fields);
// Sets each field's value from an option string.
void ReadOptionValues(const clString& options, clOptionFields& fields);
// The option string of the fields' values: each value that is given and
// isn't the default, as -name="value", in the description's order;
// options of `original` that the description doesn't know are kept at the
// end, as they were.
clString ComposeOptions(const clOptionFields& fields, const clString& original);
// True when `value` is allowed for the field (an empty value always is).
bool OptionValueAllowed(const clOptionField& field, const clString& value);
