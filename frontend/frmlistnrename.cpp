#include "frontend/frmlistnrename.h"

#include <algorithm>

#include "foundation/folders.h"
#include "foundation/localeformat.h"
#include "foundation/pathtext.h"
#include "foundation/platform/filesystem.h"
#include "foundation/platform/thread.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "frontend/renamelist.h"
#include "naming/expandnaming.h"
#include "naming/outputpath.h"
#include "plugins/codechandler.h"
#include "plugins/decodercache.h"
#include "toolkit/application.h"
#include "toolkit/canvas.h"
#include "toolkit/controls.h"
#include "toolkit/views.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kMargin = 8;
constexpr int32_t kButtonHeight = 26;
constexpr uint32_t kRowsEveryMs = 250;
constexpr uint32_t kReaderStopMs = 20000;
constexpr int32_t kHintMinimumWidth = 600;
constexpr uint32_t kTickBudgetMs = 100;
// Rows put in the list when it opens, and in each piece after.
constexpr int32_t kFirstRows = 100;
constexpr int32_t kRowsPerInsert = 50;
// The most of the target's folder name the summary line shows.
constexpr int32_t kPlaceShown = 40;

uint32_t LevelOf(const clSourceFile& source) {
    return std::atomic_ref<uint32_t>(const_cast<uint32_t&>(source.level)).load();
}

bool IsIgnored(const clString& path) { return path.Find(u".IGNORE") > 0; }

}  // namespace

clString FileTypeName(const clString& path) {
    // One answer kept for the whole process, by extension.
    static clString cachedExtension;
    static clString cachedName;
    clString extension = GetExtension(path);
    if (!cachedExtension.IsEmpty() && cachedExtension.EqualsNoCase(extension)) return cachedName;
    // The desktop's name for the type, else the extension's own.
    clString name = extension.Length() > 1 ? FileTypeDescription(extension) : clString();
    if (name.IsEmpty() && extension.Length() > 1) {
        name = extension.Mid(2, extension.Length()).Lower();
        name.Append(u" File");
    } else if (name.IsEmpty()) {
        name = u"File";
    }
    cachedExtension = extension;
    cachedName = name;
    return name;
}

clString EstimatedKilobytes(uint64_t bytes) {
    double kilobytes = static_cast<double>(bytes) / 1024.0 + (bytes != 0 ? 0.99 : 0.0);
    clString number(static_cast<int64_t>(kilobytes));
    LocalizeNumber(number);
    number.Append(u" KB");
    return number;
}

frmListNRename::frmListNRename(int32_t* resultOut, const clPointerArray& batchSources, const clString& encoderNameIn,
                               const clString& folderIn, const clString& options, const clString& naming,
                               const clString& effects)
    : sources(&batchSources),
      encoderName(encoderNameIn),
      folder(folderIn),
      optionString(options),
      namingRule(naming),
      dspEffects(effects),
      result(resultOut) {
    list.form = this;
    if (result != nullptr) *result = 0;
    static const qv_log_record noLog{};
    if (clQvCodecHandler::LoadEncoder(encoderName, encoder, &noLog)) {
        qv_query_record query{};
        if (encoder.Get(encoder.instance, u"Extension", &query) != 0 && query.text1 != nullptr) {
            extension = clString(query.text1);
        }
    }
    noOutput = extension.Find(u".IGNORE", 1, true) > 0;
    needsTags = NamingNeedsTags(namingRule);
}

frmListNRename::~frmListNRename() {
    reader.Close();
    list.Detach();
    DestroyWindowObject();
    for (int64_t i = 0; i < icons.count; ++i) DestroyImage(static_cast<clImageHandle>(icons[i]));
}

bool frmListNRename::Open(clWindowHandle owner) {
    clRect area = ToolkitWorkArea();
    if (!Create(u"Quillotone Track Converter: List & Rename Files", area,
                kWsCaption | kWsSysMenu | kWsThickFrame | kWsMaximizeBox, 0, owner)) {
        return false;
    }
    WindowShow(windowHandle, true);
    FillRows();
    return true;
}

int32_t frmListNRename::Run(clWindowHandle owner) {
    if (!Open(owner)) return 0;
    RunModal();
    return result != nullptr ? *result : 0;
}

intptr_t frmListNRename::OnCreate() {
    summary = CreateControl(kControlStatic, windowHandle, kIdListSummary, u"Indexing Files...", clRect{});
    list.Create(windowHandle, kIdListView, clRect::Sized(0, 0, 100, 100), true);
    list.labelEditing = !noOutput;
    hint = CreateControl(kControlStatic, windowHandle, kIdListHint, u"Select Item && Press F2 to rename", clRect{});
    okButton = CreateControl(kControlButton, windowHandle, 1, u"OK", clRect{});
    cancelButton = CreateControl(kControlButton, windowHandle, 2, u"Cancel", clRect{});
    clRect client = WindowClientRect(windowHandle);
    OnSize(0, client.Width(), client.Height());
    return 0;
}

