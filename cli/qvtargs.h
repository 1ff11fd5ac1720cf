// The command line of a qvt command: long options (`--name value` or
// `--name=value`), flags, and the positional words, checked against the
// options the command knows.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "foundation/clstring.h"

namespace qvt {

struct OptionSpec {
    std::string name;  // without the dashes
    bool takesValue;
};

struct Arguments {
    std::map<std::string, std::vector<std::string>> values;  // every value, in order
    std::vector<std::string> order;                          // option names as given, repeats included
    std::vector<std::string> positional;
    bool help = false;

    bool Has(const std::string& name) const { return values.count(name) != 0; }
    // The last value given, or `fallback`.
    std::string Last(const std::string& name, const std::string& fallback = "") const;
};

// Parses `words` (the command's name excluded). False with `error` set on
// an unknown option or a missing value. "--" ends the options.
bool ParseArguments(const std::vector<std::string>& words, const std::vector<OptionSpec>& specs, Arguments& out,
                    std::string& error);

// The text of a command-line word. Words are bytes, mostly UTF-8; they are
// read by the mapping of file names (foundation/utf.h), so that a path that
// is not UTF-8 reaches the list file and the settings whole.
clString Text(const std::string& bytes);
// UTF-8 for showing; a byte that was not UTF-8 shows as U+FFFD.
std::string Utf8(const clString& text);
// Paths as bytes, to and from the file system's own form.
std::filesystem::path PathOf(const std::string& bytes);
std::string BytesOf(const std::filesystem::path& path);
// A path of the command line made absolute against the current folder and
// normalised: "." and ".." resolved, doubled and trailing separators gone.
// "--folder .." then means the folder above, as in every other program.
std::string ResolvePath(const std::string& bytes);
// A name for a message on one line: control characters written as \n,
// \r, \t or \xNN.
std::string Printable(const std::string& bytes);

// Exit codes.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
// 128 and a signal's number: the conversion ended on Ctrl-C (130), a hang-up
// (129) or a request to terminate (143).
constexpr int kExitBySignal = 128;

// "qvt: <message>" on standard error; answers `code`.
int Fail(int code, const std::string& message);

}  // namespace qvt
