// Helpers shared by the POSIX sources of the platform layer only.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

class clString;

// The bytes of a path for the system call, and the text of bytes coming
// back from the system: UTF-8, with the bytes of a name that is not UTF-8
// carried as U+DC80-U+DCFF (StringToFileName, FileNameToString).
std::string NativePath(const char16_t* path);
void FromNative(const char* bytes, clString& target);
// Stores the Windows-numbered code for an errno value as the last error.
void SetLastErrorFromErrno(int error);

// What a clProcessHandle points to on POSIX: the child's id, and whether
// it has been waited for (a pid must be reaped once, and only once).
struct ChildProcess {
    pid_t pid;
    bool reaped = false;
    int pidfd = -1;  // readable once the process has ended; -1 without one
};

// A Windows-rules command line as the argument words of an exec call: the
// UTF-8 words, and the pointer vector (null-terminated) into them. Empty
// when the line has no words.
struct NativeArguments {
    std::vector<std::string> words;
    std::vector<char*> argv;
};
NativeArguments SplitNativeArguments(const clString& commandLine);