intptr_t frmListNRename::OnSize(uint32_t, int32_t width, int32_t height) {
    if (list.controlHandle == nullptr) return 0;
    int32_t margin = U(kMargin);
    int32_t buttonTop = height - margin - U(kButtonHeight);
    WindowMove(summary, clRect::Sized(margin, margin, width - 2 * margin, U(18)));
    WindowMove(list.controlHandle, clRect{margin, margin + U(24), width - margin, buttonTop - margin});
    WindowMove(hint, clRect::Sized(margin, buttonTop + U(5), width / 2, U(18)));
    WindowShow(hint, !noOutput && width >= U(kHintMinimumWidth));
    WindowMove(okButton, clRect::Sized(width - margin - U(170), buttonTop, U(80), U(kButtonHeight)));
    WindowMove(cancelButton, clRect::Sized(width - margin - U(80), buttonTop, U(80), U(kButtonHeight)));
    if (ListViewColumnCount(list.controlHandle) == 5) FitPathColumns();
    return 0;
}

clString frmListNRename::RowDestination(clSourceFile& source) {
    clString saved = source.chosenOutput;
    source.chosenOutput.Clear();
    clString text;
    // A name made of tags can't be known before the tags are read.
    if (namingRule.IsEmpty() || !needsTags || LevelOf(source) == 2) {
        if (noOutput) {
            text = clString(u"< ", encoderName.text);
            text.Append(u" >");
        } else {
            clString path = ComputeOutputPath(source, folder, namingRule, extension, clString(), dspEffects);
            text = RemoveExtension(FriendlyPath(path));
        }
    }
    source.chosenOutput = saved;
    return text;
}

// A path with its folder in friendly form. The special folders are asked
// once per folder, not once per row: thousands of rows mostly share a few.
clString frmListNRename::FriendlyPath(const clString& path) {
    clString place = GetFolderPart(path);
    if (!place.Equals(friendlyCacheFolder)) {
        friendlyCacheFolder = place;
        friendlyCacheName = FriendlyFolderName(place, false);
    }
    if (friendlyCacheName.Equals(place)) return path;
    clString friendly(friendlyCacheName);
    AddBackslash(friendly);
    friendly.Append(GetFileName(path));
    return friendly;
}

clString frmListNRename::DecoderDescription(const clString& path) {
    clString wanted = GetExtension(path).Upper();
    if (wanted.Equals(cachedDecoderExtension)) return cachedDecoderDescription;
    clString description;
    clQvDecoder decoder;
    static const qv_log_record noLog{};
    if (LoadForFile(path, decoder, &noLog)) {
        for (uint32_t index = 0; index < clMaxDecodesEntries; ++index) {
            qv_query_record query{};
            query.index = index;
            if (decoder.Get(decoder.instance, u"Decodes", &query) == 0 || query.text1 == nullptr) break;
            if (clString(query.text1).EqualsNoCase(wanted) && query.text2 != nullptr) {
                description = clString(query.text2);
                break;
            }
        }
    }
    cachedDecoderExtension = wanted;
    cachedDecoderDescription = description;
    return description;
}

