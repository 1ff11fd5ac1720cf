// The conversion stage of the main flow: in the conversion window when
// there is a display (and no -console), on the terminal otherwise.
#pragma once

#include "engine/conversion.h"
#include "foundation/clstring.h"

class clStringList;

class clConversionInput;

void RunConversionStage(clConversionInput& input);
// The options window when there is a display and questions may be asked
// (QUILLOTONE_NONINTERACTIVE isn't 1); otherwise a message that says how
// to convert without it. True when the user chose to convert.
bool RunOptionsStage(clConversionInput& input);
// The open-file dialog, when no files came on the command line and
// questions may be asked: the files chosen become sources as they are,
// and their folder is remembered.
void RunOpenFileStage(clConversionInput& input);
// What asks the user for files: the toolkit's open dialog, unless scripted
// answers stand in for it (scriptedanswers.h).
using clFileChooser = bool (*)(const clString& title, const clStringList& filters, const clString& initialFolder,
                               clStringList& chosen);
void SetFileChooser(clFileChooser chooser);
// True when the conversion is shown in a window: a display, no -console,
// and the toolkit started.
bool ConversionHasWindow();
// The window's questions and reports: the cancel question, the overwrite
// question (asked once for all existing files), renamed outputs and the
// logs at the end, each as a message of the toolkit.
clConversionServices WindowServices();
// Questions of the foundation (clMessageBox) become the toolkit's windows.
void UseToolkitMessageBoxes();
