// ExpandNaming over any naming string, tag values and extras: it must end
// and stay within its text bound. The first byte picks the path syntax;
// the rest is UTF-16 text whose fields are parted by U+001E: the naming
// string, then tag names and values in turn. A name that starts with
// U+001F is an extras name (the mark dropped) and its value an extras value.
#include <cstddef>
#include <cstdint>

#include "foundation/stringlist.h"
#include "naming/expandnaming.h"
#include "plugins/taglist.h"
#include "tests/fuzz/fuzztext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const clPathSyntax& syntax = (data[0] & 1) != 0 ? PosixPathSyntax() : WindowsPathSyntax();
    clString all = FuzzText(data + 1, size - 1, u' ');
    clStringList fields;
    fields.Split(all.text, u"\x1e");
    if (fields.Count() == 0) return 0;
    clTagList tags;
    clStringList extras;
    for (int64_t i = 1; i + 1 < fields.Count(); i += 2) {
        clString name = fields[i];
        if (!name.IsEmpty() && name.text[0] == u'\x1f') {
            name = name.Mid(2, name.Length());
            extras.Add(name);
        }
        tags.AddTag(name.text, fields[i + 1].text);
    }
    clString result = ExpandNaming(fields[0], tags, &extras, syntax);
    // The text bound is checked before each replacement, so one last
    // replacement can pass it by no more than one value in its quoted form
    // (a character's substitute is at most eight long).
    if (result.Length() > clNamingMaxText + 8 * all.Length() + 64) __builtin_trap();
    NamingNeedsTags(fields[0]);
    return 0;
}
