// The settings store: free functions that each open a key, do one read or
// write, and close it again. Nothing is cached, so a value written by one
// process is what the next read of any other gets.
//
// Every function takes `hive` and `keyPath` last: a hive of 0 means
// settingsRootHive, a null key path means settingsRootKey, and a given key
// path replaces the root key (it is not appended). Missing values read as
// 0 or empty text, which is every setting's default. Opening a key creates
// it, also for a read. No call raises or shows anything.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/platform/registry.h"

class clStringList;

extern uint64_t settingsRootHive;  // HKEY_CURRENT_USER once set at start-up
extern clString settingsRootKey;   // "Software\Harrowmere\Quillotone" once set

constexpr uint32_t clKeyQueryValue = 1;
constexpr uint32_t clKeyWrite = 0x20006;
constexpr uint32_t clKeyRead = 0x20019;
constexpr uint32_t clKeyAllAccess = 0xF003F;

// Sets the root values; the program's entry calls it before anything else.
void SetSettingsRoot(uint64_t hive, const char16_t* keyPath);

bool OpenSettingsKey(clRegKey* key, uint32_t access, uint64_t hive = 0, const char16_t* keyPath = nullptr);
void CloseSettingsKey(clRegKey key);
// 0 when missing or not a DWORD.
uint32_t GetSettingNumber(const char16_t* name, uint64_t hive = 0, const char16_t* keyPath = nullptr);
bool SetSettingNumber(uint32_t value, const char16_t* name, uint64_t hive = 0, const char16_t* keyPath = nullptr);
// Empty when missing, empty, or neither SZ nor EXPAND_SZ (never expanded).
clString GetSettingText(const char16_t* name, uint64_t hive = 0, const char16_t* keyPath = nullptr);
bool SetSettingData(const void* data, uint32_t bytes, uint32_t type, const char16_t* name, uint64_t hive = 0,
                    const char16_t* keyPath = nullptr);
// Text with its terminator, as type SZ.
bool SetSettingText(const clString& text, const char16_t* name, uint64_t hive = 0, const char16_t* keyPath = nullptr);
// 8 bytes of type BINARY; on any failure `out` is zeroed and false comes back.
bool GetSetting64(const char16_t* name, void* out, uint64_t hive = 0, const char16_t* keyPath = nullptr);
bool SettingExists(const char16_t* name, uint64_t hive = 0, const char16_t* keyPath = nullptr);
// The names of the sub-keys of `keyPath` in HKEY_CURRENT_USER (null or
// empty: the top level). False when the key can't be opened.
bool EnumSettingKeys(const char16_t* keyPath, clStringList& names);
// The names of the values of `keyPath` in HKEY_CURRENT_USER. False when
// the key can't be opened.
bool EnumSettingValues(const char16_t* keyPath, clStringList& names);
// Deletes one value; false when it isn't there or can't be deleted.
bool DeleteSettingValue(const char16_t* name, const char16_t* keyPath);
// Deletes `parent\name` with everything below it, in HKEY_CURRENT_USER.
void DeleteSettingKeyTree(const char16_t* parentPath, const char16_t* name);
// Empty while the store works; else why it can't be used. Missing values
// and failed writes are then no answer at all: a caller that reports
// settings checks this before it says "not there".
clString SettingsStoreProblem();
