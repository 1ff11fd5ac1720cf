#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "foundation/platform/power.h"

extern char** environ;

namespace {

bool StartOnPath(std::vector<std::string> words) {
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    pid_t pid = 0;
    int rc = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0;
}

}  // namespace

void PlatformKeepAwake(bool /*on*/) {}

bool PlatformPowerAction(int32_t action) {
    switch (action) {
        case clPowerOff: return StartOnPath({"systemctl", "poweroff"});
        case clPowerHibernate: return StartOnPath({"systemctl", "hibernate"});
        case clPowerStandBy: return StartOnPath({"systemctl", "suspend"});
        case clPowerRestart: return StartOnPath({"systemctl", "reboot"});
        // The numeric id names this user without a lookup that could fail.
        case clPowerLogOff: return StartOnPath({"loginctl", "terminate-user", std::to_string(::getuid())});
        default: return false;
    }
}
