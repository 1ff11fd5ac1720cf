#include "crash/crashhandler.h"
#include "engine/mainflow.h"
#include "foundation/platform/processinfo.h"
#include "frontend/conversionstage.h"
#include "frontend/scriptedanswers.h"

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    // First of all, so that nothing after it can crash unrecorded; a report
    // instance ends in there. A test's script answers the report window too.
    InstallCrashHandler(CrashBaseFolder(), InstallScriptedAnswers);
    InstallScriptedAnswers();
    clMainFlowStages stages = clMainFlowStages::Defaults();
    stages.runOpenFileDialog = RunOpenFileStage;
    stages.runOptionsWindow = RunOptionsStage;
    stages.runConversionWindow = RunConversionStage;
    return TrackConverterMain(stages);
}
