#include "toolkit/treeview.h"

#include "toolkit/controls.h"

bool XTreeView::Create(clWindowHandle parent, uint32_t id, const clRect& rect) {
    clWindowHandle tree = CreateControl(kControlTreeView, parent, id, clString(), rect);
    return tree != nullptr && Attach(tree);
}

void XTreeView::OnItemExpanded(const clTreeItem&, bool) {}
void XTreeView::OnItemExpanding(const clTreeItem&, bool) {}
void XTreeView::OnSelChanged(const clTreeItem&, const clTreeItem&) {}
void XTreeView::OnSelChanging(const clTreeItem&, const clTreeItem&, bool&) {}
void XTreeView::OnClick(clPoint) {}
void XTreeView::OnDoubleClick(clPoint) {}
void XTreeView::OnRightClick(clPoint) {}
void XTreeView::OnRightDoubleClick(clPoint) {}
void XTreeView::OnPointerMessage(uint32_t, clPoint) {}
void XTreeView::OnSpaceKey() {}

intptr_t XTreeView::OnSubclassMessage(clWindowHandle, uint32_t message, uintptr_t, intptr_t lParam,
                                      uint32_t* handled) {
    *handled = 0;
    if (message >= kWmMouseMove && message <= kWmMButtonDoubleClick) {
        OnPointerMessage(message, clPoint{clXOf(lParam), clYOf(lParam)});
        return 0;
    }
    if (message != kWmReflectNotify) return 0;
    auto& record = *reinterpret_cast<clViewNotify*>(lParam);
    *handled = 1;
    switch (record.code) {
        case kTvnItemExpanded: OnItemExpanded(record.item, record.newState != 0); return 0;
        case kTvnItemExpanding: OnItemExpanding(record.item, record.newState != 0); return 0;
        case kTvnSelChanged: OnSelChanged(record.item, record.oldItem); return 0;
        case kTvnSelChanging: {
            bool forbid = false;
            OnSelChanging(record.item, record.oldItem, forbid);
            record.forbid = forbid;
            return forbid ? 1 : 0;
        }
        case kNmClick: OnClick(record.point); return 0;
        case kNmDoubleClick: OnDoubleClick(record.point); return 0;
        case kNmRightClick: OnRightClick(record.point); return 0;
        case kNmRightDoubleClick: OnRightDoubleClick(record.point); return 0;
        case kTvnKeyDown:
            if (record.key == kVkSpace) {
                OnSpaceKey();
                return 1;
            }
            return 0;
        default: *handled = 0; return 0;
    }
}

clTreeItem XTreeView::InsertItem(const clString& text, int32_t image, int32_t selectedImage,
                                 const clTreeItem& parent, uint64_t value) {
    return TreeInsertItem(controlHandle, parent, text, image, selectedImage, value);
}

void XTreeView::DeleteAll() { TreeDeleteAll(controlHandle); }

void XTreeView::ExpandAll(bool expand) {
    WindowSetRedraw(controlHandle, false);
    for (clTreeItem root = TreeFirstChild(controlHandle, clTreeItem{}); root.IsValid(); root = TreeNextSibling(root)) {
        TreeExpand(root, expand);
    }
    WindowSetRedraw(controlHandle, true);
    WindowInvalidate(controlHandle, nullptr);
}
