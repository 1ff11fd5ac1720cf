#include "plugins/codechandler.h"

#include <cstring>

#include "foundation/findfiles.h"
#include "foundation/log.h"
#include "foundation/pathtext.h"
#include "foundation/platform/dynlib.h"
#include "foundation/stringlist.h"
#include "plugins/xdll.h"

namespace {

// The plug-in ABI's log record and the program's sink are the same three
// words; copied rather than cast, so neither type aliases the other.
clLogSink SinkOf(const qv_log_record* log) {
    clLogSink sink{};
    if (log != nullptr) std::memcpy(&sink, log, sizeof sink);
    return sink;
}

// Binds `path` anew, makes an instance, and traces both under `origin`.
bool LoadTraced(const char* origin, const char16_t* what, const clString& path, clQvPlugin& plugin,
                const qv_log_record* log) {
    clLogSink sink = SinkOf(log);
    LogWrite(clLogEnter, &sink, origin, true);
    LogWrite(what, &sink, nullptr, false);
    LogWrite(path.text, &sink, nullptr, false);
    LogWrite(u"'", &sink, nullptr, true);
    bool result = plugin.Reload(path.text) && plugin.CreateInstance(log);
    LogWrite(clLogLeave, &sink, origin, true);
    return result;
}

}  // namespace

bool clQvCodecHandler::LoadEncoder(const clString& name, clQvEncoder& encoder, const qv_log_record* log) {
    return LoadTraced("clQvCodecHandler::LoadEncoder", u"Loading Encoder '", EncoderLibraryPath(name), encoder, log);
}

bool clQvCodecHandler::LoadDSP(const clString& name, clQvDSP& dsp, const qv_log_record* log) {
    return LoadTraced("clQvCodecHandler::LoadDSP", u"Loading DSP '", DSPLibraryPath(name), dsp, log);
}

clString EncoderLibraryPath(const clString& name) { return PluginLibraryPath(u"encoder", name); }

clString DSPLibraryPath(const clString& name) { return PluginLibraryPath(u"DSPs", name); }

void ListEffectLibraries(clStringList& names) {
    names.Clear();
    clString pattern(u"*", PlatformLibrarySuffix());
    clFindFiles find(pattern, JoinPath(GetProgramFolder(), clString(u"DSPs")));
    while (find.Next()) {
        if (find.IsFolder()) continue;
        clString name = GetFileBaseName(find.fullName);
        if (!name.IsEmpty() && name.CharAt(1) != u'_') names.Add(name);
    }
    names.Sort(true);
}

clString EncoderExtension(const clString& name) {
    clQvEncoder encoder;
    const qv_log_record noLog{};
    if (!encoder.Bind(EncoderLibraryPath(name).text) || !encoder.CreateInstance(&noLog)) return clString();
    qv_query_record query{};
    if (encoder.Get(encoder.instance, u"Extension", &query) == 0 || query.text1 == nullptr) return clString();
    return clString(query.text1);
}

namespace {

// A text answer of a library to a key that takes nothing.
clString LibraryText(const clString& name, bool effect, const char16_t* key) {
    const qv_log_record noLog{};
    qv_query_record query{};
    if (effect) {
        clQvDSP dsp;
        if (!clQvCodecHandler::LoadDSP(name, dsp, &noLog) || dsp.Get(dsp.instance, key, &query) == 0) return clString();
        return clString(query.text1);
    }
    clQvEncoder encoder;
    if (!clQvCodecHandler::LoadEncoder(name, encoder, &noLog) || encoder.Get(encoder.instance, key, &query) == 0) {
        return clString();
    }
    return clString(query.text1);
}

}  // namespace

clString OptionHelp(const clString& name, bool effect) { return LibraryText(name, effect, u"OptionHelp"); }

clString OptionSpecOfLibrary(const clString& name, bool effect) { return LibraryText(name, effect, u"OptionSpec"); }

clString EncoderOfProfile(const clString& text) {
    int32_t length = text.Length();
    if (length == 0 || text.CharAt(length) != u'"') return text;
    clString inner = text.Mid(1, length - 1);
    int32_t quote = inner.FindLastChar(u'"');
    if (quote == 0) return inner;
    return inner.Mid(quote + 1, inner.Length());
}
