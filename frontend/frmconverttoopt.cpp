#include "frontend/frmconverttoopt.h"

#include "engine/batchsettings.h"
#include "engine/globals.h"
#include "engine/handover.h"
#include "engine/mainflow.h"
#include "engine/multiencoder.h"
#include "foundation/commandoptions.h"
#include "foundation/file.h"
#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/localeformat.h"
#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/specialfolder.h"
#include "frontend/dlgnaming.h"
#include "frontend/effectchain.h"
#include "frontend/frmlistnrename.h"
#include "frontend/frmnewprofile.h"
#include "naming/highlight.h"
#include "naming/outputpath.h"
#include "plugins/codechandler.h"
#include "plugins/effectstring.h"
#include "plugins/filetypes.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/dialogs.h"

namespace {

int32_t U(int32_t units) { return XWindow::ScaleUnits(units); }

constexpr int32_t kWidth = 420;
constexpr int32_t kHeight = 396;
constexpr int32_t kMargin = 12;
// Where an encoder's page goes, and how much room it has.
constexpr int32_t kPageLeft = 12;
constexpr int32_t kPageTop = 62;
constexpr int32_t kOutputTop = 226;
constexpr int32_t kEffectsTop = 282;
constexpr uint32_t kGreyText = 0xC0C0C0;
constexpr uint32_t kDisabledFill = 0xF4F4F4;
constexpr uint32_t kHeadingColor = 0x804000;
constexpr uint32_t kTimerId = 1;
constexpr int32_t kRememberedFolders = 10;
constexpr const char16_t* kMultiEncoder = u"[Multi Encoder]";

// The pseudo-encoders that take no effects through this window.
bool TakesNoEffects(const clString& entry) {
    for (const char16_t* name :
         {u"[Arrange Audio]", u"[Audio Info]", u"[ID Tag Update]", u"[ReplayGain]", u"[Tag From Filename]"}) {
        if (entry.EqualsNoCase(name)) return true;
    }
    return false;
}

clString LastEntryValueName() { return clString(kLastEntryPrefix, globalProfile.text); }

}  // namespace

void frmConvertToOpt::_CmbEncoders::OnSelectionChanged() {
    if (form != nullptr) form->OnCommand(kIdEncoderList, control, kCbnSelChange);
}

void frmConvertToOpt::_CmbOutToFolder::OnSelectionChanged() {
    if (form != nullptr) form->OnCommand(kIdOutputList, control, kCbnSelChange);
}

frmConvertToOpt::frmConvertToOpt(clConversionInput& conversionInput) : input(&conversionInput) {
    cmbEncoders.form = this;
    cmbOutToFolder.form = this;
}

frmConvertToOpt::~frmConvertToOpt() {
    outputTip.Deactivate();
    noticeTip.Deactivate();
    DestroyWindowObject();
    cmbEncoders.Destroy();
    cmbOutToFolder.Destroy();
    for (int64_t i = 0; i < icons.count; ++i) DestroyImage(static_cast<clImageHandle>(icons[i]));
}

bool frmConvertToOpt::Open(clWindowHandle owner) {
    clString title(clProgramCaption);
    // A distributor's line, from OEM.txt beside the program, follows the name.
    clFile oem;
    oem.fileName = JoinPath(GetProgramFolder(), clString(u"OEM.txt"));
    oem.Open(clAccessRead, clOpenExisting, false, true);
    clString line;
    if (oem.handle != clInvalidHandle && oem.ReadLine(line, true, false) && !line.IsEmpty()) {
        if (line.CharAt(1) == 0xFEFF) line.RemoveCharAt(1);
        title.Append(u": ");
        title.Append(line);
    }
    if (!Create(title, clRect::Sized(0, 0, U(kWidth), U(kHeight)), kWsCaption | kWsSysMenu | kWsMinimizeBox, 0,
                owner)) {
        return false;
    }
    // The layout is for a client area of kWidth by kHeight: where the frame
    // takes its part of the window's size, the window grows by as much.
    clRect client = WindowClientRect(windowHandle);
    clRect outer = WindowScreenRect(windowHandle);
    SetPlacement(kKeepPlacement, kKeepPlacement, outer.Width() + U(kWidth) - client.Width(),
                 outer.Height() + U(kHeight) - client.Height());
    clRect over;
    if (input->centerOnWindow != 0 && ToolkitForeignWindowRect(input->centerOnWindow, over) && over.Width() >= 6 &&
        over.right >= 6) {
        clRect now = WindowScreenRect(windowHandle);
        SetPlacement(over.left + (over.Width() - now.Width()) / 2, over.top + (over.Height() - now.Height()) / 2,
                     kKeepPlacement, kKeepPlacement);
    } else if (owner != nullptr) {
        CenterOver(owner);
    } else {
        CenterOnScreen();
    }
    WindowShow(windowHandle, true);
    return true;
}

