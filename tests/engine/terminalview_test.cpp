// The conversion on a terminal, with a scripted terminal and scripted
// workers: the block as drawn, plain lines for logs, Ctrl-C and its
// question, the overwrite question, the logs and the exit codes.
#include "engine/terminalview.h"

#include <gtest/gtest.h>

#include <deque>

#include "engine/conversioninput.h"
#include "engine/globals.h"
#include "foundation/platform/thread.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "plugins/sourcefile.h"
#include "tests/engine/fakeworkers.h"

namespace {

class TerminalViewTest : public ::testing::Test {
protected:
    TestFolder dir;
    FakeLauncher launcher;
    uint32_t now = 5000;
    clConversionInput input;
    clConversionServices services;
    clTerminalIo io;
    std::string screen;
    std::deque<std::string> answers;
    bool inputEnded = false;
    uint32_t interrupts = 0;
    // Called once a tick: the script.
    std::function<void(int tick)> script = [](int) {};
    int ticks = 0;
    uint32_t slept = 0;

    TerminalViewTest() {
        services = ScriptedConversion(launcher, now, 2);
        io.width = 60;
        io.write = [this](const std::string& text) { screen += text; };
        io.readLine = [this](std::string& line, bool wait) {
            if (answers.empty()) {
                EXPECT_TRUE(!wait || inputEnded) << "the view waits for an answer that never comes";
                return false;
            }
            line = answers.front();
            answers.pop_front();
            return true;
        };
        io.interruptCount = [this] { return interrupts; };
        // The view waits for work between ticks. Here a wait moves the
        // clock 5 ms at most, so that the real examination thread is not
        // left behind by a clock that races ahead; the script runs once
        // per 50 ms.
        io.wait = [this](clConversion&, uint32_t wanted) {
            const uint32_t ms = wanted < 5 ? wanted : 5;
            now += ms;
            slept += ms;
            if (slept < 50) return;
            slept = 0;
            script(++ticks);
        };
    }

    void AddSources(int count) {
        for (int i = 0; i < count; ++i) {
            input.sources.Add(new clSourceFile(dir.File(clString::Formatted(u"song %d.wav", i).text)));
        }
    }
    // Every started worker ends at the tick after it started.
    void EndWorkers() {
        for (auto& w : launcher.started) w->ended = true;
    }
    bool Shows(const std::string& text) const { return screen.find(text) != std::string::npos; }
};

}  // namespace

TEST(TerminalRender, RowsForVisibleSlotsOverallAndTimesCutToTheWidth) {
    clConversionInput input;
    clConversionServices services = clConversionServices::Defaults();
    clConversion c(input, services);
    clWorkerEnvironment env;
    for (int i = 0; i < 3; ++i) c.slots.Add(new clWorkerSlot(env));
    c.slots[1].hidden = true;
    c.slots[0].displayPercent = 50;
    c.slots[0].displayText = u"Encoding song 1.wav";
    c.slots[2].displayPercent = 100;
    c.headline = u"Converting 3 Files to FLAC";
    c.statusText = u"Converting File 2 of 3";
    c.progress = 4215;
    c.elapsedText = u"12 Seconds Elapsed";
    c.speedText = u"2.5x Encoding Speed";
    std::vector<std::string> lines = RenderConversion(c, 100);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "Converting 3 Files to FLAC");
    EXPECT_EQ(lines[1], "  Encoder 1   " + ProgressBar(5000, 25) + "  50%  Encoding song 1.wav");
    EXPECT_EQ(lines[2], "  Encoder 2   " + ProgressBar(10000, 25) + " 100%  ");
    EXPECT_EQ(lines[3], "  Overall     " + ProgressBar(4215, 25) + "  42.15%  Converting File 2 of 3");
    EXPECT_EQ(lines[4], "  12 Seconds Elapsed   2.5x Encoding Speed");
    EXPECT_EQ(ProgressBar(4215, 10), "[####------]");
    EXPECT_EQ(ProgressBar(20000, 4), "[####]");
    for (const std::string& line : RenderConversion(c, 30)) EXPECT_LE(line.size(), 29u) << line;
}

TEST_F(TerminalViewTest, PlainLinesForALogAndExitCodeZero) {
    AddSources(3);
    script = [this](int) { EndWorkers(); };
    clTerminalView view(io, kOverwriteAsk);
    EXPECT_EQ(view.Run(input, services), kExitConverted);
    EXPECT_EQ(launcher.started.size(), 3u);
    EXPECT_TRUE(Shows("Converting 3 Files to Scripted\n")) << screen;
    EXPECT_TRUE(Shows("Converted 3 Files to Scripted\n")) << screen;
    EXPECT_TRUE(Shows("  Completed in less than a second\n")) << screen << "a run that short has no time to give";
    EXPECT_EQ(screen.find('\x1b'), std::string::npos) << "no cursor movement in plain output";
}

