#include "frontend/frmconverting.h"

#include <algorithm>

#include "engine/batchsettings.h"
#include "engine/conversioninput.h"
#include "engine/mainflow.h"
#include "engine/slotcount.h"
#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "foundation/platform/power.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "frontend/frmerrorsinfo.h"
#include "toolkit/controls.h"

namespace {

// Geometry in units of 1/96 inch.
constexpr int32_t kWidth = 460;
constexpr int32_t kStripHeight = 26;
constexpr int32_t kDragBand = 22;  // 14 dialog units from the top
constexpr int32_t kMargin = 12;
constexpr int32_t kRowHeight = 38;
constexpr int32_t kButtonWidth = 84;
constexpr int32_t kButtonHeight = 26;
constexpr int32_t kBarHeight = 18;

constexpr uint32_t kBackground = 0xF7F7F7;
constexpr uint32_t kFrame = 0xA0A0A0;
constexpr uint32_t kInk = 0x202020;
constexpr uint32_t kDimInk = 0x555555;
constexpr uint32_t kBarTrack = 0xE6E6E6;
constexpr uint32_t kBarFill = clRgb(6, 176, 37);
constexpr uint32_t kBarFillFailed = clRgb(218, 38, 38);

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

}  // namespace

clString LogsText(const clLogEntries& errors, const clLogEntries& infos) {
    clString text;
    auto add = [&text](const clLogEntries& entries, const char16_t* heading) {
        if (entries.Count() == 0) return;
        if (!text.IsEmpty()) text.Append(u"\r\n");
        text.Append(heading);
        for (int64_t i = 0; i < entries.Count(); ++i) {
            const clLogEntry& entry = entries[i];
            text.Append(u"\r\n");
            text.Append(entry.sourcePath);
            for (int64_t j = 0; j < entry.lines.Count(); ++j) {
                text.Append(u"\r\n    ");
                text.Append(entry.lines[j]);
            }
        }
    };
    add(errors, u"Errors:");
    add(infos, u"Information:");
    return text;
}

int32_t frmConverting::_clCoreConversionDisplay::RowOfSlot(int32_t slot) {
    for (int64_t i = 0; i < rowSlots.count; ++i) {
        if (reinterpret_cast<intptr_t>(rowSlots[i]) == slot) return static_cast<int32_t>(i);
    }
    clValueRowDesc row;
    row.kind = kRowPlain;
    row.name = clString::Formatted(u"Encoder %d", slot + 1);
    row.readOnly = true;
    int32_t index = AddRow(row);
    rowSlots.Add(reinterpret_cast<void*>(static_cast<intptr_t>(slot)));
    clValueRow* added = Row(index);
    // The bar on the right; the text ends before it.
    const uint32_t middle = kPackFromMiddle | kPackCentredHere;
    int32_t barHeight = U(10);
    added->drawList.AddFramedRect(clPack(-(barWidth + U(10)), kPackFromFarEdge), middle, clPack(barWidth),
                                  clPack(barHeight), kBarTrack, 0xBCBCBC, 2);
    barOrders[slot & 63] = added->drawList.AddFramedRect(clPack(-(barWidth + U(10)), kPackFromFarEdge), middle,
                                                         0x0, clPack(barHeight), kBarFill, kBarFill, 2) -
                           1;
    if (clDrawElement* bar = added->drawList.Element(barOrders[slot & 63])) {
        bar->width = clPack(0);
        bar->visible = false;
    }
    if (clDrawElement* value = added->drawList.Element(added->valueOrder)) {
        value->width = clPack(-(clPackedPixels(added->valueLeft) + barWidth + U(20)), kPackFromFarEdge);
        value->colors[0] = kDimInk;
    }
    return index;
}

