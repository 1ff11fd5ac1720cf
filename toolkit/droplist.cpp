#include "toolkit/droplist.h"

#include "toolkit/controls.h"

namespace {

bool CompletesOn(uintptr_t key) {
    return (key >= 'A' && key <= 'Z') || (key >= '0' && key <= '9') || key == kVkSpace;
}

}  // namespace

XDropList::~XDropList() { Destroy(); }

bool XDropList::Create(clWindowHandle parent, uint32_t id, const clRect& rect) {
    Destroy();
    control = CreateControl(kControlPaintedComboBox, parent, id, clString(), rect);
    if (control == nullptr) return false;
    rowPainter.Attach(control);
    edit = ComboEdit(control);
    return edit != nullptr && Attach(edit);
}

void XDropList::Destroy() {
    Detach();
    rowPainter.Detach();
    if (control != nullptr) DestroyControl(control);
    control = edit = nullptr;
    Clear();
}

int32_t XDropList::AddItem(const clString& text, uint64_t tag) { return InsertItem(-1, text, tag); }

int32_t XDropList::InsertItem(int32_t index, const clString& text, uint64_t tag, const clString* shownText) {
    if (index < 0 || index > items.count) index = static_cast<int32_t>(items.count);
    auto* item = new clDropItem;
    item->text = text;
    item->tag = tag;
    item->drawList.AddText(clPack(2), 0, 0, kPackFromFarEdge, text, clString(), 13, 0x000000, 0, kAlignVCenter);
    items.InsertAt(index, item);
    if (control != nullptr) ComboInsertItem(control, index, shownText != nullptr ? *shownText : text);
    return index;
}

void XDropList::DeleteItem(int32_t index) {
    if (index < 0 || index >= items.count) return;
    delete items.At<clDropItem>(index);
    items.RemoveAt(index);
    if (control != nullptr) ComboDeleteItem(control, index);
}

void XDropList::Clear() {
    for (int64_t i = 0; i < items.count; ++i) delete items.At<clDropItem>(i);
    items.Reset();
    if (control != nullptr) ComboClear(control);
}

clDropItem* XDropList::Item(int32_t index) const {
    return index >= 0 && index < items.count ? items.At<clDropItem>(index) : nullptr;
}

int32_t XDropList::FindExact(const clString& text) const {
    for (int64_t i = 0; i < items.count; ++i) {
        if (items.At<clDropItem>(i)->text.Equals(text)) return static_cast<int32_t>(i);
    }
    return -1;
}

void XDropList::AddRun(int32_t item, const clString& text, uint32_t color) {
    if (item < 0 || item >= items.count) return;
    clDropItem& entry = *items.At<clDropItem>(item);
    if (!entry.hasRuns) entry.drawList.Clear();  // the plain text gives way to the runs
    entry.hasRuns = true;
    // Placed at painting, each behind the one before.
    entry.drawList.AddText(0, 0, 0, kPackFromFarEdge, text, clString(), 13, color, 0, kAlignVCenter);
}

void XDropList::PaintRow(const clDrawItem& row) {
    if (row.canvas == nullptr || row.itemId < 0 || row.itemId >= items.count) return;
    clDropItem& item = *items.At<clDropItem>(row.itemId);
    clDrawList& list = item.drawList;
    bool selected = (row.itemState & kOdsSelected) != 0;
    row.canvas->FillRect(row.rect, selected ? selectionColor : 0xFFFFFF);
    int32_t x = 2;
    if (item.image != nullptr) {
        clSize size = ImageSize(item.image);
        int32_t top = row.rect.top + (row.rect.Height() - size.height) / 2;
        row.canvas->Image(item.image, clRect::Sized(row.rect.left + x, top, size.width, size.height));
        x += size.width + 4;
    }
    for (uint32_t order = 0; order < list.nextOrder; ++order) {
        clDrawElement* run = list.Element(order);
        if (run == nullptr || run->kind != kDrawText) continue;
        run->x = clPack(x);
        clFontSpec font;
        font.face = run->face;
        font.height = run->fontSize;
        row.canvas->SetFont(font);
        x += row.canvas->MeasureText(run->text).width;
    }
    list.SetCanvas(row.rect.Width(), row.rect.Height());
    list.Paint(*row.canvas, row.rect.left, row.rect.top);
    if (item.separatorAbove) row.canvas->Line(row.rect.left, row.rect.top, row.rect.right, row.rect.top, 0xA0A0A0, 1);
    if (item.separatorBelow) {
        row.canvas->Line(row.rect.left, row.rect.bottom - 1, row.rect.right, row.rect.bottom - 1, 0xA0A0A0, 1);
    }
}

intptr_t XDropList::clRowPainter::OnSubclassMessage(clWindowHandle, uint32_t message, uintptr_t, intptr_t lParam,
                                                    uint32_t* handled) {
    *handled = 0;
    if (message != kWmDrawItem) return 0;
    owner->PaintRow(*reinterpret_cast<clDrawItem*>(lParam));
    *handled = 1;
    return 1;
}

clString XDropList::ItemText(int32_t item) const {
    return item >= 0 && item < items.count ? items.At<clDropItem>(item)->text : clString();
}

int32_t XDropList::GetSelection() const { return control != nullptr ? ComboGetSelection(control) : -1; }

void XDropList::SetSelection(int32_t item) {
    if (control != nullptr) ComboSetSelection(control, item);
}

clString XDropList::Text() const { return control != nullptr ? WindowGetText(control) : clString(); }

void XDropList::OnNumber(int32_t number) {
    if (onNumber) onNumber(number);
}

void XDropList::OnSelectionChanged() {}

// The first item whose start equals the text before the caret, ignoring
// case, takes the field; what it adds is selected.
void XDropList::Complete() {
    int32_t start = 0, end = 0;
    EditGetSelection(edit, start, end);
    clString typed = WindowGetText(edit).Mid(1, start);
    if (typed.IsEmpty()) return;
    for (int64_t i = 0; i < items.count; ++i) {
        const clString& text = items.At<clDropItem>(i)->text;
        if (text.Length() < typed.Length() || text.Compare(typed, typed.Length(), true) != 0) continue;
        WindowSetText(edit, text);
        EditSetSelection(edit, start, text.Length());
        return;
    }
}

intptr_t XDropList::OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                      uint32_t* handled) {
    *handled = 0;
    switch (message) {
        case kWmGetDlgCode:
            if (lParam != 0 && (CompletesOn(wParam) || wParam == kVkReturn)) {
                *handled = 1;
                return kDlgcWantAllKeys;
            }
            return 0;
        case kWmKeyUp:
            if (CompletesOn(wParam)) {
                Complete();
            } else if (wParam == kVkReturn && autoCompletePending) {
                autoCompletePending = false;
                WindowFocusNext(control);
            }
            return 0;
        case kWmKeyDown:
            if (wParam == kVkReturn) {
                int32_t start = 0, end = 0;
                EditGetSelection(window, start, end);
                if (start > 0 && end > start) {
                    EditSetSelection(window, -1, 0);
                    autoCompletePending = false;
                } else {
                    autoCompletePending = true;
                }
                *handled = 1;
            }
            return 0;
        case kWmKillFocus: {
            autoCompletePending = false;
            int32_t start = 0, end = 0;
            EditGetSelection(window, start, end);
            if (end > start) EditReplaceSelection(window, clString());
            return 0;
        }
        default:
            return 0;
    }
}
