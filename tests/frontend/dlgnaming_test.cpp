// The naming editor's window: it opens on the destination given, its
// example follows every change, its menus insert at the caret, OK keeps
// only a naming that names each track apart, and the heading's close
// button ends it as Cancel does.
#include "frontend/dlgnaming.h"

#include <gtest/gtest.h>

#include "foundation/messagebox.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"

namespace {

clString lastMessage;
int RememberMessage(const clString& text, const clString&, uint32_t) {
    lastMessage = text;
    return clIdOk;
}
clString AnswerFolder(dlgNaming&) { return clString(u"/chosen/base"); }

// The menu answers with the entry of this label.
const char16_t* wantedLabel = nullptr;
uint32_t ChooseLabel(const clMenu& menu, void*) {
    for (int64_t i = 0; i < menu.Count(); ++i) {
        if (menu[i].text.Equals(wantedLabel)) return menu[i].id;
    }
    return 0;
}

void Press(dlgNaming& dialog, uint32_t id) {
    WindowSend(dialog.windowHandle, kWmCommand, clMakeWParam(id, kBnClicked),
               reinterpret_cast<intptr_t>(WindowChild(dialog.windowHandle, id)));
}

}  // namespace

TEST(NamingWindow, TheExampleFollowsTypingMenusAndCheckBoxes) {
    dlgNaming dialog(clString(u"D:\\Out\\{_._}[artist]"));
    ASSERT_TRUE(dialog.Open(nullptr));
    EXPECT_EQ(U(WindowGetText(dialog.baseField)), u"D:\\Out\\");
    EXPECT_EQ(U(WindowGetText(dialog.namingField)), u"[artist]");
    EXPECT_EQ(U(WindowGetText(dialog.exampleField)), u"Artist");
    EXPECT_FALSE(WindowIsEnabled(dialog.exampleField));

    // Typed: a multi-line edit tells its changes for what the user enters,
    // not for a text set from the program.
    EditSetSelection(dialog.namingField, 0, -1);
    EditReplaceSelection(dialog.namingField, clString(u"[album][IFMULTI], Disc [disc][]"));
    Pump();
    EXPECT_EQ(U(WindowGetText(dialog.exampleField)), u"Album Title") << "typing updates the example";
    CheckBoxSet(dialog.multiDiscBox, true);
    Press(dialog, kIdNamingMultiDisc);
    EXPECT_EQ(U(WindowGetText(dialog.exampleField)), u"Album Title, Disc 2");

    // "Add Tag" > "Title" goes in at the caret, here the start.
    EditSetSelection(dialog.namingField, 0, 0);
    wantedLabel = u"Title";
    SetMenuHandler(ChooseLabel, nullptr);
    Press(dialog, kIdNamingAddTag);
    EXPECT_EQ(U(WindowGetText(dialog.namingField)), u"[title][album][IFMULTI], Disc [disc][]");
    int32_t start = -1, end = -1;
    EditGetSelection(dialog.namingField, start, end);
    EXPECT_EQ(start, 7) << "the caret stands behind the insertion";
    // An example replaces the whole string; a dismissed menu changes nothing.
    wantedLabel = u"Preserve Source Path and Filename";
    Press(dialog, kIdNamingExamples);
    EXPECT_EQ(U(WindowGetText(dialog.namingField)), u"[origpath]\\[origfilename]");
    wantedLabel = u"no such entry";
    Press(dialog, kIdNamingFunctions);
    EXPECT_EQ(U(WindowGetText(dialog.namingField)), u"[origpath]\\[origfilename]");
    SetMenuHandler(nullptr, nullptr);

    dialog.askFolder = AnswerFolder;
    Press(dialog, kIdNamingSet);
    EXPECT_EQ(U(WindowGetText(dialog.baseField)), u"/chosen/base");
    Press(dialog, kIdNamingSourceDrive);
    EXPECT_EQ(U(WindowGetText(dialog.baseField)), u"[origdrive]");
    SaveGrabIfFailed(dialog.windowHandle);
}

TEST(NamingWindow, OkKeepsOnlyANamingThatNamesEachTrack) {
    dlgNaming dialog(clString(u"D:\\Out\\{_._}[title]"));
    ASSERT_TRUE(dialog.Open(nullptr));
    SetMessageBoxHandler(RememberMessage);
    lastMessage.Clear();
    WindowSetText(dialog.namingField, clString(u"[TITLE]"));
    dialog.OnIdOk();
    EXPECT_EQ(U(lastMessage), U(clString(kNamingNeedsItemsMessage))) << "the plain search wants [title] as written";
    EXPECT_EQ(U(dialog.saved), u"D:\\Out\\{_._}[title]") << "a refused OK keeps the destination";
    WindowSetText(dialog.baseField, clString(u"D:\\Elsewhere"));
    WindowSetText(dialog.namingField, clString(u"[artist]\\[track]"));
    lastMessage.Clear();
    dialog.OnIdOk();
    SetMessageBoxHandler(nullptr);
    EXPECT_TRUE(lastMessage.IsEmpty());
    EXPECT_EQ(U(dialog.saved), u"D:\\Elsewhere\\{_._}[artist]\\[track]");
}

namespace {
void GrabAndClose(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgNaming*>(&window);
    ASSERT_NE(dialog, nullptr);
    EditSetSelection(dialog->namingField, 0, -1);
    EditReplaceSelection(dialog->namingField, clString(u"[IFVALUE]album artist,[album artist],[artist][]\\[album]\\"
                                                       u"[track] [UPPER][title][]"));
    Pump();
    SaveGrab(window.windowHandle, "naming");
    WindowSetText(dialog->namingField, clString(u"[title] changed"));
    Press(*dialog, kIdNamingClose);
}
}  // namespace

// The heading's close button ends the window by its timer, as Cancel.
TEST(NamingWindow, TheCloseButtonEndsItAsCancelDoes) {
    clString text(u"[origdrive]");
    SetModalHook(GrabAndClose, nullptr);
    EXPECT_FALSE(EditNaming(nullptr, text));
    SetModalHook(nullptr, nullptr);
    EXPECT_EQ(U(text), u"[origdrive]");
}

namespace {
bool endedByEscape = false;
bool inBaseField = false;  // the one-line field; else the naming's lines
void EscapeInAField(XWindow& window, void*) {
    auto* dialog = dynamic_cast<dlgNaming*>(&window);
    ASSERT_NE(dialog, nullptr);
    clWindowHandle field = inBaseField ? dialog->baseField : dialog->namingField;
    WindowSetText(field, clString(u"[title] typed"));
    WindowSetFocus(field);
    // Posted, as a key press arrives.
    WindowPost(field, kWmKeyDown, kVkEscape, 0);
    Pump();
    endedByEscape = !dialog->IsRunningModal();
    if (!endedByEscape) Press(*dialog, kIdNamingClose);
}
}  // namespace

// Escape typed in a field cancels the window as Escape on it does.
TEST(NamingWindow, EscapeInAFieldCancels) {
    for (bool base : {false, true}) {
        inBaseField = base;
        endedByEscape = false;
        clString text(u"[origdrive]");
        SetModalHook(EscapeInAField, nullptr);
        EXPECT_FALSE(EditNaming(nullptr, text));
        SetModalHook(nullptr, nullptr);
        EXPECT_TRUE(endedByEscape) << base;
        EXPECT_EQ(U(text), u"[origdrive]");
    }
}
