#include "tests/support/testfolder.h"

#include <atomic>

#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/workerprocess.h"

namespace {
std::atomic<int> counter{0};

// Every test process (and the programs it starts) keeps its settings in a
// private folder, never in the user's own store.
struct PrivateSettings {
    clString folder;
    PrivateSettings() {
        folder = GetTempFolder();
        folder.Append(clString::Formatted(u"qvtest-config-%s", GetProcessGuidText().text));
        clString existing;
        if (!PlatformGetEnvironment(u"QUILLOTONE_CONFIG_DIR", existing)) {
            PlatformSetEnvironment(u"QUILLOTONE_CONFIG_DIR", folder.text);
        } else {
            folder.Clear();  // a parent test process chose already
        }
    }
    ~PrivateSettings() {
        if (!folder.IsEmpty()) DeleteFolderTree(folder);
    }
} privateSettings;
}  // namespace

TestFolder::TestFolder() {
    path = GetTempFolder();
    path.Append(clString::Formatted(u"qvtest-%s-%d", GetProcessGuidText().text, ++counter));
    MakeFolders(path);
    AddBackslash(path);
}

TestFolder::~TestFolder() { DeleteFolderTree(path); }

clString TestFolder::File(const char16_t* name) const { return clString(path.text, name); }

bool WriteBytes(const clString& path, const std::string& bytes) {
    clFile file;
    file.fileName = path;
    file.Open(clAccessWrite, clCreateAlways, false, true);
    if (file.handle == clInvalidHandle) return false;
    return file.Write(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

std::string ReadBytes(const clString& path) {
    clFile file;
    file.fileName = path;
    file.Open(clAccessRead, clOpenExisting, false, true);
    if (file.handle == clInvalidHandle) return {};
    std::string out;
    char buffer[65536];
    for (;;) {
        uint32_t n = file.Read(buffer, sizeof buffer);
        if (n == 0) break;
        out.append(buffer, n);
    }
    return out;
}

std::string Utf16Le(const std::u16string& text) {
    std::string out;
    for (char16_t c : text) {
        out.push_back(static_cast<char>(c & 0xFF));
        out.push_back(static_cast<char>(c >> 8));
    }
    return out;
}

std::u16string FromUtf16Le(const std::string& bytes) {
    std::u16string text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                             (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    }
    return text;
}

clString ProgramPath(const char16_t* name) {
    clString folder = GetProgramFolder();
    RemoveBackslashes(folder);
    clString path = JoinPath(JoinPath(GetFolderPart(folder), clString(u"bin")), clString(name));
    path.Append(PlatformExecutableSuffix());
    return path;
}

std::u16string FromPipeText(const std::string& bytes) {
    clString text;
    PlatformPipeText(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int64_t>(bytes.size()), text);
    return std::u16string(text.text);
}
