#include "frontend/effectrows.h"

#include "foundation/commandoptions.h"
#include "plugins/effectstring.h"
#include "toolkit/xwindow.h"

void FillEffectRows(XValueList& list, const clString& effectText) {
    list.Clear();
    clCommandOptions options;
    options.Parse(effectText);
    clEffectList effects;
    ParseEffectString(options, effects);
    clStringList names;
    for (int64_t i = 0; i < effects.Count(); ++i) names.Add(effects[i].name);
    // Half of the narrowest list the effects are shown in.
    list.FitNameColumn(names, XWindow::ScaleUnits(160));
    for (int64_t i = 0; i < effects.Count(); ++i) {
        clValueRowDesc row;
        row.kind = kRowPlain;
        row.name = effects[i].name;
        row.value = effects[i].settings;
        row.readOnly = true;
        list.AddRow(row);
    }
}
