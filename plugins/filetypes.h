// What counts as an audio file, what the file dialogs offer, and which
// encoders can be chosen: all read from the plug-in folders at run time.
// Nothing is cached between calls; each scan loads every library once.
#pragma once

#include "foundation/clstring.h"

class clStringList;

// Asks every decoder library what it decodes. `extensions` (if given)
// gets the extensions, dot included, in discovery order and with
// duplicates. `filters` (if given) gets one entry per line of a file
// dialog's type box: a display text, CR, and the semicolon-separated
// patterns; with `wantAllEntry` an "All Audio Files" entry comes first.
// An "Unlisted" library, and any extension that holds ".IGNORE", adds
// nothing here, though the decoder lookup still finds it.
void ScanDecoders(bool wantAllEntry, clStringList* extensions, clStringList* filters);

// The encoder names that may be shown, sorted: "[Multi Encoder]" first,
// then the real encoders, then the other bracketed pseudo-encoders. Names
// in `hidden` (separated by ":", ignoring ASCII case) are left out.
void EnumerateEncoders(clStringList& list, const clString& hidden);
