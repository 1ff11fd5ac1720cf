#include "naming/outputpath.h"

#include "foundation/asciifold.h"
#include "foundation/cleanpath.h"
#include "foundation/file.h"
#include "foundation/pathtext.h"
#include "foundation/platform/fileio.h"
#include "foundation/platform/filesystem.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/specialfolder.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"
#include "naming/expandnaming.h"
#include "naming/sourcefacts.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"

namespace {

struct FriendlyFolder {
    const char16_t* name;
    int32_t id;
};

const FriendlyFolder kFriendlyFolders[] = {{u"Music", 13},        {u"Pictures", 39},
                                           {u"Video", 14},        {u"Documents", 5},
                                           {u"Public Music", 53}, {u"Public Pictures", 54},
                                           {u"Public Video", 55}, {u"Public Documents", 46},
                                           {u"Desktop", 16},      {u"[Temporary Folder]", 20483}};

// A joined track is named after the first file its list names.
clString NamingSourcePath(const clString& path) {
    if (!GetExtension(path).Equals(clConcatExtension)) return path;
    // A list file is UTF-16LE, like every list the program exchanges.
    clFile list;
    list.fileName = path;
    list.shareMode = clShareReadWrite;
    list.Open(clAccessRead, clOpenExisting, false, true);
    clString first;
    if (list.handle == clInvalidHandle || !list.ReadLine(first, true, false) || first.IsEmpty()) return path;
    return first;
}

clString WithoutLastDot(const clString& path) {
    int32_t dot = path.FindLastChar(u'.');
    return dot == 0 ? path : path.Mid(1, dot - 1);
}

// Code page 20127: every character beyond ASCII (a surrogate pair counts
// once) becomes "?".
void ToPlainAscii(clString& text) {
    clString plain;
    for (int32_t i = 1; i <= text.Length(); ++i) {
        char16_t c = text.CharAt(i);
        if (c >= 0xD800 && c < 0xDC00 && text.CharAt(i + 1) >= 0xDC00 && text.CharAt(i + 1) < 0xE000) ++i;
        char16_t one[2] = {c < 0x80 ? c : u'?', 0};
        plain.AppendGrowing(one);
    }
    text = plain;
}

// The source's own name for an output whose name came out empty: its base
// name, with the dots it begins with written "_" (the base name of
// "...wav" is "..", which names no file).
clString SourceBaseName(const clString& path, const clPathSyntax& syntax) {
    clString base = GetFileBaseName(path, syntax);
    for (int32_t i = 1; i <= base.Length() && base.CharAt(i) == u'.'; ++i) base.text[i - 1] = u'_';
    if (base.IsEmpty()) base = u"_";
    return base;
}

// True when the file name at the end of an expanded rule is nothing once
// cleaned (a blank title, a name of dots): the path would then end at its
// folder, and the output would lie beside it as "<folder>.ext".
bool NamesNoFile(const clString& expanded, const clCleanPathOptions& clean, const clPathSyntax& syntax) {
    int32_t separator = expanded.FindLastChar(syntax.separator);
    clString name = expanded.Mid(separator + 1, expanded.Length());
    clCleanPathOptions alone = clean;
    alone.limitLength = false;
    alone.hasRoot = false;
    alone.keepLength = 0;
    CleanPath(name, alone, syntax);
    // Cleaning a bare name may leave a separator ahead of it.
    return name.IsEmpty() || (name.Length() == 1 && name.CharAt(1) == syntax.separator);
}

// The last passes over a path: folded to plain ASCII if the user wants
// it, then cleaned.
void FinalPasses(clString& text, bool plainAscii, const clCleanPathOptions& clean, const clPathSyntax& syntax) {
    if (plainAscii) {
        clCleanPathOptions fold = clean;
        fold.table = clAsciiFoldTable;
        CleanPath(text, fold, syntax);
        ToPlainAscii(text);
    }
    CleanPath(text, clean, syntax);
}

// The output folder as the final passes leave it, so that the shortening
// of the whole path can be kept out of it.
int32_t FinishedLength(const clString& folder, bool friendly, bool plainAscii, const clCleanPathOptions& clean,
                       const clPathSyntax& syntax) {
    clString text = friendly ? ResolveFriendlyFolder(folder, syntax) : folder;
    clCleanPathOptions unlimited = clean;
    unlimited.limitLength = false;
    FinalPasses(text, plainAscii, unlimited, syntax);
    return text.Length();
}

}  // namespace