int32_t frmConvertToOpt::Run(clWindowHandle owner) {
    if (!Open(owner)) return 0;
    RunModal();
    return result;
}

intptr_t frmConvertToOpt::OnCreate() {
    int32_t right = U(kWidth - kMargin);
    closeCorner = CreateControl(kControlButton, windowHandle, kIdCloseCorner, u"X",
                                clRect::Sized(right - U(20), U(4), U(20), U(20)));
    helpCorner = CreateControl(kControlButton, windowHandle, kIdHelpCorner, u"?",
                               clRect::Sized(right - U(44), U(4), U(20), U(20)));
    cmbEncoders.Create(windowHandle, kIdEncoderList, clRect::Sized(U(kMargin), U(30), U(278), U(24)));
    fileButton = CreateControl(kControlButton, windowHandle, kIdFileCount, clString(),
                               clRect::Sized(U(298), U(29), right - U(298), U(26)));
    cmbOutToFolder.Create(windowHandle, kIdOutputList,
                          clRect::Sized(U(kMargin), U(kOutputTop), right - U(kMargin), U(24)));
    UpdateFileCount();
    FillEncoderList();

    static const char16_t* const kCommands[kOutputCommands] = {u"Preserve Source Path", u"Single Folder",
                                                               u"Existing Source Folder(s)", u"Edit Dynamic Naming"};
    for (const char16_t* command : kCommands) cmbOutToFolder.AddItem(clString(command));
    cmbOutToFolder.Item(kOutputCommands - 1)->separatorBelow = true;
    cmbOutToFolder.fixedRows = kOutputCommands;
    bool added = false;
    for (int32_t n = kRememberedFolders - 1; n >= 0; --n) {
        clString text = GetSettingText(clString::Formatted(u"qvtLastFolder-%d", n).text);
        if (text.IsEmpty()) continue;
        AddOutputRow(text, false, false, false);
        added = true;
    }
    if (!added) {
        // Behind the commands, the last one added comes first: the user's
        // music folder.
        AddOutputRow(GetSpecialFolder(55), true, false, true);
        AddOutputRow(GetSpecialFolder(clFolderVideo), true, false, true);
        AddOutputRow(GetSpecialFolder(53), false, false, true);
        AddOutputRow(GetSpecialFolder(clFolderMusic), false, false, true);
    }

    effectList.Create(windowHandle, U(kMargin), U(kEffectsTop), U(320), U(65), true, true);
    effects.Attach(effectList, windowHandle);
    addButton = CreateControl(kControlButton, windowHandle, kIdAddEffect, u"Add",
                              clRect::Sized(right - U(72), U(kEffectsTop), U(72), U(26)));
    int32_t buttonTop = U(kHeight - kMargin - 26);
    cancelButton = CreateControl(kControlButton, windowHandle, 2, u"Cancel",
                                 clRect::Sized(right - U(196), buttonTop, U(90), U(26)));
    convertButton = CreateControl(kControlButton, windowHandle, 1, u"Convert >>",
                                  clRect::Sized(right - U(100), buttonTop, U(100), U(26)));
    ShowEncoderPage(true);
    WindowAcceptDrops(windowHandle, true);
    handOverEvent.Create(kHandOverEventName);
    SetTimerEx(500, 0, kTimerId);
    WindowSetFocus(cmbEncoders.control);
    return 0;
}

intptr_t frmConvertToOpt::OnDestroy() {
    RemoveEncoderPage(false);
    handOverEvent.Close();
    return 0;
}

