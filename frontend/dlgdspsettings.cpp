#include "frontend/dlgdspsettings.h"

#include "foundation/pathtext.h"
#include "foundation/folders.h"
#include "plugins/codechandler.h"
#include "plugins/optionfields.h"
#include "toolkit/controls.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kWidth = 460;
constexpr int32_t kMargin = 12;
constexpr int32_t kTop = 14;
constexpr int32_t kTextWidth = 600;
constexpr int32_t kEffectPageWidth = 560;
constexpr int32_t kHelpLineHeight = 18;

}  // namespace

dlgDSPSettings::dlgDSPSettings(const clString& name, const clString& given) : effectName(name), settings(given) {}

dlgDSPSettings::~dlgDSPSettings() { DestroyWindowObject(); }

bool dlgDSPSettings::Open(clWindowHandle owner) {
    libraryFound = PathExists(DSPLibraryPath(effectName));
    pageKind = libraryFound ? clEffectPage::KindOf(effectName) : kNoEffectPage;
    clString spec = libraryFound && pageKind == kNoEffectPage ? OptionSpecOfLibrary(effectName, true) : clString();
    if (!spec.IsEmpty()) ParseOptionSpec(spec, page.fields);
    int32_t height = kTop + 66;  // the OK button and room above it
    int32_t width = kWidth;
    if (pageKind != kNoEffectPage) {
        height += clEffectPage::Height(pageKind);
        width = kEffectPageWidth;
    } else if (page.fields.Count() > 0) {
        height += static_cast<int32_t>(page.fields.Count()) * kSettingsRowHeight;
    } else if (libraryFound) {
        help = OptionHelp(effectName, true);
        if (help.IsEmpty()) {
            help = clString(u"This effect doesn't describe its settings: they are written here as text.");
        }
        while (!help.IsEmpty() && help.CharAt(help.Length()) == u'\n') help.SetLength(help.Length() - 1);
        int32_t lines = 1;
        for (int32_t i = 1; i <= help.Length(); ++i) lines += help.CharAt(i) == u'\n' ? 1 : 0;
        helpHeight = lines * kHelpLineHeight + 8;
        height += helpHeight + 40;
        // Wide enough that the help's lines stand as the library wrote them.
        width = kTextWidth;
    } else {
        height += 60;
    }
    clString title(u"Quillotone DSP Settings: ", effectName.text);
    if (!Create(title, clRect::Sized(0, 0, U(width), U(height)), kWsCaption | kWsSysMenu, 0, owner)) return false;
    // The layout is for a client area of width by height.
    clRect client = WindowClientRect(windowHandle);
    clRect outer = WindowScreenRect(windowHandle);
    SetPlacement(kKeepPlacement, kKeepPlacement, outer.Width() + U(width) - client.Width(),
                 outer.Height() + U(height) - client.Height());
    if (owner != nullptr) CenterOver(owner);
    else CenterOnScreen();
    WindowShow(windowHandle, true);
    return true;
}

void dlgDSPSettings::Run(clWindowHandle owner) {
    if (Open(owner)) RunModal();
}

intptr_t dlgDSPSettings::OnCreate() {
    clRect client = WindowClientRect(windowHandle);
    int32_t width = client.Width() - 2 * U(kMargin);
    if (pageKind != kNoEffectPage) {
        effectPage.Show(pageKind, windowHandle, U(kMargin), U(kTop), width, settings);
    } else if (page.fields.Count() > 0) {
        page.Show(windowHandle, U(kMargin), U(kTop), width, settings);
    } else if (libraryFound) {
        // Nothing describes these settings: they are edited as text, with
        // the library's own words on them.
        CreateControl(kControlStatic, windowHandle, 0, help, clRect::Sized(U(kMargin), U(kTop), width, U(helpHeight)));
        textField = CreateControl(kControlEdit, windowHandle, kIdDSPSettingsText, settings,
                                  clRect::Sized(U(kMargin), U(kTop + helpHeight + 8), width, U(24)));
    } else {
        // A library that is gone: its settings stay as they were.
        CreateControl(kControlStatic, windowHandle, 0,
                      clString(u"The effect's library isn't installed; its settings are kept as they are."),
                      clRect::Sized(U(kMargin), U(kTop), width, U(48)));
    }
    CreateControl(kControlButton, windowHandle, 1, u"OK",
                  clRect::Sized(client.Width() - U(kMargin) - U(80), client.Height() - U(12) - U(26), U(80), U(26)));
    return 0;
}

clString dlgDSPSettings::PageSettings() {
    if (effectPage.IsShown()) return effectPage.Settings();
    if (page.IsShown()) return page.Options();
    if (textField != nullptr) return WindowGetText(textField);
    return settings;
}

intptr_t dlgDSPSettings::OnIdOk() {
    settings = PageSettings();
    EndModal(1);
    return 0;
}

// Escape and the close box keep the page's settings too: the window has
// no cancel.
intptr_t dlgDSPSettings::OnIdCancel() { return OnIdOk(); }

intptr_t dlgDSPSettings::OnClose() { return OnIdOk(); }

clString EditEffectSettings(clWindowHandle owner, const clString& name, const clString& settings) {
    dlgDSPSettings dialog(name, settings);
    dialog.Run(owner);
    return dialog.settings;
}
