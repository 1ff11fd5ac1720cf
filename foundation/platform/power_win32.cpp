#include <windows.h>

#include "foundation/platform/power.h"

namespace {

// Without the privilege the calls below are refused; a failure here is
// passed over and the call itself then tells.
void EnableShutdownPrivilege() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &token)) return;
    TOKEN_PRIVILEGES privileges{};
    if (LookupPrivilegeValueW(nullptr, L"SeShutdownPrivilege", &privileges.Privileges[0].Luid)) {
        privileges.PrivilegeCount = 1;
        privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
        AdjustTokenPrivileges(token, FALSE, &privileges, 0, nullptr, nullptr);
    }
    CloseHandle(token);
}

}  // namespace

void PlatformKeepAwake(bool on) { SetThreadExecutionState(on ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS); }

bool PlatformPowerAction(int32_t action) {
    if (action < clPowerOff || action > clPowerRestart) return false;
    EnableShutdownPrivilege();
    switch (action) {
        case clPowerOff: return ExitWindowsEx(EWX_POWEROFF, 0) != 0;
        case clPowerHibernate: return SetSystemPowerState(FALSE, FALSE) != 0;
        case clPowerStandBy: return SetSystemPowerState(TRUE, FALSE) != 0;
        case clPowerLogOff: return ExitWindowsEx(EWX_LOGOFF, 0) != 0;
        default: return ExitWindowsEx(EWX_REBOOT, 0) != 0;
    }
}
