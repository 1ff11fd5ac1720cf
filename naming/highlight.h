// How a saved destination is shown to the user: known naming items become
// their labels in blue ("[artist]" reads "Artist"), functions stay as they
// are in green, and the marker between folder and naming vanishes. Nothing
// is evaluated. The result is a markup text that RenderMarkup reads back
// as runs of colour.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"

// A colour mark: "_RGB_-RGB-rrr-ggg-bbb", three digits each, colouring the
// text up to the next mark.
constexpr const char16_t* kMarkupLead = u"_RGB_";

struct clMarkupRun {
    uint32_t color = 0;  // 0x00BBGGRR
    clString text;
};
using clMarkupRuns = clOwningList<clMarkupRun>;

clString HighlightNaming(const clString& text);
// The runs of one displayed line; text before the first mark is black.
void RenderMarkup(const clString& markup, clMarkupRuns& runs);
// The runs' texts joined: the preview without colour.
clString MarkupPlainText(const clString& markup);
