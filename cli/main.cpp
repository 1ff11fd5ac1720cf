// qvt: the command-line companion. Converts without a window, lists the
// installed plug-ins, previews output names, and edits the settings store.
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "cli/convertcommand.h"
#include "cli/infocommands.h"
#include "cli/qvtargs.h"
#include "foundation/platform/processinfo.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"

namespace {

const char* const kHelp = R"help(Usage: qvt COMMAND [options] [arguments]

Commands:
  convert   convert audio files: qvt convert --to FLAC --folder out music/
  plugins   list the installed decoders, encoders and effects
  name      print the output path files would get by a naming rule
  settings  read and write the settings store
  profile   list, create and delete encoder profiles

"qvt help COMMAND" (or "qvt COMMAND --help") explains each command;
"qvt --version" (-V) prints the version.
)help";

using Command = int (*)(const std::vector<std::string>&);

// The command of that name, or null.
Command CommandNamed(const std::string& name) {
    if (name == "convert") return qvt::ConvertCommand;
    if (name == "plugins") return qvt::PluginsCommand;
    if (name == "name") return qvt::NameCommand;
    if (name == "settings") return qvt::SettingsCommand;
    if (name == "profile") return qvt::ProfileCommand;
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    if (argc >= 2 && (std::strcmp(argv[1], "--version") == 0 || std::strcmp(argv[1], "-V") == 0)) {
        std::fputs("qvt (Quillotone Track Converter) " QV_VERSION "\n", stdout);
        return qvt::kExitOk;
    }
    // "qvt help COMMAND" is "qvt COMMAND --help".
    if (argc == 3 && std::strcmp(argv[1], "help") == 0) {
        Command command = CommandNamed(argv[2]);
        if (command == nullptr) {
            return qvt::Fail(qvt::kExitUsage, std::string("unknown command '") + argv[2] + "' (see qvt --help)");
        }
        return command({"--help"});
    }
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0 ||
        std::strcmp(argv[1], "help") == 0) {
        std::fputs(kHelp, argc < 2 ? stderr : stdout);
        return argc < 2 ? qvt::kExitUsage : qvt::kExitOk;
    }
    std::string name = argv[1];
    Command command = CommandNamed(name);
    if (command == nullptr) return qvt::Fail(qvt::kExitUsage, "unknown command '" + name + "' (see qvt --help)");
    return command(std::vector<std::string>(argv + 2, argv + argc));
}