bool frmConverting::_clCoreConversionDisplay::UpdateSlot(int32_t slot, int32_t percent, const clString& text) {
    int32_t index = RowOfSlot(slot);
    clValueRow* row = Row(index);
    if (row == nullptr) return false;
    bool changed = false;
    if (!row->value.Equals(text)) {
        row->value = text;
        changed = true;
    }
    if (clDrawElement* bar = row->drawList.Element(barOrders[slot & 63])) {
        int32_t width = barWidth * std::clamp(percent, 0, 100) / 100;
        if (clPackedPixels(bar->width) != width || bar->visible != (width > 0)) {
            bar->width = clPack(width);
            bar->visible = width > 0;
            changed = true;
        }
    }
    if (changed) RedrawRow(index);
    return changed;
}

frmConverting::frmConverting(clConversionInput& conversionInput, const clConversionServices& conversionServices)
    : input(conversionInput), services(conversionServices) {
    services.closing = [this] { StorePlacement(); };
}

frmConverting::~frmConverting() {
    // Nothing may watch the workers once the conversion is gone.
    EndWatch();
    if (encoderIcon != nullptr) DestroyImage(encoderIcon);
    for (int64_t i = 0; i < effectIcons.count; ++i) DestroyImage(static_cast<clImageHandle>(effectIcons[i]));
    coreDisplay.Destroy();
    optionsButton.Destroy();
    pauseButton.Destroy();
    cancelButton.Destroy();
    DestroyWindowObject();
}

int32_t frmConverting::VisibleSlots() const {
    int32_t visible = 0;
    for (int64_t i = 0; i < conversion->slots.Count(); ++i) {
        if (!conversion->slots[i].hidden) ++visible;
    }
    return visible;
}

bool frmConverting::Open() {
    conversion = std::make_unique<clConversion>(input, services);
    clRect area = ToolkitWorkArea();
    int32_t fixed = U(kStripHeight + 60 + kBarHeight + 50 + kButtonHeight + 2 * kMargin);
    rowLimit = std::max(4, std::min(16, (area.Height() - fixed) / std::max(1, U(kRowHeight))));
    clRect place = clRect::Sized(area.left + U(40), area.top + U(40), U(kWidth), U(240));
    if (!Create(clString(clProgramCaption), place, kWsPopup, kWsExAppWindow, nullptr)) return false;
    conversion->Open();
    opened = true;
    LoadIcons();
    shownTitle = conversion->windowTitle;
    WindowSetText(windowHandle, shownTitle);
    Layout();
    RestorePlacement();
    SetTimerEx(50, 0, kTimerTick);
    WatchWork();
    if (input.centerOnWindow != 0) {
        clRect over;
        if (ToolkitForeignWindowRect(input.centerOnWindow, over) && (over.right < -5 || over.right > 5) &&
            over.Width() >= 6) {
            clRect now = WindowScreenRect(windowHandle);
            SetPlacement(over.left + (over.Width() - now.Width()) / 2, over.top + (over.Height() - now.Height()) / 2,
                         kKeepPlacement, kKeepPlacement);
        } else {
            CenterOnScreen();
        }
    }
    Refresh();
    return true;
}

int32_t frmConverting::Run() {
    if (!Open()) return -1;
    if (closedNow) return 0;
    return RunModal();
}

