#include "worker/workercommand.h"

#include "foundation/optionvalue.h"
#include "foundation/platform/fileio.h"

namespace {

std::u16string Lower(std::u16string text) {
    for (char16_t& c : text) {
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
    }
    return text;
}

bool IsEffectKey(const std::u16string& key) {
    if (key.size() <= 9 || key.compare(0, 9, u"dspeffect") != 0) return false;
    for (size_t i = 9; i < key.size(); ++i) {
        if (key[i] < u'0' || key[i] > u'9') return false;
    }
    return true;
}

bool IsWorkerKey(const std::u16string& key) {
    static const char16_t* const kKeys[] = {u"infile",  u"outfile",   u"convert_to", u"evtquit", u"evtwatchdog",
                                            u"batchid", u"processor", u"tmpfolder",  u"priority"};
    for (const char16_t* known : kKeys) {
        if (key == known) return true;
    }
    return IsEffectKey(key);
}

bool ParseNumber(const std::u16string& text, uint64_t limit, uint64_t& value) {
    if (text.empty() || text.size() > 10) return false;
    value = 0;
    for (char16_t c : text) {
        if (c < u'0' || c > u'9') return false;
        value = value * 10 + static_cast<uint64_t>(c - u'0');
    }
    return value <= limit;
}

}  // namespace

bool ParseWorkerCommand(const std::u16string& text, WorkerCommand& command, std::u16string& error) {
    command = WorkerCommand();
    error.clear();
    // Effects by their number; a gap ends the chain, as in every effect
    // string.
    std::vector<std::pair<uint64_t, std::u16string>> numbered;
    size_t position = 0;
    for (;;) {
        size_t start = text.find_first_not_of(u' ', position);
        if (start == std::u16string::npos || text[start] != u'-') break;
        size_t equals = text.find(u'=', start);
        if (equals == std::u16string::npos || equals + 1 >= text.size() || text[equals + 1] != u'"') break;
        std::u16string key = Lower(text.substr(start + 1, equals - start - 1));
        if (!IsWorkerKey(key)) break;
        size_t close = text.find(u'"', equals + 2);
        if (close == std::u16string::npos) {
            error = u"the value of -" + key + u" has no closing quote";
            return false;
        }
        clString unescaped;
        if (!UnescapeOptionValue(text.data() + equals + 2, static_cast<int32_t>(close - equals - 2), unescaped)) {
            error = u"the value of -" + key + u" holds a % that is not followed by two hexadecimal digits";
            return false;
        }
        std::u16string value(unescaped.text, static_cast<size_t>(unescaped.Length()));
        uint64_t number = 0;
        if (key == u"infile") {
            command.inFile = value;
        } else if (key == u"outfile") {
            command.outFile = value;
        } else if (key == u"convert_to") {
            command.encoderName = value;
        } else if (key == u"evtquit") {
            command.quitEvent = value;
        } else if (key == u"evtwatchdog") {
            command.watchdogEvent = value;
        } else if (key == u"tmpfolder") {
            command.tmpFolder = value;
        } else if (key == u"batchid") {
            if (!ParseNumber(value, 0xFFFFFFFFu, number)) {
                error = u"-batchid is not a number: " + value;
                return false;
            }
            command.batchId = static_cast<uint32_t>(number);
        } else if (key == u"processor") {
            if (!ParseNumber(value, 1024, number)) {
                error = u"-processor is not a processor number: " + value;
                return false;
            }
            command.processor = static_cast<int>(number);
        } else if (key == u"priority") {
            std::u16string priority = Lower(value);
            command.priorityCode = priority == u"high" ? 1 : priority == u"low" ? 2 : priority == u"idle" ? 3 : 0;
        } else if (ParseNumber(key.substr(9), 0xFFFFFFFFu, number)) {
            // The first of a repeated number wins, as in an effect string.
            bool known = false;
            for (const auto& entry : numbered) known = known || entry.first == number;
            if (!known) numbered.emplace_back(number, value);
        }
        position = close + 1;
    }
    // One blank stands between the last option and the encoder's string.
    if (position < text.size() && text[position] == u' ') ++position;
    command.encoderOptions = position < text.size() ? text.substr(position) : std::u16string();

    for (uint64_t n = 1;; ++n) {
        const std::u16string* value = nullptr;
        for (const auto& entry : numbered) {
            if (entry.first == n) value = &entry.second;
        }
        if (value == nullptr) break;
        size_t equals = value->find(u'=');
        // An entry without a name and settings is passed over.
        if (equals == std::u16string::npos) continue;
        command.effects.emplace_back(value->substr(0, equals), value->substr(equals + 1));
    }
    if (command.inFile.empty())
        error = u"no -infile";
    else if (command.outFile.empty())
        error = u"no -outfile";
    else if (command.encoderName.empty())
        error = u"no -convert_to";
    return error.empty();
}

bool ReadCommandFile(const std::u16string& path, std::u16string& text, std::u16string& error) {
    error = u"Unable to read command file '" + path + u"'";
    clFileHandle file = PlatformOpenFile(path.c_str(), clAccessRead, clShareReadWrite, clOpenExisting);
    if (file == clInvalidHandle) return false;
    int64_t size = PlatformFileSizeOf(file);
    // An option line is short; a huge file is not a command file.
    std::string bytes(size > 0 && size <= (1 << 20) ? static_cast<size_t>(size) : 0, '\0');
    uint32_t done = 0;
    bool ok = size >= 0 && size <= (1 << 20) &&
              (bytes.empty() || PlatformReadFile(file, bytes.data(), static_cast<uint32_t>(bytes.size()), &done)) &&
              done == bytes.size();
    PlatformCloseFile(file);
    if (!ok) return false;
    text.clear();
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        auto unit = static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                          (static_cast<unsigned char>(bytes[i + 1]) << 8));
        if (i == 0 && unit == 0xFEFF) continue;
        if (unit == 0) break;
        text.push_back(unit);
    }
    error.clear();
    return true;
}
