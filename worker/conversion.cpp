#include "worker/conversion.h"

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/fileio.h"
#include "foundation/platform/filesystem.h"
#include "foundation/platform/processinfo.h"
#include "plugins/codechandler.h"
#include "plugins/decodercache.h"
#include "worker/samplekinds.h"

namespace {

const qv_log_record kNoLog{};

std::u16string Text(const qv_char* text) { return text != nullptr ? std::u16string(text) : std::u16string(); }

std::u16string Quoted(const std::u16string& path) { return u"'" + path + u"'"; }

std::u16string Digits(uint64_t value, int width = 1) {
    std::u16string text;
    for (char c : std::to_string(value)) text.push_back(static_cast<char16_t>(c));
    while (static_cast<int>(text.size()) < width) text.insert(text.begin(), u'0');
    return text;
}

// mm:ss of a frame position.
std::u16string TimeOf(uint64_t frame, uint32_t rate) {
    uint64_t seconds = rate != 0 ? frame / rate : 0;
    return Digits(seconds / 60, 2) + u":" + Digits(seconds % 60, 2);
}

template <class Plugin>
std::u16string LastError(Plugin& plugin) {
    if (plugin.Get == nullptr || plugin.instance == 0) return std::u16string();
    qv_query_record record{};
    if (plugin.Get(plugin.instance, u"LastError", &record) == 0) return std::u16string();
    return Text(record.text1);
}

std::u16string WithCause(const std::u16string& line, const std::u16string& cause) {
    return cause.empty() ? line : line + u": " + cause;
}

// Why a file could not be made or put in place, by the system's error.
std::u16string FileFailure(uint32_t error) {
    switch (error) {
        case clErrorNameTooLong: return u"the name is too long for the file system";
        case clErrorDiskFull: return u"the disk is full";
        case clErrorFileNotFound:
        case clErrorPathNotFound: return u"the folder does not exist";
        case clErrorAccessDenied: return u"the folder can't be written (no permission, or a read-only disk)";
        default: return u"the file system refused it (error " + Digits(error) + u")";
    }
}

bool SameFile(const std::u16string& first, const std::u16string& second) {
    return PlatformSameFile(first.c_str(), second.c_str());
}

// The block in the kind the next stage takes; `scratch` keeps converted
// samples alive until the stage's next block.
qv_audio_block Adapt(const qv_audio_block& in, const qv_audio_format& link, uint32_t accepted, int intBits,
                     std::vector<uint32_t>& scratch) {
    if (accepted == 0 || (accepted & link.sampleType) != 0 || in.samples == nullptr) return in;
    size_t count = static_cast<size_t>(in.frames) * link.channels;
    scratch.resize(count);
    qv_audio_block out = in;
    if (link.sampleType == QV_SAMPLES_INT32) {
        IntToFloat(static_cast<const int32_t*>(in.samples), reinterpret_cast<float*>(scratch.data()), count);
    } else {
        FloatToInt(static_cast<const float*>(in.samples), reinterpret_cast<int32_t*>(scratch.data()), count, intBits);
    }
    out.samples = scratch.data();
    return out;
}

// What a stage takes and, when it takes integers only, the depth it wants.
void ReadAccepted(const qv_audio_format& in, const qv_audio_format& returned, uint32_t& accepted, int& bits) {
    accepted = returned.acceptedTypes != 0 ? returned.acceptedTypes : in.sampleType;
    bits = in.sampleType == QV_SAMPLES_INT32 ? in.validBits : returned.validBits;
    if (bits < 8 || bits > 32) bits = 24;
}

}  // namespace

struct Conversion::Effect {
    std::u16string name;
    std::u16string settings;
    clQvDSP dsp;
    qv_audio_format in{};   // the link into it
    qv_audio_format out{};  // the link out of it
    uint32_t accepts = 0;
    int intBits = 24;
    bool twoPass = false;
    bool begun = false;
    std::vector<uint32_t> scratch;
};

Conversion::Conversion(const WorkerCommand& what, WorkerReport& to, const std::atomic<bool>& stop)
    : command(what), report(to), cancel(stop) {}

Conversion::~Conversion() { Abort(); }

