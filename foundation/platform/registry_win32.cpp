#include <windows.h>

#include "foundation/platform/registry.h"

namespace {
HKEY K(clRegKey key) { return reinterpret_cast<HKEY>(key); }
LPCWSTR W(const char16_t* text) { return reinterpret_cast<LPCWSTR>(text); }
}  // namespace

long PlatformRegCreateKey(uint64_t hive, const char16_t* path, uint32_t access, clRegKey* key) {
    HKEY result = nullptr;
    // Predefined keys are 32-bit values sign-extended to a handle, as
    // HKEY_CURRENT_USER is: (HKEY)(ULONG_PTR)(LONG)0x80000001.
    HKEY root = reinterpret_cast<HKEY>(static_cast<intptr_t>(static_cast<int32_t>(static_cast<uint32_t>(hive))));
    LSTATUS rc = RegCreateKeyExW(root, W(path), 0, nullptr, 0, access, nullptr, &result, nullptr);
    *key = rc == ERROR_SUCCESS ? reinterpret_cast<clRegKey>(result) : 0;
    return rc;
}

long PlatformRegQueryValue(clRegKey key, const char16_t* name, uint32_t* type, void* data, uint32_t* bytes) {
    DWORD t = 0;
    DWORD size = bytes != nullptr ? *bytes : 0;
    LSTATUS rc = RegQueryValueExW(K(key), W(name), nullptr, &t, static_cast<LPBYTE>(data), bytes ? &size : nullptr);
    if (type != nullptr) *type = t;
    if (bytes != nullptr) *bytes = size;
    return rc;
}

long PlatformRegSetValue(clRegKey key, const char16_t* name, uint32_t type, const void* data, uint32_t bytes) {
    return RegSetValueExW(K(key), W(name), 0, type, static_cast<const BYTE*>(data), bytes);
}

long PlatformRegEnumKey(clRegKey key, uint32_t index, clString& name) {
    wchar_t buffer[1040];
    DWORD length = 1040;
    LSTATUS rc = RegEnumKeyExW(K(key), index, buffer, &length, nullptr, nullptr, nullptr, nullptr);
    if (rc == ERROR_SUCCESS) name.Assign(reinterpret_cast<const char16_t*>(buffer));
    return rc;
}

long PlatformRegEnumValue(clRegKey key, uint32_t index, clString& name) {
    wchar_t buffer[16384];  // the longest value name the registry allows, and its terminator
    DWORD length = 16384;
    LSTATUS rc = RegEnumValueW(K(key), index, buffer, &length, nullptr, nullptr, nullptr, nullptr);
    if (rc == ERROR_SUCCESS) name.Assign(reinterpret_cast<const char16_t*>(buffer));
    return rc;
}

long PlatformRegDeleteValue(clRegKey key, const char16_t* name) { return RegDeleteValueW(K(key), W(name)); }

long PlatformRegDeleteKey(clRegKey parent, const char16_t* name) { return RegDeleteKeyW(K(parent), W(name)); }

void PlatformRegCloseKey(clRegKey key) {
    if (key != 0) RegCloseKey(K(key));
}

clString PlatformRegProblem() { return clString(); }
