// clSettingsPage: an encoder's or effect's settings, built in a window from
// the options its library describes (optionfields.h): a drop list for a
// choice or a short range of numbers, a field for a wide range or a
// decimal, a check box for a flag, each with its label. It reads an option
// string when it is shown and gives the one its controls stand for; a
// value typed out of range gives way to the one before.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "plugins/optionfields.h"
#include "toolkit/messages.h"

class clSettingsPage {
public:
    clOptionFields fields;
    clString original;       // the option string the page was shown with
    clPointerArray controls;  // clWindowHandle per field: its value control
    clPointerArray labels;    // clWindowHandle per field, null for a flag

    clSettingsPage() = default;
    ~clSettingsPage() { Remove(); }
    clSettingsPage(const clSettingsPage&) = delete;
    clSettingsPage& operator=(const clSettingsPage&) = delete;

    // Builds the controls in `parent` from (x, y), `width` wide (window
    // pixels). The fields must be set.
    void Show(clWindowHandle parent, int32_t x, int32_t y, int32_t width, const clString& options);
    // The option string the controls stand for now.
    clString Options();
    void Remove();
    bool IsShown() const { return controls.count > 0; }
    // Sets a field's control as a user would; false for an unknown name or
    // a value the field doesn't take.
    bool SetValue(const char16_t* name, const clString& value);
    // The control of a field by its option name, or null.
    clWindowHandle ControlOf(const char16_t* name) const;
};

// A row of the page is this many units high.
constexpr int32_t kSettingsRowHeight = 30;