intptr_t frmConvertToOpt::OnPaint(clCanvas* canvas) {
    clFontSpec bold;
    bold.bold = true;
    canvas->SetFont(bold);
    canvas->Text(U(kMargin), U(10), clString(u"Encoding"), kHeadingColor, clNoColor);
    canvas->Text(U(kMargin), U(kOutputTop - 20), clString(u"Output To"), kHeadingColor, clNoColor);
    canvas->Text(U(kMargin), U(kEffectsTop - 20), clString(u"DSP Effects"), kHeadingColor, clNoColor);
    if (!WindowIsEnabled(cmbOutToFolder.control)) {
        canvas->FramedRect(clRect::Sized(U(kMargin), U(kOutputTop), U(kWidth - 2 * kMargin), U(24)),
                           kDisabledFill, kGreyText, 0, 1);
        clFontSpec small;
        small.height = 13;
        canvas->SetFont(small);
        canvas->Text(U(kMargin + 6), U(kOutputTop + 5), clString(u"<not required for encoder>"), kGreyText, clNoColor);
    }
    return 0;
}

// ---- the encoder list and its pages ----

void frmConvertToOpt::FillEncoderList() {
    cmbEncoders.Clear();
    int64_t chosen = BuildEncoderRows(rows, globalEncoder);
    for (int64_t i = 0; i < rows.Count(); ++i) {
        const clEncoderRow& row = rows[i];
        int32_t item = cmbEncoders.AddItem(row.text, static_cast<uint64_t>(i));
        clDropItem* drop = cmbEncoders.Item(item);
        drop->separatorAbove = row.separatorAbove;
        drop->separatorBelow = row.separatorBelow;
        if (row.color != 0) {
            cmbEncoders.AddRun(item, row.text, row.color);
        }
        if (row.kind == kEntryCreateProfile || row.kind == kEntryDeleteProfile) continue;
        drop->image = RowIcon(row);
    }
    if (chosen >= 0) cmbEncoders.SetSelection(static_cast<int32_t>(chosen));
}

// The icon beside the library, else the desktop's for its files; kept
// with the window's icons.
clImageHandle frmConvertToOpt::RowIcon(const clEncoderRow& row) {
    clImageHandle icon = nullptr;
    if (!row.libraryPath.IsEmpty()) icon = LoadImageFile(clString(RemoveExtension(row.libraryPath).text, u".ico"), 16, 16);
    if (icon == nullptr && row.extension.CharAt(1) == u'.') icon = FileTypeIcon(row.extension, 16);
    if (icon != nullptr) icons.Add(icon);
    return icon;
}

int32_t frmConvertToOpt::SelectedEncoderRow() const { return cmbEncoders.GetSelection(); }

clString frmConvertToOpt::SelectedOutput() const { return cmbOutToFolder.ItemText(cmbOutToFolder.GetSelection()); }

void frmConvertToOpt::SelectEntryRow(const clString& entry) {
    int32_t row = cmbEncoders.FindExact(entry);
    if (row >= 0) cmbEncoders.SetSelection(row);
}

void frmConvertToOpt::ShowEncoderPage(bool first) {
    int32_t row = SelectedEncoderRow();
    clString text = cmbEncoders.ItemText(row);
    if (!currentEntry.IsEmpty() && text.Equals(currentEntry)) return;
    RemoveEncoderPage(true);
    const qv_log_record noLog{};
    if (!text.IsEmpty() && clQvCodecHandler::LoadEncoder(EncoderOfProfile(text), encoder, &noLog)) {
        clString options =
            GetSettingText(kEntryOptionsSetting.name, settingsRootHive, EntryKeyPath(text, globalProfile).text);
        page = encoder.ShowConfigBit != nullptr
                   ? encoder.ShowConfigBit(encoder.instance, windowHandle, kPageLeft, kPageTop, options.text)
                   : nullptr;
        // The items of the multi encoder, and a library that describes its
        // options, get their page built here.
        qv_query_record query{};
        if (page == nullptr && IsMultiEncoder(EncoderOfProfile(text))) {
            multiPage.Show(windowHandle, U(kPageLeft), U(kPageTop), U(kWidth - 2 * kMargin),
                           U(kOutputTop - 28 - kPageTop), options);
        } else if (page == nullptr && encoder.Get(encoder.instance, u"OptionSpec", &query) != 0 &&
                   query.text1 != nullptr) {
            ParseOptionSpec(clString(query.text1), settingsPage.fields);
            settingsPage.Show(windowHandle, U(kPageLeft), U(kPageTop), U(kWidth - 2 * kMargin), options);
        }
        // The tab order runs through the page right after the file count.
        clWindowHandle previous = fileButton;
        if (page != nullptr) WindowPlaceAfter(static_cast<clWindowHandle>(page), previous);
        clPointerArray pageControls;
        for (int64_t i = 0; i < settingsPage.controls.count; ++i) pageControls.Add(settingsPage.controls[i]);
        for (int32_t i = 0; multiPage.IsShown() && i < multiPage.ControlCount(); ++i) pageControls.Add(multiPage.Control(i));
        for (int64_t i = 0; i < pageControls.count; ++i) {
            auto control = static_cast<clWindowHandle>(pageControls[i]);
            WindowPlaceAfter(control, previous);
            previous = control;
        }
        currentEntry = text;
    }
    OnEntryChanged(first);
}

