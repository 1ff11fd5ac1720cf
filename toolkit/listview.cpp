#include "toolkit/listview.h"

#include "toolkit/application.h"
#include "toolkit/controls.h"

namespace {

// A check box sits in the first 20 pixels of the first column.
constexpr int32_t kCheckBoxWidth = 20;

}  // namespace

XListView::XListView() {
    valueControl.list = this;
    valueControl.font.height = 13;
}

XListView::~XListView() {
    valueControl.Discard();
    Detach();
}

bool XListView::Create(clWindowHandle parent, uint32_t id, const clRect& rect, bool checkBoxes) {
    clWindowHandle view = CreateControl(kControlListView, parent, id, clString(), rect);
    if (view == nullptr) return false;
    ListViewSetCheckBoxes(view, checkBoxes);
    return Attach(view);
}

int32_t XListView::GetRowHeight() { return 0; }
bool XListView::CanEditCell(int32_t, int32_t) { return true; }
void XListView::OnItemChanged(int32_t, int32_t, uint32_t, uint32_t) {}
void XListView::OnSelectionChanged(int32_t, int32_t, bool) {}
void XListView::OnCheckChanged(int32_t, bool) {}
bool XListView::OnBeginEdit(int32_t) { return false; }
void XListView::OnEndEdit(int32_t, const clString&) {}
void XListView::OnEndEditCancelled(int32_t) {}
void XListView::OnBeginDrag(int32_t) {}
void XListView::OnKeyDown(uint32_t) {}
void XListView::OnInfoTip(clString&, int32_t) {}
void XListView::OnMarquee() {}
void XListView::OnColumnClick(int32_t) {}
void XListView::OnClick(int32_t, int32_t) {}
void XListView::OnMouseDownAt(int32_t, clPoint) {}
void XListView::OnDoubleClick(int32_t, int32_t) {}
void XListView::OnRightClick(int32_t, int32_t, clPoint) {}
void XListView::OnRightDoubleClick(int32_t, int32_t) {}
void XListView::OnCommandFromEditor(uint32_t, uint32_t) {}
intptr_t XListView::OnCustomDraw(clViewNotify&, bool& handled) {
    handled = false;
    return 0;
}
// A scrolled list would leave the editor over another row.
void XListView::OnVScroll() { valueControl.Commit(); }

intptr_t XListView::OnSubclassMessage(clWindowHandle, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                      uint32_t* handled) {
    *handled = 0;
    switch (message) {
        case kWmLButtonDown:
            if (LeftButtonDown(clPoint{clXOf(lParam), clYOf(lParam)}, static_cast<uint32_t>(wParam))) *handled = 1;
            return 0;
        case kWmKeyDown:
            if (wParam == kVkSpace && ListViewHasCheckBoxes(controlHandle)) {
                int32_t first = ListViewNextSelected(controlHandle, -1);
                if (first >= 0) ToggleSelectionChecks(!IsChecked(first));
                *handled = 1;
            } else if (wParam == kVkF2 && labelEditing) {
                int32_t row = ListViewNextSelected(controlHandle, -1);
                if (row >= 0 && !OnBeginEdit(row)) valueControl.Open(row, 0);
                *handled = 1;
            }
            return 0;
        case kWmVScroll:
        case kWmMouseWheel:
            OnVScroll();
            return 0;
        case kWmCommand:
            if (valueControl.IsOpen() && reinterpret_cast<clWindowHandle>(lParam) == valueControl.editHandle) {
                OnCommandFromEditor(clLowWord(wParam), clHighWord(wParam));
                *handled = 1;
            }
            return 0;
        case kWmReflectNotify:
            return Reflected(*reinterpret_cast<clViewNotify*>(lParam), handled);
        default: return 0;
    }
}

intptr_t XListView::Reflected(clViewNotify& record, uint32_t* handled) {
    *handled = 1;
    switch (record.code) {
        case kLvnItemChanged: {
            OnItemChanged(record.row, record.column, record.newState, record.oldState);
            uint32_t changed = record.newState ^ record.oldState;
            if ((changed & kStateImageMask) != 0 && (record.newState & kStateImageMask) != 0 &&
                (record.oldState & kStateImageMask) != 0) {
                OnCheckChanged(record.row, (record.newState & kStateImageMask) == kStateChecked);
            }
            if ((changed & kStateSelected) != 0) {
                OnSelectionChanged(record.row, record.column, (record.newState & kStateSelected) != 0);
            }
            return 0;
        }
        case kNmClick: OnClick(record.row, record.column); return 0;
        case kNmDoubleClick: OnDoubleClick(record.row, record.column); return 0;
        case kNmRightClick: OnRightClick(record.row, record.column, record.point); return 0;
        case kNmRightDoubleClick: OnRightDoubleClick(record.row, record.column); return 0;
        case kLvnColumnClick: OnColumnClick(record.column); return 0;
        case kLvnBeginDrag: OnBeginDrag(record.row); return 0;
        case kLvnKeyDown: OnKeyDown(record.key); return 0;
        case kLvnMarqueeBegin: OnMarquee(); return 0;
        case kLvnGetInfoTip:
            if (record.text != nullptr) OnInfoTip(*record.text, record.row);
            return 0;
        case kNmCustomDraw: {
            bool done = false;
            intptr_t result = OnCustomDraw(record, done);
            if (!done) *handled = 0;
            return result;
        }
        default: *handled = 0; return 0;
    }
}

