#include "frontend/frmerrorsinfo.h"

#include "engine/logreport.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/views.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kMargin = 8;
constexpr int32_t kButtonHeight = 26;
constexpr int32_t kCorner = 16;      // the corner that resizes the window
constexpr int32_t kTextLimit = 999;  // item texts are read in pieces of this size
constexpr uint32_t kWhite = 0xFFFFFF;

clString Clipped(const clString& text) {
    return text.Length() > kTextLimit ? text.Mid(1, kTextLimit) : text;
}

// The tree's three pictures, drawn: a red sign, a blue sign, a short line.
clImageHandle DrawIcon(int32_t kind, int32_t size) {
    clImageHandle image = CreateImage(size, size);
    clCanvas* canvas = CanvasOnImage(image);
    if (canvas == nullptr) return image;
    canvas->FillRect(clRect{0, 0, size, size}, kWhite);
    int32_t middle = size / 2;
    if (kind == kImageLine) {
        canvas->Line(size / 4, middle, size - size / 4, middle, clRgb(0x90, 0x90, 0x90), 1);
    } else {
        uint32_t fill = kind == kImageError ? clRgb(0xD0, 0x30, 0x30) : clRgb(0x30, 0x70, 0xD0);
        canvas->FramedRect(clRect{1, 1, size - 1, size - 1}, fill, fill, size / 2, 1);
        int32_t quarter = size / 4 + 1;
        if (kind == kImageError) {
            canvas->Line(quarter, quarter, size - quarter, size - quarter, kWhite, 2);
            canvas->Line(size - quarter, quarter, quarter, size - quarter, kWhite, 2);
        } else {
            canvas->FillRect(clRect{middle - 1, quarter - 1, middle + 1, quarter + 1}, kWhite);
            canvas->FillRect(clRect{middle - 1, quarter + 2, middle + 1, size - quarter + 1}, kWhite);
        }
    }
    delete canvas;
    return image;
}

}  // namespace

int32_t WheelSteps(int32_t delta) {
    int32_t steps = (delta < 0 ? -delta : delta) / 120;
    if (steps == 0) steps = 1;
    return delta < 0 ? -steps : steps;
}

frmErrorsInfo::frmErrorsInfo(const clLogEntries* errorList, const clLogEntries* infoList, bool reconvert)
    : errors(errorList), infos(infoList), canReconvert(reconvert) {
    hasErrors = errors != nullptr && errors->Count() > 0;
    hasInfos = infos != nullptr && infos->Count() > 0;
    showTabs = hasErrors && hasInfos;
    tree.form = this;
    starter = [](const clString& program, const clStringList& arguments) {
        return PlatformStartProcess(program, arguments);
    };
}

frmErrorsInfo::~frmErrorsInfo() {
    tree.Detach();
    DestroyWindowObject();
    for (clImageHandle image : images) DestroyImage(image);
}

bool frmErrorsInfo::Open(clWindowHandle owner) {
    if (!hasErrors && !hasInfos) return false;
    clString title = LogReportTitle(hasErrors, hasInfos);
    clRect place = clRect::Sized(0, 0, U(640), U(400));
    if (!Create(title, place, kWsCaption | kWsSysMenu | kWsThickFrame, 0, owner)) return false;
    if (owner != nullptr) CenterOver(owner);
    else CenterOnScreen();
    WindowShow(windowHandle, true);
    return true;
}

int32_t frmErrorsInfo::Run(clWindowHandle owner) {
    if (!Open(owner)) return 0;
    return RunModal();
}

