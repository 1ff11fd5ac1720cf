// Every value of the settings store that the program reads or writes, in
// one place: where it lives, its name and its default. A value that is
// missing reads as 0 or empty text, and that is each value's default
// unless the line says "seeded": those the first start writes (see
// SeedFirstStartSettings). Nothing here is cached; each read asks the
// store again.
#pragma once

#include <cstdint>

#include "foundation/platform/registry.h"

// The program's root, below the current user's hive. The literal is a macro
// only so that the keys below it can be written as one literal each.
#define QV_SETTINGS_ROOT u"Software\\Harrowmere\\Quillotone"
constexpr uint64_t kSettingsHive = clHiveCurrentUser;
constexpr const char16_t* kSettingsRoot = QV_SETTINGS_ROOT;

struct clNumberSetting {
    const char16_t* name;
    uint32_t defaultValue;
};
struct clTextSetting {
    const char16_t* name;
};

// Program-wide values, in the root.
// The priority of the workers: 0 normal, 1 above normal, 2 below, 3 idle.
constexpr clNumberSetting kPrioritySetting{u"qvtPriority", 0};
// The finished conversion closes by itself.
constexpr clNumberSetting kSkipFinishSetting{u"qvtSkipedFinish", 0};
// The information log is shown at the end (it is dropped otherwise).
constexpr clNumberSetting kDisplayInfoSetting{u"qvt-DisplayInfo", 0};
// The error log is not shown at the end.
constexpr clNumberSetting kNoDisplayErrorSetting{u"qvt-NoDisplayError", 0};
// The conversion window's left and top at its last closing, screen pixels.
constexpr clNumberSetting kWindowXSetting{u"qvt-X", 0};
constexpr clNumberSetting kWindowYSetting{u"qvt-Y", 0};
// Where workers write their temporary output; empty: beside the output.
constexpr clTextSetting kTempFileLocationSetting{u"QvTempFileLocation"};
// The path cleaner's character table; empty: its default table.
constexpr clTextSetting kFileNameTableSetting{u"FileNameChrReplace"};
// Output names are reduced to plain ASCII.
constexpr clNumberSetting kPlainAsciiNamesSetting{u"FileNameANSIFilenameOnly", 0};
// The counter behind [unique], shared by every process.
constexpr clNumberSetting kUniqueCounterSetting{u"Unique", 0};
// The entry used last, with the additional profile's name appended
// ("qvtLastCodec" alone without one; "qvtLastCodecqvt" for qvt's runs).
constexpr const char16_t* kLastEntryPrefix = u"qvtLastCodec";
// Seeded 1: sample rates are converted where an encoder asks for it.
constexpr clNumberSetting kFrequencyConversionSetting{u"qvtProfFreqConversion", 1};

// Per entry: <root>\qvtCodec\<entry>, and \<profile> below it for an
// additional profile.
constexpr const char16_t* kEntriesKeyName = u"qvtCodec";
// The encoder's option string.
constexpr clTextSetting kEntryOptionsSetting{u"qvt_CLI"};
// 0 beside the source, 1 into a folder, 2 by naming into a folder.
constexpr clNumberSetting kEntryOutputModeSetting{u"QVTUserFolder", 0};
constexpr clTextSetting kEntryFolderSetting{u"QVTUserFolderStr"};
constexpr clTextSetting kEntryNamingSetting{u"QVTDynamicNaming"};
// The effect string, stored form.
constexpr clTextSetting kEntryEffectsSetting{u"QVTDSPEffects"};

// The decoder that read each extension last: a value per extension.
constexpr const char16_t* kDecoderCacheKey = QV_SETTINGS_ROOT u"\\DecoderCache64";

// Shared preferences; nothing in this program writes them.
constexpr const char16_t* kRefKey = QV_SETTINGS_ROOT u"\\Ref";
// How list and rename shows lengths: a FormatDuration mode; 0 or missing
// is 1, and 4 shows as 0.
constexpr clNumberSetting kUnitsTimeSetting{u"UnitsTime", 1};

// Tagging defaults for the codec libraries, seeded at the first start.
constexpr const char16_t* kTaggingKey = QV_SETTINGS_ROOT u"\\Tagging";
// Seeded 3: ID3v1 and ID3v2. Its absence marks a first start.
constexpr clNumberSetting kMp3TagSetting{u"Mp3TagDefault", 3};
// Seeded 1: ID3v2 text in Unicode.
constexpr clNumberSetting kMp3UnicodeTagsSetting{u"Mp3ID3v2UnicodeEncode", 1};
constexpr const char16_t* kDiscRipperDefaultsKey = QV_SETTINGS_ROOT u"\\DiscRipper\\Profiles\\(default)";
// Seeded 1: cover art is written as folder.jpg.
constexpr clNumberSetting kAlbumArtFolderSetting{u"AlbumArtFolderJPG", 1};
