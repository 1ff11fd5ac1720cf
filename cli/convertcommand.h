// qvt convert: collects audio files, stores the conversion's settings
// under the additional profile "qvt" (the user's own settings are never
// touched) and runs TrackConverter on them in the terminal.
#pragma once

#include <string>
#include <vector>

namespace qvt {

extern const char* const kConvertHelp;

int ConvertCommand(const std::vector<std::string>& words);

// The key of an entry's settings under the profile "qvt".
std::u16string QvtEntryKey(const std::u16string& entry);

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
