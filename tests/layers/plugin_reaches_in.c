/* Must not compile: a plug-in sees the plug-in header and nothing of the
 * program. The first include is allowed and must be found. */
#include "plugins/quillotone_plugin.h"
#include "foundation/clstring.h"
