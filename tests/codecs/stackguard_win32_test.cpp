// The codec plug-ins' own stack guard on Windows: loading a plug-in built
// on a stack-protected codec library starts no crypto provider (and with
// it no window or font machinery), and the guard is seeded, with a zero
// byte first.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>

#include "foundation/utf.h"
#include "tests/codecs/codectest.h"

extern "C" uintptr_t __stack_chk_guard;

namespace {

clString PluginPath(const char16_t* kind, const char16_t* name) {
    clString folder = GetProgramFolder();
    RemoveBackslashes(folder);
    return JoinPath(JoinPath(JoinPath(GetFolderPart(folder), clString(u"bin")), clString(kind)), clString(name));
}

}  // namespace

TEST(StackGuard, APlugInLoadsWithoutACryptoProviderAndItsGuardIsSeeded) {
    EXPECT_NE(__stack_chk_guard, 0u);
    EXPECT_EQ(__stack_chk_guard & 0xFF, 0u);
#ifdef QV_TEST_CODEC_LIBRARIES
    // The test program itself draws nothing: user32 comes only with a
    // crypto provider (which is unloaded again once the seed is drawn).
    ASSERT_EQ(GetModuleHandleW(L"user32.dll"), nullptr);
    for (auto [kind, name] : {std::pair{u"encoder", u"FLAC.dll"}, std::pair{u"decoder", u"FLAC.dll"},
                              std::pair{u"encoder", u"Opus.dll"}, std::pair{u"decoder", u"Opus.dll"}}) {
        clString path = PluginPath(kind, name);
        HMODULE plugin = LoadLibraryW(reinterpret_cast<LPCWSTR>(path.text));
        ASSERT_NE(plugin, nullptr) << StringToUtf8(path);
        EXPECT_EQ(GetModuleHandleW(L"rsaenh.dll"), nullptr) << StringToUtf8(path);
        EXPECT_EQ(GetModuleHandleW(L"user32.dll"), nullptr) << StringToUtf8(path);
        FreeLibrary(plugin);
    }
#endif
}
