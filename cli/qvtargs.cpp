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

clString Text(const std::string& utf8) {
    clString text;
    Utf8ToString(utf8.data(), static_cast<int64_t>(utf8.size()), text);
    return text;
}

std::string Utf8(const clString& text) { return StringToUtf8(text); }

std::filesystem::path PathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string Utf8Of(const std::filesystem::path& path) {
    std::error_code ignored;
    std::u8string text = std::filesystem::absolute(path, ignored).u8string();
    return std::string(text.begin(), text.end());
}

int Fail(int code, const std::string& message) {
    std::fprintf(stderr, "qvt: %s\n", message.c_str());
    return code;
}

}  // namespace qvt