std::u16string Conversion::TemporaryPath(const WorkerCommand& what, uint64_t unique) {
    clString output(what.outFile.c_str());
    clString folder = what.tmpFolder.empty() ? GetFolderPart(output) : clString(what.tmpFolder.c_str());
    static const char16_t kHex[] = u"0123456789abcdef";
    std::u16string name = u".qvtmp" + std::u16string(GetProcessGuidText().text, 8) + u"-";
    for (int shift = 12; shift >= 0; shift -= 4) name.push_back(kHex[(unique >> shift) & 0xF]);
    // The extension stays last: some libraries choose the format by it.
    // A name too long to have one is no output name anyway.
    clString extension = GetExtension(output);
    if (extension.Length() <= 16) name += extension.text;
    return JoinPath(folder, clString(name.c_str())).text;
}

bool Conversion::OpenDecoder() {
    const std::u16string& source = command.inFile;
    // A pipe or a device would block the first read for ever; a folder is
    // no audio file.
    clFileKind kind = PlatformFileKind(source.c_str());
    if (kind == clFileKind::Folder || kind == clFileKind::Other) {
        report.Error(u"Unable to open source file " + Quoted(source) + u": it is not a regular file");
        return false;
    }
    // An output never replaces its own source, whatever the overwrite
    // setting says: the source is what a user can't get back.
    if (SameFile(source, command.outFile)) {
        report.Error(u"Unable to create output file " + Quoted(command.outFile) +
                     u": it is the source file itself, which is never replaced; choose another folder or naming");
        return false;
    }
    // The source must be there and readable before any plug-in sees it.
    clFileHandle probe = PlatformOpenFile(source.c_str(), clAccessRead, clShareReadWrite, clOpenExisting);
    if (probe == clInvalidHandle) {
        report.Error(u"Unable to open source file " + Quoted(source));
        return false;
    }
    PlatformCloseFile(probe);
    if (!LoadForFile(clString(source.c_str()), decoder, &kNoLog)) {
        report.Error(u"No decoder reads " + Quoted(source));
        return false;
    }
    qv_open_record open{};
    open.fileName = source.c_str();
    open.request = QV_OPEN_REQUEST;
    if (decoder.Open(decoder.instance, &open) == 0) {
        report.Error(WithCause(u"Unable to open source file " + Quoted(source), LastError(decoder)));
        return false;
    }
    facts = open.facts;
    if (open.tags != nullptr && open.tagsSize != 0) tags.assign(static_cast<const char*>(open.tags), open.tagsSize);
    qv_query_record query{};
    query.facts = &sourceFormat;
    if (decoder.Get(decoder.instance, u"Format", &query) == 0 || sourceFormat.channels == 0 ||
        sourceFormat.samplesPerSecond == 0 ||
        (sourceFormat.sampleType != QV_SAMPLES_INT32 && sourceFormat.sampleType != QV_SAMPLES_FLOAT32)) {
        report.Error(WithCause(u"Unable to read the audio format of " + Quoted(source), LastError(decoder)));
        return false;
    }
    uint64_t lengthMs = facts.lengthMs;
    totalFrames = lengthMs * sourceFormat.samplesPerSecond / 1000;
    report.Message(u"msLen", Digits(lengthMs));
    return true;
}

// Begins the effects from `first` on, each on the link the one before it
// leaves.
bool Conversion::BeginEffects(size_t first, bool live) {
    qv_audio_format link = first == 0 ? sourceFormat : effects[first - 1]->out;
    for (size_t i = first; i < effects.size(); ++i) {
        Effect& effect = *effects[i];
        effect.in = link;
        effect.in.acceptedTypes = 0;
        effect.out = effect.in;
        qv_begin_record begin{};
        begin.text1 = command.inFile.c_str();
        begin.text2 = command.outFile.c_str();
        begin.text3 = command.tmpFolder.c_str();
        begin.facts = &facts;
        begin.tags = tags.data();
        begin.tagsSize = static_cast<uint32_t>(tags.size());
        begin.format = &effect.out;
        begin.batchId = command.batchId;
        if (effect.dsp.BeginConversion(effect.dsp.instance, &begin, effect.settings.c_str()) == 0) {
            report.Error(WithCause(u"Effect '" + effect.name + u"' could not start on " + Quoted(command.inFile),
                                   LastError(effect.dsp)));
            return false;
        }
        effect.begun = true;
        ReadAccepted(effect.in, effect.out, effect.accepts, effect.intBits);
        // An effect that took the input's kind as it came puts out that kind.
        if (effect.out.sampleType != QV_SAMPLES_INT32 && effect.out.sampleType != QV_SAMPLES_FLOAT32) {
            effect.out.sampleType = effect.in.sampleType;
        }
        effect.out.acceptedTypes = 0;
        if (live && begin.tags != nullptr && begin.tags != tags.data()) {
            tags.assign(static_cast<const char*>(begin.tags), begin.tagsSize);
        }
        link = effect.out;
    }
    return true;
}