clString ComputeOutputPath(const clSourceFile& source, const clString& folder, const clString& namingRule,
                           const clString& extension, const clString& fixedPath, const clString& dspEffects,
                           const clPathSyntax& syntax) {
    clString path = NamingSourcePath(source.path);
    if (folder.Equals(u"[origdrive]") && namingRule.Equals(u"[origpath]\\[origfilename]") && fixedPath.IsEmpty()) {
        return clString(WithoutLastDot(path).text, extension.text);
    }
    clString table = GetSettingText(kFileNameTableSetting.name);
    clCleanPathOptions clean;
    clean.limitLength = true;
    clean.table = table.IsEmpty() ? nullptr : table.text;
    bool plainAscii = GetSettingNumber(kPlainAsciiNamesSetting.name) != 0;
    // Tag values name things inside the output folder, never the folder
    // itself: when the whole path is too long, a long title gets shorter,
    // not the folder, which would move the output beside it or up to the
    // drive's root. Keeps the folder as it stands before the final passes.
    clString keptFolder;
    clString out;
    if (!fixedPath.IsEmpty()) {
        out = fixedPath;
    } else if (folder.IsEmpty()) {
        out = WithoutLastDot(path);
    } else {
        out = folder;
        if (!syntax.IsWindows()) out.Replace(u"\\", u"/");
        if (!out.EqualsNoCase(u"[origdrive]")) AddBackslash(out, syntax);
        if (namingRule.IsEmpty()) {
            out.Append(SourceBaseName(path, syntax));
        } else {
            clTagList tags;
            clTagList properties;
            if (source.tagBlock.size != 0) tags.LoadBlock(source.tagBlock.data, source.tagBlock.size);
            if (source.extraBlock.size != 0) properties.LoadBlock(source.extraBlock.data, source.extraBlock.size);
            // A damaged tag may hold half a surrogate pair. Tags are text,
            // never the bytes of a name, so each such half is U+FFFD before
            // it can reach a file name.
            for (clTagList* list : {&tags, &properties}) {
                for (int64_t i = 0; i < list->Count(); ++i) ReplaceLoneSurrogates((*list)[i].value, false);
            }
            clStringList extrasNames;
            AddSourceFacts(tags, properties, extrasNames, source, path, dspEffects, namingRule, extension, &out,
                           syntax);
            clString name = ExpandNaming(namingRule, tags, &extrasNames, syntax);
            // A function that cuts ([RIGHT], [GRAB]) may split a pair; only
            // the bytes of the source's own name may stay lone.
            ReplaceLoneSurrogates(name, true);
            if (!syntax.IsWindows()) name.Replace(u"\\", u"/");
            // An empty name takes the source's own name in its place,
            // inside the chosen folder, never the folder's name beside it.
            if (NamesNoFile(name, clean, syntax)) {
                name.SetLength(name.FindLastChar(syntax.separator));
                if (!name.IsEmpty()) name.Append(clString(syntax.IsWindows() ? u"\\" : u"/"));
                name.Append(SourceBaseName(path, syntax));
            }
            keptFolder = out;
            clCleanPathOptions naming = clean;
            if (!out.EqualsNoCase(u"[origdrive]"))
                naming.keepLength = FinishedLength(out, false, false, clean, syntax) + 1;
            out.Append(name);
            CleanPath(out, naming, syntax);
        }
    }
    out.Append(extension);
    clString result = ResolveFriendlyFolder(out, syntax);
    if (!keptFolder.IsEmpty() && !keptFolder.EqualsNoCase(u"[origdrive]")) {
        clean.keepLength = FinishedLength(keptFolder, true, plainAscii, clean, syntax) + 1;
    }
    FinalPasses(result, plainAscii, clean, syntax);
    return result;
}

clString ResolveFriendlyFolder(const clString& text, const clPathSyntax& syntax) {
    clString result(text);
    for (const FriendlyFolder& pair : kFriendlyFolders) {
        int32_t nameLength = clTextLength(pair.name);
        if (text.Length() < nameLength || text.Length() < 2) continue;
        if (text.Compare(pair.name, nameLength) != 0) continue;
        char16_t behind = text.CharAt(nameLength + 1);
        if (behind != 0 && behind != syntax.separator) continue;
        clString folder = GetSpecialFolder(pair.id);
        if (folder.IsEmpty()) continue;
        result = folder;
        result.Append(text.Mid(nameLength + 1, text.Length()));
        clCleanPathOptions clean;
        CleanPath(result, clean, syntax);
        break;
    }
    int32_t length = text.Length();
    if (syntax.IsWindows() && length >= 5 && text.FindChar(u'\\') == 0 && text.CharAt(length) == u')' &&
        text.CharAt(length - 1) == u':' && text.CharAt(length - 3) == u'(') {
        char16_t drive[4] = {text.CharAt(length - 2), u':', u'\\', 0};
        result = drive;
    }
    return result;
}

clString FriendlyFolderName(const clString& path, bool isFile, const clPathSyntax& syntax) {
    clString copy(path);
    if (!isFile) AddBackslash(copy, syntax);
    for (const FriendlyFolder& pair : kFriendlyFolders) {
        clString folder = GetSpecialFolder(pair.id);
        if (folder.IsEmpty() || copy.Length() < folder.Length() || copy.Length() < 2) continue;
        if (copy.Compare(folder, folder.Length(), true) != 0) continue;
        clString result(pair.name);
        // The rest from the folder's closing separator on.
        clString rest = copy.Mid(folder.Length(), copy.Length());
        if (rest.Length() > 1) result.Append(rest);
        return result;
    }
    int32_t length = path.Length();
    if ((length == 2 || length == 3) && path.CharAt(1) != u'\\' && path.CharAt(1) != u'/') {
        clString label;
        if (PlatformGetVolumeLabel(path.text, label)) {
            char16_t drive[3] = {clAsciiUpper(path.CharAt(1)), clAsciiUpper(path.CharAt(2)), 0};
            return clString::Formatted(u"%s (%s)", label.text, drive);
        }
    }
    return path;
}
