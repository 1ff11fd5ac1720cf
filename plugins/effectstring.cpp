#include "plugins/effectstring.h"

#include "foundation/commandoptions.h"
#include "plugins/codechandler.h"
#include "plugins/taglist.h"
#include "plugins/xdll.h"

clEffectList::~clEffectList() { Clear(); }

void clEffectList::Add(const clString& name, const clString& settings) {
    auto* entry = new clEffectEntry;
    entry->name = name;
    entry->settings = settings;
    entries.Add(entry);
}

void clEffectList::Clear() {
    for (int64_t i = 0; i < entries.count; ++i) delete entries.At<clEffectEntry>(i);
    entries.Reset();
}

void ParseEffectString(const clCommandOptions& options, clEffectList& list) {
    list.Clear();
    for (int n = 1;; ++n) {
        clString key = clString::Formatted(u"dspeffect%i", n);
        int64_t index = options.IndexOf(key.text);
        if (index < 0) return;  // a gap ends the list
        clString value(options.values[index]);
        value.Replace(u"{qt}", u"\"");
        int32_t equals = value.FindChar(u'=');
        if (equals == 0) continue;
        list.Add(value.Mid(1, equals - 1), value.Mid(equals + 1, value.Length()));
    }
}

clString BuildEffectString(const clEffectList& list) {
    clString text;
    for (int64_t i = 0; i < list.Count(); ++i) {
        clString joined(list[i].name);
        joined.Append(u"=");
        joined.Append(list[i].settings);
        joined.Replace(u"\"", u"{qt}");
        text.AppendGrowing(clString::Formatted(u" -dspeffect%i=\"%s\"", static_cast<int>(i + 1), joined.text));
    }
    return text;
}

clString BuildStoredEffectText(const clEffectList& list) {
    clString text = BuildEffectString(list);
    if (text.CharAt(1) == u' ') text.Delete(1, 1);
    return text;
}

void AddRequiredEffect(clString& optionString, const clString& effect) {
    clCommandOptions options;
    options.Parse(optionString);
    int n = 1;
    while (options.Has(clString::Formatted(u"dspeffect%i", n).text)) ++n;
    if (!optionString.IsEmpty()) optionString.Append(u" ");
    optionString.Append(clString::Formatted(u"-dspeffect%i=\"%s\"", n, effect.text));
}

void ApplyTagEffects(clTagList& tags, const clString& optionString) {
    clCommandOptions options;
    options.Parse(optionString);
    clEffectList effects;
    ParseEffectString(options, effects);
    for (int64_t i = 0; i < effects.Count(); ++i) {
        const clEffectEntry& effect = effects[i];
        if (!effect.name.EqualsNoCase(u"ID Tag Processing") && !effect.name.EqualsNoCase(u"EXIF Processing")) continue;
        clString settings(effect.settings);
        settings.Replace(u"-delall", u"-replaceddelall");
        settings.Replace(u"-delexcept", u"-replaceddelexcept");
        clString path = DSPLibraryPath(effect.name);
        clQvDSP dsp;
        const qv_log_record noLog{};
        if (!dsp.Bind(path.text) || !dsp.CreateInstance(&noLog)) continue;
        clByteBuffer block;
        if (!tags.SaveBlock(block)) continue;
        qv_stream_facts zeroFacts{};
        qv_begin_record record{};
        record.text1 = record.text2 = record.text3 = u"";
        record.facts = &zeroFacts;
        record.tags = block.data;
        record.tagsSize = static_cast<uint32_t>(block.size);
        if (dsp.BeginConversion(dsp.instance, &record, settings.text) != 0 && record.tags != nullptr &&
            record.tagsSize != 0) {
            tags.LoadBlock(record.tags, record.tagsSize);
        }
    }
}
