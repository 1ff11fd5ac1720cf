#include "worker/workercommand.h"

#include <gtest/gtest.h>

#include "engine/workerslot.h"
#include "tests/support/testfolder.h"

TEST(WorkerCommand, ReadsEveryOptionTheEffectsAndTheEncoderString) {
    std::u16string text =
        u" -infile=\"C:\\In\\a b.flac\" -outfile=\"D:\\Out\\x.mp3\" -convert_to=\"MP3 (Lame)\""
        u" -evtquit=\"qvevt-cancel-5\" -evtwatchdog=\"qvevt-watch-9\" -batchid=\"2147483647\""
        u" -processor=\"3\" -tmpfolder=\"E:\\T\" -priority=\"idle\""
        u" -dspeffect1=\"ReplayGain=-mode=%22album%22\" -dspeffect2=\"Resample=-rate=48000\""
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

// Whatever a file name holds comes out of the command file as it went in:
// the front end writes it, the worker reads it back. Before values were
// escaped, a quote ended the value early and the rest was read as options
// of its own: another source, another output, an effect library by path.
TEST(WorkerCommand, HostileNamesComeBackWholeAndInjectNothing) {
    const std::u16string names[] = {
        u"/music/12\" Mix.wav",
        u"/music/a\" -outfile=\"/home/u/.bashrc\" -dspeffect1=\"../../tmp/evil=.wav",
        u"C:\\Music\\back\\slash\\\\double.wav",
        u"/music/key=value -convert_to=x.wav",
        u"/music/line\nbreak\rand\ttab.wav",
        u"/music/100% %22 %zz.wav",
        u"/music/\xDC80lone\xD800surrogates\xDCFF.wav",
        u"/music/\u00e9\U0001F3B5.wav",
    };
    clWorkerEnvironment environment;
    for (const std::u16string& name : names) {
        clWorkerSlot slot(environment);
        slot.sourcePath = clString(name.c_str());
        slot.outputPath = clString((name + u".flac").c_str());
        slot.encoderName = u"FLAC";
        slot.encoderOptions = u"-level=\"8\"";
        // Settings as they are stored: quotes as {qt}.
        slot.dspEffects =
            u" -dspeffect1=\"Resample=-rate={qt}48000{qt} -note={qt}50%{qt}\" -dspeffect2=\"ReplayGain=\"";
        clString text = slot.WorkerOptions(7, clString((name + u" tmp").c_str()));
        WorkerCommand command;
        std::u16string error;
        ASSERT_TRUE(ParseWorkerCommand(std::u16string(text.text), command, error))
            << std::string(error.begin(), error.end());
        EXPECT_EQ(command.inFile, name);
        EXPECT_EQ(command.outFile, name + u".flac");
        EXPECT_EQ(command.tmpFolder, name + u" tmp");
        EXPECT_EQ(command.encoderName, u"FLAC");
        EXPECT_EQ(command.batchId, 7u);
        ASSERT_EQ(command.effects.size(), 2u);
        EXPECT_EQ(command.effects[0].first, u"Resample");
        EXPECT_EQ(command.effects[0].second, u"-rate=\"48000\" -note=\"50%\"");
        EXPECT_EQ(command.effects[1].first, u"ReplayGain");
        EXPECT_EQ(command.encoderOptions, u"-level=\"8\"");
    }
}

TEST(WorkerCommand, AMalformedEscapeIsRefused) {
    WorkerCommand command;
    std::u16string error;
    EXPECT_FALSE(ParseWorkerCommand(u" -infile=\"a%2\" -outfile=\"b\" -convert_to=\"W\"", command, error));
    EXPECT_EQ(error, u"the value of -infile holds a % that is not followed by two hexadecimal digits");
    EXPECT_FALSE(ParseWorkerCommand(u" -infile=\"a%00b\" -outfile=\"b\" -convert_to=\"W\"", command, error));
    ASSERT_TRUE(ParseWorkerCommand(u" -infile=\"a%22%25%0a\" -outfile=\"b\" -convert_to=\"W\" ", command, error));
    EXPECT_EQ(command.inFile, u"a\"%\n");
}
