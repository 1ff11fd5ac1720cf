// File names between text and bytes on POSIX: one mapping in the program (the
// platform layer and qvt), in the codec plug-ins and in the example
// plug-ins, so that a file reserved by one is the file written by another.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "codecs/common/codecsupport.h"
#include "examples/exampleio.h"
#include "foundation/findfiles.h"
#include "foundation/platform/fileio.h"
#include "foundation/platform/filesystem.h"
#include "foundation/utf.h"
#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"
#include "tests/support/testfolder.h"

namespace {

std::string ProgramBytes(const std::u16string& text) {
    return StringToFileName(text.c_str(), static_cast<int32_t>(text.size()));
}

}  // namespace

TEST(FileName, EveryByteStringComesBackWhole) {
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 12, '\0');
        for (char& b : bytes) b = static_cast<char>(random() % 255 + 1);
        clString text;
        FileNameToString(bytes.data(), static_cast<int64_t>(bytes.size()), text);
        ASSERT_EQ(StringToFileName(text.text, text.Length()), bytes);
    }
    clString latin1;
    FileNameToString("Caf\xE9.wav", 8, latin1);
    EXPECT_EQ(U(latin1), u"Caf\xDCE9.wav");
    clString utf8;
    FileNameToString("Caf\xC3\xA9.wav", 9, utf8);
    EXPECT_EQ(U(utf8), u"Caf\u00e9.wav");
}

TEST(FileName, ProgramAndPlugInsMakeTheSameBytes) {
    const std::u16string names[] = {
        u"plain.wav",        u"\u00e9t\u00e9 \U0001F3B5.flac",
        u"cut \xD83D.flac",  u"low \xDE00 half",
        u"byte \xDCE9 kept", u"edge \xDC7F \xDD00",
        u"\xDBFF\xDFFF max",
    };
    std::mt19937 random(11);
    std::vector<std::u16string> all(std::begin(names), std::end(names));
    for (int round = 0; round < 5000; ++round) {
        std::u16string text(random() % 8, u' ');
        for (char16_t& c : text)
            c = static_cast<char16_t>(random() % 2 ? 0xD700 + random() % 0x900 : random() % 0x10000);
        for (char16_t& c : text) c = c == 0 ? u'x' : c;
        all.push_back(text);
    }
    for (const std::u16string& name : all) ASSERT_EQ(qvc::FileName(name), ProgramBytes(name));
    EXPECT_EQ(ProgramBytes(u"cut \xD83D.flac"), "cut \xEF\xBF\xBD.flac");
    EXPECT_EQ(ProgramBytes(u"byte \xDCE9 kept"), "byte \xE9 kept");
}

// A name reserved by the program is opened by a plug-in, whatever the name.
TEST(FileName, APlugInOpensTheFileTheProgramMade) {
    TestFolder dir;
    for (const char16_t* name : {u"cut \xD83D.wav", u"latin \xDCE9.wav", u"emoji \U0001F3B5.wav", u"lone \xDE00.wav"}) {
        clString path = dir.File(name);
        clFileHandle file = PlatformOpenFile(path.text, clAccessWrite, 0, clCreateNew);
        ASSERT_NE(file, clInvalidHandle);
        PlatformCloseFile(file);
        FILE* ours = qvc::OpenFile(path.text, "rb");
        FILE* example = example_open(path.text, "rb");
        EXPECT_NE(ours, nullptr);
        EXPECT_NE(example, nullptr);
        if (ours != nullptr) std::fclose(ours);
        if (example != nullptr) std::fclose(example);
        EXPECT_TRUE(PlatformDeleteFile(path.text));
    }
}

// An output name with half a surrogate pair (a damaged tag, an emoji cut by
// [MAXLENGTH]) once got the reservation under one byte form and the audio
// under another: the empty reservation was renamed into place, and the
// audio stayed behind in the temporary file.
class FileNameConversion : public CodecTest {};

TEST_F(FileNameConversion, AnOutputNameWithALoneSurrogateGetsTheAudio) {
    ASSERT_TRUE(WriteBytes(dir.File(u"in.wav"), ToneWave(3, 0.5)));
    Convert(u"in.wav", u"plain.wav", u"Wave");
    std::string expected = ReadBytes(dir.File(u"plain.wav"));
    ASSERT_GT(expected.size(), 1000u);
    for (const char16_t* name : {u"cut \xD83D.wav", u"low \xDE00 half.wav", u"latin \xDCE9.wav"}) {
        std::u16string log = Convert(u"in.wav", name, u"Wave");
        EXPECT_EQ(ReadBytes(dir.File(name)), expected) << std::string(log.begin(), log.end());
    }
    clFindFiles find(clString(u"*qvtmp*"), dir.Path());
    EXPECT_FALSE(find.Next()) << "a temporary file was left";
}
