// The errors and information window: its title, tabs and button texts for
// each mix of logs, the tree per file, the report on the clipboard, the
// popup, and "Re-Convert Failed" starting a new conversion of the failed
// files.
#include "frontend/frmerrorsinfo.h"

#include <gtest/gtest.h>

#include "engine/logreport.h"
#include "foundation/file.h"
#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "tests/support/testfolder.h"
#include "tests/support/toolkittest.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/views.h"

namespace {

void AddEntry(clLogEntries& list, const char16_t* source, std::initializer_list<const char16_t*> lines) {
    auto* entry = new clLogEntry;
    entry->encoderName = u"FLAC";
    entry->sourcePath = source;
    entry->outputPath = RemoveExtension(clString(source));
    entry->outputPath.Append(u".flac");
    for (const char16_t* line : lines) entry->lines.Add(line);
    list.Add(entry);
}

std::u16string Text(const clString& text) { return std::u16string(text.text); }

int32_t RootCount(const frmErrorsInfo& form) {
    int32_t count = 0;
    for (clTreeItem root = TreeFirstChild(form.tree.controlHandle, clTreeItem{}); root.IsValid();
         root = TreeNextSibling(root)) {
        ++count;
    }
    return count;
}

uint32_t popupAnswer = 0;
uint32_t AnswerPopup(const clMenu& menu, void*) {
    EXPECT_EQ(menu.Count(), 2);
    return popupAnswer;
}

}  // namespace

TEST(ErrorsInfoWindow, TitleTabsAndButtonFollowWhichLogsHaveEntries) {
    clLogEntries errors, infos, none;
    AddEntry(infos, u"/music/a.wav", {u"Clipping: 3 samples"});
    {
        frmErrorsInfo onlyInfos(&none, &infos, true);
        ASSERT_TRUE(onlyInfos.Open(nullptr));
        EXPECT_EQ(Text(WindowGetText(onlyInfos.windowHandle)), u"Quillotone: Conversion Information");
        EXPECT_FALSE(WindowIsVisible(onlyInfos.tabs.tabs));
        EXPECT_EQ(Text(WindowGetText(onlyInfos.copyButton)), u"Copy Info to Clipboard");
        EXPECT_FALSE(WindowIsVisible(onlyInfos.reconvertButton)) << "no errors to re-convert";
        clTreeItem root = TreeFirstChild(onlyInfos.tree.controlHandle, clTreeItem{});
        EXPECT_EQ(Text(TreeItemText(root)),
                  u"Information converting to FLAC, '/music/a.wav' to '/music/a.flac'");
        EXPECT_EQ(TreeItemImage(root), kImageInfo);
        EXPECT_TRUE(TreeIsExpanded(root));
    }
    AddEntry(errors, u"/music/b.wav", {u"Decoding failed at 00:12"});
    {
        frmErrorsInfo onlyErrors(&errors, nullptr, false);
        ASSERT_TRUE(onlyErrors.Open(nullptr));
        EXPECT_EQ(Text(WindowGetText(onlyErrors.windowHandle)), u"Quillotone: Conversion Errors");
        EXPECT_FALSE(WindowIsVisible(onlyErrors.reconvertButton)) << "the opener didn't allow it";
        EXPECT_EQ(Text(WindowGetText(onlyErrors.copyButton)), u"Copy Errors to Clipboard");
    }
    frmErrorsInfo both(&errors, &infos, true);
    ASSERT_TRUE(both.Open(nullptr));
    Pump();
    EXPECT_EQ(Text(WindowGetText(both.windowHandle)), u"Quillotone: Conversion Errors & Information");
    EXPECT_TRUE(WindowIsVisible(both.tabs.tabs));
    EXPECT_EQ(ComboCount(both.tabs.tabs), 2);
    EXPECT_TRUE(WindowIsVisible(both.reconvertButton));
    EXPECT_EQ(TreeItemImage(TreeFirstChild(both.tree.controlHandle, clTreeItem{})), kImageError);
    both.tabs.Select(1);
    WindowSend(both.windowHandle, kWmCommand, clMakeWParam(kIdLogTabs, kCbnSelChange),
               reinterpret_cast<intptr_t>(both.tabs.tabs));
    EXPECT_EQ(Text(WindowGetText(both.copyButton)), u"Copy Info to Clipboard");
    EXPECT_EQ(TreeItemImage(TreeFirstChild(both.tree.controlHandle, clTreeItem{})), kImageInfo);
    // Each tab shows its kind's picture: the error's red and the blue of
    // information somewhere along the tab row.
    bool red = false, blue = false;
    clImageHandle grab = WindowGrab(both.tabs.tabs);
    ASSERT_NE(grab, nullptr);
    clSize size = ImageSize(grab);
    for (int32_t y = 0; y < size.height && y < 30; ++y) {
        for (int32_t x = 0; x < size.width; ++x) {
            uint32_t pixel = ImagePixel(grab, x, y);
            red = red || NearColor(pixel, clRgb(0xD0, 0x30, 0x30), 40);
            blue = blue || NearColor(pixel, clRgb(0x30, 0x70, 0xD0), 40);
        }
    }
    DestroyImage(grab);
    EXPECT_TRUE(red && blue) << "tab pictures";
    SaveGrabIfFailed(both.windowHandle);
    frmErrorsInfo nothing(&none, &none, true);
    EXPECT_FALSE(nothing.Open(nullptr)) << "no window for empty logs";
    EXPECT_EQ(nothing.windowHandle, nullptr);
}

