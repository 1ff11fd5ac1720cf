// clEffectPage: the settings pages of the effects whose settings are more
// than a row of values each: "Conditional Encoding" (one rule: what it
// does, when it acts, and its tests), "Multi-CPU Force" (the processors
// the workers run on) and "ID Tag Processing" (deleting and changing
// tags). The program itself reads the first two, so their pages are the
// program's; each writes the same settings `qvt --effect` takes. Options
// of the settings given that a page doesn't show are kept.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"
#include "foundation/stringlist.h"
#include "toolkit/messages.h"

enum clEffectPageKind : int32_t { kNoEffectPage, kRulePage, kProcessorPage, kTagPage };

class clEffectPage {
public:
    clEffectPageKind kind = kNoEffectPage;
    clString original;        // the settings the page was shown with
    clPointerArray created;   // every control, for Remove
    clPointerArray fields;    // the value controls, in the order of the page
    clPointerArray labels;    // the label of each, or null
    clStringList names;       // each value control's name (mostly its option's)

    clEffectPage() = default;
    ~clEffectPage() { Remove(); }
    clEffectPage(const clEffectPage&) = delete;
    clEffectPage& operator=(const clEffectPage&) = delete;

    // The page of an effect, or kNoEffectPage for one without.
    static clEffectPageKind KindOf(const clString& effectName);
    // Units the page needs in height, for a kind.
    static int32_t Height(clEffectPageKind pageKind);

    // Builds the controls in `parent` from (x, y), `width` wide (window
    // pixels), showing `settings`.
    void Show(clEffectPageKind pageKind, clWindowHandle parent, int32_t x, int32_t y, int32_t width,
              const clString& settings);
    // The settings the controls stand for now.
    clString Settings();
    void Remove();
    bool IsShown() const { return created.count > 0; }

    // A value control by its name, or null. The names: action, cond,
    // ext, bitratetest, bitrate, freqtest, freq, depthtest, bitdepth, gen
    // (a rule); cpus, noally (processors); delall, delexcept, remove, set,
    // append (tags).
    clWindowHandle Field(const char16_t* name) const;
    // Sets a field as a user would: a drop list's entry of that text, a
    // check box "1" or "0", an edit's text (the lines of a multi-line
    // edit separated by "|"). False if there is no such field or entry.
    bool SetField(const clString& name, const clString& value);

private:
    void ShowRule(clWindowHandle parent, int32_t x, int32_t y, int32_t width);
    void ShowProcessors(clWindowHandle parent, int32_t x, int32_t y, int32_t width);
    void ShowTags(clWindowHandle parent, int32_t x, int32_t y, int32_t width);
    clString RuleSettings();
    clString ProcessorSettings();
    clString TagSettings();
    clWindowHandle AddLabel(clWindowHandle parent, const char16_t* text, const clRect& place);
    clWindowHandle AddField(const char16_t* name, clWindowHandle field, clWindowHandle label);
};

// Processor numbers from a list such as "1-4, 6" (1 to 64, each once, in
// ascending order); false for anything else in the text.
bool ParseProcessorList(const clString& text, int32_t* numbers, int32_t& count);
// The shortest such list of numbers in ascending order: "1-4, 6".
clString ProcessorListText(const int32_t* numbers, int32_t count);
