#include "frontend/effectpages.h"

#include "foundation/commandoptions.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kRow = 30;
constexpr int32_t kLabelWidth = 130;
constexpr int32_t kTestWidth = 170;
constexpr int32_t kLinesHeight = 66;
constexpr int32_t kOrEqual = 0x80000;

const char16_t* const kActions[] = {u"Copy the file instead of converting it", u"Leave the file out"};
const char16_t* const kConditions[] = {u"Any one test holds", u"All tests hold", u"Never (the rule is off)"};
const char16_t* const kBitrateTests[] = {u"No test", u"The source is lossless", u"The source is lossy", u"Below",
                                         u"Above"};
const char16_t* const kCompareTests[] = {u"No test", u"Below", u"At or below", u"Above", u"At or above"};
const char16_t* const kFileTests[] = {u"No test",
                                      u"The source is newer than its listed output",
                                      u"The source's archive attribute is set",
                                      u"The source's archive attribute is clear",
                                      u"The output exists",
                                      u"The output doesn't exist",
                                      u"The output is newer than the source"};

// The keys each page writes; the original's other keys are kept.
const char16_t* const kRuleKeys[] = {u"action", u"cond", u"ext", u"bitrate", u"freq", u"bitdepth", u"gen"};
const char16_t* const kTagKeys[] = {u"delall", u"delexcept", u"remove", u"set", u"append"};
const char16_t* const kProcessorKeys[] = {u"noally"};  // and cpu1 to cpu64

bool IsDropList(const clString& name) {
    for (const char16_t* list : {u"action", u"cond", u"bitratetest", u"freqtest", u"depthtest", u"gen"}) {
        if (name.EqualsNoCase(list)) return true;
    }
    return false;
}

template <size_t N>
clWindowHandle DropList(clWindowHandle parent, const char16_t* const (&items)[N], int32_t chosen, const clRect& place) {
    clWindowHandle list = CreateControl(kControlDropList, parent, 0, clString(), place);
    for (const char16_t* item : items) ComboAddItem(list, clString(item));
    ComboSetSelection(list, chosen >= 0 && chosen < static_cast<int32_t>(N) ? chosen : 0);
    return list;
}

// A whole number of 1 to `high`, or 0.
int64_t PositiveNumber(const clString& text, int64_t high) {
    clString trimmed(text);
    trimmed.Trim();
    if (trimmed.IsEmpty() || trimmed.Length() > 9) return 0;
    for (int32_t i = 1; i <= trimmed.Length(); ++i) {
        if (trimmed.CharAt(i) < u'0' || trimmed.CharAt(i) > u'9') return 0;
    }
    int64_t value = trimmed.ToInt64();
    return value >= 1 && value <= high ? value : 0;
}

clString NumberText(int64_t value) {
    return value == 0 ? clString() : clString::Formatted(u"%lld", static_cast<long long>(value));
}

// A comparison code as the entry of kCompareTests and the number shown.
int32_t CompareEntry(int64_t code, int64_t& number) {
    if (code == 0) return 0;
    int64_t magnitude = code < 0 ? -code : code;
    bool orEqual = (magnitude & kOrEqual) != 0;
    number = magnitude & ~int64_t{kOrEqual};
    if (code < 0) return orEqual ? 2 : 1;
    return orEqual ? 4 : 3;
}

int64_t CompareCode(int32_t entry, int64_t number) {
    if (entry <= 0 || number == 0) return 0;
    int64_t magnitude = number | ((entry == 2 || entry == 4) ? kOrEqual : 0);
    return entry <= 2 ? -magnitude : magnitude;
}

// Extensions as the rule keeps them: with their dots, separated by "; ".
clString ExtensionList(const clString& typed) {
    clString text(typed);
    text.Replace(u",", u" ");
    text.Replace(u";", u" ");
    clStringList pieces;
    pieces.Split(text.text, u" ");
    clString list;
    for (int64_t i = 0; i < pieces.Count(); ++i) {
        if (pieces[i].IsEmpty()) continue;
        if (!list.IsEmpty()) list.Append(u"; ");
        if (pieces[i].CharAt(1) != u'.') list.Append(u".");
        list.Append(pieces[i]);
    }
    return list;
}

// An option value can't hold a double quote: it would end the value.
clString Unquoted(const clString& value) {
    clString text(value);
    text.Replace(u"\"", u"'");
    text.Trim();
    return text;
}

void AddOption(clString& text, const char16_t* key, const clString& value, bool withValue = true) {
    if (!text.IsEmpty()) text.Append(u" ");
    text.Append(u"-");
    text.Append(key);
    if (!withValue) return;
    text.Append(u"=\"");
    text.Append(Unquoted(value));
    text.Append(u"\"");
}

