// clEffectChain: an effect list the user edits, in an XValueList that a
// window owns: one row per effect (its name, its settings in grey, its
// icon, a "Settings" link that opens dlgDSPSettings), in chain order, moved
// by dragging. The "Add" button's menu adds an effect from the installed
// libraries, removes the selected one, clears the list, and saves it to or
// loads it from a ".dspeffect" file (the stored effect string as one line
// of UTF-16LE). The options window and a multi-encoder item each have one.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/stringlist.h"
#include "toolkit/valuelist.h"

constexpr uint32_t kIdEffectFirstLibrary = 10000;
constexpr uint32_t kIdEffectRemove = 40029;
constexpr uint32_t kIdEffectClear = 40030;
constexpr uint32_t kIdEffectSave = 40031;
constexpr uint32_t kIdEffectLoad = 40032;

class clEffectChain {
public:
    XValueList* list = nullptr;
    clWindowHandle owner = nullptr;
    // For tests: these answer instead of the settings window and the file
    // dialogs (an empty path is a cancel).
    clString (*editSettings)(const clString& name, const clString& settings) = nullptr;
    clString (*askSavePath)() = nullptr;
    clString (*askLoadPath)() = nullptr;

    void Attach(XValueList& rows, clWindowHandle window) {
        list = &rows;
        owner = window;
    }
    // Fills the list from a stored effect string; the old rows go.
    void Load(const clString& stored);
    // The stored effect string of the rows, in their order.
    clString Stored() const;
    // The "Add" menu at the button, and what its choice does.
    void ShowMenu(clWindowHandle button);
    void Act(uint32_t id, const clStringList& libraries);
    // Adds an effect: its settings window opens at once, and the row goes
    // in at the selected row (not the last), or at the end.
    void AddEffect(const clString& name);
    void OpenSettings(int32_t row);
    void RemoveSelected();
    bool SaveFile(const clString& path) const;
    // A file not in the expected form gives an empty list.
    bool LoadFile(const clString& path);

private:
    clValueRowDesc Row(const clString& name, const clString& settings);
    clString Edit(const clString& name, const clString& settings);
};
