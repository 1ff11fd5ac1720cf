// The plug-in wrappers: XDLL, the library holder, and its three kinds.
//
// A wrapper is empty (no library), bound (library and every export found)
// or live (an instance made by Create). Every export of a kind is required:
// a library that lacks one is not a plug-in of that kind, even where this
// program never calls it, and Bind answers false; the other exports are
// still looked up, so the wrapper shows what the library has. Binding a
// wrapper that already holds a library changes nothing. Unload destroys the
// instance, frees the library and clears every pointer. A wrapper belongs
// to one thread; each place of use binds its own.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/platform/dynlib.h"
#include "plugins/quillotone_plugin.h"

// The library of a plug-in found again by its name, in the folder
// ("decoder", "encoder" or "DSPs") beside the program. The name is matched
// ignoring ASCII case on every platform, as Windows matches file names, so
// an option string written on one platform finds the library on the other.
// Without a match: the path the name would have. Empty for a name that is
// no plain file name (empty, "." or "..", or holding a separator, a colon
// or a control character): plug-ins load from their own folders only.
clString PluginLibraryPath(const char16_t* folder, const clString& name);
bool IsPluginName(const clString& name);

class XDLL {
public:
    clLibraryHandle module = 0;

    XDLL() = default;
    virtual ~XDLL();
    XDLL(const XDLL&) = delete;
    XDLL& operator=(const XDLL&) = delete;

    // Loads `path` (null: nothing) and looks up the exports; the bound flag.
    virtual bool Bind(const char16_t* path) = 0;

protected:
    // Steps 1-2 of every Bind; false when the library could not be loaded.
    bool LoadModule(const char16_t* path, bool& bound);
    // Looks up one export into `slot`; a missing one clears `bound`.
    template <class Function>
    void Look(const char* name, Function& slot, bool& bound) {
        slot = reinterpret_cast<Function>(PlatformGetSymbol(module, name));
        if (slot == nullptr) bound = false;
    }
    void FreeModule();
};

// What the three kinds share: the bound flag, the instance, and Create and
// Destroy (the same signatures in every kind, under other export names).
class clQvPlugin : public XDLL {
public:
    bool bound = false;
    uint64_t instance = 0;
    qv_Create Create = nullptr;
    qv_Destroy Destroy = nullptr;

    // Destroys any instance and makes a new one; true when there is one.
    bool CreateInstance(const qv_log_record* log);
    void DestroyInstance();
    // Destroys the instance, frees the library and clears every pointer.
    virtual void Unload();
    bool Reload(const char16_t* path);
};

class clQvDecoder : public clQvPlugin {
public:
    clString extension;  // the extension this library was chosen for
    clString libraryPath;
    qv_Get Get = nullptr;
    qv_Set Set = nullptr;
    qv_Open Open = nullptr;
    qv_Close Close = nullptr;
    qv_DecodeBlock DecodeBlock = nullptr;
    qv_SetPosition SetPosition = nullptr;
    qv_DeleteATag DeleteATag = nullptr;

    clQvDecoder() { Bind(nullptr); }
    ~clQvDecoder() override { Unload(); }
    bool Bind(const char16_t* path) override;
    void Unload() override;
};

class clQvEncoder : public clQvPlugin {
public:
    qv_ENC_Get Get = nullptr;
    qv_ENC_Set Set = nullptr;
    qv_ENC_ShowConfigBit ShowConfigBit = nullptr;
    qv_ENC_RemoveConfigBit RemoveConfigBit = nullptr;
    qv_ENC_BeginConversion BeginConversion = nullptr;
    qv_ENC_EndConversion EndConversion = nullptr;
    qv_ENC_EncodeBlock EncodeBlock = nullptr;

    clQvEncoder() { Bind(nullptr); }
    ~clQvEncoder() override { Unload(); }
    bool Bind(const char16_t* path) override;
};

class clQvDSP : public clQvPlugin {
public:
    qv_DSP_Get Get = nullptr;
    qv_DSP_Set Set = nullptr;
    qv_DSP_ShowConfigBit ShowConfigBit = nullptr;
    qv_DSP_RemoveConfigBit RemoveConfigBit = nullptr;
    qv_DSP_BeginConversion BeginConversion = nullptr;
    qv_DSP_EndConversion EndConversion = nullptr;
    qv_DSP_PassAudioBlock PassAudioBlock = nullptr;
    qv_DSP_PassNonLive PassNonLive = nullptr;
    qv_DSP_AfterConversion AfterConversion = nullptr;

    clQvDSP() { Bind(nullptr); }
    ~clQvDSP() override { Unload(); }
    bool Bind(const char16_t* path) override;
};
