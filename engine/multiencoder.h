// The items of "[Multi Encoder]": each converts every source once more,
// with an encoder, options, output target and effects of its own. They
// live in the pseudo-encoder's option string as -enc1="Name=options",
// -encMopt1="-dynamic={mqt}rule{mqt} -tofolder={mqt}folder{mqt}" and
// -encDSP1="effect string", with {mqt} for each double quote inside.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"

class clMultiEncoderItem {
public:
    clString encoderName;
    clString encoderOptions;
    clString folder;
    clString namingRule;
    clString dspEffects;
};

using clMultiEncoderItems = clOwningList<clMultiEncoderItem>;

// True for "[Multi Encoder]", in any case.
bool IsMultiEncoder(const clString& encoderName);

// The number of consecutive non-empty enc1, enc2, ... keys (an item
// without "=" counts here, though it yields no job); 1 for a plain
// encoder.
int32_t CountMultiItems(const clString& encoderName, const clString& encoderOptions);

// The items of a multi-encoder option string, as they are written: an
// empty folder or rule stays empty. An entry without "=" is passed over.
void ReadMultiItems(const clString& encoderOptions, clMultiEncoderItems& items);

// As ReadMultiItems, for a run: an empty folder becomes the user's music
// folder, an empty rule "[origpath]\[origfilename]".
void ParseMultiItems(const clString& encoderOptions, clMultiEncoderItems& items);

// The option string of the items, numbered from 1 in their order. A folder
// or a rule can't hold a double quote: the option parser has no escape
// for one inside two levels of quotes (MultiItemTextFits tells).
clString BuildMultiItems(const clMultiEncoderItems& items);
bool MultiItemTextFits(const clString& text);
