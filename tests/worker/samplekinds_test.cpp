#include "worker/samplekinds.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

// 8-, 16- and 24-bit samples go to float and back unchanged.
TEST(SampleKinds, IntegerDepthsUpTo24BitsSurviveTheRoundTrip) {
    for (int bits : {8, 16, 24}) {
        std::vector<int32_t> in;
        int32_t top = (1 << (bits - 1)) - 1;
        for (int32_t v : {-top - 1, -top, -1, 0, 1, top / 3, top})
            in.push_back(static_cast<int32_t>(static_cast<uint32_t>(v) << (32 - bits)));
        std::vector<float> mid(in.size());
        std::vector<int32_t> out(in.size());
        IntToFloat(in.data(), mid.data(), in.size());
        FloatToInt(mid.data(), out.data(), out.size(), bits);
        EXPECT_EQ(out, in) << bits << " bits";
    }
}

TEST(SampleKinds, FloatToIntRoundsClipsAndZeroesTheLowBits) {
    const float in[] = {1.5f, -1.5f, 1.0f, -1.0f, 0.5f, std::numeric_limits<float>::quiet_NaN(), 0.00001f};
    int32_t out[7];
    FloatToInt(in, out, 7, 16);
    EXPECT_EQ(out[0], 32767 << 16);
    EXPECT_EQ(out[1], static_cast<int32_t>(0x80000000u));
    EXPECT_EQ(out[2], 32767 << 16);  // +1.0 is one step beyond the top
    EXPECT_EQ(out[3], static_cast<int32_t>(0x80000000u));
    EXPECT_EQ(out[4], 16384 << 16);
    EXPECT_EQ(out[5], static_cast<int32_t>(0x80000000u));
    EXPECT_EQ(out[6], 0);  // 0.33 of a step rounds to nothing
}
