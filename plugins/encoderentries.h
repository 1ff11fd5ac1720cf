// The entries a user chooses an encoder by: the installed encoders, those
// that can be fetched, the profile commands and the stored profiles, each
// a row of the options window's encoder list. And what belongs to an
// entry in the settings store: its key, its output text, its profiles.
// qvt's profile command and the options window share this code.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/pointerarray.h"

class clStringList;

enum clEntryKind : uint32_t {
    kEntryInstalled = 0,
    kEntryNotInstalled = 1,  // named by qvtSmartInstall.txt; choosing it offers the download
    kEntryCreateProfile = 3,
    kEntryDeleteProfile = 4,
    kEntryProfile = 5,
};

struct clEncoderRow {
    clString text;
    clString extension;    // with its dot; empty when the library gave none
    clString libraryPath;  // where its icon file lies beside it; empty for a command
    uint32_t color = 0;    // 0: the list's own text colour
    uint32_t kind = kEntryInstalled;
    clString downloadUrl;
    bool separatorAbove = false;
    bool separatorBelow = false;
};

class clEncoderRows : public clOwningList<clEncoderRow> {
public:
    clEncoderRow& AddRow(const clString& text);
    // The first row whose text is exactly `text`, or -1.
    int64_t Find(const clString& text) const;
};

// The markers of an entry: the two fixed commands.
constexpr const char16_t* kCreateProfileRow = u"[Create New Profile]";
constexpr const char16_t* kDeleteProfileRow = u"[Delete Selected Profile]";
// The file of encoders that can be fetched, in the program folder.
constexpr const char16_t* kSmartInstallFile = u"qvtSmartInstall.txt";

// The rows of the encoder list, as the settings and the program folder
// stand now, and the row to select: the one whose text is `selected`
// exactly, else the first "FLAC", else row 0 (-1 for an empty list). When
// it isn't `selected`'s own row, `selected` becomes its text.
int64_t BuildEncoderRows(clEncoderRows& rows, clString& selected);

// "<root>\qvtCodec", where the entries and profiles are listed from.
clString EntriesKeyPath();
// An entry's key: "<root>\qvtCodec\<entry>", and "\<profile>" when the run
// has an additional profile of its own.
clString EntryKeyPath(const clString& entry, const clString& additionalProfile);
// True when the entry is a profile: its text ends in the quote that closes
// its encoder's name.
bool IsProfileEntry(const clString& entry);
// The key texts of the stored profiles, in the store's order.
void ListProfiles(clStringList& profiles);
// A profile's key text: the label, a blank, the encoder in double quotes.
clString ProfileEntryText(const clString& label, const clString& encoder);
// True when `entry` equals one of `existing`, ignoring ASCII case: the
// store holds names that differ only in case as one key.
bool ProfileNameTaken(const clString& entry, const clStringList& existing);
// Removes a profile's key with everything below it (its additional
// profiles too); false for a text that isn't a profile.
bool DeleteProfile(const clString& entry);

// The one text of an output location, as the output list shows it: the
// folder (with its trailing separator) or "[origdrive]", the marker, and
// the naming rule.
constexpr const char16_t* kOutputSeparator = u"{_._}";
clString JoinOutputText(const clString& folder, const clString& naming);
// The folder is the first part; the naming the second if there are
// exactly two, else empty (so a text holding the marker twice loses its
// naming).
void SplitOutputText(const clString& outputText, clString& folder, clString& naming);
// The folder and naming an entry's location stands for: with nothing
// stored, beside the source under its own name; a stored folder without
// a naming rule ("QVTUserFolder" 1) keeps the source's path below it.
void LoadOutputSettings(const clString& entryKey, clString& folder, clString& naming);
// The output text an entry's stored location stands for.
clString EntryOutputText(const clString& entryKey);
// Writes an output text as the entry's location: its folder, naming and
// mode (1 without a naming, 2 with one).
bool SaveEntryOutput(const clString& entryKey, const clString& outputText);
