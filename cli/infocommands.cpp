#include "cli/infocommands.h"

#include <cstdio>
#include <filesystem>

#include "cli/convertcommand.h"
#include "cli/qvtargs.h"
#include "foundation/findfiles.h"
#include "foundation/pathtext.h"
#include "foundation/pointerarray.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "naming/outputpath.h"
#include "plugins/codechandler.h"
#include "plugins/decodercache.h"
#include "plugins/encoderentries.h"
#include "plugins/filetypes.h"
#include "plugins/sourcefile.h"

namespace qvt {

namespace {

const char* const kPluginsHelp = R"help(Usage: qvt plugins [--encoders | --effects]

Lists the installed decoders with the extensions they read, the encoders
(the entries --to takes, with the extension each writes) and the effects
(the names --effect takes), each with what its option string (--options)
or its settings ("NAME=SETTINGS") take.

--encoders and --effects print only those names, one a line, for scripts
and shell completion.
)help";

const char* const kNameHelp = R"help(Usage: qvt name [--folder DIR] [--to ENTRY] RULE FILE...

Prints the output path each FILE would get with the naming RULE, without
converting anything. The rule is the naming language of the program:
"[artist]\[album]\[track] [title]" names folders by the artist and album
tags and the file by track number and title. --to chooses the encoder whose
extension the name gets (default FLAC); --folder the folder below which the
rule applies (default: each source's own folder, where convert would put
the output without --folder).
)help";

const char* const kSettingsHelp = R"help(Usage: qvt settings get KEY NAME
       qvt settings set KEY NAME VALUE [--number]
       qvt settings list [KEY]
       qvt settings delete KEY [NAME]

Reads and writes the settings store by hand. KEY is a path below
"Software\Harrowmere\Quillotone" (empty for that root itself), e.g.
"qvtCodec\FLAC\qvt". "set" writes text, or a number with --number. "list"
names the keys below KEY (each ending in a backslash), then its values as
NAME = VALUE. "delete" removes the value NAME, or without NAME the key KEY
with everything below it.
)help";

const char* const kProfileHelp = R"help(Usage: qvt profile list
       qvt profile create LABEL --to ENCODER [--options TEXT]
       qvt profile delete ENTRY

A profile is a named variant of an encoder with settings of its own; its
entry is written  LABEL "ENCODER"  and is what --to takes ({profileqt} may
stand for each quote, where quotes are hard to pass). "create" stores
the option string given (or none: the encoder's defaults).
)help";

// The installed effects' names, sorted.
std::vector<std::string> EffectNames() {
    clString folder = JoinPath(GetProgramFolder(), clString(u"DSPs"));
    std::vector<std::string> effects;
    clFindFiles find(clString(u"*"), folder);
    while (find.Next()) {
        if (find.IsFolder()) continue;
        effects.push_back(Utf8(GetFileBaseName(find.fullName)));
    }
    std::sort(effects.begin(), effects.end());
    return effects;
}

bool WantsHelp(const std::vector<std::string>& words, const char* help) {
    for (const std::string& w : words) {
        if (w == "--help" || w == "-h") {
            std::fputs(help, stdout);
            return true;
        }
    }
    return false;
}

std::u16string KeyPath(const std::string& key) {
    std::u16string path = kSettingsRoot;
    if (!key.empty()) path += u"\\" + std::u16string(Text(key).text);
    return path;
}

// A value as "get" and "list" print it: text as it is, else the number.
std::string ValueText(const clString& name, const std::u16string& key) {
    clString text = GetSettingText(name.text, 0, key.c_str());
    if (!text.IsEmpty()) return Utf8(text);
    return std::to_string(GetSettingNumber(name.text, 0, key.c_str()));
}

// The option help of a plug-in, indented below its name.
void PrintOptionHelp(const clString& help) {
    std::string text = Utf8(help);
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        std::printf("      %s\n", text.substr(start, end - start).c_str());
        start = end + 1;
    }
}

// True when the settings store has failed; it said why on standard error.
bool StoreFailed() { return !SettingsStoreProblem().IsEmpty(); }

}  // namespace

