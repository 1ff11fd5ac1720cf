#include "naming/editor/namingeditor.h"

#include <string>

#include "foundation/cleanpath.h"
#include "foundation/platform/clock.h"
#include "naming/expandnaming.h"
#include "naming/sourcefacts.h"
#include "plugins/taglist.h"

namespace {

const clNamingMenuEntry kTagEntries[] = {
    {u"Artist", u"[artist]"},
    {u"Album Artist", u"[album artist]"},
    {u"Album Title", u"[album]"},
    {u"Composer", u"[composer]"},
    {u"Conductor", u"[conductor]"},
    {u"Disc number", u"[disc]"},
    {u"Disc total", u"[disc_total]"},
    {u"Band", u"[band]"},
    {u"Compilation", u"[compilation]"},
    {u"Genre", u"[genre]"},
    {u"ISRC", u"[isrc]"},
    {u"Label", u"[label]"},
    {u"Mood", u"[mood]"},
    {u"Style", u"[style]"},
    {u"Tempo", u"[tempo]"},
    {u"Title", u"[title]"},
    {u"Track number", u"[track]"},
    {u"Track number (unpadded)", u"[track_unpad]"},
    {u"Total track count", u"[track_total]"},
    {u"Total track count (unpadded)", u"[track_total_unpad]"},
    {u"Year", u"[year]"},
    {u"UPC", u"[upc]"},
    {u"Orchestra", u"[orchestra]"},
    {u"Soloists", u"[soloists]"},
    {u"Instrument", u"[instrument]"},
    {u"Period", u"[period]"},
    {u"Chorus", u"[chorus]"},
    {u"Catalog #", u"[catalog #]"},
    {u"Work", u"[work]"},
    {u"Movement Name", u"[movement name]"},
    {u"Movement Count", u"[movement count]"},
    {u"Movement Number", u"[movement number]"},
    {u"Title Sort", u"[title sort]"},
    {u"Artist Sort", u"[artist sort]"},
    {u"Album Artist Sort", u"[album artist sort]"},
    {u"Album Sort", u"[album sort]"},
    {u"Soloists Sort", u"[soloistssort]"},
    {u"Composer Sort", u"[composersort]"},
    {u"Conductor Sort", u"[conductorsort]"},
    {u"User defined tag", u"[tag]tagname[]"},
    {u"User defined tags", u"[tags]tagname,delimiter[]"},
};

const clNamingMenuEntry kPropertyEntries[] = {
    {u"Audio Quality", u"[audio_quality]"},
    {u"Bitrate", u"[bitrate]"},
    {u"Bitrate (Kbps)", u"[k_bitrate]"},
    {u"Bits Per Sample", u"[bits_per_sample]"},
    {u"Bytes Per Sample", u"[bytes_per_sample]"},
    {u"Channels", u"[channels]"},
    {u"Channels -1", u"[channels_subone]"},
    {u"Encoder", u"[encoder]"},
    {u"Encoder Extra", u"[encoder+]"},
    {u"Encoder Extension", u"[extension]"},
    {u"Frequency", u"[frequency]"},
    {u"Gapless", u"[gapless]"},
    {u"ID Tag Type", u"[id_tag]"},
    {u"Length (seconds)", u"[length_seconds]"},
    {u"Length (miliseconds)", u"[length]"},
    {u"Length (mm:ss)", u"[length_mmss]"},
    {u"Length (hh:mm:ss)", u"[length_hhmmss]"},
    {u"Protected", u"[protected]"},
    {u"Now Time", u"[time]"},
    {u"Now Date", u"[date]"},
    {u"Now Day of Week", u"[day_of_week]"},
    {u"Now Year", u"[now_year]"},
    {u"Source Date", u"[source_date]yyyymmdd hh.xx.ss.ms[]"},
    {u"Source Path", u"[origpath]"},
    {u"Source Filename", u"[origfilename]"},
};

const clNamingMenuEntry kFunctionEntries[] = {
    {u"Compilation", u"[IFCOMP]included if compilation[]"},
    {u"Not Compilation", u"[IF!COMP]included if not a compilation[]"},
    {u"Multi-Disc", u"[IFMULTI]included if multi-disc[]"},
    {u"Not Multi-Disc", u"[IF!MULTI]included if not multi-disc[]"},
    {u"Uppercase string", u"[UPPER]string[]"},
    {u"Lowercase string", u"[LOWER]string[]"},
    {u"Last Characters From String", u"[RIGHT]count,string[]"},
    {u"Grab Portion From String", u"[GRAB]posfrom,posto,string[]"},
    {u"Trim Start && Ending Spaces", u"[TRIM]string[]"},
    {u"Remove Portion of String", u"[DEL]posfrom,posto,string[]"},
    {u"Set String Length (increase or decrease)", u"[SETLEN]count,pre,post,string[]"},
    {u"Equals Test", u"[IFEQUALS]tag,equals,string[]"},
    {u"Not Equals Test", u"[IF!EQUALS]tag,equals,string[]"},
    {u"If Condition", u"[IF]tag,condition,match,stringmatch,stringnomatch[]"},
    {u"Tag Value Test", u"[IFVALUE]tag,strifvalue,strnovalue[]"},
    {u"Remove First Folder", u"[TRIMFIRSTFOLDER][origpath][]"},
    {u"Remove Last Folder", u"[TRIMLASTFOLDER][origpath][]"},
    {u"Extract Folder x", u"[FRONTFOLDER]pos[]"},
    {u"Extract Folder count-x", u"[BACKFOLDER]pos[]"},
    {u"Maximum Length", u"[MAXLENGTH]maxlength,string[]"},
    {u"Replace String", u"[REPLACE]search,replacement,string[]"},
    {u"Extract Word(s)", u"[WORD]string,word count to extract[]"},
    {u"Group a-c, d-f...", u"[GROUP]group count,string[]"},
    {u"Split a string around a character", u"[SPLIT]split on,string,return index[]"},
};

const clNamingMenuEntry kExampleEntries[] = {
    {u"Preserve Source Path and Filename", u"[origpath]\\[origfilename]"},
    {u"Default Disc Ripper Naming",
     u"[MAXLENGTH]80,[IFVALUE]album artist,[album artist],[IFCOMP]Various Artists[][IF!COMP][artist][][][]\\"
     u"[MAXLENGTH]80,[album][][IFMULTI], Disc [disc][]\\[MAXLENGTH]80,[track] [artist] - [title][]"},
    {u"Remove First Two Source Folders", u"[TRIMFIRSTFOLDER][TRIMFIRSTFOLDER][origpath][][]\\[origfilename]"},
    {u"Create Folder with First Character from Artist", u"[GRAB]1,1,[artist][]\\[artist]\\[album]\\[origfilename]"},
    {u"Group artists into 'a-c' 'd-f' folders", u"[GROUP]3,[artist][]\\[origfilename]"},
};

template <size_t N>
const clNamingMenuEntry* Entries(const clNamingMenuEntry (&table)[N], int32_t& count) {
    count = static_cast<int32_t>(N);
    return table;
}

// The example's tags whose value is their own name.
const char16_t* const kSelfNamed[] = {u"Conductor", u"Band", u"Label", u"Mood", u"Style", u"Tempo", u"Orchestra",
                                      u"Period"};

}  // namespace

