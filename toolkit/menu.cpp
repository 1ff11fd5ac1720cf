#include "toolkit/application.h"

clMenu::~clMenu() {
    for (int64_t i = 0; i < items.count; ++i) {
        auto* item = items.At<clMenuItem>(i);
        delete item->submenu;
        delete item;
    }
}

clMenuItem& clMenu::Add(const clString& text, uint32_t id, bool checked, bool enabled) {
    auto* item = new clMenuItem;
    item->text = text;
    item->id = id;
    item->checked = checked;
    item->enabled = enabled;
    items.Add(item);
    return *item;
}

void clMenu::AddSeparator() { Add(clString(), 0); }

clMenuItem& clMenu::AddSubmenu(const clString& text, clMenu* submenu) {
    clMenuItem& item = Add(text, 0);
    item.submenu = submenu;
    return item;
}

clMenuItem* clMenu::Find(uint32_t id) const {
    for (int64_t i = 0; i < items.count; ++i) {
        auto* item = items.At<clMenuItem>(i);
        if (item->submenu != nullptr) {
            if (clMenuItem* found = item->submenu->Find(id)) return found;
        } else if (item->id == id && !item->text.IsEmpty()) {
            return item;
        }
    }
    return nullptr;
}
