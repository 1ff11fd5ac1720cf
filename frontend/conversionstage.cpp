#include "frontend/conversionstage.h"

#include "engine/globals.h"
#include "engine/mainflow.h"
#include "engine/terminalview.h"
#include "foundation/messagebox.h"
#include "foundation/platform/processinfo.h"
#include "foundation/pathtext.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "frontend/frmconverting.h"
#include "frontend/frmconverttoopt.h"
#include "frontend/frmerrorsinfo.h"
#include "frontend/frmoverwrite.h"
#include "plugins/filetypes.h"
#include "plugins/sourcefile.h"
#include "toolkit/application.h"
#include "toolkit/dialogs.h"

bool ConversionHasWindow() { return !globalConsole && ToolkitHasDisplay() && ToolkitStart(); }

namespace {

// Told to ask nobody, questions keep their safe answer and their line on
// standard error.
bool QuestionsAllowed() {
    clString flag;
    return !(PlatformGetEnvironment(u"QUILLOTONE_NONINTERACTIVE", flag) && flag.Equals(u"1"));
}

// Without the overwrite window: "always" overwrites, "skip" skips every
// existing file, and a question the user can't be asked keeps them too.
bool AnswerOverwriteByMode(clOverwriteItems& items, clOverwriteMode mode) {
    if (mode == kOverwriteAlways) return true;
    for (int64_t i = 0; i < items.Count(); ++i) {
        if (items[i].exists != 0) items[i].skip = 1;
    }
    return true;
}

}  // namespace

void UseToolkitMessageBoxes() {
    if (!QuestionsAllowed()) return;
    SetMessageBoxHandler([](const clString& text, const clString& caption, uint32_t type) {
        return static_cast<int>(ToolkitMessageBox(nullptr, text, caption, type));
    });
}

clConversionServices WindowServices() {
    clConversionServices services = clConversionServices::Defaults();
    services.askCancel = [] {
        return clMessageBox(u"Cancel Conversion?", clString(clProgramCaption), 0x24) == clIdYes;
    };
    const auto mode = static_cast<clOverwriteMode>(globalOverwriteMode);
    services.askOverwrite = [mode](clOverwriteItems& items) {
        if (mode == kOverwriteAsk && QuestionsAllowed()) {
            int32_t result = 0;
            frmOverwrite window(&result, items, items[0].encoderName, items[0].extension);
            return window.Run(nullptr) == 1;
        }
        return AnswerOverwriteByMode(items, mode);
    };
    services.tellRenamed = [](const clOverwriteItems& renamed) {
        if (renamed.Count() == 0) return;
        clString text(u"Several files of this conversion had the same output; these got names of their own:");
        for (int64_t i = 0; i < renamed.Count() && i < 10; ++i) {
            text.Append(u"\r\n");
            text.Append(renamed[i].newPath);
        }
        clMessageBox(text, clString(clProgramCaption), 0x40);
    };
    services.showLogs = [](const clLogEntries& errors, const clLogEntries& infos) {
        if (QuestionsAllowed()) {
            frmErrorsInfo window(&errors, &infos, true);
            window.Run(nullptr);
            return;
        }
        clMessageBox(LogsText(errors, infos), clString(clProgramCaption), errors.Count() > 0 ? 0x30u : 0x40u);
    };
    return services;
}

void RunConversionStage(clConversionInput& input) {
    if (!ConversionHasWindow()) {
        RunConversionWindow(input);
        return;
    }
    UseToolkitMessageBoxes();
    frmConverting window(input, WindowServices());
    if (window.Run() < 0) {
        // No window could be made after all: the terminal shows it.
        RunConversionWindow(input);
    }
}

bool RunOptionsStage(clConversionInput& input) {
    // Told to ask nobody, a window that waits for a choice would wait for ever.
    if (!ConversionHasWindow() || !QuestionsAllowed()) {
        clMessageBox(u"Choosing how to convert needs the options window, and so a display. Without one, name the "
                     u"encoder with -select_profile= and add -skip_ready_to_conv, or convert with qvt.",
                     clString(clProgramCaption), 0x30);
        return false;
    }
    UseToolkitMessageBoxes();
    frmConvertToOpt window(input);
    return window.Run(nullptr) == 1;
}

namespace {

bool ChooseWithDialog(const clString& title, const clStringList& filters, const clString& initialFolder,
                      clStringList& chosen) {
    return ChooseFiles(nullptr, title, filters, initialFolder, chosen);
}

clFileChooser fileChooser = ChooseWithDialog;

}  // namespace

void SetFileChooser(clFileChooser chooser) { fileChooser = chooser != nullptr ? chooser : ChooseWithDialog; }

void RunOpenFileStage(clConversionInput& input) {
    if (!ConversionHasWindow() || !QuestionsAllowed()) return;
    clStringList filters;
    ScanDecoders(true, nullptr, &filters);
    clStringList chosen;
    if (!fileChooser(clString(u"Quillotone Track Converter: Select Audio File(s)"), filters,
                     GetSettingText(u"LastAccessedFolder"), chosen)) {
        return;
    }
    SetSettingText(GetFolderPart(chosen[0]), u"LastAccessedFolder");
    // The dialog's filter has chosen them: they don't pass the extension test.
    for (int64_t i = 0; i < chosen.Count(); ++i) input.sources.Add(new clSourceFile(chosen[i]));
}
