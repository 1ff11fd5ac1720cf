#include <windows.h>

#include "foundation/platform/clock.h"

clSystemTime PlatformGetLocalTime() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    clSystemTime time;
    time.year = now.wYear;
    time.month = now.wMonth;
    time.dayOfWeek = now.wDayOfWeek;
    time.day = now.wDay;
    time.hour = now.wHour;
    time.minute = now.wMinute;
    time.second = now.wSecond;
    time.milliseconds = now.wMilliseconds;
    return time;
}

bool PlatformGetShortDatePicture(clString& picture) {
    wchar_t buffer[1000];
    if (GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, buffer, 1000) == 0) {
        picture = u"M/d/yyyy";
        return false;
    }
    picture.Assign(reinterpret_cast<const char16_t*>(buffer));
    return true;
}
