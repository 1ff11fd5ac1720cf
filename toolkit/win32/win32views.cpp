// The Win32 back end's list and tree views: the common controls, and
// their notifications turned into the toolkit's clViewNotify.
#include <windows.h>
#include <commctrl.h>

#include <cstring>
#include <vector>

#include "toolkit/controls.h"
#include "toolkit/views.h"
#include "toolkit/win32/win32canvas.h"
#include "toolkit/win32/win32windows.h"
#include "toolkit/xwindow.h"

namespace {

const wchar_t kImageListProperty[] = L"QvImageList";

const wchar_t* Wide(const clString& text) { return reinterpret_cast<const wchar_t*>(text.text); }

clString FromWide(const wchar_t* text) { return clString(reinterpret_cast<const char16_t*>(text)); }

// An image list of the pictures at one size; the view keeps it until it
// gets another.
HIMAGELIST MakeImageList(HWND view, const clImageHandle* images, int32_t count, int32_t size) {
    HIMAGELIST list = ImageList_Create(size, size, ILC_COLOR32, count, 4);
    for (int32_t i = 0; i < count; ++i) {
        clImageHandle scaled = CreateImage(size, size);
        if (clCanvas* canvas = CanvasOnImage(scaled)) {
            if (images[i] != nullptr) canvas->Image(images[i], clRect{0, 0, size, size});
            delete canvas;
        }
        ImageList_Add(list, WinImageOf(scaled)->bitmap, nullptr);
        DestroyImage(scaled);
    }
    if (auto old = static_cast<HIMAGELIST>(GetPropW(view, kImageListProperty))) ImageList_Destroy(old);
    SetPropW(view, kImageListProperty, list);
    return list;
}

HTREEITEM ItemOf(const clTreeItem& item) { return static_cast<HTREEITEM>(item.item); }
HWND TreeOf(const clTreeItem& item) { return HwndOf(item.tree); }
clTreeItem TreeItem(HWND tree, HTREEITEM item) {
    return item != nullptr ? clTreeItem{item, HandleOf(tree)} : clTreeItem{};
}

LRESULT Route(HWND window, clViewNotify& record) {
    bool useDefault = true;
    return XWindow::Procedure(HandleOf(window), kWmNotify, record.id, reinterpret_cast<intptr_t>(&record), nullptr,
                              &useDefault);
}

bool ListNotify(HWND window, NMHDR* header, LRESULT* result) {
    clViewNotify record;
    record.from = HandleOf(header->hwndFrom);
    record.id = static_cast<uint32_t>(header->idFrom);
    record.code = static_cast<int32_t>(header->code);
    switch (static_cast<int32_t>(header->code)) {
        case kLvnItemChanged: {
            auto* change = reinterpret_cast<NMLISTVIEW*>(header);
            if ((change->uChanged & LVIF_STATE) == 0) return false;
            record.row = change->iItem;
            record.column = change->iSubItem;
            record.newState = change->uNewState;
            record.oldState = change->uOldState;
            break;
        }
        case kNmClick:
        case kNmDoubleClick:
        case kNmRightClick:
        case kNmRightDoubleClick: {
            auto* click = reinterpret_cast<NMITEMACTIVATE*>(header);
            record.row = click->iItem;
            record.column = click->iSubItem;
            record.point = clPoint{click->ptAction.x, click->ptAction.y};
            break;
        }
        case kLvnColumnClick:
        case kLvnBeginDrag: {
            auto* list = reinterpret_cast<NMLISTVIEW*>(header);
            record.row = list->iItem;
            record.column = list->iSubItem;
            break;
        }
        case kLvnKeyDown: record.key = reinterpret_cast<NMLVKEYDOWN*>(header)->wVKey; break;
        case kLvnMarqueeBegin: break;
        case kLvnGetInfoTip: {
            auto* tip = reinterpret_cast<NMLVGETINFOTIPW*>(header);
            clString text = FromWide(tip->pszText);
            record.row = tip->iItem;
            record.text = &text;
            Route(window, record);
            if (tip->cchTextMax > 0) lstrcpynW(tip->pszText, Wide(text), tip->cchTextMax);
            *result = 0;
            return true;
        }
        case kNmCustomDraw: {
            auto* draw = reinterpret_cast<NMLVCUSTOMDRAW*>(header);
            if (draw->nmcd.dwDrawStage == CDDS_PREPAINT) {
                *result = CDRF_NOTIFYITEMDRAW;
                return true;
            }
            if (draw->nmcd.dwDrawStage != CDDS_ITEMPREPAINT) return false;
            record.drawStage = kCddsItemPrePaint;
            record.row = static_cast<int32_t>(draw->nmcd.dwItemSpec);
            Route(window, record);
            if (record.textColor != clNoColor) draw->clrText = record.textColor;
            if (record.backColor != clNoColor) draw->clrTextBk = record.backColor;
            *result = CDRF_DODEFAULT;
            return true;
        }
        default: return false;
    }
    *result = Route(window, record);
    return true;
}

bool TreeNotify(HWND window, NMHDR* header, LRESULT* result) {
    clViewNotify record;
    record.from = HandleOf(header->hwndFrom);
    record.id = static_cast<uint32_t>(header->idFrom);
    record.code = static_cast<int32_t>(header->code);
    switch (static_cast<int32_t>(header->code)) {
        case kTvnSelChanging:
        case kTvnSelChanged:
        case kTvnItemExpanding:
        case kTvnItemExpanded: {
            auto* change = reinterpret_cast<NMTREEVIEWW*>(header);
            record.item = TreeItem(header->hwndFrom, change->itemNew.hItem);
            record.oldItem = TreeItem(header->hwndFrom, change->itemOld.hItem);
            record.newState = (change->action & TVE_EXPAND) != 0 ? 1 : 0;
            break;
        }
        case kNmClick:
        case kNmDoubleClick:
        case kNmRightClick:
        case kNmRightDoubleClick: {
            POINT at;
            GetCursorPos(&at);
            ScreenToClient(header->hwndFrom, &at);
            record.point = clPoint{at.x, at.y};
            break;
        }
        case kTvnKeyDown: record.key = reinterpret_cast<NMTVKEYDOWN*>(header)->wVKey; break;
        default: return false;
    }
    *result = Route(window, record);
    return true;
}

}  // namespace