intptr_t frmErrorsInfo::OnCreate() {
    tabs.Create(windowHandle, kIdLogTabs, clRect::Sized(0, 0, 100, 100));
    tree.Create(windowHandle, kIdLogTree, clRect::Sized(0, 0, 100, 100));
    WindowBringToTop(tree.controlHandle);  // over the tabs' page area
    copyButton = CreateControl(kControlButton, windowHandle, kIdCopyLog, u"Copy Errors to Clipboard", clRect{});
    reconvertButton = CreateControl(kControlButton, windowHandle, kIdReconvert, u"Re-Convert Failed", clRect{});
    okButton = CreateControl(kControlButton, windowHandle, 1, u"Ok", clRect{});
    WindowShow(reconvertButton, false);

    for (int32_t kind = 0; kind < 3; ++kind) images[kind] = DrawIcon(kind, U(16));
    TreeSetImages(tree.controlHandle, images, 3, U(16));
    tabs.SetImages(images, 3, U(16));
    if (hasErrors) tabs.AddPage(u"Errors", kImageError, nullptr);
    if (hasInfos) tabs.AddPage(u"Information", kImageInfo, nullptr);
    WindowShow(tabs.tabs, showTabs);
    if (canReconvert && hasErrors) {
        reconvertTip.Activate(
            u"File(s) with Errors are re-added to Track Converter\r"
            u"for re-converting (perhaps with changed settings).",
            reconvertButton, clRect{});
        WindowShow(reconvertButton, true);
    }
    clRect client = WindowClientRect(windowHandle);
    OnSize(0, client.Width(), client.Height());
    ShowPage(0);
    return 0;
}

void frmErrorsInfo::ShowPage(int32_t index) {
    bool showInfos = index == 1 || (index == 0 && !hasErrors);
    const clLogEntries* shown = showInfos ? infos : errors;
    WindowSetRedraw(tree.controlHandle, false);
    tree.DeleteAll();
    WindowSetText(copyButton, showInfos ? u"Copy Info to Clipboard" : u"Copy Errors to Clipboard");
    int32_t fileImage = showInfos ? kImageInfo : kImageError;
    for (int64_t i = 0; shown != nullptr && i < shown->Count(); ++i) {
        const clLogEntry& entry = (*shown)[i];
        if (entry.lines.Count() == 0) continue;
        clTreeItem root =
            tree.InsertItem(LogFileItemText(entry, !showInfos), fileImage, fileImage, clTreeItem{}, 0);
        for (int64_t line = 0; line < entry.lines.Count(); ++line) {
            tree.InsertItem(entry.lines[line], kImageLine, kImageLine, root, 0);
        }
        tree.InsertItem(clString(), kImageLine, kImageLine, root, 0);
        TreeExpand(root, true);
    }
    WindowSetRedraw(tree.controlHandle, true);
    WindowInvalidate(tree.controlHandle, nullptr);
}

clString frmErrorsInfo::ReportText() const {
    clString text;
    bool first = true;
    for (clTreeItem root = TreeFirstChild(tree.controlHandle, clTreeItem{}); root.IsValid();
         root = TreeNextSibling(root)) {
        if (!first) text.Append(u"\r\n");
        first = false;
        text.Append(Clipped(TreeItemText(root)));
        for (clTreeItem child = TreeFirstChild(tree.controlHandle, root); child.IsValid();
             child = TreeNextSibling(child)) {
            text.Append(u"\r\n   ");
            text.Append(Clipped(TreeItemText(child)));
        }
    }
    return text;
}

void frmErrorsInfo::CopyToClipboard() {
    ClipboardSetText(ReportText());
    // The notice shows whether the clipboard took it or not.
    clPoint at = CursorPosition();
    notice.delay = 1;
    notice.duration = 3000;
    notice.Activate(u"Details Copied to Clipboard", nullptr,
                    clRect{at.x - U(40), at.y - U(10) - U(20), at.x + U(40), at.y + U(20)});
}

void frmErrorsInfo::ReconvertFailed() {
    clStringList failed;
    for (int64_t i = 0; errors != nullptr && i < errors->Count(); ++i) failed.Add((*errors)[i].sourcePath);
    // A list or a program that can't be made ends as quietly as success.
    StartReconvert(failed, GetProgramFolder(), starter);
    OnIdOk();
}

