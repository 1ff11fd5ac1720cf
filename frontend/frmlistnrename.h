// frmListNRename: everything a batch will do, before it starts: one row
// per source with its destination, type, length and expected size, the
// totals and the free space on the target. Rows can be unchecked (the
// source is left out) and destinations renamed (F2). The window opens at
// once; a reader thread at the lowest priority brings the sources to the
// level the rows need, and a timer completes the rows in order as they
// are read.
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/thread.h"
#include "plugins/sourcefile.h"
#include "plugins/xdll.h"
#include "toolkit/listview.h"
#include "toolkit/xwindow.h"

constexpr uint32_t kIdListSummary = 1011;
constexpr uint32_t kIdListView = 1008;
constexpr uint32_t kIdListHint = 1012;
constexpr uint64_t kTimerRows = 1;

class frmListNRename : public XWindow {
public:
    class _lstView : public XListView {
    public:
        frmListNRename* form = nullptr;
        void OnCheckChanged(int32_t row, bool checked) override;
        void OnRightClick(int32_t row, int32_t column, clPoint point) override;
    };

    _lstView list;
    const clPointerArray* sources;  // of clSourceFile, the batch's
    clString encoderName;
    clString folder;
    clString optionString;
    clString namingRule;
    clString dspEffects;
    clString extension;
    clQvEncoder encoder;
    int32_t nextRow = 0;
    bool noOutput = false;
    bool needsTags = false;
    clString freeSpaceText;
    clString cachedDecoderExtension;
    clString cachedDecoderDescription;
    clThread reader;
    bool inTick = false;
    bool filling = false;
    // Rows come into the list in pieces, a screenful at once and the rest
    // tick by tick, so that a long batch opens at once. What the user does
    // to all rows meanwhile holds for the rows still to come.
    int32_t listImage = -1;
    bool laterChecked = true;
    clString laterSuffix;
    int32_t* result;
    clWindowHandle summary = nullptr;
    clWindowHandle hint = nullptr;
    clWindowHandle okButton = nullptr;
    clWindowHandle cancelButton = nullptr;
    clPointerArray icons;  // clImageHandle, owned
    // For tests: the reader waits while this is set.
    std::atomic<bool> holdReader{false};

    frmListNRename(int32_t* resultOut, const clPointerArray& batchSources, const clString& encoderNameIn,
                   const clString& folderIn, const clString& options, const clString& naming,
                   const clString& effects);
    ~frmListNRename() override;

    // Makes the window, maximised, and starts filling it; false if it can't.
    bool Open(clWindowHandle owner);
    int32_t Run(clWindowHandle owner);

    clString RowDestination(clSourceFile& source);
    void ShowSummary();
    // One tick of the timer: rows completed as far as the sources are read.
    void CompleteRows();
    // Adds rows up to `upTo` (at most the number of sources).
    void InsertRows(int32_t upTo);
    // Whether the source of a row not yet in the list is to be converted.
    bool LaterRowChecked(int32_t row) const;
    void CommitRows();
    bool AllRowsComplete() const;
    void CheckAll(bool checked);
    void MakeAllUnique();
    void ShowPopup(clPoint screenPoint);

    intptr_t OnCreate() override;
    intptr_t OnSize(uint32_t type, int32_t width, int32_t height) override;
    intptr_t OnTimer(uint64_t id, uint64_t userValue) override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;

private:
    clSourceFile& Source(int32_t row) const { return *sources->At<clSourceFile>(row); }
    clString DecoderDescription(const clString& path);
    clString FriendlyPath(const clString& path);
    clString friendlyCacheFolder;
    clString friendlyCacheName;
    void FillRows();
    void FitPathColumns();
    void End(int32_t code);
};

// The file-type name of a path's extension: the desktop's ("FLAC audio"),
// else the extension's own ("xyz File"), or "File" for an extension of
// nothing but a dot.
clString FileTypeName(const clString& path);
// Column 4's text: the size in KB, rounded up from a hundredth above a
// whole KB ("0 KB" for 1 byte, "1 KB" for 1024, "2 KB" for 1035).
clString EstimatedKilobytes(uint64_t bytes);
