#include <sys/time.h>
#include <time.h>

#include "foundation/platform/clock.h"

clSystemTime PlatformGetLocalTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    clSystemTime time;
    time.year = static_cast<uint16_t>(local.tm_year + 1900);
    time.month = static_cast<uint16_t>(local.tm_mon + 1);
    time.dayOfWeek = static_cast<uint16_t>(local.tm_wday);
    time.day = static_cast<uint16_t>(local.tm_mday);
    time.hour = static_cast<uint16_t>(local.tm_hour);
    time.minute = static_cast<uint16_t>(local.tm_min);
    time.second = static_cast<uint16_t>(local.tm_sec);
    time.milliseconds = static_cast<uint16_t>(now.tv_nsec / 1000000);
    return time;
}

bool PlatformGetShortDatePicture(clString& picture) {
    picture = u"M/d/yyyy";
    return true;
}
