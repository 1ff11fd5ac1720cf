#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "foundation/platform/knownfolders.h"
#include "foundation/platform/posixsupport_posix.h"
#include "foundation/userdirs.h"

// Which CSIDL numbers mean something on Linux:
//   0, 16  desktop            XDG_DESKTOP_DIR    else ~/Desktop
//   5      personal folder    XDG_DOCUMENTS_DIR  else ~/Documents
//   13     music              XDG_MUSIC_DIR      else ~/Music
//   39     pictures           XDG_PICTURES_DIR   else ~/Pictures
//   14     videos             XDG_VIDEOS_DIR     else ~/Videos
//   26, 28 application data   $XDG_DATA_HOME     else ~/.local/share
//   40     user profile       $HOME
//   20483  temporary folder   $TMPDIR            else /tmp
// Every other id has no counterpart and answers false.

namespace {

std::string HomeFolder() {
    const char* home = std::getenv("HOME");
    if (home != nullptr && home[0] == '/') return home;
    if (passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_dir != nullptr) return entry->pw_dir;
    return "/";
}

std::string ConfigFolder() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config != nullptr && config[0] == '/') return config;
    return HomeFolder() + "/.config";
}

bool UserDir(const char16_t* key, const char* fallback, clString& path) {
    clString home;
    FromNative(HomeFolder().c_str(), home);
    std::ifstream file(ConfigFolder() + "/user-dirs.dirs", std::ios::binary);
    if (file) {
        std::ostringstream bytes;
        bytes << file.rdbuf();
        std::string content = bytes.str();
        clString text;
        FromNative(content.c_str(), text);
        if (FindUserDir(text, key, home, path)) return true;
    }
    path = home;
    path.Append(u"/");
    clString tail;
    FromNative(fallback, tail);
    path.Append(tail);
    return true;
}

}  // namespace

bool PlatformGetKnownFolder(int32_t id, clString& path) {
    switch (id) {
        case 0:
        case 16: return UserDir(u"XDG_DESKTOP_DIR", "Desktop", path);
        case 5: return UserDir(u"XDG_DOCUMENTS_DIR", "Documents", path);
        case 13: return UserDir(u"XDG_MUSIC_DIR", "Music", path);
        case 39: return UserDir(u"XDG_PICTURES_DIR", "Pictures", path);
        case 14: return UserDir(u"XDG_VIDEOS_DIR", "Videos", path);
        case 26:
        case 28: {
            const char* data = std::getenv("XDG_DATA_HOME");
            if (data != nullptr && data[0] == '/') {
                FromNative(data, path);
            } else {
                FromNative((HomeFolder() + "/.local/share").c_str(), path);
            }
            return true;
        }
        case 40: FromNative(HomeFolder().c_str(), path); return true;
        case 20483: {
            const char* temp = std::getenv("TMPDIR");
            FromNative(temp != nullptr && temp[0] != 0 ? temp : "/tmp", path);
            return true;
        }
        default: path.Clear(); return false;
    }
}
