#include "worker/samplekinds.h"

#include <cmath>

void IntToFloat(const int32_t* in, float* out, size_t count) {
    constexpr float kScale = 1.0f / 2147483648.0f;
    for (size_t i = 0; i < count; ++i) out[i] = static_cast<float>(in[i]) * kScale;
}

void FloatToInt(const float* in, int32_t* out, size_t count, int validBits) {
    if (validBits < 8) validBits = 8;
    if (validBits > 32) validBits = 32;
    const double scale = std::ldexp(1.0, validBits - 1);
    const double top = scale - 1.0;
    const int shift = 32 - validBits;
    for (size_t i = 0; i < count; ++i) {
        double value = std::nearbyint(static_cast<double>(in[i]) * scale);
        if (!(value >= -scale)) value = -scale;  // also NaN
        if (value > top) value = top;
        auto sample = static_cast<int64_t>(value);
        out[i] = static_cast<int32_t>(static_cast<uint32_t>(sample) << shift);
    }
}
