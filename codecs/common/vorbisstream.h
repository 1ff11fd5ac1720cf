// A Vorbis stream, for the "Ogg Vorbis" decoder, on libvorbisfile: 32-bit
// float in WAVE channel order, the exact length the stream's last granule
// position states. Tags from the Vorbis comments (see vorbiscomments.h),
// pictures from METADATA_BLOCK_PICTURE. A chained file whose links change the
// rate or the channel count is refused when the change is reached. No options.
#pragma once

#include <vorbis/vorbisfile.h>

#include <cstdio>
#include <string>
#include <vector>

#include "codecs/common/oggsupport.h"

namespace qvc {

// libvorbisfile reads through these, from a file of ours.
namespace vorbisfile {

inline size_t ReadFile(void* to, size_t size, size_t count, void* file) {
    return std::fread(to, size, count, static_cast<FILE*>(file));
}
inline int SeekFile(void* file, ogg_int64_t offset, int whence) {
#ifdef _WIN32
    return _fseeki64(static_cast<FILE*>(file), offset, whence);
#else
    return fseeko(static_cast<FILE*>(file), static_cast<off_t>(offset), whence);
#endif
}
inline int CloseFile(void* file) { return std::fclose(static_cast<FILE*>(file)); }
inline long TellFile(void* file) { return static_cast<long>(qvc::Tell(static_cast<FILE*>(file))); }

}  // namespace vorbisfile

struct VorbisStream : qvc::LossyDecoderBase {
    OggVorbis_File vorbis{};  // libvorbisfile's state in a record of ours
    bool open = false;
    std::vector<float> block;

    ~VorbisStream() override { Close(); }
    void Close() override {
        if (open) ov_clear(&vorbis);
        open = false;
        channels = 0;
    }

    bool Open(const qv_char* name) {
        Close();
        position = 0;
        qvc::OwnedFile file(qvc::OpenFile(name, "rb"));
        if (file == nullptr) return Fail("the file can't be opened");
        ov_callbacks callbacks = {vorbisfile::ReadFile, vorbisfile::SeekFile, vorbisfile::CloseFile, vorbisfile::TellFile};
        int rc = ov_open_callbacks(file.get(), &vorbis, nullptr, 0, callbacks);
        if (rc != 0) {
            return Fail(rc == OV_ENOTVORBIS ? "the file is not an Ogg Vorbis file"
                        : rc == OV_EREAD    ? "the file can't be read"
                                            : "the Vorbis headers are damaged");
        }
        file.release();  // libvorbisfile closes it from now on
        open = true;
        vorbis_info* info = ov_info(&vorbis, -1);
        if (info == nullptr || info->channels < 1 || info->channels > 8 || info->rate <= 0) {
            return Fail("the stream has a channel count or rate that can't be played");
        }
        formatTag = 0x674F;  // Ogg Vorbis
        channels = info->channels;
        rate = static_cast<uint32_t>(info->rate);
        ogg_int64_t total = ov_pcm_total(&vorbis, -1);
        frames = total > 0 ? total : 0;
        bitrate = ov_bitrate(&vorbis, -1);
        if (bitrate <= 0) bitrate = info->bitrate_nominal;
        qvc::TakeOggComments(ov_comment(&vorbis, -1), *this);
        return true;
    }

    int32_t Decode(qv_audio_block* out) {
        if (!open) return -1;
        float** planes = nullptr;
        int link = 0;
        long got = 0;
        do {
            got = ov_read_float(&vorbis, &planes, 4096, &link);
        } while (got == OV_HOLE);  // a gap in the pages: the audio goes on after it
        if (got < 0) {
            error = u"the stream is damaged";
            return -1;
        }
        if (got == 0) return 0;
        vorbis_info* info = ov_info(&vorbis, link);
        if (info == nullptr || info->channels != channels || info->rate != static_cast<long>(rate)) {
            error = u"a chained stream changes its rate or channel count";
            return -1;
        }
        block.resize(static_cast<size_t>(got) * static_cast<size_t>(channels));
        for (long f = 0; f < got; ++f) {
            for (int c = 0; c < channels; ++c) block[static_cast<size_t>(f * channels + c)] = planes[c][f];
        }
        qvc::ReorderChannels(block.data(), static_cast<size_t>(got), channels, true);
        return HandOut(block, got, out);
    }

    bool Rewind(uint64_t frame) {
        if (!open || ov_pcm_seek(&vorbis, static_cast<ogg_int64_t>(frame)) != 0) return false;
        position = static_cast<int64_t>(frame);
        return true;
    }
};

}  // namespace qvc