intptr_t frmErrorsInfo::OnEraseBackground(clCanvas* canvas) {
    canvas->FillRect(WindowClientRect(windowHandle), kWhite);
    return 1;
}

intptr_t frmErrorsInfo::OnMouseDown(int32_t x, int32_t y, uint32_t, int32_t button) {
    clRect client = WindowClientRect(windowHandle);
    if (button != 0 || WindowIsMinimized(windowHandle)) return 0;
    if (x < client.right - U(kCorner) || y < client.bottom - U(kCorner)) return 0;
    resizing = true;
    resizeFrom = CursorPosition();
    resizeStart = WindowScreenRect(windowHandle);
    WindowCaptureMouse(windowHandle);
    return 0;
}

intptr_t frmErrorsInfo::OnMouseMove(int32_t, int32_t, uint32_t) {
    if (!resizing) return 0;
    clPoint now = CursorPosition();
    SetPlacement(kKeepPlacement, kKeepPlacement, resizeStart.Width() + now.x - resizeFrom.x,
                 resizeStart.Height() + now.y - resizeFrom.y);
    return 0;
}

intptr_t frmErrorsInfo::OnMouseUp(int32_t, int32_t, uint32_t, int32_t) {
    if (resizing) WindowReleaseMouse();
    resizing = false;
    return 0;
}

intptr_t frmErrorsInfo::OnMouseWheel(int32_t x, int32_t y, uint32_t flags, int32_t delta) {
    int32_t steps = WheelSteps(delta);
    int32_t one = steps < 0 ? -120 : 120;
    for (int32_t i = 0; i < (steps < 0 ? -steps : steps); ++i) {
        WindowSend(tree.controlHandle, kWmMouseWheel, clMakeWParam(flags, static_cast<uint32_t>(one)),
                   clMakeLParam(x, y));
    }
    return 0;
}

intptr_t frmErrorsInfo::OnSize(uint32_t, int32_t width, int32_t height) {
    if (tree.controlHandle == nullptr) return 0;
    int32_t margin = U(kMargin);
    int32_t buttonTop = height - margin - U(kButtonHeight);
    clRect area{margin, margin, width - margin, buttonTop - margin};
    WindowMove(tabs.tabs, area);
    WindowMove(tree.controlHandle, showTabs ? TabDisplayArea(tabs.tabs) : area);
    WindowMove(copyButton, clRect::Sized(margin, buttonTop, U(170), U(kButtonHeight)));
    WindowMove(reconvertButton, clRect::Sized(margin + U(178), buttonTop, U(140), U(kButtonHeight)));
    WindowMove(okButton, clRect::Sized(width - margin - U(90), buttonTop, U(90), U(kButtonHeight)));
    return 0;
}

intptr_t frmErrorsInfo::OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) {
    if (control == tabs.tabs && notifyCode == kCbnSelChange) {
        // With only infos there is one tab, and page 0 shows them.
        ShowPage(hasErrors ? tabs.Selected() : 0);
    } else if (id == kIdCopyLog && notifyCode == kBnClicked) {
        CopyToClipboard();
    } else if (id == kIdReconvert && notifyCode == kBnClicked) {
        ReconvertFailed();
    }
    return 0;
}

intptr_t frmErrorsInfo::OnIdOk() {
    EndModal(1);
    if (windowHandle != nullptr) WindowShow(windowHandle, false);
    return 0;
}

intptr_t frmErrorsInfo::OnClose() { return OnIdOk(); }

void frmErrorsInfo::_TreeView::OnRightClick(clPoint point) {
    clMenu menu;
    menu.Add(u"Expand All", kMenuExpandAll);
    menu.Add(u"Collapse All", kMenuCollapseAll);
    clPoint screen = WindowToScreen(controlHandle, point);
    uint32_t chosen = menu.TrackPopup(form->windowHandle, screen.x, screen.y);
    if (chosen == kMenuExpandAll || chosen == kMenuCollapseAll) ExpandAll(chosen == kMenuExpandAll);
}
