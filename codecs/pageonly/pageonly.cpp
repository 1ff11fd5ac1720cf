// The effects "Conditional Encoding" and "Multi-CPU Force": they exist so
// that they can be chosen and given settings, which the front end reads
// (its rules for converting, copying or skipping a file, and the number of
// files converted at once). In a conversion they hand every block on as it
// came. One source, built once under each name.
#include <string>

#include "codecs/common/codecsupport.h"

namespace {

struct Effect : qvc::EffectBase {
    bool Begin(qv_begin_record&, const std::u16string&) { return true; }
};

constexpr bool kTwoPass = false;
// What "qvt plugins" shows of the options (see the top of this file).
constexpr const char* kOptionHelp =
    "read by the program itself (its rules, or the number of files at once);\n"
    "this library passes the audio on unchanged\n";

}  // namespace

#include "codecs/common/effectexports.h"
