#include "crash/crashhandler.h"
#include "engine/globals.h"
#include "engine/mainflow.h"
#include "foundation/folders.h"
#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "foundation/platform/display.h"
#include "foundation/platform/dynlib.h"
#include "foundation/platform/processinfo.h"
#include "frontend/windowstages.h"

namespace {

#ifdef QV_FORMS_MODULE
// The forms and the toolkit under them, from the module beside the
// program; kept loaded for the rest of the process.
const clWindowStages* LoadWindowStages() {
    clString path = JoinPath(GetProgramFolder(), clString(u"" QV_FORMS_MODULE));
    clLibraryHandle library = PlatformLoadLibrary(path.text);
    auto entry = reinterpret_cast<const clWindowStages* (*)()>(PlatformGetSymbol(library, QV_WINDOW_STAGES));
    if (entry == nullptr) {
        if (library != 0) PlatformFreeLibrary(library);
        clString text(u"The program's windows can't be shown: '", path.text);
        text.Append(u"' can't be loaded. Reinstalling the program brings it back; qvt converts without it.");
        clMessageBox(text, clString(clProgramCaption), 0x10);
        return nullptr;
    }
    return entry();
}
#else
const clWindowStages* LoadWindowStages() { return QvWindowStages(); }
#endif

// The window stages, loaded at the first window; null when they can't be.
const clWindowStages* Windows() {
    static const clWindowStages* const stages = [] {
        const clWindowStages* loaded = LoadWindowStages();
        // A test's script answers every window from the first one on.
        if (loaded != nullptr) loaded->installScriptedAnswers();
        return loaded;
    }();
    return stages;
}

void ShowCrashReport(const clString& record) {
    if (const clWindowStages* windows = Windows()) windows->showCrashReport(record);
}

}  // namespace

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    // First of all, so that nothing after it can crash unrecorded; a report
    // instance ends in there.
    InstallCrashHandler(CrashBaseFolder(), ShowCrashReport);
    clMainFlowStages stages = clMainFlowStages::Defaults();
    stages.runOpenFileDialog = [](clConversionInput& input) {
        if (const clWindowStages* windows = Windows()) windows->runOpenFileStage(input);
    };
    stages.runOptionsWindow = [](clConversionInput& input) {
        const clWindowStages* windows = Windows();
        return windows != nullptr && windows->runOptionsStage(input);
    };
    stages.runConversionWindow = [](clConversionInput& input) {
        // Shown on the terminal, the conversion needs no window toolkit; and
        // without the forms it goes on there rather than not at all.
        const clWindowStages* windows = globalConsole || !PlatformHasDisplay() ? nullptr : Windows();
        if (windows != nullptr) {
            windows->runConversionStage(input);
        } else {
            RunConversionWindow(input);
        }
    };
    return TrackConverterMain(stages);
}
