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

"qvt COMMAND --help" explains each command.
)help";

}  // namespace

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    SetSettingsRoot(kSettingsHive, kSettingsRoot);
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0 ||
        std::strcmp(argv[1], "help") == 0) {
        std::fputs(kHelp, argc < 2 ? stderr : stdout);
        return argc < 2 ? qvt::kExitUsage : qvt::kExitOk;
    }
    std::string command = argv[1];
    std::vector<std::string> words(argv + 2, argv + argc);
    if (command == "convert") return qvt::ConvertCommand(words);
    if (command == "plugins") return qvt::PluginsCommand(words);
    if (command == "name") return qvt::NameCommand(words);
    if (command == "settings") return qvt::SettingsCommand(words);
    if (command == "profile") return qvt::ProfileCommand(words);
    return qvt::Fail(qvt::kExitUsage, "unknown command '" + command + "' (see qvt --help)");
}