TEST(ErrorsInfoWindow, TheReportOfTwoFilesGoesToTheClipboardAndThePopupFoldsTheTree) {
    clLogEntries errors;
    AddEntry(errors, u"/music/a.wav", {u"Decoding failed at 00:12", u"The output was removed"});
    AddEntry(errors, u"/music/silent.wav", {});
    AddEntry(errors, u"/music/b.wav", {u"The encoder refused the sample rate"});
    frmErrorsInfo form(&errors, nullptr, true);
    ASSERT_TRUE(form.Open(nullptr));
    EXPECT_EQ(RootCount(form), 2) << "an entry without lines isn't shown";
    std::u16string expected =
        u"Error converting to FLAC, '/music/a.wav' to '/music/a.flac'\r\n"
        u"   Decoding failed at 00:12\r\n"
        u"   The output was removed\r\n"
        u"   \r\n"
        u"Error converting to FLAC, '/music/b.wav' to '/music/b.flac'\r\n"
        u"   The encoder refused the sample rate\r\n"
        u"   ";
    EXPECT_EQ(Text(form.ReportText()), expected);
    EXPECT_EQ(Text(LogReportText(errors, true)), expected) << "the terminal prints the same report";
    WindowSend(form.windowHandle, kWmCommand, clMakeWParam(kIdCopyLog, kBnClicked), 0);
    EXPECT_EQ(Text(ClipboardGetText()), expected);

    SetMenuHandler(AnswerPopup, nullptr);
    popupAnswer = kMenuCollapseAll;
    form.tree.OnRightClick(clPoint{5, 5});
    clTreeItem first = TreeFirstChild(form.tree.controlHandle, clTreeItem{});
    EXPECT_FALSE(TreeIsExpanded(first));
    EXPECT_FALSE(TreeIsExpanded(TreeNextSibling(first)));
    popupAnswer = kMenuExpandAll;
    form.tree.OnRightClick(clPoint{5, 5});
    EXPECT_TRUE(TreeIsExpanded(TreeNextSibling(first)));
    SetMenuHandler(nullptr, nullptr);
    SaveGrabIfFailed(form.windowHandle);
}

TEST(ErrorsInfoWindow, ReconvertStartsTheProgramOnEveryFailedFileAndCloses) {
    clLogEntries errors;
    AddEntry(errors, u"/music/a.wav", {u"Decoding failed"});
    AddEntry(errors, u"/music/silent.wav", {});
    frmErrorsInfo form(&errors, nullptr, true);
    clString program;
    clString listFile;
    form.starter = [&](const clString& started, const clStringList& arguments) {
        program = started;
        if (arguments.Count() == 2 && arguments[0].Equals(u"-list_to_conv")) listFile = arguments[1];
        return true;
    };
    ASSERT_TRUE(form.Open(nullptr));
    WindowSend(form.windowHandle, kWmCommand, clMakeWParam(kIdReconvert, kBnClicked), 0);
    EXPECT_EQ(Text(GetFileName(program)), std::u16string(u"TrackConverter") + PlatformExecutableSuffix());
    EXPECT_TRUE(GetFolderPart(program).Equals(GetProgramFolder()));
    ASSERT_FALSE(listFile.IsEmpty());
    EXPECT_EQ(ReadBytes(listFile), Utf16Le(u"/music/a.wav\r\n/music/silent.wav\r\n"))
        << "a file without lines is re-converted too";
    DeleteFileEx(listFile);
    EXPECT_FALSE(WindowIsVisible(form.windowHandle)) << "the window closes";
}

TEST(ErrorsInfoWindow, TheWheelGoesToTheTreeInStepsOf120) {
    EXPECT_EQ(WheelSteps(240), 2);
    EXPECT_EQ(WheelSteps(120), 1);
    EXPECT_EQ(WheelSteps(-1), -1);
    EXPECT_EQ(WheelSteps(-360), -3);
}

// The picture for the screenshots: errors from several files, with long
// Unicode paths.
TEST(ErrorsInfoPicture, ErrorsFromSeveralFiles) {
    clLogEntries errors, infos;
    AddEntry(errors, u"/home/lena/Musik/Ärzte/Die Ärzte - Schrei nach Liebe (Live in Köln).wav",
             {u"Decoding failed at 01:12: the data chunk ends early", u"The output was removed"});
    AddEntry(errors, u"/home/lena/Musik/東京の夜 (Live).flac", {u"The encoder refused the sample rate 8000 Hz"});
    AddEntry(errors, u"/home/lena/Musik/Sigur Rós - Hoppípolla.mp3", {u"Worker ended without a result (code 139)"});
    AddEntry(infos, u"/home/lena/Musik/Björk - Jóga.wav", {u"Clipping: 12 samples"});
    frmErrorsInfo form(&errors, &infos, true);
    ASSERT_TRUE(form.Open(nullptr));
    Pump();
    SaveGrab(form.windowHandle, "errorsinfo");
}