bool Conversion::BeginEncoder() {
    encoderLink = effects.empty() ? sourceFormat : effects.back()->out;
    encoderLink.acceptedTypes = 0;
    qv_audio_format returned = encoderLink;
    // A naming rule may put the output into folders that don't exist yet;
    // several workers may make the same one at once, which is no failure.
    MakeFolders(GetFolderPart(clString(command.outFile.c_str())));
    for (uint64_t unique = 0;; ++unique) {
        temporary = TemporaryPath(command, unique);
        clFileHandle taken = PlatformOpenFile(temporary.c_str(), clAccessWrite, 0, clCreateNew);
        if (taken != clInvalidHandle) {
            PlatformCloseFile(taken);
            // Even a crash must not leave it behind.
            PlatformSetCrashRemovesFile(temporary.c_str());
            // The front end removes it if this process dies where no
            // handler runs.
            report.Message(u"TempFile", temporary);
            break;
        }
        uint32_t error = PlatformGetLastError();
        if (error != clErrorFileExists && error != clErrorAlreadyExists) {
            clString folderPath = GetFolderPart(clString(temporary.c_str()));
            RemoveBackslashes(folderPath);
            std::u16string folder = folderPath.text;
            std::u16string reason = FileFailure(error);
            if ((error == clErrorPathNotFound || error == clErrorFileNotFound) &&
                PlatformFileKind(folder.c_str()) != clFileKind::Missing) {
                reason = Quoted(folder) + u" is a file, not a folder";
            } else if (error == clErrorPathNotFound || error == clErrorFileNotFound) {
                reason = u"the folder " + Quoted(folder) + u" does not exist and can't be made";
            }
            temporary.clear();
            report.Error(u"Unable to create output file " + Quoted(command.outFile) + u": " + reason);
            return false;
        }
    }
    qv_encoder_begin_record begin{};
    begin.outputPath = temporary.c_str();
    begin.optionString = command.encoderOptions.c_str();
    begin.sourcePath = command.inFile.c_str();
    begin.facts = &facts;
    begin.format = &returned;
    begin.tags = tags.data();
    begin.tagsSize = static_cast<uint32_t>(tags.size());
    uint64_t rate = sourceFormat.samplesPerSecond;
    begin.totalFrames = rate == 0 ? 0 : totalFrames * encoderLink.samplesPerSecond / rate;
    if (encoder.BeginConversion(encoder.instance, &begin) == 0) {
        report.Error(WithCause(u"Unable to create output file " + Quoted(command.outFile), LastError(encoder)));
        return false;
    }
    encoderBegun = true;
    ReadAccepted(encoderLink, returned, encoderAccepts, encoderBits);
    return true;
}

// A block from the output of stage `from` - 1 (0: the decoder) down the
// rest of the chain. In an analysis pass the chain ends at effect
// `analysed`, which only looks.
bool Conversion::Deliver(size_t from, const qv_audio_block& block, bool live, size_t analysed) {
    qv_audio_block current = block;
    size_t end = live ? effects.size() : analysed;
    for (size_t i = from; i < end; ++i) {
        Effect& effect = *effects[i];
        qv_audio_block in = Adapt(current, effect.in, effect.accepts, effect.intBits, effect.scratch);
        qv_audio_block out{};
        int32_t rc = effect.dsp.PassAudioBlock(effect.dsp.instance, &in, &out);
        if (rc < 0) {
            report.Error(WithCause(u"Error in effect '" + effect.name + u"' on " + Quoted(command.inFile) + u" at " +
                                       TimeOf(block.position, effect.in.samplesPerSecond),
                                   LastError(effect.dsp)));
            return false;
        }
        if (rc == 0 || out.frames == 0) return true;  // held back for now
        current = out;
    }
    if (!live) {
        Effect& effect = *effects[analysed];
        qv_audio_block in = Adapt(current, effect.in, effect.accepts, effect.intBits, effect.scratch);
        if (effect.dsp.PassNonLive(effect.dsp.instance, &in) == 0) {
            report.Error(WithCause(u"Error in effect '" + effect.name + u"' on " + Quoted(command.inFile),
                                   LastError(effect.dsp)));
            return false;
        }
        return true;
    }
    qv_audio_block in = Adapt(current, encoderLink, encoderAccepts, encoderBits, encoderScratch);
    if (encoder.EncodeBlock(encoder.instance, &in) == 0) {
        report.Error(WithCause(u"Error encoding " + Quoted(command.outFile), LastError(encoder)));
        return false;
    }
    return true;
}