clString frmConvertToOpt::RemoveEncoderPage(bool save) {
    if (currentEntry.IsEmpty()) return clString();
    clString options;
    if (encoder.instance != 0 && encoder.RemoveConfigBit != nullptr) {
        const qv_char* text = encoder.RemoveConfigBit(encoder.instance, windowHandle);
        if (text != nullptr) options = text;
    }
    if (settingsPage.IsShown()) options = settingsPage.Options();
    if (multiPage.IsShown()) options = multiPage.Options();
    settingsPage.Remove();
    multiPage.Remove();
    page = nullptr;
    if (save) {
        SetSettingText(options, kEntryOptionsSetting.name, settingsRootHive,
                       EntryKeyPath(currentEntry, globalProfile).text);
        SaveEntrySettings(currentEntry);
    }
    encoder.DestroyInstance();
    currentEntry.Clear();
    return options;
}

clString frmConvertToOpt::PageOptions() {
    if (settingsPage.IsShown()) return settingsPage.Options();
    if (multiPage.IsShown()) return multiPage.Options();
    if (currentEntry.IsEmpty() || encoder.instance == 0 || encoder.RemoveConfigBit == nullptr) return clString();
    // The sentinel in place of the parent: report, and leave the page.
    const qv_char* text = encoder.RemoveConfigBit(encoder.instance, reinterpret_cast<void*>(static_cast<intptr_t>(-123)));
    return text != nullptr ? clString(text) : clString();
}

void frmConvertToOpt::OnEntryChanged(bool first) {
    clString oldOutput = cmbOutToFolder.previousOutput;
    clString oldEffects = effectText;
    disableSameFolder = disableConvertToFolder = false;
    WindowEnable(cmbOutToFolder.control, true);
    clString entry = cmbEncoders.ItemText(SelectedEncoderRow());
    clString key = EntryKeyPath(entry, globalProfile);

    clString notice;
    clWindowHandle noticeControl = nullptr;
    clString output = EntryOutputText(key);
    if (!output.Equals(oldOutput)) {
        notice = u"Output Location";
        noticeControl = cmbOutToFolder.control;
        AddOutputRow(output, false, true, false);
    }
    effectText = entry.EqualsNoCase(kMultiEncoder)
                     ? clString()
                     : GetSettingText(kEntryEffectsSetting.name, settingsRootHive, key.text);
    ShowEffects();
    if (!effectText.Equals(oldEffects)) {
        if (!notice.IsEmpty()) notice.Append(u", ");
        notice.Append(u"DSP Effects");
        if (noticeControl == nullptr) noticeControl = effectList.listHandle;
    }
    if (!first && noticeControl != nullptr) {
        notice.Append(u" Changed");
        ShowNotice(notice, noticeControl, 2000);
    }
    if (encoder.instance != 0 && !currentEntry.IsEmpty()) {
        qv_query_record query{};
        disableSameFolder = encoder.Get(encoder.instance, u"DisableSameFolder", &query) != 0;
        query = qv_query_record{};
        disableConvertToFolder = encoder.Get(encoder.instance, u"DisableConvertToFolder", &query) != 0;
    }
    // A disabled edit box would still show the last location, as if it
    // applied; in its place the window paints the note (OnPaint).
    WindowEnable(cmbOutToFolder.control, !disableConvertToFolder);
    WindowShow(cmbOutToFolder.control, !disableConvertToFolder);
    WindowEnable(addButton, !TakesNoEffects(entry));
    WindowInvalidate(windowHandle, nullptr);
}

// The effects of the entry as rows; choosing and ordering them is the
// effect selection's.
void frmConvertToOpt::ShowEffects() {
    effectList.Clear();
    clString entry = cmbEncoders.ItemText(SelectedEncoderRow());
    if (entry.EqualsNoCase(kMultiEncoder)) {
        effectList.AddNoteRow(u"<set DSP effects on each multi-encoder settings page>", kGreyText);
        return;
    }
    effects.Load(effectText);
}

