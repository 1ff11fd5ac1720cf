// The text of a conversion's error or information log, as the log window
// copies it and as the terminal prints it at the end of a run.
#pragma once

#include "engine/conversionjob.h"
#include "foundation/clstring.h"

// The item of a file: "Error converting to FLAC, 'a.wav' to 'a.flac'".
clString LogFileItemText(const clLogEntry& entry, bool isError);

// One item per file that has lines: "Error converting to <encoder>,
// '<source>' to '<output>'" (or "Information ..."), then each line after
// three blanks, then a line of three blanks; CR LF between lines. Files
// without lines are left out.
clString LogReportText(const clLogEntries& entries, bool errors);

// "Quillotone: Conversion Errors", "... Errors & Information" or
// "... Information", by which of the two logs have entries.
clString LogReportTitle(bool hasErrors, bool hasInfos);
