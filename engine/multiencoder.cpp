#include "engine/multiencoder.h"

#include "foundation/commandoptions.h"
#include "foundation/specialfolder.h"

namespace {

constexpr int32_t kMusicFolder = 13;

clString Unquoted(clString text) {
    text.Replace(u"{mqt}", u"\"");
    return text;
}

}  // namespace

bool IsMultiEncoder(const clString& encoderName) { return encoderName.EqualsNoCase(u"[Multi Encoder]"); }

int32_t CountMultiItems(const clString& encoderName, const clString& encoderOptions) {
    if (!IsMultiEncoder(encoderName)) return 1;
    clCommandOptions options;
    options.Parse(encoderOptions);
    int32_t count = 0;
    while (!options.Get(clString::Formatted(u"enc%d", count + 1).text).IsEmpty()) ++count;
    return count;
}

void ParseMultiItems(const clString& encoderOptions, clMultiEncoderItems& items) {
    items.Clear();
    clCommandOptions options;
    options.Parse(encoderOptions);
    for (int32_t n = 1;; ++n) {
        clString entry = options.Get(clString::Formatted(u"enc%d", n).text);
        if (entry.IsEmpty()) break;
        int32_t equals = entry.FindChar(u'=');
        if (equals == 0) continue;
        auto* item = new clMultiEncoderItem();
        item->encoderName = entry.Mid(1, equals - 1);
        item->encoderOptions = Unquoted(entry.Mid(equals + 1, entry.Length()));
        clCommandOptions target;
        target.Parse(Unquoted(options.Get(clString::Formatted(u"encMopt%d", n).text)));
        item->namingRule = target.Get(u"dynamic");
        item->folder = target.Get(u"tofolder");
        if (item->folder.IsEmpty()) item->folder = GetSpecialFolder(kMusicFolder);
        if (item->namingRule.IsEmpty()) item->namingRule = u"[origpath]\\[origfilename]";
        item->dspEffects = Unquoted(options.Get(clString::Formatted(u"encDSP%d", n).text));
        items.Add(item);
    }
}
