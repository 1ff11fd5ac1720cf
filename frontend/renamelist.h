// What the overwrite window and list and rename share: a list whose first
// column is a destination the user may rename, with check boxes, and the
// popup that checks, unchecks or renames every row at once.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "toolkit/geometry.h"
#include "toolkit/listview.h"

constexpr uint32_t kMenuCheckAll = 10001;
constexpr uint32_t kMenuUncheckAll = 10002;
constexpr uint32_t kMenuUniqueNames = 10003;

// The suffix "Unique Names" appends: " - ", the short date and the time.
clString UniqueNameSuffix();
// Appends the same suffix to the first column of every row (an open editor
// is committed first), with repainting held back.
void AppendToNames(XListView& list, const clString& suffix);
// Every row checked or unchecked, with repainting held back.
void SetAllChecked(XListView& list, bool checked);
// The popup at a screen point: "Check All", "Uncheck All" and "Give All
// Unique Filenames (Append Time & Date)", the last after a separator when
// `separated`. Answers the chosen id, 0 for none.
uint32_t TrackRenameListPopup(clWindowHandle owner, clPoint at, bool separated);
