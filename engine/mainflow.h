// The program's road from process start to process end: command-line
// handling and the main flow, which runs the options window and then the
// conversion window once each and never loops.
//
// The stages that other parts of the program provide are reached through
// clMainFlowStages, so that tests can follow the flow stage by stage. The
// defaults are the program's own functions; those whose subsystem is not
// built yet are named seams below and do nothing.
#pragma once

#include <functional>

#include "foundation/clstring.h"

class clConversionInput;
class clByteBuffer;

struct clMainFlowStages {
    // Accepted extensions from the installed decoders' file-type filter.
    std::function<void(clConversionInput&)> addDecoderExtensions;
    // Offers a list file to an options window open in another process;
    // true when that window took the files.
    std::function<bool(const clString& listFile)> handOverToOpenWindow;
    // The last entry used, from the setting "qvtLastCodec" + profile.
    std::function<clString(const clString& settingName)> readLastEncoder;
    // Parses the extras file (a tag block) into the naming extras.
    std::function<void(const clByteBuffer& block)> loadNamingExtras;
    // Sets a named event so that the caller of -list_to_conv knows the
    // files were taken.
    std::function<void(const clString& eventName)> signalGotFiles;
    std::function<void(clConversionInput&)> runOpenFileDialog;
    // True when the user started the conversion.
    std::function<bool(clConversionInput&)> runOptionsWindow;
    std::function<void(clConversionInput&)> runConversionWindow;
    // Starts a program of the installation, not waiting for it.
    std::function<bool(const clString& program)> startProgram;
    // Shows a message to the user (no owner, topmost).
    std::function<void(const clString& text)> showMessage;

    // The program's own stages.
    static clMainFlowStages Defaults();
};

// Sets the named event of -signal_event_got_files.
void SignalGotFilesEvent(const clString& eventName);
// Reads the string setting that names the last entry used.
clString ReadLastEncoderSetting(const clString& settingName);
// Writes the four values a first start seeds, unless "Mp3TagDefault"
// already exists under the tagging key.
void SeedFirstStartSettings();

constexpr const char16_t* clProgramCaption = u"Quillotone Track Converter";

// Applies the command-line rules; false ends the process.
bool HandleCommandLine(const clString& commandLine, clConversionInput& input, const clMainFlowStages& stages);
// Runs the main flow once with the process's command line text.
void RunMainFlow(const clString& commandLine, clConversionInput& input, const clMainFlowStages& stages);
// The process entry: start-up, main flow with these stages, end. Returns
// 0, or with -console the outcome of the conversion.
int TrackConverterMain(const clMainFlowStages& stages);

// The accepted extensions: those the decoder libraries list.
void AddDecoderExtensions(clConversionInput& input);
// The naming extras of -dynamic_naming_extras, a tag block, into
// globalNamingExtras.
void LoadNamingExtras(const clByteBuffer& block);
// Seams: stages whose subsystems come later. Each does nothing yet.
void RunOpenFileDialog(clConversionInput& input);
bool RunOptionsWindow(clConversionInput& input);
// The conversion on the terminal, as it is shown without a display.
void RunConversionWindow(clConversionInput& input);
void InstallCrashCapture(const clString& dumpFolder);
