// XValueList: the toolkit's property sheet. A list of rows, each a label
// with an optional value that the user edits in place. The base is an
// owner-drawn list box: it scrolls and keeps the selection, and each row
// paints itself from its own clDrawList. At most one row has live
// controls: selecting a row lays an edit, a combo box or a button over
// it, and moving the selection closes them, committing the value. So a
// list of hundreds of rows has at most three child controls.
//
// The list is a plain object owned by a form. The form calls OnRawMessage
// from its own OnRawMessage, before its own handling (the list's rows are
// painted through the form's kWmDrawItem); a set handled flag ends it.
#pragma once

#include <cstdint>
#include <functional>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"
#include "toolkit/drawlist.h"
#include "toolkit/font.h"
#include "toolkit/subclassctrl.h"
#include "toolkit/toolkitapi.h"

class XValueList;

enum clValueRowKind : uint32_t {
    kRowPlain = 0,      // text, with an optional link at valueLeft
    kRowSingle = 1,     // one element; the value isn't drawn
    kRowLink = 2,       // the value in blue, underlined
    kRowWrapped = 3,    // the label over as many lines as it needs
    kRowHeading = 4,    // a band with a gradient
    kRowEdit = 5,       // an edit field (multi-line when lines > 1)
    kRowSuggest = 6,    // a text with suggestions
    kRowChoice = 7,     // a choice from a list
    kRowCheck = 8,      // a check box; the value is "1" or empty
    kRowRadio = 9,      // a radio button; the value is its group, negative when chosen
};

struct QV_TOOLKIT_API clValueRowDesc {
    uint32_t kind = kRowPlain;
    clString name;
    uint32_t nameLeft = 0;      // packed; 0 takes the list's default
    uint32_t nameFontSize = 0;  // packed; 0 takes the default
    uint32_t nameColor = 0;     // 0 takes the list's textColor
    bool nameBold = false;
    bool nameUnderline = false;
    bool readOnly = false;
    bool nameItalic = false;
    clString value;
    uint32_t valueLeft = 0;  // packed; 0 takes the default
    uint32_t valueColor = 0;
    uint32_t valueWidth = 0;  // packed; 0 stretches the editor to the right edge
    int32_t lines = 0;  // an edit's lines; 2 on a plain row with a link puts the link on a line of its own
    clImageHandle icon = nullptr;  // owned by the list once added
    uint32_t imageLeft = 0;        // packed; 0 takes the default name left
    clStringList choices;
    clString buttonText;
    std::function<void(XValueList*)> onButton;
    std::function<void(XValueList*)> onChange;
    uint64_t userValue = 0;

    clValueRowDesc() = default;
    clValueRowDesc(const clValueRowDesc& other);
    clValueRowDesc& operator=(const clValueRowDesc& other);
};

// A row as the list keeps it: its description with the defaults filled
// in, in pixels, and the drawing list that paints it.
struct QV_TOOLKIT_API clValueRow : clValueRowDesc {
    clDrawList drawList;
    uint32_t selectionOrder = 0, iconOrder = 0, nameOrder = 0, valueOrder = 0, bracketOrder = 0;
    uint32_t boxOrder = 0, markOrder = 0;  // check box or radio ring, and its check or dot
    int32_t height = 0;
};

class QV_TOOLKIT_API XValueList {
public:
    class QV_TOOLKIT_API clValueControl : public XSubClassCtrl {
    public:
        clWindowHandle editorHandle = nullptr;
        int32_t row = -1;
        bool isNameEditor = false;
        bool opening = false;  // the editor is being filled: its changes are not the user's
        clWindowHandle buttonHandle = nullptr;
        XValueList* owner = nullptr;

        // Opens the editor of a row; any open one is closed first.
        void Open(int32_t rowIndex);
        // Takes the editor's text into the row, then removes the controls.
        void Close();
        void Commit();
        intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                   uint32_t* handled) override;
    };

    clWindowHandle listHandle = nullptr;
    uint32_t listId = 0;
    clWindowHandle parentWindow = nullptr;
    uint32_t defaultNameLeft = 8;
    uint32_t defaultValueLeft = 120;
    uint32_t defaultNameFontSize = 12;
    uint32_t defaultValueFontSize = 12;
    bool unitsArePixels = false;
    uint32_t textColor = 0;
    uint32_t background = 0xFFFFFF;
    uint32_t selectionColor = 0xFBF1E5;
    uint32_t rowHeight = 0;  // packed; 0: the editor's height and a margin
    clFont font;
    clPointerArray rows;  // of clValueRow, owned
    clStringList rowNames;
    int32_t dragRow = -1;
    bool dragTargetValid = false;
    int32_t dragTarget = -1;
    clValueControl control;

    XValueList();
    virtual ~XValueList();
    XValueList(const XValueList&) = delete;
    XValueList& operator=(const XValueList&) = delete;

    virtual intptr_t OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                  uint32_t* handled);
    virtual void OnSelectionChanged(int32_t row);
    // A row moved by dragging, from one place to another.
    virtual void OnRowMoved(int32_t from, int32_t to);
    // A row's value was committed from its editor.
    virtual void OnValueCommitted(int32_t row);

    bool Create(clWindowHandle parent, int32_t x, int32_t y, int32_t width, int32_t height, bool pixels,
                bool allowDrag);
    void Destroy();
    // Answers the row's index; position -1 adds at the end.
    int32_t AddRow(const clValueRowDesc& description, int32_t position = -1);
    // Moves the value column of rows added from now on to just behind the
    // widest of `names` in the name font, but no further than `mostPixels`
    // from the left: short names leave the values room, long ones aren't cut.
    void FitNameColumn(const clStringList& names, int32_t mostPixels);
    // A read-only row that only says something (what the list is empty of,
    // say), over as many lines as the text needs.
    int32_t AddNoteRow(const char16_t* text, uint32_t color);
    void Clear();
    // Takes one row out; the rows behind it move up.
    void DeleteRow(int32_t row);
    int32_t RowCount() const { return static_cast<int32_t>(rows.count); }
    clValueRow* Row(int32_t row) const;
    // The value, after committing any open editor.
    clString GetValue(int32_t row);
    void SetValue(int32_t row, const clString& text);
    bool GetChecked(int32_t row) const;
    void SetChecked(int32_t row, bool checked);
    void SelectRow(int32_t row);
    int32_t SelectedRow() const;
    // Repaints one row, after its drawing list changed.
    void RedrawRow(int32_t row);
    // A packed value of the caller's units in pixels.
    uint32_t Pixels(uint32_t packed) const;

private:
    class clListSubclass : public XSubClassCtrl {
    public:
        XValueList* owner = nullptr;
        intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                   uint32_t* handled) override;
    };
    clListSubclass listSubclass;
    bool allowDragging = false;
    bool dragPending = false;
    clPoint dragStart;
    int32_t pressedRow = -1;
    clImageHandle measureImage = nullptr;  // a canvas to measure texts on
    clCanvas* measure = nullptr;
    static uint32_t listCounter;

    void BuildRow(clValueRow& row);
    static bool LinkBelow(const clValueRow& row);
    void PaintRow(const clDrawItem& item);
    void Click(int32_t x, int32_t y);
    void Toggle(int32_t row);
    void MoveSelection(int32_t row);
    int32_t RowAtPoint(int32_t x, int32_t y) const;
    void DragMove(int32_t x, int32_t y);
    void DragDrop();
    void DragEnd();
    int32_t DefaultRowHeight();
    clString WrapName(const clValueRow& row, int32_t width, int32_t& lineCount);
    friend class clValueControl;
};