int PluginsCommand(const std::vector<std::string>& words) {
    if (WantsHelp(words, kPluginsHelp)) return kExitOk;
    bool namesOnly = words.size() == 1 && (words[0] == "--encoders" || words[0] == "--effects");
    if (!words.empty() && !namesOnly) {
        return Fail(kExitUsage, "qvt plugins takes --encoders, --effects or nothing (see qvt plugins --help)");
    }
    if (namesOnly && words[0] == "--encoders") {
        clStringList encoders;
        EnumerateEncoders(encoders, clString());
        for (int64_t i = 0; i < encoders.Count(); ++i) std::printf("%s\n", Utf8(encoders[i]).c_str());
        return kExitOk;
    }
    if (namesOnly) {
        for (const std::string& e : EffectNames()) std::printf("%s\n", e.c_str());
        return kExitOk;
    }
    clStringList filters;
    ScanDecoders(false, nullptr, &filters);
    std::printf("Decoders:\n");
    for (int64_t i = 0; i < filters.Count(); ++i) {
        std::string entry = Utf8(filters[i]);
        size_t cr = entry.find('\r');
        std::printf("  %-28s %s\n", entry.substr(0, cr).c_str(),
                    cr == std::string::npos ? "" : entry.substr(cr + 1).c_str());
    }
    clStringList encoders;
    EnumerateEncoders(encoders, clString());
    std::printf("Encoders:\n");
    for (int64_t i = 0; i < encoders.Count(); ++i) {
        std::printf("  %-28s %s\n", Utf8(encoders[i]).c_str(), Utf8(EncoderExtension(encoders[i])).c_str());
        PrintOptionHelp(OptionHelp(encoders[i], false));
    }
    std::printf("Effects:\n");
    for (const std::string& e : EffectNames()) {
        std::printf("  %s\n", e.c_str());
        PrintOptionHelp(OptionHelp(Text(e), true));
    }
    return kExitOk;
}

int NameCommand(const std::vector<std::string>& words) {
    if (WantsHelp(words, kNameHelp)) return kExitOk;
    Arguments args;
    std::string error;
    if (!ParseArguments(words, {{"folder", true}, {"to", true}}, args, error)) return Fail(kExitUsage, error);
    if (args.positional.size() < 2) return Fail(kExitUsage, "give a naming rule and at least one file");
    std::string rule = args.positional[0];
    std::string problem = NamingRuleProblem(rule);
    if (!problem.empty()) return Fail(kExitUsage, problem);
    std::string entry = ProfileText(args.Last("to", "FLAC"));
    if (!IsKnownEncoder(entry)) return Fail(kExitUsage, "unknown encoder '" + entry + "'");
    clString extension = EncoderExtension(EncoderOfProfile(Text(entry)));
    std::string folder = "[origdrive]";
    if (args.Has("folder")) {
        folder = ResolvePath(args.Last("folder"));
    } else {
        // Beside the source: the rule applies below the source's folder.
        rule = "[origpath]\\" + rule;
    }
    clPointerArray sources;
    for (size_t i = 1; i < args.positional.size(); ++i) {
        std::error_code ignored;
        std::string file = ResolvePath(args.positional[i]);
        if (!std::filesystem::is_regular_file(PathOf(file), ignored)) {
            return Fail(kExitUsage, "cannot read '" + Printable(args.positional[i]) + "'");
        }
        sources.Add(new clSourceFile(Text(file)));
    }
    ReadSourcesToLevel(sources, 2, nullptr);
    for (int64_t i = 0; i < sources.count; ++i) {
        const clSourceFile& source = *sources.At<clSourceFile>(i);
        clString path = ComputeOutputPath(source, Text(folder), Text(rule), extension, clString(), clString());
        std::printf("%s -> %s\n", Utf8(source.path).c_str(), Utf8(path).c_str());
        delete &source;
    }
    return kExitOk;
}