bool ViewNotify(HWND window, NMHDR* header, LRESULT* result) {
    if (IsWindowClass(header->hwndFrom, WC_LISTVIEWW)) return ListNotify(window, header, result);
    if (IsWindowClass(header->hwndFrom, WC_TREEVIEWW)) return TreeNotify(window, header, result);
    return false;
}

HWND CreateViewControl(bool tree, HWND owner, uint32_t id, const clRect& rect) {
    DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
    style |= tree ? TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT | TVS_SHOWSELALWAYS : LVS_REPORT | LVS_SHOWSELALWAYS;
    HWND view = CreateWindowExW(WS_EX_CLIENTEDGE, tree ? WC_TREEVIEWW : WC_LISTVIEWW, L"", style, rect.left, rect.top,
                                rect.Width(), rect.Height(), owner,
                                reinterpret_cast<HMENU>(static_cast<uintptr_t>(id)), ToolkitInstance(), nullptr);
    if (view != nullptr && !tree) {
        SendMessageW(view, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT | LVS_EX_INFOTIP,
                     LVS_EX_FULLROWSELECT | LVS_EX_INFOTIP);
    }
    return view;
}

void DestroyViewImages(HWND view) {
    if (auto old = static_cast<HIMAGELIST>(RemovePropW(view, kImageListProperty))) ImageList_Destroy(old);
}

void WindowSetRedraw(clWindowHandle window, bool redraw) {
    SendMessageW(HwndOf(window), WM_SETREDRAW, redraw ? TRUE : FALSE, 0);
    if (redraw) InvalidateRect(HwndOf(window), nullptr, TRUE);
}

void ListViewSetCheckBoxes(clWindowHandle view, bool checkBoxes) {
    SendMessageW(HwndOf(view), LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_CHECKBOXES, checkBoxes ? LVS_EX_CHECKBOXES : 0);
}

bool ListViewHasCheckBoxes(clWindowHandle view) {
    return (SendMessageW(HwndOf(view), LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0) & LVS_EX_CHECKBOXES) != 0;
}

