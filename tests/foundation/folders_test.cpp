#include "foundation/folders.h"

#include <gtest/gtest.h>

#include "foundation/file.h"
#include "foundation/findfiles.h"
#include "foundation/pathtext.h"
#include "foundation/platform/processinfo.h"
#include "foundation/specialfolder.h"
#include "tests/support/testfolder.h"

TEST(Folders, MakeFoldersFindAndDeleteTreeWithNonAsciiNames) {
    TestFolder dir;
    clString deep = JoinPath(dir.Path(), clString(u"\u00c9t\u00e9"));
    deep = JoinPath(deep, clString(u"\U0001F3B5 disc 1"));
    ASSERT_TRUE(MakeFolders(deep));
    EXPECT_TRUE(MakeFolders(deep));  // existing folders are no failure
    bool isFolder = false;
    EXPECT_TRUE(PathExists(deep, &isFolder));
    EXPECT_TRUE(isFolder);
    ASSERT_TRUE(WriteBytes(JoinPath(deep, clString(u"a.flac")), "x"));
    ASSERT_TRUE(WriteBytes(JoinPath(deep, clString(u"b.MP3")), "yy"));
    EXPECT_TRUE(PathExists(JoinPath(deep, clString(u"a.flac")), &isFolder));
    EXPECT_FALSE(isFolder);

    clFindFiles mp3{clString(u"*.mp3"), deep};
    ASSERT_TRUE(mp3.Next());
    EXPECT_EQ(U(GetFileName(mp3.fullName)), u"b.MP3");
    EXPECT_EQ(mp3.found.size, 2u);
    EXPECT_FALSE(mp3.Next());

    clFindFiles all{clString(u"*.*"), dir.Path()};
    all.foldersOnly = true;
    ASSERT_TRUE(all.Next());
    EXPECT_EQ(U(all.found.name), u"\u00c9t\u00e9");
    EXPECT_FALSE(all.Next());

    clString tree = JoinPath(dir.Path(), clString(u"\u00c9t\u00e9"));
    EXPECT_TRUE(DeleteFolderTree(tree));
    EXPECT_FALSE(PathExists(tree));
}

// A plain name finds its one file, in the case written or in another, and
// nothing else; a name that isn't there finds nothing.
TEST(Folders, FindOfAPlainNameFindsThatFileInAnyCase) {
    TestFolder dir;
    ASSERT_TRUE(WriteBytes(dir.File(u"Track.flac"), "abc"));
    ASSERT_TRUE(WriteBytes(dir.File(u"Track.flac.bak"), "x"));
    for (const char16_t* name : {u"Track.flac", u"TRACK.FLAC"}) {
        clFindFiles find(dir.File(name));
        ASSERT_TRUE(find.Next());
        EXPECT_EQ(U(find.found.name), u"Track.flac");
        EXPECT_EQ(find.found.size, 3u);
        EXPECT_FALSE(find.Next());
    }
    clFindFiles missing(dir.File(u"Track.fla"));
    EXPECT_FALSE(missing.Next());
}

TEST(Folders, DeleteFolderTreeRefusesRootsAndDeleteFileClearsReadOnly) {
    EXPECT_FALSE(DeleteFolderTree(clString(u"C:")));
    EXPECT_FALSE(DeleteFolderTree(clString(u"/")));
    TestFolder dir;
    clString locked = dir.File(u"locked.txt");
    ASSERT_TRUE(WriteBytes(locked, "x"));
    clFindData data;
    ASSERT_TRUE(DeleteFileEx(locked) || !PathExists(locked));
    EXPECT_FALSE(PathExists(locked));
    EXPECT_FALSE(DeleteFileEx(locked));
    EXPECT_FALSE(PathExists(clString()));
}

TEST(Folders, MoveNeverReplaces) {
    TestFolder dir;
    clString a = dir.File(u"a");
    clString b = dir.File(u"b");
    WriteBytes(a, "A");
    WriteBytes(b, "B");
    EXPECT_FALSE(MoveFileEx2(a, b));
    EXPECT_EQ(ReadBytes(b), "B");
    EXPECT_FALSE(MoveFileEx2(a, clString()));
    EXPECT_TRUE(MoveFileEx2(a, dir.File(u"c")));
    EXPECT_EQ(ReadBytes(dir.File(u"c")), "A");
}

TEST(Folders, TempFilesAreUniqueEmptyAndReplaced) {
    EXPECT_EQ(GetProcessGuidText().Length(), 32);
    EXPECT_EQ(GetTempFolder().CharAt(clStringLast), NativePathSyntax().separator);
    clString first;
    ASSERT_TRUE(MakeTempFile(first, "QVT"));
    EXPECT_EQ(GetFileName(first).Find(u"QVT-"), 1);
    EXPECT_TRUE(PathExists(first));
    EXPECT_EQ(clFile::GetFileSize64(first), 0u);
    clString second = first;
    ASSERT_TRUE(MakeTempFile(second));
    EXPECT_FALSE(PathExists(first));  // the name given in was deleted
    EXPECT_FALSE(second.Equals(first));
    EXPECT_EQ(GetFileName(second).Find(u"TMP-"), 1);
    DeleteFileEx(second);
}

TEST(SpecialFolder, KnownFoldersEndInSeparator) {
    clString appData = GetSpecialFolder(clFolderAppData);
    EXPECT_FALSE(appData.IsEmpty());
    EXPECT_EQ(appData.CharAt(clStringLast), NativePathSyntax().separator);
    EXPECT_EQ(U(GetSpecialFolder(clFolderTemp)), U(GetTempFolder()));
    clString music = GetSpecialFolder(clFolderMusic);
    EXPECT_EQ(music.CharAt(clStringLast), NativePathSyntax().separator);
    // An id with no meaning gives the default text.
    EXPECT_EQ(U(GetSpecialFolder(9999, u"X")), U(clString(u"X", NativePathSyntax().IsWindows() ? u"\\" : u"/")));
}

TEST(Folders, TempFileGivesUpWhenTheFolderCannotHoldFiles) {
    // Reading taken: attempts that fail because a name is taken go on for
    // ever, as they must; attempts that fail for another reason (here the
    // temporary "folder" is a file) end after a bounded number instead of
    // hanging the caller.
    TestFolder dir;
    clString notAFolder = dir.File(u"plain-file");
    ASSERT_TRUE(WriteBytes(notAFolder, "x"));
    clString savedTmpdir, savedTmp;
    bool hadTmpdir = PlatformGetEnvironment(u"TMPDIR", savedTmpdir);
    bool hadTmp = PlatformGetEnvironment(u"TMP", savedTmp);
    PlatformSetEnvironment(u"TMPDIR", notAFolder.text);
    PlatformSetEnvironment(u"TMP", notAFolder.text);
    clString name;
    bool made = MakeTempFile(name);
    PlatformSetEnvironment(u"TMPDIR", hadTmpdir ? savedTmpdir.text : u"");
    PlatformSetEnvironment(u"TMP", hadTmp ? savedTmp.text : u"");
    EXPECT_FALSE(made);
    EXPECT_TRUE(name.IsEmpty());
}