// What the decoder says of a file it decoded all the same (a damaged end):
// information lines of the job.
void Conversion::ReportNotes() {
    qv_query_record query{};
    if (decoder.Get(decoder.instance, u"Notes", &query) == 0 || query.text1 == nullptr) return;
    std::u16string notes(query.text1);
    for (size_t start = 0; start < notes.size();) {
        size_t end = notes.find(u'\n', start);
        if (end == std::u16string::npos) end = notes.size();
        if (end > start) report.Info(Quoted(command.inFile) + u": " + notes.substr(start, end - start));
        start = end + 1;
    }
}

// Decodes the whole source down the chain, then drains every effect's
// tail in chain order.
bool Conversion::Pump(size_t stages, bool live, size_t analysed) {
    // Where the audio decoded so far ends: a block that fails carries no
    // position of its own, and it starts here.
    uint64_t reached = 0;
    for (;;) {
        if (cancel.load()) return false;
        qv_audio_block block{};
        int32_t rc = decoder.DecodeBlock(decoder.instance, &block);
        if (rc < 0) {
            report.Error(WithCause(u"Error decoding " + Quoted(command.inFile) + u" at " +
                                       TimeOf(std::max<uint64_t>(block.position, reached),
                                              sourceFormat.samplesPerSecond),
                                   LastError(decoder)));
            return false;
        }
        if (rc == 0) {
            if (live) ReportNotes();
            break;
        }
        if (block.frames > 65536) {
            report.Error(u"Error decoding " + Quoted(command.inFile) + u": the decoder gave a block too large");
            return false;
        }
        if (block.frames != 0 && !Deliver(0, block, live, analysed)) return false;
        reached = block.position + block.frames;
        if (live && totalFrames != 0) {
            uint64_t done = block.position + block.frames;
            report.Progress(static_cast<int>(done >= totalFrames ? 99 : done * 100 / totalFrames));
        }
    }
    for (size_t i = 0; i < stages; ++i) {
        for (int guard = 0;; ++guard) {
            if (cancel.load()) return false;
            qv_audio_block out{};
            int32_t rc = effects[i]->dsp.PassAudioBlock(effects[i]->dsp.instance, nullptr, &out);
            if (rc < 0) {
                report.Error(WithCause(u"Error in effect '" + effects[i]->name + u"' on " + Quoted(command.inFile),
                                       LastError(effects[i]->dsp)));
                return false;
            }
            if (rc == 0) break;
            if (out.frames != 0 && !Deliver(i + 1, out, live, analysed)) return false;
        }
    }
    return true;
}

bool Conversion::AnalysisPass(size_t analysed) {
    report.Message(u"Action", u"Analysing");
    if (!Pump(analysed, false, analysed)) return false;
    // The effects ahead of it start again for the live pass (or the next
    // analysis), and the source from its first frame.
    for (size_t i = 0; i < analysed; ++i) {
        effects[i]->dsp.EndConversion(effects[i]->dsp.instance);
        effects[i]->begun = false;
    }
    std::string liveTags = tags;
    if (!BeginEffects(0, false)) return false;
    tags = liveTags;
    if (decoder.SetPosition(decoder.instance, 0) == 0) {
        report.Error(WithCause(u"Unable to rewind " + Quoted(command.inFile), LastError(decoder)));
        return false;
    }
    return true;
}