const clNamingMenuEntry* NamingMenuEntries(clNamingMenu menu, int32_t& count) {
    switch (menu) {
        case kNamingMenuTags: return Entries(kTagEntries, count);
        case kNamingMenuProperties: return Entries(kPropertyEntries, count);
        case kNamingMenuFunctions: return Entries(kFunctionEntries, count);
        case kNamingMenuExamples: return Entries(kExampleEntries, count);
    }
    count = 0;
    return nullptr;
}

void BuildExampleTags(clTagList& tags, bool compilation, bool multiDisc) {
    tags.Clear();
    tags.AddTag(u"artist", u"Artist\rArtist2");
    tags.AddTag(u"album", u"Album Title");
    tags.AddTag(u"album artist", u"Album Artist");
    tags.AddTag(u"title", u"Title");
    tags.AddTag(u"genre", u"Genre");
    tags.AddTag(u"year", u"2011 08 12");
    tags.AddTag(u"track", u"5/15");
    tags.AddTag(u"disc", multiDisc ? u"2/3" : u"1/1");
    tags.AddTag(u"Composer", u"Composer\rComposer 2");
    for (const char16_t* name : kSelfNamed) tags.AddTag(name, name);
    tags.AddTag(u"ISRC", u"CC-XXX-YY-NNNNN");
    tags.AddTag(u"UPC", u"UPC");
    if (compilation) tags.AddTag(u"Compilation", u"1");
    tags.AddTag(u"Soloists", u"Soloist1\rSoloist2");
    tags.AddTag(u"Instrument", u"Instrument1\rInstrument2");
    tags.AddTag(u"chorus", u"Chorus");
    tags.AddTag(u"catalog #", u"Catalog #");
    tags.AddTag(u"work", u"Work");
    tags.AddTag(u"movement name", u"Movement Name");
    tags.AddTag(u"movement count", u"6");
    tags.AddTag(u"movement number", u"2");
    tags.AddTag(u"title sort", u"Title Sort");
    tags.AddTag(u"artist sort", u"Artist Sort");
    tags.AddTag(u"album artist sort", u"Album Artist Sort");
    tags.AddTag(u"album sort", u"Album Sort");
    tags.AddTag(u"soloistssort", u"Soloists Sort");
    tags.AddTag(u"composersort", u"Composer Sort");
    tags.AddTag(u"conductorsort", u"Conductor Sort");
    tags.AddTag(u"origdrive", u"C:\\");
    tags.AddTag(u"origpath", u"Folder1\\Folder2\\Folder3");
    tags.AddTag(u"origfilename", u"A Filename");
    tags.AddTag(u"unique", u"5754");
    tags.AddTag(u"length", u"125955");
    tags.AddTag(u"length_mmss", u"10.51");
    tags.AddTag(u"length_hhmmss", u"01.25.55");
    tags.AddTag(u"encoder", u"mp3 (Lame)");
    tags.AddTag(u"encoder+", u"mp3 (Lame) -q5");
    tags.AddTag(u"extension", u"mp3");
    tags.AddTag(u"cddb_id", u"3DF2700A");
    tags.AddTag(u"protected", u"No");
    tags.AddTag(u"id_tag", u"ID3v2.2");
    tags.AddTag(u"audio_quality", u"Medium (Lossy)");
    tags.AddTag(u"gapless", u"Yes");
    AddDateTags(tags);
    AddSourceDateTag(tags, PlatformGetLocalTime());
    tags.AddTag(u"frequency", u"44100");
    tags.AddTag(u"channels", u"2");
    tags.AddTag(u"channels_subone", u"1");
    tags.AddTag(u"bits_per_sample", u"16");
    tags.AddTag(u"bytes_per_sample", u"2");
    tags.AddTag(u"bitrate", u"128000");
    tags.AddTag(u"k_bitrate", u"128");
}

