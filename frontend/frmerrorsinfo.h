// frmErrorsInfo: what the workers of a batch reported, one tree of errors
// and one of information lines, each grouped by file. The report can be
// copied to the clipboard, and the failed files sent to a new conversion.
// The lists belong to the conversion; the window reads them only while it
// fills its tree.
#pragma once

#include <cstdint>

#include "engine/conversionjob.h"
#include "engine/handover.h"
#include "foundation/clstring.h"
#include "toolkit/tabpage.h"
#include "toolkit/tooltip.h"
#include "toolkit/treeview.h"
#include "toolkit/xwindow.h"

constexpr uint32_t kIdLogTabs = 1033;
constexpr uint32_t kIdLogTree = 1034;
constexpr uint32_t kIdCopyLog = 1035;
constexpr uint32_t kIdReconvert = 1041;
constexpr uint32_t kMenuExpandAll = 10001;
constexpr uint32_t kMenuCollapseAll = 10002;

// Images of the tree, by index.
constexpr int32_t kImageError = 0;
constexpr int32_t kImageInfo = 1;
constexpr int32_t kImageLine = 2;

class frmErrorsInfo : public XWindow {
public:
    class _TabPage : public XTabPage {};
    class _TreeView : public XTreeView {
    public:
        frmErrorsInfo* form = nullptr;
        void OnRightClick(clPoint point) override;
    };

    _TabPage tabs;
    _TreeView tree;
    const clLogEntries* errors;
    const clLogEntries* infos;
    bool hasErrors;
    bool hasInfos;
    bool showTabs;
    bool canReconvert;
    bool resizing = false;
    clPoint resizeFrom;
    clRect resizeStart;
    clWindowHandle copyButton = nullptr;
    clWindowHandle reconvertButton = nullptr;
    clWindowHandle okButton = nullptr;
    XToolTip reconvertTip;
    XToolTip notice;
    // How "Re-Convert Failed" starts the program; tests record instead.
    clProgramStarter starter;

    frmErrorsInfo(const clLogEntries* errorList, const clLogEntries* infoList, bool reconvert);
    ~frmErrorsInfo() override;

    // Makes the window and shows the first page; false, with no window,
    // when there is nothing to show.
    bool Open(clWindowHandle owner);
    // Open, then wait until the user closes it.
    int32_t Run(clWindowHandle owner);

    void ShowPage(int32_t index);
    // The report of the page shown, as the clipboard gets it.
    clString ReportText() const;
    void CopyToClipboard();
    void ReconvertFailed();

    intptr_t OnCreate() override;
    intptr_t OnEraseBackground(clCanvas* canvas) override;
    intptr_t OnMouseDown(int32_t x, int32_t y, uint32_t flags, int32_t button) override;
    intptr_t OnMouseUp(int32_t x, int32_t y, uint32_t flags, int32_t button) override;
    intptr_t OnMouseMove(int32_t x, int32_t y, uint32_t flags) override;
    intptr_t OnMouseWheel(int32_t x, int32_t y, uint32_t flags, int32_t delta) override;
    intptr_t OnSize(uint32_t type, int32_t width, int32_t height) override;
    intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) override;
    intptr_t OnIdOk() override;
    intptr_t OnClose() override;

private:
    clImageHandle images[3] = {};
};

// How many wheel steps of 120 a delta makes: at least one, in its direction.
int32_t WheelSteps(int32_t delta);
