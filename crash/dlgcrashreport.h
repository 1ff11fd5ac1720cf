// dlgCrashReport: what the user sees after a crash, shown by the second
// instance the crash started. It says what happened, where to report it
// and where the crash record lies, and ends with "Exit". The window runs
// its own loop inside the constructor; without a display, or told to ask
// nobody (QUILLOTONE_NONINTERACTIVE=1), the same facts go to the terminal.
#pragma once

#include "foundation/clstring.h"
#include "toolkit/canvas.h"
#include "toolkit/valuelist.h"
#include "toolkit/xwindow.h"

// The maker's support forum, fixed at build time.
#ifndef QV_SUPPORT_FORUM_URL
#define QV_SUPPORT_FORUM_URL "https://quillotone.org/forum"
#endif

class dlgCrashReport : public XWindow {
public:
    XValueList list;
    clWindowHandle exitButton = nullptr;
    clImageHandle icon = nullptr;  // the program's mark, painted at 32 by 32 pixels
    clString crashReportDumpPath;
    bool closed = false;

    // Shows the report for the record at `dumpPath` and returns when the
    // user has closed it.
    explicit dlgCrashReport(const clString& dumpPath);
    ~dlgCrashReport() override;

    intptr_t OnCreate() override;
    intptr_t OnPaint(clCanvas* canvas) override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;
    intptr_t OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                          uint32_t* handledFlag) override;

    // The actions of the two links.
    void OpenForum();
    void ShowRecord();

private:
    void Close();
};

// The program's mark, 32 by 32 pixels, for the windows that paint their
// own heading; the caller owns it (null when no picture can be made).
clImageHandle DrawProgramMark();

// The program's title, as the report names it.
constexpr const char16_t* kCrashProgramTitle = u"Quillotone Track Converter";
