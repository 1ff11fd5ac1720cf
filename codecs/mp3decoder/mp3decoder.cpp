// Decoder "MP3", on libmpg123: MPEG-1/2/2.5 layer I to III, delivered as
// 32-bit float. Gapless: the encoder delay and padding that the LAME/Xing
// header states are left out, so a file made from N samples decodes to N
// samples. Tags through TagLib (ID3v2, ID3v1, APE), with the names of
// vorbiscomments.h; ID3v2 pictures as "picture" tags. A stream that
// changes its rate or channels on the way (files joined) keeps its first
// format throughout. No options.
#include <mpg123.h>
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>
#include <taglib/tpropertymap.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "codecs/common/codecfiles.h"
#include "codecs/common/formatkeeper.h"
#include "codecs/common/id3tags.h"
#include "codecs/common/vorbiscomments.h"

namespace {

int64_t FileSizeOf(const qv_char* name) {
    qvc::OwnedFile file(qvc::OpenFile(name, "rb"));
    if (file == nullptr || std::fseek(file.get(), 0, SEEK_END) != 0) return 0;
    return qvc::Tell(file.get());
}

// Deleting a handle closes its stream first.
void CloseAndDelete(mpg123_handle* handle) {
    mpg123_close(handle);
    mpg123_delete(handle);
}

struct Decoder : qvc::LossyDecoderBase {
    qvc::Owned<mpg123_handle, CloseAndDelete> mpg;
    std::vector<float> block;
    int64_t fileSize = 0;
    bool damagedEnd = false;  // decoding ended at a damage near the end
    bool ended = false;
    // The format libmpg123 delivers now; the stream keeps the first one.
    uint32_t currentRate = 0;
    int currentChannels = 0;
    qvc::FormatKeeper<float> keeper;
    std::vector<float> kept;  // the block handed out

    void StartFormat() {
        currentRate = rate;
        currentChannels = channels;
        keeper.Start(rate, channels);
        ended = damagedEnd = false;
    }

    void Close() override {
        mpg.reset();
        channels = 0;
    }

    // The encoder that the Xing/Info frame names ("LAME3.100"), when the
    // file has no tag that names one. The frame is the first after any
    // ID3v2 tag.
    void ReadEncoderName(const qv_char* fileName) {
        qvc::OwnedFile file(qvc::OpenFile(fileName, "rb"));
        if (file == nullptr) return;
        unsigned char id3[10] = {};
        uint64_t audioStart = 0;
        if (std::fread(id3, 1, 10, file.get()) == 10 && std::memcmp(id3, "ID3", 3) == 0) {
            audioStart =
                10 + ((id3[6] & 0x7Fu) << 21 | (id3[7] & 0x7Fu) << 14 | (id3[8] & 0x7Fu) << 7 | (id3[9] & 0x7Fu));
            if ((id3[5] & 0x10) != 0) audioStart += 10;  // a footer
        }
        std::string head(4096, '\0');
        head.resize(qvc::Seek(file.get(), audioStart) ? std::fread(head.data(), 1, head.size(), file.get()) : 0);
        file.reset();
        size_t xing = head.find("Xing");
        if (xing == std::string::npos) xing = head.find("Info");
        size_t lame = xing == std::string::npos ? std::string::npos : head.find("LAME", xing);
        if (lame == std::string::npos || lame > xing + 200) return;
        std::string name;
        for (size_t i = lame; i < head.size() && i < lame + 9 && head[i] > ' ' && head[i] < 127; ++i) name += head[i];
        encoder = qvc::FromBytes(name);
    }

    void ReadTags(const qv_char* name) {
        tags.clear();
        TagLib::MPEG::File file(qvc::Native(name).c_str(), false);
        if (!file.isValid()) return;
        tags = qvc::TagsFromProperties(file.properties());
        if (TagLib::ID3v2::Tag* id3 = file.ID3v2Tag()) {
            qvc::AddId3Pictures(*id3, tags);
            TagLib::ID3v2::FrameList encoders = id3->frameList("TSSE");
            if (!encoders.isEmpty()) encoder = qvc::FromBytes(encoders.front()->toString().to8Bit(true));
        }
    }

