#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "foundation/platform/display.h"

namespace {

bool Exists(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0;
}

const char* Env(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] != 0 ? value : nullptr;
}

}  // namespace

bool PlatformHasDisplay() {
    if (Env("QT_QPA_PLATFORM") != nullptr) return true;
    if (const char* wayland = Env("WAYLAND_DISPLAY")) {
        if (wayland[0] == '/') return Exists(wayland);
        const char* runtime = Env("XDG_RUNTIME_DIR");
        if (runtime != nullptr && Exists(std::string(runtime) + "/" + wayland)) return true;
    }
    const char* display = Env("DISPLAY");
    if (display == nullptr) return false;
    std::string name(display);
    if (name[0] != ':') return true;  // a remote display
    std::string number = name.substr(1, name.find('.') == std::string::npos ? std::string::npos : name.find('.') - 1);
    return Exists("/tmp/.X11-unix/X" + number);
}
