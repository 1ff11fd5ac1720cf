// Effect "ID Tag Processing": edits the tags a file is converted with.
// The audio passes untouched. It runs in the worker for the real output,
// and in the front end on a copy of the tags so that output names see the
// changes; there the delete options come spelt "-replaceddelall" and
// "-replaceddelexcept" and delete nothing, so a name can still use a tag
// the output will not carry.
//
// Settings, applied in this order whatever order they are written in:
//   -delall                    delete every tag, pictures included
//   -delexcept="a;b"           delete every tag but those named
//   -remove="name"             delete one tag (may be repeated)
//   -set="name=value"          give a tag this value, replacing any
//                              other (may be repeated)
//   -append="name=value"       add a value to a tag, after the ones it
//                              has (may be repeated)
// Names are compared ignoring case; "picture" names the pictures.
#include <string>
#include <vector>

#include "codecs/common/codecsupport.h"

namespace {

struct Setting {
    std::u16string key;  // lower case, without the dash
    std::u16string value;
};

// `-key` and `-key="value"` items, in order. Text outside them is skipped.
std::vector<Setting> ParseSettings(const std::u16string& text) {
    std::vector<Setting> out;
    size_t at = 0;
    while ((at = text.find(u'-', at)) != std::u16string::npos) {
        size_t end = at + 1;
        while (end < text.size() && text[end] != u'=' && text[end] != u' ') ++end;
        Setting setting{qvc::LowerTag(text.substr(at + 1, end - at - 1)), std::u16string()};
        if (end < text.size() && text[end] == u'=') {
            if (end + 1 < text.size() && text[end + 1] == u'"') {
                size_t close = text.find(u'"', end + 2);
                if (close == std::u16string::npos) close = text.size();
                setting.value = text.substr(end + 2, close - end - 2);
                end = close + 1;
            } else {
                size_t space = text.find(u' ', end + 1);
                if (space == std::u16string::npos) space = text.size();
                setting.value = text.substr(end + 1, space - end - 1);
                end = space;
            }
        }
        out.push_back(setting);
        at = end;
    }
    return out;
}

std::vector<std::u16string> Names(const std::u16string& list) {
    std::vector<std::u16string> names;
    size_t start = 0;
    for (;;) {
        size_t end = list.find_first_of(u";,", start);
        std::u16string name = qvc::LowerTag(list.substr(start, end == std::u16string::npos ? end : end - start));
        while (!name.empty() && name.front() == u' ') name.erase(0, 1);
        while (!name.empty() && name.back() == u' ') name.pop_back();
        if (!name.empty()) names.push_back(name);
        if (end == std::u16string::npos) return names;
        start = end + 1;
    }
}

void EditTags(std::vector<qvc::Tag>& tags, const std::vector<Setting>& settings) {
    auto removeIf = [&tags](auto keep) {
        std::vector<qvc::Tag> kept;
        for (qvc::Tag& tag : tags) {
            if (keep(qvc::LowerTag(tag.name))) kept.push_back(std::move(tag));
        }
        tags = std::move(kept);
    };
    for (const Setting& s : settings) {
        if (s.key == u"delall") removeIf([](const std::u16string&) { return false; });
        if (s.key == u"delexcept") {
            std::vector<std::u16string> keep = Names(s.value);
            removeIf([&keep](const std::u16string& name) {
                for (const std::u16string& k : keep) {
                    if (k == name) return true;
                }
                return false;
            });
        }
    }
    for (const Setting& s : settings) {
        if (s.key == u"remove") {
            std::u16string gone = qvc::LowerTag(s.value);
            removeIf([&gone](const std::u16string& name) { return name != gone; });
        }
    }
    for (const char16_t* key : {u"set", u"append"}) {
        for (const Setting& s : settings) {
            if (s.key != key) continue;
            size_t equals = s.value.find(u'=');
            if (equals == 0 || equals == std::u16string::npos) continue;
            std::u16string name = s.value.substr(0, equals), value = s.value.substr(equals + 1);
            std::u16string lower = qvc::LowerTag(name);
            qvc::Tag* found = nullptr;
            for (qvc::Tag& tag : tags) {
                if (qvc::LowerTag(tag.name) == lower && tag.binary.empty()) {
                    found = &tag;
                    break;
                }
            }
            if (found == nullptr) {
                tags.push_back({name, value, std::string()});
            } else if (s.key == u"set" || found->value.empty()) {
                found->value = value;
            } else {
                found->value += u'\r';
                found->value += value;
            }
        }
    }
}

struct Effect : qvc::EffectBase {
    std::string block;  // the edited tags, handed back through the record

    bool Begin(qv_begin_record& record, const std::u16string& settings) {
        std::vector<qvc::Tag> tags = qvc::ReadTagBlock(record.tags, record.tagsSize);
        EditTags(tags, ParseSettings(settings));
        block = qvc::WriteTagBlock(tags);
        record.tags = block.data();
        record.tagsSize = static_cast<uint32_t>(block.size());
        return true;
    }
};

constexpr bool kTwoPass = false;
// What "qvt plugins" shows of the options (see the top of this file).
constexpr const char* kOptionHelp =
    "-delall                    delete every tag, pictures included\n"
    "-delexcept=\"a;b\"           delete every tag but those named\n"
    "-remove=\"name\"             delete one tag (may be repeated)\n"
    "-set=\"name=value\"          give a tag this value, replacing any\n"
    "                           other (may be repeated)\n"
    "-append=\"name=value\"       add a value to a tag, after the ones it\n"
    "                           has (may be repeated)\n"
    "Names are compared ignoring case; \"picture\" names the pictures.\n";

}  // namespace

#include "codecs/common/effectexports.h"
