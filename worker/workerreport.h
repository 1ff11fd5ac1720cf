// What the worker tells the front end: lines ending in CR LF, in the pipe
// text of the platform (UTF-16LE on Windows, UTF-8 on POSIX),
// each written whole in one call, so that a reader draining the pipe at
// any moment sees at most the lines before it and never half of one.
// Messages go to standard output as "MSGTO: qvt: Key: value"; failures go
// to standard error in plain words, and any line there fails the job.
#pragma once

#include <mutex>
#include <string>

class WorkerReport {
public:
    void Message(const std::u16string& key, const std::u16string& value);
    // "PCDone", only when the whole percentage changes.
    void Progress(int percent);
    void Info(const std::u16string& text);
    void Error(const std::u16string& text);
    bool HadError() const { return hadError; }

    // The line as written, without the CR LF, in the pipe text.
    static std::string Encode(const std::u16string& line);

private:
    void Write(int stream, const std::u16string& line);

    std::mutex lock;
    int lastPercent = -1;
    bool hadError = false;
};
