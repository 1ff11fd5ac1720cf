#include "naming/highlight.h"

#include "foundation/stringlist.h"

namespace {

#define QV_BLUE u"_RGB_-RGB-000-000-120"
#define QV_GREEN u"_RGB_-RGB-000-120-000"
#define QV_BLACK u"_RGB_-RGB-000-000-000"

struct clLabel {
    const char16_t* token;
    const char16_t* label;
};

// Items, in the order they are replaced; "[extension]" is listed twice, and
// only the first label is ever used.
constexpr clLabel kItems[] = {
    {u"[origdrive]", u"Source Drive:\\"},
    {u"[origpath]", u"Source Path"},
    {u"[subpath]", u"Sub Path"},
    {u"[origfilename]", u"Source Filename"},
    {u"[extension]", u"Encoder Extension"},
    {u"[artist]", u"Artist"},
    {u"[album]", u"Album"},
    {u"[album artist]", u"Album Artist"},
    {u"[composer]", u"Composer"},
    {u"[conductor]", u"Conductor"},
    {u"[title]", u"Title"},
    {u"[genre]", u"Genre"},
    {u"[year]", u"Year"},
    {u"[track]", u"TrackNum"},
    {u"[track_unpad]", u"TrackNum Unpaddded"},
    {u"[track_total]", u"Track Total"},
    {u"[track_total_unpad]", u"Track Total  Unpaddded"},
    {u"[disc]", u"Disc"},
    {u"[disc_total]", u"Disc Total"},
    {u"[band]", u"Band"},
    {u"[rating]", u"Rating"},
    {u"[tempo]", u"Tempo"},
    {u"[label]", u"Label"},
    {u"[isrc]", u"ISRC"},
    {u"[upc]", u"UPC"},
    {u"[compilation]", u"Compilation"},
    {u"[mood]", u"Mood"},
    {u"[style]", u"Style"},
    {u"[copyright]", u"Copyright"},
    {u"[subtitle]", u"Subtitle"},
    {u"[unique]", u"Unique"},
    {u"[discunique]", u"Disc Unique"},
    {u"[length]", u"Length MS"},
    {u"[length_seconds]", u"Length Seconds"},
    {u"[length_mmss]", u"Length mm:ss"},
    {u"[length_hhmmss]", u"Length hh:mm:ss"},
    {u"[encoder]", u"Encoder"},
    {u"[encoder+]", u"Encoder Extra"},
    {u"[extension]", u"Extension"},
    {u"[cddb_id]", u"CDDB ID"},
    {u"[protected]", u"Protected"},
    {u"[id_tag]", u"ID Tag"},
    {u"[audio_quality]", u"Audio Quality"},
    {u"[gapless]", u"Gapless"},
    {u"[date]", u"Date"},
    {u"[time]", u"Now Time"},
    {u"[day_of_week]", u"Now Day of Week"},
    {u"[now_year]", u"Now Year"},
    {u"[frequency]", u"Frequency"},
    {u"[channels]", u"Channels"},
    {u"[channels_subone]", u"Channels -1"},
    {u"[bits_per_sample]", u"Bits Per Sample"},
    {u"[bytes_per_sample]", u"Bytes Per Sample"},
    {u"[bitrate]", u"Bitrate"},
    {u"[k_bitrate]", u"Kbps"},
    {u"[orchestra]", u"Orchestra"},
    {u"[soloists]", u"Soloists"},
    {u"[instrument]", u"Instrument"},
    {u"[period]", u"Period"},
    {u"[Chorus]", u"Chorus"},
    {u"[catalog #]", u"Catalog #"},
    {u"[work]", u"work"},
    {u"[movement name]", u"Movement Name"},
    {u"[movement count]", u"Movement Count"},
    {u"[movement number]", u"Movement Number"},
    {u"[title sort]", u"Title Sort"},
    {u"[artist sort]", u"Artist Sort"},
    {u"[album artist sort]", u"Album Artist Sort"},
    {u"[album sort]", u"Album Sort"},
    {u"[soloistssort]", u"Soloists Sort"},
    {u"[composersort]", u"Composer Sort"},
    {u"[conductorsort]", u"Conductor Sort"},
};

// Functions keep their token, in capitals, in green. "[]" goes first; no
// mark put in by an earlier row holds a bracket, so none disturbs another.
constexpr const char16_t* kFunctions[] = {
    u"[]",         u"[IFVALUE]",  u"[IFEQUALS]",        u"[IF!EQUALS]",     u"[TAG]",         u"[TAGS]",
    u"[IF]",       u"[UPPER]",    u"[LOWER]",           u"[RIGHT]",         u"[GRAB]",        u"[TRIM]",
    u"[SETLEN]",   u"[IFCOMP]",   u"[IF!COMP]",         u"[IFMULTI]",       u"[IF!MULTI]",    u"[TRIMFIRSTFOLDER]",
    u"[TRIMLASTFOLDER]", u"[MAXLENGTH]", u"[FRONTFOLDER]", u"[BACKFOLDER]", u"[REPLACE]", u"[WORD]",
    u"[GROUP]",    u"[SPLIT]",    u"[DEL]",             u"[SOURCE_DATE]",
};

// Three decimal digits from `from` (1-based), or 0 when they aren't.
uint32_t Component(const clString& piece, int32_t from) { return static_cast<uint32_t>(piece.Mid(from, from + 2).ToInt64()) & 0xFF; }

}  // namespace

clString HighlightNaming(const clString& text) {
    clString result(text);
    for (const clLabel& item : kItems) {
        clString shown(QV_BLUE);
        shown.Append(item.label);
        shown.Append(QV_BLACK);
        result.Replace(item.token, shown.text, true);
    }
    for (const char16_t* function : kFunctions) {
        clString shown(QV_GREEN);
        shown.Append(function);
        shown.Append(QV_BLACK);
        result.Replace(function, shown.text, true);
    }
    result.Replace(u"{_._}", u"", true);
    return result;
}

void RenderMarkup(const clString& markup, clMarkupRuns& runs) {
    runs.Clear();
    clStringList pieces;
    pieces.Split(markup.text, kMarkupLead);
    if (pieces.Count() == 0) pieces.Add(markup.text);
    uint32_t color = 0;
    for (int64_t i = 0; i < pieces.Count(); ++i) {
        const clString& piece = pieces[i];
        clString text(piece);
        if (piece.Length() >= 5 && piece.Mid(1, 5).Equals(u"-RGB-")) {
            // "-RGB-rrr-ggg-bbb": the digits at 6, 10 and 14, the text at 17.
            uint32_t red = Component(piece, 6), green = Component(piece, 10), blue = Component(piece, 14);
            color = red | (green << 8) | (blue << 16);
            text = piece.Length() >= 17 ? piece.Mid(17, piece.Length()) : clString();
        }
        if (text.IsEmpty()) continue;
        auto* run = new clMarkupRun;
        run->color = color;
        run->text = text;
        runs.Add(run);
    }
}

clString MarkupPlainText(const clString& markup) {
    clMarkupRuns runs;
    RenderMarkup(markup, runs);
    clString plain;
    for (int64_t i = 0; i < runs.Count(); ++i) plain.Append(runs[i].text);
    return plain;
}
