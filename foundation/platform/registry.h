// A registry: keys named by backslash paths below a hive, each holding
// typed, named values (DWORD, SZ, EXPAND_SZ, BINARY). Results are Windows
// error codes: 0 success, 2 not found, 234 more data, 259 no more items.
//
// Windows: the registry itself. POSIX: an SQLite database
// ($QUILLOTONE_CONFIG_DIR, else $XDG_CONFIG_HOME/quillotone, else
// ~/.config/quillotone; file "settings.db") with the registry's rules:
// key paths and value names compare ignoring ASCII case; creating a key
// creates the keys above it; every write is visible at once to every other
// process (write-ahead log, busy timeout); nothing is cached. A store
// that another program keeps locked longer than the busy timeout, or that
// is damaged, fails every call from then on (reads answer "not found",
// writes fail) and one line on standard error says why; a damaged file is
// moved aside whole and never written over.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

using clRegKey = intptr_t;  // 0 when none

constexpr uint64_t clHiveCurrentUser = 0x80000001u;
constexpr uint64_t clHiveLocalMachine = 0x80000002u;

constexpr uint32_t clRegNone = 0;
constexpr uint32_t clRegSz = 1;
constexpr uint32_t clRegExpandSz = 2;
constexpr uint32_t clRegBinary = 3;
constexpr uint32_t clRegDword = 4;

constexpr long clRegOk = 0;
constexpr long clRegNotFound = 2;
constexpr long clRegMoreData = 234;
constexpr long clRegNoMoreItems = 259;

// Opens the key, creating it and the keys above it when missing.
long PlatformRegCreateKey(uint64_t hive, const char16_t* path, uint32_t access, clRegKey* key);
// With `data` null, only the type and size are asked. `bytes` is the room
// on entry and the size of the value on return.
long PlatformRegQueryValue(clRegKey key, const char16_t* name, uint32_t* type, void* data, uint32_t* bytes);
long PlatformRegSetValue(clRegKey key, const char16_t* name, uint32_t type, const void* data, uint32_t bytes);
long PlatformRegEnumKey(clRegKey key, uint32_t index, clString& name);
// The name of the value at `index` ("" is the key's default value). The
// order is the store's own; it holds while nothing is written.
long PlatformRegEnumValue(clRegKey key, uint32_t index, clString& name);
long PlatformRegDeleteValue(clRegKey key, const char16_t* name);
// Deletes a sub-key that has no sub-keys of its own, with its values.
long PlatformRegDeleteKey(clRegKey parent, const char16_t* name);
void PlatformRegCloseKey(clRegKey key);
// Empty while the store works; once it fails, the line that said why (a
// lock another program holds; damage, and where the damaged file went).
// Windows: always empty.
clString PlatformRegProblem();
