#include "frontend/settingspage.h"

#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kLabelWidth = 170;
// A range of numbers up to this many values is a drop list.
constexpr double kListedRange = 40;

bool IsListedRange(const clOptionField& field) {
    return field.kind == kOptionInteger && field.high - field.low <= kListedRange;
}

// The text of a number of a listed range; the default says so.
clString NumberItem(const clOptionField& field, int64_t number) {
    clString text = clString::Formatted(u"%lld", static_cast<long long>(number));
    if (text.Equals(field.defaultValue)) text.Append(u" (default)");
    return text;
}

}  // namespace

void clSettingsPage::Show(clWindowHandle parent, int32_t x, int32_t y, int32_t width, const clString& options) {
    Remove();
    original = options;
    ReadOptionValues(options, fields);
    for (int64_t i = 0; i < fields.Count(); ++i) {
        clOptionField& field = fields[i];
        // A value the library wouldn't take shows as its default.
        if (!OptionValueAllowed(field, field.value)) field.value.Clear();
        clString value = field.value.IsEmpty() ? field.defaultValue : field.value;
        int32_t top = y + static_cast<int32_t>(i) * U(kSettingsRowHeight);
        clWindowHandle control = nullptr;
        clWindowHandle label = nullptr;
        if (field.kind == kOptionFlag) {
            control = CreateControl(kControlCheckBox, parent, 0, field.label, clRect::Sized(x, top + U(2), width, U(22)));
            CheckBoxSet(control, value.Equals(u"1"));
        } else {
            label = CreateControl(kControlStatic, parent, 0, field.label, clRect::Sized(x, top + U(4), U(kLabelWidth), U(20)));
            clRect place = clRect::Sized(x + U(kLabelWidth + 6), top, width - U(kLabelWidth + 6), U(24));
            if (field.kind == kOptionChoice) {
                control = CreateControl(kControlDropList, parent, 0, clString(), place);
                int64_t chosen = 0;
                for (int64_t c = 0; c < field.choices.Count(); ++c) {
                    ComboAddItem(control, field.choiceLabels[c]);
                    if (field.choices[c].Equals(value)) chosen = c;
                }
                ComboSetSelection(control, static_cast<int32_t>(chosen));
            } else if (IsListedRange(field)) {
                control = CreateControl(kControlDropList, parent, 0, clString(), place);
                auto low = static_cast<int64_t>(field.low), high = static_cast<int64_t>(field.high);
                for (int64_t n = low; n <= high; ++n) ComboAddItem(control, NumberItem(field, n));
                int64_t current = value.IsEmpty() ? low : value.ToInt64();
                ComboSetSelection(control, static_cast<int32_t>(current - low));
            } else {
                control = CreateControl(kControlEdit, parent, 0, value, place);
            }
        }
        controls.Add(control);
        labels.Add(label);
    }
}

clString clSettingsPage::Options() {
    for (int64_t i = 0; i < fields.Count() && i < controls.count; ++i) {
        clOptionField& field = fields[i];
        auto control = static_cast<clWindowHandle>(controls[i]);
        clString value;
        if (field.kind == kOptionFlag) {
            value = CheckBoxIsChecked(control) ? clString(u"1") : clString();
        } else if (field.kind == kOptionChoice) {
            int32_t chosen = ComboGetSelection(control);
            if (chosen >= 0 && chosen < field.choices.Count()) value = field.choices[chosen];
        } else if (IsListedRange(field)) {
            value = clString::Formatted(u"%lld", static_cast<long long>(field.low) + ComboGetSelection(control));
        } else {
            value = WindowGetText(control);
            value.Trim();
            if (!OptionValueAllowed(field, value)) value = field.value;
        }
        field.value = value;
    }
    return ComposeOptions(fields, original);
}

void clSettingsPage::Remove() {
    for (int64_t i = 0; i < controls.count; ++i) {
        if (controls[i] != nullptr) DestroyControl(static_cast<clWindowHandle>(controls[i]));
        if (labels[i] != nullptr) DestroyControl(static_cast<clWindowHandle>(labels[i]));
    }
    controls.Reset();
    labels.Reset();
}

clWindowHandle clSettingsPage::ControlOf(const char16_t* name) const {
    for (int64_t i = 0; i < fields.Count() && i < controls.count; ++i) {
        if (fields[i].name.EqualsNoCase(name)) return static_cast<clWindowHandle>(controls[i]);
    }
    return nullptr;
}

bool clSettingsPage::SetValue(const char16_t* name, const clString& value) {
    for (int64_t i = 0; i < fields.Count() && i < controls.count; ++i) {
        const clOptionField& field = fields[i];
        if (!field.name.EqualsNoCase(name)) continue;
        if (!OptionValueAllowed(field, value)) return false;
        auto control = static_cast<clWindowHandle>(controls[i]);
        if (field.kind == kOptionFlag) {
            CheckBoxSet(control, value.Equals(u"1"));
        } else if (field.kind == kOptionChoice) {
            int64_t index = 0;
            if (!field.choices.Find(value.text, false, &index)) return false;
            ComboSetSelection(control, static_cast<int32_t>(index));
        } else if (IsListedRange(field)) {
            clString shown = value.IsEmpty() ? field.defaultValue : value;
            ComboSetSelection(control, static_cast<int32_t>(shown.ToInt64() - static_cast<int64_t>(field.low)));
        } else {
            WindowSetText(control, value);
        }
        return true;
    }
    return false;
}
