#include "crash/crashhandler.h"

#include <cstdlib>

#include "foundation/commandoptions.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/crashdump.h"
#include "foundation/platform/processinfo.h"
#include "foundation/specialfolder.h"
#include "foundation/stringlist.h"

namespace {

// More records of one process id than anyone keeps.
constexpr int32_t kMostRecordsPerId = 10000;

// The file name part of the switch's value, below the crashes folder: a
// value can't point anywhere else.
clString ReportedRecord(const clString& baseFolder, const clString& value) {
    clString name = GetFileName(value);
    while (!name.IsEmpty() && (name.text[0] == u'\\' || name.text[0] == u'/')) name = name.Mid(2, name.Length());
    clString folder(baseFolder);
    AddBackslash(folder);
    folder.Append(u"crashes");
    AddBackslash(folder);
    folder.Append(name);
    return folder;
}

// Deeper than any stack; the volatile buffer and limit keep the compiler
// from turning the recursion into a loop.
volatile int deepest = 1 << 30;
int Recurse(int depth) {
    if (depth > deepest) return 0;
    volatile char frame[1024];
    frame[depth % 1024] = static_cast<char>(depth);
    return Recurse(depth + 1) + frame[0];
}

// The crashes the tests of this path ask for.
void CrashOnRequest() {
    clString kind;
    if (!PlatformGetEnvironment(u"QUILLOTONE_TEST_CRASH", kind)) return;
    if (kind.EqualsNoCase(u"stack")) Recurse(0);
    if (kind.EqualsNoCase(u"fault") || kind.EqualsNoCase(u"stack")) {
        // The pointer itself is volatile: a compiler that saw the null would
        // trap rather than fault.
        volatile int* volatile nowhere = nullptr;
        *nowhere = 1;
    }
}

}  // namespace

clString CrashBaseFolder() {
    clString folder = GetSpecialFolder(clFolderAppData);
    AddBackslash(folder);
    folder.Append(u"qvt");
    return folder;
}

clString ChooseCrashDumpName(const clString& folder, uint32_t processId) {
    clString base(folder);
    AddBackslash(base);
    for (int32_t i = 0; i < kMostRecordsPerId; ++i) {
        clString name = clString::Formatted(u"crash-%u", processId);
        if (i > 0) name.Append(clString::Formatted(u"-%d", i).text);
        name.Append(u".dmp");
        clString path(base.text, name.text);
        if (!PathExists(path)) return path;
    }
    return clString();
}

void InstallCrashHandler(const clString& baseFolder, void (*showReport)(const clString& record)) {
    clCommandOptions options;
    options.ParseProcessCommandLine();
    if (options.Has(u"crashed")) {
        clString record = ReportedRecord(baseFolder, options.Get(u"crashed"));
        if (PathExists(record) && showReport != nullptr) showReport(record);
        std::exit(0);
    }
    clString folder(baseFolder);
    AddBackslash(folder);
    folder.Append(u"crashes");
    MakeFolders(folder);
    clString record = ChooseCrashDumpName(folder, PlatformProcessId());
    clStringList arguments;
    arguments.Add(clString(u"-crashed"));
    arguments.Add(GetFileName(record));
    if (!record.IsEmpty()) PlatformInstallCrashDump(record, GetProgramPath(), arguments);
    CrashOnRequest();
}
