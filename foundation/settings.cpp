#include "foundation/settings.h"

#include <cstring>

#include "foundation/pathtext.h"
#include "foundation/stringlist.h"

uint64_t settingsRootHive = 0;
clString settingsRootKey;

namespace {

uint64_t HiveOf(uint64_t hive) { return hive != 0 ? hive : settingsRootHive; }
const char16_t* PathOf(const char16_t* keyPath) { return keyPath != nullptr ? keyPath : settingsRootKey.text; }

// One open key for the life of a call.
class ScopedKey {
public:
    ScopedKey(uint32_t access, uint64_t hive, const char16_t* keyPath) { OpenSettingsKey(&key, access, hive, keyPath); }
    ~ScopedKey() { CloseSettingsKey(key); }
    ScopedKey(const ScopedKey&) = delete;
    ScopedKey& operator=(const ScopedKey&) = delete;
    clRegKey key = 0;
};

}  // namespace

void SetSettingsRoot(uint64_t hive, const char16_t* keyPath) {
    settingsRootHive = hive;
    settingsRootKey = keyPath;
}

bool OpenSettingsKey(clRegKey* key, uint32_t access, uint64_t hive, const char16_t* keyPath) {
    *key = 0;
    const char16_t* path = PathOf(keyPath);
    if (path == nullptr || path[0] == 0) return false;
    return PlatformRegCreateKey(HiveOf(hive), path, access, key) == clRegOk && *key != 0;
}

void CloseSettingsKey(clRegKey key) {
    if (key != 0) PlatformRegCloseKey(key);
}

uint32_t GetSettingNumber(const char16_t* name, uint64_t hive, const char16_t* keyPath) {
    ScopedKey k(clKeyQueryValue, hive, keyPath);
    if (k.key == 0) return 0;
    uint32_t type = 0;
    uint32_t value = 0;
    uint32_t bytes = sizeof value;
    if (PlatformRegQueryValue(k.key, name, &type, &value, &bytes) != clRegOk || type != clRegDword) return 0;
    return value;
}

bool SetSettingNumber(uint32_t value, const char16_t* name, uint64_t hive, const char16_t* keyPath) {
    return SetSettingData(&value, sizeof value, clRegDword, name, hive, keyPath);
}

clString GetSettingText(const char16_t* name, uint64_t hive, const char16_t* keyPath) {
    uint32_t bytes = 0;
    {
        ScopedKey k(clKeyQueryValue, hive, keyPath);
        if (k.key == 0 || PlatformRegQueryValue(k.key, name, nullptr, nullptr, &bytes) != clRegOk) return clString();
    }
    if (bytes == 0) return clString();
    // Two zero bytes more, so that the text ends whatever was stored.
    uint32_t room = bytes + 2;
    auto* block = new char16_t[room / 2 + 1]();
    uint32_t type = 0;
    long rc;
    {
        ScopedKey k(clKeyQueryValue, hive, keyPath);
        rc = k.key == 0 ? clRegNotFound : PlatformRegQueryValue(k.key, name, &type, block, &room);
    }
    clString text;
    if (rc == clRegOk && (type == clRegSz || type == clRegExpandSz)) text.Assign(block);
    delete[] block;
    return text;
}

bool SetSettingData(const void* data, uint32_t bytes, uint32_t type, const char16_t* name, uint64_t hive,
                    const char16_t* keyPath) {
    ScopedKey k(clKeyWrite, hive, keyPath);
    return k.key != 0 && PlatformRegSetValue(k.key, name, type, data, bytes) == clRegOk;
}

bool SetSettingText(const clString& text, const char16_t* name, uint64_t hive, const char16_t* keyPath) {
    return SetSettingData(text.text, static_cast<uint32_t>(text.size) * 2, clRegSz, name, hive, keyPath);
}

bool GetSetting64(const char16_t* name, void* out, uint64_t hive, const char16_t* keyPath) {
    std::memset(out, 0, 8);
    ScopedKey k(clKeyQueryValue, hive, keyPath);
    unsigned char value[8] = {};
    uint32_t type = 0;
    uint32_t bytes = 8;
    if (k.key == 0 || PlatformRegQueryValue(k.key, name, &type, value, &bytes) != clRegOk || type != clRegBinary ||
        bytes != 8) {
        return false;
    }
    std::memcpy(out, value, 8);
    return true;
}

bool SettingExists(const char16_t* name, uint64_t hive, const char16_t* keyPath) {
    ScopedKey k(clKeyQueryValue, hive, keyPath);
    uint32_t bytes = 0;
    return k.key != 0 && PlatformRegQueryValue(k.key, name, nullptr, nullptr, &bytes) == clRegOk;
}

bool EnumSettingKeys(const char16_t* keyPath, clStringList& names) {
    names.Clear();
    clRegKey key = 0;
    const char16_t* path = keyPath != nullptr ? keyPath : u"";
    if (PlatformRegCreateKey(clHiveCurrentUser, path, clKeyRead, &key) != clRegOk || key == 0) return false;
    clString name;
    for (uint32_t i = 0; PlatformRegEnumKey(key, i, name) == clRegOk; ++i) names.Add(name);
    PlatformRegCloseKey(key);
    return true;
}

bool EnumSettingValues(const char16_t* keyPath, clStringList& names) {
    names.Clear();
    clRegKey key = 0;
    if (PlatformRegCreateKey(clHiveCurrentUser, keyPath != nullptr ? keyPath : u"", clKeyRead, &key) != clRegOk ||
        key == 0) {
        return false;
    }
    clString name;
    for (uint32_t i = 0; PlatformRegEnumValue(key, i, name) == clRegOk; ++i) names.Add(name);
    PlatformRegCloseKey(key);
    return true;
}

bool DeleteSettingValue(const char16_t* name, const char16_t* keyPath) {
    clRegKey key = 0;
    if (PlatformRegCreateKey(clHiveCurrentUser, keyPath != nullptr ? keyPath : u"", clKeyAllAccess, &key) != clRegOk ||
        key == 0) {
        return false;
    }
    bool deleted = PlatformRegDeleteValue(key, name) == clRegOk;
    PlatformRegCloseKey(key);
    return deleted;
}

void DeleteSettingKeyTree(const char16_t* parentPath, const char16_t* name) {
    if (name == nullptr || name[0] == 0) return;
    clString composed(parentPath);
    AddBackslash(composed, WindowsPathSyntax());
    composed.Append(name);
    clStringList children;
    EnumSettingKeys(composed.text, children);
    for (int64_t i = 0; i < children.Count(); ++i) DeleteSettingKeyTree(composed.text, children[i].text);
    clRegKey parent = 0;
    if (PlatformRegCreateKey(clHiveCurrentUser, parentPath != nullptr ? parentPath : u"", clKeyAllAccess, &parent) ==
        clRegOk) {
        PlatformRegDeleteKey(parent, name);
        PlatformRegCloseKey(parent);
    }
}

clString SettingsStoreProblem() { return PlatformRegProblem(); }
