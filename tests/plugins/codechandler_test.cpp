#include "plugins/codechandler.h"

#include <gtest/gtest.h>

#include "foundation/file.h"
#include "foundation/log.h"
#include "foundation/pathtext.h"
#include "plugins/xdll.h"
#include "tests/support/testfolder.h"

namespace {

// A log record whose file is a fresh trace file; Text() reads it back.
class Trace {
public:
    Trace() {
        file.fileName = dir.File(u"trace.txt");
        file.Open(clAccessWrite, clCreateAlways, false, true);
        record.file = static_cast<uint64_t>(file.handle);
    }
    std::string Text() {
        file.Close();
        return ReadBytes(dir.File(u"trace.txt"));
    }
    qv_log_record record{};

private:
    TestFolder dir;
    clFile file;
};

std::string Expected(const char* origin, const char16_t* what, const clString& path) {
    std::u16string enter =
        u"->->  [" + std::u16string(origin, origin + std::char_traits<char>::length(origin)) + u"]\r\n";
    std::u16string leave = u"<-<-" + enter.substr(4);
    return Utf16Le(enter + u"  " + what + U(path) + u"'\r\n" + leave);
}

}  // namespace

TEST(CodecHandler, LoadEncoderMakesAnInstanceAndTracesTheLoad) {
    Trace trace;
    clQvEncoder encoder;
    ASSERT_TRUE(clQvCodecHandler::LoadEncoder(clString(u"QVTEST_ENCODER"), encoder, &trace.record));
    EXPECT_NE(encoder.instance, 0u);
    clString path = EncoderLibraryPath(clString(u"QVTEST_ENCODER"));
    EXPECT_EQ(U(GetFileName(path)), U(clString(u"qvtest_encoder", PlatformLibrarySuffix())));
    EXPECT_EQ(trace.Text(), Expected("clQvCodecHandler::LoadEncoder", u"Loading Encoder '", path));
}

TEST(CodecHandler, AFailedLoadLeavesAnEmptyWrapper) {
    const qv_log_record noLog{};
    clQvEncoder encoder;
    ASSERT_TRUE(clQvCodecHandler::LoadEncoder(clString(u"qvtest_encoder"), encoder, &noLog));
    ASSERT_TRUE(clQvCodecHandler::LoadEncoder(clString(u"Zeta"), encoder, &noLog));
    EXPECT_FALSE(clQvCodecHandler::LoadEncoder(clString(u"No Such Encoder"), encoder, &noLog));
    EXPECT_EQ(encoder.module, 0);
    EXPECT_EQ(encoder.instance, 0u);
    // A decoder library is no encoder.
    EXPECT_FALSE(clQvCodecHandler::LoadEncoder(clString(u"../decoder/qvtest_decoder"), encoder, &noLog));
}

TEST(CodecHandler, LoadDSPTracesEvenAFailedLoad) {
    Trace trace;
    clQvDSP dsp;
    EXPECT_FALSE(clQvCodecHandler::LoadDSP(clString(u"Missing Effect"), dsp, &trace.record));
    clString path = DSPLibraryPath(clString(u"Missing Effect"));
    EXPECT_EQ(trace.Text(), Expected("clQvCodecHandler::LoadDSP", u"Loading DSP '", path));
    const qv_log_record noLog{};
    ASSERT_TRUE(clQvCodecHandler::LoadDSP(clString(u"id tag processing"), dsp, &noLog));
    EXPECT_NE(dsp.instance, 0u);
    // The name always counts: a held library is let go first.
    ASSERT_TRUE(clQvCodecHandler::LoadDSP(clString(u"qvtest_tageffect"), dsp, &noLog));
    EXPECT_EQ(U(GetFileName(DSPLibraryPath(clString(u"QVTEST_tageffect")))),
              U(clString(u"qvtest_tageffect", PlatformLibrarySuffix())));
    EXPECT_EQ(U(LogIndent()), u"");
}

TEST(CodecHandler, EncoderExtensionAsksTheLibrary) {
    EXPECT_EQ(U(EncoderExtension(clString(u"qvtest_encoder"))), u".tst");
    EXPECT_EQ(U(EncoderExtension(clString(u"[ReplayGain]"))), u".tst");
    EXPECT_EQ(U(EncoderExtension(clString(u"No Such Encoder"))), u"");
    EXPECT_EQ(U(EncoderExtension(clString(u"Zeta"))), u"");  // answered, but without a text
    EXPECT_EQ(U(EncoderExtension(clString(u""))), u"");
}

TEST(CodecHandler, EncoderOfProfileLooksAtTheLastTwoQuotes) {
    EXPECT_EQ(U(EncoderOfProfile(clString(u"FLAC"))), u"FLAC");
    EXPECT_EQ(U(EncoderOfProfile(clString(u"Small files \"MP3 (Lame)\""))), u"MP3 (Lame)");
    // A profile name may hold quotes of its own.
    EXPECT_EQ(U(EncoderOfProfile(clString(u"My \"best\" one \"FLAC\""))), u"FLAC");
    // Only the closing quote: it goes, nothing else does.
    EXPECT_EQ(U(EncoderOfProfile(clString(u"FLAC\""))), u"FLAC");
    EXPECT_EQ(U(EncoderOfProfile(clString(u"\""))), u"");
    EXPECT_EQ(U(EncoderOfProfile(clString(u"Empty \"\""))), u"");
    EXPECT_EQ(U(EncoderOfProfile(clString(u""))), u"");
    // A quote that isn't the last character is part of the name.
    EXPECT_EQ(U(EncoderOfProfile(clString(u"Odd\"name"))), u"Odd\"name");
}