void ListViewSetImages(clWindowHandle view, const clImageHandle* images, int32_t count, int32_t size) {
    HIMAGELIST list = MakeImageList(HwndOf(view), images, count, size);
    SendMessageW(HwndOf(view), LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(list));
}

int32_t ListViewInsertColumn(clWindowHandle view, int32_t index, const clString& title, int32_t width,
                             bool rightAligned) {
    if (index < 0) index = ListViewColumnCount(view);
    LVCOLUMNW column{};
    column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    column.fmt = rightAligned ? LVCFMT_RIGHT : LVCFMT_LEFT;
    column.cx = width;
    column.pszText = const_cast<wchar_t*>(Wide(title));
    column.iSubItem = index;
    return static_cast<int32_t>(
        SendMessageW(HwndOf(view), LVM_INSERTCOLUMNW, index, reinterpret_cast<LPARAM>(&column)));
}

void ListViewSetColumnWidth(clWindowHandle view, int32_t column, int32_t width) {
    SendMessageW(HwndOf(view), LVM_SETCOLUMNWIDTH, column, MAKELPARAM(width, 0));
}

int32_t ListViewColumnWidth(clWindowHandle view, int32_t column) {
    return static_cast<int32_t>(SendMessageW(HwndOf(view), LVM_GETCOLUMNWIDTH, column, 0));
}

int32_t ListViewHeadingWidth(clWindowHandle view, int32_t column) {
    wchar_t title[256] = {};
    LVCOLUMNW record{};
    record.mask = LVCF_TEXT;
    record.pszText = title;
    record.cchTextMax = 255;
    if (SendMessageW(HwndOf(view), LVM_GETCOLUMNW, column, reinterpret_cast<LPARAM>(&record)) == 0) return 0;
    // The heading's margins on both sides, as the header draws them.
    auto width = static_cast<int32_t>(SendMessageW(HwndOf(view), LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(title)));
    return width + 16;
}

int32_t ListViewColumnCount(clWindowHandle view) {
    auto header = reinterpret_cast<HWND>(SendMessageW(HwndOf(view), LVM_GETHEADER, 0, 0));
    return header != nullptr ? static_cast<int32_t>(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0)) : 0;
}

