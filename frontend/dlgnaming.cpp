#include "frontend/dlgnaming.h"

#include "crash/dlgcrashreport.h"
#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/dialogs.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kWidth = 580;
constexpr int32_t kHeight = 474;
constexpr int32_t kMargin = 14;
constexpr int32_t kBand = 34;           // the painted heading
constexpr int32_t kBaseTop = 64;        // "Base Location" field
constexpr int32_t kNamingTop = 122;     // "Dynamic Naming" field
constexpr int32_t kNamingHeight = 104;
constexpr int32_t kMenusTop = 234;
constexpr int32_t kChecksTop = 270;
constexpr int32_t kExampleTop = 322;    // "Example" field
constexpr int32_t kExampleHeight = 88;
constexpr uint32_t kBandColor = 0xF6F6F6;
constexpr uint32_t kActiveFrame = 0xD77800;
constexpr uint32_t kInactiveFrame = 0xC8C8C8;
constexpr uint32_t kCaptionColor = 0x804000;
constexpr uint64_t kCloseTimer = 1;
// What the edits hold at most, as the saved text is read.
constexpr int32_t kMostText = 9999;

clString Limited(clString text) {
    if (text.Length() > kMostText) text.SetLength(kMostText);
    return text;
}

}  // namespace

dlgNaming::dlgNaming(const clString& text) : saved(text) {}

dlgNaming::~dlgNaming() {
    DestroyWindowObject();
    if (mark != nullptr) DestroyImage(mark);
}

bool dlgNaming::Open(clWindowHandle owner) {
    if (!Create(clString(u"Quillotone: Dynamic Naming"), clRect::Sized(0, 0, U(kWidth), U(kHeight)),
                kWsPopup | kWsBorder | kWsSysMenu, 0, owner)) {
        return false;
    }
    if (owner != nullptr) CenterOver(owner);
    else CenterOnScreen();
    WindowShow(windowHandle, true);
    WindowSetFocus(namingField);
    return true;
}

int32_t dlgNaming::Run(clWindowHandle owner) {
    if (!Open(owner)) return 0;
    return RunModal() == 1 ? 1 : 0;
}

intptr_t dlgNaming::OnCreate() {
    clRect client = WindowClientRect(windowHandle);
    int32_t right = client.Width() - U(kMargin);
    int32_t width = right - U(kMargin);
    mark = DrawProgramMark();
    CreateControl(kControlButton, windowHandle, kIdNamingHelp, u"?",
                  clRect::Sized(right - U(56), U(6), U(24), U(22)));
    CreateControl(kControlButton, windowHandle, kIdNamingClose, u"X",
                  clRect::Sized(right - U(26), U(6), U(24), U(22)));

    int32_t setLeft = right - U(128) - U(6) - U(64);
    baseField = CreateControl(kControlEdit, windowHandle, kIdNamingBase, clString(),
                              clRect::Sized(U(kMargin), U(kBaseTop), setLeft - U(6) - U(kMargin), U(24)));
    CreateControl(kControlButton, windowHandle, kIdNamingSet, u"Set", clRect::Sized(setLeft, U(kBaseTop), U(64), U(24)));
    CreateControl(kControlButton, windowHandle, kIdNamingSourceDrive, u"As Source Drive",
                  clRect::Sized(right - U(128), U(kBaseTop), U(128), U(24)));

    namingField = CreateControl(kControlMultiLineEdit, windowHandle, kIdNamingText, clString(),
                                clRect::Sized(U(kMargin), U(kNamingTop), width, U(kNamingHeight)));
    const struct {
        uint32_t id;
        const char16_t* text;
        int32_t width;
    } kMenus[] = {{kIdNamingAddTag, u"Add Tag", 100},
                  {kIdNamingAddProperty, u"Add Property", 120},
                  {kIdNamingFunctions, u"Programmable Actions", 172},
                  {kIdNamingExamples, u"Examples", 100}};
    int32_t x = U(kMargin);
    for (const auto& menu : kMenus) {
        CreateControl(kControlButton, windowHandle, menu.id, menu.text, clRect::Sized(x, U(kMenusTop), U(menu.width), U(26)));
        x += U(menu.width) + U(6);
    }
    compilationBox = CreateControl(kControlCheckBox, windowHandle, kIdNamingCompilation, u"Compilation",
                                   clRect::Sized(U(kMargin), U(kChecksTop), U(130), U(22)));
    multiDiscBox = CreateControl(kControlCheckBox, windowHandle, kIdNamingMultiDisc, u"Multi-Disc",
                                 clRect::Sized(U(kMargin) + U(140), U(kChecksTop), U(130), U(22)));
    exampleField = CreateControl(kControlMultiLineEdit, windowHandle, kIdNamingExample, clString(),
                                 clRect::Sized(U(kMargin), U(kExampleTop), width, U(kExampleHeight)));
    WindowEnable(exampleField, false);

    int32_t buttonTop = client.Height() - U(12) - U(26);
    CreateControl(kControlButton, windowHandle, 2, u"Cancel", clRect::Sized(right - U(168), buttonTop, U(80), U(26)));
    CreateControl(kControlButton, windowHandle, 1, u"OK", clRect::Sized(right - U(80), buttonTop, U(80), U(26)));

    clString base, naming;
    SplitSavedNaming(saved, base, naming);
    WindowSetText(baseField, base);
    WindowSetText(namingField, naming);
    RefreshExample();
    SetTimerEx(50, 0, kCloseTimer);
    return 0;
}