intptr_t frmConverting::OnCreate() {
    clButtonOptions options;
    options.text = u"Options";
    options.id = kIdOptionsButton;
    options.background = kBackground;
    optionsButton.Create(windowHandle, options, clRect::Sized(0, 0, U(kButtonWidth), U(kButtonHeight)));
    optionsButton.onClick = [this](bool) {
        clMenu menu;
        BuildMenu(menu);
        clRect button = WindowScreenRect(optionsButton.controlHandle);
        uint32_t chosen = menu.TrackPopup(windowHandle, button.left, button.bottom);
        if (chosen != 0) ChooseMenu(chosen);
    };
    // Pause and Cancel show when they are disabled (the finished run).
    const uint32_t showsDisabled = kButtonStyleHot | kButtonStyleFocus | 8;
    options.text = u"Pause";
    options.id = kIdPauseButton;
    options.style = showsDisabled | kButtonStyleCheck;
    pauseButton.Create(windowHandle, options, clRect::Sized(0, 0, U(kButtonWidth), U(kButtonHeight)));
    pauseButton.onClick = [this](bool latched) {
        conversion->SetPause(latched);
        pauseButton.SetLatched(conversion->pausePressed);
        taskbarState = conversion->pausePressed ? kTaskbarPaused : kTaskbarNormal;
        TaskbarSetState(windowHandle, taskbarState);
        Refresh();
        // A worker paused no longer counts; one that ended while paused
        // is due at once.
        WatchWork();
    };
    options.text = u"Cancel";
    options.id = kIdCancelButton;
    options.style = showsDisabled;
    cancelButton.Create(windowHandle, options, clRect::Sized(0, 0, U(kButtonWidth), U(kButtonHeight)));
    cancelButton.onClick = [this](bool) {
        conversion->RequestCancel();
        Refresh();
    };
    coreDisplay.defaultNameLeft = 10;
    coreDisplay.defaultValueLeft = 86;
    coreDisplay.rowHeight = kRowHeight;
    coreDisplay.barWidth = U(120);
    coreDisplay.Create(windowHandle, U(kMargin), U(kStripHeight + 60), U(kWidth - 2 * kMargin), U(kRowHeight), false,
                       false);
    WindowShow(coreDisplay.listHandle, false);
    BuildFace();
    return 0;
}

// The encoder's icon and the effects', from the .ico beside each library,
// where there is one.
void frmConverting::LoadIcons() {
    clString folder = GetProgramFolder();
    clString encoderFile = JoinPath(JoinPath(folder, clString(u"encoder")), conversion->settings.encoderName);
    encoderFile.Append(u".ico");
    encoderIcon = LoadImageFile(encoderFile, U(32), U(32));
    clStringList names;
    EffectNames(conversion->settings.dspEffects, names);
    for (int64_t i = 0; i < names.Count(); ++i) {
        clString file = JoinPath(JoinPath(folder, clString(u"DSPs")), names[i]);
        file.Append(u".ico");
        if (clImageHandle icon = LoadImageFile(file, 16, 16)) effectIcons.Add(icon);
    }
    BuildFace();
}

void frmConverting::BuildFace() {
    face.Clear();
    const uint32_t full = kPackFromFarEdge;
    clString tahoma(u"Tahoma");
    face.AddFill(0, 0, full, full, kBackground);
    face.AddGradient(0, 0, full, clPack(U(kStripHeight)), 0xFFFFFF, 16117469, 16117469, 0xF0E0C8);
    face.AddLine(0, clPack(U(kStripHeight)), 0, 0, 0, 0, kFrame);
    // The program's mark: a blue tile with a white note.
    face.AddFramedRect(clPack(U(6)), clPack(U(5)), clPack(U(16)), clPack(U(16)), clRgb(0, 90, 170), clRgb(0, 70, 140),
                       3);
    face.AddText(clPack(U(6)), clPack(U(5)), clPack(U(16)), clPack(U(16)), clString(u"\u266A"), tahoma, U(13),
                 0xFFFFFF, kTextBold, kAlignCenter | kAlignVCenter);
    titleOrder = face.AddText(clPack(U(28)), 0, clPack(-U(36), full), clPack(U(kStripHeight)), clString(), tahoma,
                              U(12), kInk, kTextBold | kTextEllipsis, kAlignVCenter) -
                 1;
    // On the headline's level at the right: the effects' icons behind
    // "DSP: " or "DSPs: ", then the encoder's icon.
    int32_t right = U(kMargin);
    const uint32_t level = clPack(U(kStripHeight + 6));
    if (encoderIcon != nullptr) {
        face.AddIcon(clPack(-right, full | kPackEndsHere), level, encoderIcon, U(32), U(32));
        right += U(32) + U(8);
    }
    if (effectIcons.count > 0) {
        for (int64_t i = effectIcons.count - 1; i >= 0; --i) {
            face.AddIcon(clPack(-right, full | kPackEndsHere), clPack(U(kStripHeight + 10)),
                         static_cast<clImageHandle>(effectIcons[i]), 16, 16);
            right += 16 + 2;
        }
        clString label(effectIcons.count == 1 ? u"DSP: " : u"DSPs: ");
        face.AddText(clPack(-right, full | kPackEndsHere), clPack(U(kStripHeight + 10)), 0, clPack(U(18)), label,
                     tahoma, U(12), kDimInk);
        right += U(40);
    }
    headlineOrder = face.AddText(clPack(U(kMargin)), clPack(U(kStripHeight + 10)), clPack(-(U(kMargin) + right), full),
                                 clPack(U(18)), clString(), tahoma, U(13), kInk, kTextBold | kTextEllipsis) -
                    1;
    statusOrder = face.AddText(clPack(U(kMargin)), clPack(U(kStripHeight + 34)), clPack(-U(2 * kMargin), full),
                               clPack(U(16)), clString(), tahoma, U(12), kDimInk, kTextEllipsis) -
                  1;
    // The frame of the caption-less window, painted last.
    face.AddFrame(0, 0, full, full, kFrame);
}

