// One file through the chain: the decoder the decoder cache names for the
// source, the effects in chain order, the encoder by name. The output is
// written under a temporary name and put in place only when everything
// succeeded; on failure or cancel nothing of it remains.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "plugins/xdll.h"
#include "worker/workercommand.h"
#include "worker/workerreport.h"

class Conversion {
public:
    Conversion(const WorkerCommand& what, WorkerReport& to, const std::atomic<bool>& stop);
    ~Conversion();
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    // True when the output is in place. A failure has written its line; a
    // cancel writes none.
    bool Run();
    bool Cancelled() const { return cancel.load(); }

    // The temporary name in the output's folder (or in `tmpFolder`):
    // ".qvtmp<process>-<unique>" and the output's extension, which stays
    // last because some libraries choose the format by it. Short and of
    // fixed length, so that an output name as long as a name may be still
    // has a temporary name. <process> is this process's own (8 hex digits
    // of its GUID): a name is never used by two workers, not even one
    // after the other, so the front end may remove what a dead worker left
    // without hitting a live one's file.
    static std::u16string TemporaryPath(const WorkerCommand& what, uint64_t unique);

    struct Effect;

private:
    bool OpenDecoder();
    bool BeginEffects(size_t first, bool live);
    bool BeginEncoder();
    bool AnalysisPass(size_t effect);
    bool Pump(size_t stages, bool live, size_t analysed);
    bool Deliver(size_t from, const qv_audio_block& block, bool live, size_t analysed);
    bool Finish();
    void ReportNotes();
    void Abort();

    const WorkerCommand& command;
    WorkerReport& report;
    const std::atomic<bool>& cancel;

    clQvDecoder decoder;
    qv_stream_facts facts{};
    qv_audio_format sourceFormat{};
    uint64_t totalFrames = 0;
    std::string tags;  // tag block, pictures included
    std::vector<std::unique_ptr<Effect>> effects;
    clQvEncoder encoder;
    qv_audio_format encoderLink{};
    uint32_t encoderAccepts = 0;
    int encoderBits = 32;
    std::vector<uint32_t> encoderScratch;
    bool encoderBegun = false;
    std::u16string temporary;
};
