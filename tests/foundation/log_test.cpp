#include "foundation/log.h"

#include <gtest/gtest.h>

#include <thread>

#include "foundation/file.h"
#include "tests/support/testfolder.h"

TEST(Log, ZeroedSinkWritesNothingButIndentationFollowsTheMarkers) {
    clLogSink silent{};
    ASSERT_EQ(U(LogIndent()), u"");
    LogWrite(clLogLeave, &silent, "X::Y", true);  // a leave with no indentation stays at none
    EXPECT_EQ(U(LogIndent()), u"");
    LogWrite(clLogEnter, &silent, "X::Y", true);
    LogWrite(clLogEnter, &silent, "X::Z", true);
    EXPECT_EQ(U(LogIndent()), u"    ");
    LogWrite(clLogLeave, &silent, "X::Z", true);
    LogWrite(clLogLeave, &silent, "X::Y", true);
    EXPECT_EQ(U(LogIndent()), u"");
    clLogSink minusOne{{0, 0}, static_cast<uint64_t>(-1)};
    LogWrite(u"text", &minusOne, nullptr, true);
}

TEST(Log, TraceFileShowsIndentedLinesInPieces) {
    TestFolder dir;
    clFile file;
    file.fileName = dir.File(u"trace.txt");
    file.Open(clAccessWrite, clCreateAlways, false, true);
    ASSERT_NE(file.handle, clInvalidHandle);
    clLogSink sink{{0, 0}, static_cast<uint64_t>(file.handle)};
    LogWrite(clLogEnter, &sink, "clQvCodecHandler::LoadEncoder", true);
    LogWrite(u"Loading Encoder '", &sink, nullptr, false);
    LogWrite(u"C:\\x\\FLAC.dll", &sink, nullptr, false);
    LogWrite(u"'", &sink, nullptr, true);
    LogWrite(clLogLeave, &sink, "clQvCodecHandler::LoadEncoder", true);
    file.Close();
    EXPECT_EQ(ReadBytes(dir.File(u"trace.txt")), Utf16Le(u"->->  [clQvCodecHandler::LoadEncoder]\r\n"
                                                         u"  Loading Encoder 'C:\\x\\FLAC.dll'\r\n"
                                                         u"<-<-  [clQvCodecHandler::LoadEncoder]\r\n"));
}

TEST(Log, ConcurrentWritersKeepLinesWhole) {
    TestFolder dir;
    clFile file;
    file.fileName = dir.File(u"many.txt");
    file.Open(clAccessWrite, clCreateAlways, false, true);
    clLogSink sink{{0, 0}, static_cast<uint64_t>(file.handle)};
    std::thread writers[4];
    for (auto& t : writers) {
        t = std::thread([&] {
            for (int i = 0; i < 500; ++i) LogWrite(u"0123456789", &sink, nullptr, true);
        });
    }
    for (auto& t : writers) t.join();
    file.Close();
    std::string bytes = ReadBytes(dir.File(u"many.txt"));
    EXPECT_EQ(bytes.size(), 2000u * 12 * 2);
    EXPECT_EQ(bytes.find(Utf16Le(u"00")), std::string::npos);  // no line broke into another
}
