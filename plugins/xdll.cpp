#include "plugins/xdll.h"

#include "foundation/findfiles.h"
#include "foundation/pathtext.h"

bool IsPluginName(const clString& name) {
    if (name.IsEmpty() || name.Equals(u".") || name.Equals(u"..")) return false;
    for (int32_t i = 1; i <= name.Length(); ++i) {
        char16_t c = name.CharAt(i);
        if (c == u'/' || c == u'\\' || c == u':' || c < 0x20) return false;
    }
    return true;
}

clString PluginLibraryPath(const char16_t* folder, const clString& name) {
    // A name from a command file or a setting must not reach a library
    // anywhere else: "../../tmp/x" or "/tmp/x" would load whatever lies
    // there into this process.
    if (!IsPluginName(name)) return clString();
    clString folderPath = JoinPath(GetProgramFolder(), clString(folder));
    clString fileName(name.text, PlatformLibrarySuffix());
    // A name with wildcard characters must not match other libraries.
    if (name.FindChar(u'*') == 0 && name.FindChar(u'?') == 0) {
        clFindFiles find(fileName, folderPath);
        while (find.Next()) {
            if (!find.IsFolder()) return find.fullName;
        }
    }
    return JoinPath(folderPath, fileName);
}

XDLL::~XDLL() { FreeModule(); }

void XDLL::FreeModule() {
    if (module != 0) PlatformFreeLibrary(module);
    module = 0;
}

bool XDLL::LoadModule(const char16_t* path, bool& bound) {
    bound = true;
    // An empty path would load the program itself on POSIX.
    if (path != nullptr && path[0] == 0) {
        bound = false;
        return false;
    }
    if (path != nullptr) {
        module = PlatformLoadLibrary(path);
        if (module == 0) bound = false;
    }
    return module != 0;
}

bool clQvPlugin::CreateInstance(const qv_log_record* log) {
    DestroyInstance();
    instance = Create != nullptr ? Create(log) : 0;
    return instance != 0;
}

void clQvPlugin::DestroyInstance() {
    if (instance != 0 && Destroy != nullptr) Destroy(instance);
    instance = 0;
}

void clQvPlugin::Unload() {
    DestroyInstance();
    FreeModule();
    Bind(nullptr);
}

bool clQvPlugin::Reload(const char16_t* path) {
    Unload();
    return Bind(path);
}

bool clQvDecoder::Bind(const char16_t* path) {
    if (module != 0) return bound;
    LoadModule(path, bound);
    Look("Create", Create, bound);
    Look("Destroy", Destroy, bound);
    Look("Get", Get, bound);
    Look("Set", Set, bound);
    Look("Open", Open, bound);
    Look("Close", Close, bound);
    Look("DecodeBlock", DecodeBlock, bound);
    Look("SetPosition", SetPosition, bound);
    Look("DeleteATag", DeleteATag, bound);
    return bound;
}

void clQvDecoder::Unload() {
    clQvPlugin::Unload();
    extension.Clear();
    libraryPath.Clear();
}

bool clQvEncoder::Bind(const char16_t* path) {
    if (module != 0) return bound;
    LoadModule(path, bound);
    Look("ENC_Create", Create, bound);
    Look("ENC_Destroy", Destroy, bound);
    Look("ENC_Get", Get, bound);
    Look("ENC_Set", Set, bound);
    Look("ENC_ShowConfigBit", ShowConfigBit, bound);
    Look("ENC_RemoveConfigBit", RemoveConfigBit, bound);
    Look("ENC_BeginConversion", BeginConversion, bound);
    Look("ENC_EndConversion", EndConversion, bound);
    Look("ENC_EncodeBlock", EncodeBlock, bound);
    return bound;
}

bool clQvDSP::Bind(const char16_t* path) {
    if (module != 0) return bound;
    LoadModule(path, bound);
    Look("DSP_Create", Create, bound);
    Look("DSP_Destroy", Destroy, bound);
    Look("DSP_Get", Get, bound);
    Look("DSP_Set", Set, bound);
    Look("DSP_ShowConfigBit", ShowConfigBit, bound);
    Look("DSP_RemoveConfigBit", RemoveConfigBit, bound);
    Look("DSP_BeginConversion", BeginConversion, bound);
    Look("DSP_EndConversion", EndConversion, bound);
    Look("DSP_PassAudioBlock", PassAudioBlock, bound);
    Look("DSP_PassNonLive", PassNonLive, bound);
    Look("DSP_AfterConversion", AfterConversion, bound);
    return bound;
}
