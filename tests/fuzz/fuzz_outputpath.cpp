// ComputeOutputPath over any tag values, and over any naming rule, folder
// and character table. The first byte holds flags: bit 0 the path syntax,
// bit 1 "FileNameANSIFilenameOnly", bit 2 free mode. The rest is UTF-16
// text whose fields are parted by U+001E: title, artist, album, then in
// free mode the naming rule, the folder and the character table.
//
// Outside free mode the rule is "[artist]\[title]" under a fixed folder,
// and no tag value may take the result out of that folder, make a folder
// of its own or leave a "." or ".." component.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/folders.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "naming/outputpath.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"
#include "tests/fuzz/fuzztext.h"

namespace {

clString Field(const clStringList& fields, int64_t index) {
    return index < fields.Count() ? clString(fields[index]) : clString();
}

// The result lies below `base` (which ends without a separator) with at
// most one folder between, and no component is "." or "..". Values that
// leave the whole name empty give the folder's own name with the
// extension, as they always have; that is the one result beside it.
bool StaysBelow(const clString& result, const char16_t* base, char16_t separator) {
    int32_t baseLength = clTextLength(base);
    if (result.Equals(clString(base, u".mp3"))) return true;
    if (result.Length() <= baseLength + 1 || result.Compare(base, baseLength) != 0) return false;
    if (result.CharAt(baseLength + 1) != separator) return false;
    int folders = 0;
    int32_t start = baseLength + 2;
    for (int32_t i = start; i <= result.Length() + 1; ++i) {
        char16_t c = i <= result.Length() ? result.CharAt(i) : 0;
        if (c != 0 && c != separator) continue;
        clString component = result.Mid(start, i - 1);
        if (component.Equals(u".") || component.Equals(u"..")) return false;
        if (c != 0) ++folders;
        start = i + 1;
    }
    return folders <= 1;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // A private settings store, so that the fuzzer never touches the user's.
    clString folder = GetTempFolder();
    folder.Append(clString::Formatted(u"qvfuzz-config-%s", GetProcessGuidText().text));
    PlatformSetEnvironment(u"QUILLOTONE_CONFIG_DIR", folder.text);
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    bool posix = (data[0] & 1) != 0;
    bool free = (data[0] & 4) != 0;
    const clPathSyntax& syntax = posix ? PosixPathSyntax() : WindowsPathSyntax();
    clString all = FuzzText(data + 1, size - 1, u' ');
    clStringList fields;
    fields.Split(all.text, u"\x1e");

    clSourceFile source(clString(posix ? u"/nonexistent/in/x.flac" : u"Q:\\nonexistent\\in\\x.flac"));
    clTagList tags;
    tags.AddTag(u"title", Field(fields, 0).text);
    tags.AddTag(u"artist", Field(fields, 1).text);
    tags.AddTag(u"album", Field(fields, 2).text);
    tags.SaveBlock(source.tagBlock);

    const char16_t* base = posix ? u"/out" : u"D:\\Out";
    clString rule(u"[artist]\\[title]");
    clString folder(base);
    clString table;
    if (free) {
        rule = Field(fields, 3);
        folder = Field(fields, 4);
        table = Field(fields, 5);
    }
    SetSettingText(table, u"FileNameChrReplace");
    SetSettingNumber((data[0] & 2) != 0 ? 1 : 0, u"FileNameANSIFilenameOnly");
    clString result = ComputeOutputPath(source, folder, rule, clString(u".mp3"), clString(), clString(), syntax);
    if (!free && !StaysBelow(result, base, syntax.separator)) __builtin_trap();
    return 0;
}
