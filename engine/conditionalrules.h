// The rules of "Conditional Encoding" effects: per job, convert as asked,
// copy the source instead, or leave the file out. The effect itself only
// carries the rules; they act here, before any worker starts.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"

class clSourceFile;

class clConditionalRule {
public:
    int32_t action = 0;       // 0: copy the source instead; else leave the file out
    int32_t condition = 0;    // 0: any criterion; 1: all of them; else never
    clStringList extensions;  // with their dots
    int32_t bitrate = 0;      // 1 lossless, 2 lossy, -n below n kbit/s, n > 2 above
    int32_t frequency = 0;    // a comparison code (see EvaluateRules)
    int32_t bitDepth = 0;     // a comparison code
    int32_t general = 0;      // a file test, 1 to 6
};

using clConditionalRules = clOwningList<clConditionalRule>;

// The rules of every "Conditional Encoding" effect of an effect string, in
// chain order; true when one of them needs a source's stream facts.
bool ParseConditionalRules(const clString& effectString, clConditionalRules& rules);

// What the rules decide for one job.
struct clRuleDecision {
    bool skip = false;
    bool directCopy = false;
};

// Applies the rules in order until one leaves the file out. A copy takes
// the source's extension onto `outputPath`.
clRuleDecision EvaluateRules(const clConditionalRules& rules, const clSourceFile& source, clString& outputPath);

// The lossless test: the "Audio Quality" of the file says "perfect" or
// "lossless". Looked up in the tags, then in the decoder's properties,
// where this program's decoders put it.
bool SourceIsLossless(const clSourceFile& source);
