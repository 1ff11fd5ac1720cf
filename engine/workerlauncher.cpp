#include "engine/workerlauncher.h"

#include <cstring>

#include "foundation/bytebuffer.h"
#include "foundation/platform/thread.h"
#include "foundation/platform/workerprocess.h"

namespace {

// An anonymous pipe whose read end stays here, with the buffer that each
// read reuses.
class clPipe {
public:
    clPipeHandle readEnd = clNoPipe;
    clByteBuffer buffer;
    uint64_t pending = 0;  // bytes of a character cut off by the last read

    ~clPipe() { PlatformClosePipe(readEnd); }

    // Takes what the pipe holds, as far as the peek says, in as many rounds
    // as the worker keeps it filled. A failed peek counts as an empty pipe.
    clString ReadAll() {
        uint64_t count = pending;
        for (;;) {
            int64_t waiting = PlatformPipeAvailable(readEnd);
            if (waiting <= 0) break;
            uint64_t need = count + static_cast<uint64_t>(waiting);
            if (need > buffer.size && !buffer.Resize(need, true, false, 2 * static_cast<uint64_t>(waiting))) break;
            int64_t got = PlatformPipeRead(readEnd, buffer.data + count, static_cast<uint32_t>(waiting));
            if (got <= 0) break;
            count += static_cast<uint64_t>(got);
        }
        clString text;
        if (count == pending) return text;
        int64_t used = PlatformPipeText(buffer.data, static_cast<int64_t>(count), text);
        // The cut-off character waits at the front for the rest of it.
        pending = count - static_cast<uint64_t>(used);
        if (pending > 0) std::memmove(buffer.data, buffer.data + used, pending);
        return text;
    }
};

class clProcessLink : public clWorkerLink {
public:
    clPipe out, err;
    clProcessHandle process = 0;
    clThreadHandle thread = 0;
    clPipeHandle input = clNoPipe;  // a standby worker's go

    ~clProcessLink() override {
        // A standby worker reads the end of its input and leaves.
        PlatformClosePipe(input);
        // No worker outlives the slot that started it.
        if (process != 0 && !PlatformWaitProcess(process, 0)) Terminate();
        PlatformCloseWorkerThread(thread);
        PlatformCloseProcess(process);
    }
    void Terminate() override {
        PlatformTerminateProcess(process, 1);
        PlatformWaitProcess(process, 5000);
    }
    clString Read(bool standardError) override { return standardError ? err.ReadAll() : out.ReadAll(); }
    bool HasEnded() override { return PlatformWaitProcess(process, 0); }
    clProcessHandle WaitHandle() override { return process; }
    bool Release() override {
        const char go = 'g';
        bool sent = PlatformPipeWrite(input, &go, 1);
        PlatformClosePipe(input);
        input = clNoPipe;
        return sent && !PlatformWaitProcess(process, 0);
    }
    void Suspend() override { PlatformSuspendWorker(process, thread); }
    void Resume() override { PlatformResumeWorker(process, thread); }
    void SetPriority(int32_t code) override { PlatformSetWorkerPriority(process, thread, code); }
};

class clProcessLauncher : public clWorkerLauncher {
public:
    std::unique_ptr<clWorkerLink> Start(const clString& commandLine, clString& failure) override {
        return Launch(commandLine, false, failure);
    }
    std::unique_ptr<clWorkerLink> StartStandby(const clString& commandLine) override {
        clString failure;
        return Launch(commandLine, true, failure);
    }

private:
    static std::unique_ptr<clWorkerLink> Launch(const clString& commandLine, bool standby, clString& failure) {
        auto link = std::make_unique<clProcessLink>();
        clPipeHandle outWrite = clNoPipe;
        clPipeHandle errWrite = clNoPipe;
        clPipeHandle inRead = clNoPipe;
        if (!PlatformCreatePipe(&link->out.readEnd, &outWrite)) {
            failure = u"Error creating StdOut Pipe";
        } else if (!PlatformCreatePipe(&link->err.readEnd, &errWrite)) {
            PlatformClosePipe(outWrite);
            failure = u"Error creating StdErr Pipe";
        } else if (standby && !PlatformCreateInputPipe(&inRead, &link->input)) {
            PlatformClosePipe(outWrite);
            PlatformClosePipe(errWrite);
            failure = u"Error running ConvertWorker";
        } else if (!PlatformStartWorker(commandLine, outWrite, errWrite, inRead, &link->process, &link->thread)) {
            failure = u"Error running ConvertWorker";
        } else {
            return link;
        }
        return nullptr;
    }
};

}  // namespace

clWorkerLauncher& ProcessWorkerLauncher() {
    static clProcessLauncher launcher;
    return launcher;
}