clString NamingExample(const clString& naming, bool compilation, bool multiDisc) {
    clTagList tags;
    BuildExampleTags(tags, compilation, multiDisc);
    const clPathSyntax& syntax = NativePathSyntax();
    clString example = ExpandNaming(naming, tags, nullptr, syntax);
    // As an output path gets it: a "\\" of the naming is a separator here too.
    if (!syntax.IsWindows()) example.Replace(u"\\", u"/");
    clCleanPathOptions options;
    options.limitLength = false;
    options.hasRoot = false;
    CleanPath(example, options, syntax);
    while (!example.IsEmpty() && example.CharAt(example.Length()) == syntax.separator) {
        example.SetLength(example.Length() - 1);
    }
    return example;
}

void SplitSavedNaming(const clString& saved, clString& base, clString& naming) {
    int32_t marker = saved.Find(u"{_._}");
    if (marker == 0) {
        base = saved;
        naming.Clear();
    } else {
        base = saved.Mid(1, marker - 1);
        naming = saved.Mid(marker + 5, saved.Length());
    }
    if (base.IsEmpty()) base = clString(u"[origdrive]");
    if (naming.IsEmpty()) naming = clString(u"[origpath]\\[origfilename]");
}

clString JoinSavedNaming(const clString& base, const clString& naming) {
    clString saved(base);
    // The saved text is portable: "\\" is a separator on every system, and a
    // base that already ends in one (or in "/") keeps it as it is.
    char16_t last = saved.IsEmpty() ? 0 : saved.CharAt(saved.Length());
    if (!base.EqualsNoCase(u"[origdrive]") && last != u'\\' && last != u'/') {
        saved.Append(u"\\");
    }
    if (!naming.IsEmpty()) {
        saved.Append(u"{_._}");
        saved.Append(naming);
    }
    return saved;
}

bool NamingNamesEachTrack(const clString& saved) {
    for (const char16_t* item : {u"[title]", u"[track]", u"[unique]", u"[origfilename]"}) {
        if (saved.Find(item) != 0) return true;
    }
    return false;
}

clString InsertAtCaret(const clString& text, int32_t position, const clString& insert, int32_t& caret) {
    std::u16string whole(text.text, static_cast<size_t>(text.Length()));
    size_t at = position < 0 ? 0 : std::min(static_cast<size_t>(position), whole.size());
    whole.insert(at, insert.text, static_cast<size_t>(insert.Length()));
    caret = static_cast<int32_t>(at) + insert.Length();
    return clString(whole.c_str());
}
