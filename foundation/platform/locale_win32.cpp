#include <windows.h>

#include "foundation/platform/locale.h"

bool PlatformGetRegionalValue(const char16_t* name, clString& value) {
    wchar_t buffer[256];
    DWORD bytes = sizeof buffer;
    LSTATUS rc = RegGetValueW(HKEY_CURRENT_USER, L"Control Panel\\International", reinterpret_cast<LPCWSTR>(name),
                              RRF_RT_REG_SZ, nullptr, buffer, &bytes);
    if (rc != ERROR_SUCCESS) {
        value.Clear();
        return false;
    }
    value.Assign(reinterpret_cast<const char16_t*>(buffer));
    return true;
}
