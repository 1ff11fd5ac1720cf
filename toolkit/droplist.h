// XDropList: a combo box with an edit field whose typing completes from
// its items. Each item has a text, a tag and a drawing list for its row.
//
// Completion: after a letter, digit or blank, the text before the caret is
// compared, ignoring case, with the start of each item in order; the first
// that matches replaces the whole edit text, with the part behind what was
// typed selected, so typing on overwrites it. Return first accepts a
// completion (the selection collapses to the end); a Return with nothing
// to accept moves on to the next control at its key-up. Leaving the field
// drops a completion that wasn't accepted.
#pragma once

#include <cstdint>
#include <functional>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "toolkit/drawlist.h"
#include "toolkit/messages.h"
#include "toolkit/subclassctrl.h"
#include "toolkit/toolkitapi.h"

struct clDropItem {
    clString text;
    uint64_t tag = 0;
    clDrawList drawList;  // the row as the list draws it: runs of text in their colours
    bool hasRuns = false;
    clImageHandle image = nullptr;  // drawn ahead of the text; not owned
    bool separatorAbove = false;    // a dividing line over the row
    bool separatorBelow = false;
};

class QV_TOOLKIT_API XDropList : public XSubClassCtrl {
public:
    // The combo box's own messages: it paints the rows of the list.
    class QV_TOOLKIT_API clRowPainter : public XSubClassCtrl {
    public:
        XDropList* owner = nullptr;
        intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                   uint32_t* handled) override;
    };

    clWindowHandle control = nullptr;  // the combo box
    clWindowHandle edit = nullptr;     // its edit field, which this object takes over
    clPointerArray items;              // of clDropItem, owned
    bool autoCompletePending = false;
    std::function<void(int32_t number)> onNumber;
    clRowPainter rowPainter;
    uint32_t selectionColor = 0xF7E4CC;

    XDropList() { rowPainter.owner = this; }
    ~XDropList() override;

    intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                               uint32_t* handled) override;
    // Calls `onNumber` with the number.
    virtual void OnNumber(int32_t number);
    // The user chose an item from the list.
    virtual void OnSelectionChanged();

    bool Create(clWindowHandle parent, uint32_t id, const clRect& rect);
    void Destroy();
    // Adds an item. Its row shows its text, or, once runs are added, the
    // runs one after another, each in its colour.
    int32_t AddItem(const clString& text, uint64_t tag = 0);
    // Inserts an item ahead of `index` (-1 or past the end: at the end).
    // The field shows `shownText` when the item is chosen, if one is given.
    int32_t InsertItem(int32_t index, const clString& text, uint64_t tag = 0, const clString* shownText = nullptr);
    void DeleteItem(int32_t index);
    void Clear();
    clDropItem* Item(int32_t index) const;
    int32_t Count() const { return static_cast<int32_t>(items.count); }
    // The first item whose text is exactly `text`, or -1.
    int32_t FindExact(const clString& text) const;
    void AddRun(int32_t item, const clString& text, uint32_t color);
    // Paints a row of the list.
    void PaintRow(const clDrawItem& row);
    clString ItemText(int32_t item) const;
    int32_t GetSelection() const;
    void SetSelection(int32_t item);
    clString Text() const;

private:
    void Complete();
};
