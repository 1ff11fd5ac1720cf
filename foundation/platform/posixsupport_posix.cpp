#include "foundation/platform/posixsupport_posix.h"

#include <cerrno>
#include <cstring>

#include "foundation/clstring.h"
#include "foundation/commandlinetext.h"
#include "foundation/platform/fileio.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"

std::string NativePath(const char16_t* path) { return StringToFileName(path, clTextLength(path)); }

void FromNative(const char* bytes, clString& target) {
    FileNameToString(bytes, static_cast<int64_t>(std::strlen(bytes)), target);
}

void SetLastErrorFromErrno(int error) {
    uint32_t code;
    switch (error) {
        case 0: code = 0; break;
        case ENOENT: code = clErrorFileNotFound; break;
        case ENOTDIR: code = clErrorPathNotFound; break;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR: code = clErrorAccessDenied; break;
        case EBADF: code = clErrorInvalidHandle; break;
        case EEXIST: code = clErrorAlreadyExists; break;
        case ENOSPC:
        case EFBIG:
        case EDQUOT: code = clErrorDiskFull; break;
        case ENAMETOOLONG: code = clErrorNameTooLong; break;
        case ENOTEMPTY: code = 145; break;
        case EXDEV: code = 17; break;
        default: code = 31; break;  // "a device attached to the system is not functioning"
    }
    PlatformSetLastError(code);
}

NativeArguments SplitNativeArguments(const clString& commandLine) {
    NativeArguments native;
    clStringList words;
    SplitCommandLine(commandLine, words);
    if (words.Count() == 0) return native;
    for (int64_t i = 0; i < words.Count(); ++i) native.words.push_back(NativePath(words[i].text));
    for (auto& w : native.words) native.argv.push_back(w.data());
    native.argv.push_back(nullptr);
    return native;
}