void frmListNRename::FillRows() {
    list.InsertColumn(0, u"Destination File", 200);
    list.InsertColumn(1, u"Source File", 200);
    list.InsertColumn(2, u"Source Type", U(85));
    list.InsertColumn(3, u"Source Length", U(85), true);
    list.InsertColumn(4, u"Estimated Size", U(85), true);
    // A heading wider than its 85 units widens its column: none is cut.
    for (int32_t column = 2; column <= 4; ++column) {
        list.SetColumnWidth(column, std::max(U(85), ListViewHeadingWidth(list.controlHandle, column)));
    }
    FitPathColumns();
    clString iconFile = JoinPath(JoinPath(GetProgramFolder(), u"encoder"), encoderName);
    iconFile.Append(u".ico");
    int32_t image = -1;
    if (clImageHandle icon = LoadImageFile(iconFile, 16, 16)) {
        icons.Add(icon);
        ListViewSetImages(list.controlHandle, &icon, 1, 16);
        image = 0;
    }
    listImage = image;
    ListViewReserve(list.controlHandle, static_cast<int32_t>(sources->count));
    if (sources->count > 0 && !noOutput) {
        clSourceFile& source = Source(0);
        // The target's free space: of a drive root on Windows, of the
        // nearest existing folder of the destination elsewhere.
        clString target = ComputeOutputPath(source, folder, namingRule, extension, clString(), dspEffects);
        clString place = GetFolderPart(target);
        bool driveRoot = target.CharAt(2) == u':' && target.CharAt(3) == u'\\';
        if (NativePathSyntax().IsWindows()) place = driveRoot ? target.Mid(1, 3) : clString();
        while (!place.IsEmpty() && !PathExists(place)) {
            clString above(place);
            RemoveBackslashes(above);
            above = GetFolderPart(above);
            if (above.Equals(place)) break;
            place = above;
        }
        uint64_t bytes = 0;
        if (!place.IsEmpty() && PlatformGetFreeSpace(place.text, &bytes)) {
            freeSpaceText = u"\t\tFree Space: ";
            freeSpaceText.Append(FormatSize(static_cast<int64_t>(bytes), false));
            freeSpaceText.Append(u" on ");
            // A deep folder would push the line past the window: its middle
            // gives way, the start and the folder's own name stay.
            clString where = FriendlyFolderName(place, false);
            if (where.Length() > kPlaceShown) {
                clString shortened = where.Mid(1, kPlaceShown / 2 - 1);
                shortened.Append(u"\u2026");
                shortened.Append(where.Right(kPlaceShown - kPlaceShown / 2));
                where = shortened;
            }
            freeSpaceText.Append(where);
        }
    }
    InsertRows(kFirstRows);
    ShowSummary();
    // A batch whose naming needs no tags never opens a decoder.
    reader.Start(
        [](XEvent& stop, void* argument) {
            auto* form = static_cast<frmListNRename*>(argument);
            PlatformLowerThreadPriority();
            ReadSourcesToLevel(*form->sources, form->needsTags ? 2 : 1, &stop, &form->holdReader);
        },
        this, kReaderStopMs);
    SetTimerEx(kRowsEveryMs, 0, kTimerRows);
}

// The two path columns share what the others leave: w is half the rest,
// and at least 200.
void frmListNRename::FitPathColumns() {
    int32_t others = 0;
    for (int32_t column = 2; column <= 4; ++column) others += ListViewColumnWidth(list.controlHandle, column);
    // 20 more for the vertical scroll bar.
    int32_t rest = WindowClientRect(list.controlHandle).Width() - std::max(U(275), others + U(20));
    int32_t w = std::max(U(200), rest / 2);
    list.SetColumnWidth(0, w * 5 / 4);
    list.SetColumnWidth(1, w * 3 / 4);
}

void frmListNRename::InsertRows(int32_t upTo) {
    int32_t from = list.GetItemCount();
    upTo = std::min(upTo, static_cast<int32_t>(sources->count));
    if (from >= upTo) return;
    WindowSetRedraw(list.controlHandle, false);
    filling = true;  // the summary once at the end, not per row
    for (int32_t row = from; row < upTo; ++row) {
        clSourceFile& source = Source(row);
        clString destination = source.chosenOutput.IsEmpty() ? RowDestination(source) : source.chosenOutput;
        if (!destination.IsEmpty()) destination.Append(laterSuffix);
        list.InsertItem(-1, destination, listImage, LaterRowChecked(row));
        clString shown;
        if (IsIgnored(source.path)) {
            shown = clString(u"< ", DecoderDescription(source.path).text);
            shown.Append(u" >");
        } else {
            shown = RemoveExtension(FriendlyPath(source.path));
        }
        list.SetItemText(row, 1, shown);
    }
    filling = false;
    WindowSetRedraw(list.controlHandle, true);
}

bool frmListNRename::LaterRowChecked(int32_t row) const { return laterChecked && Source(row).excluded == 0; }

bool frmListNRename::AllRowsComplete() const { return nextRow >= sources->count; }

void frmListNRename::ShowSummary() {
    int32_t checked = 0;
    uint64_t total = 0;
    int32_t listed = list.GetItemCount();
    for (int32_t row = 0; row < sources->count; ++row) {
        if (row < listed ? !list.IsChecked(row) : !LaterRowChecked(row)) continue;
        ++checked;
        total += Source(row).estimatedSize;
    }
    clString text = clString::Formatted(u"Converting %d %s to %s", checked, checked == 1 ? u"File" : u"Files",
                                        encoderName.text);
    if (AllRowsComplete() && total != 0) {
        text.Append(u"\t\tEstimated Total: ");
        text.Append(FormatSize(static_cast<int64_t>(total), false));
        text.Append(freeSpaceText);
    }
    // A label shows no tabs: the parts stand apart by blanks.
    text.Replace(u"\t", u"   ");
    WindowSetText(summary, text);
}

