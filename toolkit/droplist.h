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
#include "toolkit/subclassctrl.h"
#include "toolkit/toolkitapi.h"

struct clDropItem {
    clString text;
    uint64_t tag = 0;
    clDrawList drawList;  // the row as the list draws it: runs of text in their colours
};

class QV_TOOLKIT_API XDropList : public XSubClassCtrl {
public:
    clWindowHandle control = nullptr;  // the combo box
    clWindowHandle edit = nullptr;     // its edit field, which this object takes over
    clPointerArray items;              // of clDropItem, owned
    bool autoCompletePending = false;
    std::function<void(int32_t number)> onNumber;

    XDropList() = default;
    ~XDropList() override;

    intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                               uint32_t* handled) override;
    // Calls `onNumber` with the number.
    virtual void OnNumber(int32_t number);
    // The user chose an item from the list.
    virtual void OnSelectionChanged();

    bool Create(clWindowHandle parent, uint32_t id, const clRect& rect);
    void Destroy();
    // Adds an item; `runs` colour parts of its row (text, colour), in order.
    int32_t AddItem(const clString& text, uint64_t tag = 0);
    void AddRun(int32_t item, const clString& text, uint32_t color);
    clString ItemText(int32_t item) const;
    int32_t GetSelection() const;
    void SetSelection(int32_t item);
    clString Text() const;

private:
    int32_t runLeft = 0;
    void Complete();
};