bool XListView::LeftButtonDown(clPoint point, uint32_t flags) {
    int32_t column = -1;
    int32_t row = ListViewHitTest(controlHandle, point, &column);
    if (ListViewHasCheckBoxes(controlHandle)) {
        // x from the left edge of the first column, wherever it is shown.
        int32_t x = point.x + ListViewScrollX(controlHandle);
        for (int32_t position = 0; position < ListViewColumnCount(controlHandle); ++position) {
            int32_t shown = ListViewColumnAtPosition(controlHandle, position);
            if (shown == 0) break;
            x -= ListViewColumnWidth(controlHandle, shown);
        }
        if (x >= 0 && x <= kCheckBoxWidth && row >= 0) {
            valueControl.Commit();
            if ((ListViewGetState(controlHandle, row) & kStateSelected) == 0) SelectOnly(row);
            ToggleSelectionChecks(!IsChecked(row));
            return true;
        }
    }
    OnMouseDownAt(row, point);
    if (editMode == 0) return false;
    valueControl.Commit();
    if ((flags & (kMkControl | kMkShift)) != 0) return false;
    if (row < 0) return false;
    if (editMode == 1 && column != 0) return false;
    if (!CanEditCell(row, column)) return false;
    if ((ListViewGetState(controlHandle, row) & kStateSelected) != 0) {
        valueControl.Open(row, column);
    } else {
        SelectOnly(row);
    }
    return true;
}

void XListView::ToggleSelectionChecks(bool checked) {
    for (int32_t row = ListViewNextSelected(controlHandle, -1); row >= 0;
         row = ListViewNextSelected(controlHandle, row)) {
        SetChecked(row, checked);
    }
}

void XListView::EditNextAfterReturn(int32_t row, int32_t column) {
    if (editMode == 0) return;
    int32_t columns = ListViewColumnCount(controlHandle);
    int32_t nextRow = -1, nextColumn = -1;
    if (editMode == 2) {
        for (int32_t c = column + 1; c < columns && nextColumn < 0; ++c) {
            if (CanEditCell(row, c)) nextColumn = c;
        }
        if (nextColumn >= 0) nextRow = row;
    }
    if (nextRow < 0 && row + 1 < GetItemCount()) {
        nextRow = row + 1;
        for (int32_t c = 0; c < (editMode == 2 ? columns : 1) && nextColumn < 0; ++c) {
            if (CanEditCell(nextRow, c)) nextColumn = c;
        }
    }
    if (nextRow < 0 || nextColumn < 0) return;
    if (ListViewSelectedCount(controlHandle) > 1) return;
    SelectOnly(nextRow);
    valueControl.Open(nextRow, nextColumn);
}

int32_t XListView::InsertColumn(int32_t index, const clString& title, int32_t width, bool rightAligned) {
    return ListViewInsertColumn(controlHandle, index, title, width, rightAligned);
}

void XListView::SetColumnWidth(int32_t column, int32_t width) { ListViewSetColumnWidth(controlHandle, column, width); }

int32_t XListView::InsertItem(int32_t index, const clString& text, int32_t image, bool checked) {
    return ListViewInsertItem(controlHandle, index, text, image, checked ? kStateChecked : kStateUnchecked);
}

void XListView::SetItemText(int32_t row, int32_t column, const clString& text) {
    ListViewSetItemText(controlHandle, row, column, text);
}

clString XListView::GetItemText(int32_t row, int32_t column) const {
    return ListViewGetItemText(controlHandle, row, column);
}

void XListView::DeleteItem(int32_t row) {
    if (valueControl.row == row) valueControl.Discard();
    ListViewDeleteItem(controlHandle, row);
}

int32_t XListView::GetItemCount() const { return ListViewCount(controlHandle); }

// A row whose state image says nothing counts as checked: only an
// explicit "unchecked" is one.
bool XListView::IsChecked(int32_t row) const {
    return (ListViewGetState(controlHandle, row) & kStateImageMask) != kStateUnchecked;
}

void XListView::SetChecked(int32_t row, bool checked) {
    ListViewSetState(controlHandle, row, checked ? kStateChecked : kStateUnchecked, kStateImageMask);
}

