// The cause told under a failed job: each drive fact in its order of
// precedence, the full-drive boundary, and real outputs on this machine.
#include "engine/outputdiagnosis.h"

#include <gtest/gtest.h>

#include "foundation/pathsyntax.h"
#include "foundation/platform/filesystem.h"
#include "tests/support/testfolder.h"

TEST(OutputDiagnosis, DriveFactsInOrderAndTheFullBoundary) {
    int writeTests = 0;
    bool writable = true;
    clDriveFacts facts;
    facts.exists = true;
    facts.freeBytes = kFullDriveBytes;
    facts.writeTest = [&] {
        ++writeTests;
        return writable;
    };
    const clString drive(u"E:\\");
    EXPECT_EQ(U(DiagnoseDrive(drive, facts)), u"");  // exactly the limit is not full
    EXPECT_EQ(writeTests, 1);
    writable = false;
    EXPECT_EQ(U(DiagnoseDrive(drive, facts)),
              u"Unable to write to output location, check is not read only and Quillotone has write permission");
    facts.nameTooLong = true;
    EXPECT_EQ(U(DiagnoseDrive(drive, facts)), u"The output's name is too long for the file system");
    facts.freeBytes = kFullDriveBytes - 1;
    EXPECT_EQ(U(DiagnoseDrive(drive, facts)), u"Output drive E:\\ is full");
    EXPECT_EQ(writeTests, 2) << "a full drive is not written to";
    // A read-only mount is no CD drive; it says what it is.
    facts.readOnly = true;
    EXPECT_EQ(U(DiagnoseDrive(drive, facts)), u"Output drive E:\\ is read-only");
    facts.cdRom = true;
    EXPECT_EQ(U(DiagnoseDrive(drive, facts)), u"Output drive E:\\ is set to a CD ROM drive");
    facts.exists = false;
    EXPECT_EQ(U(DiagnoseDrive(drive, facts)), u"Output drive E:\\ does not exist");
    EXPECT_EQ(writeTests, 2);
}

TEST(OutputDiagnosis, RealOutputs) {
    TestFolder dir;
    EXPECT_EQ(U(DiagnoseOutput(dir.File(u"sub/out.flac"))), u"");  // writable, folder made on the way
    EXPECT_EQ(U(DiagnoseOutput(clString(u"out.flac"))), u"");      // no volume named
    EXPECT_EQ(U(DiagnoseOutput(clString(u"Q:\\nowhere\\x.iGnore"))), u"");
    if (NativePathSyntax().IsWindows()) {
        // The first letter the system doesn't have.
        uint32_t drives = PlatformGetLogicalDrives();
        char16_t letter = u'D';
        while (letter <= u'Z' && (drives & (1u << (letter - u'A'))) != 0) ++letter;
        ASSERT_LE(letter, u'Z');
        clString path = clString::Formatted(u"%c:\\music\\x.flac", letter);
        clString expected = clString::Formatted(u"Output drive %c:\\ does not exist", letter);
        EXPECT_EQ(U(DiagnoseOutput(path)), U(expected));
        EXPECT_EQ(U(DiagnoseOutput(clString(u"\\\\server\\share\\x.flac"))), u"");
    } else {
        // /proc is a volume of its own where nothing can be made.
        EXPECT_EQ(U(DiagnoseOutput(clString(u"/proc/qvtest/x.flac"))),
                  u"Unable to write to output location, check is not read only and Quillotone has write permission");
        // A name the file system can't hold is called too long, not a
        // folder that can't be written.
        clString longName = dir.File((std::u16string(300, u'n') + u".flac").c_str());
        EXPECT_EQ(U(DiagnoseOutput(longName)), u"The output's name is too long for the file system");
    }
}
