// frmConvertToOpt: the window in which the user decides how a batch is
// converted: the encoder (or profile) with the page its library puts in
// the window, the output location, and the effects. Its answer is one
// flag, whether to convert; everything else reaches the conversion
// through the settings store, written before the window ends. While it is
// open it also takes files: dropped on it, or handed over by a second
// TrackConverter started with a list.
#pragma once

#include <cstdint>

#include "engine/conversioninput.h"
#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/syncobjects.h"
#include "frontend/multiencoderpage.h"
#include "frontend/settingspage.h"
#include "plugins/encoderentries.h"
#include "plugins/xdll.h"
#include "toolkit/droplist.h"
#include "toolkit/tooltip.h"
#include "frontend/effectchain.h"
#include "toolkit/valuelist.h"
#include "toolkit/xwindow.h"

constexpr uint32_t kIdEncoderList = 1001;
constexpr uint32_t kIdFileCount = 1002;
constexpr uint32_t kIdOutputList = 1006;
constexpr uint32_t kIdAddEffect = 1040;
constexpr uint32_t kIdCloseCorner = 1050;
constexpr uint32_t kIdHelpCorner = 1051;

// The commands at the top of the output list, in their order.
enum clOutputCommand : int32_t {
    kOutputPreservePath = 0,
    kOutputSingleFolder = 1,
    kOutputSourceFolders = 2,
    kOutputEditNaming = 3,
    kOutputCommands = 4,
};

// The output text of "Existing Source Folder(s)".
constexpr const char16_t* kSourceFoldersOutput = u"[origdrive]{_._}[origpath]\\[origfilename]";

class frmConvertToOpt : public XWindow {
public:
    class _CmbEncoders : public XDropList {
    public:
        frmConvertToOpt* form = nullptr;
        void OnSelectionChanged() override;
    };
    class _CmbOutToFolder : public XDropList {
    public:
        frmConvertToOpt* form = nullptr;
        clString previousOutput;  // the output text selected last
        int32_t fixedRows = 0;    // the commands at the top
        void OnSelectionChanged() override;
    };

    clQvEncoder encoder;
    clString currentEntry;  // the entry whose page is on show; empty: none
    void* page = nullptr;   // the library's own page, if it made one
    clSettingsPage settingsPage;  // the page built from the library's options
    clMultiEncoderPage multiPage;  // the page of "[Multi Encoder]"
    XEvent handOverEvent;
    bool disableSameFolder = false;
    bool disableConvertToFolder = false;
    _CmbEncoders cmbEncoders;
    _CmbOutToFolder cmbOutToFolder;
    XToolTip outputTip;
    XToolTip noticeTip;
    XValueList effectList;
    clEffectChain effects;  // what effectList holds, edited by the "Add" menu
    clString effectText;    // the stored effect string of the entry as it was loaded
    clEncoderRows rows;   // the encoder list's records, row for row
    clPointerArray icons;  // clImageHandle, owned: the lists' icons
    clConversionInput* input;
    clWindowHandle fileButton = nullptr;
    clWindowHandle addButton = nullptr;
    clWindowHandle convertButton = nullptr;
    clWindowHandle cancelButton = nullptr;
    clWindowHandle closeCorner = nullptr;
    clWindowHandle helpCorner = nullptr;
    bool closeRequested = false;
    int32_t result = 0;

    // For tests and scripted runs: choosing a folder or a naming asks
    // these instead of a dialog. Empty answers are a cancel.
    clString (*askFolder)(frmConvertToOpt& form) = nullptr;
    clString (*askNaming)(frmConvertToOpt& form, const clString& outputText) = nullptr;

    explicit frmConvertToOpt(clConversionInput& conversionInput);
    ~frmConvertToOpt() override;

    // Makes the window without waiting; false if it can't.
    bool Open(clWindowHandle owner);
    // Open, then wait: 1 when the user pressed "Convert >>".
    int32_t Run(clWindowHandle owner);

    void FillEncoderList();
    void ShowEncoderPage(bool first);
    // The option string in force; with `save`, it and the entry's other
    // settings are written. The page goes.
    clString RemoveEncoderPage(bool save);
    // The option string of the page without disturbing it.
    clString PageOptions();
    void OnEntryChanged(bool first);
    void SaveEntrySettings(const clString& entry);
    void SaveLastChoices();
    void CreateProfile();
    void DeleteProfile();
    void AddOutputRow(const clString& text, bool mustExist, bool select, bool asFolder);
    void RefreshOutputPreview();
    void ChooseOutputCommand(int32_t row);
    void UpdateFileCount();
    // Dropped paths: folders are searched, files kept when a decoder
    // takes their extension; anything else is left out without a word.
    void AddDroppedPaths(const clStringList& paths);
    void ShowNotice(const clString& text, clWindowHandle control, uint32_t milliseconds);
    // The entry on show, for the list and rename window's estimates.
    void OpenListAndRename();
    void ShowEffects();

    intptr_t OnCreate() override;
    intptr_t OnDestroy() override;
    intptr_t OnPaint(clCanvas* canvas) override;
    intptr_t OnTimer(uint64_t id, uint64_t userValue) override;
    intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) override;
    intptr_t OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                          uint32_t* handledFlag) override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;

    int32_t SelectedEncoderRow() const;
    // The output text of the selected row of the output list.
    clString SelectedOutput() const;

private:
    clImageHandle RowIcon(const clEncoderRow& row);
    void SelectEntryRow(const clString& entry);
};
