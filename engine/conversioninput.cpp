#include "engine/conversioninput.h"

#include "foundation/file.h"
#include "foundation/findfiles.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "plugins/sourcefile.h"

clConversionInput::~clConversionInput() {
    for (int64_t i = 0; i < sources.count; ++i) delete sources.At<clSourceFile>(i);
}

void clConversionInput::AddSource(const clString& path, bool checkDuplicates) {
    if (checkDuplicates) {
        for (int64_t i = 0; i < sources.count; ++i) {
            if (Source(i).path.EqualsNoCase(path)) return;
        }
    }
    clString extension = GetExtension(path);
    if (extensions.Find(extension.text, true)) {
        sources.Add(new clSourceFile(path));
    } else {
        excludedFiles.Add(path);
    }
}

void clConversionInput::AddFolder(const clString& folder, const clStringList& accepted) {
    clFindFiles find(clString(u"*"), folder);
    while (find.Next()) {
        if (find.IsFolder()) {
            AddFolder(find.fullName, accepted);
        } else if (accepted.Find(GetExtension(find.fullName).text, true)) {
            AddSource(find.fullName, true);
        }
    }
}

void clConversionInput::LoadListFile(const clString& listFile) {
    clStringList paths;
    {
        clFile file;
        file.fileName = listFile;
        file.Open(clAccessRead, clOpenExisting, false, true);
        if (file.handle != clInvalidHandle) {
            clString line;
            while (file.ReadLine(line, true, false)) {
                if (!line.IsEmpty()) paths.Add(line);
            }
        }
    }
    paths.Sort(true);
    for (int64_t i = 0; i < paths.Count(); ++i) AddSource(paths[i], false);
    DeleteFileEx(listFile);
}
