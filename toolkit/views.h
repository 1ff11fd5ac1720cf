// List views (rows of columns, with check boxes and icons) and tree views:
// the operations on the controls and the record of their notifications.
// A view tells its parent what happens with kWmNotify (wParam the id,
// lParam a clViewNotify); the parent's handling reflects what it leaves
// alone to the view itself as kWmReflectNotify, where XListView and
// XTreeView turn it into their virtual operations. Codes are the Win32 ones.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/canvas.h"
#include "toolkit/geometry.h"
#include "toolkit/messages.h"
#include "toolkit/toolkitapi.h"

// A notification reflected back to the control it came from.
constexpr uint32_t kWmReflectNotify = 0x204E;

constexpr int32_t kNmClick = -2;
constexpr int32_t kNmDoubleClick = -3;
constexpr int32_t kNmRightClick = -5;
constexpr int32_t kNmRightDoubleClick = -6;
constexpr int32_t kNmCustomDraw = -12;
constexpr int32_t kLvnItemChanged = -101;
constexpr int32_t kLvnColumnClick = -108;
constexpr int32_t kLvnBeginDrag = -109;
constexpr int32_t kLvnKeyDown = -155;
constexpr int32_t kLvnMarqueeBegin = -156;
constexpr int32_t kLvnGetInfoTip = -158;
constexpr int32_t kTvnSelChanging = -450;
constexpr int32_t kTvnSelChanged = -451;
constexpr int32_t kTvnItemExpanding = -454;
constexpr int32_t kTvnItemExpanded = -455;
constexpr int32_t kTvnKeyDown = -412;

// Check state in a list row's state bits, as Win32 keeps it.
constexpr uint32_t kStateImageMask = 0xF000;
constexpr uint32_t kStateUnchecked = 0x1000;
constexpr uint32_t kStateChecked = 0x2000;
constexpr uint32_t kStateSelected = 0x0002;
constexpr uint32_t kStateFocused = 0x0001;

// Stages of a custom draw; a row's colours are asked at kCddsItemPrePaint.
constexpr uint32_t kCddsPrePaint = 0x00000001;
constexpr uint32_t kCddsItemPrePaint = 0x00010001;

// A tree item: the tree's own item and the tree it belongs to, so a
// handle is enough to act on it.
struct clTreeItem {
    void* item = nullptr;
    clWindowHandle tree = nullptr;
    bool IsValid() const { return item != nullptr && tree != nullptr; }
};

struct clViewNotify {
    clWindowHandle from = nullptr;
    uint32_t id = 0;
    int32_t code = 0;
    // Lists.
    int32_t row = -1;
    int32_t column = -1;
    uint32_t newState = 0;
    uint32_t oldState = 0;
    uint32_t key = 0;
    clPoint point;      // client pixels of the view
    clString* text = nullptr;  // an info tip to fill
    // Trees.
    clTreeItem item;
    clTreeItem oldItem;
    bool forbid = false;  // a selection change refused
    // Custom draw: colours 0x00BBGGRR to use for the row, clNoColor for
    // the view's own.
    uint32_t drawStage = 0;
    uint32_t textColor = clNoColor;
    uint32_t backColor = clNoColor;
};

// Holds a window's repainting back (false) or lets it go on (true).
QV_TOOLKIT_API void WindowSetRedraw(clWindowHandle window, bool redraw);

// List views: a report of rows and columns with full-row, multiple
// selection. Coordinates are the view's client pixels, the ones its mouse
// messages carry.
QV_TOOLKIT_API void ListViewSetCheckBoxes(clWindowHandle view, bool checkBoxes);
QV_TOOLKIT_API bool ListViewHasCheckBoxes(clWindowHandle view);
// One picture per index for the rows' icons, scaled to `size` pixels.
QV_TOOLKIT_API void ListViewSetImages(clWindowHandle view, const clImageHandle* images, int32_t count, int32_t size);
QV_TOOLKIT_API int32_t ListViewInsertColumn(clWindowHandle view, int32_t index, const clString& title, int32_t width,
                                            bool rightAligned);
