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

clString Text(const std::string& utf8);
// Paths from and to the UTF-8 of the command line, absolute.
std::filesystem::path PathOf(const std::string& utf8);
std::string Utf8Of(const std::filesystem::path& path);
std::string Utf8(const clString& text);

// Exit codes.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// "qvt: <message>" on standard error; answers `code`.
int Fail(int code, const std::string& message);

}  // namespace qvt
