#include "worker/workerreport.h"

#include "foundation/platform/fileio.h"
#include "foundation/platform/workerprocess.h"

std::string WorkerReport::Encode(const std::u16string& line) {
    return PlatformPipeBytes(line.data(), static_cast<int32_t>(line.size()));
}

void WorkerReport::Write(int stream, const std::u16string& line) {
    // A line break inside the text would make two lines of one message.
    std::u16string whole;
    for (char16_t unit : line) whole.push_back(unit == u'\r' || unit == u'\n' ? u' ' : unit);
    std::string bytes = Encode(whole + u"\r\n");
    std::lock_guard<std::mutex> guard(lock);
    uint32_t done = 0;
    PlatformWriteFile(PlatformStandardHandle(stream), bytes.data(), static_cast<uint32_t>(bytes.size()), &done);
}

void WorkerReport::Message(const std::u16string& key, const std::u16string& value) {
    Write(1, u"MSGTO: qvt: " + key + u": " + value);
}

void WorkerReport::Progress(int percent) {
    if (percent < 0) percent = 0;
    if (percent > 100) percent = 100;
    if (percent == lastPercent) return;
    lastPercent = percent;
    std::u16string digits;
    for (char c : std::to_string(percent)) digits.push_back(static_cast<char16_t>(c));
    Message(u"PCDone", digits);
}

void WorkerReport::Info(const std::u16string& text) { Write(1, text); }

void WorkerReport::Error(const std::u16string& text) {
    hadError = true;
    Write(2, text);
}
