#include "frontend/frmnewprofile.h"

#include "foundation/messagebox.h"
#include "plugins/encoderentries.h"
#include "toolkit/controls.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

// What the label edit holds at most, as the store's key names go.
constexpr int32_t kLabelLimit = 999;

}  // namespace

frmNewProfile::frmNewProfile(const clString& encoder, const clStringList& profiles) : encoderName(encoder) {
    for (int64_t i = 0; i < profiles.Count(); ++i) existing.Add(profiles[i]);
}

frmNewProfile::~frmNewProfile() { DestroyWindowObject(); }

bool frmNewProfile::Open(clWindowHandle owner) {
    if (!Create(u"Quillotone: Create Encoder Profile", clRect::Sized(0, 0, U(360), U(216)), kWsCaption | kWsSysMenu,
                0, owner)) {
        return false;
    }
    if (owner != nullptr) CenterOver(owner);
    else CenterOnScreen();
    WindowShow(windowHandle, true);
    WindowSetFocus(label);
    return true;
}

int32_t frmNewProfile::Run(clWindowHandle owner) {
    if (!Open(owner)) return 0;
    return RunModal() == 1 ? 1 : 0;
}

intptr_t frmNewProfile::OnCreate() {
    clRect client = WindowClientRect(windowHandle);
    int32_t width = client.Width() - 2 * U(12);
    clFontSpec bold;
    bold.bold = true;
    clWindowHandle heading = CreateControl(kControlStatic, windowHandle, 0, u"New Profile", clRect::Sized(U(12), U(10), width, U(18)));
    WindowSetFont(heading, bold);
    label = CreateControl(kControlEdit, windowHandle, kIdProfileLabel, clString(kProfilePlaceholder),
                          clRect::Sized(U(12), U(32), width, U(24)));
    EditSetSelection(label, 0, -1);
    CreateControl(kControlStatic, windowHandle, kIdProfileEncoder, clString::Formatted(u"'%s'", encoderName.text),
                  clRect::Sized(U(12), U(62), width, U(18)));
    CreateControl(kControlStatic, windowHandle, kIdProfileHint,
                  u"This profile will be fixed to the above encoder, to create a profile with a different encoder, "
                  u"cancel this page, select the encoder required and create a new profile.",
                  clRect::Sized(U(12), U(86), width, U(64)));
    int32_t buttonTop = client.Height() - U(12) - U(26);
    CreateControl(kControlButton, windowHandle, 2, u"Cancel", clRect::Sized(client.Width() - U(12) - U(168), buttonTop, U(80), U(26)));
    okButton = CreateControl(kControlButton, windowHandle, 1, u"OK", clRect::Sized(client.Width() - U(12) - U(80), buttonTop, U(80), U(26)));
    WindowEnable(okButton, false);
    return 0;
}

intptr_t frmNewProfile::OnCommand(uint32_t id, clWindowHandle, uint32_t notifyCode) {
    if (id == kIdProfileLabel && notifyCode == kEnChange) {
        clString text = WindowGetText(label);
        WindowEnable(okButton, !text.IsEmpty() && !text.Equals(kProfilePlaceholder));
    }
    return 0;
}

intptr_t frmNewProfile::OnIdOk() {
    if (!WindowIsEnabled(okButton)) return 0;
    clString text = WindowGetText(label);
    if (text.Length() > kLabelLimit) text.SetLength(kLabelLimit);
    result = ProfileEntryText(text, encoderName);
    if (ProfileNameTaken(result, existing)) {
        clMessageBox(u"A profile already exists with this name.", u"Quillotone", 0x30);
        result.Clear();
        return 0;
    }
    EndModal(1);
    return 0;
}

intptr_t frmNewProfile::OnIdCancel() {
    result.Clear();
    EndModal(2);
    return 0;
}

intptr_t frmNewProfile::OnClose() { return OnIdCancel(); }
