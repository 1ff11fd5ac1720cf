#include "engine/outputdiagnosis.h"

#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathsyntax.h"
#include "foundation/pathtext.h"
#include "foundation/platform/filesystem.h"
#include "foundation/random.h"

namespace {

char16_t UpperLetter(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c; }

// Writes and deletes "_tmp_<random>" in the output's folder.
bool CanWriteBeside(const clString& outputPath) {
    clString folder = GetFolderPart(outputPath);
    MakeFolders(folder);
    clString probe = folder;
    AddBackslash(probe);
    probe.Append(u"_tmp_");
    probe.Append(clString(static_cast<int64_t>(RandomBelow(48439839))));
    clFile file;
    file.fileName = probe;
    file.Open(clAccessWrite, clCreateAlways, false, false);
    bool written = file.handle != clInvalidHandle;
    file.Close();
    DeleteFileEx(probe);
    return written;
}

// A component above the name limit, or a whole path at the path limit
// (unless Windows' long-path prefix lifts it).
bool NameTooLong(const clString& path, const clPathSyntax& syntax) {
    constexpr int64_t kNameLimit = 255;
    clString rest(path);
    for (;;) {
        clString component = PopLastComponent(rest, syntax);
        if (component.IsEmpty()) break;
        if (syntax.Measure(component) > kNameLimit) return true;
    }
    return syntax.Measure(path) >= syntax.pathLimit && !(syntax.IsWindows() && path.Find(u"\\\\?\\") == 1);
}

clDriveFacts LetterDriveFacts(const clString& drive, const clString& outputPath) {
    clDriveFacts facts;
    uint32_t drives = PlatformGetLogicalDrives();
    for (int letter = 0; letter < 26; ++letter) {
        if ((drives & (1u << letter)) != 0 && UpperLetter(drive.CharAt(1)) == u'A' + letter) facts.exists = true;
    }
    facts.cdRom = PlatformGetDriveType(drive.text) == clDriveCdRom;
    facts.readOnly = PlatformIsReadOnlyVolume(drive.text);
    PlatformGetFreeSpace(drive.text, &facts.freeBytes);
    facts.nameTooLong = NameTooLong(outputPath, WindowsPathSyntax());
    facts.writeTest = [outputPath] { return CanWriteBeside(outputPath); };
    return facts;
}

}  // namespace

clString DiagnoseDrive(const clString& drive, const clDriveFacts& facts) {
    if (!facts.exists) return clString::Formatted(u"Output drive %s does not exist", drive.text);
    if (facts.cdRom) return clString::Formatted(u"Output drive %s is set to a CD ROM drive", drive.text);
    if (facts.readOnly) return clString::Formatted(u"Output drive %s is read-only", drive.text);
    if (facts.freeBytes < kFullDriveBytes) return clString::Formatted(u"Output drive %s is full", drive.text);
    if (facts.nameTooLong) return clString(u"The output's name is too long for the file system");
    if (facts.writeTest && !facts.writeTest()) {
        return clString(
            u"Unable to write to output location, check is not read only and Quillotone has write permission");
    }
    return clString();
}

clString DiagnoseOutput(const clString& outputPath) {
    if (GetExtension(outputPath).EqualsNoCase(u".iGnore")) return clString();
    if (NativePathSyntax().IsWindows()) {
        // Network paths and anything else without a drive letter are left
        // alone.
        if (outputPath.Length() < 2 || outputPath.CharAt(2) != u':') return clString();
        clString drive = outputPath.Mid(1, 3);
        while (drive.Length() < 3) drive.Append(u" ");
        return DiagnoseDrive(drive, LetterDriveFacts(drive, outputPath));
    }
    // A relative path names no volume; like a network path, it is left alone.
    if (outputPath.CharAt(1) != u'/') return clString();
    clDriveFacts facts;
    clString drive;
    facts.exists = PlatformGetVolumeRoot(GetFolderPart(outputPath).text, drive);
    if (!facts.exists) drive = GetFolderPart(outputPath);
    if (facts.exists) {
        facts.cdRom = PlatformGetDriveType(drive.text) == clDriveCdRom;
        facts.readOnly = PlatformIsReadOnlyVolume(drive.text);
        facts.nameTooLong = NameTooLong(outputPath, PosixPathSyntax());
        if (!PlatformGetFreeSpace(drive.text, &facts.freeBytes)) facts.freeBytes = kFullDriveBytes;
        facts.writeTest = [outputPath] { return CanWriteBeside(outputPath); };
    }
    return DiagnoseDrive(drive, facts);
}
