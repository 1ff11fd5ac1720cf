#include "worker/workercommand.h"

#include <gtest/gtest.h>

#include "tests/support/testfolder.h"

TEST(WorkerCommand, ReadsEveryOptionTheEffectsAndTheEncoderString) {
    std::u16string text =
        u" -infile=\"C:\\In\\a b.flac\" -outfile=\"D:\\Out\\x.mp3\" -convert_to=\"MP3 (Lame)\""
        u" -evtquit=\"qvevt-cancel-5\" -evtwatchdog=\"qvevt-watch-9\" -batchid=\"2147483647\""
        u" -processor=\"3\" -tmpfolder=\"E:\\T\" -priority=\"idle\""
        u" -dspeffect1=\"ReplayGain=-mode={qt}album{qt}\" -dspeffect2=\"Resample=-rate=48000\""
        u" -V=\"2\" -mode=\"j\"";
    WorkerCommand command;
    std::u16string error;
    ASSERT_TRUE(ParseWorkerCommand(text, command, error)) << std::string(error.begin(), error.end());
    EXPECT_EQ(command.inFile, u"C:\\In\\a b.flac");
    EXPECT_EQ(command.outFile, u"D:\\Out\\x.mp3");
    EXPECT_EQ(command.encoderName, u"MP3 (Lame)");
    EXPECT_EQ(command.quitEvent, u"qvevt-cancel-5");
    EXPECT_EQ(command.watchdogEvent, u"qvevt-watch-9");
    EXPECT_EQ(command.batchId, 2147483647u);
    EXPECT_EQ(command.processor, 3);
    EXPECT_EQ(command.tmpFolder, u"E:\\T");
    EXPECT_EQ(command.priorityCode, 3);
    ASSERT_EQ(command.effects.size(), 2u);
    EXPECT_EQ(command.effects[0].first, u"ReplayGain");
    EXPECT_EQ(command.effects[0].second, u"-mode=\"album\"");
    EXPECT_EQ(command.effects[1].second, u"-rate=48000");
    EXPECT_EQ(command.encoderOptions, u"-V=\"2\" -mode=\"j\"");
}

// An empty encoder string leaves the text ending in a blank; an encoder
// string that begins like an option of ours is still the encoder's.
TEST(WorkerCommand, EncoderStringIsWhatFollowsTheLastWorkerOption) {
    WorkerCommand command;
    std::u16string error;
    std::u16string head =
        u" -infile=\"a\" -outfile=\"b\" -convert_to=\"Wave\" -evtquit=\"q\" -evtwatchdog=\"w\""
        u" -batchid=\"1\"";
    ASSERT_TRUE(ParseWorkerCommand(head + u" ", command, error));
    EXPECT_EQ(command.encoderOptions, u"");
    EXPECT_EQ(command.processor, 0);
    EXPECT_EQ(command.priorityCode, 0);
    ASSERT_TRUE(ParseWorkerCommand(head + u" -level=\"8\" -infile=\"not ours\"", command, error));
    EXPECT_EQ(command.inFile, u"a");
    EXPECT_EQ(command.encoderOptions, u"-level=\"8\" -infile=\"not ours\"");
}

TEST(WorkerCommand, BadCommandsAreNamed) {
    WorkerCommand command;
    std::u16string error;
    EXPECT_FALSE(ParseWorkerCommand(u" -outfile=\"b\" -convert_to=\"Wave\"", command, error));
    EXPECT_EQ(error, u"no -infile");
    EXPECT_FALSE(ParseWorkerCommand(u" -infile=\"a\" -outfile=\"b", command, error));
    EXPECT_EQ(error, u"the value of -outfile has no closing quote");
    EXPECT_FALSE(
        ParseWorkerCommand(u" -infile=\"a\" -outfile=\"b\" -convert_to=\"W\" -batchid=\"x1\"", command, error));
    EXPECT_EQ(error, u"-batchid is not a number: x1");
    EXPECT_FALSE(ParseWorkerCommand(u"", command, error));
}

TEST(WorkerCommand, CommandFileIsUtf16WithOrWithoutMark) {
    TestFolder dir;
    std::u16string text;
    std::u16string error;
    ASSERT_TRUE(WriteBytes(dir.File(u"plain"), Utf16Le(u" -infile=\"\u00e9\"")));
    ASSERT_TRUE(ReadCommandFile(dir.File(u"plain").text, text, error));
    EXPECT_EQ(text, u" -infile=\"\u00e9\"");
    ASSERT_TRUE(WriteBytes(dir.File(u"marked"), std::string("\xFF\xFE", 2) + Utf16Le(u"x")));
    ASSERT_TRUE(ReadCommandFile(dir.File(u"marked").text, text, error));
    EXPECT_EQ(text, u"x");
    EXPECT_FALSE(ReadCommandFile(dir.File(u"missing").text, text, error));
    EXPECT_NE(error.find(u"Unable to read command file"), std::u16string::npos);
}
