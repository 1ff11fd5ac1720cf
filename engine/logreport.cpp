#include "engine/logreport.h"

clString LogFileItemText(const clLogEntry& entry, bool isError) {
    clString text(isError ? u"Error" : u"Information");
    text.Append(u" converting to ");
    text.Append(entry.encoderName);
    text.Append(u", '");
    text.Append(entry.sourcePath);
    text.Append(u"' to '");
    text.Append(entry.outputPath);
    text.Append(u"'");
    return text;
}

clString LogReportText(const clLogEntries& entries, bool errors) {
    clString text;
    for (int64_t i = 0; i < entries.Count(); ++i) {
        const clLogEntry& entry = entries[i];
        if (entry.lines.Count() == 0) continue;
        if (!text.IsEmpty()) text.Append(u"\r\n");
        text.Append(LogFileItemText(entry, errors));
        for (int64_t k = 0; k < entry.lines.Count(); ++k) {
            text.Append(u"\r\n   ");
            text.Append(entry.lines[k]);
        }
        // The empty item that closes each file in the window.
        text.Append(u"\r\n   ");
    }
    return text;
}

clString LogReportTitle(bool hasErrors, bool hasInfos) {
    clString title(u"Quillotone: Conversion ");
    if (hasErrors) {
        title.Append(u"Errors");
        if (hasInfos) title.Append(u" & Information");
    } else {
        title.Append(u"Information");
    }
    return title;
}