// Everything below the status line moves with the number of rows.
void frmConverting::Layout() {
    if (windowHandle == nullptr) return;
    int32_t visible = VisibleSlots();
    int32_t rows = visible > 1 || (visible == 1 && conversion->activeSlots > 1) ? visible : 0;
    visibleRows = std::min(rows, rowLimit);
    int32_t width = U(kWidth);
    int32_t top = U(kStripHeight + 60);
    if (visibleRows > 0) {
        WindowMove(coreDisplay.listHandle,
                   clRect::Sized(U(kMargin), top, width - U(2 * kMargin), visibleRows * U(kRowHeight) + 4));
        WindowShow(coreDisplay.listHandle, true);
        top += visibleRows * U(kRowHeight) + 4 + U(10);
    } else {
        WindowShow(coreDisplay.listHandle, false);
    }
    barFullWidth = width - U(2 * kMargin);
    // The face's lower part is rebuilt at each layout.
    BuildFace();
    clString tahoma(u"Tahoma");
    face.AddFramedRect(clPack(U(kMargin)), clPack(top), clPack(barFullWidth), clPack(U(kBarHeight)), kBarTrack,
                       0xBCBCBC, 3);
    barOrder = face.AddFramedRect(clPack(U(kMargin)), clPack(top), clPack(0), clPack(U(kBarHeight)), kBarFill,
                                  kBarFill, 3) -
               1;
    face.Element(barOrder)->visible = false;
    top += U(kBarHeight) + U(8);
    int32_t third = (width - U(2 * kMargin)) / 3;
    elapsedOrder = face.AddText(clPack(U(kMargin)), clPack(top), clPack(third), clPack(U(16)), clString(), tahoma,
                                U(12), kDimInk, kTextEllipsis) -
                   1;
    remainingOrder = face.AddText(clPack(U(kMargin) + third), clPack(top), clPack(third), clPack(U(16)), clString(),
                                  tahoma, U(12), kDimInk, kTextEllipsis, kAlignCenter) -
                     1;
    speedOrder = face.AddText(clPack(U(kMargin) + 2 * third), clPack(top), clPack(third), clPack(U(16)), clString(),
                              tahoma, U(12), kDimInk, kTextEllipsis, kAlignRight) -
                 1;
    // The frame again, on top of the new elements.
    face.AddFrame(0, 0, kPackFromFarEdge, kPackFromFarEdge, kFrame);
    top += U(16) + U(14);
    int32_t right = width - U(kMargin);
    WindowMove(cancelButton.controlHandle, clRect::Sized(right - U(kButtonWidth), top, U(kButtonWidth),
                                                         U(kButtonHeight)));
    WindowMove(pauseButton.controlHandle, clRect::Sized(right - 2 * U(kButtonWidth) - U(8), top, U(kButtonWidth),
                                                        U(kButtonHeight)));
    WindowMove(optionsButton.controlHandle, clRect::Sized(U(kMargin), top, U(kButtonWidth), U(kButtonHeight)));
    int32_t height = top + U(kButtonHeight) + U(kMargin);
    SetPlacement(kKeepPlacement, kKeepPlacement, width, height);
    shownProgress = -1;
    WindowInvalidate(windowHandle, nullptr);
}

