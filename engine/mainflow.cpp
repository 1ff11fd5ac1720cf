#include "engine/mainflow.h"

#include <utility>

#include "engine/conversion.h"
#include "engine/conversioninput.h"
#include "engine/globals.h"
#include "engine/handover.h"
#include "engine/terminalview.h"
#include "foundation/bytebuffer.h"
#include "foundation/commandlinetext.h"
#include "foundation/commandoptions.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/specialfolder.h"
#include "foundation/stringlist.h"
#include "foundation/syncobjects.h"
#include "naming/sourcefacts.h"
#include "plugins/filetypes.h"

namespace {

constexpr const char16_t* kConcatExtension = u".quillotone-concat";

// Reads the whole extras file; anything short of a full, non-empty read is
// ignored without a word.
void ReadNamingExtras(const clString& path, const clMainFlowStages& stages) {
    if (path.IsEmpty()) return;
    clFile file;
    file.fileName = path;
    file.Open(clAccessRead, clOpenExisting, false, true);
    if (file.handle == clInvalidHandle) return;
    int64_t size = PlatformFileSizeOf(file.handle);
    if (size <= 0 || size > 0x7FFFFFFF) return;
    clByteBuffer block;
    if (!block.Resize(static_cast<uint64_t>(size), false, false, 0)) return;
    bool failed = false;
    uint32_t got = file.Read(block.data, static_cast<uint32_t>(size), &failed);
    if (failed || got != static_cast<uint32_t>(size)) return;
    block.writePos = block.size;
    globalNamingExtrasBlock.Assign(block);
    stages.loadNamingExtras(block);
}

bool LoadList(const clString& listFile, const clCommandOptions& options, clConversionInput& input,
              const clMainFlowStages& stages) {
    // Only a plain list of files may go to a window that is already open;
    // any other option asks for a run of this process's own.
    int64_t keys = options.keys.Count();
    bool mayHandOver = keys == 1 || (keys == 2 && input.centerOnWindow != 0);
    if (mayHandOver && stages.handOverToOpenWindow(listFile)) return false;
    input.LoadListFile(listFile);
    clString eventName = options.Get(u"signal_event_got_files");
    if (!eventName.IsEmpty()) stages.signalGotFiles(eventName);
    return true;
}

// Files and folders named on the command line, as a file manager starts
// the program: true when every argument is an existing path. They go to
// an options window open elsewhere if there is one (answered through
// `handedOver`), else folders are searched for audio and files are added
// as a list file's would be.
bool TakeNamedPaths(const clString& commandLine, clConversionInput& input, const clMainFlowStages& stages,
                    bool& handedOver) {
    clStringList words;
    SplitCommandLine(commandLine, words);
    if (words.Count() < 2) return false;
    clStringList paths;
    for (int64_t i = 1; i < words.Count(); ++i) {
        if (!PathExists(words[i])) return false;
        paths.Add(words[i]);
    }
    clString listFile;
    handedOver = false;
    if (MakeTempFile(listFile, "QvS")) {
        handedOver = WriteWideLines(listFile, paths, false) && stages.handOverToOpenWindow(listFile);
        DeleteFileEx(listFile);
    }
    if (handedOver) return true;
    for (int64_t i = 0; i < paths.Count(); ++i) {
        bool folder = false;
        PathExists(paths[i], &folder);
        if (folder) input.AddFolder(paths[i], input.extensions);
        else input.AddSource(paths[i], true);
    }
    return true;
}

}  // namespace

bool HandleCommandLine(const clString& commandLine, clConversionInput& input, const clMainFlowStages& stages) {
    clCommandOptions options;
    options.ParseCommandLine(commandLine);

    ReadNamingExtras(options.Get(u"dynamic_naming_extras"), stages);
    input.centerOnWindow = options.Get(u"centeronwnd").ToInt64();
    if (options.Has(u"skip_ready_to_conv")) globalSkipOptions = true;
    if (options.Has(u"console")) globalConsole = true;
    if (options.Has(u"quiet")) globalVerbosity = -1;
    if (options.Has(u"verbose")) globalVerbosity = 1;
    if (options.Has(u"overwrite")) {
        clString mode = options.Get(u"overwrite");
        globalOverwriteMode = mode.EqualsNoCase(u"always") ? kOverwriteAlways
                              : mode.EqualsNoCase(u"skip") ? kOverwriteSkip
                                                           : kOverwriteAsk;
    }
    if (options.Has(u"select_profile")) {
        clString encoder = options.Get(u"select_profile");
        encoder.Replace(u"{profileqt}", u"\"");
        globalEncoder = encoder;
    }
    if (options.Has(u"additionalprofile")) globalProfile = options.Get(u"additionalprofile");

    clString listFile = options.Get(u"list_to_conv");
    if (!listFile.IsEmpty()) return LoadList(listFile, options, input, stages);

    clString raw = options.GetRawArguments();
    if (raw.IsEmpty()) return true;
    if (raw.Equals(u"<config>")) {
        clString program = JoinPath(GetProgramFolder(), clString(u"QvConfig"));
        program.Append(PlatformExecutableSuffix());
        stages.startProgram(program);
        return false;
    }
    bool handedOver = false;
    if (TakeNamedPaths(commandLine, input, stages, handedOver)) return !handedOver;
    if (raw.Equals(u"<install>")) {
        stages.showMessage(
            clString(u"The codec installed is not compatible with the newer Quillotone (R12 and above)"));
    }
    clString message(u"Unknown Command Line: '", raw.text);
    message.Append(u"'");
    stages.showMessage(message);
    return false;
}

