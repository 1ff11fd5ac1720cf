#include "engine/jobbuilder.h"

#include "engine/batchsettings.h"
#include "engine/conditionalrules.h"
#include "engine/conversioninput.h"
#include "foundation/cleanpath.h"
#include "foundation/folders.h"
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

bool ExamineJobs(const clConversionInput& input, clConversionJobs& jobs, const clAskOverwrite& askOverwrite) {
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
        if (job.skip != 0 || job.extension.EqualsNoCase(u".IGNORE")) continue;
        bool conflict = PathExists(job.outputPath);
        for (int64_t k = 0; k < j && !conflict; ++k) conflict = jobs[k].outputPath.EqualsNoCase(job.outputPath);
        if (!conflict) continue;
        auto* item = new clOverwriteItem;
        item->outputPath = job.outputPath;
        item->newPath = job.outputPath;
        item->encoderName = job.encoderName;
        item->extension = job.extension;
        item->jobIndex = static_cast<int32_t>(j);
        overwrite.Add(item);
    }
    if (overwrite.Count() == 0) return true;
    if (!askOverwrite || !askOverwrite(overwrite)) return false;
    for (int64_t i = 0; i < overwrite.Count(); ++i) {
        clConversionJob& job = jobs[overwrite[i].jobIndex];
        job.outputPath = overwrite[i].newPath;
        CleanPath(job.outputPath, clCleanPathOptions());
        job.skip = overwrite[i].skip;
    }
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
