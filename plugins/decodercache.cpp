#include "plugins/decodercache.h"

#include <atomic>
#include <cstring>

#include "foundation/file.h"
#include "foundation/findfiles.h"
#include "foundation/pathtext.h"
#include "foundation/platform/filesystem.h"
#include "foundation/platform/thread.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/syncobjects.h"
#include "plugins/sourcefile.h"
#include "plugins/taglist.h"
#include "plugins/xdll.h"

namespace {

constexpr int64_t kLargestKeptTag = 1024;

bool TryLibrary(const clString& path, const clString& extension, clQvDecoder& decoder, const qv_log_record* log) {
    decoder.Unload();
    if (decoder.Bind(path.text)) {
        decoder.extension = extension;
        decoder.libraryPath = path;
        if (decoder.CreateInstance(log)) {
            for (uint32_t index = 0; index < clMaxDecodesEntries; ++index) {
                qv_query_record query{};
                query.index = index;
                if (decoder.Get(decoder.instance, u"Decodes", &query) == 0 || query.text1 == nullptr) break;
                if (extension.Compare(query.text1, 0, true) == 0) return true;
            }
        }
    }
    decoder.Unload();
    return false;
}

}  // namespace

clString DecoderFolder() {
    clString folder = JoinPath(GetProgramFolder(), clString(u"decoder"));
    AddBackslash(folder);
    return folder;
}

bool LoadForFile(const clString& fileName, clQvDecoder& decoder, const qv_log_record* log) {
    decoder.DestroyInstance();
    clString extension = GetExtension(fileName);
    if (decoder.module == 0) decoder.extension.Clear();
    if (decoder.module != 0 && extension.Compare(decoder.extension, 0, true) == 0) {
        return decoder.CreateInstance(log);
    }
    clString found;
    clString cached = GetSettingText(extension.text, kSettingsHive, kDecoderCacheKey);
    if (!cached.IsEmpty()) {
        // Stored paths may come from either syntax; only the name counts.
        clString name = GetFileName(GetFileName(cached, WindowsPathSyntax()), PosixPathSyntax());
        clString path(DecoderFolder().text, name.text);
        if (TryLibrary(path, extension, decoder, log)) found = path;
    }
    if (found.IsEmpty()) {
        clString pattern(u"*", PlatformLibrarySuffix());
        clFindFiles find(pattern, DecoderFolder());
        while (find.Next()) {
            if (find.IsFolder()) continue;
            if (TryLibrary(find.fullName, extension, decoder, log)) {
                found = find.fullName;
                break;
            }
        }
    }
    if (found.IsEmpty()) return false;
    // Every worker passes here; a store that already says so is left
    // alone, since a write is a transaction on the shared settings.
    if (!found.Equals(cached)) SetSettingText(found, extension.text, kSettingsHive, kDecoderCacheKey);
    return true;
}

bool ReadFileFacts(clSourceFile& source, clQvDecoder& decoder) {
    const qv_log_record noLog{};
    // A pipe or a device named like an audio file would block a decoder's
    // first read for ever; its facts stay zero, and its job fails.
    clFileKind kind = PlatformFileKind(source.path.text);
    if (kind == clFileKind::Folder || kind == clFileKind::Other) return false;
    if (!LoadForFile(source.path, decoder, &noLog)) return false;
    qv_open_record open{};
    open.fileName = source.path.text;
    open.request = QV_OPEN_REQUEST;
    if (decoder.instance == 0 || decoder.Open == nullptr || decoder.Open(decoder.instance, &open) == 0) return false;
    std::memcpy(source.facts, &open.facts, sizeof source.facts);
    if (open.tags != nullptr && open.tagsSize != 0) {
        clTagList tags;
        tags.LoadBlock(open.tags, open.tagsSize);
        // No large tag (cover art above all) is kept for a whole batch.
        for (int64_t i = tags.Count() - 1; i >= 0; --i) {
            const clTagItem& item = tags[i];
            int64_t bytes =
                2 * (int64_t{item.name.Length()} + item.value.Length()) + static_cast<int64_t>(item.binary.size);
            if (bytes > kLargestKeptTag) {
                delete tags.items.At<clTagItem>(i);
                tags.items.RemoveAt(i);
            }
        }
        tags.SaveBlock(source.tagBlock);
    }
    if (open.extra != nullptr && open.extraSize != 0) {
        if (source.extraBlock.Resize(open.extraSize, false, false, 0)) {
            std::memcpy(source.extraBlock.data, open.extra, open.extraSize);
            source.extraBlock.writePos = open.extraSize;
        }
    }
    return true;
}

bool ReadSourcesToLevel(const clPointerArray& sources, uint32_t wantedLevel, const XEvent* stop,
                        const std::atomic<bool>* hold) {
    clQvDecoder decoder;
    for (int64_t i = 0; i < sources.count; ++i) {
        while (hold != nullptr && hold->load() && (stop == nullptr || !stop->IsSet())) PlatformSleep(25);
        if (stop != nullptr && stop->IsSet()) return false;
        clSourceFile& source = *sources.At<clSourceFile>(i);
        std::atomic_ref<uint32_t> level(source.level);
        if (level.load(std::memory_order_acquire) >= wantedLevel) continue;
        if (wantedLevel == 2) ReadFileFacts(source, decoder);
        if (PlatformFileKind(source.path.text) == clFileKind::Regular) {
            source.fileSize = clFile::GetFileSize64(source.path);
        }
        level.store(wantedLevel, std::memory_order_release);
    }
    return true;
}