void RunMainFlow(const clString& commandLine, clConversionInput& input, const clMainFlowStages& stages) {
    stages.addDecoderExtensions(input);
    input.extensions.Add(kConcatExtension);
    if (!HandleCommandLine(commandLine, input, stages)) return;
    if (globalEncoder.IsEmpty()) {
        globalEncoder = stages.readLastEncoder(clString(kLastEntryPrefix, globalProfile.text));
    }
    if (input.sources.count == 0) {
        stages.runOpenFileDialog(input);
        if (input.sources.count == 0) return;
    }
    if (!globalSkipOptions && !stages.runOptionsWindow(input)) return;
    stages.runConversionWindow(input);
}

clMainFlowStages clMainFlowStages::Defaults() {
    clMainFlowStages stages;
    stages.addDecoderExtensions = AddDecoderExtensions;
    stages.handOverToOpenWindow = HandOverToOpenWindow;
    stages.readLastEncoder = ReadLastEncoderSetting;
    stages.loadNamingExtras = LoadNamingExtras;
    stages.signalGotFiles = SignalGotFilesEvent;
    stages.runOpenFileDialog = RunOpenFileDialog;
    stages.runOptionsWindow = RunOptionsWindow;
    stages.runConversionWindow = RunConversionWindow;
    stages.startProgram = [](const clString& program) {
        clStringList none;
        return PlatformStartProcess(program, none);
    };
    stages.showMessage = [](const clString& text) { clMessageBox(text, clString(clProgramCaption), clMbTopmost); };
    return stages;
}

clString ReadLastEncoderSetting(const clString& settingName) { return GetSettingText(settingName.text); }

void SeedFirstStartSettings() {
    if (SettingExists(kMp3TagSetting.name, kSettingsHive, kTaggingKey)) return;
    for (const auto& [setting, key] :
         {std::pair{kAlbumArtFolderSetting, kDiscRipperDefaultsKey}, std::pair{kMp3TagSetting, kTaggingKey},
          std::pair{kMp3UnicodeTagsSetting, kTaggingKey}, std::pair{kFrequencyConversionSetting, kSettingsRoot}}) {
        SetSettingNumber(setting.defaultValue, setting.name, kSettingsHive, key);
    }
}

// The caller created the event and waits on it, so it outlives our handle.
// A failure is ignored: the caller's wait is its own affair.
void SignalGotFilesEvent(const clString& eventName) {
    XEvent event;
    if (event.Create(eventName.text)) event.Set();
}

int TrackConverterMain(const clMainFlowStages& stages) {
    clString dumpFolder = GetSpecialFolder(clFolderAppData);
    AddBackslash(dumpFolder);
    dumpFolder.Append(u"qvt");
    InstallCrashCapture(dumpFolder);
    PlatformInitializeComponents();
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    SeedFirstStartSettings();
    {
        clConversionInput input;
        clString commandLine;
        PlatformGetCommandLine(commandLine);
        RunMainFlow(commandLine, input, stages);
    }
    PlatformUninitializeComponents();
    return globalExitCode;
}

void AddDecoderExtensions(clConversionInput& input) { ScanDecoders(false, &input.extensions, nullptr); }

void LoadNamingExtras(const clByteBuffer& block) { globalNamingExtras.LoadBlock(block.data, block.size); }

// Seams. Each stands for a stage of a subsystem that is not built yet and
// does nothing until it is.
void RunOpenFileDialog(clConversionInput& /*input*/) {}
bool RunOptionsWindow(clConversionInput& /*input*/) { return false; }
// The terminal view of the conversion, for machines without a display and
// for -console. An interrupt (Ctrl-C) asks whether to cancel, the way the
// Cancel button does: running workers are asked to stop, and nothing
// half-written stays.
void RunConversionWindow(clConversionInput& input) {
    clTerminalView view(clTerminalIo::Process(), static_cast<clOverwriteMode>(globalOverwriteMode));
    view.verbosity = static_cast<clVerbosity>(globalVerbosity);
    int code = view.Run(input, clConversionServices::Defaults());
    // A run ended by a signal says so whoever started it.
    if (globalConsole || code > kExitCancelled) globalExitCode = code;
}

void InstallCrashCapture(const clString& /*dumpFolder*/) {}
