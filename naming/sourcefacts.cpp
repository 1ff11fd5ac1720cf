#include "naming/sourcefacts.h"

#include <cstring>

#include "foundation/datetime.h"
#include "foundation/findfiles.h"
#include "foundation/localeformat.h"
#include "foundation/pathtext.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "foundation/syncobjects.h"
#include "plugins/effectstring.h"
#include "plugins/quillotone_plugin.h"
#include "plugins/sourcefile.h"

clTagList globalNamingExtras;

namespace {

void AddNumber(clTagList& tags, const char16_t* name, int64_t value) {
    clString text;
    text.FromInt64(value);
    tags.AddTag(name, text.text);
}

void AddIfNotEmpty(clTagList& tags, const char16_t* name, const clString& value) {
    if (!value.IsEmpty()) tags.AddTag(name, value.text);
}

// A colon can't stand in a file name: the time separator becomes ".".
clString WithoutTimeSeparator(clString text) {
    const char16_t* separator = GetLocaleInfoRecord().timeSeparator;
    if (clString(separator).FindChar(u'.') == 0) text.Replace(separator, u".");
    return text;
}

void AddPathPieces(clTagList& tags, const clString& path, clString* folder, const clPathSyntax& syntax) {
    clString cut(path);
    int32_t last = cut.FindLastChar(syntax.separator);
    if (last != 0) cut.SetLength(last);
    int32_t root = GetRootLength(cut, syntax);
    clString drive = cut.Mid(1, root - 1);
    tags.AddTag(u"origdrive", drive.text);
    if (folder != nullptr) folder->Replace(u"[origdrive]", drive.text);
    clString rest = cut.Mid(root, cut.Length());
    int32_t keep = rest.Length();
    while (keep > 0 && rest.CharAt(keep) == syntax.separator) --keep;
    rest.SetLength(keep);
    tags.AddTag(u"origpath", rest.text);
    tags.AddTag(u"origfilename", GetFileBaseName(path, syntax).text);
}

}  // namespace

void AddLengthTags(clTagList& tags, int64_t lengthMs) {
    if (lengthMs < 1) return;
    AddNumber(tags, u"length", lengthMs);
    AddNumber(tags, u"length_seconds", lengthMs / 1000);
    tags.AddTag(u"length_mmss", WithoutTimeSeparator(FormatDuration(lengthMs, 1)).text);
    tags.AddTag(u"length_hhmmss", WithoutTimeSeparator(FormatDuration(lengthMs, 2)).text);
}

void AddUniqueTag(clTagList& tags) {
    clMutex exclusive;
    exclusive.Create(u"mutExclusive");
    exclusive.Wait();
    uint32_t next = GetSettingNumber(kUniqueCounterSetting.name) + 1;
    SetSettingNumber(next, kUniqueCounterSetting.name);
    AddNumber(tags, u"unique", next);
    exclusive.Release();
}

void AddDateTags(clTagList& tags) {
    clSystemTime now = PlatformGetLocalTime();
    clString picture;
    PlatformGetShortDatePicture(picture);
    tags.AddTag(u"date", FormatDatePicture(now, picture).text);
    tags.AddTag(u"time", FormatTimePicture(now, clString(u"hh':'mm':'ss tt")).text);
    AddNumber(tags, u"day_of_week", now.dayOfWeek);
    AddNumber(tags, u"now_year", now.year);
}

void AddSourceDateTag(clTagList& tags, const clSystemTime& time) {
    clString text = clString::Formatted(u"%d,%d,%d,%d,%d,%d,%d", time.year, time.month, time.day, time.hour,
                                        time.minute, time.second, time.milliseconds);
    tags.AddTag(u"source_date", text.text);
}

void AddSourceFacts(clTagList& tags, const clTagList& properties, clStringList& extrasNames, const clSourceFile& source,
                    const clString& path, const clString& dspEffects, const clString& namingRule,
                    const clString& extension, clString* folder, const clPathSyntax& syntax) {
    tags.MergeMissing(globalNamingExtras);
    extrasNames.Clear();
    for (int64_t i = 0; i < globalNamingExtras.Count(); ++i) extrasNames.Add(globalNamingExtras[i].name);
    ApplyTagEffects(tags, dspEffects);
    if (namingRule.Find(u"[unique]") != 0) AddUniqueTag(tags);
    qv_stream_facts facts{};
    std::memcpy(&facts, source.facts, sizeof facts);
    uint64_t lengthMs = facts.lengthMs;
    AddLengthTags(tags, static_cast<int64_t>(lengthMs));
    AddIfNotEmpty(tags, u"encoder", properties.GetTagValue(u"Encoder"));
    AddIfNotEmpty(tags, u"encoder+", properties.GetTagValue(u"Encoder Settings"));
    tags.AddTag(u"extension", extension.Mid(2, extension.Length()).text);
    AddPathPieces(tags, path, folder, syntax);
    clString isProtected = properties.GetTagValue(u"protected");
    tags.AddTag(u"protected", isProtected.IsEmpty() ? u"No" : isProtected.text);
    AddIfNotEmpty(tags, u"id_tag", properties.GetTagValue(u"ID Tag"));
    AddIfNotEmpty(tags, u"audio_quality", properties.GetTagValue(u"Audio Quality"));
    clString gapless = properties.GetTagValue(u"gapless");
    tags.AddTag(u"gapless", gapless.IsEmpty() ? u"No" : gapless.text);
    // The creation time in UTC; a file that can't be found has time zero.
    uint64_t created = 0;
    {
        clFindFiles find(path);
        if (find.Next()) created = find.found.creationTicks;
    }
    AddDateTags(tags);
    AddSourceDateTag(tags, TicksToSystemTime(created));
    AddNumber(tags, u"frequency", facts.samplesPerSecond);
    AddNumber(tags, u"channels", facts.channels);
    AddNumber(tags, u"channels_subone", int64_t{facts.channels} - 1);
    AddNumber(tags, u"bits_per_sample", facts.bitsPerSample);
    AddNumber(tags, u"bytes_per_sample", facts.bitsPerSample / 8);
    AddNumber(tags, u"bitrate", facts.bitrate);
    AddNumber(tags, u"k_bitrate", facts.bitrate / 1000);
    if (tags.GetTagValue(u"title").IsEmpty()) tags.AddTag(u"Title", GetFileBaseName(path, syntax).text);
}
