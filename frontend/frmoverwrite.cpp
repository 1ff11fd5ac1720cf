#include "frontend/frmoverwrite.h"

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/views.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kMargin = 10;
constexpr int32_t kButtonHeight = 26;
// The first column takes the list's width less this; the second is 75.
constexpr int32_t kColumnRest = 121;
constexpr int32_t kExtensionWidth = 75;
// Texts of a row are read in pieces of this size, as the list keeps them.
constexpr int32_t kTextLimit = 999;

constexpr uint32_t kUncheckedText = 0xC0C0C0;
constexpr uint32_t kExistingText = 0x000080;  // dark red
constexpr uint32_t kExistingBack = 0xF6F6F6;

clString Clipped(const clString& text) {
    return text.Length() > kTextLimit ? text.Mid(1, kTextLimit) : text;
}

}  // namespace

frmOverwrite::frmOverwrite(int32_t* resultOut, clOverwriteItems& overwriteItems, const clString& encoder,
                           const clString& extension)
    : items(&overwriteItems), encoderName(encoder), outputExtension(extension), result(resultOut) {
    // Every conflict starts as counted, also one with another job of the
    // batch only: just a rename asks the disk again.
    for (int64_t i = 0; i < items->Count(); ++i) (*items)[i].exists = 1;
    list.form = this;
    if (result != nullptr) *result = 0;
}

frmOverwrite::~frmOverwrite() {
    list.Detach();
    DestroyWindowObject();
    for (int64_t i = 0; i < icons.count; ++i) DestroyImage(static_cast<clImageHandle>(icons[i]));
}

bool frmOverwrite::Open(clWindowHandle owner) {
    clRect place = clRect::Sized(0, 0, U(620), U(380));
    if (!Create(u"Quillotone: Confirm File Replace", place, kWsCaption | kWsSysMenu | kWsThickFrame, 0, owner)) {
        return false;
    }
    if (owner != nullptr) CenterOver(owner);
    else CenterOnScreen();
    WindowShow(windowHandle, true);
    return true;
}

int32_t frmOverwrite::Run(clWindowHandle owner) {
    if (!Open(owner)) return 0;
    RunModal();
    return result != nullptr ? *result : 0;
}

intptr_t frmOverwrite::OnCreate() {
    clFontSpec bold;
    bold.bold = true;
    heading = CreateControl(kControlStatic, windowHandle, 0, u"File(s) Exist, Overwrite?", clRect{});
    WindowSetFont(heading, bold);
    hint = CreateControl(kControlStatic, windowHandle, kIdOverwriteHint,
                         u"Select Item && Press F2 to rename. Remove Checkmark to Skip File", clRect{});
    list.Create(windowHandle, kIdOverwriteList, clRect::Sized(0, 0, 100, 100), true);
    list.labelEditing = true;
    cancelButton = CreateControl(kControlButton, windowHandle, 2, u"Cancel", clRect{});
    uniqueButton = CreateControl(kControlButton, windowHandle, kIdUniqueNames, u"Unique Names", clRect{});
    skipButton = CreateControl(kControlButton, windowHandle, kIdSkipExisting, u"Skip Existing", clRect{});
    overwriteButton = CreateControl(kControlButton, windowHandle, 1, u"Overwrite (xxxxx)", clRect{});

    list.InsertColumn(0, u"Destination File", 200);
    list.InsertColumn(1, u"Extension", U(kExtensionWidth));
    // One icon per distinct extension: the encoder's, beside its library.
    // A row without one shows none.
    clStringList extensions;
    clString iconFile = JoinPath(JoinPath(GetProgramFolder(), u"encoder"), encoderName);
    iconFile.Append(u".ico");
    for (int64_t i = 0; i < items->Count(); ++i) {
        if (extensions.Find((*items)[i].extension.text, true)) continue;
        clImageHandle icon = LoadImageFile(iconFile, 16, 16);
        if (icon == nullptr) continue;
        extensions.Add((*items)[i].extension);
        icons.Add(icon);
    }
    if (icons.count > 0) {
        ListViewSetImages(list.controlHandle, reinterpret_cast<clImageHandle*>(icons.items),
                          static_cast<int32_t>(icons.count), 16);
    }
    WindowSetRedraw(list.controlHandle, false);
    for (int64_t i = 0; i < items->Count(); ++i) {
        const clOverwriteItem& item = (*items)[i];
        int64_t image = -1;
        extensions.Find(item.extension.text, true, &image);
        int32_t row = list.InsertItem(-1, RemoveExtension(item.newPath), static_cast<int32_t>(image), true);
        list.SetItemText(row, 1, item.extension);
    }
    WindowSetRedraw(list.controlHandle, true);
    clRect client = WindowClientRect(windowHandle);
    OnSize(0, client.Width(), client.Height());
    CountOverwrites(-1, clString());
    if (list.GetItemCount() > 0) list.SelectOnly(0);
    WindowSetFocus(list.controlHandle);
    return 0;
}

