// frmOverwrite: the files a batch would overwrite, settled per file before
// it starts. Each row is a conflict found by ExamineJobs: kept checked it
// is overwritten, unchecked it is skipped, and its name (without the
// extension) can be edited with F2. The window changes only the items it
// is given; ExamineJobs carries them into the jobs.
#pragma once

#include <cstdint>

#include "engine/conversionjob.h"
#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "frontend/renamelist.h"
#include "toolkit/listview.h"
#include "toolkit/xwindow.h"

// Control ids.
constexpr uint32_t kIdOverwriteHint = 1012;
constexpr uint32_t kIdOverwriteList = 1031;
constexpr uint32_t kIdUniqueNames = 4;
constexpr uint32_t kIdSkipExisting = 3;

class frmOverwrite : public XWindow {
public:
    class _lstView : public XListView {
    public:
        frmOverwrite* form = nullptr;
        void OnCheckChanged(int32_t row, bool checked) override;
        void OnEndEdit(int32_t row, const clString& text) override;
        void OnRightClick(int32_t row, int32_t column, clPoint point) override;
        intptr_t OnCustomDraw(clViewNotify& record, bool& handled) override;
    };

    _lstView list;
    clOverwriteItems* items;
    clString encoderName;
    clString outputExtension;
    int32_t* result;
    clWindowHandle heading = nullptr;
    clWindowHandle hint = nullptr;
    clWindowHandle cancelButton = nullptr;
    clWindowHandle uniqueButton = nullptr;
    clWindowHandle skipButton = nullptr;
    clWindowHandle overwriteButton = nullptr;
    clPointerArray icons;  // clImageHandle, owned
    // How long "Skip Existing" shows the gray rows before it ends.
    uint32_t skipPauseMs = 500;

    // Sets `exists` in every item; Run shows the window.
    frmOverwrite(int32_t* resultOut, clOverwriteItems& overwriteItems, const clString& encoder,
                 const clString& extension);
    ~frmOverwrite() override;

    // Makes the window and fills it, without waiting; false if it can't.
    bool Open(clWindowHandle owner);
    // Open, then wait until the user decides; answers *result.
    int32_t Run(clWindowHandle owner);

    void CountOverwrites(int32_t row, const clString& text);
    void MakeAllUnique();
    void SkipExisting();
    void CommitRows();
    void CheckAll(bool checked);
    void ShowPopup(clPoint screenPoint);

    intptr_t OnCreate() override;
    intptr_t OnSize(uint32_t type, int32_t width, int32_t height) override;
    intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;

private:
    void End(int32_t code);
};
