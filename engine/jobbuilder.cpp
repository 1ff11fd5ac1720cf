#include "engine/jobbuilder.h"

#include "engine/batchsettings.h"
#include "engine/conditionalrules.h"
#include "engine/conversioninput.h"
#include "foundation/cleanpath.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/filesystem.h"
#include "naming/outputpath.h"
#include "plugins/codechandler.h"
#include "plugins/sourcefile.h"

namespace {

// One plug-in load for all the jobs of an encoder.
class clExtensionCache {
public:
    clString Lookup(const clString& encoderName) {
        for (int64_t i = 0; i < names.Count(); ++i) {
            if (names[i].Equals(encoderName)) return extensions[i];
        }
        clString extension = EncoderExtension(encoderName);
        names.Add(encoderName);
        extensions.Add(extension);
        return extension;
    }

private:
    clStringList names;
    clStringList extensions;
};

}  // namespace

void MakeJobs(const clConversionInput& input, clConversionSettings& settings, const clMultiEncoderItems& items,
              clConversionJobs& jobs, clEncoderBatches& batches, const std::function<uint32_t()>& tickCount) {
    jobs.Clear();
    const bool multi = IsMultiEncoder(settings.encoderName);
    if (multi) settings.dspEffects.Clear();
    clExtensionCache cache;
    const int64_t encoders = multi ? items.Count() : 1;
    for (int64_t s = 0; s < input.sources.count; ++s) {
        const clSourceFile& source = input.Source(s);
        if (source.excluded != 0) continue;
        for (int64_t e = 0; e < encoders; ++e) {
            auto* job = new clConversionJob;
            job->sourceIndex = static_cast<int32_t>(s);
            job->encoderIndex = static_cast<int32_t>(multi ? e : 0);
            job->outputPath = source.chosenOutput;
            if (multi) {
                job->encoderName = items[e].encoderName;
                job->encoderOptions = items[e].encoderOptions;
                job->dspEffects = items[e].dspEffects;
                job->folder = items[e].folder;
                job->namingRule = items[e].namingRule;
            } else {
                job->encoderName = settings.encoderName;
                job->encoderOptions = settings.encoderOptions;
                job->dspEffects = settings.dspEffects;
                job->folder = settings.outputFolder;
                job->namingRule = settings.namingRule;
            }
            while (batches.Count() <= job->encoderIndex) {
                auto* batch = new clEncoderBatch;
                batches.Add(batch);
                PrepareEncoderBatch(*batch, job->dspEffects, job->encoderName, job->encoderOptions, tickCount);
                if (!multi) settings.dspEffects = job->dspEffects;
            }
            job->extension = cache.Lookup(job->encoderName);
            jobs.Add(job);
        }
    }
}

namespace {

bool WritesOutput(const clConversionJob& job) { return job.skip == 0 && !job.extension.EqualsNoCase(u".IGNORE"); }

// The earlier job, before `before`, that writes `path` too; -1 for none.
int64_t EarlierWriter(const clConversionJobs& jobs, int64_t before, const clString& path) {
    for (int64_t k = 0; k < before; ++k) {
        if (WritesOutput(jobs[k]) && jobs[k].outputPath.EqualsNoCase(path)) return k;
    }
    return -1;
}

bool TakenInBatch(const clConversionJobs& jobs, const clStringList& taken, const clString& path) {
    for (int64_t k = 0; k < jobs.Count(); ++k) {
        if (jobs[k].outputPath.EqualsNoCase(path)) return true;
    }
    for (int64_t k = 0; k < taken.Count(); ++k) {
        if (taken[k].EqualsNoCase(path)) return true;
    }
    return false;
}

// Gives every job that would write another job's output a name of its own,
// and lists each change in `renamed` (output path before, new path after).
void SeparateBatchOutputs(clConversionJobs& jobs, clOverwriteItems* renamed) {
    clStringList none;
    for (int64_t j = 1; j < jobs.Count(); ++j) {
        clConversionJob& job = jobs[j];
        if (!WritesOutput(job) || EarlierWriter(jobs, j, job.outputPath) < 0) continue;
        clString unique = UniqueBatchPath(job.outputPath, jobs, none);
        if (renamed != nullptr) {
            auto* item = new clOverwriteItem;
            item->outputPath = job.outputPath;
            item->newPath = unique;
            item->encoderName = job.encoderName;
            item->extension = job.extension;
            item->jobIndex = static_cast<int32_t>(j);
            renamed->Add(item);
        }
        job.outputPath = unique;
    }
}

}  // namespace

clString UniqueBatchPath(const clString& path, const clConversionJobs& jobs, const clStringList& taken) {
    clString extension = GetExtension(path);
    clString base = path.Mid(1, path.Length() - extension.Length());
    for (int32_t n = 2;; ++n) {
        clString candidate = clString::Formatted(u"%s (%d)%s", base.text, n, extension.text);
        if (!PathExists(candidate) && !TakenInBatch(jobs, taken, candidate)) return candidate;
    }
}

bool ExamineJobs(const clConversionInput& input, clConversionJobs& jobs, const clAskOverwrite& askOverwrite,
                 clOverwriteItems* renamed) {
    clOverwriteItems overwrite;
    for (int64_t j = 0; j < jobs.Count(); ++j) {
        clConversionJob& job = jobs[j];
        const clSourceFile& source = input.Source(job.sourceIndex);
        clConditionalRules rules;
        ParseConditionalRules(job.dspEffects, rules);
        job.outputPath =
            ComputeOutputPath(source, job.folder, job.namingRule, job.extension, job.outputPath, job.dspEffects);
        clRuleDecision decision = EvaluateRules(rules, source, job.outputPath);
        if (decision.skip) job.skip = 1;
        if (decision.directCopy) job.directCopy = 1;
        if (!WritesOutput(job)) continue;
        // An output that is its own source is not a question of
        // overwriting: the worker refuses it with a line, whatever the
        // answer would be (a copy onto itself does nothing).
        if (PlatformSameFile(source.path.text, job.outputPath.text)) continue;
        const bool exists = PathExists(job.outputPath);
        const int64_t sharedWith = EarlierWriter(jobs, j, job.outputPath);
        if (!exists && sharedWith < 0) continue;
        auto* item = new clOverwriteItem;
        item->outputPath = job.outputPath;
        item->newPath = job.outputPath;
        item->encoderName = job.encoderName;
        item->extension = job.extension;
        item->jobIndex = static_cast<int32_t>(j);
        item->exists = exists ? 1 : 0;
        item->sharedWith = static_cast<int32_t>(sharedWith);
        overwrite.Add(item);
    }
    if (overwrite.Count() > 0) {
        if (!askOverwrite || !askOverwrite(overwrite)) return false;
        for (int64_t i = 0; i < overwrite.Count(); ++i) {
            clConversionJob& job = jobs[overwrite[i].jobIndex];
            job.outputPath = overwrite[i].newPath;
            CleanPath(job.outputPath, clCleanPathOptions());
            job.skip = overwrite[i].skip;
        }
    }
    // Whatever the answer was, no job of a run writes over another's output.
    SeparateBatchOutputs(jobs, renamed);
    return true;
}

void RemoveSkippedJobs(clConversionJobs& jobs) {
    clPointerArray kept;
    for (int64_t j = 0; j < jobs.Count(); ++j) {
        if (jobs[j].skip == 1)
            delete &jobs[j];
        else
            kept.Add(&jobs[j]);
    }
    jobs.entries.Reset();
    for (int64_t j = 0; j < kept.count; ++j) jobs.Add(kept.At<clConversionJob>(j));
}
