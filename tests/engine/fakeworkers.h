// Scripted workers for the engine tests: a launcher that starts no process
// but records each command line and the command file's text, and workers
// whose pipes, end, pause and priority the test controls.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/conversion.h"
#include "engine/globals.h"
#include "engine/workerlauncher.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "tests/support/testfolder.h"

struct FakeWorkerState {
    std::u16string commandLine;
    std::u16string commandText;  // the command file as it was at the start
    std::u16string out, err;     // waiting in the pipes
    bool ended = false;
    bool suspended = false;
    int32_t priority = -1;
    int ticksLeft = 0;  // for RunFakeWorkers
    bool alive = true;  // the slot still holds the link
    bool terminated = false;
    // A worker that ends says it put its output in place, as a real one
    // does after a good conversion; false makes it die without a word.
    bool putsOutput = true;
    bool outputSaid = false;
    // Started ahead of its job; its command file is read when released.
    bool standby = false;
    bool released = false;
    bool canRelease = true;  // false: it died while it waited
    std::u16string commandFile;
};

// The command file a command line names.
inline std::u16string CommandFileOf(const std::u16string& commandLine) {
    size_t at = commandLine.find(u"-qvcmd=\"");
    if (at == std::u16string::npos) return std::u16string();
    at += 8;
    return commandLine.substr(at, commandLine.find(u'"', at) - at);
}

class FakeWorker : public clWorkerLink {
public:
    explicit FakeWorker(FakeWorkerState& s) : state(s) {}
    ~FakeWorker() override { state.alive = false; }
    clString Read(bool standardError) override {
        std::u16string& pipe = standardError ? state.err : state.out;
        if (!standardError && state.ended && state.putsOutput && !state.outputSaid) {
            pipe += u"MSGTO: qvt: OutputReady: 1\r\n";
            state.outputSaid = true;
        }
        clString text(pipe.c_str());
        pipe.clear();
        return text;
    }
    bool HasEnded() override { return state.ended; }
    bool Release() override {
        if (!state.canRelease) return false;
        state.released = true;
        state.commandText = FromUtf16Le(ReadBytes(clString(state.commandFile.c_str())));
        return true;
    }
    void Suspend() override { state.suspended = true; }
    void Resume() override { state.suspended = false; }
    void SetPriority(int32_t code) override { state.priority = code; }
    void Terminate() override {
        state.terminated = true;
        state.ended = true;
    }

private:
    FakeWorkerState& state;
};

class FakeLauncher : public clWorkerLauncher {
public:
    std::vector<std::unique_ptr<FakeWorkerState>> started;
    const char16_t* failure = nullptr;  // set: every start fails so

    bool offerStandbys = false;  // set: StartStandby gives waiting workers

    std::unique_ptr<clWorkerLink> Start(const clString& commandLine, clString& failureLine) override {
        if (failure != nullptr) {
            failureLine = failure;
            return nullptr;
        }
        auto state = std::make_unique<FakeWorkerState>();
        state->commandLine = commandLine.text;
        state->commandFile = CommandFileOf(state->commandLine);
        if (!state->commandFile.empty()) {
            state->commandText = FromUtf16Le(ReadBytes(clString(state->commandFile.c_str())));
        }
        started.push_back(std::move(state));
        return std::make_unique<FakeWorker>(*started.back());
    }
    std::unique_ptr<clWorkerLink> StartStandby(const clString& commandLine) override {
        if (!offerStandbys || failure != nullptr) return nullptr;
        auto state = std::make_unique<FakeWorkerState>();
        state->commandLine = commandLine.text;
        state->commandFile = CommandFileOf(state->commandLine);
        state->standby = true;
        started.push_back(std::move(state));
        return std::make_unique<FakeWorker>(*started.back());
    }
};

// The value of an option in a command file's text ("" when absent).
inline std::u16string OptionOf(const std::u16string& text, const std::u16string& key) {
    std::u16string marker = u" -" + key + u"=\"";
    size_t at = text.find(marker);
    if (at == std::u16string::npos) return std::u16string();
    at += marker.size();
    return text.substr(at, text.find(u'"', at) - at);
}

// A conversion of the entry "Scripted" on the scripted launcher, with the
// clock at `now`, and no power action whatever is chosen.
inline clConversionServices ScriptedConversion(FakeLauncher& launcher, const uint32_t& now, int32_t processors) {
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    globalEncoder = u"Scripted";
    globalProfile.Clear();
    clConversionServices services;
    services.tickCount = [&now] { return now; };
    services.launcher = &launcher;
    services.workerProgram = u"ConvertWorker";
    services.processorCount = processors;
    services.performAfterAction = [](int32_t) {};
    return services;
}
