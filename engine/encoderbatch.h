// clEncoderBatch: what the jobs of one encoder share for the length of a
// conversion, so that effects can do work over all of its files: a batch
// id unique among all running processes (held by the named mutex
// "mutQvBatchID<id>"), a scratch folder derived from it (temporary folder,
// "Qv", the id), and the effect string its jobs were given. At the end of
// the batch every effect of that string is asked "BatchEndConversion" with
// the list of the batch's files.
#pragma once

#include <cstdint>
#include <functional>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/syncobjects.h"

class clByteBuffer;

class clEncoderBatch {
public:
    clString replayGainOptions;  // a "ReplayGain" taken out of the chain
    clString encoderName;
    clString encoderOptions;
    clString dspEffects;  // as the batch's jobs received it
    bool verifyRequested = false;
    int32_t batchId = 0;  // 31 bits; 0 when none
    clString batchFolder;
    // Taking ReplayGain and verification out of the chain, for encoders
    // that would do them themselves. Nothing sets it: those effects run in
    // the worker like any other.
    bool stripEffects = false;
    clMutex batchMutex;

    clEncoderBatch() = default;
    // A batch that never reached its end (a cancel) still removes its
    // scratch folder.
    ~clEncoderBatch();
    clEncoderBatch(const clEncoderBatch&) = delete;
    clEncoderBatch& operator=(const clEncoderBatch&) = delete;
};

class clBatchFile {
public:
    clString sourcePath;
    clString temporaryOutput;  // always empty here
    clString outputPath;
    int32_t hadErrors = 0;
};

using clBatchFiles = clOwningList<clBatchFile>;

// Before the first job of an encoder: an id (the clock's value, moved on
// while another batch holds it), the scratch folder, and the effect the
// encoder requires added to `effectString`.
void PrepareEncoderBatch(clEncoderBatch& batch, clString& effectString, const clString& encoderName,
                         const clString& encoderOptions, const std::function<uint32_t()>& tickCount);

// The batch block: file<i>_in, file<i>_out, file<i>_outtmp when there is
// one, and file<i>_conversionhaderrors (empty) for a failed file; i counts
// from 1 in list order.
bool BuildBatchBlock(const clBatchFiles& files, clByteBuffer& block);

// Sends "BatchEndConversion" to every effect of the batch's chain in
// order, then removes the scratch folder. Nothing here is reported.
void RunBatchEnd(clEncoderBatch& batch, const clBatchFiles& files);
