// Unbuffered file handles, with the error numbering of the Windows side.
//
// Every failure leaves a code for PlatformGetLastError, numbered as on
// Windows on every platform (the POSIX side maps errno), so callers test one
// set of numbers: 2 file not found, 3 path not found, 5 access denied,
// 6 invalid handle, 38 end of file, 80 file exists, 112 disk full,
// 183 already exists, 206 name too long. Paths are UTF-16; the POSIX side
// converts them to UTF-8 at the call and nowhere else.
#pragma once

#include <cstdint>

using clFileHandle = intptr_t;
constexpr clFileHandle clInvalidHandle = -1;

constexpr uint32_t clAccessRead = 0x80000000u;
constexpr uint32_t clAccessWrite = 0x40000000u;
constexpr uint32_t clCreateNew = 1;
constexpr uint32_t clCreateAlways = 2;
constexpr uint32_t clOpenExisting = 3;
constexpr uint32_t clOpenAlways = 4;
constexpr uint32_t clTruncateExisting = 5;
constexpr uint32_t clShareReadWrite = 3;

constexpr uint32_t clErrorFileNotFound = 2;
constexpr uint32_t clErrorPathNotFound = 3;
constexpr uint32_t clErrorAccessDenied = 5;
constexpr uint32_t clErrorInvalidHandle = 6;
constexpr uint32_t clErrorHandleEof = 38;
constexpr uint32_t clErrorFileExists = 80;
constexpr uint32_t clErrorDiskFull = 112;
constexpr uint32_t clErrorAlreadyExists = 183;
constexpr uint32_t clErrorNameTooLong = 206;

constexpr int clSeekBegin = 0;
constexpr int clSeekCurrent = 1;
constexpr int clSeekEnd = 2;

uint32_t PlatformGetLastError();
void PlatformSetLastError(uint32_t code);

// Opens with the normal attribute and no overlapped mode. A folder is not a
// file: opening one fails with error 5 on both platforms.
clFileHandle PlatformOpenFile(const char16_t* path, uint32_t access, uint32_t share, uint32_t disposition);
// False on failure; `done` gets the bytes moved either way (0 at end of file).
bool PlatformReadFile(clFileHandle handle, void* buffer, uint32_t count, uint32_t* done);
bool PlatformWriteFile(clFileHandle handle, const void* buffer, uint32_t count, uint32_t* done);
void PlatformCloseFile(clFileHandle handle);
// The new position, or -1 on failure.
int64_t PlatformSeekFile(clFileHandle handle, int64_t offset, int origin);
// The size in bytes, or -1 on failure.
int64_t PlatformFileSizeOf(clFileHandle handle);

// The process's standard input (0), output (1) or error (2), as the handle
// PlatformReadFile and PlatformWriteFile take; clInvalidHandle when there
// is none.
clFileHandle PlatformStandardHandle(int which);

// True where the native path syntax is the Windows one.
bool PlatformUsesWindowsPaths();
