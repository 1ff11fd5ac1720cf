#include "engine/encoderbatch.h"

#include "foundation/bytebuffer.h"
#include "foundation/commandoptions.h"
#include "foundation/folders.h"
#include "plugins/codechandler.h"
#include "plugins/effectstring.h"
#include "plugins/taglist.h"
#include "plugins/xdll.h"

namespace {

void RemoveScratchFolder(clEncoderBatch& batch) {
    if (!batch.batchFolder.IsEmpty()) DeleteFolderTree(batch.batchFolder);
    batch.batchFolder.Clear();
    batch.batchId = 0;
}

void TakeBatchId(clEncoderBatch& batch, const std::function<uint32_t()>& tickCount) {
    RemoveScratchFolder(batch);
    for (uint32_t n = 0; n < 100000; ++n) {
        batch.batchId = static_cast<int32_t>((tickCount() + n) & 0x7FFFFFFFu);
        // 0 means "no batch" and would skip the batch end: every 2^31 ms
        // the clock lands there, and the next number is taken instead.
        if (batch.batchId == 0) continue;
        clString name(u"mutQvBatchID");
        name.Append(clString(batch.batchId));
        batch.batchMutex.Destroy();
        if (batch.batchMutex.Create(name.text) && !batch.batchMutex.existed) break;
    }
    batch.batchFolder = GetTempFolder();
    batch.batchFolder.Append(u"Qv");
    batch.batchFolder.Append(clString(batch.batchId));
    MakeFolders(batch.batchFolder);
}

// Takes every effect of `name` out of the chain; the first one's settings
// are the answer.
clString TakeEffectsNamed(clEffectList& effects, const char16_t* name, bool ignoreCase) {
    clString first;
    bool found = false;
    clEffectList kept;
    for (int64_t i = 0; i < effects.Count(); ++i) {
        bool match = ignoreCase ? effects[i].name.EqualsNoCase(name) : effects[i].name.Equals(name);
        if (match && !found) first = effects[i].settings;
        if (match)
            found = true;
        else
            kept.Add(effects[i].name, effects[i].settings);
    }
    effects.Clear();
    for (int64_t i = 0; i < kept.Count(); ++i) effects.Add(kept[i].name, kept[i].settings);
    return first;
}

void StripEffects(clEncoderBatch& batch, clQvEncoder& encoder, clString& effectString, const clString& encoderName) {
    clCommandOptions options;
    options.Parse(effectString);
    clEffectList effects;
    ParseEffectString(options, effects);
    if (!encoderName.EqualsNoCase(u"[ReplayGain]")) {
        qv_query_record query{};
        if (encoder.Get(encoder.instance, u"IsLossless", &query) == 0) {
            batch.replayGainOptions = TakeEffectsNamed(effects, u"ReplayGain", false);
        }
    }
    if (!encoderName.Equals(u"Test Conversion")) {
        int64_t before = effects.Count();
        TakeEffectsNamed(effects, u"Verify Output Integrity", false);
        if (effects.Count() != before) batch.verifyRequested = true;
    }
    effectString = BuildEffectString(effects);
}

}  // namespace

clEncoderBatch::~clEncoderBatch() { RemoveScratchFolder(*this); }

void PrepareEncoderBatch(clEncoderBatch& batch, clString& effectString, const clString& encoderName,
                         const clString& encoderOptions, const std::function<uint32_t()>& tickCount) {
    TakeBatchId(batch, tickCount);
    clQvEncoder encoder;
    const qv_log_record noLog{};
    if (clQvCodecHandler::LoadEncoder(encoderName, encoder, &noLog)) {
        if (batch.stripEffects) StripEffects(batch, encoder, effectString, encoderName);
        qv_query_record query{};
        query.text1 = encoderOptions.text;
        if (encoder.Get(encoder.instance, u"RequiresDSP", &query) != 0 && query.text2 != nullptr &&
            query.text2[0] != 0) {
            AddRequiredEffect(effectString, clString(query.text2));
        }
        encoder.Unload();
    }
    batch.dspEffects = effectString;
    batch.encoderName = encoderName;
    batch.encoderOptions = encoderOptions;
}

bool BuildBatchBlock(const clBatchFiles& files, clByteBuffer& block) {
    clTagList list;
    for (int64_t i = 0; i < files.Count(); ++i) {
        const clBatchFile& file = files[i];
        auto key = [i](const char16_t* suffix) {
            return clString::Formatted(u"file%lld%s", static_cast<long long>(i + 1), suffix);
        };
        list.AddTag(key(u"_in").text, file.sourcePath.text);
        list.AddTag(key(u"_out").text, file.outputPath.text);
        if (!file.temporaryOutput.IsEmpty()) list.AddTag(key(u"_outtmp").text, file.temporaryOutput.text);
        if (file.hadErrors != 0) list.AddTag(key(u"_conversionhaderrors").text, u"");
    }
    return list.SaveBlock(block);
}

void RunBatchEnd(clEncoderBatch& batch, const clBatchFiles& files) {
    if (batch.batchId != 0) {
        clByteBuffer block;
        BuildBatchBlock(files, block);
        clCommandOptions options;
        options.Parse(batch.dspEffects);
        clEffectList effects;
        ParseEffectString(options, effects);
        for (int64_t i = 0; i < effects.Count(); ++i) {
            clQvDSP dsp;
            const qv_log_record noLog{};
            if (!clQvCodecHandler::LoadDSP(effects[i].name, dsp, &noLog)) continue;
            qv_batch_end_record record{};
            record.blockSize = static_cast<uint32_t>(block.size);
            record.batchId = static_cast<uint64_t>(batch.batchId);
            record.settings = effects[i].settings.text;
            record.encoderOptions = batch.encoderOptions.text;
            record.encoderName = batch.encoderName.text;
            record.block = block.data;
            dsp.Get(dsp.instance, u"BatchEndConversion", reinterpret_cast<qv_query_record*>(&record));
            dsp.Unload();
        }
    }
    RemoveScratchFolder(batch);
}
