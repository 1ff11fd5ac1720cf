// dlgDSPSettings: the small window in which one effect shows its
// settings: the program's own page for the effects that have one
// (effectpages.h), the page its library describes, or, for a library that
// describes none, its settings as text (with what the library says of
// them). There is no cancel: whatever the page holds when the window
// closes (OK, Escape or the close box) is the effect's new settings.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "frontend/effectpages.h"
#include "frontend/settingspage.h"
#include "toolkit/xwindow.h"

constexpr uint32_t kIdDSPSettingsText = 1080;

class dlgDSPSettings : public XWindow {
public:
    clString effectName;
    clString settings;  // as given; once closed, as the page left them
    clSettingsPage page;
    clEffectPage effectPage;  // for the effects with a page of the program's own
    clEffectPageKind pageKind = kNoEffectPage;
    clWindowHandle textField = nullptr;  // for a library that describes no options
    bool libraryFound = false;
    clString help;           // what the library says of its settings, for the text
    int32_t helpHeight = 0;  // units

    dlgDSPSettings(const clString& name, const clString& given);
    ~dlgDSPSettings() override;

    // Makes the window without waiting; false if it can't.
    bool Open(clWindowHandle owner);
    // Open, then wait until it closes.
    void Run(clWindowHandle owner);
    // What the page stands for now.
    clString PageSettings();

    intptr_t OnCreate() override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;
};

// Runs the window for an effect and answers its settings as the user left
// them.
clString EditEffectSettings(clWindowHandle owner, const clString& name, const clString& settings);
