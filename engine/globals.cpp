#include "engine/globals.h"

clString globalEncoder;
clString globalProfile;
bool globalSkipOptions = false;
clByteBuffer globalNamingExtrasBlock;
bool globalConsole = false;
int32_t globalOverwriteMode = 0;
int32_t globalVerbosity = 0;
int globalExitCode = 0;
