#include "foundation/specialfolder.h"

#include "foundation/pathtext.h"
#include "foundation/platform/knownfolders.h"

namespace {

struct Fallback {
    int32_t id;
    int32_t base;
    bool parentOfBase;
    const char16_t* name;
};

const Fallback kFallbacks[] = {
    {26, 5, true, u"Application Data"}, {13, 5, false, u"My Music"},  {39, 5, false, u"My Pictures"},
    {14, 5, false, u"My Video"},        {53, 46, false, u"My Music"}, {55, 46, false, u"My Video"},
    {54, 46, false, u"My Pictures"},
};

}  // namespace

clString GetSpecialFolder(int32_t id, const char16_t* defaultText) {
    clString result;
    if (defaultText != nullptr && defaultText[0] != 0) {
        result = defaultText;
    } else {
        result = NativePathSyntax().IsWindows() ? clString(u"C:\\Error") : clString(u"/Error");
    }
    clString found;
    if (PlatformGetKnownFolder(id, found) && !found.IsEmpty()) {
        result = static_cast<clString&&>(found);
    } else {
        for (const Fallback& f : kFallbacks) {
            if (f.id != id) continue;
            clString base;
            if (!PlatformGetKnownFolder(f.base, base) || base.IsEmpty()) break;
            if (f.parentOfBase) {
                RemoveBackslashes(base);
                base = GetFolderPart(base);
            }
            result = JoinPath(base, clString(f.name));
            break;
        }
    }
    AddBackslash(result);
    char16_t lone[2] = {NativePathSyntax().separator, 0};
    if (result.Equals(lone)) result.Clear();
    return result;
}
