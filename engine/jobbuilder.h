// From examined sources to the ordered job list: one job for each source
// and encoder (source by source), each encoder's batch prepared at its
// first job, then output paths, conditional rules and the overwrite
// question.
#pragma once

#include <functional>

#include "engine/conversionjob.h"
#include "engine/encoderbatch.h"
#include "engine/multiencoder.h"

class clConversionInput;
class clConversionSettings;

using clEncoderBatches = clOwningList<clEncoderBatch>;
// Answers false when the user cancelled; may change the items' paths and
// skip values.
using clAskOverwrite = std::function<bool(clOverwriteItems&)>;

// Fills `jobs` and `batches`. With a plain encoder the effect string the
// first batch comes back with (the encoder's required effect added) is
// kept in `settings` for every later job; a multi-encoder item keeps its
// own string, so that only the first job of each item has the addition.
void MakeJobs(const clConversionInput& input, clConversionSettings& settings, const clMultiEncoderItems& items,
              clConversionJobs& jobs, clEncoderBatches& batches, const std::function<uint32_t()>& tickCount);

// Output paths, rule decisions and the overwrite question; false when the
// question was cancelled. A job whose output is its own source is left out
// of the question (the worker refuses it). Whatever the answer, no job
// writes over another's output of the same run: of jobs that would, the
// later ones get unique names, each listed in `renamed` when given.
bool ExamineJobs(const clConversionInput& input, clConversionJobs& jobs, const clAskOverwrite& askOverwrite,
                 clOverwriteItems* renamed = nullptr);

// `path` with " (2)", " (3)", ... ahead of its extension: the first that no
// file has, no job of `jobs` writes and `taken` does not hold.
clString UniqueBatchPath(const clString& path, const clConversionJobs& jobs, const clStringList& taken);

// Drops the jobs marked to skip, keeping the order of the rest.
void RemoveSkippedJobs(clConversionJobs& jobs);
