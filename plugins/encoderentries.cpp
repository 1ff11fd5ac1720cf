#include "plugins/encoderentries.h"

#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/settingnames.h"
#include "foundation/settings.h"
#include "foundation/specialfolder.h"
#include "foundation/stringlist.h"
#include "plugins/codechandler.h"
#include "plugins/filetypes.h"

namespace {

constexpr uint32_t kNotInstalledColor = 0xA0A0A0;

// The rows of qvtSmartInstall.txt: three lines per encoder, its extension,
// its name and where its installer lies; text in the system code page.
// A name the list has already, or one marked "read only", adds nothing.
void AddFetchableEncoders(clEncoderRows& rows) {
    clFile file;
    file.fileName = JoinPath(GetProgramFolder(), clString(kSmartInstallFile));
    file.Open(clAccessRead, clOpenExisting, false, true);
    if (file.handle == clInvalidHandle) return;
    for (;;) {
        clString lines[3];
        bool complete = true;
        for (clString& line : lines) complete = complete && file.ReadLine(line, false, false);
        if (!complete) break;
        bool listed = false;
        for (int64_t i = 0; i < rows.Count() && !listed; ++i) listed = rows[i].text.EqualsNoCase(lines[1].text);
        if (listed || lines[1].Find(u"read only") != 0) continue;
        clEncoderRow& row = rows.AddRow(lines[1]);
        row.extension = lines[0];
        row.color = kNotInstalledColor;
        row.kind = kEntryNotInstalled;
        row.downloadUrl = lines[2];
    }
}

}  // namespace

clEncoderRow& clEncoderRows::AddRow(const clString& text) {
    auto* row = new clEncoderRow;
    row->text = text;
    Add(row);
    return *row;
}

int64_t clEncoderRows::Find(const clString& text) const {
    for (int64_t i = 0; i < Count(); ++i) {
        if ((*this)[i].text.Equals(text)) return i;
    }
    return -1;
}

int64_t BuildEncoderRows(clEncoderRows& rows, clString& selected) {
    rows.Clear();
    clStringList names;
    EnumerateEncoders(names, GetSettingText(u"HiddenEncoders"));
    int64_t chosen = -1;
    bool separated = false;
    for (int64_t i = 0; i < names.Count(); ++i) {
        clEncoderRow& row = rows.AddRow(names[i]);
        // One line, ahead of the first bracketed name after the first row:
        // a leading "[Multi Encoder]" stays with the real encoders.
        if (i > 0 && !separated && names[i].CharAt(1) == u'[') row.separatorAbove = separated = true;
        row.extension = EncoderExtension(names[i]);
        row.libraryPath = EncoderLibraryPath(names[i]);
        if (chosen < 0 && names[i].Equals(selected)) chosen = i;
    }
    AddFetchableEncoders(rows);
    if (GetSettingNumber(u"qvtAllowProfiles") != 0) {
        if (rows.Count() > 0) rows[rows.Count() - 1].separatorBelow = true;
        rows.AddRow(clString(kCreateProfileRow)).kind = kEntryCreateProfile;
        rows.AddRow(clString(kDeleteProfileRow)).kind = kEntryDeleteProfile;
    }
    clStringList profiles;
    ListProfiles(profiles);
    for (int64_t i = 0; i < profiles.Count(); ++i) {
        clEncoderRow& row = rows.AddRow(profiles[i]);
        row.kind = kEntryProfile;
        clString encoder = EncoderOfProfile(profiles[i]);
        row.extension = EncoderExtension(encoder);
        row.libraryPath = EncoderLibraryPath(encoder);
        if (chosen < 0 && profiles[i].Equals(selected)) chosen = rows.Count() - 1;
    }
    if (chosen < 0) {
        chosen = rows.Find(clString(u"FLAC"));
        if (chosen < 0) chosen = 0;
        if (rows.Count() == 0) return -1;
        selected = rows[chosen].text;
    }
    return chosen;
}

clString EntriesKeyPath() { return clString::Formatted(u"%s\\%s", settingsRootKey.text, kEntriesKeyName); }

clString EntryKeyPath(const clString& entry, const clString& additionalProfile) {
    clString key = clString::Formatted(u"%s\\%s\\%s", settingsRootKey.text, kEntriesKeyName, entry.text);
    if (!additionalProfile.IsEmpty()) {
        key.Append(u"\\");
        key.Append(additionalProfile);
    }
    return key;
}

bool IsProfileEntry(const clString& entry) { return entry.Length() > 0 && entry.CharAt(entry.Length()) == u'"'; }

void ListProfiles(clStringList& profiles) {
    clStringList keys;
    profiles.Clear();
    EnumSettingKeys(EntriesKeyPath().text, keys);
    for (int64_t i = 0; i < keys.Count(); ++i) {
        if (IsProfileEntry(keys[i])) profiles.Add(keys[i]);
    }
}

clString ProfileEntryText(const clString& label, const clString& encoder) {
    return clString::Formatted(u"%s \"%s\"", label.text, encoder.text);
}

bool ProfileNameTaken(const clString& entry, const clStringList& existing) {
    return existing.Find(entry.text, true);
}

bool DeleteProfile(const clString& entry) {
    if (!IsProfileEntry(entry)) return false;
    DeleteSettingKeyTree(EntriesKeyPath().text, entry.text);
    return true;
}

clString JoinOutputText(const clString& folder, const clString& naming) {
    clString text(folder);
    text.Append(kOutputSeparator);
    text.Append(naming);
    return text;
}

void SplitOutputText(const clString& outputText, clString& folder, clString& naming) {
    clStringList parts;
    parts.Split(outputText.text, kOutputSeparator);
    folder = parts.Count() > 0 ? parts[0] : clString();
    naming = parts.Count() == 2 ? parts[1] : clString();
}

void LoadOutputSettings(const clString& entryKey, clString& folder, clString& naming) {
    uint32_t mode = GetSettingNumber(kEntryOutputModeSetting.name, settingsRootHive, entryKey.text);
    folder.Clear();
    naming.Clear();
    if (mode != 0) folder = GetSettingText(kEntryFolderSetting.name, settingsRootHive, entryKey.text);
    if (mode == 2) naming = GetSettingText(kEntryNamingSetting.name, settingsRootHive, entryKey.text);
    if (folder.IsEmpty()) folder = GetSpecialFolder(clFolderMusic);
    if (mode < 2) naming.Clear();
    // A new entry writes beside its sources, whatever the music folder is.
    if (mode == 0) folder.Clear();
    if (folder.IsEmpty()) folder = u"[origdrive]";
    if (naming.IsEmpty()) naming = u"[origpath]\\[origfilename]";
}

clString EntryOutputText(const clString& entryKey) {
    clString folder, naming;
    LoadOutputSettings(entryKey, folder, naming);
    if (!folder.EqualsNoCase(u"[origdrive]")) AddBackslash(folder);
    return JoinOutputText(folder, naming);
}

bool SaveEntryOutput(const clString& entryKey, const clString& outputText) {
    clString folder, naming;
    SplitOutputText(outputText, folder, naming);
    const char16_t* key = entryKey.text;
    return SetSettingText(folder, kEntryFolderSetting.name, settingsRootHive, key) &&
           SetSettingText(naming, kEntryNamingSetting.name, settingsRootHive, key) &&
           SetSettingNumber(naming.IsEmpty() ? 1 : 2, kEntryOutputModeSetting.name, settingsRootHive, key);
}
