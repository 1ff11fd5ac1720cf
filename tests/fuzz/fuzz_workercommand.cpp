// The worker's reading of its command file over arbitrary UTF-16 text, and
// the escaping of values, which must give every value back as it was and
// never let a quote through.
#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/optionvalue.h"
#include "tests/fuzz/fuzztext.h"
#include "worker/workercommand.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    clString text = FuzzText(data, size, u'%');
    WorkerCommand command;
    std::u16string error;
    ParseWorkerCommand(std::u16string(text.text), command, error);

    clString escaped = EscapeOptionValue(text);
    if (escaped.FindChar(u'"') != 0) __builtin_trap();
    clString back;
    if (!UnescapeOptionValue(escaped.text, escaped.Length(), back) || !back.Equals(text)) __builtin_trap();
    // A value so written always reads back as the source of a command.
    std::u16string line = u" -infile=\"" + std::u16string(escaped.text) + u"\" -outfile=\"o\" -convert_to=\"e\" x";
    if (!text.IsEmpty() &&
        (!ParseWorkerCommand(line, command, error) || command.inFile != text.text || command.encoderOptions != u"x")) {
        __builtin_trap();
    }
    return 0;
}
