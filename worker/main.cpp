// ConvertWorker: converts one file as its command file says, reports on
// its standard output and error, and lives by two named events: it sets
// the watchdog event every second while it runs, and stops within 200 ms
// once the cancel event is set.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <string>
#include <thread>

#include "foundation/commandoptions.h"
#include "foundation/platform/fileio.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/syncobjects.h"
#include "worker/conversion.h"
#include "worker/workercommand.h"
#include "worker/workerreport.h"

namespace {

const char kHelp[] =
    "Usage: ConvertWorker -qvcmd=\"FILE\" [-standby]\n"
    "\n"
    "With -standby the worker starts and waits: it reads FILE once a byte\n"
    "comes on its standard input, and ends at once (exit code 3) when the\n"
    "input ends first.\n"
    "\n"
    "Converts one audio file. FILE holds the options as one line of UTF-16LE\n"
    "text (no byte-order mark needed), each value in double quotes:\n"
    "\n"
    "  -infile=\"PATH\"        the source\n"
    "  -outfile=\"PATH\"       the output; written under a temporary name beside\n"
    "                        it and renamed into place only when complete\n"
    "  -convert_to=\"NAME\"    the encoder, a library in encoder/ beside this program\n"
    "  -evtquit=\"NAME\"       named event; once set, the conversion stops and\n"
    "                        leaves nothing behind\n"
    "  -evtwatchdog=\"NAME\"   named event set every second as a sign of life\n"
    "  -batchid=\"N\"          the batch the file belongs to\n"
    "  -processor=\"N\"        run on processor N only (from 1)\n"
    "  -tmpfolder=\"PATH\"     where the temporary output goes instead\n"
    "  -priority=\"high|low|idle\"\n"
    "  -dspeffect1=\"Name=settings\" -dspeffect2=... the effect chain, in order\n"
    "\n"
    "and, behind one blank, the encoder's own option string. Inside a value,\n"
    "a double quote is written %22, a percent sign %25 and a control\n"
    "character % and its two hex digits; effect settings keep their quotes\n"
    "that way. Plug-ins load by name from decoder/, encoder/ and DSPs/ only.\n"
    "\n"
    "Standard output carries lines \"MSGTO: qvt: Key: value\" (PCDone, msLen,\n"
    "Action, ActionInput, ActionOutput, TempFile, OutputReady once the output\n"
    "is in place); standard error carries one line per\n"
    "failure, naming the file and the cause. Both are text lines ending in\n"
    "CR LF: UTF-8 on Linux (where the libraries write their own messages so),\n"
    "UTF-16LE on Windows.\n"
    "Exit codes: 0 converted, 1 failed, 2 bad command, 3 cancelled.\n";

// The crash line, made before the conversion starts: a crashing process
// can't be trusted to build text any more.
std::string crashLine;

void OnTerminate() {
    uint32_t done = 0;
    PlatformWriteFile(PlatformStandardHandle(2), crashLine.data(), static_cast<uint32_t>(crashLine.size()), &done);
    std::abort();
}

// Watches the cancel event (and signals to end, and the program that
// started this worker) every 50 ms and sets the watchdog event every
// second, on a thread of its own, so that neither waits on a slow disk or
// a slow plug-in call.
class Supervision {
public:
    Supervision(const WorkerCommand& command, std::atomic<bool>& stop) : cancel(stop) {
        if (!command.quitEvent.empty()) quit.Create(command.quitEvent.c_str());
        if (!command.watchdogEvent.empty()) watchdog.Create(command.watchdogEvent.c_str());
        thread = std::thread([this] { Loop(); });
    }
    ~Supervision() {
        {
            std::lock_guard<std::mutex> lock(mutex);
            done = true;
        }
        wake.notify_one();  // a finished conversion need not wait out a pause
        thread.join();
    }

private:
    void Loop() {
        auto lastBeat = std::chrono::steady_clock::time_point();
        std::unique_lock<std::mutex> lock(mutex);
        while (!done) {
            if (quit.handle != 0 && quit.IsSet()) cancel.store(true);
            // A signal to end, or the end of the program that started this
            // worker, stops the conversion as a cancel does: nothing of
            // the output stays, and no worker outlives its run.
            if (PlatformTerminationSignal() != 0 || PlatformInterruptCount() != 0 || PlatformParentEnded()) {
                cancel.store(true);
            }
            auto now = std::chrono::steady_clock::now();
            if (watchdog.handle != 0 && now - lastBeat >= std::chrono::seconds(1)) {
                watchdog.Set();
                lastBeat = now;
            }
            wake.wait_for(lock, std::chrono::milliseconds(50), [this] { return done; });
        }
    }

    std::atomic<bool>& cancel;
    std::mutex mutex;
    std::condition_variable wake;
    bool done = false;  // under `mutex`
    XEvent quit;
    XEvent watchdog;
    std::thread thread;
};

}  // namespace

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    clString line;
    PlatformGetCommandLine(line);
    clCommandOptions options;
    options.ParseCommandLine(line);
    WorkerReport report;
    if (options.Has(u"help") || options.Has(u"h") || options.Has(u"?")) {
        std::fputs(kHelp, stdout);
        return 0;
    }
    std::u16string commandFile = options.Get(u"qvcmd").text;
    if (commandFile.empty()) {
        report.Error(u"ConvertWorker: no -qvcmd=\"FILE\" given (see ConvertWorker --help)");
        return 2;
    }
    // Started ahead of its job: the command file is written when a byte
    // comes on standard input; its end means there will be no job.
    if (options.Has(u"standby")) {
        char go = 0;
        uint32_t got = 0;
        if (!PlatformReadFile(PlatformStandardHandle(0), &go, 1, &got) || got != 1) return 3;
    }
    std::u16string text;
    std::u16string error;
    WorkerCommand command;
    if (!ReadCommandFile(commandFile, text, error) || !ParseWorkerCommand(text, command, error)) {
        report.Error(u"ConvertWorker: " + error);
        return 2;
    }
    crashLine = WorkerReport::Encode(u"ConvertWorker crashed while converting '" + command.inFile + u"'\r\n");
    PlatformInstallCrashMessage(crashLine.data(), static_cast<uint32_t>(crashLine.size()));
    std::set_terminate(OnTerminate);
    PlatformCatchInterrupts();
    PlatformParentEnded();  // notes the parent this worker starts with
    if (command.processor != 0) PlatformSetOwnProcessor(command.processor);
    if (command.priorityCode != 0) PlatformSetOwnPriority(command.priorityCode);

    // The decoder cache lives in the program's settings, shared with the
    // front end.
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    std::atomic<bool> cancel{false};
    bool converted = false;
    {
        Supervision supervision(command, cancel);
        Conversion conversion(command, report, cancel);
        converted = conversion.Run();
    }
    if (converted) return 0;
    if (cancel.load() && !report.HadError()) {
        report.Info(u"Cancelled: " + command.inFile);
        return 3;
    }
    return 1;
}