void frmConvertToOpt::SaveEntrySettings(const clString& entry) {
    clString key = EntryKeyPath(entry, globalProfile);
    SaveEntryOutput(key, SelectedOutput());
    SetSettingText(entry.EqualsNoCase(kMultiEncoder) ? clString() : effects.Stored(), kEntryEffectsSetting.name,
                   settingsRootHive, key.text);
}

void frmConvertToOpt::SaveLastChoices() {
    RemoveEncoderPage(true);
    SetSettingText(globalEncoder, LastEntryValueName().text);
    clString selected = SelectedOutput();
    int32_t counter = 0;
    for (int32_t i = cmbOutToFolder.fixedRows; i < cmbOutToFolder.Count(); ++i) {
        clString text = cmbOutToFolder.ItemText(i);
        if (text.Equals(selected)) continue;
        SetSettingText(text, clString::Formatted(u"qvtLastFolder-%d", counter++).text);
    }
}

void frmConvertToOpt::CreateProfile() {
    int32_t shown = cmbEncoders.FindExact(currentEntry);
    clString encoderName = EncoderOfProfile(currentEntry);
    clStringList profiles;
    for (int64_t i = 0; i < rows.Count(); ++i) {
        if (rows[i].kind == kEntryProfile) profiles.Add(rows[i].text);
    }
    frmNewProfile window(encoderName, profiles);
    if (currentEntry.IsEmpty() || window.Run(windowHandle) != 1) {
        if (shown >= 0) cmbEncoders.SetSelection(shown);
        return;
    }
    clEncoderRow& row = rows.AddRow(window.result);
    row.kind = kEntryProfile;
    row.extension = EncoderExtension(encoderName);
    row.libraryPath = EncoderLibraryPath(encoderName);
    int32_t item = cmbEncoders.AddItem(window.result, static_cast<uint64_t>(rows.Count() - 1));
    cmbEncoders.Item(item)->image = RowIcon(row);
    cmbEncoders.SetSelection(item);
}

void frmConvertToOpt::DeleteProfile() {
    int32_t shown = cmbEncoders.FindExact(currentEntry);
    if (shown < 0 || rows[static_cast<int64_t>(cmbEncoders.Item(shown)->tag)].kind != kEntryProfile) {
        if (shown >= 0) cmbEncoders.SetSelection(shown);
        return;
    }
    clString question = clString::Formatted(u"Delete Profile '%s'?", currentEntry.text);
    if (clMessageBox(question, clString(clProgramCaption), 36) != clIdYes) {
        cmbEncoders.SetSelection(shown);
        return;
    }
    ::DeleteProfile(currentEntry);
    rows[static_cast<int64_t>(cmbEncoders.Item(shown)->tag)].kind = kEntryInstalled;
    cmbEncoders.DeleteItem(shown);
    cmbEncoders.SetSelection(0);
    // Nothing to save for the entry that's gone: the page goes unsaved.
    RemoveEncoderPage(false);
}

// ---- the output list ----

void frmConvertToOpt::AddOutputRow(const clString& text, bool mustExist, bool select, bool asFolder) {
    if (text.IsEmpty()) return;
    if (mustExist && !PathExists(text)) return;
    clString row(text);
    if (asFolder) {
        AddBackslash(row);
        row.Append(u"{_._}[origfilename]");
    }
    int32_t existing = -1;
    for (int32_t i = cmbOutToFolder.fixedRows; i < cmbOutToFolder.Count(); ++i) {
        if (cmbOutToFolder.ItemText(i).Equals(row)) existing = i;
    }
    if (existing >= 0) cmbOutToFolder.DeleteItem(existing);
    // The field shows the friendly view too, without its colours.
    clString markup = FriendlyFolderName(HighlightNaming(row), true);
    clString shown = MarkupPlainText(markup);
    int32_t item = cmbOutToFolder.InsertItem(cmbOutToFolder.fixedRows, row, 0, &shown);
    clString folder, naming;
    SplitOutputText(row, folder, naming);
    clImageHandle icon = FolderIcon(folder, 16);
    if (icon != nullptr) {
        icons.Add(icon);
        cmbOutToFolder.Item(item)->image = icon;
    }
    clMarkupRuns runs;
    RenderMarkup(markup, runs);
    for (int64_t i = 0; i < runs.Count(); ++i) cmbOutToFolder.AddRun(item, runs[i].text, runs[i].color);
    if (select) {
        cmbOutToFolder.SetSelection(item);
        // A long text shows from its start: the folder is what tells rows apart.
        EditSetSelection(cmbOutToFolder.edit, 0, 0);
        cmbOutToFolder.previousOutput = row;
        RefreshOutputPreview();
    }
}

