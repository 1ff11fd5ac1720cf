#include "engine/mainflow.h"
#include "foundation/platform/processinfo.h"
#include "frontend/conversionstage.h"

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    clMainFlowStages stages = clMainFlowStages::Defaults();
    stages.runConversionWindow = RunConversionStage;
    return TrackConverterMain(stages);
}
