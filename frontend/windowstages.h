// The program's windows as its entry sees them: one table of the stages
// that open windows. Where the window toolkit costs little to load
// (Windows) it is linked into the program; on Linux the table is the one
// entry of the forms module, which the program loads only when a window
// is to open, so that a conversion shown on the terminal never loads Qt
// (some fifty libraries, most of a short run's start).
#pragma once

#include "foundation/clstring.h"

class clConversionInput;

struct clWindowStages {
    // The test script's answers to the windows; nothing without one.
    void (*installScriptedAnswers)();
    // The report window of a crash record (dlgCrashReport).
    void (*showCrashReport)(const clString& record);
    void (*runOpenFileStage)(clConversionInput& input);
    bool (*runOptionsStage)(clConversionInput& input);
    void (*runConversionStage)(clConversionInput& input);
};

// The name the forms module exports the table by.
#define QV_WINDOW_STAGES "QvWindowStages"

extern "C" const clWindowStages* QvWindowStages();
