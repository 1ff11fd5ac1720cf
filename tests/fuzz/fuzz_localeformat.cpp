// FormatDuration, FormatSize and LocalizeNumber over arbitrary numbers,
// modes and regional settings.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/localeformat.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 24) return 0;
    int64_t value = 0;
    std::memcpy(&value, data, 8);
    uint32_t mode = data[8] % 6;
    clLocaleInfo info;
    info.indianGrouping = (data[9] & 1) != 0;
    info.negativeFormat = data[10] % 6;
    for (int i = 0; i < 5; ++i) {
        info.thousandSeparator[i] = static_cast<char16_t>(data[11 + i] % 3 == 0 ? 0 : data[11 + i]);
        info.decimalSeparator[i] = static_cast<char16_t>(data[16 + i] % 3 == 0 ? 0 : data[16 + i]);
    }
    info.thousandSeparator[5] = 0;
    info.decimalSeparator[5] = 0;
    FormatDuration(value, mode, info);
    FormatSize(value, (data[21] & 1) != 0, info);
    clString number;
    for (size_t i = 22; i < size && i < 200; ++i) {
        char16_t c[2] = {static_cast<char16_t>("0123456789.-+ x"[data[i] % 15]), 0};
        number.Append(c);
    }
    LocalizeNumber(number, info);
    return 0;
}
