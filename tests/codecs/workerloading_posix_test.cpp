// What a worker loads on Linux. Every library costs a worker on a short
// file a good share of its time, so a WAVE file without an ID3 chunk goes
// to FLAC without TagLib and, where the build carries its own, without
// the shared C++ runtime; a file with an ID3 chunk loads the Wave
// decoder's ID3 reader from beside it, and an installation without that
// reader fails such a file with a line that says so, leaving no output.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "foundation/pathtext.h"
#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"

namespace {

namespace fs = std::filesystem;

class WorkerLoading : public CodecTest {
protected:
    fs::path Folder() const { return fs::path(Utf8(dir.Path())); }

    static std::string Utf8(const clString& text) {
        std::string out;
        for (const char16_t* p = text.text; *p != 0; ++p) out.push_back(static_cast<char>(*p));  // test paths are ASCII
        return out;
    }

    // Converts with the dynamic loader reporting every library it opens;
    // the report.
    std::string Loaded(const clString& worker, const char16_t* from, const char16_t* to, const char16_t* encoder,
                       std::u16string* log = nullptr) {
        fs::path prefix = Folder() / "loader";
        ::setenv("LD_DEBUG", "files", 1);
        ::setenv("LD_DEBUG_OUTPUT", prefix.c_str(), 1);
        std::u16string lines = ConvertWith(worker, from, to, encoder);
        ::unsetenv("LD_DEBUG");
        ::unsetenv("LD_DEBUG_OUTPUT");
        if (log != nullptr) *log = lines;
        std::string report;
        for (const auto& entry : fs::directory_iterator(Folder())) {
            if (entry.path().filename().string().rfind("loader.", 0) != 0) continue;
            std::ifstream in(entry.path());
            std::stringstream text;
            text << in.rdbuf();
            report += text.str();
            fs::remove(entry.path());
        }
        return report;
    }
};

std::string TaggedWave() {
    std::string id3 = Id3Tag({{"TIT2", "Tagged"}});
    std::string samples(4000, '\x11');
    return Riff(FormatBody(1, 2, 44100, 2, 16, false), samples, Chunk("id3 ", id3));
}

}  // namespace

TEST_F(WorkerLoading, OnlyAFileWithAnId3ChunkLoadsTagLib) {
    ASSERT_TRUE(WriteBytes(dir.File(u"plain.wav"), ToneWave(1, 0.5)));
    ASSERT_TRUE(WriteBytes(dir.File(u"tagged.wav"), TaggedWave()));
    clString worker = BinPath(u"ConvertWorker");

    std::string plain = Loaded(worker, u"plain.wav", u"plain.flac", u"FLAC");
    ASSERT_NE(plain.find("decoder/Wave.so"), std::string::npos) << "the loader's report was not read:\n" << plain;
    EXPECT_NE(plain.find("encoder/FLAC.so"), std::string::npos) << plain;
    EXPECT_EQ(plain.find("libtag"), std::string::npos) << plain;
    EXPECT_EQ(plain.find("Wave/id3.so"), std::string::npos) << plain;
#ifdef QV_TEST_STATIC_CXX_RUNTIME
    EXPECT_EQ(plain.find("libstdc++"), std::string::npos) << plain;
#endif
    EXPECT_FALSE(ReadBytes(dir.File(u"plain.flac")).empty());

    std::string tagged = Loaded(worker, u"tagged.wav", u"tagged.flac", u"FLAC");
    EXPECT_NE(tagged.find("Wave/id3.so"), std::string::npos) << tagged;
    EXPECT_NE(tagged.find("libtag"), std::string::npos) << tagged;
    EXPECT_NE(ReadBytes(dir.File(u"tagged.flac")).find("TITLE=Tagged"), std::string::npos);
}

TEST_F(WorkerLoading, WithoutTheId3ReaderATaggedFileFailsAndSaysWhy) {
    // An installation of the worker and the Wave decoder and encoder only.
    fs::path bin = fs::path(Utf8(BinPath(u"ConvertWorker"))).parent_path();
    fs::path install = Folder() / "install";
    fs::create_directories(install / "decoder");
    fs::create_directories(install / "encoder");
    fs::copy_file(bin / "ConvertWorker", install / "ConvertWorker");
    fs::copy_file(bin / "decoder" / "Wave.so", install / "decoder" / "Wave.so");
    fs::copy_file(bin / "encoder" / "Wave.so", install / "encoder" / "Wave.so");
    std::string path = (install / "ConvertWorker").string();
    clString worker(std::u16string(path.begin(), path.end()).c_str());

    ASSERT_TRUE(WriteBytes(dir.File(u"tagged.wav"), TaggedWave()));
    std::string source = ReadBytes(dir.File(u"tagged.wav"));
    std::u16string log = ConvertWith(worker, u"tagged.wav", u"out.wav", u"Wave");
    EXPECT_NE(log.find(u"the file's ID3 tag can't be read"), std::u16string::npos) << std::string(log.begin(), log.end());
    EXPECT_FALSE(fs::exists(Folder() / "out.wav"));
    EXPECT_EQ(ReadBytes(dir.File(u"tagged.wav")), source);

    // A file without one converts as ever.
    ASSERT_TRUE(WriteBytes(dir.File(u"plain.wav"), ToneWave(2, 0.25)));
    ConvertWith(worker, u"plain.wav", u"plain.wav.out.wav", u"Wave");
    EXPECT_TRUE(fs::exists(Folder() / "plain.wav.out.wav"));
}
