// What the naming editor teaches and checks, apart from its window: the
// four menus of items and ready examples, the made-up track its live
// example expands, and the rules that split a saved destination into base
// and naming, join them again and refuse a naming that would give every
// track the same name.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

class clTagList;

struct clNamingMenuEntry {
    const char16_t* label;
    const char16_t* text;
};

enum clNamingMenu : int32_t {
    kNamingMenuTags = 0,        // "Add Tag"
    kNamingMenuProperties = 1,  // "Add Property"
    kNamingMenuFunctions = 2,   // "Programmable Actions"
    kNamingMenuExamples = 3,    // "Examples": whole naming strings
};

// The entries of a menu, and their number in `count`.
const clNamingMenuEntry* NamingMenuEntries(clNamingMenu menu, int32_t& count);

// The tags of the example track, with or without the compilation flag and
// a second disc.
void BuildExampleTags(clTagList& tags, bool compilation, bool multiDisc);
// What the naming makes of the example track, cleaned as a path would be
// and without trailing backslashes.
clString NamingExample(const clString& naming, bool compilation, bool multiDisc);

// Splits a saved destination at its first "{_._}" (none: all of it is the
// base); an empty base becomes "[origdrive]", an empty naming
// "[origpath]\[origfilename]".
void SplitSavedNaming(const clString& saved, clString& base, clString& naming);
// The saved form: the base (with a trailing backslash unless it is
// "[origdrive]"), then "{_._}" and the naming when there is one.
clString JoinSavedNaming(const clString& base, const clString& naming);
// True when the saved text holds "[title]", "[track]", "[unique]" or
// "[origfilename]", exactly so: something that differs per track.
bool NamingNamesEachTrack(const clString& saved);
// `text` with `insert` put in at `position` (clamped to the text); the
// caret goes behind the insertion.
clString InsertAtCaret(const clString& text, int32_t position, const clString& insert, int32_t& caret);

// The message for a naming refused by NamingNamesEachTrack.
constexpr const char16_t* kNamingNeedsItemsMessage =
    u"Naming has to be formed using dynamic items (such as [title] or [track]) otherwise every track will have the "
    u"same filename.";
