// Effect lists and their text forms.
//
// An effect is a DSP library's base name and its settings (opaque text,
// owned by the library). A list is written as numbered options,
// -dspeffect1="name=settings" -dspeffect2="...", with every double quote
// inside replaced by {qt}, since the option parser has no escape in quotes.
// The worker form puts a blank ahead of every option (it is appended to an
// encoder's option string); the stored form, used in the settings store and
// in .dspeffect files, has none ahead of the first. Reading stops at the
// first missing number; an entry without `=` is dropped; only the first `=`
// splits name from settings.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"

class clCommandOptions;

class clEffectEntry {
public:
    clString name;
    clString settings;
};

class clEffectList {
public:
    clPointerArray entries;  // of clEffectEntry, owned, in chain order

    clEffectList() = default;
    ~clEffectList();
    clEffectList(const clEffectList&) = delete;
    clEffectList& operator=(const clEffectList&) = delete;

    int64_t Count() const { return entries.count; }
    clEffectEntry& operator[](int64_t index) const { return *entries.At<clEffectEntry>(index); }
    void Add(const clString& name, const clString& settings);
    void Clear();
};

// Reads the effects from options already parsed (other keys are ignored).
void ParseEffectString(const clCommandOptions& options, clEffectList& list);
// The worker form: " -dspeffect1=\"...\"" for each entry.
clString BuildEffectString(const clEffectList& list);
// The stored and file form: as the worker form, without the first blank.
clString BuildStoredEffectText(const clEffectList& list);
// Appends the effect an encoder requires ("Name=settings", as the encoder
// gave it) under the first free number.
void AddRequiredEffect(clString& optionString, const clString& effect);

class clTagList;

// Runs the tag effects of an option string ("ID Tag Processing" and
// "EXIF Processing", in chain order; no other effect is loaded) over a tag
// list, so that names computed before a conversion see their changes.
// Options that delete tags are passed in their "replaced" spelling
// (-replaceddelall, -replaceddelexcept): here they must not delete.
void ApplyTagEffects(clTagList& tags, const clString& optionString);
