#include "engine/conditionalrules.h"

#include <cstring>

#include "foundation/commandoptions.h"
#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "plugins/effectstring.h"
#include "plugins/quillotone_plugin.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"

namespace {

constexpr uint32_t kArchive = 0x20;
constexpr int32_t kOrEqual = 0x80000;

int32_t Number(const clCommandOptions& options, const char16_t* key) {
    return static_cast<int32_t>(options.Get(key).ToInt64());
}

// The file's last write, as precisely as the file system keeps it (an
// output written within the same second as its source is still newer);
// 0 when there is none.
int64_t WriteTime(const clString& path) {
    if (path.IsEmpty()) return 0;
    clFindFiles find(path);
    return find.Next() ? find.found.writeNanoseconds : 0;
}

// A comparison code: negative "below", positive "above" its magnitude;
// with kOrEqual in the magnitude, equality also holds.
void Compare(int32_t code, int64_t value, bool& any, bool& all) {
    int64_t magnitude = code < 0 ? -static_cast<int64_t>(code) : code;
    if ((magnitude & kOrEqual) != 0) {
        magnitude &= ~int64_t{kOrEqual};
        if (value == magnitude) {
            any = true;
            return;
        }
    }
    bool holds = code < 0 ? value < magnitude : value > magnitude;
    if (holds) {
        any = true;
    } else {
        all = false;
    }
}

bool GeneralTest(int32_t test, const clSourceFile& source, const clString& outputPath) {
    switch (test) {
        case 1: return WriteTime(source.path) > WriteTime(source.chosenOutput);
        case 2: return (GetFileAttributesOf(source.path) & kArchive) != 0;
        case 3: return (GetFileAttributesOf(source.path) & kArchive) == 0;
        case 4: return PathExists(outputPath);
        case 5: return !PathExists(outputPath);
        case 6: return WriteTime(outputPath) > WriteTime(source.path);
        default: return false;
    }
}

}  // namespace

bool ParseConditionalRules(const clString& effectString, clConditionalRules& rules) {
    rules.Clear();
    clCommandOptions options;
    options.Parse(effectString);
    clEffectList effects;
    ParseEffectString(options, effects);
    bool needsFacts = false;
    for (int64_t e = 0; e < effects.Count(); ++e) {
        if (!effects[e].name.Equals(u"Conditional Encoding")) continue;
        clCommandOptions keys;
        keys.Parse(effects[e].settings);
        auto* rule = new clConditionalRule();
        rule->action = Number(keys, u"action");
        rule->condition = Number(keys, u"cond");
        clString extensions = keys.Get(u"ext");
        if (!extensions.IsEmpty()) rule->extensions.Split(extensions.text, u"; ");
        rule->bitrate = Number(keys, u"bitrate");
        rule->frequency = Number(keys, u"freq");
        rule->bitDepth = Number(keys, u"bitdepth");
        rule->general = Number(keys, u"gen");
        needsFacts = needsFacts || rule->bitrate != 0 || rule->frequency != 0 || rule->bitDepth != 0;
        rules.Add(rule);
    }
    return needsFacts;
}

bool SourceIsLossless(const clSourceFile& source) {
    for (const clByteBuffer* block : {&source.tagBlock, &source.extraBlock}) {
        if (block->size == 0) continue;
        clTagList list;
        list.LoadBlock(block->data, block->size);
        clString quality = list.GetTagValue(u"Audio Quality");
        if (quality.IsEmpty()) continue;
        return quality.Find(u"perfect", 1, true) != 0 || quality.Find(u"lossless", 1, true) != 0;
    }
    return false;
}

clRuleDecision EvaluateRules(const clConditionalRules& rules, const clSourceFile& source, clString& outputPath) {
    clRuleDecision decision;
    qv_stream_facts facts;
    std::memcpy(&facts, source.facts, sizeof facts);
    const clString extension = GetExtension(source.path);
    for (int64_t r = 0; r < rules.Count() && !decision.skip; ++r) {
        const clConditionalRule& rule = rules[r];
        bool any = false, all = true;
        if (rule.extensions.Count() > 0) {
            all = false;
            if (rule.extensions.Find(extension.text, true)) any = all = true;
        }
        if (rule.bitrate != 0) {
            const int64_t rate = facts.bitrate;
            bool holds = rule.bitrate == 1   ? SourceIsLossless(source)
                         : rule.bitrate == 2 ? !SourceIsLossless(source)
                         : rule.bitrate < 0  ? rate < -int64_t{rule.bitrate} * 1000
                                             : rate > int64_t{rule.bitrate} * 1000;
            if (holds) {
                any = true;
            } else {
                all = false;
            }
        }
        if (rule.frequency != 0) Compare(rule.frequency, facts.samplesPerSecond, any, all);
        if (rule.bitDepth != 0) Compare(rule.bitDepth, facts.bitsPerSample, any, all);
        if (rule.general != 0) {
            if (GeneralTest(rule.general, source, outputPath)) {
                any = true;
            } else {
                all = false;
            }
        }
        if ((rule.condition == 0 && any) || (rule.condition == 1 && all)) {
            if (rule.action == 0) {
                decision.directCopy = true;
                outputPath = RemoveExtension(outputPath);
                outputPath.Append(extension);
            } else {
                decision.skip = true;
            }
        }
    }
    return decision;
}
