#include "engine/handover.h"

#include "engine/conversioninput.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/specialfolder.h"
#include "foundation/stringlist.h"
#include "foundation/syncobjects.h"

namespace {

constexpr const char16_t* kHandOverFileName = u"AddFilesToExistingTC.bin";

clString HandOverFolder() {
    clString folder = GetSpecialFolder(clFolderAppData, u"C:\\Quillotone\\");
    AddBackslash(folder);
    folder.Append(u"Quillotone");
    AddBackslash(folder);
    return folder;
}

void ReadWideLines(clFile& file, clStringList& lines) {
    clString line;
    while (file.ReadLine(line, true, false)) {
        if (!line.IsEmpty()) lines.Add(line);
    }
}

}  // namespace

clString HandOverFilePath() {
    clString path = HandOverFolder();
    path.Append(kHandOverFileName);
    return path;
}

bool HandOverToOpenWindow(const clString& listFile) {
    XEvent event;
    if (!event.Create(kHandOverEventName) || !event.existed) return false;
    clStringList paths;
    {
        clFile list;
        list.fileName = listFile;
        list.Open(clAccessRead, clOpenExisting, false, true);
        if (list.handle != clInvalidHandle) ReadWideLines(list, paths);
    }
    paths.Sort(true);
    MakeFolders(HandOverFolder());
    if (!WriteWideLines(HandOverFilePath(), paths, true)) return false;
    event.Set();
    return true;
}

bool TakeHandedOverFiles(XEvent& event, clConversionInput& input) {
    if (!event.IsSet()) return false;
    clStringList paths;
    {
        clFile file;
        file.fileName = HandOverFilePath();
        file.Open(clAccessRead, clOpenExisting, false, true);
        if (file.handle == clInvalidHandle) return false;
        ReadWideLines(file, paths);
    }
    for (int64_t i = 0; i < paths.Count(); ++i) input.AddSource(paths[i], true);
    event.Reset();
    DeleteFileEx(HandOverFilePath());
    return true;
}

bool StartReconvert(const clStringList& sourcePaths, const clString& programFolder, const clProgramStarter& start) {
    clString listFile;
    if (!MakeTempFile(listFile, "QvS")) return false;
    if (!WriteWideLines(listFile, sourcePaths, false)) {
        DeleteFileEx(listFile);
        return false;
    }
    clString program = JoinPath(programFolder, clString(u"TrackConverter"));
    program.Append(PlatformExecutableSuffix());
    clStringList arguments;
    arguments.Add(clString(u"-list_to_conv"));
    arguments.Add(listFile);
    if (start(program, arguments)) return true;
    DeleteFileEx(listFile);
    return false;
}
