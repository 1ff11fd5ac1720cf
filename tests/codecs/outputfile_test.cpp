// An encoder's output file: the worker has made it, empty, and the encoder
// opens it by name. Whatever the file held before is gone, a missing file
// is made, and an encoder that reads its output back (FLAC, finishing its
// header) can.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "codecs/common/codecsupport.h"
#include "tests/support/testfolder.h"

namespace {

void Put(FILE* file, const std::string& bytes) { ASSERT_EQ(std::fwrite(bytes.data(), 1, bytes.size(), file), bytes.size()); }

}  // namespace

TEST(OutputFile, OldContentGoesAMissingFileIsMadeAndReadBackWorks) {
    TestFolder dir;
    clString held = dir.File(u"held.out");
    ASSERT_TRUE(WriteBytes(held, "twenty bytes of past"));
    qvc::OwnedFile file(qvc::OpenOutput(held.text, false));
    ASSERT_NE(file, nullptr);
    Put(file.get(), "new");
    file.reset();
    EXPECT_EQ(ReadBytes(held), "new");

    clString empty = dir.File(u"empty.out");
    ASSERT_TRUE(WriteBytes(empty, ""));
    file.reset(qvc::OpenOutput(empty.text, true));
    ASSERT_NE(file, nullptr);
    Put(file.get(), "header and frames");
    ASSERT_TRUE(qvc::Seek(file.get(), 0));
    char back[6] = {};
    ASSERT_EQ(std::fread(back, 1, 6, file.get()), 6u);
    EXPECT_EQ(std::string(back, 6), "header");
    ASSERT_TRUE(qvc::Seek(file.get(), 0));
    Put(file.get(), "HEADER");
    file.reset();
    EXPECT_EQ(ReadBytes(empty), "HEADER and frames");

    clString missing = dir.File(u"missing.out");
    file.reset(qvc::OpenOutput(missing.text, false));
    ASSERT_NE(file, nullptr);
    file.reset();
    qvc::OwnedFile made(qvc::OpenFile(missing.text, "rb"));
    EXPECT_NE(made, nullptr);
    EXPECT_EQ(qvc::OpenOutput(dir.File(u"no folder/x.out").text, false), nullptr);
}
