// The options of a codec described once, as data beside its code: each
// option's name, kind, allowed values, default, the label its settings
// page shows and the help line "qvt plugins" prints. The library hands the
// description out through its Get export ("OptionSpec"), and the program
// builds the settings page from it, so a page writes exactly the option
// string that `qvt --options` takes.
//
// The description travels as text, one option a line:
//   name|kind|default|values|label|help
// kind is "integer" or "decimal" (values "low..high"), "choice" (values
// separated by ",", each "value" or "value=Label"; an empty value stands
// for "not given") or "flag" (given as "1" when set).
#pragma once

#include <cstddef>
#include <iterator>
#include <string>

namespace qvc {

enum class OptionKind { Integer, Decimal, Choice, Flag };

struct OptionSpec {
    const char* name;  // without the dash
    OptionKind kind;
    const char* defaultValue;  // what not giving the option means; "" for nothing
    const char* values;
    const char* label;
    const char* help;
};

struct OptionTable {
    const OptionSpec* specs;
    size_t count;
    // Free help for a library whose options don't fit the table (null
    // otherwise): it then has no page.
    const char* freeHelp;
};

inline const char* KindName(OptionKind kind) {
    switch (kind) {
        case OptionKind::Integer: return "integer";
        case OptionKind::Decimal: return "decimal";
        case OptionKind::Choice: return "choice";
        case OptionKind::Flag: return "flag";
    }
    return "";
}

inline std::string OptionSpecText(const OptionTable& table) {
    std::string text;
    for (size_t i = 0; i < table.count; ++i) {
        const OptionSpec& o = table.specs[i];
        text += std::string(o.name) + "|" + KindName(o.kind) + "|" + o.defaultValue + "|" + o.values + "|" + o.label +
                "|" + o.help + "\n";
    }
    return text;
}

// The values as a user writes them: "0..8", "vbr|cbr|abr", "1".
inline std::string ValuesShown(const OptionSpec& o) {
    if (o.kind == OptionKind::Flag) return "1";
    if (o.kind != OptionKind::Choice) return o.values;
    std::string shown;
    std::string values = o.values;
    size_t start = 0;
    while (start <= values.size()) {
        size_t comma = values.find(',', start);
        std::string item = values.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        std::string value = item.substr(0, item.find('='));
        if (!value.empty()) shown += (shown.empty() ? "" : "|") + value;
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return shown;
}

// The help "qvt plugins" prints: one line an option, its default at the end.
inline std::string OptionHelpText(const OptionTable& table) {
    if (table.freeHelp != nullptr) return table.freeHelp;
    std::string text;
    for (size_t i = 0; i < table.count; ++i) {
        const OptionSpec& o = table.specs[i];
        std::string head = "-" + std::string(o.name) + "=\"" + ValuesShown(o) + "\"";
        if (head.size() < 26) head.resize(26, ' ');
        text += head + " " + o.help;
        if (o.defaultValue[0] != 0) text += std::string("; ") + o.defaultValue + " when not given";
        text += "\n";
    }
    return text;
}

}  // namespace qvc
