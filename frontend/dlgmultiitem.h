// dlgMultiItem: one item of "[Multi Encoder]": the encoder that converts
// every source once more, its settings (the page its options describe, or
// its option string as text when it describes none), where the outputs go
// and under what names, and the item's own effects. OK hands the edited
// item back; Cancel leaves it as it was.
#pragma once

#include <cstdint>

#include "engine/multiencoder.h"
#include "foundation/clstring.h"
#include "foundation/stringlist.h"
#include "frontend/effectchain.h"
#include "frontend/settingspage.h"
#include "toolkit/valuelist.h"
#include "toolkit/xwindow.h"

constexpr uint32_t kIdItemEncoder = 1070;
constexpr uint32_t kIdItemOptions = 1071;
constexpr uint32_t kIdItemFolder = 1072;
constexpr uint32_t kIdItemBrowse = 1073;
constexpr uint32_t kIdItemNaming = 1074;
constexpr uint32_t kIdItemAddEffect = 1075;

class dlgMultiItem : public XWindow {
public:
    clMultiEncoderItem item;  // as given; on OK, as edited
    clStringList encoders;    // the encoders an item can use, as listed
    clString pageEncoder;     // whose settings are on show
    clSettingsPage settingsPage;
    clWindowHandle encoderList = nullptr;
    clWindowHandle optionsField = nullptr;  // for a library that describes no options
    clWindowHandle optionsLabel = nullptr;
    clWindowHandle folderField = nullptr;
    clWindowHandle browseButton = nullptr;
    clWindowHandle namingField = nullptr;
    clWindowHandle addButton = nullptr;
    clWindowHandle okButton = nullptr;
    XValueList effectList;
    clEffectChain effects;  // the item's own effects, in effectList
    // For tests: choosing a folder asks this instead of a dialog; an
    // empty answer is a cancel.
    clString (*askFolder)(dlgMultiItem& dialog) = nullptr;

    explicit dlgMultiItem(const clMultiEncoderItem& start);
    ~dlgMultiItem() override;

    // Makes the window without waiting; false if it can't.
    bool Open(clWindowHandle owner, const clString& title);
    // Open, then wait: 1 with `item` edited, or 0.
    int32_t Run(clWindowHandle owner, const clString& title);

    // Shows the settings of the encoder chosen in the list. The item's own
    // options come back with its own encoder; another starts from its
    // defaults.
    void ShowPage();
    // The option string the settings stand for now.
    clString PageOptions();
    // Chooses an encoder of the list as the user does; false if it isn't listed.
    bool ChooseEncoder(const clString& name);

    intptr_t OnCreate() override;
    intptr_t OnDestroy() override;
    intptr_t OnPaint(clCanvas* canvas) override;
    intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) override;
    intptr_t OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                          uint32_t* handledFlag) override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;
};

// The encoders a multi-encoder item can use: every installed encoder
// except the pseudo-encoders in square brackets, in the encoder list's order.
void ListItemEncoders(clStringList& names);
