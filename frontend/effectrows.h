// The effects of a stored effect string as rows of a list: a name and its
// settings each, read-only, in chain order. Choosing and ordering them is
// the effect selection's business; the options window and a multi-encoder
// item only show them.
#pragma once

#include "foundation/clstring.h"
#include "toolkit/valuelist.h"

void FillEffectRows(XValueList& list, const clString& effectText);
