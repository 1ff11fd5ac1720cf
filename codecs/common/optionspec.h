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
#include <cstdlib>
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

// Why `value` given for `o` is refused: "-level takes 0..8, not 'abc'";
// empty when it is allowed. An empty value stands for "not given".
inline std::string RefusalOf(const OptionSpec& o, const std::string& value) {
    if (value.empty()) return std::string();
    std::string refused = "-" + std::string(o.name) + " takes " + ValuesShown(o) + ", not '" + value + "'";
    switch (o.kind) {
        case OptionKind::Flag: return value == "1" ? std::string() : refused;
        case OptionKind::Choice: {
            std::string shown = "|" + ValuesShown(o) + "|";
            return shown.find("|" + value + "|") != std::string::npos ? std::string() : refused;
        }
        case OptionKind::Integer:
        case OptionKind::Decimal: {
            std::string range = o.values;
            size_t dots = range.find("..");
            double low = std::strtod(range.substr(0, dots).c_str(), nullptr);
            double high = std::strtod(range.substr(dots + 2).c_str(), nullptr);
            // Digits only (and a sign, and for a decimal one point): no
            // blanks, exponents or words that strtod would take in part.
            size_t digits = 0, points = 0;
            for (size_t i = 0; i < value.size(); ++i) {
                char c = value[i];
                if (c >= '0' && c <= '9') {
                    ++digits;
                } else if (c == '.' && o.kind == OptionKind::Decimal) {
                    ++points;
                } else if (!(c == '-' && i == 0)) {
                    return refused;
                }
            }
            if (digits == 0 || points > 1) return refused;
            double number = std::strtod(value.c_str(), nullptr);
            return number < low || number > high ? refused : std::string();
        }
    }
    return refused;
}

}  // namespace qvc