bool frmConverting::SetFaceText(uint32_t order, const clString& text) {
    clDrawElement* element = face.Element(order);
    if (element == nullptr || element->text.Equals(text)) return false;
    element->text = text;
    return true;
}

// Shows what the conversion says now, touching only what changed.
void frmConverting::Refresh() {
    if (windowHandle == nullptr || !conversion) return;
    clConversion& now = *conversion;
    if (VisibleSlots() != visibleRows && (VisibleSlots() > 1 || now.activeSlots > 1)) Layout();
    bool changed = false;
    bool running = now.state != kStateFinished && !now.progressTitle.IsEmpty();
    changed |= SetFaceText(titleOrder, running ? now.progressTitle : now.windowTitle);
    changed |= SetFaceText(headlineOrder, now.headline);
    changed |= SetFaceText(statusOrder, now.statusText);
    changed |= SetFaceText(elapsedOrder, now.elapsedText);
    changed |= SetFaceText(remainingOrder, now.remainingText);
    changed |= SetFaceText(speedOrder, now.speedText);
    if (now.progress != shownProgress) {
        shownProgress = now.progress;
        if (clDrawElement* bar = face.Element(barOrder)) {
            int32_t width = static_cast<int32_t>(static_cast<int64_t>(barFullWidth) * now.progress / 10000);
            bar->width = clPack(width);
            bar->visible = width > 0;
            bar->colors[0] = bar->colors[1] = now.errors.Count() > 0 ? kBarFillFailed : kBarFill;
        }
        changed = true;
        TaskbarSetProgress(windowHandle, static_cast<uint64_t>(now.progress), 10000);
    }
    if (now.errors.Count() > 0 && taskbarState != kTaskbarError) {
        taskbarState = kTaskbarError;
        TaskbarSetState(windowHandle, taskbarState);
    }
    if (!now.windowTitle.Equals(shownTitle)) {
        shownTitle = now.windowTitle;
        WindowSetText(windowHandle, shownTitle);
    }
    if (changed) WindowInvalidate(windowHandle, nullptr);
    if (visibleRows > 0) {
        for (int64_t i = 0; i < now.slots.Count(); ++i) {
            clWorkerSlot& slot = now.slots[i];
            if (slot.hidden) continue;
            coreDisplay.UpdateSlot(static_cast<int32_t>(i), slot.displayPercent, slot.displayText);
        }
    }
    if (!cancelButton.text.Equals(now.cancelButtonText) && !now.cancelButtonText.IsEmpty()) {
        cancelButton.SetText(now.cancelButtonText);
    }
    if (pauseButton.IsLatched() != now.pausePressed) pauseButton.SetLatched(now.pausePressed);
    if (WindowIsEnabled(pauseButton.controlHandle) != now.pauseEnabled) {
        WindowEnable(pauseButton.controlHandle, now.pauseEnabled);
        pauseButton.Redraw();
    }
    if (now.closed) Close();
}

void frmConverting::TickNow(bool display) {
    if (!conversion || closedNow) return;
    // The tick closes the handles of the workers it harvests, and a
    // question it asks runs a loop of its own: nothing is watched meanwhile.
    EndWatch();
    ++tickDepth;
    conversion->Tick(display);
    Refresh();
    --tickDepth;
    WatchWork();
}

void frmConverting::WatchWork() {
    // A tick asking a question comes back here when it is answered.
    if (!conversion || closedNow || tickDepth > 0) return;
    // Work that is due already (the examination handing over to the
    // slots) has nothing left to be watched for.
    if (conversion->TickDue()) {
        EndWatch();
        WindowPost(windowHandle, kWmWorkReady, 0, 0);
        return;
    }
    intptr_t waitables[kSlotCount + 1];
    int32_t count = conversion->WorkWaitables(waitables);
    if (count >= 0) {
        ToolkitWatch(windowHandle, waitables, count, kWmWorkReady);
        if (polling) KillTimerEx(kTimerEarly);
        polling = false;
    } else {
        EndWatch();
        if (!polling) SetTimerEx(5, 0, kTimerEarly);
        polling = true;
    }
}

