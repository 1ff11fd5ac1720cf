#include "cli/convertcommand.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "cli/qvtargs.h"
#include "foundation/commandoptions.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/crashdump.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/stringlist.h"
#include "plugins/codechandler.h"
#include "plugins/effectstring.h"
#include "plugins/encoderentries.h"
#include "plugins/filetypes.h"
#include "plugins/optionfields.h"

namespace qvt {

const char* const kConvertHelp =
    R"help(Usage: qvt convert [options] PATH...

Converts every audio file named, and every audio file in the folders named,
with one worker process per file on every core. The files and folders are
never changed; each output is written whole or not at all.

Options:
  --to ENTRY          the encoder (or profile) to convert with, as "qvt plugins"
                      lists them: "FLAC", "MP3 (Lame)", "Ogg Vorbis", ...
                      Give --to several times to write every file with each
                      encoder at once. Required: a script says what it makes.
                      A profile is written  LABEL "ENCODER" ; where quotes are
                      hard to pass, {profileqt} stands for each of its quotes.
  --options TEXT      the option string of the encoder named by the --to just
                      before it, e.g. --to "MP3 (Lame)" --options '-mode="vbr"'
  --folder DIR        where the outputs go. Without --naming every output lands
                      in DIR under its source's name. Default: beside the source.
  --naming RULE       the output path by the naming language, below --folder
                      (or the source's drive), without extension; a backslash
                      or slash makes a folder: "[artist]\[album]\[track] [title]"
  --effect "NAME=SETTINGS"
                      an effect for the chain, in order; give it once per effect,
                      e.g. --effect "ReplayGain=" --effect "Resample=-rate={qt}48000{qt}"
  --cores N           run at most N files at once (default: one per core)
  --overwrite MODE    what to do with outputs that exist already: ask (the
                      default; with no terminal to ask, skip), skip, always
  --recursive         walk the folders named, and all folders below them
  -q, --quiet         say nothing but the errors
  -v, --verbose       also each file's information lines, as the file ends
  --window            show the conversion in the program's window instead of
                      the terminal, where there is a display (the exit status
                      then says only whether the run could start: 0, or 1
                      and 2 as below)
  --help              this text

An output never replaces its own source; two files of one run that would
make the same output get names of their own ("song (2).flac"). A file that
can't be handed over (not a regular file, a line break in its name) is
skipped with a line.

Progress and results go to standard output, errors and the error log to
standard error.

Exit status: 0 every file converted, 1 some files failed or were skipped
(the log names them), 2 a usage error, 130 cancelled (Ctrl-C), 143 ended by
SIGTERM, 129 by SIGHUP (the run stops at once and leaves no partial file).

Each run keeps its choices to itself, in a profile of the entry named after
the run ("qvt-" and its process id) that goes when the run ends: runs at
once never mix, and the settings of the windows stay as they are.
)help";

clString RunProfileName(uint32_t processId) {
    return clString::Formatted(u"qvt-%llu", static_cast<unsigned long long>(processId));
}

void RemoveLeftRunProfiles() {
    clStringList entries;
    EnumSettingKeys(clString::Formatted(u"%s\\%s", settingsRootKey.text, kEntriesKeyName).text, entries);
    for (int64_t e = 0; e < entries.Count(); ++e) {
        clString entryKey = EntryKeyPath(entries[e], clString());
        clStringList profiles;
        EnumSettingKeys(entryKey.text, profiles);
        for (int64_t p = 0; p < profiles.Count(); ++p) {
            const clString& name = profiles[p];
            if (name.Length() < 5 || name.Compare(u"qvt-", 4) != 0) continue;
            std::string digits = Utf8(name.Mid(5, name.Length()));
            if (digits.empty() || digits.size() > 10 || digits.find_first_not_of("0123456789") != std::string::npos) {
                continue;
            }
            uint64_t id = std::stoull(digits);
            if (id > 0xFFFFFFFFull || !PlatformProcessRunning(static_cast<uint32_t>(id))) {
                DeleteSettingKeyTree(entryKey.text, name.text);
            }
        }
    }
}

std::vector<std::string> DecoderExtensions() {
    clStringList found;
    ScanDecoders(false, &found, nullptr);
    std::vector<std::string> extensions;
    for (int64_t i = 0; i < found.Count(); ++i) {
        std::string e = Utf8(found[i]);
        std::transform(e.begin(), e.end(), e.begin(), [](unsigned char c) { return std::tolower(c); });
        if (std::find(extensions.begin(), extensions.end(), e) == extensions.end()) extensions.push_back(e);
    }
    return extensions;
}

std::string NamingRuleProblem(const std::string& rule) {
    if (rule.empty()) return "the naming rule is empty";
    size_t start = 0;
    for (;;) {
        size_t end = rule.find_first_of("\\/", start);
        std::string part = rule.substr(start, end == std::string::npos ? std::string::npos : end - start);
        bool blank = part.find_first_not_of(' ') == std::string::npos;
        if (end == std::string::npos) {
            if (blank) return "the naming rule '" + rule + "' ends in a separator and leaves the file name empty";
            return "";
        }
        if (blank && !(start == 0 && end == 0)) {
            return "the naming rule '" + rule + "' leaves a folder name empty";
        }
        start = end + 1;
    }
}

std::string ProfileText(std::string entry) {
    for (size_t at; (at = entry.find("{profileqt}")) != std::string::npos;) entry.replace(at, 11, "\"");
    return entry;
}

bool IsKnownEncoder(const std::string& entry) {
    clStringList encoders;
    EnumerateEncoders(encoders, clString());
    clString encoder = EncoderOfProfile(Text(entry));
    for (int64_t i = 0; i < encoders.Count(); ++i) {
        if (encoders[i].EqualsNoCase(encoder.text)) return true;
    }
    return false;
}

namespace {

const std::vector<OptionSpec> kSpecs = {{"to", true},     {"options", true}, {"folder", true},    {"naming", true},
                                        {"effect", true}, {"cores", true},   {"overwrite", true}, {"recursive", false},
                                        {"window", false}, {"quiet", false},    {"q", false},         {"verbose", false},
                                        {"v", false}};

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// Every double quote of an option text, for a place where the text itself
// stands inside quotes of a multi-encoder item.
std::string Nested(std::string text) {
    std::string out;
    for (char c : text) {
        if (c == '"')
            out += "{mqt}";
        else
            out.push_back(c);
    }
    return out;
}

struct Target {
    std::string entry;
    std::string options;
};

bool Accepted(const std::filesystem::path& file, const std::vector<std::string>& extensions) {
    std::string extension = Lower(file.extension().string());
    return !extension.empty() && std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

// What collecting the files found: the files to convert, and how many
// named or found files can't be passed on (each has had its line).
struct Collected {
    std::vector<std::string> files;
    int refused = 0;
    bool audioBelow = false;  // without --recursive: a subfolder holds audio
};

// True when some folder below `folder` holds a file of an accepted kind.
bool AudioBelow(const std::filesystem::path& folder, const std::vector<std::string>& extensions) {
    std::error_code error;
    auto options = std::filesystem::directory_options::skip_permission_denied;
    for (std::filesystem::recursive_directory_iterator it(folder, options, error), end; !error && it != end;
         it.increment(error)) {
        std::error_code ignored;
        if (it.depth() > 0 && !it->is_directory(ignored) && Accepted(it->path(), extensions)) return true;
    }
    return false;
}

// A file qvt can hand over: a regular file (a pipe or a device named
// "x.wav" would block the examination for ever), with no line break in its
// name (the list file is one name a line, and the name would arrive as two
// other ones).
bool Admissible(const std::filesystem::path& file, Collected& collected) {
    std::string name = BytesOf(file);
    const char* problem = nullptr;
    std::error_code error;
    if (name.find_first_of("\r\n") != std::string::npos) {
        problem = "its name holds a line break, which the list of files can't carry; rename it";
    } else if (!std::filesystem::is_regular_file(file, error)) {
        problem = "it is not a regular file (a pipe, a device or a socket)";
    }
    if (problem == nullptr) return true;
    std::fprintf(stderr, "qvt: skipping '%s': %s\n", Printable(name).c_str(), problem);
    ++collected.refused;
    return false;
}

// The files of every path: a file as it is, a folder by its audio files.
// Every path is made absolute and normal first.
bool CollectFiles(const std::vector<std::string>& paths, bool recursive, Collected& collected) {
    std::vector<std::string> extensions = DecoderExtensions();
    std::vector<std::string>& files = collected.files;
    for (const std::string& given : paths) {
        std::error_code error;
        std::filesystem::path p = PathOf(ResolvePath(given));
        auto status = std::filesystem::status(p, error);
        if (error || !std::filesystem::exists(status)) {
            Fail(kExitUsage, "cannot read '" + Printable(given) + "': no such file or folder");
            return false;
        }
        if (!std::filesystem::is_directory(status)) {
            if (!Accepted(p, extensions)) {
                Fail(kExitUsage, "'" + Printable(given) + "' is not a kind of audio file the installed decoders read");
                return false;
            }
            if (Admissible(p, collected)) files.push_back(BytesOf(p));
            continue;
        }
        auto take = [&](const std::filesystem::directory_entry& e) {
            std::error_code ignored;
            if (e.is_directory(ignored) || !Accepted(e.path(), extensions)) return;
            if (Admissible(e.path(), collected)) files.push_back(BytesOf(e.path()));
        };
        auto options = std::filesystem::directory_options::skip_permission_denied;
        if (recursive) {
            for (std::filesystem::recursive_directory_iterator it(p, options, error), end; !error && it != end;
                 it.increment(error)) {
                take(*it);
            }
        } else {
            for (std::filesystem::directory_iterator it(p, options, error), end; !error && it != end;
                 it.increment(error)) {
                take(*it);
            }
        }
        if (error) {
            Fail(kExitUsage, "cannot read the folder '" + Printable(given) + "': " + error.message());
            return false;
        }
        if (!recursive && files.empty() && !collected.audioBelow) collected.audioBelow = AudioBelow(p, extensions);
    }
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    return true;
}

// What a described option takes, as a user writes it: "0..8", "vbr|cbr".
std::string AllowedText(const clOptionField& field) {
    if (field.kind == kOptionFlag) return "1";
    if (field.kind == kOptionChoice) {
        std::string text;
        for (int64_t c = 0; c < field.choices.Count(); ++c) {
            if (!field.choices[c].IsEmpty()) text += (text.empty() ? "" : "|") + Utf8(field.choices[c]);
        }
        return text;
    }
    char range[64];
    std::snprintf(range, sizeof range, "%g..%g", field.low, field.high);
    return range;
}

// Checks an option string against what its library describes, before
// anything starts; empty when it passes (or nothing is described).
std::string OptionsProblem(const clString& library, bool effect, const std::string& options, const std::string& what) {
    clOptionFields fields;
    if (options.empty() || !OptionSpecOf(library, effect, fields)) return "";
    clCommandOptions given;
    // Effect settings stand inside an effect string, where {qt} is a quote.
    clString text = Text(options);
    text.Replace(u"{qt}", u"\"");
    given.Parse(text);
    for (int64_t k = 0; k < given.keys.Count(); ++k) {
        const clString& key = given.keys[k];
        const clOptionField* field = nullptr;
        std::string names;
        for (int64_t i = 0; i < fields.Count(); ++i) {
            names += (i == 0 ? "-" : ", -") + Utf8(fields[i].name);
            if (fields[i].name.EqualsNoCase(key)) field = &fields[i];
        }
        if (field == nullptr) return what + " has no option -" + Utf8(key) + " (it takes " + names + ")";
        if (!OptionValueAllowed(*field, given.values[k])) {
            return what + ": -" + Utf8(field->name) + " takes " + AllowedText(*field) + ", not '" +
                   Utf8(given.values[k]) + "'";
        }
    }
    return "";
}

// A whole number written with digits alone, or -1.
int WholeNumber(const std::string& text) {
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos) return -1;
    return std::atoi(text.c_str());
}

bool SetText(const std::u16string& key, const char16_t* name, const std::string& value) {
    return SetSettingText(Text(value), name, 0, key.c_str());
}

}  // namespace

int ConvertCommand(const std::vector<std::string>& words) {
    Arguments args;
    std::string error;
    if (!ParseArguments(words, kSpecs, args, error)) return Fail(kExitUsage, error + " (see qvt convert --help)");
    if (args.help) {
        std::fputs(kConvertHelp, stdout);
        return kExitOk;
    }
    if (args.positional.empty()) return Fail(kExitUsage, "no files or folders given (see qvt convert --help)");

    std::vector<Target> targets;
    size_t optionIndex = 0;
    for (const std::string& name : args.order) {
        if (name == "to") targets.push_back({ProfileText(args.values["to"][targets.size()]), ""});
        if (name == "options") {
            const std::string& text = args.values["options"][optionIndex++];
            if (targets.empty()) return Fail(kExitUsage, "--options must follow the --to it belongs to");
            targets.back().options = text;
        }
    }
    for (const Target& t : targets) {
        if (!IsKnownEncoder(t.entry)) {
            return Fail(kExitUsage, "unknown encoder '" + t.entry + "' (qvt plugins lists the installed ones)");
        }
        clString encoder = EncoderOfProfile(Text(t.entry));
        std::string problem = OptionsProblem(encoder, false, t.options, "--options of " + Utf8(encoder));
        if (!problem.empty()) return Fail(kExitUsage, problem);
    }
    clEffectList effects;
    for (const std::string& effect : args.values["effect"]) {
        size_t equals = effect.find('=');
        std::string name = effect.substr(0, equals);
        if (!PathExists(DSPLibraryPath(Text(name)))) {
            return Fail(kExitUsage, "unknown effect '" + name + "' (qvt plugins lists the installed ones)");
        }
        std::string settings = equals == std::string::npos ? "" : effect.substr(equals + 1);
        std::string problem = OptionsProblem(Text(name), true, settings, "--effect " + name);
        if (!problem.empty()) return Fail(kExitUsage, problem);
        effects.Add(Text(name), Text(settings));
    }
    std::string overwrite = Lower(args.Last("overwrite", "ask"));
    if (overwrite != "ask" && overwrite != "skip" && overwrite != "always") {
        return Fail(kExitUsage, "--overwrite takes ask, skip or always, not '" + overwrite + "'");
    }
    clEffectList entryEffects;
    if (args.Has("cores")) {
        int cores = WholeNumber(args.Last("cores"));
        if (cores < 1 || cores > 64) return Fail(kExitUsage, "--cores takes a number from 1 to 64");
        // Slots without a processor of their own: the system places them.
        std::string force = "-noally";
        for (int c = 1; c <= cores; ++c) force += " -cpu" + std::to_string(c);
        entryEffects.Add(clString(u"Multi-CPU Force"), Text(force));
    }
    std::string folder = args.Last("folder");
    std::string naming = args.Last("naming");
    if (args.Has("naming")) {
        std::string problem = NamingRuleProblem(naming);
        if (!problem.empty()) return Fail(kExitUsage, problem);
    }
    if (!folder.empty()) folder = ResolvePath(folder);
    int mode = 2;
    if (naming.empty()) naming = folder.empty() ? "[origpath]\\[origfilename]" : "[origfilename]";
    if (folder.empty()) folder = "[origdrive]";

    Collected collected;
    if (!CollectFiles(args.positional, args.Has("recursive"), collected)) return kExitUsage;
    const std::vector<std::string>& files = collected.files;
    if (files.empty() && collected.refused > 0) return Fail(kExitFailed, "none of the files can be converted");
    if (files.empty() && collected.audioBelow) {
        return Fail(kExitUsage,
                    "no audio files found in the paths given, but folders below them hold some: add --recursive");
    }
    if (files.empty()) return Fail(kExitUsage, "no audio files found in the paths given");
    if (targets.empty()) {
        // What a run makes never depends on what ran before it.
        clStringList encoders;
        EnumerateEncoders(encoders, clString());
        std::string names;
        for (int64_t i = 0; i < encoders.Count(); ++i) names += (i == 0 ? "" : ", ") + Utf8(encoders[i]);
        return Fail(kExitUsage, "no encoder given: --to takes one of " + names + " (see qvt convert --help)");
    }

    // The settings of the entry, under the run's own profile.
    std::string entry;
    std::string encoderOptions;
    for (int64_t i = 0; i < effects.Count(); ++i) entryEffects.Add(effects[i].name, effects[i].settings);
    if (targets.size() == 1) {
        entry = targets[0].entry;
        encoderOptions = targets[0].options;
    } else {
        entry = "[Multi Encoder]";
        // Each item's folder and naming stand inside two levels of quotes,
        // and the option parser has no escape for a quote.
        if (folder.find('"') != std::string::npos || naming.find('"') != std::string::npos) {
            return Fail(kExitUsage, "with several --to, the folder and the naming rule can't hold a double quote");
        }
        std::string chain = Nested(Utf8(BuildStoredEffectText(effects)));
        for (size_t i = 0; i < targets.size(); ++i) {
            std::string n = std::to_string(i + 1);
            encoderOptions += (i == 0 ? "" : " ") + std::string("-enc") + n + "=\"" + targets[i].entry + "=" +
                              Nested(targets[i].options) + "\" -encMopt" + n + "=\"-tofolder={mqt}" + folder +
                              "{mqt} -dynamic={mqt}" + naming + "{mqt}\" -encDSP" + n + "=\"" + chain + "\"";
        }
        // The effects run per item; the entry keeps only the core choice.
        entryEffects.Clear();
        if (args.Has("cores")) {
            std::string force = "-noally";
            for (int c = 1; c <= WholeNumber(args.Last("cores")); ++c) force += " -cpu" + std::to_string(c);
            entryEffects.Add(clString(u"Multi-CPU Force"), Text(force));
        }
    }
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    RemoveLeftRunProfiles();
    const clString profile = RunProfileName(PlatformProcessId());
    const clString entryKey = EntryKeyPath(Text(entry), clString());
    const std::u16string key = EntryKeyPath(Text(entry), profile).text;
    // The run's profile goes however the run ends from here on.
    struct ProfileRemoval {
        const clString& parent;
        const clString& name;
        ~ProfileRemoval() { DeleteSettingKeyTree(parent.text, name.text); }
    } removal{entryKey, profile};
    bool stored = SetText(key, kEntryOptionsSetting.name, encoderOptions) &&
                  SetText(key, kEntryFolderSetting.name, folder) && SetText(key, kEntryNamingSetting.name, naming) &&
                  SetSettingNumber(static_cast<uint32_t>(mode), kEntryOutputModeSetting.name, 0, key.c_str()) &&
                  SetSettingText(BuildStoredEffectText(entryEffects), kEntryEffectsSetting.name, 0, key.c_str());
    if (!stored) return Fail(kExitFailed, "the settings could not be stored");

    clString listFile;
    clStringList lines;
    for (const std::string& f : files) lines.Add(Text(f));
    if (!MakeTempFile(listFile, "QvL")) return Fail(kExitFailed, "no temporary file could be made");
    if (!WriteWideLines(listFile, lines, false)) {
        DeleteFileEx(listFile);
        return Fail(kExitFailed, "the list of files could not be written");
    }
    clString selected = Text(entry);
    selected.Replace(u"\"", u"{profileqt}");
    clStringList arguments;
    arguments.Add(clString(u"-list_to_conv=", listFile.text));
    arguments.Add(u"-skip_ready_to_conv");
    arguments.Add(clString(u"-select_profile=", selected.text));
    arguments.Add(clString(u"-additionalprofile=", profile.text));
    if (!args.Has("window")) arguments.Add(u"-console");
    if (args.Has("quiet") || args.Has("q")) arguments.Add(u"-quiet");
    if (args.Has("verbose") || args.Has("v")) arguments.Add(u"-verbose");
    arguments.Add(Text("-overwrite=" + overwrite));
    clString program = JoinPath(GetProgramFolder(), clString(u"TrackConverter"));
    program.Append(PlatformExecutableSuffix());
    // Ctrl-C belongs to the conversion, which asks and answers with 130.
    PlatformCatchInterrupts();
    int code = kExitFailed;
    if (!PlatformRunProcessAttached(program, arguments, &code)) {
        DeleteFileEx(listFile);
        return Fail(kExitFailed, "could not start " + Utf8(program));
    }
    // TrackConverter deletes the list once read; one ended before that
    // (a signal at its start) leaves it here.
    DeleteFileEx(listFile);
    // Its own answers are these; anything else is a program that could not
    // run (a library missing from its folder, a crash at its start).
    if (code != kExitOk && code != kExitFailed && code != kExitUsage && (code <= kExitBySignal || code > 192)) {
        return Fail(kExitFailed, Utf8(program) + " ended unexpectedly (exit code " + std::to_string(code) +
                                     "); its folder may be incomplete: install the program again");
    }
    // Files left out are files not converted.
    if (code == kExitOk && collected.refused > 0) code = kExitFailed;
    return code;
}

}  // namespace qvt
