#include "engine/directcopy.h"

#include <memory>
#include <new>

#include "engine/workerslot.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/thread.h"
#include "foundation/syncobjects.h"

namespace {

constexpr uint32_t kCopyBlock = 65536;

void Report(clWorkerSlot& slot, const char16_t* line) {
    if (!slot.copyErrors.IsEmpty()) slot.copyErrors.Append(u"\r\n");
    slot.copyErrors.Append(line);
}

bool Signalled(const XEvent& event) { return event.handle != 0 && event.IsSet(); }

}  // namespace

void RunDirectCopy(XEvent& stop, clWorkerSlot& slot) {
    std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[kCopyBlock]);
    if (!buffer) {
        Report(slot, u"Error allocating buffer");
        return;
    }
    const clString& output = slot.outputPath;
    // A copy onto itself has nothing to do, and its delete-then-move would
    // put the only copy of the source at risk.
    if (output.EqualsNoCase(slot.sourcePath)) {
        slot.copyPercent = 100;
        return;
    }
    MakeFolders(GetFolderPart(output));
    bool failed = false;
    uint64_t size = clFile::GetFileSize64(slot.sourcePath, &failed);
    if (failed) {
        Report(slot, u"Error accessing source file (is open in another program?)");
        return;
    }
    clFile source;
    source.fileName = slot.sourcePath;
    source.Open(clAccessRead, clOpenExisting, false, true);
    if (source.handle == clInvalidHandle) {
        Report(slot, u"Error opening source file (is open in another program?)");
        return;
    }
    clString temporary = RemoveExtension(output);
    temporary.Append(u".tmp");
    if (temporary.EqualsNoCase(slot.sourcePath)) temporary.Append(u".tmp");
    clFile target;
    target.fileName = temporary;
    target.Open(clAccessWrite, clCreateAlways, false, true);
    if (target.handle == clInvalidHandle) {
        Report(slot, u"Error creating destination file (check Quillotone has write access to folder)");
        return;
    }

    clMutex oneAtATime;
    oneAtATime.Create(u"mutReadFileOneAtTime");
    oneAtATime.Wait();
    uint64_t remaining = size;
    uint64_t done = 0;
    bool broken = false;
    while (remaining > 0 && !Signalled(slot.cancelEvent) && !Signalled(stop)) {
        if (slot.paused) {
            PlatformSleep(25);
            continue;
        }
        auto count = static_cast<uint32_t>(remaining < kCopyBlock ? remaining : kCopyBlock);
        bool readFailed = false;
        if (source.Read(buffer.get(), count, &readFailed) != count || readFailed) {
            Report(slot, u"Error reading source file");
            broken = true;
            break;
        }
        if (!target.Write(buffer.get(), count)) {
            Report(slot, u"Error writing source file");
            broken = true;
            break;
        }
        done += count;
        remaining -= count;
        slot.copyPercent = static_cast<int32_t>(done * 100 / size);
    }
    target.Close();
    if (broken || Signalled(slot.cancelEvent) || Signalled(stop)) {
        DeleteFileEx(temporary);
    } else if (PathExists(output) && !DeleteFileEx(output)) {
        DeleteFileEx(temporary);
        Report(slot, u"Error deleting existing destination file (is open in another program?)");
    } else if (!MoveFileEx2(temporary, output)) {
        Report(slot, u"Error moving temporary file to destination file");
    }
    oneAtATime.Release();
}
