#include "plugins/filetypes.h"

#include "foundation/findfiles.h"
#include "foundation/pathtext.h"
#include "foundation/stringlist.h"
#include "plugins/decodercache.h"
#include "plugins/xdll.h"

namespace {

// What the decoders said, side by side: extension i has description i.
struct FoundTypes {
    clStringList extensions;
    clStringList descriptions;
};

void AskDecoder(const clString& path, FoundTypes& found) {
    clQvDecoder decoder;
    if (!decoder.Bind(path.text)) return;
    // The wrapper is chosen for no extension at all.
    decoder.extension = clString(u".NOTUSING");
    decoder.libraryPath = path;
    const qv_log_record noLog{};
    if (!decoder.CreateInstance(&noLog)) return;
    qv_query_record query{};
    if (decoder.Get(decoder.instance, u"Unlisted", &query) != 0) return;
    FoundTypes mine;
    for (uint32_t index = 0;; ++index) {
        // A list that doesn't end is a broken library: it adds nothing.
        if (index == clMaxDecodesEntries) return;
        query = qv_query_record{};
        query.index = index;
        if (decoder.Get(decoder.instance, u"Decodes", &query) == 0) break;
        if (query.text1 == nullptr || query.text2 == nullptr) break;
        clString extension(query.text1);
        if (extension.Find(u".IGNORE") != 0) continue;
        mine.extensions.Add(extension);
        mine.descriptions.Add(query.text2);
    }
    found.extensions.AddAll(mine.extensions);
    found.descriptions.AddAll(mine.descriptions);
}

// Ascending ignoring ASCII case; entries that compare equal keep their
// discovery order, so the patterns of one description always come in the
// order the decoders listed them. The lists are short (one entry per
// extension), so insertion sort does.
void SortKeepingOrder(clStringList& list) {
    for (int64_t i = 1; i < list.Count(); ++i) {
        for (int64_t j = i; j > 0 && list[j].Compare(list[j - 1], 0, true) < 0; --j) {
            void* swap = list.array.items[j];
            list.array.items[j] = list.array.items[j - 1];
            list.array.items[j - 1] = swap;
        }
    }
}

void BuildFilters(const FoundTypes& found, bool wantAllEntry, clStringList& filters) {
    filters.Clear();
    clStringList sorted;
    for (int64_t i = 0; i < found.descriptions.Count(); ++i) sorted.Add(found.descriptions[i].text, i);
    SortKeepingOrder(sorted);
    if (wantAllEntry) {
        clString all(u"All Audio Files\r");
        for (int64_t i = 0; i < found.extensions.Count(); ++i) {
            if (i > 0) all.AppendGrowing(u";");
            all.AppendGrowing(u"*");
            all.AppendGrowing(found.extensions[i]);
        }
        filters.Add(all);
    }
    int64_t start = 0;
    while (start < sorted.Count()) {
        int64_t end = start + 1;
        // A run is exact, case included: "MP3 audio" and "mp3 audio" are two.
        while (end < sorted.Count() && sorted[end].Equals(sorted[start])) ++end;
        clString shown;
        clString patterns;
        for (int64_t i = start; i < end; ++i) {
            const clString& extension = found.extensions[static_cast<int64_t>(sorted[i].tag)];
            if (i > start) {
                shown.AppendGrowing(u"; ");
                patterns.AppendGrowing(u";");
            }
            shown.AppendGrowing(u"*");
            shown.AppendGrowing(extension);
            patterns.AppendGrowing(u"*");
            patterns.AppendGrowing(extension);
        }
        clString entry(sorted[start]);
        entry.AppendGrowing(u"  (");
        entry.AppendGrowing(shown);
        entry.AppendGrowing(u")\r");
        entry.AppendGrowing(patterns);
        filters.Add(entry.text);
        start = end;
    }
}

}  // namespace

void ScanDecoders(bool wantAllEntry, clStringList* extensions, clStringList* filters) {
    FoundTypes found;
    clString pattern(u"*", PlatformLibrarySuffix());
    clFindFiles find(pattern, DecoderFolder());
    while (find.Next()) {
        if (!find.IsFolder()) AskDecoder(find.fullName, found);
    }
    if (extensions != nullptr) {
        extensions->Clear();
        extensions->AddAll(found.extensions);
    }
    if (filters != nullptr) BuildFilters(found, wantAllEntry, *filters);
}

void EnumerateEncoders(clStringList& list, const clString& hidden) {
    list.Clear();
    clStringList hiddenNames;
    hiddenNames.Split(hidden.text, u":");
    clString folder = JoinPath(GetProgramFolder(), clString(u"encoder"));
    clString pattern(u"*", PlatformLibrarySuffix());
    clFindFiles find(pattern, folder);
    while (find.Next()) {
        if (find.IsFolder()) continue;
        clString name = GetFileName(find.fullName);
        int32_t dot = name.FindLastChar(u'.');
        if (dot != 0) name.SetLength(dot - 1);
        if (hiddenNames.Find(name.text, true)) continue;
        list.Add(name);
    }
    // "[" sorts ahead of the letters and "{" after them: turning every
    // pseudo-encoder's bracket but the multi encoder's into "{" for the sort
    // puts the multi encoder first and the others last.
    for (int64_t i = 0; i < list.Count(); ++i) {
        clString& name = list[i];
        if (name.CharAt(1) == u'[' && !name.EqualsNoCase(u"[multi encoder]")) name.text[0] = u'{';
    }
    list.Sort(true);
    for (int64_t i = 0; i < list.Count(); ++i) {
        if (list[i].CharAt(1) == u'{') list[i].text[0] = u'[';
    }
}
