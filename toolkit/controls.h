// Native controls and the operations on any window or control: creating,
// text, state, geometry, painting and the focus. A control tells its
// parent what happens with kWmCommand (id, notify code, handle), as a
// Win32 control does, on both back ends.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/canvas.h"
#include "toolkit/geometry.h"
#include "toolkit/messages.h"
#include "toolkit/toolkitapi.h"

enum clControlKind : int32_t {
    kControlStatic = 0,     // a text
    kControlButton,         // a push button: kBnClicked
    kControlEdit,           // one line of text: kEnChange
    kControlMultiLineEdit,  // lines with a vertical scroll bar: kEnChange
    kControlComboBox,       // an edit with a list of suggestions: kEnChange, kCbnSelChange
    kControlDropList,       // a choice from a list: kCbnSelChange
    kControlListBox,        // owner-drawn rows (kWmDrawItem to the parent): kLbnSelChange
    kControlTabs,           // a row of tabs: kCbnSelChange when the tab changes
    kControlPaintedButton,  // a button that never paints itself: its owner paints every picture
    kControlPaintedComboBox,  // a combo box with an edit field whose list rows are painted by the
                              // combo's own subclass (kWmDrawItem sent to the combo itself)
    kControlListView,       // rows of columns (views.h): kWmNotify
    kControlTreeView,       // a tree of items (views.h): kWmNotify
    kControlCheckBox,       // a box with its text, ticked or not: kBnClicked
};

// A child control of `parent` at `rect` (client pixels), shown.
QV_TOOLKIT_API clWindowHandle CreateControl(clControlKind kind, clWindowHandle parent, uint32_t id,
                                            const clString& text, const clRect& rect);
QV_TOOLKIT_API void DestroyControl(clWindowHandle control);