void XListView::SetItemState(int32_t row, uint32_t state, uint32_t mask) {
    ListViewSetState(controlHandle, row, state, mask);
}

std::vector<int32_t> XListView::GetSelected() const {
    std::vector<int32_t> rows;
    for (int32_t row = ListViewNextSelected(controlHandle, -1); row >= 0;
         row = ListViewNextSelected(controlHandle, row)) {
        rows.push_back(row);
    }
    return rows;
}

void XListView::SelectOnly(int32_t row) {
    ListViewSetState(controlHandle, -1, 0, kStateSelected | kStateFocused);
    ListViewSetState(controlHandle, row, kStateSelected | kStateFocused, kStateSelected | kStateFocused);
    ListViewEnsureVisible(controlHandle, row);
}

// The editor.

XListView::clValueControl::~clValueControl() { Discard(); }

bool XListView::clValueControl::Open(int32_t atRow, int32_t atColumn) {
    Commit();
    clWindowHandle view = list->controlHandle;
    if (view == nullptr || atRow < 0 || atRow >= list->GetItemCount()) return false;
    ListViewEnsureVisible(view, atRow);
    clRect cell = ListViewCellRect(view, atRow, atColumn);
    if (cell.IsEmpty()) return false;
    clWindowHandle edit = CreateControl(kControlEdit, view, 0, list->GetItemText(atRow, atColumn), cell);
    if (edit == nullptr) return false;
    editHandle = edit;
    row = atRow;
    column = atColumn;
    WindowSetFont(edit, font);
    EditSetSelection(edit, 0, -1);
    WindowSetFocus(edit);
    Attach(edit);
    return true;
}

void XListView::clValueControl::Commit() {
    if (!IsOpen()) return;
    clString text = WindowGetText(editHandle);
    int32_t atRow = row;
    if (!text.Equals(list->GetItemText(atRow, column))) list->SetItemText(atRow, column, text);
    Close();
    list->OnEndEdit(atRow, text);
}

void XListView::clValueControl::Discard() {
    if (!IsOpen()) return;
    int32_t atRow = row;
    Close();
    list->OnEndEditCancelled(atRow);
}

void XListView::clValueControl::Close() {
    clWindowHandle edit = editHandle;
    editHandle = nullptr;
    Detach();
    bool hadFocus = WindowWithFocus() == edit;
    DestroyControl(edit);
    if (hadFocus && list->controlHandle != nullptr) WindowSetFocus(list->controlHandle);
}

intptr_t XListView::clValueControl::OnSubclassMessage(clWindowHandle, uint32_t message, uintptr_t wParam,
                                                      intptr_t lParam, uint32_t* handled) {
    *handled = 0;
    switch (message) {
        case kWmGetDlgCode: *handled = 1; return kDlgcWantAllKeys;
        case kWmKeyDown:
            if (KeyDown(static_cast<uint32_t>(wParam))) *handled = 1;
            return 0;
        case kWmChar:
            // Return and Escape were dealt with as keys; their characters
            // would only beep.
            if (wParam == '\r' || wParam == 0x1B || wParam == '\t') *handled = 1;
            return 0;
        case kWmMouseWheel:
            WindowPost(list->controlHandle, message, wParam, lParam);
            *handled = 1;
            return 0;
        case kWmKillFocus: Commit(); return 0;
        default: return 0;
    }
}

bool XListView::clValueControl::KeyDown(uint32_t key) {
    int32_t atRow = row, atColumn = column;
    switch (key) {
        case kVkReturn:
            Commit();
            list->EditNextAfterReturn(atRow, atColumn);
            return true;
        case kVkEscape: Discard(); return true;
        case kVkTab: {
            clWindowHandle view = list->controlHandle;
            Commit();
            WindowFocusNext(view);
            return true;
        }
        case kVkUp:
        case kVkDown: {
            int32_t next = atRow + (key == kVkUp ? -1 : 1);
            if (next < 0 || next >= list->GetItemCount()) return true;
            Commit();
            list->SelectOnly(next);
            Open(next, atColumn);
            return true;
        }
        case kVkLeft:
        case kVkRight: {
            if (KeyIsDown(kVkControl) || KeyIsDown(kVkShift)) return false;
            int32_t start = 0, end = 0;
            EditGetSelection(editHandle, start, end);
            int32_t length = static_cast<int32_t>(WindowGetText(editHandle).Length());
            if (start == end && end != length) return false;
            int32_t step = key == kVkRight ? 1 : -1;
            int32_t columns = ListViewColumnCount(list->controlHandle);
            for (int32_t c = atColumn + step; c >= 0 && c < columns; c += step) {
                if (list->CanEditCell(atRow, c)) {
                    Commit();
                    Open(atRow, c);
                    return true;
                }
            }
            return false;
        }
        default: return false;
    }
}
