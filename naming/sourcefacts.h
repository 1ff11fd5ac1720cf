// Everything a name can use that is not a tag of the file: path pieces,
// stream facts, lengths, dates, the unique counter. Facts go behind the
// file's tags, so a tag of the same name always wins.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pathsyntax.h"
#include "foundation/platform/clock.h"
#include "plugins/taglist.h"

class clSourceFile;
class clStringList;

// The naming extras: tags the command line brought from a file at start,
// which every name may use (a file's own tag of the same name wins).
extern clTagList globalNamingExtras;

// Fills `tags` (the file's tags) with the facts of `source`, in a fixed
// order. `path` is the path names are built from (for a joined track, the
// first file's). `extrasNames` gets the extras' names. `extension` is the
// output's, dot included. If `folder` is given, every "[origdrive]" in it
// becomes the source's drive as soon as that is known.
void AddSourceFacts(clTagList& tags, const clTagList& properties, clStringList& extrasNames, const clSourceFile& source,
                    const clString& path, const clString& dspEffects, const clString& namingRule,
                    const clString& extension, clString* folder, const clPathSyntax& syntax = NativePathSyntax());

// `length`, `length_seconds`, `length_mmss`, `length_hhmmss` (no colon);
// nothing below 1 ms.
void AddLengthTags(clTagList& tags, int64_t lengthMs);
// `unique`: the next number of the counter all the program's processes
// share (under the named mutex "mutExclusive"); the first is 1.
void AddUniqueTag(clTagList& tags);
// `date`, `time`, `day_of_week`, `now_year` of the present local time.
void AddDateTags(clTagList& tags);
// `source_date` as "year,month,day,hour,minute,second,milliseconds".
void AddSourceDateTag(clTagList& tags, const clSystemTime& time);