void frmConverting::EndWatch() { ToolkitWatch(windowHandle, nullptr, 0, 0); }

intptr_t frmConverting::OnTimer(uint64_t id, uint64_t) {
    if (id == kTimerTick) {
        TickNow(true);
    } else if (id == kTimerEarly && conversion && !closedNow && conversion->TickDue()) {
        TickNow(false);
    }
    return 0;
}

void frmConverting::Close() {
    if (closedNow) return;
    closedNow = true;
    EndWatch();
    KillTimerEx(kTimerTick);
    KillTimerEx(kTimerEarly);
    EndModal(1);
    WindowShow(windowHandle, false);
}

void frmConverting::RestorePlacement() {
    int32_t x = static_cast<int32_t>(GetSettingNumber(kWindowXSetting.name));
    int32_t y = static_cast<int32_t>(GetSettingNumber(kWindowYSetting.name));
    clRect area = ToolkitWorkArea();
    clRect now = WindowScreenRect(windowHandle);
    bool within = x > -area.Width() && x < area.right && y > -area.Height() && y < area.bottom;
    if (x != 0 && y != 0 && within && ToolkitMonitorAt(x + now.Width() / 2, y + now.Height() / 2)) {
        SetPlacement(x, y, kKeepPlacement, kKeepPlacement);
    } else {
        CenterOnScreen();
    }
}

void frmConverting::StorePlacement() {
    if (windowHandle == nullptr || WindowIsMinimized(windowHandle)) return;
    clRect now = WindowScreenRect(windowHandle);
    SetSettingNumber(static_cast<uint32_t>(now.left), kWindowXSetting.name);
    SetSettingNumber(static_cast<uint32_t>(now.top), kWindowYSetting.name);
}

void frmConverting::BuildMenu(clMenu& menu) const {
    auto* encoding = new clMenu;
    const struct {
        const char16_t* text;
        int32_t code;
    } priorities[] = {{u"Above Normal", 1}, {u"Normal", 0}, {u"Below Normal", 2}, {u"Idle", 3}};
    for (const auto& priority : priorities) {
        encoding->Add(priority.text, kMenuPriorityBase + priority.code, conversion->priorityCode == priority.code);
    }
    encoding->AddSeparator();
    for (int32_t n = 1; n <= conversion->processorCount; ++n) {
        encoding->Add(clString::Formatted(u"Using %d %s", n, n == 1 ? u"Core" : u"Cores"), kMenuCoresBase + n,
                      conversion->targetSlots == n);
    }
    menu.AddSubmenu(u"Encoding", encoding);
    auto* after = new clMenu;
    const char16_t* actions[] = {u"(do nothing)", u"Turn Off Computer", u"Hibernate",
                                 u"Stand By",     u"Log Off User",      u"Restart Computer"};
    for (int32_t code = 0; code < 6; ++code) {
        after->Add(actions[code], kMenuAfterBase + code, conversion->afterAction == code);
    }
    menu.AddSubmenu(u"After Conversion", after);
    menu.AddSeparator();
    menu.Add(u"Skip Finished Message", kMenuSkipFinish, conversion->skipFinish != 0);
    menu.Add(u"Display Information Log", kMenuDisplayInfo, GetSettingNumber(kDisplayInfoSetting.name) != 0);
    menu.Add(u"Display Error Log", kMenuDisplayErrors, GetSettingNumber(kNoDisplayErrorSetting.name) == 0);
    menu.AddSeparator();
    menu.Add(u"View Current Error & Information Logs", kMenuViewLogs, false,
             conversion->errors.Count() > 0 || conversion->infos.Count() > 0);
}

