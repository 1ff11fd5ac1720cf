// dlgNaming: the window in which a user writes a destination, a base
// location and a naming string. Its menus insert the language's items,
// its examples replace the whole string, and a live example shows what the
// string makes of a made-up track as the user types. The window has no
// title bar: it paints its own heading, with its close and help buttons,
// and moves by a drag on it. OK keeps the edited destination only if it
// names each track apart; Cancel, the close button and Escape keep the
// old one.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "naming/editor/namingeditor.h"
#include "toolkit/canvas.h"
#include "toolkit/geometry.h"
#include "toolkit/windowdrag.h"
#include "toolkit/xwindow.h"

constexpr uint32_t kIdNamingText = 1040;
constexpr uint32_t kIdNamingExample = 1041;
constexpr uint32_t kIdNamingBase = 1042;
constexpr uint32_t kIdNamingSet = 1044;
constexpr uint32_t kIdNamingSourceDrive = 1045;
constexpr uint32_t kIdNamingAddTag = 1046;
constexpr uint32_t kIdNamingAddProperty = 1047;
constexpr uint32_t kIdNamingFunctions = 1048;
constexpr uint32_t kIdNamingExamples = 1049;
constexpr uint32_t kIdNamingCompilation = 1050;
constexpr uint32_t kIdNamingMultiDisc = 1051;
constexpr uint32_t kIdNamingHelp = 1052;
constexpr uint32_t kIdNamingClose = 1053;

class dlgNaming : public XWindow {
public:
    clString saved;  // the destination as it came; on OK, as edited
    clWindowHandle baseField = nullptr;
    clWindowHandle namingField = nullptr;
    clWindowHandle exampleField = nullptr;
    clWindowHandle compilationBox = nullptr;
    clWindowHandle multiDiscBox = nullptr;
    clImageHandle mark = nullptr;
    bool active = true;
    bool closeRequested = false;  // set by the heading's close button, acted on by the timer
    clWindowDrag drag;  // by the heading
    // For tests: choosing a base folder asks this instead of a dialog; an
    // empty answer is a cancel.
    clString (*askFolder)(dlgNaming& dialog) = nullptr;

    explicit dlgNaming(const clString& text);
    ~dlgNaming() override;

    // Makes the window without waiting; false if it can't.
    bool Open(clWindowHandle owner);
    // Open, then wait: 1 with `saved` edited, or 0.
    int32_t Run(clWindowHandle owner);

    // What a menu's entry does: inserted at the caret, or for the examples
    // the whole naming string; then the example follows.
    void ChooseMenuEntry(clNamingMenu menu, int32_t entry);
    // The live example, from the naming string and the two check boxes.
    void RefreshExample();

    intptr_t OnCreate() override;
    intptr_t OnDestroy() override;
    intptr_t OnPaint(clCanvas* canvas) override;
    intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) override;
    intptr_t OnActivate(uint32_t state, clWindowHandle other) override;
    intptr_t OnDeactivate(clWindowHandle other) override;
    intptr_t OnMouseDown(int32_t x, int32_t y, uint32_t flags, int32_t button) override;
    intptr_t OnMouseMove(int32_t x, int32_t y, uint32_t flags) override;
    intptr_t OnMouseUp(int32_t x, int32_t y, uint32_t flags, int32_t button) override;
    intptr_t OnTimer(uint64_t id, uint64_t userValue) override;
    intptr_t OnKeyDown(uint32_t key, intptr_t flags) override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;

private:
    void ShowMenu(clNamingMenu menu, clWindowHandle button);
};

// Runs the window over `owner` for the destination `text`; true, with
// `text` changed, when the user pressed OK.
bool EditNaming(clWindowHandle owner, clString& text);
