// XListView: a list view control taken over by a form's object. The view's
// notifications become virtual operations, so a form overrides only what
// it needs; on top of the control it adds check boxes that act on the
// whole selection (a click in a row's check box, or Space) and in-place
// editing of any column through its clValueControl.
//
// editMode: 0 none, 1 the first column only, 2 any column; in modes 1 and
// 2 the first click on a row selects it and a second click on a cell
// edits it. labelEditing lets F2 edit the first column of the selected
// row in any mode.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/clstring.h"
#include "toolkit/canvas.h"
#include "toolkit/subclassctrl.h"
#include "toolkit/toolkitapi.h"
#include "toolkit/views.h"

class QV_TOOLKIT_API XListView : public XSubClassCtrl {
public:
    // The in-place editor: an edit control laid over one cell.
    class QV_TOOLKIT_API clValueControl : public XSubClassCtrl {
    public:
        clWindowHandle editHandle = nullptr;
        clFontSpec font;
        int32_t row = -1;
        int32_t column = -1;
        XListView* list = nullptr;

        ~clValueControl() override;
        bool IsOpen() const { return editHandle != nullptr; }
        // Commits an open editor first.
        bool Open(int32_t atRow, int32_t atColumn);
        // Writes a changed text to the cell and tells the list; closes.
        void Commit();
        // Closes without writing.
        void Discard();
        intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                   uint32_t* handled) override;

    private:
        void Close();
        bool KeyDown(uint32_t key);
    };

    XSubClassCtrl* ownerObject = nullptr;  // the form's back pointer, if it wants one
    int32_t editMode = 0;
    bool labelEditing = false;
    clValueControl valueControl;

    XListView();
    ~XListView() override;

    // Makes the control in `parent` and takes it over.
    bool Create(clWindowHandle parent, uint32_t id, const clRect& rect, bool checkBoxes);

    intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                               uint32_t* handled) override;

    virtual int32_t GetRowHeight();
    virtual bool CanEditCell(int32_t row, int32_t column);
    virtual void OnItemChanged(int32_t row, int32_t column, uint32_t newState, uint32_t oldState);
    virtual void OnSelectionChanged(int32_t row, int32_t column, bool selected);
    virtual void OnCheckChanged(int32_t row, bool checked);
    // True refuses the edit.
    virtual bool OnBeginEdit(int32_t row);
    virtual void OnEndEdit(int32_t row, const clString& text);
    virtual void OnEndEditCancelled(int32_t row);
    virtual void OnBeginDrag(int32_t row);
    virtual void OnKeyDown(uint32_t key);
    virtual void OnInfoTip(clString& text, int32_t row);
    virtual void OnMarquee();
    virtual void OnColumnClick(int32_t column);
    virtual void OnClick(int32_t row, int32_t column);
    virtual void OnMouseDownAt(int32_t row, clPoint point);
    virtual void OnDoubleClick(int32_t row, int32_t column);
    virtual void OnRightClick(int32_t row, int32_t column, clPoint point);
    virtual void OnRightDoubleClick(int32_t row, int32_t column);
    virtual void OnCommandFromEditor(uint32_t low, uint32_t high);
    // Set the record's colours for a row; `handled` answers the message.
    virtual intptr_t OnCustomDraw(clViewNotify& record, bool& handled);
    virtual void OnVScroll();

    int32_t InsertColumn(int32_t index, const clString& title, int32_t width, bool rightAligned = false);
    void SetColumnWidth(int32_t column, int32_t width);
    int32_t InsertItem(int32_t index, const clString& text, int32_t image = -1, bool checked = false);
    void SetItemText(int32_t row, int32_t column, const clString& text);
    clString GetItemText(int32_t row, int32_t column) const;
    void DeleteItem(int32_t row);
    int32_t GetItemCount() const;
    bool IsChecked(int32_t row) const;
    void SetChecked(int32_t row, bool checked);  // -1: every row
    void SetItemState(int32_t row, uint32_t state, uint32_t mask);
    std::vector<int32_t> GetSelected() const;
    // Selects this row alone and makes it the focused one.
    void SelectOnly(int32_t row);

private:
    bool LeftButtonDown(clPoint point, uint32_t flags);
    void ToggleSelectionChecks(bool checked);
    intptr_t Reflected(clViewNotify& record, uint32_t* handled);
    friend class clValueControl;
    // After an editor's Return: the next cell to edit, by the mode.
    void EditNextAfterReturn(int32_t row, int32_t column);
};
