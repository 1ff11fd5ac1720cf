// Folder and name operations of the file system, and directory listing.
//
// Errors are numbered as in fileio.h. Find patterns follow the Windows
// rules on both platforms: `*` and `?` in the last component, matched
// ignoring ASCII case, "*.*" matching every name; a last component without
// wildcards finds that one entry.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"

constexpr uint32_t clAttributeReadOnly = 0x01;
constexpr uint32_t clAttributeHidden = 0x02;
constexpr uint32_t clAttributeDirectory = 0x10;
constexpr uint32_t clAttributeNormal = 0x80;

constexpr uint32_t clDriveNoRootDir = 1;

struct clFindData {
    uint32_t attributes = 0;
    uint64_t size = 0;
    int64_t writeTime = 0;  // seconds since 1970, UTC
    // The same as precisely as the file system keeps it: nanoseconds since
    // 1970 UTC (in steps of 100 ns on Windows), for comparing two times.
    int64_t writeNanoseconds = 0;
    // Creation, in 100 ns ticks since 1601 UTC. POSIX: the birth time where
    // the file system keeps one, else the last write.
    uint64_t creationTicks = 0;
    clString name;  // the entry's name, without its folder
};

using clFindHandle = intptr_t;
constexpr clFindHandle clInvalidFind = -1;

clFindHandle PlatformFindFirst(const char16_t* pattern, clFindData& found);
bool PlatformFindNext(clFindHandle handle, clFindData& found);
void PlatformFindClose(clFindHandle handle);

bool PlatformDeleteFile(const char16_t* path);
bool PlatformMoveFile(const char16_t* from, const char16_t* to);
// Puts `from` in the place of `to`, replacing a file there in one step, so
// that a reader sees the old file or the new one, never a part. Across
// volumes the file is copied beside `to` first and then renamed.
bool PlatformReplaceFile(const char16_t* from, const char16_t* to);
bool PlatformCreateDirectory(const char16_t* path);
bool PlatformRemoveDirectory(const char16_t* path);
bool PlatformSetFileAttributes(const char16_t* path, uint32_t attributes);
// GetDriveTypeW's answer for a root given with its separator; 1 means
// there is no such root. POSIX: 1 when the path names no existing folder,
// 5 (CD ROM) when that folder lies on an iso9660 or udf file system, else
// 3 (fixed); a read-only mount is told by PlatformIsReadOnlyVolume.
uint32_t PlatformGetDriveType(const char16_t* root);
constexpr uint32_t clDriveCdRom = 5;
// GetLogicalDrives: bit 0 for A: to bit 25 for Z:. POSIX has no drive
// letters and answers 0.
uint32_t PlatformGetLogicalDrives();
// The bytes this user may still write on the volume that holds `path`;
// false when that can't be told (on POSIX also for a volume without size).
bool PlatformGetFreeSpace(const char16_t* path, uint64_t* freeBytes);
// The root of the volume that holds the nearest existing folder of `path`
// (its mount point on POSIX, "X:\" and the like on Windows), with its
// trailing separator; false when no folder of the path exists.
bool PlatformGetVolumeRoot(const char16_t* path, clString& root);
// The label of the volume that holds `root`; false when it has none.
// POSIX: the name under /dev/disk/by-label of the block device the path
// lies on, where udev keeps one.
bool PlatformGetVolumeLabel(const char16_t* root, clString& label);
// The temporary folder with its trailing separator; false when unknown.
bool PlatformGetTempPath(clString& path);

// True when both paths exist and name one file (the same device and inode
// on POSIX, the same volume and file index on Windows), also through a
// link or a name that differs only in case on a case-blind volume.
bool PlatformSameFile(const char16_t* first, const char16_t* second);
// The kind of what `path` names, links followed.
enum class clFileKind { Missing, Regular, Folder, Other };
clFileKind PlatformFileKind(const char16_t* path);
// True when the volume that holds `root` is mounted read-only (POSIX) or
// reports itself read-only (Windows).
bool PlatformIsReadOnlyVolume(const char16_t* root);
