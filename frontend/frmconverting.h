// frmConverting: the conversion window. It presents a clConversion (the
// logic lives there) and turns the user's clicks into its calls: a 50 ms
// timer ticks it, a faster poll ticks it early when a slot has freed (so a
// core never idles out the rest of the 50 ms), and each tick's texts,
// rows and bars are compared with what is shown and repainted only where
// they changed.
//
// The window has no caption of its own: its title strip is painted, and a
// press on the strip drags the window. Its place is kept as qvt-X and
// qvt-Y at closing and restored at the next opening.
#pragma once

#include <cstdint>
#include <memory>

#include "engine/conversion.h"
#include "foundation/clstring.h"
#include "toolkit/application.h"
#include "toolkit/button.h"
#include "toolkit/drawlist.h"
#include "toolkit/valuelist.h"
#include "toolkit/windowdrag.h"
#include "toolkit/xwindow.h"

class clConversionInput;

// Menu command ids of the Options menu.
constexpr uint32_t kMenuPriorityBase = 100;  // + priority code
constexpr uint32_t kMenuCoresBase = 200;     // + core count
constexpr uint32_t kMenuAfterBase = 300;     // + after-conversion code
constexpr uint32_t kMenuSkipFinish = 400;
constexpr uint32_t kMenuDisplayInfo = 401;
constexpr uint32_t kMenuDisplayErrors = 402;
constexpr uint32_t kMenuViewLogs = 403;

// Control ids.
constexpr uint32_t kIdOptionsButton = 1053;
constexpr uint32_t kIdPauseButton = 1054;
constexpr uint32_t kIdCancelButton = 1055;

// Timers: the display tick, and the poll for an early tick where the
// conversion's work can't be watched.
constexpr uint64_t kTimerTick = 1;
constexpr uint64_t kTimerEarly = 2;
// Posted by the watch on the conversion's work (ToolkitWatch).
constexpr uint32_t kWmWorkReady = 0x8010;

class frmConverting : public XWindow {
public:
    // The per-core display: a row "Encoder N" per visible slot, with the
    // slot's text and a bar.
    class _clCoreConversionDisplay : public XValueList {
    public:
        // Slot index of each row.
        clPointerArray rowSlots;
        uint32_t barOrders[64] = {};
        int32_t barWidth = 0;

        // Adds the slot's row if it has none; answers the row.
        int32_t RowOfSlot(int32_t slot);
        // Sets the bar and text of a slot's row; true if anything changed.
        bool UpdateSlot(int32_t slot, int32_t percent, const clString& text);
    };

    frmConverting(clConversionInput& conversionInput, const clConversionServices& conversionServices);
    ~frmConverting() override;

    // Makes the window and opens the conversion; false when no window
    // could be made.
    bool Open();
    // Open, then the messages until the window closes.
    int32_t Run();

    clConversion& Conversion() { return *conversion; }
    // One tick as the timer gives it (`display` false: an early one).
    void TickNow(bool display);
    // A choice of the Options menu.
    void ChooseMenu(uint32_t id);
    // The Options menu as it stands now.
    void BuildMenu(clMenu& menu) const;
    bool IsClosed() const { return closedNow; }

    XButton optionsButton, pauseButton, cancelButton;
    _clCoreConversionDisplay coreDisplay;
    int32_t visibleRows = 0;   // rows of the display in view
    clString shownTitle;       // the window's text as set

    intptr_t OnClose() override;
    intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) override;
    intptr_t OnCreate() override;
    intptr_t OnDestroy() override;
    intptr_t OnEraseBackground(clCanvas* canvas) override;
    intptr_t OnKeyDown(uint32_t key, intptr_t flags) override;
    intptr_t OnMouseDown(int32_t x, int32_t y, uint32_t flags, int32_t button) override;
    intptr_t OnMouseUp(int32_t x, int32_t y, uint32_t flags, int32_t button) override;
    intptr_t OnMouseMove(int32_t x, int32_t y, uint32_t flags) override;
    intptr_t OnPaint(clCanvas* canvas) override;
    intptr_t OnTimer(uint64_t id, uint64_t userValue) override;
    intptr_t OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                          uint32_t* handledFlag) override;
    intptr_t OnIdCancel() override;

private:
    clConversionInput& input;
    clConversionServices services;
    std::unique_ptr<clConversion> conversion;
    clDrawList face;  // everything painted on the window itself
    uint32_t titleOrder = 0, headlineOrder = 0, statusOrder = 0, barOrder = 0, elapsedOrder = 0,
             remainingOrder = 0, speedOrder = 0;
    int32_t barFullWidth = 0;
    int32_t shownProgress = -1;
    int32_t rowLimit = 16;
    clWindowDrag drag;  // by the heading
    bool closedNow = false;
    bool opened = false;
    bool polling = false;  // kTimerEarly runs
    int32_t tickDepth = 0;  // TickNow calls in progress
    int32_t taskbarState = kTaskbarNormal;
    clImageHandle encoderIcon = nullptr;  // owned
    clPointerArray effectIcons;           // of clImageHandle, owned

    void LoadIcons();
    void BuildFace();
    void Layout();
    void Refresh();
    // Has the message loop watch what the conversion would wait on, so
    // that a freed core gets its next file without waiting for a timer;
    // polls every 5 ms where that can't be watched.
    void WatchWork();
    void EndWatch();
    bool SetFaceText(uint32_t order, const clString& text);
    void RestorePlacement();
    void StorePlacement();
    void Close();
    void ShowLogWindow(const clLogEntries& errors, const clLogEntries& infos, bool final);
    int32_t VisibleSlots() const;
};

// The text of the error and information logs as one message.
clString LogsText(const clLogEntries& errors, const clLogEntries& infos);
