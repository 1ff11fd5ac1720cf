// Finding the decoder for a file by its extension alone, with three levels
// of short cut: the library the wrapper already holds, the library the
// settings store remembers for the extension (key DecoderCache64), and only
// then a scan of the decoder folder. An entry proves itself each time by
// asking the library; it is never deleted, only overwritten by a library
// that succeeds. Only the file-name part of a stored path is used, rebuilt
// below the present program folder, so the cache survives a moved program
// and a hand-edited entry can't point outside the decoder folder.
#pragma once

#include <atomic>

#include "foundation/clstring.h"
#include "plugins/quillotone_plugin.h"

class clPointerArray;
class clQvDecoder;
class clSourceFile;
class XEvent;

// Entries a "Decodes" enumeration may have before the library counts as
// not decoding the extension: a library that never ends its list must not
// hang the program.
constexpr uint32_t clMaxDecodesEntries = 10000;

// True when `decoder` now holds a live instance of a library that lists the
// extension of `fileName`.
bool LoadForFile(const clString& fileName, clQvDecoder& decoder, const qv_log_record* log);
// Reads the stream facts, the tags (none over 1024 bytes) and the
// properties of the record's file into it.
bool ReadFileFacts(clSourceFile& source, clQvDecoder& decoder);
// The program folder's "decoder" folder, with a trailing separator.
clString DecoderFolder();

// Bulk reading: brings each record of `sources` (clSourceFile, in order)
// below `wantedLevel` up to it, with one decoder for the whole list: at
// level 2 its facts and tags first (a file no decoder reads keeps none),
// then its size, then the level itself, published last so another thread
// that sees the level sees the rest. `stop` (may be null) is tested
// before every file; false when it ended the walk. While `hold` (may be
// null) is set, the walk waits between files: a pause that stops at a
// safe place, where suspending the thread could stop it holding a lock.
bool ReadSourcesToLevel(const clPointerArray& sources, uint32_t wantedLevel, const XEvent* stop,
                        const std::atomic<bool>* hold = nullptr);
