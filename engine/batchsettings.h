// What a conversion reads from the settings of the chosen entry when it
// opens: encoder, options, output target and effects, and whether the
// sources must be examined down to their stream facts.
#pragma once

#include "engine/multiencoder.h"
#include "foundation/clstring.h"
#include "foundation/stringlist.h"

class clConversionSettings {
public:
    clString settingsKey;  // of the entry (and profile)
    clString encoderName;
    clString encoderOptions;  // qvt_CLI
    clString outputFolder;
    clString namingRule;
    clString outputExtension;  // with its dot
    clString dspEffects;       // QVTDSPEffects
};

void ReadConversionSettings(const clString& selected, const clString& profile, clConversionSettings& settings);

// True when the naming rule, a conditional rule's bitrate, frequency or
// bit depth, or an item's naming rule needs tags or stream facts.
bool NeedsStreamFacts(const clString& namingRule, const clString& dspEffects, const clMultiEncoderItems& items);
// The names of the effects of an effect string, in chain order.
void EffectNames(const clString& dspEffects, clStringList& names);
