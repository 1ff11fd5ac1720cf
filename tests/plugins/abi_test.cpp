#include <gtest/gtest.h>

#include <cstddef>

#include "plugins/quillotone_plugin.h"

extern "C" size_t qv_c_record_sizes[];

TEST(PluginAbi, RecordsHaveTheSameLayoutInCAndCpp) {
    const size_t cpp[] = {
        sizeof(qv_log_record),         sizeof(qv_query_record), sizeof(qv_batch_end_record),
        sizeof(qv_stream_facts),       sizeof(qv_open_record),  sizeof(qv_audio_format),
        sizeof(qv_audio_block),        sizeof(qv_begin_record), sizeof(qv_encoder_begin_record),
        sizeof(qv_encoder_end_record), sizeof(qv_after_record),
    };
    const size_t expected[] = {24, 56, 56, 68, 128, 24, 24, 60, 76, 32, 40};
    for (size_t i = 0; i < sizeof cpp / sizeof cpp[0]; ++i) {
        EXPECT_EQ(qv_c_record_sizes[i], cpp[i]) << i;
        EXPECT_EQ(cpp[i], expected[i]) << i;
    }
}

TEST(PluginAbi, FactsCopiedIntoTheSourceRecordKeepTheirOffsets) {
    qv_open_record open{};
    open.facts.channels = 2;
    open.facts.samplesPerSecond = 44100;
    open.facts.lengthMs = 0x0102030405060708ull;
    const auto* bytes = reinterpret_cast<const unsigned char*>(&open);
    EXPECT_EQ(bytes[12 + 2], 2);
    EXPECT_EQ(bytes[12 + 4], 44100 & 0xFF);
    EXPECT_EQ(bytes[12 + 44], 0x08);  // little-endian, at an offset that is not a multiple of 8
}
