#include "bench/benchsetup.h"

#include "foundation/folders.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"

void UsePrivateSettingsStore() {
    static bool done = false;
    if (done) return;
    done = true;
    clString folder = GetTempFolder();
    folder.Append(clString::Formatted(u"qvbench-config-%s", GetProcessGuidText().text));
    PlatformSetEnvironment(u"QUILLOTONE_CONFIG_DIR", folder.text);
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
}
