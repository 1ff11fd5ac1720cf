// The check of an option string against a library's description, over
// arbitrary text (the string comes from the worker's command file): it
// never fails to answer, and a refusal always names an option.
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "codecs/common/codecsupport.h"

namespace {

constexpr qvc::OptionSpec kSpecs[] = {
    {"level", qvc::OptionKind::Integer, "5", "0..8", "Level", "a whole number"},
    {"target", qvc::OptionKind::Decimal, "", "-70..0", "Target", "a decimal"},
    {"mode", qvc::OptionKind::Choice, "", "=Default,vbr=VBR,cbr=CBR", "Mode", "a choice"},
    {"verify", qvc::OptionKind::Flag, "", "", "Verify", "a flag"},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::u16string text;
    for (size_t i = 0; i + 1 < size; i += 2) text.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
    std::string refusal = qvc::CheckOptions(qvc::OptionTable{kSpecs, std::size(kSpecs), nullptr}, text);
    if (!refusal.empty() && refusal[0] != '-') __builtin_trap();
    return 0;
}
