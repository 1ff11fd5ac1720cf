#include "frontend/windowstages.h"

#include "crash/dlgcrashreport.h"
#include "frontend/conversionstage.h"
#include "frontend/scriptedanswers.h"

namespace {

void ShowCrashReport(const clString& record) { dlgCrashReport report(record); }

}  // namespace

extern "C" const clWindowStages* QvWindowStages() {
    static const clWindowStages stages = {InstallScriptedAnswers, ShowCrashReport, RunOpenFileStage, RunOptionsStage,
                                          RunConversionStage};
    return &stages;
}
