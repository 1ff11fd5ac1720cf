#include "frontend/effectchain.h"

#include "foundation/commandoptions.h"
#include "foundation/file.h"
#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "frontend/dlgdspsettings.h"
#include "plugins/codechandler.h"
#include "plugins/effectstring.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/dialogs.h"

namespace {

constexpr uint32_t kSettingsColor = 0xC0C0C0;
constexpr const char16_t* kFileFilter = u"DSP Effect Selections (*.dspeffect)\r*.dspeffect";
// Where effects are found when none is installed.
constexpr const char16_t* kEffectsPage = u"https://quillotone.org/effects";

clImageHandle EffectIcon(const clString& name) {
    clString file = JoinPath(JoinPath(GetProgramFolder(), clString(u"DSPs")), name);
    file.Append(u".ico");
    return LoadImageFile(file, 16, 16);
}

}  // namespace

clValueRowDesc clEffectChain::Row(const clString& name, const clString& settings) {
    clValueRowDesc row;
    row.kind = kRowPlain;
    row.name = name;
    row.value = settings;
    row.valueColor = kSettingsColor;
    row.icon = EffectIcon(name);
    row.buttonText = u"Settings";
    row.onButton = [this](XValueList* rows) { OpenSettings(rows->SelectedRow()); };
    return row;
}

clString clEffectChain::Edit(const clString& name, const clString& settings) {
    return editSettings != nullptr ? editSettings(name, settings) : EditEffectSettings(owner, name, settings);
}

void clEffectChain::Load(const clString& stored) {
    if (list == nullptr) return;
    list->Clear();
    clCommandOptions options;
    options.Parse(stored);
    clEffectList effects;
    ParseEffectString(options, effects);
    clStringList names;
    for (int64_t i = 0; i < effects.Count(); ++i) names.Add(effects[i].name);
    // At most half of the narrowest list the effects are shown in.
    list->FitNameColumn(names, XWindow::ScaleUnits(160));
    for (int64_t i = 0; i < effects.Count(); ++i) list->AddRow(Row(effects[i].name, effects[i].settings));
}

clString clEffectChain::Stored() const {
    clEffectList effects;
    if (list != nullptr) {
        for (int32_t i = 0; i < list->RowCount(); ++i) effects.Add(list->Row(i)->name, list->Row(i)->value);
    }
    return BuildStoredEffectText(effects);
}

void clEffectChain::OpenSettings(int32_t row) {
    clValueRow* found = list != nullptr ? list->Row(row) : nullptr;
    if (found == nullptr) return;
    clString settings = Edit(found->name, found->value);
    clString name = found->name;
    // The row is built anew with its settings, in its place.
    list->DeleteRow(row);
    list->AddRow(Row(name, settings), row);
    list->SelectRow(row);
}

void clEffectChain::AddEffect(const clString& name) {
    if (list == nullptr) return;
    clString settings = Edit(name, clString());
    int32_t selected = list->SelectedRow();
    int32_t at = selected >= 0 && selected < list->RowCount() - 1 ? selected : -1;
    clStringList names;
    for (int32_t i = 0; i < list->RowCount(); ++i) names.Add(list->Row(i)->name);
    names.Add(name);
    list->FitNameColumn(names, XWindow::ScaleUnits(160));
    int32_t placed = list->AddRow(Row(name, settings), at);
    list->SelectRow(placed);
}

void clEffectChain::RemoveSelected() {
    if (list == nullptr) return;
    int32_t selected = list->SelectedRow();
    if (selected < 0) return;
    list->DeleteRow(selected);
    if (selected < list->RowCount()) list->SelectRow(selected);
}

bool clEffectChain::SaveFile(const clString& path) const {
    clString text = Stored();
    clFile file;
    file.fileName = path;
    file.Open(clAccessWrite, clCreateAlways, true, true);
    if (file.handle == clInvalidHandle) return false;
    // UTF-16LE, without a byte-order mark, a line end or a terminator.
    std::u16string units(text.text, static_cast<size_t>(text.Length()));
    std::string bytes;
    for (char16_t unit : units) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    return file.Write(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

bool clEffectChain::LoadFile(const clString& path) {
    clFile file;
    file.fileName = path;
    file.Open(clAccessRead, clOpenExisting, false, true);
    clString line;
    if (file.handle == clInvalidHandle) return false;
    file.ReadLine(line, true, false);
    Load(line);
    return true;
}

void clEffectChain::Act(uint32_t id, const clStringList& libraries) {
    if (list == nullptr) return;
    if (id == kIdEffectFirstLibrary && libraries.Count() == 0) {
        PlatformOpenDocument(clString(kEffectsPage));
    } else if (id >= kIdEffectFirstLibrary && id < kIdEffectFirstLibrary + libraries.Count()) {
        AddEffect(libraries[id - kIdEffectFirstLibrary]);
    } else if (id == kIdEffectRemove) {
        RemoveSelected();
    } else if (id == kIdEffectClear) {
        if (clMessageBox(clString(u"Clear All?"), clString(u"Quillotone Track Converter"), 0x24) == clIdYes) {
            list->Clear();
        }
    } else if (id == kIdEffectSave) {
        clString path = askSavePath != nullptr ? askSavePath()
                                               : ChooseSaveFile(owner, clString(u"Quillotone: Save DSP Effect Selections"),
                                                                clString(kFileFilter), clString(u"dspeffect"));
        if (!path.IsEmpty()) SaveFile(path);
    } else if (id == kIdEffectLoad) {
        clString path;
        if (askLoadPath != nullptr) {
            path = askLoadPath();
        } else {
            clStringList filters, chosen;
            filters.Add(clString(kFileFilter));
            if (ChooseFiles(owner, clString(u"Quillotone: Load DSP Effect Selections"), filters, clString(), chosen)) {
                path = chosen[0];
            }
        }
        if (!path.IsEmpty()) LoadFile(path);
    }
}

void clEffectChain::ShowMenu(clWindowHandle button) {
    if (list == nullptr) return;
    clStringList libraries;
    ListEffectLibraries(libraries);
    auto* effects = new clMenu;
    if (libraries.Count() == 0) {
        effects->Add(clString(u"Install DSP Effects Now..."), kIdEffectFirstLibrary);
    } else {
        for (int64_t i = 0; i < libraries.Count(); ++i) {
            effects->Add(libraries[i], kIdEffectFirstLibrary + static_cast<uint32_t>(i));
        }
    }
    clMenu menu;
    menu.AddSubmenu(clString(u"Add DSP Effect"), effects);
    menu.Add(clString(u"Remove Selected"), kIdEffectRemove, false, list->SelectedRow() >= 0);
    menu.Add(clString(u"Clear All"), kIdEffectClear, false, list->RowCount() > 0);
    menu.Add(clString(u"Save"), kIdEffectSave, false, list->RowCount() > 0);
    menu.Add(clString(u"Load"), kIdEffectLoad);
    clRect place = button != nullptr ? WindowScreenRect(button) : clRect{};
    uint32_t chosen = menu.TrackPopup(owner, place.left, place.bottom);
    if (chosen != 0) Act(chosen, libraries);
}
