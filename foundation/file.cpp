#include "foundation/file.h"

#include "foundation/messagebox.h"
#include "foundation/pathtext.h"
#include "foundation/platform/textcodec.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"

namespace {

constexpr uint32_t kRetryCancelInfo = 69;  // Retry/Cancel with the information icon
constexpr uint32_t kOkInfo = 64;

bool AskRetry(const char16_t* before, const clString& name, const char16_t* caption) {
    clString text(before, name.text);
    text.Append(u"'");
    return clMessageBox(text, clString(caption), kRetryCancelInfo) == clIdRetry;
}

void SeekBack(clFileHandle handle, int64_t bytes) {
    if (bytes > 0 && handle != clInvalidHandle) PlatformSeekFile(handle, -bytes, clSeekCurrent);
}

}  // namespace

clFile::clFile() : handle(clInvalidHandle), showErrors(false), ownsHandle(false), shareMode(clShareReadWrite) {}

clFile::~clFile() { Close(); }

void clFile::Open(uint32_t access, uint32_t disposition, bool showErrorsFlag, bool useShareMode) {
    for (;;) {
        handle = clInvalidHandle;
        ownsHandle = true;
        showErrors = showErrorsFlag;
        clString longName = GetLongPath(fileName, 260);
        if (!longName.IsEmpty()) {
            handle = PlatformOpenFile(longName.text, access, useShareMode ? shareMode : 0, disposition);
        }
        if (handle != clInvalidHandle || !showErrors) return;
        const char16_t* caption = (access & clAccessWrite) != 0 ? u"File Write Error" : u"File Read Error";
        if (!AskRetry(u"Unable to open '", fileName, caption)) return;
    }
}

void clFile::Close() {
    if (handle != clInvalidHandle && ownsHandle) PlatformCloseFile(handle);
    handle = clInvalidHandle;
}

uint32_t clFile::Read(void* buffer, uint32_t count, bool* failed) {
    for (;;) {
        PlatformSetLastError(0);
        uint32_t done = 0;
        bool fail = true;
        if (handle != clInvalidHandle) {
            bool ok = PlatformReadFile(handle, buffer, count, &done);
            uint32_t error = PlatformGetLastError();
            // A short read at the end of the file is no failure.
            fail = (!ok || done < count) && error != 0 && error != clErrorHandleEof;
        }
        if (failed != nullptr) *failed = fail;
        if (!fail || !showErrors) return done;
        if (!AskRetry(u"Unable to read from '", fileName, u"File Read Error")) return done;
    }
}

bool clFile::Write(const void* buffer, uint32_t count) {
    if (buffer == nullptr) {
        if (count == 0) return true;
        if (showErrors) {
            clMessageBox(clString(u"Error writing a NULL buffer to file"), clString(u"File Write Error"), kOkInfo);
        }
        return false;
    }
    for (;;) {
        uint32_t done = 0;
        if (handle != clInvalidHandle && PlatformWriteFile(handle, buffer, count, &done) && done == count) return true;
        if (!showErrors) return false;
        if (!AskRetry(u"Unable to write to '", fileName, u"File Write Error")) return false;
    }
}

bool clFile::ReadLine(clString& target, bool wide, bool utf8) {
    target.Clear();
    return wide ? ReadLineWide(target) : ReadLineBytes(target, utf8);
}

bool clFile::ReadLineBytes(clString& target, bool utf8) {
    unsigned char byte = 0;
    bool atEnd = false;
    for (;;) {
        if (Read(&byte, 1) != 1) {
            atEnd = true;
            break;
        }
        if (target.IsEmpty() && utf8 && byte == 0xEF) {
            unsigned char more[2] = {0, 0};
            uint32_t got = Read(more, 2);
            if (got == 2 && more[0] == 0xBB && more[1] == 0xBF) continue;  // byte-order mark
            SeekBack(handle, got);
        }
        if (byte == 13) {
            unsigned char next = 0;
            // Only a byte that was really read is given back: at the end of
            // the file there is nothing to step over.
            if (Read(&next, 1) == 1 && next != 10) SeekBack(handle, 1);
            break;
        }
        if (byte == 10) break;
        char narrowByte = static_cast<char>(byte);
        clString unit;
        PlatformAnsiToWide(&narrowByte, 1, unit);
        target.AppendGrowing(unit);
    }
    if (atEnd && target.IsEmpty()) return false;
    if (utf8) {
        // Back to the bytes as they stood in the file, then decoded as UTF-8.
        int32_t bytes = PlatformWideToAnsi(target.text, target.Length(), nullptr, 0);
        clString decoded;
        if (bytes > 0) {
            char* raw = new char[static_cast<size_t>(bytes)];
            int32_t n = PlatformWideToAnsi(target.text, target.Length(), raw, bytes);
            Utf8ToString(raw, n, decoded);
            delete[] raw;
        }
        target = static_cast<clString&&>(decoded);
    }
    return true;
}

bool clFile::ReadLineWide(clString& target) {
    char16_t unit = 0;
    bool atEnd = false;
    for (;;) {
        unsigned char pair[2];
        if (Read(pair, 2) != 2) {  // a lone byte at the end counts as the end
            atEnd = true;
            break;
        }
        unit = static_cast<char16_t>(pair[0] | (pair[1] << 8));
        if (unit == 0xFEFF && target.IsEmpty()) continue;
        if (unit == 13) {
            unsigned char next[2];
            uint32_t got = Read(next, 2);
            if (got == 2 && !(next[0] == 10 && next[1] == 0))
                SeekBack(handle, 2);
            else if (got == 1)
                SeekBack(handle, 1);
            break;
        }
        if (unit == 10) break;
        char16_t one[2] = {unit, 0};
        target.AppendGrowing(one);
    }
    return !(atEnd && target.IsEmpty());
}

uint64_t clFile::GetFileSize64(const clString& path, bool* failed) {
    clFile file;
    file.fileName = path;
    file.shareMode = clShareReadWrite;
    file.Open(clAccessRead, clOpenExisting, false, true);
    if (file.handle == clInvalidHandle) {
        if (failed != nullptr) *failed = true;
        return 0;
    }
    if (failed != nullptr) *failed = false;
    int64_t size = PlatformFileSizeOf(file.handle);
    file.Close();
    if (size < 0) {
        if (failed != nullptr) *failed = true;
        return 0;
    }
    return static_cast<uint64_t>(size);
}

bool WriteWideLines(const clString& path, const clStringList& lines, bool append) {
    // A line break inside a name would make two names of it, and the
    // reader would take the second for another file.
    for (int64_t i = 0; i < lines.Count(); ++i) {
        if (lines[i].FindChar(u'\r') != 0 || lines[i].FindChar(u'\n') != 0) return false;
    }
    clFile file;
    file.fileName = path;
    file.Open(clAccessWrite, append ? clOpenAlways : clCreateAlways, false, true);
    if (file.handle == clInvalidHandle) return false;
    // Several senders may queue before the reader runs, so each one adds
    // to the end of what is there.
    if (append && PlatformSeekFile(file.handle, 0, clSeekEnd) < 0) return false;
    for (int64_t i = 0; i < lines.Count(); ++i) {
        clString line = lines[i];
        line.Append(u"\r\n");
        if (!file.Write(line.text, static_cast<uint32_t>(line.Length()) * 2)) return false;
    }
    return true;
}
