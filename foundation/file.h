// clFile: the thin, unbuffered wrapper over a platform file handle through
// which all of the program's own file work goes.
//
// Failures come back as values (handle -1, a short count, false), never as
// exceptions. With `showErrors` set, a failed Open, Read or Write asks the
// user Retry or Cancel (clMessageBox) and repeats the operation for as long
// as the answer is Retry; threads that must not block leave it off.
// ReadLine reads unit by unit, without a buffer: it is for short text files
// (lists, settings). Position with PlatformSeekFile on `handle`.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/platform/fileio.h"

class clStringList;

class clFile {
public:
    clString fileName;    // as the caller gave it, without a long-path prefix
    clFileHandle handle;  // -1 when nothing is open
    bool showErrors;      // failures ask Retry / Cancel
    bool ownsHandle;      // Close closes the handle only when set
    uint32_t shareMode;   // passed when the caller asks for sharing

    clFile();
    ~clFile();
    clFile(const clFile&) = delete;
    clFile& operator=(const clFile&) = delete;

    void Open(uint32_t access, uint32_t disposition, bool showErrorsFlag, bool useShareMode);
    void Close();
    uint32_t Read(void* buffer, uint32_t count, bool* failed = nullptr);
    bool Write(const void* buffer, uint32_t count);
    // One line into `target`: wide (UTF-16LE units) or bytes; in byte mode
    // `utf8` decodes the line as UTF-8 and drops a byte-order mark at the
    // start of a line. False at the end of the file.
    bool ReadLine(clString& target, bool wide, bool utf8);

    static uint64_t GetFileSize64(const clString& path, bool* failed = nullptr);

private:
    bool ReadLineBytes(clString& target, bool utf8);
    bool ReadLineWide(clString& target);
};

// Writes each line as UTF-16LE followed by CR LF, without a byte-order
// mark: the form of list files. `append` adds to the end of what is there;
// otherwise the file is replaced. False when it could not be opened or
// written, and, with nothing written, when a line holds CR or LF.
bool WriteWideLines(const clString& path, const clStringList& lines, bool append);
