// The ID3 chunk of WAVE and AIFF files, through TagLib; see waveid3.h.
#include "waveid3.h"

#include <taglib/aifffile.h>
#include <taglib/wavfile.h>

#include <string>
#include <vector>

#include "codecs/common/codecfiles.h"
#include "codecs/common/id3tags.h"

extern "C" int qvc_read_wave_id3(const char16_t* name, int aiff, qvc_wave_id3_add add, void* context) {
    qvc::NativeName path = qvc::Native(name);
    std::vector<qvc::Tag> found;
    bool tagged = false;
    if (aiff != 0) {
        TagLib::RIFF::AIFF::File file(path.c_str(), false);
        tagged = file.isValid() && file.hasID3v2Tag();
        if (tagged) {
            found = qvc::TagsFromProperties(file.tag()->properties());
            qvc::AddId3Pictures(*file.tag(), found);
        }
    } else {
        TagLib::RIFF::WAV::File file(path.c_str(), false);
        tagged = file.isValid() && file.hasID3v2Tag();
        if (tagged) {
            found = qvc::TagsFromProperties(file.ID3v2Tag()->properties());
            qvc::AddId3Pictures(*file.ID3v2Tag(), found);
        }
    }
    for (const qvc::Tag& tag : found) {
        add(context, tag.name.data(), tag.name.size(), tag.value.data(), tag.value.size(), tag.binary.data(),
            tag.binary.size());
    }
    return tagged ? 1 : 0;
}