intptr_t frmOverwrite::OnSize(uint32_t, int32_t width, int32_t height) {
    if (list.controlHandle == nullptr) return 0;
    int32_t margin = U(kMargin);
    int32_t buttonTop = height - margin - U(kButtonHeight);
    WindowMove(heading, clRect::Sized(margin, U(8), width - 2 * margin, U(18)));
    WindowMove(hint, clRect::Sized(margin, U(28), width - 2 * margin, U(18)));
    WindowMove(list.controlHandle, clRect{margin, U(50), width - margin, buttonTop - U(8)});
    WindowMove(cancelButton, clRect::Sized(margin, buttonTop, U(80), U(kButtonHeight)));
    WindowMove(uniqueButton, clRect::Sized(margin + U(88), buttonTop, U(110), U(kButtonHeight)));
    WindowMove(skipButton, clRect::Sized(margin + U(206), buttonTop, U(110), U(kButtonHeight)));
    WindowMove(overwriteButton, clRect::Sized(width - margin - U(130), buttonTop, U(130), U(kButtonHeight)));
    clRect inside = WindowClientRect(list.controlHandle);
    list.SetColumnWidth(0, inside.Width() - U(kColumnRest));
    return 0;
}

void frmOverwrite::CountOverwrites(int32_t row, const clString& text) {
    if (row >= 0 && row < items->Count()) {
        clString path(text);
        path.Append((*items)[row].extension);
        (*items)[row].exists = PathExists(path) ? 1 : 0;
    }
    int32_t count = 0;
    for (int32_t i = 0; i < list.GetItemCount() && i < items->Count(); ++i) {
        if ((*items)[i].exists != 0 && list.IsChecked(i)) ++count;
    }
    WindowSetText(overwriteButton, count > 0 ? clString::Formatted(u"Overwrite (%d)", count) : clString(u"Convert"));
    WindowEnable(skipButton, count > 0);
    WindowInvalidate(list.controlHandle, nullptr);
}

void frmOverwrite::CheckAll(bool checked) {
    SetAllChecked(list, checked);
    CountOverwrites(-1, clString());
}

void frmOverwrite::MakeAllUnique() {
    // The same suffix for every row: jobs that collided with each other
    // still do, and ExamineJobs parts them afterwards.
    AppendToNames(list, UniqueNameSuffix());
    for (int32_t row = 0; row < list.GetItemCount(); ++row) CountOverwrites(row, list.GetItemText(row, 0));
}

void frmOverwrite::SkipExisting() {
    list.valueControl.Commit();
    WindowSetRedraw(list.controlHandle, false);
    for (int32_t row = 0; row < list.GetItemCount() && row < items->Count(); ++row) {
        if ((*items)[row].exists != 0) list.SetChecked(row, false);
    }
    WindowSetRedraw(list.controlHandle, true);
    WindowUpdate(list.controlHandle);
    // The user sees the rows go gray before the window goes.
    if (skipPauseMs > 0) ToolkitProcessFor(skipPauseMs);
    CommitRows();
    End(1);
}

void frmOverwrite::CommitRows() {
    list.valueControl.Commit();
    for (int32_t row = 0; row < list.GetItemCount() && row < items->Count(); ++row) {
        clOverwriteItem& item = (*items)[row];
        item.newPath = Clipped(list.GetItemText(row, 0));
        item.newPath.Append(GetExtension(item.outputPath));
        item.skip = list.IsChecked(row) ? 0 : 1;
    }
}

void frmOverwrite::ShowPopup(clPoint screenPoint) {
    switch (TrackRenameListPopup(windowHandle, screenPoint, true)) {
        case kMenuCheckAll: CheckAll(true); break;
        case kMenuUncheckAll: CheckAll(false); break;
        case kMenuUniqueNames: MakeAllUnique(); break;
        default: break;
    }
}

intptr_t frmOverwrite::OnCommand(uint32_t id, clWindowHandle, uint32_t notifyCode) {
    if (notifyCode != kBnClicked) return 0;
    if (id == kIdUniqueNames) MakeAllUnique();
    else if (id == kIdSkipExisting) SkipExisting();
    return 0;
}

intptr_t frmOverwrite::OnIdOk() {
    CommitRows();
    End(1);
    return 0;
}

intptr_t frmOverwrite::OnIdCancel() {
    End(0);
    return 0;
}

intptr_t frmOverwrite::OnClose() {
    End(0);
    return 0;
}

void frmOverwrite::End(int32_t code) {
    if (result != nullptr) *result = code;
    EndModal(code);
    if (windowHandle != nullptr) WindowShow(windowHandle, false);
}

void frmOverwrite::_lstView::OnCheckChanged(int32_t, bool) { form->CountOverwrites(-1, clString()); }

void frmOverwrite::_lstView::OnEndEdit(int32_t row, const clString& text) { form->CountOverwrites(row, text); }

void frmOverwrite::_lstView::OnRightClick(int32_t, int32_t, clPoint point) {
    form->ShowPopup(WindowToScreen(controlHandle, point));
}

intptr_t frmOverwrite::_lstView::OnCustomDraw(clViewNotify& record, bool& handled) {
    handled = true;
    if (record.row < 0 || record.row >= form->items->Count()) return 0;
    if (!IsChecked(record.row)) {
        record.textColor = kUncheckedText;
    } else if ((*form->items)[record.row].exists != 0) {
        record.textColor = kExistingText;
        record.backColor = kExistingBack;
    }
    return 0;
}
