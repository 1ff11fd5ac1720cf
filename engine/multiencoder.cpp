#include "engine/multiencoder.h"

#include "foundation/commandoptions.h"
#include "foundation/specialfolder.h"

namespace {

constexpr int32_t kMusicFolder = 13;

clString Unquoted(clString text) {
    text.Replace(u"{mqt}", u"\"");
    return text;
}

clString Quoted(clString text) {
    text.Replace(u"\"", u"{mqt}");
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

void ReadMultiItems(const clString& encoderOptions, clMultiEncoderItems& items) {
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
        item->dspEffects = Unquoted(options.Get(clString::Formatted(u"encDSP%d", n).text));
        items.Add(item);
    }
}

void ParseMultiItems(const clString& encoderOptions, clMultiEncoderItems& items) {
    ReadMultiItems(encoderOptions, items);
    for (int64_t i = 0; i < items.Count(); ++i) {
        clMultiEncoderItem& item = items[i];
        if (item.folder.IsEmpty()) item.folder = GetSpecialFolder(kMusicFolder);
        if (item.namingRule.IsEmpty()) item.namingRule = u"[origpath]\\[origfilename]";
    }
}

bool MultiItemTextFits(const clString& text) { return text.FindChar(u'"') == 0; }

clString BuildMultiItems(const clMultiEncoderItems& items) {
    clString text;
    for (int64_t i = 0; i < items.Count(); ++i) {
        const clMultiEncoderItem& item = items[i];
        auto n = static_cast<int32_t>(i + 1);
        if (i > 0) text.Append(u" ");
        text.Append(clString::Formatted(u"-enc%d=\"", n).text);
        text.Append(item.encoderName);
        text.Append(u"=");
        text.Append(Quoted(item.encoderOptions));
        text.Append(clString::Formatted(u"\" -encMopt%d=\"", n).text);
        clString target;
        if (!item.folder.IsEmpty()) {
            target = clString(u"-tofolder={mqt}", item.folder.text);
            target.Append(u"{mqt}");
        }
        if (!item.namingRule.IsEmpty()) {
            if (!target.IsEmpty()) target.Append(u" ");
            target.Append(u"-dynamic={mqt}");
            target.Append(item.namingRule);
            target.Append(u"{mqt}");
        }
        text.Append(target);
        text.Append(clString::Formatted(u"\" -encDSP%d=\"", n).text);
        text.Append(Quoted(item.dspEffects));
        text.Append(u"\"");
    }
    return text;
}
