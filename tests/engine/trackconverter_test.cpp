// The real TrackConverter binary, started as a user or a script would.
#include <gtest/gtest.h>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "foundation/syncobjects.h"
#include "tests/support/testfolder.h"

namespace {

clString TrackConverterPath() { return ProgramPath(u"TrackConverter"); }

struct Result {
    bool started = false;
    int exitCode = -1;
    std::string output;
};

Result RunTrackConverter(const TestFolder& dir, std::initializer_list<const char16_t*> arguments) {
    PlatformSetEnvironment(u"QUILLOTONE_NONINTERACTIVE", u"1");
    clStringList args;
    for (auto* a : arguments) args.Add(a);
    Result r;
    clString output = dir.File(u"output.txt");
    r.started = PlatformRunProcess(TrackConverterPath(), args, output, &r.exitCode);
    r.output = ReadBytes(output);
    return r;
}

}  // namespace

TEST(TrackConverter, UnknownCommandLineIsToldAndExitCodeIsZero) {
    TestFolder dir;
    Result r = RunTrackConverter(dir, {u"-skip_ready_to_conv"});
    ASSERT_TRUE(r.started) << TrackConverterPath().ToUtf8();
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_NE(r.output.find("Quillotone Track Converter: Unknown Command Line: '-skip_ready_to_conv' [OK]"),
              std::string::npos)
        << r.output;
}

TEST(TrackConverter, InstallShowsBothMessages) {
    TestFolder dir;
    Result r = RunTrackConverter(dir, {u"<install>"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_NE(r.output.find("The codec installed is not compatible with the newer Quillotone (R12 and above)"),
              std::string::npos);
    EXPECT_NE(r.output.find("Unknown Command Line: '<install>'"), std::string::npos);
}

TEST(TrackConverter, ListFileWithBlankInItsNameIsTakenAndDeleted) {
    TestFolder dir;
    clString list = dir.File(u"my list \u00e9.txt");
    ASSERT_TRUE(WriteBytes(list, Utf16Le(u"a.quillotone-concat\r\nb.wav\r\n")));
    clString option(u"-list_to_conv=", list.text);
    Result r = RunTrackConverter(dir, {option.text, u"-skip_ready_to_conv"});
    ASSERT_TRUE(r.started);
    EXPECT_EQ(r.exitCode, 0);
    // Both reached the conversion; with no encoder chosen each fails, and
    // the log names it.
    EXPECT_NE(r.output.find("a.quillotone-concat"), std::string::npos) << r.output;
    EXPECT_NE(r.output.find("b.wav"), std::string::npos) << r.output;
    EXPECT_NE(r.output.find("ConvertWorker: no -convert_to"), std::string::npos) << r.output;
    EXPECT_FALSE(PathExists(list));
}

TEST(TrackConverter, NoArgumentsEndsQuietly) {
    TestFolder dir;
    Result r = RunTrackConverter(dir, {});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.output, "");
}

TEST(TrackConverter, SignalsTheCallersEventOnceTheListIsTaken) {
    TestFolder dir;
    clString list = dir.File(u"list.txt");
    ASSERT_TRUE(WriteBytes(list, Utf16Le(u"a.quillotone-concat\r\n")));
    clString eventName = clString::Formatted(u"qvtest-gotfiles-%s", GetProcessGuidText().text);
    XEvent event;
    ASSERT_TRUE(event.Create(eventName.text));
    clString listOption(u"-list_to_conv=", list.text);
    clString eventOption(u"-signal_event_got_files=", eventName.text);
    Result r = RunTrackConverter(dir, {listOption.text, eventOption.text, u"-skip_ready_to_conv"});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(event.IsSet());
}