// The options of `original` whose keys the page doesn't write, as they were.
template <size_t N>
void KeepOthers(clString& text, const clString& original, const char16_t* const (&written)[N], bool processors) {
    clCommandOptions parsed;
    parsed.Parse(original);
    for (int64_t k = 0; k < parsed.keys.Count(); ++k) {
        const clString& key = parsed.keys[k];
        if (key.IsEmpty()) continue;
        bool known = false;
        for (const char16_t* name : written) known = known || key.EqualsNoCase(name);
        if (processors && key.Length() > 3 && key.Compare(u"cpu", 3, true) == 0 &&
            PositiveNumber(key.Mid(4, key.Length()), 64) != 0) {
            known = true;
        }
        if (!known) AddOption(text, key.text, parsed.values[k], !parsed.values[k].IsEmpty());
    }
}

// The lines of a multi-line edit, trimmed, empty ones left out.
void NonEmptyLines(const clString& text, clStringList& lines) {
    clString joined(text);
    joined.Replace(u"\n", u"\r");
    clStringList all;
    all.SplitLines(joined);
    lines.Clear();
    for (int64_t i = 0; i < all.Count(); ++i) {
        clString line(all[i]);
        line.Trim();
        if (!line.IsEmpty()) lines.Add(line);
    }
}

}  // namespace

bool ParseProcessorList(const clString& text, int32_t* numbers, int32_t& count) {
    bool chosen[65] = {};
    clString list(text);
    list.Replace(u";", u",");
    clStringList pieces;
    pieces.Split(list.text, u",");
    for (int64_t i = 0; i < pieces.Count(); ++i) {
        clString piece(pieces[i]);
        piece.Trim();
        if (piece.IsEmpty()) continue;
        int32_t dash = piece.FindChar(u'-');
        int64_t first = PositiveNumber(dash == 0 ? piece : piece.Mid(1, dash - 1), 64);
        int64_t last = dash == 0 ? first : PositiveNumber(piece.Mid(dash + 1, piece.Length()), 64);
        if (first == 0 || last < first) return false;
        for (int64_t n = first; n <= last; ++n) chosen[n] = true;
    }
    count = 0;
    for (int32_t n = 1; n <= 64; ++n) {
        if (chosen[n]) numbers[count++] = n;
    }
    return true;
}

clString ProcessorListText(const int32_t* numbers, int32_t count) {
    clString text;
    for (int32_t i = 0; i < count;) {
        int32_t j = i;
        while (j + 1 < count && numbers[j + 1] == numbers[j] + 1) ++j;
        if (!text.IsEmpty()) text.Append(u", ");
        text.Append(NumberText(numbers[i]));
        if (j > i) {
            text.Append(u"-");
            text.Append(NumberText(numbers[j]));
        }
        i = j + 1;
    }
    return text;
}

clEffectPageKind clEffectPage::KindOf(const clString& effectName) {
    if (effectName.Equals(u"Conditional Encoding")) return kRulePage;
    if (effectName.Equals(u"Multi-CPU Force")) return kProcessorPage;
    if (effectName.Equals(u"ID Tag Processing")) return kTagPage;
    return kNoEffectPage;
}

int32_t clEffectPage::Height(clEffectPageKind pageKind) {
    switch (pageKind) {
        case kRulePage: return 7 * kRow + 44;
        case kProcessorPage: return 2 * kRow + 44;
        case kTagPage: return 3 * kRow + 2 * (kLinesHeight + 8) + 44;
        case kNoEffectPage: break;
    }
    return 0;
}

clWindowHandle clEffectPage::AddLabel(clWindowHandle parent, const char16_t* text, const clRect& place) {
    clWindowHandle label = CreateControl(kControlStatic, parent, 0, clString(text), place);
    created.Add(label);
    return label;
}

clWindowHandle clEffectPage::AddField(const char16_t* name, clWindowHandle field, clWindowHandle label) {
    created.Add(field);
    fields.Add(field);
    labels.Add(label);
    names.Add(clString(name));
    return field;
}

void clEffectPage::Show(clEffectPageKind pageKind, clWindowHandle parent, int32_t x, int32_t y, int32_t width,
                        const clString& settings) {
    Remove();
    kind = pageKind;
    original = settings;
    if (kind == kRulePage) ShowRule(parent, x, y, width);
    if (kind == kProcessorPage) ShowProcessors(parent, x, y, width);
    if (kind == kTagPage) ShowTags(parent, x, y, width);
}

