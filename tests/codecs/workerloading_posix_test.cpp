// What a worker loads on Linux. Every library costs a worker on a short
// file a good share of its time, so a WAVE file without an ID3 chunk goes
// to FLAC without TagLib and, where the build carries its own, without
// the shared C++ runtime; a file with an ID3 chunk loads the Wave
// decoder's ID3 reader from beside it, and an installation without that
// reader fails such a file with a line that says so, leaving no output.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "foundation/pathtext.h"
#include "foundation/utf.h"
#include "tests/codecs/codectest.h"
#include "tests/codecs/wavefiles.h"
#include "tests/support/loaderreport.h"

namespace {

namespace fs = std::filesystem;

class WorkerLoading : public CodecTest {
protected:
    fs::path Folder() const { return fs::path(StringToUtf8(dir.Path())); }

    // Converts with the dynamic loader reporting every library it opens;
    // the report.
    std::string Loaded(const clString& worker, const char16_t* from, const char16_t* to, const char16_t* encoder) {
        LoaderReport loader(Folder().string());
        ConvertWith(worker, from, to, encoder);
        return loader.Take();
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
    fs::path bin = fs::path(StringToUtf8(BinPath(u"ConvertWorker"))).parent_path();
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
