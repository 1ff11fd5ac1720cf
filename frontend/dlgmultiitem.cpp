#include "frontend/dlgmultiitem.h"

#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "plugins/codechandler.h"
#include "plugins/encoderentries.h"
#include "plugins/optionfields.h"
#include "toolkit/controls.h"
#include "toolkit/dialogs.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kWidth = 440;
constexpr int32_t kHeight = 424;
constexpr int32_t kMargin = 12;
constexpr int32_t kFieldLeft = 128;
constexpr int32_t kPageTop = 66;
constexpr int32_t kOutputTop = 214;
constexpr int32_t kEffectsTop = 306;
constexpr uint32_t kHeadingColor = 0x804000;

}  // namespace

void ListItemEncoders(clStringList& names) {
    names.Clear();
    clEncoderRows rows;
    clString selected;
    BuildEncoderRows(rows, selected);
    for (int64_t i = 0; i < rows.Count(); ++i) {
        const clEncoderRow& row = rows[i];
        if (row.kind == kEntryInstalled && row.text.CharAt(1) != u'[') names.Add(row.text);
    }
}

dlgMultiItem::dlgMultiItem(const clMultiEncoderItem& start) {
    item.encoderName = start.encoderName;
    item.encoderOptions = start.encoderOptions;
    item.folder = start.folder;
    item.namingRule = start.namingRule;
    item.dspEffects = start.dspEffects;
    ListItemEncoders(encoders);
}

dlgMultiItem::~dlgMultiItem() { DestroyWindowObject(); }

bool dlgMultiItem::Open(clWindowHandle owner, const clString& title) {
    if (!Create(title, clRect::Sized(0, 0, U(kWidth), U(kHeight)), kWsCaption | kWsSysMenu, 0, owner)) return false;
    // The layout is for a client area of kWidth by kHeight.
    clRect client = WindowClientRect(windowHandle);
    clRect outer = WindowScreenRect(windowHandle);
    SetPlacement(kKeepPlacement, kKeepPlacement, outer.Width() + U(kWidth) - client.Width(),
                 outer.Height() + U(kHeight) - client.Height());
    if (owner != nullptr) CenterOver(owner);
    else CenterOnScreen();
    WindowShow(windowHandle, true);
    WindowSetFocus(encoderList);
    return true;
}

int32_t dlgMultiItem::Run(clWindowHandle owner, const clString& title) {
    if (!Open(owner, title)) return 0;
    return RunModal() == 1 ? 1 : 0;
}

intptr_t dlgMultiItem::OnCreate() {
    int32_t right = U(kWidth - kMargin);
    int32_t fieldWidth = right - U(kFieldLeft);
    CreateControl(kControlStatic, windowHandle, 0, u"Encoder", clRect::Sized(U(kMargin), U(16), U(110), U(20)));
    encoderList = CreateControl(kControlDropList, windowHandle, kIdItemEncoder, clString(),
                                clRect::Sized(U(kFieldLeft), U(12), fieldWidth, U(24)));
    int32_t chosen = 0;
    for (int64_t i = 0; i < encoders.Count(); ++i) {
        ComboAddItem(encoderList, encoders[i]);
        if (encoders[i].EqualsNoCase(item.encoderName)) chosen = static_cast<int32_t>(i);
    }
    // An item whose encoder is gone keeps its name, listed last.
    if (!item.encoderName.IsEmpty() && !encoders.Find(item.encoderName.text, true)) {
        encoders.Add(item.encoderName);
        chosen = ComboAddItem(encoderList, item.encoderName);
    }
    ComboSetSelection(encoderList, chosen);

    CreateControl(kControlStatic, windowHandle, 0, u"Folder", clRect::Sized(U(kMargin), U(kOutputTop + 4), U(110), U(20)));
    folderField = CreateControl(kControlEdit, windowHandle, kIdItemFolder, item.folder,
                                clRect::Sized(U(kFieldLeft), U(kOutputTop), fieldWidth - U(34), U(24)));
    browseButton = CreateControl(kControlButton, windowHandle, kIdItemBrowse, u"...",
                                 clRect::Sized(right - U(28), U(kOutputTop), U(28), U(24)));
    CreateControl(kControlStatic, windowHandle, 0, u"Naming", clRect::Sized(U(kMargin), U(kOutputTop + 36), U(110), U(20)));
    namingField = CreateControl(kControlEdit, windowHandle, kIdItemNaming, item.namingRule,
                                clRect::Sized(U(kFieldLeft), U(kOutputTop + 32), fieldWidth, U(24)));

    effectList.Create(windowHandle, U(kMargin), U(kEffectsTop), U(330), U(65), true, true);
    effects.Attach(effectList, windowHandle);
    effects.Load(item.dspEffects);
    addButton = CreateControl(kControlButton, windowHandle, kIdItemAddEffect, u"Add",
                              clRect::Sized(right - U(72), U(kEffectsTop), U(72), U(26)));
    int32_t buttonTop = U(kHeight - kMargin - 26);
    CreateControl(kControlButton, windowHandle, 2, u"Cancel", clRect::Sized(right - U(176), buttonTop, U(80), U(26)));
    okButton = CreateControl(kControlButton, windowHandle, 1, u"OK", clRect::Sized(right - U(80), buttonTop, U(80), U(26)));
    ShowPage();
    return 0;
}