intptr_t dlgNaming::OnDestroy() {
    KillTimerEx(kCloseTimer);
    handled = 0;
    return 0;
}

intptr_t dlgNaming::OnPaint(clCanvas* canvas) {
    clRect client = WindowClientRect(windowHandle);
    canvas->FillRect(clRect::Sized(0, 0, client.Width(), U(kBand)), kBandColor);
    canvas->Line(0, U(kBand), client.Width(), U(kBand), 0xE0E0E0, 1);
    if (mark != nullptr) canvas->Image(mark, clRect::Sized(U(10), (U(kBand) - 24) / 2, 24, 24));
    clFontSpec heading;
    heading.face = clString(u"Tahoma");
    heading.height = 15;
    heading.bold = true;
    canvas->SetFont(heading);
    canvas->Text(U(42), U(9), clString(u"Quillotone: Dynamic Naming"), 0x333333, clNoColor);
    clFontSpec bold;
    bold.bold = true;
    canvas->SetFont(bold);
    canvas->Text(U(kMargin), U(kBaseTop - 20), clString(u"Base Location"), kCaptionColor, clNoColor);
    canvas->Text(U(kMargin), U(kNamingTop - 20), clString(u"Dynamic Naming"), kCaptionColor, clNoColor);
    canvas->Text(U(kMargin), U(kExampleTop - 20), clString(u"Example"), kCaptionColor, clNoColor);
    // Without a title bar the window draws its own frame, in the colour a
    // caption would have.
    canvas->FramedRect(client, clNoColor, active ? kActiveFrame : kInactiveFrame, 0, 1);
    return 0;
}

void dlgNaming::RefreshExample() {
    clString naming = Limited(WindowGetText(namingField));
    WindowSetText(exampleField, NamingExample(naming, CheckBoxIsChecked(compilationBox),
                                              CheckBoxIsChecked(multiDiscBox)));
}

void dlgNaming::ChooseMenuEntry(clNamingMenu menu, int32_t entry) {
    int32_t count = 0;
    const clNamingMenuEntry* entries = NamingMenuEntries(menu, count);
    if (entries == nullptr || entry < 0 || entry >= count) return;
    clString insert(entries[entry].text);
    if (menu == kNamingMenuExamples) {
        WindowSetText(namingField, insert);
    } else {
        int32_t start = 0, end = 0;
        EditGetSelection(namingField, start, end);
        int32_t caret = 0;
        WindowSetText(namingField, InsertAtCaret(WindowGetText(namingField), start, insert, caret));
        WindowSetFocus(namingField);
        EditSetSelection(namingField, caret, caret);
    }
    RefreshExample();
}

