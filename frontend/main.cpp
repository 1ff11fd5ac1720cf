#include "engine/mainflow.h"
#include "foundation/platform/processinfo.h"
#include "frontend/conversionstage.h"
#include "frontend/scriptedanswers.h"

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    InstallScriptedAnswers();
    clMainFlowStages stages = clMainFlowStages::Defaults();
    stages.runOpenFileDialog = RunOpenFileStage;
    stages.runOptionsWindow = RunOptionsStage;
    stages.runConversionWindow = RunConversionStage;
    return TrackConverterMain(stages);
}
