// The Win32 back end of dialogs.h: the common open dialog, the shell's
// folder browser, and WM_DROPFILES (its HDROP is wParam; the window
// procedure releases it after the form has read it).
#include <windows.h>
#include <commdlg.h>
#include <shellapi.h>
#include <shlobj.h>

#include <string>
#include <vector>

#include "foundation/stringlist.h"
#include "toolkit/dialogs.h"
#include "toolkit/win32/win32windows.h"

namespace {

const wchar_t* Wide(const clString& text) { return reinterpret_cast<const wchar_t*>(text.text); }

clString FromWide(const wchar_t* text) { return clString(reinterpret_cast<const char16_t*>(text)); }

}  // namespace

bool ChooseFiles(clWindowHandle owner, const clString& title, const clStringList& filters,
                 const clString& initialFolder, clStringList& chosen) {
    chosen.Clear();
    // The type box wants "display\0patterns\0" pairs, ended by one more NUL.
    std::wstring filter;
    for (int64_t i = 0; i < filters.Count(); ++i) {
        std::wstring entry(Wide(filters[i]));
        for (wchar_t& c : entry) {
            if (c == L'\r') c = L'\0';
        }
        filter += entry;
        filter.push_back(L'\0');
    }
    filter.push_back(L'\0');
    std::vector<wchar_t> names(64 * 1024, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = HwndOf(owner);
    dialog.lpstrFilter = filters.Count() > 0 ? filter.c_str() : nullptr;
    dialog.lpstrFile = names.data();
    dialog.nMaxFile = static_cast<DWORD>(names.size());
    dialog.lpstrTitle = Wide(title);
    dialog.lpstrInitialDir = initialFolder.IsEmpty() ? nullptr : Wide(initialFolder);
    // Explorer style, several files, path and file must exist, no
    // read-only box.
    dialog.Flags = 0x81A04;
    if (!GetOpenFileNameW(&dialog)) return false;
    // One file: its full path. Several: the folder, then each name.
    const wchar_t* at = names.data();
    std::wstring folder(at);
    at += folder.size() + 1;
    if (*at == L'\0') {
        chosen.Add(FromWide(folder.c_str()));
        return true;
    }
    if (!folder.empty() && folder.back() != L'\\') folder.push_back(L'\\');
    while (*at != L'\0') {
        std::wstring name(at);
        chosen.Add(FromWide((folder + name).c_str()));
        at += name.size() + 1;
    }
    return chosen.Count() > 0;
}

clString ChooseSaveFile(clWindowHandle owner, const clString& title, const clString& filter,
                        const clString& defaultExtension) {
    std::wstring filterText(Wide(filter));
    for (wchar_t& c : filterText) {
        if (c == L'\r') c = L'\0';
    }
    filterText.push_back(L'\0');
    filterText.push_back(L'\0');
    std::vector<wchar_t> name(32 * 1024, L'\0');
    std::wstring extension(Wide(defaultExtension));
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = HwndOf(owner);
    dialog.lpstrFilter = filterText.c_str();
    dialog.lpstrFile = name.data();
    dialog.nMaxFile = static_cast<DWORD>(name.size());
    dialog.lpstrTitle = Wide(title);
    dialog.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
    // Explorer style, ask before replacing, no read-only box.
    dialog.Flags = 0x80006;
    if (!GetSaveFileNameW(&dialog)) return clString();
    return FromWide(name.data());
}

clString ChooseFolder(clWindowHandle owner, const clString& title) {
    BROWSEINFOW browse{};
    browse.hwndOwner = HwndOf(owner);
    browse.lpszTitle = Wide(title);
    browse.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
    PIDLIST_ABSOLUTE list = SHBrowseForFolderW(&browse);
    if (list == nullptr) return clString();
    wchar_t path[MAX_PATH] = {};
    bool got = SHGetPathFromIDListW(list, path) != FALSE;
    CoTaskMemFree(list);
    return got ? FromWide(path) : clString();
}

void WindowAcceptDrops(clWindowHandle window, bool accept) { DragAcceptFiles(HwndOf(window), accept ? TRUE : FALSE); }

void DroppedPaths(uintptr_t drop, clStringList& paths) {
    paths.Clear();
    auto handle = reinterpret_cast<HDROP>(drop);
    if (handle == nullptr) return;
    UINT count = DragQueryFileW(handle, 0xFFFFFFFF, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
        UINT length = DragQueryFileW(handle, i, nullptr, 0);
        std::wstring path(length + 1, L'\0');
        DragQueryFileW(handle, i, path.data(), length + 1);
        path.resize(length);
        paths.Add(FromWide(path.c_str()));
    }
}

void SimulateDrop(clWindowHandle window, const clStringList& paths) {
    // The block a drop from Explorer carries: DROPFILES, then the paths as
    // wide strings, each ended by a NUL, and one more NUL at the end.
    std::wstring names;
    for (int64_t i = 0; i < paths.Count(); ++i) {
        names += Wide(paths[i]);
        names.push_back(L'\0');
    }
    names.push_back(L'\0');
    SIZE_T bytes = sizeof(DROPFILES) + names.size() * sizeof(wchar_t);
    HGLOBAL block = GlobalAlloc(GHND, bytes);
    if (block == nullptr) return;
    auto* header = static_cast<DROPFILES*>(GlobalLock(block));
    header->pFiles = sizeof(DROPFILES);
    header->fWide = TRUE;
    memcpy(reinterpret_cast<char*>(header) + sizeof(DROPFILES), names.data(), names.size() * sizeof(wchar_t));
    GlobalUnlock(block);
    SendMessageW(HwndOf(window), WM_DROPFILES, reinterpret_cast<WPARAM>(block), 0);
}

void WindowBringToFront(clWindowHandle window) { SetForegroundWindow(HwndOf(window)); }