int32_t ListViewInsertItem(clWindowHandle view, int32_t index, const clString& text, int32_t image,
                           uint32_t checkState) {
    LVITEMW item{};
    item.mask = LVIF_TEXT | (image >= 0 ? LVIF_IMAGE : 0);
    item.iItem = index < 0 ? 0x7FFFFFFF : index;
    item.pszText = const_cast<wchar_t*>(Wide(text));
    item.iImage = image;
    auto row = static_cast<int32_t>(SendMessageW(HwndOf(view), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
    // A list with check boxes gives a new row the unchecked image whatever
    // the insert asks: the state is set after.
    if (row >= 0 && (checkState & kStateImageMask) == kStateChecked) {
        ListViewSetState(view, row, kStateChecked, kStateImageMask);
    }
    return row;
}

void ListViewSetItemText(clWindowHandle view, int32_t row, int32_t column, const clString& text) {
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = const_cast<wchar_t*>(Wide(text));
    SendMessageW(HwndOf(view), LVM_SETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item));
}

clString ListViewGetItemText(clWindowHandle view, int32_t row, int32_t column) {
    std::vector<wchar_t> buffer(256);
    for (;;) {
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = buffer.data();
        item.cchTextMax = static_cast<int>(buffer.size());
        auto length = static_cast<size_t>(
            SendMessageW(HwndOf(view), LVM_GETITEMTEXTW, row, reinterpret_cast<LPARAM>(&item)));
        if (length + 1 < buffer.size()) return FromWide(buffer.data());
        buffer.resize(buffer.size() * 4);
    }
}

void ListViewReserve(clWindowHandle view, int32_t rows) {
    SendMessageW(HwndOf(view), LVM_SETITEMCOUNT, static_cast<WPARAM>(rows), LVSICF_NOINVALIDATEALL);
}

void ListViewDeleteItem(clWindowHandle view, int32_t row) { SendMessageW(HwndOf(view), LVM_DELETEITEM, row, 0); }
void ListViewDeleteAll(clWindowHandle view) { SendMessageW(HwndOf(view), LVM_DELETEALLITEMS, 0, 0); }

int32_t ListViewCount(clWindowHandle view) {
    return static_cast<int32_t>(SendMessageW(HwndOf(view), LVM_GETITEMCOUNT, 0, 0));
}

uint32_t ListViewGetState(clWindowHandle view, int32_t row) {
    return static_cast<uint32_t>(SendMessageW(HwndOf(view), LVM_GETITEMSTATE, row,
                                              LVIS_SELECTED | LVIS_FOCUSED | LVIS_STATEIMAGEMASK));
}

void ListViewSetState(clWindowHandle view, int32_t row, uint32_t state, uint32_t mask) {
    LVITEMW item{};
    item.stateMask = mask;
    item.state = state;
    SendMessageW(HwndOf(view), LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

int32_t ListViewSelectedCount(clWindowHandle view) {
    return static_cast<int32_t>(SendMessageW(HwndOf(view), LVM_GETSELECTEDCOUNT, 0, 0));
}

int32_t ListViewNextSelected(clWindowHandle view, int32_t after) {
    return static_cast<int32_t>(SendMessageW(HwndOf(view), LVM_GETNEXTITEM, static_cast<WPARAM>(after),
                                             MAKELPARAM(LVNI_SELECTED, 0)));
}

void ListViewEnsureVisible(clWindowHandle view, int32_t row) {
    SendMessageW(HwndOf(view), LVM_ENSUREVISIBLE, row, FALSE);
}

int32_t ListViewHitTest(clWindowHandle view, clPoint point, int32_t* column) {
    LVHITTESTINFO hit{};
    hit.pt = POINT{point.x, point.y};
    SendMessageW(HwndOf(view), LVM_SUBITEMHITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    if (column != nullptr) *column = hit.iItem >= 0 ? hit.iSubItem : -1;
    return hit.iItem;
}

clRect ListViewCellRect(clWindowHandle view, int32_t row, int32_t column) {
    RECT area{};
    area.top = column;
    area.left = column == 0 ? LVIR_LABEL : LVIR_BOUNDS;
    if (SendMessageW(HwndOf(view), LVM_GETSUBITEMRECT, row, reinterpret_cast<LPARAM>(&area)) == 0) return clRect{};
    if (column > 0) area.right = area.left + ListViewColumnWidth(view, column);
    return clRect{area.left, area.top, area.right, area.bottom};
}

int32_t ListViewColumnAtPosition(clWindowHandle view, int32_t position) {
    int32_t count = ListViewColumnCount(view);
    if (position < 0 || position >= count) return -1;
    std::vector<int> order(static_cast<size_t>(count));
    SendMessageW(HwndOf(view), LVM_GETCOLUMNORDERARRAY, count, reinterpret_cast<LPARAM>(order.data()));
    return order[static_cast<size_t>(position)];
}

int32_t ListViewScrollX(clWindowHandle view) { return GetScrollPos(HwndOf(view), SB_HORZ); }

void TreeSetImages(clWindowHandle tree, const clImageHandle* images, int32_t count, int32_t size) {
    HIMAGELIST list = MakeImageList(HwndOf(tree), images, count, size);
    SendMessageW(HwndOf(tree), TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(list));
}

clTreeItem TreeInsertItem(clWindowHandle tree, const clTreeItem& parent, const clString& text, int32_t image,
                          int32_t selectedImage, uint64_t value) {
    TVINSERTSTRUCTW insert{};
    insert.hParent = parent.IsValid() ? ItemOf(parent) : TVI_ROOT;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM;
    if (image >= 0) insert.item.mask |= TVIF_IMAGE;
    if (selectedImage >= 0) insert.item.mask |= TVIF_SELECTEDIMAGE;
    insert.item.pszText = const_cast<wchar_t*>(Wide(text));
    insert.item.iImage = image;
    insert.item.iSelectedImage = selectedImage;
    insert.item.lParam = static_cast<LPARAM>(value);
    auto item = reinterpret_cast<HTREEITEM>(
        SendMessageW(HwndOf(tree), TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    return TreeItem(HwndOf(tree), item);
}

void TreeDeleteAll(clWindowHandle tree) {
    SendMessageW(HwndOf(tree), TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
}

void TreeExpand(const clTreeItem& item, bool expand) {
    SendMessageW(TreeOf(item), TVM_EXPAND, expand ? TVE_EXPAND : TVE_COLLAPSE, reinterpret_cast<LPARAM>(ItemOf(item)));
}

bool TreeIsExpanded(const clTreeItem& item) {
    auto state = SendMessageW(TreeOf(item), TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(ItemOf(item)), TVIS_EXPANDED);
    return (state & TVIS_EXPANDED) != 0;
}

clTreeItem TreeFirstChild(clWindowHandle tree, const clTreeItem& parent) {
    HTREEITEM first = parent.IsValid()
                          ? reinterpret_cast<HTREEITEM>(SendMessageW(HwndOf(tree), TVM_GETNEXTITEM, TVGN_CHILD,
                                                                     reinterpret_cast<LPARAM>(ItemOf(parent))))
                          : reinterpret_cast<HTREEITEM>(SendMessageW(HwndOf(tree), TVM_GETNEXTITEM, TVGN_ROOT, 0));
    return TreeItem(HwndOf(tree), first);
}

clTreeItem TreeNextSibling(const clTreeItem& item) {
    auto next = reinterpret_cast<HTREEITEM>(
        SendMessageW(TreeOf(item), TVM_GETNEXTITEM, TVGN_NEXT, reinterpret_cast<LPARAM>(ItemOf(item))));
    return TreeItem(TreeOf(item), next);
}

static bool ReadItem(const clTreeItem& item, TVITEMW& record, wchar_t* text, int length) {
    record.hItem = ItemOf(item);
    record.pszText = text;
    record.cchTextMax = length;
    return SendMessageW(TreeOf(item), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&record)) != 0;
}

clString TreeItemText(const clTreeItem& item) {
    std::vector<wchar_t> text(4096);
    TVITEMW record{};
    record.mask = TVIF_TEXT;
    if (!ReadItem(item, record, text.data(), static_cast<int>(text.size()))) return clString();
    return FromWide(text.data());
}

uint64_t TreeItemValue(const clTreeItem& item) {
    TVITEMW record{};
    record.mask = TVIF_PARAM;
    return ReadItem(item, record, nullptr, 0) ? static_cast<uint64_t>(record.lParam) : 0;
}

int32_t TreeItemImage(const clTreeItem& item) {
    TVITEMW record{};
    record.mask = TVIF_IMAGE;
    return ReadItem(item, record, nullptr, 0) ? record.iImage : -1;
}

clTreeItem TreeSelected(clWindowHandle tree) {
    auto item = reinterpret_cast<HTREEITEM>(SendMessageW(HwndOf(tree), TVM_GETNEXTITEM, TVGN_CARET, 0));
    return TreeItem(HwndOf(tree), item);
}

void TreeSelect(const clTreeItem& item) {
    SendMessageW(TreeOf(item), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(ItemOf(item)));
}

int32_t TreeCount(clWindowHandle tree) {
    return static_cast<int32_t>(SendMessageW(HwndOf(tree), TVM_GETCOUNT, 0, 0));
}

clRect TreeItemRect(const clTreeItem& item) {
    // The message takes the item in the rectangle's first bytes.
    RECT area{};
    HTREEITEM handle = ItemOf(item);
    memcpy(&area, &handle, sizeof(handle));
    if (SendMessageW(TreeOf(item), TVM_GETITEMRECT, FALSE, reinterpret_cast<LPARAM>(&area)) == 0) return clRect{};
    return clRect{area.left, area.top, area.right, area.bottom};
}

clTreeItem TreeHitTest(clWindowHandle tree, clPoint point) {
    TVHITTESTINFO hit{};
    hit.pt = POINT{point.x, point.y};
    auto item = reinterpret_cast<HTREEITEM>(SendMessageW(HwndOf(tree), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    return TreeItem(HwndOf(tree), item);
}
