#include "frontend/multiencoderpage.h"

#include "foundation/specialfolder.h"
#include "frontend/dlgmultiitem.h"
#include "naming/highlight.h"
#include "naming/outputpath.h"
#include "plugins/encoderentries.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kButtonWidth = 80;
constexpr uint32_t kGreyText = 0xC0C0C0;
constexpr int32_t kMusicFolder = 13;

}  // namespace

void clMultiEncoderPage::_LstItems::OnRowMoved(int32_t from, int32_t to) {
    if (page == nullptr || from < 0 || from >= page->items.Count() || to < 0 || to >= page->items.Count()) return;
    void* moved = page->items.entries[from];
    page->items.entries.RemoveAt(from);
    page->items.entries.InsertAt(to, moved);
    // The numbers in the rows follow the new order.
    page->FillList(to);
}

void clMultiEncoderPage::_LstItems::OnSelectionChanged(int32_t row) {
    if (page == nullptr) return;
    bool chosen = row >= 0 && row < page->items.Count();
    WindowEnable(page->editButton, chosen);
    WindowEnable(page->removeButton, chosen);
}

void clMultiEncoderPage::Show(clWindowHandle parentWindow, int32_t x, int32_t y, int32_t width, int32_t height,
                              const clString& options) {
    Remove();
    parent = parentWindow;
    ReadMultiItems(options, items);
    int32_t listWidth = width - U(kButtonWidth + 8);
    list.Create(parent, x, y, listWidth, height, true, true);
    int32_t left = x + width - U(kButtonWidth);
    addButton = CreateControl(kControlButton, parent, kIdMultiAdd, u"Add...", clRect::Sized(left, y, U(kButtonWidth), U(26)));
    editButton = CreateControl(kControlButton, parent, kIdMultiEdit, u"Edit...",
                               clRect::Sized(left, y + U(32), U(kButtonWidth), U(26)));
    removeButton = CreateControl(kControlButton, parent, kIdMultiRemove, u"Remove",
                                 clRect::Sized(left, y + U(64), U(kButtonWidth), U(26)));
    FillList(items.Count() > 0 ? 0 : -1);
}

void clMultiEncoderPage::Remove() {
    if (parent == nullptr) return;
    list.Destroy();
    for (clWindowHandle* button : {&addButton, &editButton, &removeButton}) {
        if (*button != nullptr) DestroyControl(*button);
        *button = nullptr;
    }
    parent = nullptr;
}

clWindowHandle clMultiEncoderPage::Control(int32_t index) const {
    switch (index) {
        case 0: return list.listHandle;
        case 1: return addButton;
        case 2: return editButton;
        case 3: return removeButton;
        default: return nullptr;
    }
}

void clMultiEncoderPage::FillList(int32_t selected) {
    list.Clear();
    if (items.Count() == 0) {
        list.AddNoteRow(u"<no encoders yet: press Add>", kGreyText);
    }
    clStringList names;
    for (int64_t i = 0; i < items.Count(); ++i) {
        names.Add(clString::Formatted(u"%lld. %s", static_cast<long long>(i + 1), items[i].encoderName.text));
    }
    list.FitNameColumn(names, WindowClientRect(list.listHandle).Width() / 2);
    for (int64_t i = 0; i < items.Count(); ++i) {
        const clMultiEncoderItem& item = items[i];
        clValueRowDesc row;
        row.kind = kRowPlain;
        row.readOnly = true;
        row.name = names[i];
        // Where the item's outputs go, in the output list's friendly view;
        // empty parts show what a run puts in their place.
        clString folder = item.folder.IsEmpty() ? GetSpecialFolder(kMusicFolder) : item.folder;
        clString naming = item.namingRule.IsEmpty() ? clString(u"[origpath]\\[origfilename]") : item.namingRule;
        row.value = MarkupPlainText(FriendlyFolderName(HighlightNaming(JoinOutputText(folder, naming)), true));
        list.AddRow(row);
    }
    bool chosen = selected >= 0 && selected < items.Count();
    if (chosen) list.SelectRow(selected);
    WindowEnable(editButton, chosen);
    WindowEnable(removeButton, chosen);
}

bool clMultiEncoderPage::OnCommand(uint32_t id) {
    if (id == kIdMultiAdd) AddItem();
    else if (id == kIdMultiEdit) EditItem(list.SelectedRow());
    else if (id == kIdMultiRemove) RemoveItem(list.SelectedRow());
    else return false;
    return true;
}

void clMultiEncoderPage::AddItem() {
    // A new item starts as the default of the whole system would: FLAC if
    // there is one, into the music folder, under the source's own path.
    clMultiEncoderItem start;
    clStringList encoders;
    ListItemEncoders(encoders);
    start.encoderName = encoders.Find(u"FLAC", false) ? clString(u"FLAC") : (encoders.Count() > 0 ? encoders[0] : clString());
    start.folder = GetSpecialFolder(kMusicFolder);
    start.namingRule = u"[origpath]\\[origfilename]";
    dlgMultiItem dialog(start);
    if (dialog.Run(parent, clString(u"Quillotone: Add Encoder")) != 1) return;
    auto* item = new clMultiEncoderItem();
    *item = dialog.item;
    items.Add(item);
    FillList(static_cast<int32_t>(items.Count() - 1));
}

void clMultiEncoderPage::EditItem(int32_t index) {
    if (index < 0 || index >= items.Count()) return;
    dlgMultiItem dialog(items[index]);
    if (dialog.Run(parent, clString::Formatted(u"Quillotone: Encoder %d", index + 1)) != 1) return;
    items[index] = dialog.item;
    FillList(index);
}

void clMultiEncoderPage::RemoveItem(int32_t index) {
    if (index < 0 || index >= items.Count()) return;
    items.RemoveAt(index);
    FillList(index < items.Count() ? index : static_cast<int32_t>(items.Count() - 1));
}
