// Helpers shared by the POSIX sources of the platform layer only.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

class clString;

// The UTF-8 form of a UTF-16 path, for the system call.
std::string NativePath(const char16_t* path);
// The UTF-16 form of a UTF-8 name coming back from the system.
void FromNative(const char* bytes, clString& target);
// Stores the Windows-numbered code for an errno value as the last error.
void SetLastErrorFromErrno(int error);

// What a clProcessHandle points to on POSIX: the child's id, and whether
// it has been waited for (a pid must be reaped once, and only once).
struct ChildProcess {
    pid_t pid;
    bool reaped = false;
};

// A Windows-rules command line as the argument words of an exec call: the
// UTF-8 words, and the pointer vector (null-terminated) into them. Empty
// when the line has no words.
struct NativeArguments {
    std::vector<std::string> words;
    std::vector<char*> argv;
};
NativeArguments SplitNativeArguments(const clString& commandLine);