int SettingsCommand(const std::vector<std::string>& words) {
    if (WantsHelp(words, kSettingsHelp) || words.empty()) {
        if (words.empty()) return Fail(kExitUsage, "give get, set, list or delete (see qvt settings --help)");
        return kExitOk;
    }
    Arguments args;
    std::string error;
    if (!ParseArguments(words, {{"number", false}}, args, error)) return Fail(kExitUsage, error);
    const std::vector<std::string>& p = args.positional;
    const std::string& verb = p[0];
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    if (verb == "get" && p.size() == 3) {
        std::u16string key = KeyPath(p[1]);
        clString name = Text(p[2]);
        bool exists = SettingExists(name.text, 0, key.c_str());
        // A store that can't be read has said so; its values are unknown,
        // not missing.
        if (StoreFailed()) return kExitFailed;
        if (!exists) return Fail(kExitFailed, "no value '" + p[2] + "' there");
        std::printf("%s\n", ValueText(name, key).c_str());
        return kExitOk;
    }
    if (verb == "set" && p.size() == 4) {
        std::u16string key = KeyPath(p[1]);
        clString name = Text(p[2]);
        bool stored = false;
        if (args.Has("number")) {
            // A number value holds 32 bits: anything else is refused, not
            // cut to what fits.
            const std::string& digits = p[3];
            bool plain =
                !digits.empty() && digits.size() <= 10 && digits.find_first_not_of("0123456789") == std::string::npos;
            unsigned long long value = plain ? std::strtoull(digits.c_str(), nullptr, 10) : 0;
            if (!plain || value > 0xFFFFFFFFull) {
                return Fail(kExitUsage, "'" + Printable(digits) + "' is not a number from 0 to 4294967295");
            }
            stored = SetSettingNumber(static_cast<uint32_t>(value), name.text, 0, key.c_str());
        } else {
            stored = SetSettingText(Text(p[3]), name.text, 0, key.c_str());
        }
        if (StoreFailed()) return kExitFailed;
        return stored ? kExitOk : Fail(kExitFailed, "the value could not be stored");
    }
    if (verb == "list" && p.size() <= 2) {
        std::u16string key = KeyPath(p.size() == 2 ? p[1] : "");
        clStringList names;
        EnumSettingKeys(key.c_str(), names);
        for (int64_t i = 0; i < names.Count(); ++i) std::printf("%s\\\n", Utf8(names[i]).c_str());
        EnumSettingValues(key.c_str(), names);
        for (int64_t i = 0; i < names.Count(); ++i) {
            std::printf("%s = %s\n", Utf8(names[i]).c_str(), ValueText(names[i], key).c_str());
        }
        return StoreFailed() ? kExitFailed : kExitOk;
    }
    if (verb == "delete" && p.size() == 3) {
        if (!DeleteSettingValue(Text(p[2]).text, KeyPath(p[1]).c_str())) {
            return Fail(kExitFailed, "no value '" + p[2] + "' there");
        }
        return kExitOk;
    }
    if (verb == "delete" && p.size() == 2 && !p[1].empty()) {
        std::u16string key = KeyPath(p[1]);
        size_t slash = key.rfind(u'\\');
        DeleteSettingKeyTree(key.substr(0, slash).c_str(), key.substr(slash + 1).c_str());
        return kExitOk;
    }
    return Fail(kExitUsage, "unknown or incomplete settings command (see qvt settings --help)");
}

int ProfileCommand(const std::vector<std::string>& words) {
    if (WantsHelp(words, kProfileHelp)) return kExitOk;
    Arguments args;
    std::string error;
    if (!ParseArguments(words, {{"to", true}, {"options", true}}, args, error)) return Fail(kExitUsage, error);
    const std::vector<std::string>& p = args.positional;
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    if (p.size() == 1 && p[0] == "list") {
        clStringList profiles;
        ListProfiles(profiles);
        for (int64_t i = 0; i < profiles.Count(); ++i) std::printf("%s\n", Utf8(profiles[i]).c_str());
        return StoreFailed() ? kExitFailed : kExitOk;
    }
    if (p.size() == 2 && p[0] == "create") {
        std::string encoder = args.Last("to");
        if (encoder.empty()) return Fail(kExitUsage, "name the profile's encoder with --to");
        if (!IsKnownEncoder(encoder) || encoder.back() == '"') {
            return Fail(kExitUsage, "unknown encoder '" + encoder + "'");
        }
        if (p[1].empty() || p[1].find('"') != std::string::npos) {
            return Fail(kExitUsage, "a profile's label can't be empty or hold a double quote");
        }
        clString entry = ProfileEntryText(Text(p[1]), Text(encoder));
        clStringList existing;
        ListProfiles(existing);
        if (ProfileNameTaken(entry, existing)) {
            return Fail(kExitUsage, "a profile named '" + Utf8(entry) + "' exists already");
        }
        if (!SetSettingText(Text(args.Last("options")), kEntryOptionsSetting.name, 0, EntryKeyPath(entry, clString()).text)) {
            return Fail(kExitFailed, "the profile could not be stored");
        }
        std::printf("%s\n", Utf8(entry).c_str());
        return kExitOk;
    }
    if (p.size() == 2 && p[0] == "delete") {
        if (!DeleteProfile(Text(ProfileText(p[1])))) return Fail(kExitUsage, "'" + p[1] + "' is not a profile");
        return kExitOk;
    }
    return Fail(kExitUsage, "unknown or incomplete profile command (see qvt profile --help)");
}

}  // namespace qvt
