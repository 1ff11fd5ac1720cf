#include "engine/globals.h"

clString globalEncoder;
clString globalProfile;
bool globalSkipOptions = false;
clByteBuffer globalNamingExtrasBlock;