intptr_t dlgMultiItem::OnDestroy() {
    settingsPage.Remove();
    effectList.Destroy();
    return 0;
}

intptr_t dlgMultiItem::OnPaint(clCanvas* canvas) {
    clFontSpec bold;
    bold.bold = true;
    canvas->SetFont(bold);
    canvas->Text(U(kMargin), U(kPageTop - 20), clString(u"Settings"), kHeadingColor, clNoColor);
    canvas->Text(U(kMargin), U(kOutputTop - 20), clString(u"Output To"), kHeadingColor, clNoColor);
    canvas->Text(U(kMargin), U(kEffectsTop - 20), clString(u"DSP Effects"), kHeadingColor, clNoColor);
    return 0;
}

void dlgMultiItem::ShowPage() {
    int32_t chosen = ComboGetSelection(encoderList);
    clString name = chosen >= 0 ? ComboItemText(encoderList, chosen) : clString();
    if (!pageEncoder.IsEmpty() && name.Equals(pageEncoder)) return;
    settingsPage.Remove();
    if (optionsField != nullptr) DestroyControl(optionsField);
    if (optionsLabel != nullptr) DestroyControl(optionsLabel);
    optionsField = optionsLabel = nullptr;
    pageEncoder = name;
    clString options = name.EqualsNoCase(item.encoderName) ? item.encoderOptions : clString();
    clString spec = name.IsEmpty() ? clString() : OptionSpecOfLibrary(name, false);
    clWindowHandle previous = encoderList;
    if (!spec.IsEmpty()) {
        ParseOptionSpec(spec, settingsPage.fields);
        settingsPage.Show(windowHandle, U(kMargin), U(kPageTop), U(kWidth - 2 * kMargin), options);
        for (int64_t i = 0; i < settingsPage.controls.count; ++i) {
            auto control = static_cast<clWindowHandle>(settingsPage.controls[i]);
            WindowPlaceAfter(control, previous);
            previous = control;
        }
    } else {
        // Nothing describes this library's options: its string as text.
        optionsLabel = CreateControl(kControlStatic, windowHandle, 0, u"Options",
                                     clRect::Sized(U(kMargin), U(kPageTop + 4), U(110), U(20)));
        optionsField = CreateControl(kControlEdit, windowHandle, kIdItemOptions, options,
                                     clRect::Sized(U(kFieldLeft), U(kPageTop), U(kWidth - kMargin - kFieldLeft), U(24)));
        WindowPlaceAfter(optionsField, previous);
    }
    WindowInvalidate(windowHandle, nullptr);
}

clString dlgMultiItem::PageOptions() {
    if (settingsPage.IsShown()) return settingsPage.Options();
    if (optionsField != nullptr) return WindowGetText(optionsField);
    return clString();
}

bool dlgMultiItem::ChooseEncoder(const clString& name) {
    int64_t index = 0;
    if (!encoders.Find(name.text, true, &index)) return false;
    ComboSetSelection(encoderList, static_cast<int32_t>(index));
    OnCommand(kIdItemEncoder, encoderList, kCbnSelChange);
    return true;
}

intptr_t dlgMultiItem::OnCommand(uint32_t id, clWindowHandle, uint32_t notifyCode) {
    if (id == kIdItemEncoder && notifyCode == kCbnSelChange) {
        ShowPage();
    } else if (id == kIdItemAddEffect && notifyCode == kBnClicked) {
        effects.ShowMenu(addButton);
    } else if (id == kIdItemBrowse && notifyCode == kBnClicked) {
        clString folder = askFolder != nullptr
                              ? askFolder(*this)
                              : ChooseFolder(windowHandle, clString(u"Quillotone: Select Output Folder"));
        if (!folder.IsEmpty()) WindowSetText(folderField, folder);
    }
    // Choosing effects comes with the effect selection; until then the
    // item keeps the effects it has.
    return 0;
}

intptr_t dlgMultiItem::OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                    uint32_t* handledFlag) {
    effectList.OnRawMessage(window, message, wParam, lParam, handledFlag);
    return 0;
}

intptr_t dlgMultiItem::OnIdOk() {
    clString folder = WindowGetText(folderField);
    clString naming = WindowGetText(namingField);
    folder.Trim();
    naming.Trim();
    if (!MultiItemTextFits(folder) || !MultiItemTextFits(naming)) {
        clMessageBox(u"The folder and the naming of an item can't hold a double quote.", u"Quillotone", 0x30);
        return 0;
    }
    if (pageEncoder.IsEmpty()) {
        clMessageBox(u"Choose the encoder of this item.", u"Quillotone", 0x30);
        return 0;
    }
    item.encoderOptions = PageOptions();
    item.encoderName = pageEncoder;
    item.folder = folder;
    item.namingRule = naming;
    item.dspEffects = effects.Stored();
    EndModal(1);
    return 0;
}

intptr_t dlgMultiItem::OnIdCancel() {
    EndModal(2);
    return 0;
}

intptr_t dlgMultiItem::OnClose() { return OnIdCancel(); }
