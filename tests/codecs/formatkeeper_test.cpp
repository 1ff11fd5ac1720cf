// The format keeper of the decoders: audio in the stream's first format
// passes bit for bit, another channel count is mapped, another rate
// resampled, and integers stay at the stream's depth and in range.
#include "codecs/common/formatkeeper.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

TEST(FormatKeeper, TheFirstFormatPassesAndChannelsAreMapped) {
    qvc::FormatKeeper<int32_t> keeper;
    keeper.Start(44100, 2, 16);
    std::u16string error;
    std::vector<int32_t> out;
    const std::vector<int32_t> stereo = {65536, -65536, 3 * 65536, 5 * 65536};
    EXPECT_TRUE(keeper.Passes(44100, 2));
    ASSERT_TRUE(keeper.Put(stereo.data(), 2, 44100, 2, 0, out, error));
    EXPECT_EQ(out, stereo);
    // Mono is spread over both channels, at the same rate without loss.
    const std::vector<int32_t> mono = {7 * 65536, -9 * 65536};
    ASSERT_TRUE(keeper.Put(mono.data(), 2, 44100, 1, 2, out, error));
    EXPECT_FALSE(keeper.Passes(44100, 2));  // until stereo comes back
    EXPECT_EQ(out, (std::vector<int32_t>{65536, -65536, 3 * 65536, 5 * 65536, 7 * 65536, 7 * 65536, -9 * 65536,
                                         -9 * 65536}));
    ASSERT_EQ(keeper.Changes().size(), 1u);
    EXPECT_EQ(keeper.Changes()[0],
              "the audio changes to 44100 Hz, 1 channel at 0.0 s; it was converted to the file's first format, "
              "44100 Hz, 2 channels");
    // Back in stereo: untouched again.
    ASSERT_TRUE(keeper.Put(stereo.data(), 2, 44100, 2, 4, out, error));
    EXPECT_TRUE(keeper.Passes(44100, 2));
    EXPECT_EQ(std::vector<int32_t>(out.end() - 4, out.end()), stereo);

    // More channels than the stream's mono are mixed down.
    qvc::FormatKeeper<float> monoKeeper;
    monoKeeper.Start(8000, 1);
    std::vector<float> mixed;
    const float pair[] = {0.5f, -0.25f};
    ASSERT_TRUE(monoKeeper.Put(pair, 1, 8000, 2, 0, mixed, error));
    EXPECT_EQ(mixed, std::vector<float>{0.125f});
}

TEST(FormatKeeper, AnotherRateIsResampledAtTheStreamsDepthAndInRange) {
    qvc::FormatKeeper<int32_t> keeper;
    keeper.Start(44100, 1, 16);
    std::u16string error;
    std::vector<int32_t> out;
    // A full-scale square wave at half the rate: the resampler rings
    // beyond full scale, which must clip, not wrap.
    std::vector<int32_t> square(22050);
    for (size_t i = 0; i < square.size(); ++i) square[i] = (i / 50) % 2 != 0 ? INT32_MIN : INT32_MAX - 65535;
    ASSERT_TRUE(keeper.Put(square.data(), square.size(), 22050, 1, 0, out, error));
    ASSERT_TRUE(keeper.Finish(out, error));
    EXPECT_TRUE(error.empty());
    // A second at 22050 Hz is a second at 44100 Hz.
    EXPECT_NEAR(static_cast<double>(out.size()), 44100.0, 2.0);
    bool reachesTheTop = false;
    bool reachesTheBottom = false;
    for (int32_t v : out) {
        ASSERT_EQ(v % 65536, 0) << v;
        reachesTheTop = reachesTheTop || v == INT32_MAX - 65535;
        reachesTheBottom = reachesTheBottom || v == INT32_MIN;
    }
    EXPECT_TRUE(reachesTheTop);
    EXPECT_TRUE(reachesTheBottom);
    // Values round to the nearest step of the depth.
    std::vector<int32_t> quiet(22050, 3 * 65536 + 40000);
    out.clear();
    ASSERT_TRUE(keeper.Put(quiet.data(), quiet.size(), 32000, 1, 0, out, error));
    ASSERT_TRUE(keeper.Finish(out, error));
    ASSERT_GT(out.size(), 20000u);
    EXPECT_EQ(out[out.size() / 2], 4 * 65536);
}