TEST_F(TerminalViewTest, OnATerminalTheBlockIsRedrawnInPlaceAtMostTenTimesASecond) {
    AddSources(4);
    io.outputIsTerminal = true;
    int draws = 0;
    io.write = [&](const std::string& text) {
        screen += text;
        ++draws;
    };
    script = [this](int tick) {
        if (tick % 4 == 0) EndWorkers();
    };
    clTerminalView view(io, kOverwriteAsk);
    EXPECT_EQ(view.Run(input, services), kExitConverted);
    EXPECT_TRUE(Shows("\x1b[2KConverting 4 Files to Scripted\n")) << screen;
    EXPECT_TRUE(Shows("\x1b[2K  Encoder 1 ")) << screen;
    EXPECT_TRUE(Shows("F\x1b[2KConverted 4 Files to Scripted")) << "the last picture overwrites the block";
    EXPECT_LE(draws, ticks / 2 + 2);
}

TEST_F(TerminalViewTest, AFailedFileGivesItsLogAndExitCodeOne) {
    AddSources(2);
    script = [this](int) {
        if (!launcher.started.empty()) launcher.started[0]->err = u"Unsupported file\r\n";
        EndWorkers();
    };
    clTerminalView view(io, kOverwriteAsk);
    EXPECT_EQ(view.Run(input, services), kExitSomeFailed);
    std::string expected = "Quillotone: Conversion Errors\n\nError converting to Scripted, '" +
                           std::string(dir.File(u"song 0.wav").ToUtf8()) + "' to '";
    EXPECT_TRUE(Shows(expected)) << screen;
    EXPECT_TRUE(Shows("\n   Unsupported file\n   \n")) << screen;
}

TEST_F(TerminalViewTest, CtrlCAsksAndASecondCtrlCCancelsWithoutAsking) {
    AddSources(6);
    io.inputIsTerminal = true;
    // Workers never end on their own. Ten ticks after the first started,
    // Ctrl-C, answered "n"; at 20 Ctrl-C again, and at 22 a third one while
    // it asks.
    int since = 0;
    script = [&](int) {
        if (launcher.started.empty()) return PlatformSleep(1);
        ++since;
        if (since == 10 || since == 20 || since == 22) ++interrupts;
        if (since == 11) answers.push_back("n");
        if (since > 22) EndWorkers();
    };
    clTerminalView view(io, kOverwriteAsk);
    EXPECT_EQ(view.Run(input, services), kExitCancelled);
    size_t first = screen.find("Cancel Conversion? [y/N] ");
    ASSERT_NE(first, std::string::npos);
    EXPECT_NE(screen.find("Cancel Conversion? [y/N] ", first + 1), std::string::npos);
    EXPECT_EQ(launcher.started.size(), 2u) << "nothing starts after the cancel";
}

TEST_F(TerminalViewTest, YesCancelsAndWithoutATerminalCtrlCCancelsAtOnce) {
    for (bool terminal : {true, false}) {
        clConversionInput sources;
        for (int i = 0; i < 4; ++i) {
            clString name = clString::Formatted(u"%d-%d.wav", terminal ? 1 : 0, i);
            sources.sources.Add(new clSourceFile(dir.File(name.text)));
        }
        io.inputIsTerminal = terminal;
        screen.clear();
        size_t first = launcher.started.size();
        ticks = 0;
        int since = 0;
        script = [&](int) {
            if (launcher.started.size() < first + 1) return PlatformSleep(1);
            ++since;
            if (since == 10) ++interrupts;
            if (since == 11) answers.push_back("y");
            if (since > 12) EndWorkers();
        };
        clTerminalView view(io, kOverwriteAsk);
        EXPECT_EQ(view.Run(sources, services), kExitCancelled) << terminal;
        EXPECT_EQ(Shows("Cancel Conversion?"), terminal);
        EXPECT_EQ(launcher.started.size(), first + 2) << "nothing starts after the cancel";
        answers.clear();
    }
}

