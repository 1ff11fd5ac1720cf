// The power actions reach systemctl and loginctl through PATH; here both
// are stand-ins that only write down how they were called.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "foundation/platform/power.h"
#include "foundation/platform/processinfo.h"
#include "foundation/platform/thread.h"
#include "tests/support/testfolder.h"

namespace {

std::string WaitForFile(const clString& path) {
    for (int i = 0; i < 500; ++i) {
        std::string text = ReadBytes(path);
        if (!text.empty() && text.back() == '\n') return text;
        PlatformSleep(10);
    }
    return {};
}

}  // namespace

TEST(PowerAction, EachCodeAsksTheServiceManagerAndUnknownCodesDoNothing) {
    TestFolder dir;
    clString record = dir.File(u"called.txt");
    for (const char16_t* name : {u"systemctl", u"loginctl"}) {
        clString script = dir.File(name);
        WriteBytes(script, "#!/bin/sh\necho \"$(basename \"$0\") $*\" >> '" + std::string(record.ToUtf8()) + "'\n");
        ::chmod(script.ToUtf8(), 0755);
    }
    clString path;
    PlatformGetEnvironment(u"PATH", path);
    clString ownPath(dir.Path().text, u":");
    ownPath.Append(path);
    PlatformSetEnvironment(u"PATH", ownPath.text);

    const std::string user = std::to_string(::getuid());
    struct Case {
        int32_t code;
        std::string call;
    } cases[] = {{clPowerOff, "systemctl poweroff\n"},
                 {clPowerHibernate, "systemctl hibernate\n"},
                 {clPowerStandBy, "systemctl suspend\n"},
                 {clPowerLogOff, "loginctl terminate-user " + user + "\n"},
                 {clPowerRestart, "systemctl reboot\n"}};
    for (const Case& c : cases) {
        WriteBytes(record, "");
        ASSERT_TRUE(PlatformPowerAction(c.code));
        EXPECT_EQ(WaitForFile(record), c.call);
    }
    PlatformSetEnvironment(u"PATH", path.text);
    EXPECT_FALSE(PlatformPowerAction(0));
    EXPECT_FALSE(PlatformPowerAction(6));
}
