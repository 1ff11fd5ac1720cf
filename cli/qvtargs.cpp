#include "cli/qvtargs.h"

#include <cstdio>

#include "foundation/utf.h"

namespace qvt {

std::string Arguments::Last(const std::string& name, const std::string& fallback) const {
    auto it = values.find(name);
    return it == values.end() || it->second.empty() ? fallback : it->second.back();
}

bool ParseArguments(const std::vector<std::string>& words, const std::vector<OptionSpec>& specs, Arguments& out,
                    std::string& error) {
    bool optionsEnded = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (optionsEnded || word.size() < 2 || word[0] != '-') {
            out.positional.push_back(word);
            continue;
        }
        if (word == "--") {
            optionsEnded = true;
            continue;
        }
        if (word == "--help" || word == "-h") {
            out.help = true;
            continue;
        }
        std::string name = word.substr(word[1] == '-' ? 2 : 1);
        std::string value;
        bool hasValue = false;
        size_t equals = name.find('=');
        if (equals != std::string::npos) {
            value = name.substr(equals + 1);
            name = name.substr(0, equals);
            hasValue = true;
        }
        const OptionSpec* spec = nullptr;
        for (const OptionSpec& s : specs) {
            if (s.name == name) spec = &s;
        }
        if (spec == nullptr) {
            error = "unknown option '" + word + "'";
            return false;
        }
        if (spec->takesValue && !hasValue) {
            if (i + 1 >= words.size()) {
                error = "option --" + name + " needs a value";
                return false;
            }
            value = words[++i];
        } else if (!spec->takesValue && hasValue) {
            error = "option --" + name + " takes no value";
            return false;
        }
        out.values[name].push_back(value);
        out.order.push_back(name);
    }
    return true;
}

clString Text(const std::string& bytes) {
    clString text;
    FileNameToString(bytes.data(), static_cast<int64_t>(bytes.size()), text);
    return text;
}

std::string Utf8(const clString& text) { return StringToUtf8(text); }

std::filesystem::path PathOf(const std::string& bytes) {
    return std::filesystem::path(std::u8string(bytes.begin(), bytes.end()));
}

std::string BytesOf(const std::filesystem::path& path) {
    std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::string ResolvePath(const std::string& bytes) {
    std::error_code ignored;
    std::filesystem::path path = std::filesystem::absolute(PathOf(bytes), ignored).lexically_normal();
    // "/music/" names the folder "/music"; the root keeps its separator.
    if (!path.has_filename() && path.has_relative_path()) path = path.parent_path();
    return BytesOf(path);
}

std::string Printable(const std::string& bytes) {
    std::string out;
    for (char c : bytes) {
        auto u = static_cast<unsigned char>(c);
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (u < 0x20 || u == 0x7F) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", u);
            out += hex;
        } else {
            out.push_back(c);
        }
    }
    return out;
}

int Fail(int code, const std::string& message) {
    std::fprintf(stderr, "qvt: %s\n", message.c_str());
    return code;
}

}  // namespace qvt
