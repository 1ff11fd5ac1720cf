#include "plugins/xdll.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/pathtext.h"
#include "plugins/codechandler.h"
#include "plugins/taglist.h"
#include "tests/support/testfolder.h"

namespace {

clString Plugin(const char16_t* name) {
    const char16_t* folder = clString(name).Find(u"encoder") != 0     ? u"encoder"
                             : clString(name).Find(u"tageffect") != 0 ? u"DSPs"
                                                                      : u"decoder";
    clString path = JoinPath(GetProgramFolder(), clString(folder));
    path = JoinPath(path, clString(name));
    path.Append(PlatformLibrarySuffix());
    return path;
}

const qv_log_record kNoLog{};

}  // namespace

TEST(Xdll, DecoderBindsEveryExportAndAnswers) {
    clQvDecoder decoder;
    EXPECT_FALSE(decoder.bound);  // an empty wrapper
    EXPECT_EQ(decoder.Create, nullptr);
    ASSERT_TRUE(decoder.Bind(Plugin(u"qvtest_decoder").text));
    EXPECT_NE(decoder.DeleteATag, nullptr);
    ASSERT_TRUE(decoder.CreateInstance(&kNoLog));
    std::vector<std::u16string> extensions;
    for (uint32_t i = 0;; ++i) {
        qv_query_record query{};
        query.index = i;
        if (decoder.Get(decoder.instance, u"Decodes", &query) == 0 || query.text1 == nullptr) break;
        extensions.push_back(query.text1);
        ASSERT_LT(i, 100u);
    }
    EXPECT_EQ(extensions, (std::vector<std::u16string>{u".aaa", u".BBB", u".ccc"}));
    qv_query_record version{};
    ASSERT_NE(decoder.Get(decoder.instance, u"AbiVersion", &version), 0);
    uint64_t abiVersion = version.estimate;  // packed record: copy before taking a reference
    EXPECT_EQ(abiVersion, QV_ABI_VERSION);
    qv_open_record open{};
    open.fileName = u"/x.aaa";
    open.request = QV_OPEN_REQUEST;
    ASSERT_NE(decoder.Open(decoder.instance, &open), 0);
    uint32_t rate = open.facts.samplesPerSecond;
    EXPECT_EQ(rate, 44100u);
    clTagList tags;
    tags.LoadBlock(open.tags, open.tagsSize);
    EXPECT_EQ(U(tags.GetTagValue(u"TITLE")), u"T");
}

TEST(Xdll, OneMissingExportMeansNotAPluginOfThatKind) {
    clQvDecoder decoder;
    EXPECT_FALSE(decoder.Bind(Plugin(u"qvtest_missing").text));
    EXPECT_NE(decoder.module, 0);
    EXPECT_NE(decoder.Create, nullptr);  // the rest are still looked up
    EXPECT_EQ(decoder.DeleteATag, nullptr);
    clQvEncoder wrongKind;
    EXPECT_FALSE(wrongKind.Bind(Plugin(u"qvtest_decoder").text));
}

TEST(Xdll, ATextFileNamedLikeALibraryIsNoLibrary) {
    TestFolder dir;
    clString fake = dir.File(u"fake");
    fake.Append(PlatformLibrarySuffix());
    ASSERT_TRUE(WriteBytes(fake, "this is not a library\n"));
    clQvDecoder decoder;
    EXPECT_FALSE(decoder.Bind(fake.text));
    EXPECT_EQ(decoder.module, 0);
    EXPECT_FALSE(decoder.Bind(dir.File(u"missing.so").text));
}

TEST(Xdll, BindKeepsWhatIsHeldReloadAndUnloadStartOver) {
    clQvDecoder decoder;
    ASSERT_TRUE(decoder.Bind(Plugin(u"qvtest_decoder").text));
    clLibraryHandle first = decoder.module;
    EXPECT_TRUE(decoder.Bind(Plugin(u"qvtest_missing").text));  // nothing is reloaded
    EXPECT_EQ(decoder.module, first);
    decoder.CreateInstance(&kNoLog);
    decoder.extension = u".aaa";
    EXPECT_FALSE(decoder.Reload(Plugin(u"qvtest_missing").text));
    EXPECT_EQ(decoder.instance, 0u);
    EXPECT_TRUE(decoder.extension.IsEmpty());
    decoder.Unload();
    EXPECT_EQ(decoder.module, 0);
    EXPECT_EQ(decoder.Create, nullptr);
    EXPECT_FALSE(decoder.bound);
}