void clEffectPage::ShowRule(clWindowHandle parent, int32_t x, int32_t y, int32_t width) {
    clCommandOptions keys;
    keys.Parse(original);
    auto number = [&keys](const char16_t* key) { return keys.Get(key).ToInt64(); };
    const int32_t fieldX = x + U(kLabelWidth + 6), fieldWidth = width - U(kLabelWidth + 6);
    int32_t top = y;
    auto label = [&](const char16_t* text) {
        return AddLabel(parent, text, clRect::Sized(x, top + U(4), U(kLabelWidth), U(20)));
    };
    auto whole = [&]() { return clRect::Sized(fieldX, top, fieldWidth, U(24)); };

    clWindowHandle l = label(u"The rule");
    int64_t action = number(u"action");
    AddField(u"action", DropList(parent, kActions, action == 0 ? 0 : 1, whole()), l);
    top += U(kRow);
    l = label(u"Acts when");
    int64_t condition = number(u"cond");
    AddField(u"cond", DropList(parent, kConditions, condition == 0 ? 0 : condition == 1 ? 1 : 2, whole()), l);
    top += U(kRow);
    l = label(u"Extensions");
    AddField(u"ext", CreateControl(kControlEdit, parent, 0, keys.Get(u"ext"), whole()), l);
    top += U(kRow);

    // A test and its number, with the number's unit after it.
    auto test = [&](const char16_t* text, const char16_t* testName, const char16_t* valueName, int32_t entry,
                    int64_t value, const char16_t* unit, bool bitrate) {
        clWindowHandle testLabel = label(text);
        clRect place = clRect::Sized(fieldX, top, U(kTestWidth), U(24));
        AddField(testName,
                 bitrate ? DropList(parent, kBitrateTests, entry, place) : DropList(parent, kCompareTests, entry, place),
                 testLabel);
        int32_t valueX = fieldX + U(kTestWidth + 6);
        int32_t valueWidth = fieldX + fieldWidth - valueX - U(56);
        AddField(valueName,
                 CreateControl(kControlEdit, parent, 0, NumberText(value), clRect::Sized(valueX, top, valueWidth, U(24))),
                 nullptr);
        AddLabel(parent, unit, clRect::Sized(valueX + valueWidth + U(6), top + U(4), U(50), U(20)));
        top += U(kRow);
    };
    int64_t bitrate = number(u"bitrate");
    int32_t bitrateEntry = bitrate == 0 ? 0 : bitrate == 1 ? 1 : bitrate == 2 ? 2 : bitrate < 0 ? 3 : 4;
    test(u"Bitrate", u"bitratetest", u"bitrate", bitrateEntry, bitrateEntry >= 3 ? (bitrate < 0 ? -bitrate : bitrate) : 0,
         u"kbit/s", true);
    int64_t frequency = 0, depth = 0;
    int32_t frequencyEntry = CompareEntry(number(u"freq"), frequency);
    test(u"Sample rate", u"freqtest", u"freq", frequencyEntry, frequency, u"Hz", false);
    int32_t depthEntry = CompareEntry(number(u"bitdepth"), depth);
    test(u"Bit depth", u"depthtest", u"bitdepth", depthEntry, depth, u"bits", false);

    l = label(u"File test");
    int64_t general = number(u"gen");
    AddField(u"gen", DropList(parent, kFileTests, general >= 1 && general <= 6 ? static_cast<int32_t>(general) : 0, whole()),
             l);
    top += U(kRow);
    AddLabel(parent, u"Extensions with their dots, such as \".mp3; .ogg\".\nRules act in the order of the effects.",
             clRect::Sized(x, top + U(2), width, U(40)));
}

void clEffectPage::ShowProcessors(clWindowHandle parent, int32_t x, int32_t y, int32_t width) {
    clCommandOptions keys;
    keys.Parse(original);
    int32_t numbers[64];
    int32_t count = 0;
    for (int32_t cpu = 1; cpu <= 64; ++cpu) {
        if (keys.Has(clString::Formatted(u"cpu%d", cpu).text)) numbers[count++] = cpu;
    }
    clWindowHandle l = AddLabel(parent, u"Processors", clRect::Sized(x, y + U(4), U(kLabelWidth), U(20)));
    AddField(u"cpus",
             CreateControl(kControlEdit, parent, 0, ProcessorListText(numbers, count),
                           clRect::Sized(x + U(kLabelWidth + 6), y, width - U(kLabelWidth + 6), U(24))),
             l);
    clWindowHandle free = CreateControl(kControlCheckBox, parent, 0,
                                        clString(u"Let the system place the workers (don't tie each to its processor)"),
                                        clRect::Sized(x, y + U(kRow + 2), width, U(22)));
    CheckBoxSet(free, keys.Has(u"noally"));
    AddField(u"noally", free, nullptr);
    AddLabel(parent, u"As many files are converted at once as processors are listed, such as \"1-4, 6\".",
             clRect::Sized(x, y + U(2 * kRow + 6), width, U(36)));
}