void frmConvertToOpt::RefreshOutputPreview() {
    clString preview = MarkupPlainText(FriendlyFolderName(HighlightNaming(SelectedOutput()), true));
    outputTip.Deactivate();
    outputTip.Activate(preview, cmbOutToFolder.control, clRect{});
}

void frmConvertToOpt::ChooseOutputCommand(int32_t row) {
    if (row >= cmbOutToFolder.fixedRows) {
        cmbOutToFolder.previousOutput = cmbOutToFolder.ItemText(row);
        RefreshOutputPreview();
        return;
    }
    auto restore = [this] {
        int32_t previous = -1;
        for (int32_t i = cmbOutToFolder.fixedRows; i < cmbOutToFolder.Count() && previous < 0; ++i) {
            if (cmbOutToFolder.ItemText(i).Equals(cmbOutToFolder.previousOutput)) previous = i;
        }
        if (previous >= 0) cmbOutToFolder.SetSelection(previous);
        else AddOutputRow(cmbOutToFolder.previousOutput, false, true, false);
    };
    if (row == kOutputSourceFolders) {
        AddOutputRow(clString(kSourceFoldersOutput), false, true, false);
    } else if (row == kOutputEditNaming) {
        clString naming;
        if (askNaming != nullptr) {
            naming = askNaming(*this, cmbOutToFolder.previousOutput);
        } else {
            naming = cmbOutToFolder.previousOutput;
            if (!EditNaming(windowHandle, naming)) naming.Clear();
        }
        if (naming.IsEmpty()) restore();
        else AddOutputRow(naming, false, true, false);
    } else if (row == kOutputPreservePath || row == kOutputSingleFolder) {
        clString folder = askFolder != nullptr
                              ? askFolder(*this)
                              : ChooseFolder(windowHandle, clString(u"Quillotone: Select Output Folder"));
        if (folder.IsEmpty()) {
            restore();
        } else {
            AddBackslash(folder);
            folder.Append(row == kOutputPreservePath ? u"{_._}[origpath]\\[origfilename]" : u"{_._}[origfilename]");
            AddOutputRow(folder, false, true, false);
        }
    }
    RefreshOutputPreview();
}

// ---- files ----

void frmConvertToOpt::UpdateFileCount() {
    int64_t count = 0;
    for (int64_t i = 0; i < input->sources.count; ++i) {
        if (input->sources.At<clSourceFile>(i)->excluded == 0) ++count;
    }
    clString text = clString::Formatted(u"%lld", static_cast<long long>(count));
    LocalizeNumber(text);
    text.Append(count == 1 ? u" File" : u" Files");
    WindowSetText(fileButton, text);
}


void frmConvertToOpt::AddDroppedPaths(const clStringList& paths) {
    clStringList extensions;
    ScanDecoders(false, &extensions, nullptr);
    for (int64_t i = 0; i < paths.Count(); ++i) {
        bool folder = false;
        if (PathExists(paths[i], &folder) && folder) {
            input->AddFolder(paths[i], extensions);
        } else if (extensions.Find(GetExtension(paths[i]).text, true)) {
            input->AddSource(paths[i], true);
        }
    }
    UpdateFileCount();
}

void frmConvertToOpt::ShowNotice(const clString& text, clWindowHandle control, uint32_t milliseconds) {
    noticeTip.Deactivate();
    noticeTip.delay = 1;
    noticeTip.duration = static_cast<int32_t>(milliseconds);
    clRect at = WindowScreenRect(control != nullptr ? control : windowHandle);
    noticeTip.Activate(text, nullptr, clRect::Sized(at.left + U(30), at.top + U(10), at.Width(), at.Height()));
}

