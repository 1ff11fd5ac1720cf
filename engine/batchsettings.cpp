#include "engine/batchsettings.h"

#include "engine/conditionalrules.h"
#include "engine/globals.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "naming/expandnaming.h"
#include "plugins/codechandler.h"
#include "plugins/encoderentries.h"
#include "plugins/effectstring.h"
#include "foundation/commandoptions.h"

namespace {

bool RulesNeedFacts(const clString& effectString) {
    clConditionalRules rules;
    ParseConditionalRules(effectString, rules);
    for (int64_t i = 0; i < rules.Count(); ++i) {
        if (rules[i].bitrate != 0 || rules[i].frequency != 0 || rules[i].bitDepth != 0) return true;
    }
    return false;
}

}  // namespace

void ReadConversionSettings(const clString& selected, const clString& profile, clConversionSettings& settings) {
    settings.settingsKey = EntryKeyPath(selected, profile);
    const char16_t* key = settings.settingsKey.text;
    settings.encoderName = EncoderOfProfile(selected);
    settings.encoderOptions = GetSettingText(kEntryOptionsSetting.name, settingsRootHive, key);
    LoadOutputSettings(settings.settingsKey, settings.outputFolder, settings.namingRule);
    settings.outputExtension = EncoderExtension(settings.encoderName);
    settings.dspEffects = GetSettingText(kEntryEffectsSetting.name, settingsRootHive, key);
}

bool NeedsStreamFacts(const clString& namingRule, const clString& dspEffects, const clMultiEncoderItems& items) {
    if (NamingNeedsTags(namingRule) || RulesNeedFacts(dspEffects)) return true;
    for (int64_t i = 0; i < items.Count(); ++i) {
        if (RulesNeedFacts(items[i].dspEffects) || NamingNeedsTags(items[i].namingRule)) return true;
    }
    return false;
}

void EffectNames(const clString& dspEffects, clStringList& names) {
    names.Clear();
    clCommandOptions options;
    options.Parse(dspEffects);
    clEffectList effects;
    ParseEffectString(options, effects);
    for (int64_t i = 0; i < effects.Count(); ++i) names.Add(effects[i].name);
}
