#include "engine/globals.h"

uint64_t settingsRootHive = 0;
clString settingsRootKey;
clString globalEncoder;
clString globalProfile;
bool globalSkipOptions = false;
clByteBuffer globalNamingExtrasBlock;
