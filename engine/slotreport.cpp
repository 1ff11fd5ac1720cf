#include "engine/slotreport.h"

const char16_t* const kKeepRowText = u"NOLBL";
const char16_t* const kReportCutLine = u"[further output of this job was cut]";

namespace {

// Calls `take` with each non-empty CR LF line of `text`.
template <typename Take>
void ForEachLine(const clString& text, Take take) {
    int32_t start = 1;
    const int32_t length = text.Length();
    while (start <= length) {
        int32_t end = text.Find(u"\r\n", start);
        int32_t last = end == 0 ? length : end - 1;
        if (last >= start) take(text.Mid(start, last));
        if (end == 0) break;
        start = end + 2;
    }
}

void AppendLine(clString& to, const clString& line, bool& cut) {
    if (cut) return;
    if (to.Length() + line.Length() > kReportTextLimit) {
        cut = true;
        if (!to.IsEmpty()) to.AppendGrowing(u"\r\n");
        to.AppendGrowing(kReportCutLine);
        return;
    }
    if (!to.IsEmpty()) to.AppendGrowing(u"\r\n");
    to.AppendGrowing(line);
}

}  // namespace

bool SplitAtColon(const clString& line, clString& left, clString& right) {
    int32_t colon = line.IsEmpty() ? 0 : line.FindChar(u':');
    if (colon == 0) return false;
    left = line.Mid(1, colon - 1);
    int32_t from = colon + 1;
    if (from <= line.Length() && line.CharAt(from) == u' ') ++from;
    right = line.Mid(from, line.Length());
    return true;
}

bool WatchdogTripped(uint32_t now, uint32_t lastHeartbeat) { return now - lastHeartbeat > 60000u; }

void clSlotReport::Reset(int64_t sourceLengthMs) {
    percent = 0;
    lengthMs = sourceLengthMs;
    action.Clear();
    actionInput.Clear();
    actionOutput.Clear();
    errorText.Clear();
    infoText.Clear();
    tempFile.Clear();
    outputReady = false;
    errorCut = false;
    infoCut = false;
}

// The program's own lines are few and always kept, past the limit too.
void clSlotReport::AddError(const clString& line) {
    if (!errorText.IsEmpty()) errorText.Append(u"\r\n");
    errorText.Append(line);
}

void clSlotReport::TakeErrors(const clString& text) {
    ForEachLine(text, [this](const clString& line) { AppendLine(errorText, line, errorCut); });
}

void clSlotReport::TakeOutput(const clString& text) {
    ForEachLine(text, [this](const clString& line) {
        if (line.Find(u"MSGTO: ") != 0) {
            TakeMessage(line);
        } else {
            AppendLine(infoText, line, infoCut);
        }
    });
}

// The prefix may stand anywhere, but the split starts at the line's first
// colon, so text ahead of the prefix goes with it.
void clSlotReport::TakeMessage(const clString& line) {
    clString prefix, rest, addressee, message, key, value;
    if (!SplitAtColon(line, prefix, rest) || !SplitAtColon(rest, addressee, message)) return;
    if (!addressee.Equals(u"qvt") || !SplitAtColon(message, key, value)) return;
    if (key.Equals(u"PCDone")) {
        int64_t done = value.ToInt64();
        if (done > percent) percent = static_cast<int32_t>(done > 100 ? 100 : done);
    } else if (key.Equals(u"msLen")) {
        lengthMs = value.ToInt64();
    } else if (key.Equals(u"Action")) {
        action = value;
    } else if (key.Equals(u"ActionInput")) {
        actionInput = value;
    } else if (key.Equals(u"ActionOutput")) {
        actionOutput = value;
    } else if (key.Equals(u"TempFile")) {
        tempFile = value;
    } else if (key.Equals(u"OutputReady")) {
        outputReady = true;
    }
}

clString clSlotReport::RowText(uint32_t now) {
    ++textTick;
    clString text;
    if (!action.IsEmpty()) {
        uint32_t count = 1 + (actionInput.IsEmpty() ? 0 : 1) + (actionOutput.IsEmpty() ? 0 : 1);
        uint32_t index = (textTick / 16) % count;
        if (index == 0) {
            text = action;
        } else if (index == 1) {
            text = actionInput.IsEmpty() ? actionOutput : actionInput;
        } else {
            text = actionOutput;
        }
        if (text.Compare(u"...source", -1, true) == 0) text = action;
    }
    if (!text.IsEmpty()) {
        textEmptySince = 0;
        return text;
    }
    if (textEmptySince == 0) textEmptySince = now;
    if (now - textEmptySince < 2000) return clString(kKeepRowText);
    return text;
}
