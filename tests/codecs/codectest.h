// The fixture of the codec tests: a test folder, the reference tools, and
// the real ConvertWorker of the build (<build>/bin) with its plug-ins.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "foundation/folders.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/stringlist.h"
#include "tests/support/testfolder.h"

class CodecTest : public ::testing::Test {
protected:
    TestFolder dir;

    static clString BinPath(const char16_t* name) {
        clString folder = GetProgramFolder();
        RemoveBackslashes(folder);
        clString path = JoinPath(JoinPath(GetFolderPart(folder), clString(u"bin")), clString(name));
        path.Append(PlatformExecutableSuffix());
        return path;
    }

    // Runs a reference tool; its output goes to tool.log. Expects success.
    int Tool(const char16_t* program, std::initializer_list<clString> words) {
        clStringList arguments;
        for (const clString& word : words) arguments.Add(word);
        int exitCode = -1;
        EXPECT_TRUE(PlatformRunProcess(clString(program), arguments, dir.File(u"tool.log"), &exitCode));
        EXPECT_EQ(exitCode, 0) << ReadBytes(dir.File(u"tool.log"));
        return exitCode;
    }

    // Converts one file of the test folder with the worker; its report lines.
    std::u16string Convert(const char16_t* from, const char16_t* to, const char16_t* encoder,
                           const char16_t* options = u"") {
        return ConvertWith(BinPath(u"ConvertWorker"), from, to, encoder, options);
    }
    // The same with a worker of another installation.
    std::u16string ConvertWith(const clString& worker, const char16_t* from, const char16_t* to,
                               const char16_t* encoder, const char16_t* options = u"") {
        std::u16string command = u" -infile=\"" + std::u16string(dir.File(from).text) + u"\" -outfile=\"" +
                                 std::u16string(dir.File(to).text) + u"\" -convert_to=\"" + encoder +
                                 u"\" -evtquit=\"\" -evtwatchdog=\"\" -batchid=\"1\" " + options;
        EXPECT_TRUE(WriteBytes(dir.File(u"cmd"), Utf16Le(command)));
        clStringList arguments;
        arguments.Add(clString(u"-qvcmd=", dir.File(u"cmd").text));
        int exitCode = -1;
        EXPECT_TRUE(PlatformRunProcess(worker, arguments, dir.File(u"log"), &exitCode));
        return FromPipeText(ReadBytes(dir.File(u"log")));
    }
};