void frmListNRename::CompleteRows() {
    if (inTick) return;
    inTick = true;
    uint32_t units = GetSettingNumber(kUnitsTimeSetting.name, kSettingsHive, kRefKey);
    if (units == 0) units = kUnitsTimeSetting.defaultValue;
    if (units == 4) units = 0;
    bool held = false;
    // A tick that found thousands of rows read leaves the rest to the next
    // ones, so the window answers the user in between.
    uint32_t started = PlatformTickCount();
    // Rows for what has been read, and a screenful beyond it.
    while (list.GetItemCount() < sources->count && list.GetItemCount() < nextRow + kFirstRows &&
           PlatformTickCount() - started < kTickBudgetMs / 2) {
        InsertRows(list.GetItemCount() + kRowsPerInsert);
    }
    int32_t count = list.GetItemCount();
    while (nextRow < count && PlatformTickCount() - started < kTickBudgetMs) {
        clSourceFile& source = Source(nextRow);
        uint32_t level = LevelOf(source);
        if (level == 0 || (level == 1 && needsTags)) break;
        if (!held) {
            WindowSetRedraw(list.controlHandle, false);
            held = true;
        }
        if (!IsIgnored(source.path)) list.SetItemText(nextRow, 2, FileTypeName(source.path));
        qv_stream_facts facts{};
        std::copy(source.facts, source.facts + sizeof facts, reinterpret_cast<unsigned char*>(&facts));
        if (facts.lengthMs != 0) {
            list.SetItemText(nextRow, 3, FormatDuration(static_cast<int64_t>(facts.lengthMs), units));
            qv_query_record query{};
            query.lengthMs = facts.lengthMs;
            query.text1 = optionString.text;
            query.facts = &facts;
            if (encoder.instance != 0 && encoder.Get(encoder.instance, u"GetEstimatedFileSize", &query) != 0 &&
                query.estimate != 0) {
                source.estimatedSize = query.estimate;
                list.SetItemText(nextRow, 4, EstimatedKilobytes(query.estimate));
            }
        }
        if (level == 2 && list.GetItemText(nextRow, 0).IsEmpty()) {
            list.SetItemText(nextRow, 0, RowDestination(source));
        }
        ++nextRow;
        if (nextRow == sources->count) ShowSummary();
    }
    if (held) WindowSetRedraw(list.controlHandle, true);
    inTick = false;
}

intptr_t frmListNRename::OnTimer(uint64_t id, uint64_t) {
    if (id == kTimerRows) CompleteRows();
    if (AllRowsComplete()) KillTimerEx(kTimerRows);
    return 0;
}

void frmListNRename::CommitRows() {
    list.valueControl.Commit();
    for (int32_t row = 0; row < list.GetItemCount(); ++row) {
        clSourceFile& source = Source(row);
        clString computed = RowDestination(source);
        clString shown = list.GetItemText(row, 0);
        // A typed name is kept; an untouched row follows the naming.
        if (!shown.IsEmpty() && !shown.Equals(computed)) source.chosenOutput = shown;
        source.excluded = list.IsChecked(row) ? 0 : 1;
    }
    for (int32_t row = list.GetItemCount(); row < sources->count; ++row) {
        clSourceFile& source = Source(row);
        if (!laterSuffix.IsEmpty()) {
            clString name = source.chosenOutput.IsEmpty() ? RowDestination(source) : source.chosenOutput;
            if (!name.IsEmpty()) source.chosenOutput = clString(name.text, laterSuffix.text);
        }
        source.excluded = LaterRowChecked(row) ? 0 : 1;
    }
}

void frmListNRename::CheckAll(bool checked) {
    SetAllChecked(list, checked);
    laterChecked = checked;
    ShowSummary();
}

void frmListNRename::MakeAllUnique() {
    clString suffix = UniqueNameSuffix();
    AppendToNames(list, suffix);
    laterSuffix.Append(suffix);
}

void frmListNRename::ShowPopup(clPoint screenPoint) {
    switch (TrackRenameListPopup(windowHandle, screenPoint, false)) {
        case kMenuCheckAll: CheckAll(true); break;
        case kMenuUncheckAll: CheckAll(false); break;
        case kMenuUniqueNames: MakeAllUnique(); break;
        default: break;
    }
}

intptr_t frmListNRename::OnIdOk() {
    CommitRows();
    End(1);
    return 0;
}

intptr_t frmListNRename::OnIdCancel() {
    End(0);
    return 0;
}

intptr_t frmListNRename::OnClose() {
    End(0);
    return 0;
}

void frmListNRename::End(int32_t code) {
    // Closing stops the reading at once: the reader tests its stop event
    // before each file.
    reader.stopEvent.Set();
    KillTimerEx(kTimerRows);
    if (result != nullptr) *result = code;
    EndModal(code);
    if (windowHandle != nullptr) WindowShow(windowHandle, false);
}

void frmListNRename::_lstView::OnCheckChanged(int32_t, bool) {
    if (!form->filling) form->ShowSummary();
}

void frmListNRename::_lstView::OnRightClick(int32_t, int32_t, clPoint point) {
    form->ShowPopup(WindowToScreen(controlHandle, point));
}
