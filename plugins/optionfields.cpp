#include "plugins/optionfields.h"

#include <cstdlib>

#include "foundation/commandoptions.h"
#include "foundation/utf.h"
#include "plugins/codechandler.h"
#include "plugins/xdll.h"

namespace {

bool KindOf(const clString& text, clOptionKind& kind) {
    if (text.Equals(u"integer")) kind = kOptionInteger;
    else if (text.Equals(u"decimal")) kind = kOptionDecimal;
    else if (text.Equals(u"choice")) kind = kOptionChoice;
    else if (text.Equals(u"flag")) kind = kOptionFlag;
    else return false;
    return true;
}

// A decimal number of the whole text ("-1", "5.5"); false for anything else.
bool ReadNumber(const clString& text, double& number) {
    std::string bytes = StringToUtf8(text);
    if (bytes.empty()) return false;
    char* end = nullptr;
    number = std::strtod(bytes.c_str(), &end);
    return end != nullptr && *end == 0;
}

}  // namespace

void ParseOptionSpec(const clString& spec, clOptionFields& fields) {
    fields.Clear();
    clString text(spec);
    text.Replace(u"\n", u"\r");
    clStringList lines;
    lines.SplitLines(text);
    for (int64_t i = 0; i < lines.Count(); ++i) {
        clStringList parts;
        parts.Split(lines[i].text, u"|");
        clOptionKind kind;
        if (parts.Count() != 6 || parts[0].IsEmpty() || !KindOf(parts[1], kind)) continue;
        auto* field = new clOptionField;
        field->name = parts[0];
        field->kind = kind;
        field->defaultValue = parts[2];
        field->label = parts[4];
        field->help = parts[5];
        if (kind == kOptionChoice) {
            clStringList items;
            items.Split(parts[3].text, u",");
            for (int64_t c = 0; c < items.Count(); ++c) {
                int32_t equals = items[c].Find(u"=");
                clString value = equals == 0 ? items[c] : items[c].Mid(1, equals - 1);
                clString shown = equals == 0 ? items[c] : items[c].Mid(equals + 1, items[c].Length());
                field->choices.Add(value);
                field->choiceLabels.Add(shown);
            }
        } else if (kind != kOptionFlag) {
            clStringList range;
            range.Split(parts[3].text, u"..");
            if (range.Count() != 2 || !ReadNumber(range[0], field->low) || !ReadNumber(range[1], field->high)) {
                delete field;
                continue;
            }
        }
        fields.Add(field);
    }
}

bool OptionSpecOf(const clString& name, bool effect, clOptionFields& fields) {
    fields.Clear();
    const qv_log_record noLog{};
    qv_query_record query{};
    if (effect) {
        clQvDSP dsp;
        if (!clQvCodecHandler::LoadDSP(name, dsp, &noLog) || dsp.Get(dsp.instance, u"OptionSpec", &query) == 0 ||
            query.text1 == nullptr) {
            return false;
        }
        ParseOptionSpec(clString(query.text1), fields);
    } else {
        clQvEncoder encoder;
        if (!clQvCodecHandler::LoadEncoder(name, encoder, &noLog) ||
            encoder.Get(encoder.instance, u"OptionSpec", &query) == 0 || query.text1 == nullptr) {
            return false;
        }
        ParseOptionSpec(clString(query.text1), fields);
    }
    return fields.Count() > 0;
}

void ReadOptionValues(const clString& options, clOptionFields& fields) {
    clCommandOptions parsed;
    parsed.Parse(options);
    for (int64_t i = 0; i < fields.Count(); ++i) {
        clOptionField& field = fields[i];
        field.value = parsed.Get(field.name.text);
    }
}

bool OptionValueAllowed(const clOptionField& field, const clString& value) {
    if (value.IsEmpty()) return true;
    switch (field.kind) {
        case kOptionFlag: return value.Equals(u"1");
        case kOptionChoice: return field.choices.Find(value.text, false);
        case kOptionInteger:
        case kOptionDecimal: {
            double number = 0;
            if (!ReadNumber(value, number) || number < field.low || number > field.high) return false;
            return field.kind == kOptionDecimal || number == static_cast<double>(static_cast<int64_t>(number));
        }
    }
    return false;
}

clString ComposeOptions(const clOptionFields& fields, const clString& original) {
    clString text;
    auto add = [&text](const clString& name, const clString& value) {
        if (!text.IsEmpty()) text.Append(u" ");
        text.Append(u"-");
        text.Append(name);
        text.Append(u"=\"");
        text.Append(value);
        text.Append(u"\"");
    };
    for (int64_t i = 0; i < fields.Count(); ++i) {
        const clOptionField& field = fields[i];
        if (field.value.IsEmpty() || field.value.Equals(field.defaultValue)) continue;
        add(field.name, field.value);
    }
    clCommandOptions parsed;
    parsed.Parse(original);
    for (int64_t k = 0; k < parsed.keys.Count(); ++k) {
        bool known = false;
        for (int64_t i = 0; i < fields.Count() && !known; ++i) known = fields[i].name.EqualsNoCase(parsed.keys[k].text);
        if (!known && !parsed.keys[k].IsEmpty()) add(parsed.keys[k], parsed.values[k]);
    }
    return text;
}