TEST_F(TerminalViewTest, OverwriteQuestionAllOneByOneCancelAndNoConsent) {
    auto items = [] {
        auto* list = new clOverwriteItems;
        for (const char16_t* path : {u"/out/a.flac", u"/out/b.flac", u"/out/c.flac"}) {
            auto* item = new clOverwriteItem;
            item->outputPath = item->newPath = path;
            item->exists = 1;
            list->Add(item);
        }
        return std::unique_ptr<clOverwriteItems>(list);
    };
    auto skips = [](const clOverwriteItems& list) {
        std::string s;
        for (int64_t i = 0; i < list.Count(); ++i) s += list[i].skip != 0 ? 'S' : 'O';
        return s;
    };
    io.inputIsTerminal = true;
    struct Case {
        clOverwriteMode mode;
        bool terminal;
        std::deque<std::string> typed;
        bool goesOn;
        std::string decided;
    } cases[] = {
        {kOverwriteAsk, true, {"x", "o"}, true, "OOO"},  // an unknown answer asks again
        {kOverwriteAsk, true, {"s"}, true, "SSS"},
        {kOverwriteAsk, true, {"d", "y", "", "Y"}, true, "OSO"},
        {kOverwriteAsk, true, {"c"}, false, "OOO"},
        {kOverwriteAsk, false, {}, true, "SSS"},  // no terminal: no consent
        {kOverwriteSkip, true, {}, true, "SSS"},
        {kOverwriteAlways, false, {}, true, "OOO"},
    };
    for (Case& c : cases) {
        io.inputIsTerminal = c.terminal;
        answers = c.typed;
        screen.clear();
        auto list = items();
        clTerminalView view(io, c.mode);
        EXPECT_EQ(view.AskOverwrite(*list), c.goesOn);
        EXPECT_EQ(skips(*list), c.decided);
        EXPECT_TRUE(answers.empty());
        if (c.mode == kOverwriteAsk && c.terminal) {
            EXPECT_TRUE(Shows("  /out/b.flac\n")) << screen;
        }
    }
    // The end of input while asking gives no consent either.
    io.inputIsTerminal = true;
    inputEnded = true;
    auto list = items();
    clTerminalView view(io, kOverwriteAsk);
    EXPECT_TRUE(view.AskOverwrite(*list));
    EXPECT_EQ(skips(*list), "SSS");
}

// Errors go to standard error; -quiet says nothing else, -verbose tells
// each file's information as the file ends (and not again at the end).
TEST_F(TerminalViewTest, QuietAndVerboseAndTheErrorStream) {
    std::string errorScreen;
    io.writeError = [&errorScreen](const std::string& text) { errorScreen += text; };
    auto count = [](const std::string& text, const std::string& part) {
        int n = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
        return n;
    };
    for (clVerbosity verbosity : {kVerbosityQuiet, kVerbosityNormal, kVerbosityVerbose}) {
        clConversionInput runInput;
        for (int i = 0; i < 2; ++i) {
            runInput.sources.Add(new clSourceFile(dir.File(clString::Formatted(u"song %d.wav", i).text)));
        }
        screen.clear();
        errorScreen.clear();
        launcher.started.clear();
        script = [this](int) {
            if (launcher.started.size() >= 1) launcher.started[0]->err = u"Unsupported file\r\n";
            if (launcher.started.size() >= 2) launcher.started[1]->out = u"The stream ended early\r\n";
            EndWorkers();
        };
        clTerminalView view(io, kOverwriteAsk);
        view.verbosity = verbosity;
        // The information log shows at the end when the setting asks for it.
        SetSettingNumber(1, kDisplayInfoSetting.name);
        EXPECT_EQ(view.Run(runInput, services), kExitSomeFailed);
        SetSettingNumber(0, kDisplayInfoSetting.name);
        EXPECT_EQ(count(errorScreen, "Quillotone: Conversion Errors\n"), 1) << verbosity << errorScreen;
        EXPECT_EQ(count(errorScreen, "   Unsupported file\n"), 1) << verbosity;
        EXPECT_EQ(count(screen, "Unsupported file"), 0) << "errors only on the error stream: " << screen;
        if (verbosity == kVerbosityQuiet) {
            EXPECT_EQ(screen, "") << "quiet: nothing but the errors";
        } else if (verbosity == kVerbosityNormal) {
            EXPECT_EQ(count(screen, "Quillotone: Conversion Information\n"), 1) << screen;
            EXPECT_EQ(count(screen, "   The stream ended early\n"), 1) << screen;
        } else {
            EXPECT_EQ(count(screen, "   The stream ended early\n"), 1) << screen;
            EXPECT_LT(screen.find("The stream ended early"), screen.find("Converted 2 Files"))
                << "told as the file ended: " << screen;
            EXPECT_EQ(count(screen, "Quillotone: Conversion Information"), 0) << screen;
        }
    }
}