QV_TOOLKIT_API void WindowSetText(clWindowHandle window, const clString& text);
QV_TOOLKIT_API clString WindowGetText(clWindowHandle window);
QV_TOOLKIT_API void WindowSetFont(clWindowHandle window, const clFontSpec& font);
QV_TOOLKIT_API void WindowEnable(clWindowHandle window, bool enable);
QV_TOOLKIT_API bool WindowIsEnabled(clWindowHandle window);
QV_TOOLKIT_API void WindowShow(clWindowHandle window, bool show);
QV_TOOLKIT_API bool WindowIsVisible(clWindowHandle window);
QV_TOOLKIT_API bool WindowIsMinimized(clWindowHandle window);
// Position and size; a child's in its parent's client pixels, a top
// window's on the screen.
QV_TOOLKIT_API void WindowMove(clWindowHandle window, const clRect& rect);
QV_TOOLKIT_API clRect WindowScreenRect(clWindowHandle window);  // screen pixels
QV_TOOLKIT_API clRect WindowClientRect(clWindowHandle window);  // 0, 0, width, height
QV_TOOLKIT_API clPoint WindowFromScreen(clWindowHandle window, clPoint point);
QV_TOOLKIT_API clPoint WindowToScreen(clWindowHandle window, clPoint point);
QV_TOOLKIT_API clWindowHandle WindowParent(clWindowHandle window);
QV_TOOLKIT_API uint32_t WindowId(clWindowHandle window);
QV_TOOLKIT_API clWindowHandle WindowChild(clWindowHandle parent, uint32_t id);
// Repaints a part (null: all) at the next chance, or at once.
QV_TOOLKIT_API void WindowInvalidate(clWindowHandle window, const clRect* rect);
QV_TOOLKIT_API void WindowUpdate(clWindowHandle window);
QV_TOOLKIT_API void WindowSetFocus(clWindowHandle window);
// Puts a control above its siblings, where they overlap.
QV_TOOLKIT_API void WindowBringToTop(clWindowHandle window);
// Moves a control in the tab order to just after `previous`.
QV_TOOLKIT_API void WindowPlaceAfter(clWindowHandle window, clWindowHandle previous);
// The control after this one in the tab order, or null.
QV_TOOLKIT_API clWindowHandle WindowNextInTabOrder(clWindowHandle window);
// Gives the focus to the control after this one in the tab order.
QV_TOOLKIT_API void WindowFocusNext(clWindowHandle window);
// The window under a screen point (the deepest child), or null.
QV_TOOLKIT_API clWindowHandle WindowAtPoint(clPoint point);
// See-through from 0 to opaque at 255, for a top window.
QV_TOOLKIT_API void WindowSetOpacity(clWindowHandle window, int32_t alpha);
// The area a tab row leaves for its pages, in its parent's client pixels.
QV_TOOLKIT_API clRect TabDisplayArea(clWindowHandle tabs);
QV_TOOLKIT_API clWindowHandle WindowWithFocus();
QV_TOOLKIT_API void WindowCaptureMouse(clWindowHandle window);
QV_TOOLKIT_API void WindowReleaseMouse();
QV_TOOLKIT_API clPoint CursorPosition();  // screen pixels
// Sends a message to a window's handling now, as the toolkit routes it
// (the back end's own handling when no object takes it).
QV_TOOLKIT_API intptr_t WindowSend(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// Posts it to be handled by the message loop.
QV_TOOLKIT_API void WindowPost(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam);
// Draws the window and its children, as shown, into a new image; null if
// it has no size. For tests and screenshots.
QV_TOOLKIT_API clImageHandle WindowGrab(clWindowHandle window);
// Sets the window's title strip and taskbar icon.
QV_TOOLKIT_API void WindowSetIcon(clWindowHandle window, clImageHandle icon);

// The picture of a tab, `size` pixels square, ahead of its title.
QV_TOOLKIT_API void TabsSetItemImage(clWindowHandle tabs, int32_t index, clImageHandle image, int32_t size);

// Check boxes.
QV_TOOLKIT_API void CheckBoxSet(clWindowHandle box, bool checked);
QV_TOOLKIT_API bool CheckBoxIsChecked(clWindowHandle box);

// Edits.
QV_TOOLKIT_API void EditSetSelection(clWindowHandle edit, int32_t start, int32_t end);  // -1, 0: none
QV_TOOLKIT_API void EditGetSelection(clWindowHandle edit, int32_t& start, int32_t& end);
QV_TOOLKIT_API void EditReplaceSelection(clWindowHandle edit, const clString& text);

// Combo boxes and drop lists (and the items of a tab row).
QV_TOOLKIT_API int32_t ComboAddItem(clWindowHandle combo, const clString& text);
// Inserts an item ahead of `index` (-1: at the end); answers its index.
QV_TOOLKIT_API int32_t ComboInsertItem(clWindowHandle combo, int32_t index, const clString& text);
QV_TOOLKIT_API void ComboDeleteItem(clWindowHandle combo, int32_t index);
QV_TOOLKIT_API void ComboClear(clWindowHandle combo);
QV_TOOLKIT_API int32_t ComboCount(clWindowHandle combo);
QV_TOOLKIT_API clString ComboItemText(clWindowHandle combo, int32_t index);
QV_TOOLKIT_API int32_t ComboGetSelection(clWindowHandle combo);  // -1: none
QV_TOOLKIT_API void ComboSetSelection(clWindowHandle combo, int32_t index);
// The combo box's edit field, for its text and selection.
QV_TOOLKIT_API clWindowHandle ComboEdit(clWindowHandle combo);

// Owner-drawn list boxes: rows of one height, with an item value each.
QV_TOOLKIT_API int32_t ListInsertRow(clWindowHandle list, int32_t index, uint64_t itemData);  // -1: at the end
QV_TOOLKIT_API void ListDeleteRow(clWindowHandle list, int32_t index);
QV_TOOLKIT_API void ListClear(clWindowHandle list);
QV_TOOLKIT_API int32_t ListCount(clWindowHandle list);
QV_TOOLKIT_API void ListSetRowHeight(clWindowHandle list, int32_t index, int32_t height);
QV_TOOLKIT_API int32_t ListRowHeight(clWindowHandle list, int32_t index);
QV_TOOLKIT_API int32_t ListGetSelection(clWindowHandle list);
QV_TOOLKIT_API void ListSetSelection(clWindowHandle list, int32_t index);  // scrolls it into view
QV_TOOLKIT_API int32_t ListTopIndex(clWindowHandle list);
QV_TOOLKIT_API void ListSetTopIndex(clWindowHandle list, int32_t index);
QV_TOOLKIT_API clRect ListRowRect(clWindowHandle list, int32_t index);  // client pixels
// The row at a client point, -1 below the last.
QV_TOOLKIT_API int32_t ListRowAt(clWindowHandle list, int32_t x, int32_t y);
QV_TOOLKIT_API uint64_t ListRowData(clWindowHandle list, int32_t index);
QV_TOOLKIT_API void ListSetRowData(clWindowHandle list, int32_t index, uint64_t itemData);
QV_TOOLKIT_API void InvalidateListRow(clWindowHandle list, int32_t index);