    bool Open(const qv_char* name) {
        Close();
        encoder.clear();
        encoderSettings.clear();
        position = 0;
        std::string path = qvc::FileName(name);
        int rc = MPG123_OK;
        mpg.reset(mpg123_new(nullptr, &rc));
        if (mpg == nullptr) return Fail("the MP3 decoder can't start");
        mpg123_param(mpg.get(), MPG123_FLAGS, MPG123_GAPLESS | MPG123_FORCE_FLOAT | MPG123_QUIET, 0.0);
        mpg123_format_none(mpg.get());
        for (long r : {8000L, 11025L, 12000L, 16000L, 22050L, 24000L, 32000L, 44100L, 48000L}) {
            mpg123_format(mpg.get(), r, MPG123_MONO | MPG123_STEREO, MPG123_ENC_FLOAT_32);
        }
        if (mpg123_open(mpg.get(), path.c_str()) != MPG123_OK) return Fail("the file can't be opened");
        fileSize = FileSizeOf(name);
        int encoding = 0;
        long mpgRate = 0;
        int mpgChannels = 0;
        if (mpg123_getformat(mpg.get(), &mpgRate, &mpgChannels, &encoding) != MPG123_OK || mpgRate <= 0 ||
            mpgChannels <= 0) {
            return Fail("the file is not an MP3 file");
        }
        // The length is what the LAME/Xing header says, or an estimate
        // from the file's size: decoding goes to the stream's end either
        // way. No full scan: it costs a pass over the file, and where the
        // header is out of date (a cut or edited file) it makes libmpg123
        // drop the gapless trimming, so the audio would gain the encoder's
        // delay at its start.
        off_t length = mpg123_length(mpg.get());
        frames = length > 0 ? static_cast<int64_t>(length) : 0;
        mpg123_frameinfo info{};
        mpg123_info(mpg.get(), &info);
        // libmpg123 trims when the file states the delay and padding.
        long delay = -1;
        double ignored = 0;
        gapless = mpg123_getstate(mpg.get(), MPG123_ENC_DELAY, &delay, &ignored) == MPG123_OK && delay >= 0;
        bitrate = info.vbr == MPG123_CBR ? info.bitrate * 1000 : info.abr_rate * 1000;
        if (bitrate == 0 && info.bitrate > 0) bitrate = info.bitrate * 1000;
        // What the stream tells of how it was made: its bitrate mode.
        std::string mode = info.vbr == MPG123_CBR ? "CBR" : info.vbr == MPG123_ABR ? "ABR" : "VBR";
        encoderSettings = qvc::FromBytes(mode + " " + std::to_string(bitrate / 1000) + " kbit/s");
        ReadTags(name);
        if (encoder.empty()) ReadEncoderName(name);
        formatTag = 0x55;  // MPEG layer 3
        rate = static_cast<uint32_t>(mpgRate);
        channels = mpgChannels;
        StartFormat();
        return true;
    }

    // Reads until a block is ready in the stream's first format, or the
    // stream ends.
    int32_t Decode(qv_audio_block* out) {
        if (mpg == nullptr) return -1;
        kept.clear();
        while (kept.empty() && !ended) {
            const size_t want = 8192 * static_cast<size_t>(currentChannels);
            block.resize(want);
            size_t done = 0;
            int rc =
                mpg123_read(mpg.get(), reinterpret_cast<unsigned char*>(block.data()), want * sizeof(float), &done);
            if (rc != MPG123_OK && rc != MPG123_DONE && rc != MPG123_NEW_FORMAT) {
                if (position + static_cast<int64_t>(done) == 0 || !NearTheEnd()) {
                    error = qvc::FromBytes(mpg123_strerror(mpg.get()));
                    return -1;
                }
                // A damaged or cut end (a broken last frame, garbage, a
                // stray tag): every good frame before it counts.
                damagedEnd = true;
                rc = MPG123_DONE;
            }
            // What was read is in the format before any change it reports.
            size_t frameCount = done / sizeof(float) / static_cast<size_t>(currentChannels);
            if (frameCount > 0 &&
                !keeper.Put(block.data(), frameCount, currentRate, currentChannels, position, kept, error)) {
                return -1;
            }
            if (rc == MPG123_NEW_FORMAT) {
                long newRate = 0;
                int newChannels = 0;
                int encoding = 0;
                if (mpg123_getformat(mpg.get(), &newRate, &newChannels, &encoding) != MPG123_OK || newRate <= 0 ||
                    newChannels <= 0) {
                    error = qvc::FromAscii("the stream changes to a format that can't be read");
                    return -1;
                }
                currentRate = static_cast<uint32_t>(newRate);
                currentChannels = newChannels;
            }
            if (rc == MPG123_DONE) {
                ended = true;
                if (!keeper.Finish(kept, error)) return -1;
            }
        }
        if (kept.empty()) {
            ReportNotes();
            return 0;
        }
        out->samples = kept.data();
        out->frames = static_cast<uint32_t>(kept.size() / static_cast<size_t>(channels));
        out->position = static_cast<uint64_t>(position);
        position += out->frames;
        out->flags = ended ? QV_BLOCK_LAST : 0;
        return 1;
    }

    void ReportNotes() {
        if (!notes.empty()) return;
        notes = keeper.Changes();
        if (damagedEnd) {
            char note[128];
            std::snprintf(note, sizeof note, "the end of the file is damaged; the %.1f s of audio before it were converted",
                          static_cast<double>(position) / rate);
            notes.push_back(note);
        }
    }

    // True when what is left of the file behind the decoder is its last
    // stretch: a damage there ends the audio rather than failing it.
    bool NearTheEnd() {
        off_t at = mpg123_tell_stream(mpg.get());
        if (at < 0 || fileSize <= 0) return false;
        int64_t left = fileSize - static_cast<int64_t>(at);
        return left <= std::max<int64_t>(16384, fileSize / 100);
    }

    bool Rewind(uint64_t frame) {
        if (mpg == nullptr || mpg123_seek(mpg.get(), static_cast<off_t>(frame), SEEK_SET) < 0) return false;
        position = static_cast<int64_t>(frame);
        StartFormat();
        return true;
    }
};

struct Listed {
    const char* extension;
    const char* description;
};
const Listed kDecodes[] = {{".mp3", "MP3"}, {".mp2", "MPEG Layer II"}, {".mp1", "MPEG Layer I"}};

}  // namespace

#include "codecs/common/decoderexports.h"
