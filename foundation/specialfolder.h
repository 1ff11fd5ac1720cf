// GetSpecialFolder: a known folder by its CSIDL number (or the program's
// own ids 20480-20484), with a trailing separator. When the platform has
// nothing for the id, the fallbacks below another known folder apply
// (music, pictures and video below the personal or common documents
// folder, application data beside the personal folder), and otherwise the
// default text. A result of a lone separator is returned as empty.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

constexpr int32_t clFolderDesktop = 0;
constexpr int32_t clFolderPersonal = 5;
constexpr int32_t clFolderMusic = 13;
constexpr int32_t clFolderVideo = 14;
constexpr int32_t clFolderAppData = 26;
constexpr int32_t clFolderPictures = 39;
constexpr int32_t clFolderCommonDocuments = 46;
constexpr int32_t clFolderTemp = 20483;

clString GetSpecialFolder(int32_t id, const char16_t* defaultText = nullptr);