bool Conversion::Finish() {
    for (auto& effect : effects) {
        effect->dsp.EndConversion(effect->dsp.instance);
        effect->begun = false;
        // An effect may leave tags of its own at its end.
        qv_query_record query{};
        if (effect->dsp.Get(effect->dsp.instance, u"Tags", &query) != 0 && query.facts != nullptr) {
            tags.assign(static_cast<const char*>(query.facts), static_cast<size_t>(query.estimate));
        }
    }
    qv_encoder_end_record end{};
    end.tags = tags.data();
    end.tagsSize = static_cast<uint32_t>(tags.size());
    encoderBegun = false;
    if (encoder.EndConversion(encoder.instance, &end) == 0) {
        report.Error(WithCause(u"Error writing output file " + Quoted(command.outFile), LastError(encoder)));
        return false;
    }
    for (auto& effect : effects) {
        qv_after_record after{};
        after.outputPath = temporary.c_str();
        after.finalPath = command.outFile.c_str();
        after.settings = effect->settings.c_str();
        if (effect->dsp.AfterConversion(effect->dsp.instance, &after) == 0) {
            report.Error(WithCause(u"Effect '" + effect->name + u"' failed on " + Quoted(command.outFile),
                                   LastError(effect->dsp)));
            return false;
        }
    }
    if (cancel.load()) return false;
    // Asked again at the last moment: the source may have been linked to
    // the output's name while the conversion ran.
    if (SameFile(command.inFile, command.outFile)) {
        report.Error(u"Unable to put the output in place as " + Quoted(command.outFile) +
                     u": that is the source file itself, which is never replaced");
        return false;
    }
    if (!PlatformReplaceFile(temporary.c_str(), command.outFile.c_str())) {
        report.Error(u"Unable to put the output in place as " + Quoted(command.outFile) + u": " +
                     FileFailure(PlatformGetLastError()));
        return false;
    }
    temporary.clear();
    PlatformSetCrashRemovesFile(nullptr);
    // The one sign of success the front end trusts: a worker that ends
    // without it wrote no output, whatever it said before.
    report.Message(u"OutputReady", u"1");
    return true;
}

bool Conversion::Run() {
    report.Message(u"Action", u"Converting");
    report.Message(u"ActionInput", command.inFile);
    report.Message(u"ActionOutput", command.outFile);
    if (!OpenDecoder()) return false;
    for (const auto& [name, settings] : command.effects) {
        auto effect = std::make_unique<Effect>();
        effect->name = name;
        effect->settings = settings;
        if (!clQvCodecHandler::LoadDSP(clString(name.c_str()), effect->dsp, &kNoLog) ||
            !effect->dsp.CreateInstance(&kNoLog)) {
            report.Error(u"Unknown effect '" + name + u"'");
            return false;
        }
        qv_query_record query{};
        query.text1 = effect->settings.c_str();
        effect->twoPass = effect->dsp.Get(effect->dsp.instance, u"TwoPass", &query) != 0;
        effects.push_back(std::move(effect));
    }
    if (!clQvCodecHandler::LoadEncoder(clString(command.encoderName.c_str()), encoder, &kNoLog) ||
        !encoder.CreateInstance(&kNoLog)) {
        report.Error(u"Unknown encoder '" + command.encoderName + u"'");
        return false;
    }
    if (!BeginEffects(0, true)) return false;
    for (size_t i = 0; i < effects.size(); ++i) {
        if (effects[i]->twoPass && !AnalysisPass(i)) return false;
    }
    if (!BeginEncoder()) return false;
    report.Message(u"Action", u"Converting");
    if (!Pump(effects.size(), true, 0)) return false;
    if (!Finish()) return false;
    report.Progress(100);
    return true;
}

void Conversion::Abort() {
    if (encoderBegun) {
        qv_encoder_end_record end{};
        end.aborted = 1;
        encoder.EndConversion(encoder.instance, &end);
        encoderBegun = false;
    }
    for (auto& effect : effects) {
        if (effect->begun) effect->dsp.EndConversion(effect->dsp.instance);
        effect->begun = false;
    }
    effects.clear();
    encoder.Unload();
    if (decoder.instance != 0 && decoder.Close != nullptr) decoder.Close(decoder.instance);
    decoder.Unload();
    if (!temporary.empty()) {
        PlatformDeleteFile(temporary.c_str());
        temporary.clear();
        PlatformSetCrashRemovesFile(nullptr);
    }
}
