// Process-wide values, set during start-up and read later. The settings
// root values live with the store (foundation/settings.h).
#pragma once

#include <cstdint>

#include "foundation/bytebuffer.h"
#include "foundation/clstring.h"

extern uint64_t settingsRootHive;  // always HKEY_CURRENT_USER
extern clString settingsRootKey;   // "Software\Harrowmere\Quillotone"
extern clString globalEncoder;     // the entry to convert with
extern clString globalProfile;     // additional settings profile, may be empty
extern bool globalSkipOptions;     // -skip_ready_to_conv
// -console: the conversion's outcome becomes the exit code (0 converted,
// 1 some files failed, 130 cancelled); otherwise the process answers 0.
extern bool globalConsole;
// -overwrite=ask|skip|always: how the terminal treats existing outputs.
extern int32_t globalOverwriteMode;
// How much the terminal view says: -1 only errors (-quiet), 0, 1 also each
// file's information as it ends (-verbose).
extern int32_t globalVerbosity;
extern int globalExitCode;
// The extras file of -dynamic_naming_extras as read; LoadNamingExtras makes
// it the tag list globalNamingExtras (naming/sourcefacts.h).
extern clByteBuffer globalNamingExtrasBlock;
