// Must not compile: the foundation sees nothing above it. The first
// include is allowed and must be found, so that the test fails for the
// right reason only.
#include "foundation/clstring.h"
#include "engine/conversion.h"
