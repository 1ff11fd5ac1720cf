#include "foundation/platform/display.h"

// A Windows process always has a desktop to open windows on.
bool PlatformHasDisplay() { return true; }
