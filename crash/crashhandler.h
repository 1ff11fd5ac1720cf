// Crash capture for TrackConverter. Installed as the first act of the
// program's entry: from then on a crash leaves a record in the "crashes"
// folder below the base folder and starts the program again with
// "-crashed <record's name>", and that second instance shows the report
// window (dlgCrashReport) and ends. The crashed process itself runs
// nothing beyond the record and the relaunch.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

// The user's application data folder with "qvt" joined to it.
clString CrashBaseFolder();

// The record's name in `folder` for a process: "crash-<id>.dmp", or with
// "-1", "-2", ... behind the id when that is taken. Empty when no name is
// free (a folder holding thousands of records of one id).
clString ChooseCrashDumpName(const clString& folder, uint32_t processId);

// In a report instance (a "-crashed" switch, in any case) hands the record
// named, if it exists, to `showReport` (which shows dlgCrashReport) and
// ends the process with exit code 0. Otherwise chooses the record's name
// and installs the handler. The tests of this path set
// QUILLOTONE_TEST_CRASH to "fault" or "stack", and the program then
// crashes in that way as soon as the handler stands.
void InstallCrashHandler(const clString& baseFolder, void (*showReport)(const clString& record));
