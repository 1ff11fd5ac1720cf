// A decoder's open and decode path over any bytes: through its real
// library (QV_FUZZ_DECODER, in <build>/bin/decoder), from a file, as the
// worker drives it. It must answer or fail, never crash, and keep its
// blocks within bounds. Built once per decoder.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/folders.h"
#include "foundation/platform/processinfo.h"
#include "plugins/xdll.h"

namespace {

clQvDecoder decoder;
clString file;
std::string fileUtf8;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    clString library;
    library.AssignAnsi(QV_FUZZ_DECODER);
    if (!decoder.Bind(library.text)) {
        std::fprintf(stderr, "can't load %s\n", QV_FUZZ_DECODER);
        std::abort();
    }
    file = GetTempFolder();
    file.Append(clString::Formatted(u"qvfuzz-decoder-%s" QV_FUZZ_EXTENSION, GetProcessGuidText().text));
    fileUtf8 = file.ToUtf8();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::FILE* out = std::fopen(fileUtf8.c_str(), "wb");
    if (out == nullptr) return 0;
    std::fwrite(data, 1, size, out);
    std::fclose(out);
    const qv_log_record log{};
    if (!decoder.CreateInstance(&log)) __builtin_trap();
    qv_open_record open{};
    open.fileName = file.text;
    open.request = QV_OPEN_REQUEST;
    if (decoder.Open(decoder.instance, &open) != 0) {
        qv_audio_format format{};
        qv_query_record query{};
        query.facts = &format;
        if (decoder.Get(decoder.instance, u"Format", &query) == 0) __builtin_trap();
        uint64_t frames = 0;
        for (int blocks = 0; blocks < 64; ++blocks) {
            qv_audio_block block{};
            int32_t rc = decoder.DecodeBlock(decoder.instance, &block);
            if (rc <= 0) break;
            if (block.frames == 0 || block.frames > 65536 || block.position != frames) __builtin_trap();
            // Touch every sample: a block must hold what it claims.
            const auto* bytes = static_cast<const unsigned char*>(block.samples);
            unsigned sum = 0;
            for (size_t i = 0; i < size_t{block.frames} * format.channels * 4; ++i) sum += bytes[i];
            (void)sum;
            frames += block.frames;
        }
        decoder.Close(decoder.instance);
    }
    decoder.DestroyInstance();
    return 0;
}