// -1 fits the contents, -2 the larger of contents and heading.
QV_TOOLKIT_API void ListViewSetColumnWidth(clWindowHandle view, int32_t column, int32_t width);
QV_TOOLKIT_API int32_t ListViewColumnWidth(clWindowHandle view, int32_t column);
// The width a column needs to show its whole heading.
QV_TOOLKIT_API int32_t ListViewHeadingWidth(clWindowHandle view, int32_t column);
QV_TOOLKIT_API int32_t ListViewColumnCount(clWindowHandle view);
// A row at `index` (-1: the end) with the first column's text, an icon
// index (-1: none) and its check state (kStateChecked, kStateUnchecked or
// 0 for unchecked), set as it is made. Answers its index.
QV_TOOLKIT_API int32_t ListViewInsertItem(clWindowHandle view, int32_t index, const clString& text, int32_t image,
                                          uint32_t checkState = 0);
QV_TOOLKIT_API void ListViewSetItemText(clWindowHandle view, int32_t row, int32_t column, const clString& text);
QV_TOOLKIT_API clString ListViewGetItemText(clWindowHandle view, int32_t row, int32_t column);
// Room for this many rows before a long fill.
QV_TOOLKIT_API void ListViewReserve(clWindowHandle view, int32_t rows);
QV_TOOLKIT_API void ListViewDeleteItem(clWindowHandle view, int32_t row);
QV_TOOLKIT_API void ListViewDeleteAll(clWindowHandle view);
QV_TOOLKIT_API int32_t ListViewCount(clWindowHandle view);
// The row's state bits (kStateSelected, kStateFocused, the check state).
QV_TOOLKIT_API uint32_t ListViewGetState(clWindowHandle view, int32_t row);
// Sets the bits of `mask` to those of `state`; row -1 is every row.
QV_TOOLKIT_API void ListViewSetState(clWindowHandle view, int32_t row, uint32_t state, uint32_t mask);
QV_TOOLKIT_API int32_t ListViewSelectedCount(clWindowHandle view);
// The next selected row after `after` (-1: from the top), -1 when none.
QV_TOOLKIT_API int32_t ListViewNextSelected(clWindowHandle view, int32_t after);
QV_TOOLKIT_API void ListViewEnsureVisible(clWindowHandle view, int32_t row);
// The row and column at a point; row -1 when none.
QV_TOOLKIT_API int32_t ListViewHitTest(clWindowHandle view, clPoint point, int32_t* column);
// A cell's rectangle; column 0's starts at the row's left edge.
QV_TOOLKIT_API clRect ListViewCellRect(clWindowHandle view, int32_t row, int32_t column);
// Columns in the order they are shown.
QV_TOOLKIT_API int32_t ListViewColumnAtPosition(clWindowHandle view, int32_t position);
// How far the contents are scrolled to the left, in pixels.
QV_TOOLKIT_API int32_t ListViewScrollX(clWindowHandle view);

// Tree views.
QV_TOOLKIT_API void TreeSetImages(clWindowHandle tree, const clImageHandle* images, int32_t count, int32_t size);
// At the end of `parent`'s children (an invalid parent: of the roots).
QV_TOOLKIT_API clTreeItem TreeInsertItem(clWindowHandle tree, const clTreeItem& parent, const clString& text,
                                         int32_t image, int32_t selectedImage, uint64_t value);
QV_TOOLKIT_API void TreeDeleteAll(clWindowHandle tree);
QV_TOOLKIT_API void TreeExpand(const clTreeItem& item, bool expand);
QV_TOOLKIT_API bool TreeIsExpanded(const clTreeItem& item);
// The first child of `parent` (an invalid parent: the first root).
QV_TOOLKIT_API clTreeItem TreeFirstChild(clWindowHandle tree, const clTreeItem& parent);
QV_TOOLKIT_API clTreeItem TreeNextSibling(const clTreeItem& item);
QV_TOOLKIT_API clString TreeItemText(const clTreeItem& item);
QV_TOOLKIT_API uint64_t TreeItemValue(const clTreeItem& item);
QV_TOOLKIT_API int32_t TreeItemImage(const clTreeItem& item);
QV_TOOLKIT_API clTreeItem TreeSelected(clWindowHandle tree);
QV_TOOLKIT_API void TreeSelect(const clTreeItem& item);
QV_TOOLKIT_API int32_t TreeCount(clWindowHandle tree);  // all items
// The item's row rectangle, empty when it isn't shown.
QV_TOOLKIT_API clRect TreeItemRect(const clTreeItem& item);
QV_TOOLKIT_API clTreeItem TreeHitTest(clWindowHandle tree, clPoint point);