void frmConverting::ChooseMenu(uint32_t id) {
    clConversion& now = *conversion;
    if (id >= kMenuPriorityBase && id <= kMenuPriorityBase + 3) {
        now.SetPriority(static_cast<int32_t>(id - kMenuPriorityBase));
    } else if (id > kMenuCoresBase && id <= kMenuCoresBase + 64) {
        now.SetTargetSlots(static_cast<int32_t>(id - kMenuCoresBase));
    } else if (id >= kMenuAfterBase && id <= kMenuAfterBase + 5) {
        now.afterAction = static_cast<int32_t>(id - kMenuAfterBase);
    } else if (id == kMenuSkipFinish) {
        now.SetSkipFinish(now.skipFinish == 0);
    } else if (id == kMenuDisplayInfo) {
        SetSettingNumber(GetSettingNumber(kDisplayInfoSetting.name) != 0 ? 0 : 1, kDisplayInfoSetting.name);
    } else if (id == kMenuDisplayErrors) {
        SetSettingNumber(GetSettingNumber(kNoDisplayErrorSetting.name) != 0 ? 0 : 1, kNoDisplayErrorSetting.name);
    } else if (id == kMenuViewLogs) {
        ShowLogWindow(now.errors, now.infos, false);
    }
    Refresh();
}

// The logs as they stand, during the run. Ticks go on in the window's
// loop, on this thread, so a result is never added while the tree fills;
// one added later shows when the page is filled again. Re-converting
// waits for the end of the batch.
void frmConverting::ShowLogWindow(const clLogEntries& errors, const clLogEntries& infos, bool final) {
    frmErrorsInfo window(&errors, &infos, final);
    window.Run(windowHandle);
}

intptr_t frmConverting::OnClose() {
    if (conversion) {
        conversion->RequestCancel();
        Refresh();
    }
    return 0;
}

intptr_t frmConverting::OnIdCancel() {
    // Esc: "Finish" once finished, else the question of the Cancel button.
    if (conversion) {
        conversion->RequestCancel();
        Refresh();
    }
    return 0;
}

intptr_t frmConverting::OnCommand(uint32_t id, clWindowHandle, uint32_t) {
    if (id == 2) return 0;  // OnIdCancel has done it
    if (id >= kMenuPriorityBase && id <= kMenuViewLogs) ChooseMenu(id);
    return 0;
}

intptr_t frmConverting::OnDestroy() {
    PlatformKeepAwake(false);
    handled = 0;
    return 0;
}

intptr_t frmConverting::OnEraseBackground(clCanvas*) { return 1; }

intptr_t frmConverting::OnKeyDown(uint32_t key, intptr_t) {
    if (key == kVkEscape) {
        WindowSend(windowHandle, kWmCommand, clMakeWParam(2, 0), 0);
        return 0;
    }
    handled = 0;
    return 0;
}

intptr_t frmConverting::OnMouseDown(int32_t x, int32_t y, uint32_t, int32_t button) {
    clRect client = WindowClientRect(windowHandle);
    if (!drag.Down(*this, x, y, button, clRect::Sized(0, 0, client.Width(), U(kDragBand)))) handled = 0;
    return 0;
}

intptr_t frmConverting::OnMouseMove(int32_t x, int32_t y, uint32_t) {
    if (!drag.Move(*this, x, y)) handled = 0;
    return 0;
}

intptr_t frmConverting::OnMouseUp(int32_t, int32_t, uint32_t, int32_t) {
    if (!drag.Up()) handled = 0;
    return 0;
}

intptr_t frmConverting::OnPaint(clCanvas* canvas) {
    if (canvas == nullptr) return 0;
    clRect client = WindowClientRect(windowHandle);
    face.SetCanvas(client.Width(), client.Height());
    face.Paint(*canvas, 0, 0);
    return 0;
}

intptr_t frmConverting::OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                     uint32_t* handledFlag) {
    if (message == kWmWorkReady && window == windowHandle) {
        *handledFlag = 1;
        if (!conversion || closedNow) return 0;
        conversion->TakeWake();
        if (conversion->TickDue()) {
            TickNow(false);
        } else {
            WatchWork();
        }
        return 0;
    }
    intptr_t result = coreDisplay.OnRawMessage(window, message, wParam, lParam, handledFlag);
    if (*handledFlag != 0) return result;
    *handledFlag = 0;
    return 0;
}
