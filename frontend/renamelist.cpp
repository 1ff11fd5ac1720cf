#include "frontend/renamelist.h"

#include "foundation/datetime.h"
#include "foundation/pathsyntax.h"
#include "foundation/platform/clock.h"
#include "toolkit/application.h"
#include "toolkit/views.h"

clString UniqueNameSuffix() {
    clSystemTime now = PlatformGetLocalTime();
    clString picture;
    PlatformGetShortDatePicture(picture);
    clString suffix(u" - ");
    suffix.Append(FormatDatePicture(now, picture));
    suffix.Append(u" ");
    suffix.Append(FormatTimePicture(now, clString(u"HH:mm:ss")));
    // A date may hold the path separator ("11/24/26"), which the cleaning
    // of the whole path afterwards could not tell from a folder: it becomes
    // what that cleaning makes of a separator inside a name.
    const char16_t separator[2] = {NativePathSyntax().separator, 0};
    suffix.Replace(separator, u"-");
    return suffix;
}

void AppendToNames(XListView& list, const clString& suffix) {
    list.valueControl.Commit();
    WindowSetRedraw(list.controlHandle, false);
    for (int32_t row = 0; row < list.GetItemCount(); ++row) {
        clString text = list.GetItemText(row, 0);
        text.Append(suffix);
        list.SetItemText(row, 0, text);
    }
    WindowSetRedraw(list.controlHandle, true);
}

void SetAllChecked(XListView& list, bool checked) {
    WindowSetRedraw(list.controlHandle, false);
    list.SetChecked(-1, checked);
    WindowSetRedraw(list.controlHandle, true);
}

uint32_t TrackRenameListPopup(clWindowHandle owner, clPoint at, bool separated) {
    clMenu menu;
    menu.Add(u"Check All", kMenuCheckAll);
    menu.Add(u"Uncheck All", kMenuUncheckAll);
    if (separated) menu.AddSeparator();
    menu.Add(u"Give All Unique Filenames (Append Time & Date)", kMenuUniqueNames);
    return menu.TrackPopup(owner, at.x, at.y);
}
