// qvt convert: collects audio files, stores the conversion's settings
// under an additional profile of the run's own ("qvt-" and its process id;
// the user's settings are never touched) and runs TrackConverter on them in
// the terminal. The profile goes when the run ends; one a killed run left
// behind goes with the next run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/clstring.h"

namespace qvt {

extern const char* const kConvertHelp;

int ConvertCommand(const std::vector<std::string>& words);

// The additional profile of the run with that process id.
clString RunProfileName(uint32_t processId);
// Removes the profiles of runs whose process no longer runs.
void RemoveLeftRunProfiles();

// The accepted extensions of the installed decoders, lower case, dot
// included.
std::vector<std::string> DecoderExtensions();

// Empty when the naming rule makes sense; else why not.
std::string NamingRuleProblem(const std::string& rule);

// A profile entry with each {profileqt} made the double quote it stands
// for: a quote can't pass through every shell, nor a Windows command line.
std::string ProfileText(std::string entry);

// True when `entry` is an installed encoder, a pseudo-encoder or a profile
// of one.
bool IsKnownEncoder(const std::string& entry);

}  // namespace qvt
