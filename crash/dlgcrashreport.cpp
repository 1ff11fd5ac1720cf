#include "crash/dlgcrashreport.h"

#include <cstdio>
#include <cstring>

#include "foundation/platform/processinfo.h"
#include "foundation/utf.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kWidth = 500;
constexpr int32_t kHeight = 250;
constexpr int32_t kListLeft = 56;
constexpr int32_t kLinkLeft = 24;  // the links stand below their lines, indented
constexpr uint32_t kBorder = 0x8A8A8A;

}  // namespace

// The desktop icon's picture, drawn small: a blue tile with two notes and
// the arrow of a conversion.
clImageHandle DrawProgramMark() {
    clImageHandle image = CreateImage(32, 32);
    if (image == nullptr) return nullptr;
    clCanvas* canvas = CanvasOnImage(image);
    if (canvas == nullptr) return image;
    const uint32_t white = 0xFFFFFF;
    canvas->FillRect(clRect::Sized(0, 0, 32, 32), 0xF0F0F0);
    canvas->FramedRect(clRect::Sized(2, 2, 28, 28), 0x914F1D, 0x914F1D, 5, 1);
    canvas->Line(13, 7, 23, 5, white, 2);
    canvas->Line(23, 5, 23, 20, white, 2);
    canvas->Line(13, 7, 13, 22, white, 2);
    canvas->FramedRect(clRect::Sized(7, 20, 7, 5), white, white, 2, 1);
    canvas->FramedRect(clRect::Sized(17, 18, 7, 5), white, white, 2, 1);
    canvas->Line(6, 27, 22, 27, 0x34B1F2, 2);
    canvas->Line(22, 27, 20, 25, 0x34B1F2, 2);
    delete canvas;
    return image;
}

dlgCrashReport::dlgCrashReport(const clString& dumpPath) : crashReportDumpPath(dumpPath) {
    clString flag;
    bool askNobody = PlatformGetEnvironment(u"QUILLOTONE_NONINTERACTIVE", flag) && flag.Equals(u"1");
    if (askNobody || !ToolkitHasDisplay() || !ToolkitStart()) {
        // No window can show, or nobody is there to close it: the terminal
        // hears it instead.
        std::fprintf(stderr, "%s has stopped working.\nThe crash record is %s\nPlease report it at %s\n",
                     StringToUtf8(clString(kCrashProgramTitle)).c_str(), StringToUtf8(dumpPath).c_str(),
                     QV_SUPPORT_FORUM_URL);
        return;
    }
    clRect place = clRect::Sized(U(10), U(10), U(kWidth), U(kHeight));
    if (!Create(clString(kCrashProgramTitle), place, kWsPopup | kWsVisible | kWsSysMenu | kWsBorder, 0, nullptr)) {
        return;
    }
    CenterOnScreen();
    WindowShow(windowHandle, true);
    RunModal();
}

dlgCrashReport::~dlgCrashReport() {
    DestroyWindowObject();
    if (icon != nullptr) DestroyImage(icon);
}

intptr_t dlgCrashReport::OnCreate() {
    clRect client = WindowClientRect(windowHandle);
    icon = DrawProgramMark();
    int32_t buttonTop = client.Height() - U(12) - U(24);
    list.Create(windowHandle, U(kListLeft), U(12), client.Width() - U(kListLeft) - U(12), buttonTop - U(24), true,
                false);
    list.background = 0xFFFFFF;

    clValueRowDesc heading;
    heading.kind = kRowWrapped;  // its height follows the large font
    heading.name = clString::Formatted(u"%s has stopped working", kCrashProgramTitle);
    heading.nameBold = true;
    heading.nameFontSize = 20;
    heading.nameLeft = 8;
    heading.readOnly = true;
    list.AddRow(heading);

    clValueRowDesc what;
    what.kind = kRowSingle;
    what.name = u"Something unexpected happend which led to a crash.";
    what.readOnly = true;
    list.AddRow(what);

    clValueRowDesc forum;
    forum.name = u"1) Report on support forum";
    forum.lines = 2;
    forum.valueLeft = kLinkLeft;
    Utf8ToString(QV_SUPPORT_FORUM_URL, static_cast<int64_t>(std::strlen(QV_SUPPORT_FORUM_URL)), forum.buttonText);
    forum.onButton = [this](XValueList*) { OpenForum(); };
    list.AddRow(forum);

    clValueRowDesc record;
    record.name = u"2) Send crash dump, helping fix the issue";
    record.lines = 2;
    record.valueLeft = kLinkLeft;
    record.buttonText = u"Crash Dump Location";
    record.onButton = [this](XValueList*) { ShowRecord(); };
    list.AddRow(record);

    exitButton = CreateControl(kControlButton, windowHandle, 1, u"Exit",
                               clRect::Sized(client.Width() - U(12) - U(120), buttonTop, U(120), U(24)));
    WindowSetFocus(exitButton);
    return 0;
}

intptr_t dlgCrashReport::OnPaint(clCanvas* canvas) {
    clRect client = WindowClientRect(windowHandle);
    // A window without a caption has no frame of the desktop's to show
    // where it ends.
    canvas->FramedRect(client, clNoColor, kBorder, 0, 1);
    if (icon != nullptr) canvas->Image(icon, clRect::Sized(U(14), U(16), 32, 32));
    return 0;
}

void dlgCrashReport::OpenForum() {
    clString address;
    Utf8ToString(QV_SUPPORT_FORUM_URL, static_cast<int64_t>(std::strlen(QV_SUPPORT_FORUM_URL)), address);
    PlatformOpenDocument(address);
}

void dlgCrashReport::ShowRecord() { PlatformShowInFolder(crashReportDumpPath); }

void dlgCrashReport::Close() {
    if (closed) return;
    closed = true;
    if (exitButton != nullptr) DestroyControl(exitButton);
    exitButton = nullptr;
    list.Destroy();
    EndModal(1);
}

// The list draws its own rows and follows its own clicks.
intptr_t dlgCrashReport::OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                      uint32_t* handledFlag) {
    if (!closed) list.OnRawMessage(window, message, wParam, lParam, handledFlag);
    return 0;
}

intptr_t dlgCrashReport::OnIdOk() {
    Close();
    return 0;
}

intptr_t dlgCrashReport::OnIdCancel() {
    Close();
    return 0;
}

intptr_t dlgCrashReport::OnClose() {
    Close();
    return 0;
}
