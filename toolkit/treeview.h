// XTreeView: a tree view control taken over by a form's object; its
// notifications become the virtual operations below.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/subclassctrl.h"
#include "toolkit/toolkitapi.h"
#include "toolkit/views.h"

class QV_TOOLKIT_API XTreeView : public XSubClassCtrl {
public:
    XTreeView() = default;

    bool Create(clWindowHandle parent, uint32_t id, const clRect& rect);

    intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                               uint32_t* handled) override;

    virtual void OnItemExpanded(const clTreeItem& item, bool expanded);
    virtual void OnItemExpanding(const clTreeItem& item, bool expanding);
    virtual void OnSelChanged(const clTreeItem& item, const clTreeItem& oldItem);
    // Set `forbid` to keep the old selection.
    virtual void OnSelChanging(const clTreeItem& item, const clTreeItem& oldItem, bool& forbid);
    virtual void OnClick(clPoint point);
    virtual void OnDoubleClick(clPoint point);
    virtual void OnRightClick(clPoint point);
    virtual void OnRightDoubleClick(clPoint point);
    virtual void OnPointerMessage(uint32_t message, clPoint point);
    virtual void OnSpaceKey();

    // At the end of `parent`'s children; an image of -1 is none.
    clTreeItem InsertItem(const clString& text, int32_t image, int32_t selectedImage, const clTreeItem& parent,
                          uint64_t value);
    void DeleteAll();
    // Every root item expanded or collapsed, with repainting held back.
    void ExpandAll(bool expand);
};