void dlgNaming::ShowMenu(clNamingMenu which, clWindowHandle button) {
    int32_t count = 0;
    const clNamingMenuEntry* entries = NamingMenuEntries(which, count);
    clMenu menu;
    for (int32_t i = 0; i < count; ++i) menu.Add(clString(entries[i].label), static_cast<uint32_t>(i + 1));
    clPoint at = CursorPosition();
    if (button != nullptr) {
        clRect place = WindowScreenRect(button);
        at = clPoint{place.left, place.bottom};
    }
    uint32_t chosen = menu.TrackPopup(windowHandle, at.x, at.y);
    if (chosen != 0) ChooseMenuEntry(which, static_cast<int32_t>(chosen) - 1);
}

intptr_t dlgNaming::OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) {
    switch (id) {
        case kIdNamingText:
            if (notifyCode == kEnChange) RefreshExample();
            break;
        case kIdNamingCompilation:
        case kIdNamingMultiDisc: RefreshExample(); break;
        case kIdNamingAddTag: ShowMenu(kNamingMenuTags, control); break;
        case kIdNamingAddProperty: ShowMenu(kNamingMenuProperties, control); break;
        case kIdNamingFunctions: ShowMenu(kNamingMenuFunctions, control); break;
        case kIdNamingExamples: ShowMenu(kNamingMenuExamples, control); break;
        case kIdNamingSourceDrive: WindowSetText(baseField, clString(u"[origdrive]")); break;
        case kIdNamingSet: {
            clString folder = askFolder != nullptr
                                  ? askFolder(*this)
                                  : ChooseFolder(windowHandle, clString(u"Quillotone: Select Base Fixed Folder"));
            if (!folder.IsEmpty()) WindowSetText(baseField, folder);
            break;
        }
        case kIdNamingHelp:
            PlatformOpenDocument(JoinPath(GetProgramFolder(), clString(u"Help\\qvt\\Naming.htm")));
            break;
        case kIdNamingClose:
            // Ended by the timer, not inside the button's own click.
            closeRequested = true;
            break;
        default: break;
    }
    return 0;
}

intptr_t dlgNaming::OnTimer(uint64_t id, uint64_t) {
    if (id == kCloseTimer && closeRequested) {
        closeRequested = false;
        EndModal(0);
    }
    return 0;
}

intptr_t dlgNaming::OnKeyDown(uint32_t key, intptr_t) {
    if (key == kVkEscape) return OnIdCancel();
    handled = 0;
    return 0;
}

intptr_t dlgNaming::OnActivate(uint32_t, clWindowHandle) {
    active = true;
    WindowInvalidate(windowHandle, nullptr);
    handled = 0;
    return 0;
}

intptr_t dlgNaming::OnDeactivate(clWindowHandle) {
    active = false;
    WindowInvalidate(windowHandle, nullptr);
    handled = 0;
    return 0;
}

intptr_t dlgNaming::OnMouseDown(int32_t x, int32_t y, uint32_t, int32_t button) {
    clRect client = WindowClientRect(windowHandle);
    if (!drag.Down(*this, x, y, button, clRect::Sized(0, 0, client.Width(), U(kBand)))) handled = 0;
    return 0;
}

intptr_t dlgNaming::OnMouseMove(int32_t x, int32_t y, uint32_t) {
    if (!drag.Move(*this, x, y)) handled = 0;
    return 0;
}

intptr_t dlgNaming::OnMouseUp(int32_t, int32_t, uint32_t, int32_t) {
    if (!drag.Up()) handled = 0;
    return 0;
}

intptr_t dlgNaming::OnIdOk() {
    clString edited = JoinSavedNaming(Limited(WindowGetText(baseField)), Limited(WindowGetText(namingField)));
    if (!NamingNamesEachTrack(edited)) {
        clMessageBox(clString(kNamingNeedsItemsMessage), clString(u"Quillotone"), 0x40);
        return 0;
    }
    saved = edited;
    EndModal(1);
    return 0;
}

intptr_t dlgNaming::OnIdCancel() {
    EndModal(0);
    return 0;
}

intptr_t dlgNaming::OnClose() { return OnIdCancel(); }

bool EditNaming(clWindowHandle owner, clString& text) {
    dlgNaming dialog(text);
    if (dialog.Run(owner) != 1) return false;
    text = dialog.saved;
    return true;
}
