// clMultiEncoderPage: the settings page of "[Multi Encoder]" in the
// options window. Its items are rows of a list, each an encoder with its
// output; "Add" and "Edit" open an item in dlgMultiItem, "Remove" drops
// the selected one, and a row dragged to another place changes the order,
// which is the order of the jobs. The page stands for the option string of
// the items (multiencoder.h), read when it is shown.
#pragma once

#include <cstdint>

#include "engine/multiencoder.h"
#include "foundation/clstring.h"
#include "toolkit/valuelist.h"

constexpr uint32_t kIdMultiAdd = 1060;
constexpr uint32_t kIdMultiEdit = 1061;
constexpr uint32_t kIdMultiRemove = 1062;

class clMultiEncoderPage {
public:
    class _LstItems : public XValueList {
    public:
        clMultiEncoderPage* page = nullptr;
        void OnRowMoved(int32_t from, int32_t to) override;
        void OnSelectionChanged(int32_t row) override;
    };

    clMultiEncoderItems items;
    _LstItems list;
    clWindowHandle parent = nullptr;
    clWindowHandle addButton = nullptr;
    clWindowHandle editButton = nullptr;
    clWindowHandle removeButton = nullptr;

    clMultiEncoderPage() { list.page = this; }
    ~clMultiEncoderPage() { Remove(); }
    clMultiEncoderPage(const clMultiEncoderPage&) = delete;
    clMultiEncoderPage& operator=(const clMultiEncoderPage&) = delete;

    // Builds the page in `parent`, in a box of window pixels.
    void Show(clWindowHandle parentWindow, int32_t x, int32_t y, int32_t width, int32_t height, const clString& options);
    clString Options() const { return BuildMultiItems(items); }
    void Remove();
    bool IsShown() const { return parent != nullptr; }
    // A click on one of the page's buttons; false for any other control.
    bool OnCommand(uint32_t id);
    // The page's controls in their tab order.
    int32_t ControlCount() const { return 4; }
    clWindowHandle Control(int32_t index) const;

    void AddItem();
    void EditItem(int32_t index);
    void RemoveItem(int32_t index);
    void FillList(int32_t selected);
};
