#include "foundation/platform/locale.h"

bool PlatformGetRegionalValue(const char16_t* name, clString& value) {
    if (clString(name).Equals(u"sThousand")) {
        value = u",";
        return true;
    }
    value.Clear();
    return false;
}