void frmConvertToOpt::OpenListAndRename() {
    noticeTip.Deactivate();
    if (!currentEntry.IsEmpty()) SaveEntrySettings(currentEntry);
    clString entry = cmbEncoders.ItemText(SelectedEncoderRow());
    clString folder, naming;
    LoadOutputSettings(EntryKeyPath(entry, globalProfile), folder, naming);
    int32_t answer = 0;
    frmListNRename window(&answer, input->sources, EncoderOfProfile(entry), folder, PageOptions(), naming,
                           entry.EqualsNoCase(kMultiEncoder) ? clString() : effects.Stored());
    window.Run(windowHandle);
    UpdateFileCount();
}

// ---- messages ----

intptr_t frmConvertToOpt::OnCommand(uint32_t id, clWindowHandle, uint32_t notifyCode) {
    if (id == kIdEncoderList && notifyCode == kCbnSelChange) {
        int32_t row = SelectedEncoderRow();
        clDropItem* item = cmbEncoders.Item(row);
        if (item == nullptr) return 0;
        const clEncoderRow& record = rows[static_cast<int64_t>(item->tag)];
        if (record.kind == kEntryNotInstalled) {
            SelectEntryRow(currentEntry);
            clString question(u"The encoder '", record.text.text);
            question.Append(u"' has to be downloaded and installed before it can be used.\r\n\r\nDownload encoder from "
                            u"Internet now?");
            if (clMessageBox(question, clString(clProgramCaption), 0x40004) == clIdYes) {
                PlatformOpenDocument(record.downloadUrl);
            }
        } else if (record.kind == kEntryCreateProfile) {
            CreateProfile();
        } else if (record.kind == kEntryDeleteProfile) {
            DeleteProfile();
        }
        globalEncoder = cmbEncoders.ItemText(SelectedEncoderRow());
        ShowEncoderPage(false);
        return 0;
    }
    if (id == kIdOutputList && notifyCode == kCbnSelChange) {
        ChooseOutputCommand(cmbOutToFolder.GetSelection());
        return 0;
    }
    if (notifyCode != kBnClicked) return 0;
    if (multiPage.IsShown() && multiPage.OnCommand(id)) return 0;
    if (id == kIdFileCount) OpenListAndRename();
    if (id == kIdAddEffect && WindowIsEnabled(addButton)) {
        if (!cmbEncoders.ItemText(SelectedEncoderRow()).EqualsNoCase(kMultiEncoder)) effects.ShowMenu(addButton);
    }
    if (id == kIdCloseCorner) closeRequested = true;
    if (id == kIdHelpCorner) PlatformOpenDocument(JoinPath(GetProgramFolder(), clString(u"Help\\qvt\\qvt.htm")));
    return 0;
}

intptr_t frmConvertToOpt::OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                       uint32_t* handledFlag) {
    effectList.OnRawMessage(window, message, wParam, lParam, handledFlag);
    if (*handledFlag != 0) return 0;
    if (multiPage.IsShown()) multiPage.list.OnRawMessage(window, message, wParam, lParam, handledFlag);
    if (*handledFlag != 0) return 0;
    if (message == kWmDropFiles) {
        clStringList paths;
        DroppedPaths(wParam, paths);
        AddDroppedPaths(paths);
        *handledFlag = 1;
    }
    return 0;
}

intptr_t frmConvertToOpt::OnTimer(uint64_t id, uint64_t) {
    if (id != kTimerId) return 0;
    if (closeRequested) {
        // "X" leaves without saving what changed since the last save.
        result = 0;
        EndModal(2);
        return 0;
    }
    if (TakeHandedOverFiles(handOverEvent, *input)) {
        UpdateFileCount();
        WindowBringToFront(windowHandle);
    }
    if (input->excludedFiles.Count() > 0) {
        clString text(u"Non-audio files excluded from conversion:\r");
        for (int64_t i = 0; i < input->excludedFiles.Count(); ++i) {
            text.Append(u"\r");
            text.Append(input->excludedFiles[i]);
        }
        input->excludedFiles.Clear();
        ShowNotice(text, fileButton, 4000);
    }
    return 0;
}

intptr_t frmConvertToOpt::OnIdOk() {
    SaveLastChoices();
    result = 1;
    EndModal(1);
    return 0;
}

intptr_t frmConvertToOpt::OnIdCancel() {
    // Cancel keeps what was changed, as "Convert >>" does.
    SaveLastChoices();
    result = 0;
    EndModal(2);
    return 0;
}

intptr_t frmConvertToOpt::OnClose() { return OnIdCancel(); }
