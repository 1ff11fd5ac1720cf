#include "frontend/scriptedanswers.h"

#include <string>

#include "crash/dlgcrashreport.h"
#include "foundation/file.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "foundation/utf.h"
#include "frontend/conversionstage.h"
#include "frontend/dlgdspsettings.h"
#include "frontend/dlgnaming.h"
#include "frontend/frmconverttoopt.h"
#include "frontend/frmerrorsinfo.h"
#include "frontend/frmnewprofile.h"
#include "frontend/frmoverwrite.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

clString scriptPath;

std::string ReadScript() {
    clFile file;
    file.fileName = scriptPath;
    file.Open(clAccessRead, clOpenExisting, false, true);
    std::string bytes;
    char buffer[4096];
    for (uint32_t got; file.handle != clInvalidHandle && (got = file.Read(buffer, sizeof buffer)) > 0;) {
        bytes.append(buffer, got);
    }
    return bytes;
}

void WriteScript(const std::string& bytes) {
    clFile file;
    file.fileName = scriptPath;
    file.Open(clAccessWrite, clCreateAlways, false, true);
    if (file.handle != clInvalidHandle) file.Write(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

const char16_t* KindOf(XWindow& window) {
    if (dynamic_cast<frmConvertToOpt*>(&window) != nullptr) return u"options";
    if (dynamic_cast<frmOverwrite*>(&window) != nullptr) return u"overwrite";
    if (dynamic_cast<frmErrorsInfo*>(&window) != nullptr) return u"errors";
    if (dynamic_cast<frmNewProfile*>(&window) != nullptr) return u"newprofile";
    if (dynamic_cast<dlgCrashReport*>(&window) != nullptr) return u"crashreport";
    if (dynamic_cast<dlgNaming*>(&window) != nullptr) return u"naming";
    if (dynamic_cast<dlgDSPSettings*>(&window) != nullptr) return u"dspsettings";
    return u"";
}

// The step's word and the rest of it.
void SplitStep(const clString& step, clString& word, clString& rest) {
    clString text(step);
    text.TrimLeft();
    int32_t blank = text.FindChar(u' ');
    word = blank == 0 ? text : text.Mid(1, blank - 1);
    rest = blank == 0 ? clString() : text.Mid(blank + 1, text.Length());
}

// The naming editor's steps: "base TEXT", "naming TEXT", and "insert
// MENU LABEL" with MENU one of tags, properties, functions, examples.
void RunNamingStep(dlgNaming& naming, const clString& word, const clString& rest) {
    if (word.Equals(u"base")) {
        WindowSetText(naming.baseField, rest);
    } else if (word.Equals(u"naming")) {
        WindowSetText(naming.namingField, rest);
        EditSetSelection(naming.namingField, rest.Length(), rest.Length());
        naming.RefreshExample();
    } else if (word.Equals(u"insert")) {
        clString menuName, label;
        SplitStep(rest, menuName, label);
        const char16_t* const kMenus[] = {u"tags", u"properties", u"functions", u"examples"};
        for (int32_t m = 0; m < 4; ++m) {
            if (!menuName.Equals(kMenus[m])) continue;
            int32_t count = 0;
            const clNamingMenuEntry* entries = NamingMenuEntries(static_cast<clNamingMenu>(m), count);
            for (int32_t i = 0; i < count; ++i) {
                if (label.Equals(entries[i].label)) naming.ChooseMenuEntry(static_cast<clNamingMenu>(m), i);
            }
        }
    }
}

void Run(XWindow& window, const clString& step) {
    clString word, rest;
    SplitStep(step, word, rest);
    auto* options = dynamic_cast<frmConvertToOpt*>(&window);
    if (word.Equals(u"press")) {
        auto id = static_cast<uint32_t>(rest.ToInt64());
        WindowSend(window.windowHandle, kWmCommand, clMakeWParam(id, kBnClicked),
                   reinterpret_cast<intptr_t>(WindowChild(window.windowHandle, id)));
    } else if (options != nullptr && word.Equals(u"encoder")) {
        int32_t row = options->cmbEncoders.FindExact(rest);
        if (row < 0) return;
        options->cmbEncoders.SetSelection(row);
        options->OnCommand(kIdEncoderList, options->cmbEncoders.control, kCbnSelChange);
    } else if (options != nullptr && word.Equals(u"option")) {
        clString name, value;
        SplitStep(rest, name, value);
        options->settingsPage.SetValue(name.text, value);
    } else if (options != nullptr && word.Equals(u"output")) {
        options->AddOutputRow(rest, false, true, false);
    } else if (options != nullptr && word.Equals(u"outputcommand")) {
        int32_t row = options->cmbOutToFolder.FindExact(rest);
        if (row < 0) return;
        options->cmbOutToFolder.SetSelection(row);
        options->OnCommand(kIdOutputList, options->cmbOutToFolder.control, kCbnSelChange);
    } else if (options != nullptr && word.Equals(u"effect")) {
        options->effects.AddEffect(rest);
    } else if (auto* naming = dynamic_cast<dlgNaming*>(&window); naming != nullptr) {
        RunNamingStep(*naming, word, rest);
    } else if (auto* effect = dynamic_cast<dlgDSPSettings*>(&window); effect != nullptr) {
        clString name, value;
        SplitStep(rest, name, value);
        if (word.Equals(u"option")) effect->page.SetValue(name.text, value);
        if (word.Equals(u"field")) effect->effectPage.SetField(name, value);
        if (word.Equals(u"text") && effect->textField != nullptr) WindowSetText(effect->textField, rest);
    }
}

// Takes the first line for `kind` out of the script and answers its
// steps; false when there is none.
bool TakeLine(const clString& kind, clStringList& steps, std::string& bytes) {
    bytes = ReadScript();
    clString text;
    Utf8ToString(bytes.data(), static_cast<int64_t>(bytes.size()), text);
    text.Replace(u"\n", u"\r");
    clStringList lines;
    lines.SplitLines(text);
    clString prefix(kind.text, u":");
    for (int64_t i = 0; i < lines.Count(); ++i) {
        if (kind.IsEmpty() || lines[i].Compare(prefix.text, prefix.Length()) != 0) continue;
        // The line is used up before its steps run: a program they start
        // reads what is left.
        std::string rest;
        for (int64_t j = 0; j < lines.Count(); ++j) {
            if (j != i) rest += StringToUtf8(lines[j]) + "\n";
        }
        WriteScript(rest);
        steps.Split(lines[i].Mid(prefix.Length() + 1, lines[i].Length()).text, u";");
        return true;
    }
    return false;
}

void Answer(XWindow& window, void*) {
    clString kind(KindOf(window));
    clStringList steps;
    std::string bytes;
    if (TakeLine(kind, steps, bytes)) {
        for (int64_t s = 0; s < steps.Count(); ++s) Run(window, steps[s]);
        return;
    }
    if (kind.IsEmpty()) return;
    // A window the script didn't expect says so and closes, rather than
    // waiting for a user who isn't there.
    WriteScript(bytes + "unanswered: " + StringToUtf8(kind) + "\n");
    WindowSend(window.windowHandle, kWmClose, 0, 0);
}

// The open dialog's answer: "files: PATH; PATH". Without a line, the
// dialog was cancelled.
bool ChooseScripted(const clString&, const clStringList&, const clString&, clStringList& chosen) {
    chosen.Clear();
    clStringList steps;
    std::string bytes;
    if (!TakeLine(clString(u"files"), steps, bytes)) return false;
    for (int64_t i = 0; i < steps.Count(); ++i) {
        clString path(steps[i]);
        path.TrimLeft();
        if (!path.IsEmpty()) chosen.Add(path);
    }
    return chosen.Count() > 0;
}

}  // namespace

void InstallScriptedAnswers() {
    if (!PlatformGetEnvironment(u"QUILLOTONE_TEST_SCRIPT", scriptPath) || scriptPath.IsEmpty()) return;
    SetModalHook(Answer, nullptr);
    SetFileChooser(ChooseScripted);
}