void clEffectPage::ShowTags(clWindowHandle parent, int32_t x, int32_t y, int32_t width) {
    clCommandOptions keys;
    keys.Parse(original);
    // The repeated options, one a line (or one a name).
    clString removed, set, appended;
    for (int64_t k = 0; k < keys.keys.Count(); ++k) {
        const clString& key = keys.keys[k];
        clString* list = key.EqualsNoCase(u"remove") ? &removed
                         : key.EqualsNoCase(u"set")  ? &set
                         : key.EqualsNoCase(u"append") ? &appended
                                                       : nullptr;
        if (list == nullptr || keys.values[k].IsEmpty()) continue;
        if (!list->IsEmpty()) list->Append(list == &removed ? u"; " : u"\r\n");
        list->Append(keys.values[k]);
    }
    const int32_t fieldX = x + U(kLabelWidth + 6), fieldWidth = width - U(kLabelWidth + 6);
    int32_t top = y;
    clWindowHandle all = CreateControl(kControlCheckBox, parent, 0, clString(u"Delete every tag, pictures included"),
                                       clRect::Sized(x, top + U(2), width, U(22)));
    CheckBoxSet(all, keys.Has(u"delall"));
    AddField(u"delall", all, nullptr);
    top += U(kRow);
    clWindowHandle l = AddLabel(parent, u"Keep only the tags", clRect::Sized(x, top + U(4), U(kLabelWidth), U(20)));
    AddField(u"delexcept",
             CreateControl(kControlEdit, parent, 0, keys.Get(u"delexcept"), clRect::Sized(fieldX, top, fieldWidth, U(24))),
             l);
    top += U(kRow);
    l = AddLabel(parent, u"Delete the tags", clRect::Sized(x, top + U(4), U(kLabelWidth), U(20)));
    AddField(u"remove", CreateControl(kControlEdit, parent, 0, removed, clRect::Sized(fieldX, top, fieldWidth, U(24))),
             l);
    top += U(kRow);
    l = AddLabel(parent, u"Set to\n(NAME=value)", clRect::Sized(x, top + U(4), U(kLabelWidth), U(40)));
    AddField(u"set",
             CreateControl(kControlMultiLineEdit, parent, 0, set, clRect::Sized(fieldX, top, fieldWidth, U(kLinesHeight))),
             l);
    top += U(kLinesHeight + 8);
    l = AddLabel(parent, u"Add a value\n(NAME=value)", clRect::Sized(x, top + U(4), U(kLabelWidth), U(40)));
    AddField(u"append",
             CreateControl(kControlMultiLineEdit, parent, 0, appended,
                           clRect::Sized(fieldX, top, fieldWidth, U(kLinesHeight))),
             l);
    top += U(kLinesHeight + 8);
    AddLabel(parent,
             u"One NAME=value a line. Names are separated by \";\" and compared ignoring case;\n"
             u"\"picture\" names the pictures.",
             clRect::Sized(x, top + U(2), width, U(40)));
}

clString clEffectPage::Settings() {
    if (!IsShown()) return original;
    if (kind == kRulePage) return RuleSettings();
    if (kind == kProcessorPage) return ProcessorSettings();
    if (kind == kTagPage) return TagSettings();
    return original;
}