TEST(Xdll, EncoderAndTagEffect) {
    clQvEncoder encoder;
    ASSERT_TRUE(encoder.Bind(Plugin(u"qvtest_encoder").text));
    ASSERT_TRUE(encoder.CreateInstance(&kNoLog));
    qv_query_record query{};
    ASSERT_NE(encoder.Get(encoder.instance, u"Extension", &query), 0);
    EXPECT_EQ(std::u16string(query.text1), u".tst");
    qv_query_record required{};
    ASSERT_NE(encoder.Get(encoder.instance, u"RequiresDSP", &required), 0);
    EXPECT_EQ(std::u16string(required.text2), u"Bit Depth=-bits=16");

    clQvDSP effect;
    ASSERT_TRUE(effect.Bind(Plugin(u"qvtest_tageffect").text));
    ASSERT_TRUE(effect.CreateInstance(&kNoLog));
    clTagList tags;
    tags.AddTag(u"artist", u"A");
    clByteBuffer block;
    tags.SaveBlock(block);
    qv_stream_facts zero{};
    qv_begin_record begin{};
    begin.text1 = begin.text2 = begin.text3 = u"";
    begin.facts = &zero;
    begin.tags = block.data;
    begin.tagsSize = static_cast<uint32_t>(block.size);
    ASSERT_NE(effect.BeginConversion(effect.instance, &begin, u"x=1"), 0);
    tags.LoadBlock(begin.tags, begin.tagsSize);
    EXPECT_EQ(U(tags.GetTagValue(u"artist")), u"A");
    EXPECT_EQ(U(tags.GetTagValue(u"edited")), u"x=1");
}

TEST(Xdll, LibrariesAreFoundByNameIgnoringCase) {
    clString exact = PluginLibraryPath(u"DSPs", clString(u"ID Tag Processing"));
    clString folded = PluginLibraryPath(u"DSPs", clString(u"id TAG processing"));
    EXPECT_EQ(U(folded), U(exact));
    clQvDSP dsp;
    EXPECT_TRUE(dsp.Bind(folded.text));
    EXPECT_EQ(U(GetFileName(PluginLibraryPath(u"DSPs", clString(u"No Such")))),
              U(clString(u"No Such", PlatformLibrarySuffix())));
    EXPECT_EQ(U(GetFileName(PluginLibraryPath(u"DSPs", clString(u"*")))), U(clString(u"*", PlatformLibrarySuffix())));
}

// A name from a command file or the settings reaches no library outside
// the plug-in folders, however it is spelt; a real effect library named by
// a path that climbs out of DSPs/ and back in is refused too.
TEST(Xdll, NamesThatArePathsLoadNothing) {
    for (const char16_t* name : {u"../DSPs/qvtest_tageffect", u"..\\DSPs\\qvtest_tageffect", u"/tmp/evil", u"C:evil",
                                 u"..", u".", u"", u"a\nb"}) {
        EXPECT_TRUE(PluginLibraryPath(u"DSPs", clString(name)).IsEmpty()) << std::string(name, name + 3);
        clQvDSP dsp;
        EXPECT_FALSE(clQvCodecHandler::LoadDSP(clString(name), dsp, &kNoLog));
    }
    clQvEncoder encoder;
    EXPECT_FALSE(clQvCodecHandler::LoadEncoder(clString(u"../encoder/Zeta"), encoder, &kNoLog));
    EXPECT_TRUE(clQvCodecHandler::LoadEncoder(clString(u"Zeta"), encoder, &kNoLog));
    clQvDSP dsp;
    EXPECT_TRUE(clQvCodecHandler::LoadDSP(clString(u"qvtest_tageffect"), dsp, &kNoLog));
    clQvDecoder decoder;
    EXPECT_FALSE(decoder.Bind(u""));
}
