// qvt plugins, qvt name, qvt settings and qvt profile: what is installed,
// what a file would be called, and the settings store by hand.
#pragma once

#include <string>
#include <vector>

namespace qvt {

int PluginsCommand(const std::vector<std::string>& words);
int NameCommand(const std::vector<std::string>& words);
int SettingsCommand(const std::vector<std::string>& words);
int ProfileCommand(const std::vector<std::string>& words);

}  // namespace qvt