clString clEffectPage::RuleSettings() {
    clCommandOptions keys;
    keys.Parse(original);
    clString text;
    if (ComboGetSelection(Field(u"action")) == 1) AddOption(text, u"action", clString(u"1"));
    int32_t condition = ComboGetSelection(Field(u"cond"));
    if (condition > 0) AddOption(text, u"cond", NumberText(condition));
    clString extensions = ExtensionList(WindowGetText(Field(u"ext")));
    if (!extensions.IsEmpty()) AddOption(text, u"ext", extensions);
    // A number that isn't one leaves that test as it was.
    auto write = [&](const char16_t* key, int64_t code, bool valid) {
        if (!valid) code = keys.Get(key).ToInt64();
        if (code != 0) AddOption(text, key, NumberText(code));
    };
    int32_t bitrateEntry = ComboGetSelection(Field(u"bitratetest"));
    int64_t kbits = PositiveNumber(WindowGetText(Field(u"bitrate")), 10000000);
    if (bitrateEntry <= 2) {
        write(u"bitrate", bitrateEntry < 0 ? 0 : bitrateEntry, true);
    } else {
        // Above 1 or 2 would read as the lossless tests.
        bool valid = kbits != 0 && (bitrateEntry == 3 || kbits > 2);
        write(u"bitrate", bitrateEntry == 3 ? -kbits : kbits, valid);
    }
    int32_t frequencyEntry = ComboGetSelection(Field(u"freqtest"));
    int64_t hertz = PositiveNumber(WindowGetText(Field(u"freq")), kOrEqual - 1);
    write(u"freq", CompareCode(frequencyEntry, hertz), frequencyEntry <= 0 || hertz != 0);
    int32_t depthEntry = ComboGetSelection(Field(u"depthtest"));
    int64_t bits = PositiveNumber(WindowGetText(Field(u"bitdepth")), 64);
    write(u"bitdepth", CompareCode(depthEntry, bits), depthEntry <= 0 || bits != 0);
    int32_t general = ComboGetSelection(Field(u"gen"));
    if (general > 0) AddOption(text, u"gen", NumberText(general));
    KeepOthers(text, original, kRuleKeys, false);
    return text;
}

clString clEffectPage::ProcessorSettings() {
    int32_t numbers[64];
    int32_t count = 0;
    clString text;
    if (CheckBoxIsChecked(Field(u"noally"))) AddOption(text, u"noally", clString(), false);
    if (ParseProcessorList(WindowGetText(Field(u"cpus")), numbers, count)) {
        for (int32_t i = 0; i < count; ++i) AddOption(text, clString::Formatted(u"cpu%d", numbers[i]).text, clString(), false);
    } else {
        // A list that isn't one keeps the processors as they were.
        clCommandOptions keys;
        keys.Parse(original);
        for (int32_t cpu = 1; cpu <= 64; ++cpu) {
            clString key = clString::Formatted(u"cpu%d", cpu);
            if (keys.Has(key.text)) AddOption(text, key.text, clString(), false);
        }
    }
    KeepOthers(text, original, kProcessorKeys, true);
    return text;
}

clString clEffectPage::TagSettings() {
    clString text;
    if (CheckBoxIsChecked(Field(u"delall"))) AddOption(text, u"delall", clString(), false);
    clString keep = WindowGetText(Field(u"delexcept"));
    keep.Trim();
    if (!keep.IsEmpty()) AddOption(text, u"delexcept", keep);
    clString removed(WindowGetText(Field(u"remove")));
    removed.Replace(u",", u";");
    clStringList gone;
    gone.Split(removed.text, u";");
    for (int64_t i = 0; i < gone.Count(); ++i) {
        clString name(gone[i]);
        name.Trim();
        if (!name.IsEmpty()) AddOption(text, u"remove", name);
    }
    for (const char16_t* key : {u"set", u"append"}) {
        clStringList lines;
        NonEmptyLines(WindowGetText(Field(key)), lines);
        for (int64_t i = 0; i < lines.Count(); ++i) AddOption(text, key, lines[i]);
    }
    KeepOthers(text, original, kTagKeys, false);
    return text;
}

void clEffectPage::Remove() {
    for (int64_t i = 0; i < created.count; ++i) DestroyControl(static_cast<clWindowHandle>(created[i]));
    created.Reset();
    fields.Reset();
    labels.Reset();
    names.Clear();
}

clWindowHandle clEffectPage::Field(const char16_t* name) const {
    int64_t index = 0;
    if (!names.Find(name, true, &index) || index >= fields.count) return nullptr;
    return static_cast<clWindowHandle>(fields[index]);
}

bool clEffectPage::SetField(const clString& name, const clString& value) {
    clWindowHandle field = Field(name.text);
    if (field == nullptr) return false;
    if (name.EqualsNoCase(u"noally") || name.EqualsNoCase(u"delall")) {
        CheckBoxSet(field, value.Equals(u"1"));
    } else if (name.EqualsNoCase(u"set") || name.EqualsNoCase(u"append")) {
        clString lines(value);
        lines.Replace(u"|", u"\r\n");
        WindowSetText(field, lines);
    } else if (IsDropList(name)) {
        for (int32_t i = 0; i < ComboCount(field); ++i) {
            if (!ComboItemText(field, i).Equals(value)) continue;
            ComboSetSelection(field, i);
            return true;
        }
        return false;
    } else {
        WindowSetText(field, value);
    }
    return true;
}
