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
    control = CreateControl(kControlComboBox, parent, id, clString(), rect);
    if (control == nullptr) return false;
    edit = ComboEdit(control);
    return edit != nullptr && Attach(edit);
}

void XDropList::Destroy() {
    Detach();
    if (control != nullptr) DestroyControl(control);
    control = edit = nullptr;
    for (int64_t i = 0; i < items.count; ++i) delete items.At<clDropItem>(i);
    items.Reset();
}

int32_t XDropList::AddItem(const clString& text, uint64_t tag) {
    auto* item = new clDropItem;
    item->text = text;
    item->tag = tag;
    items.Add(item);
    if (control != nullptr) ComboAddItem(control, text);
    return static_cast<int32_t>(items.count - 1);
}

void XDropList::AddRun(int32_t item, const clString& text, uint32_t color) {
    if (item < 0 || item >= items.count) return;
    clDrawList& list = items.At<clDropItem>(item)->drawList;
    // Runs follow each other: each starts where the text before it ended.
    int32_t left = list.nextOrder == 0 ? 2 : runLeft;
    list.AddText(clPack(left), 0, 0, kPackFromFarEdge, text, clString(), 13, color, 0, kAlignVCenter);
    runLeft = left + 7 * text.Length();
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
