/* The stack-protection checks that the Windows builds of the codec
 * libraries call, in place of the ones of GCC's libssp. libssp seeds its
 * guard through CryptAcquireContext as each plug-in loads, which loads the
 * system's crypto providers and, through them, its window and font
 * machinery: under Wine tens of milliseconds of every worker's start,
 * though a worker draws nothing. The seed here mixes what differs from
 * process to process and from run to run (the performance counter, the
 * clock, the process and thread ids, where the system placed the stack),
 * the way the system's own compiler seeds its stack cookie. The rest of
 * libssp (the fortified copies, __memcpy_chk and the like) still comes
 * from libssp. */
#include <windows.h>

#include <stdint.h>

uintptr_t __stack_chk_guard = 0;

/* Runs before any other initializer of the plug-in, whose functions may
 * already be protected by the guard. */
__attribute__((constructor(101))) static void SeedStackGuard(void) {
    LARGE_INTEGER counter;
    FILETIME now;
    uintptr_t seed = (uintptr_t)0x2B992DDFA23249D6ull;
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&now);
    seed ^= (uintptr_t)counter.QuadPart;
    seed ^= ((uintptr_t)now.dwHighDateTime << 32) ^ now.dwLowDateTime;
    seed ^= (uintptr_t)GetCurrentProcessId() << 17;
    seed ^= (uintptr_t)GetCurrentThreadId() << 41;
    seed ^= (uintptr_t)&counter;
    seed ^= (uintptr_t)GetTickCount64() << 23;
    /* A zero byte first stops a string copy from reproducing it. */
    __stack_chk_guard = seed & ~(uintptr_t)0xFF;
}

__attribute__((noreturn)) static void StackFailure(const char* text, DWORD length) {
    DWORD written = 0;
    HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    if (error != NULL && error != INVALID_HANDLE_VALUE) WriteFile(error, text, length, &written, NULL);
    TerminateProcess(GetCurrentProcess(), 0xC0000409u);  /* a stack buffer overrun */
    for (;;) {
    }
}

__attribute__((noreturn)) void __stack_chk_fail(void) {
    static const char text[] = "*** stack smashing detected ***: terminated\r\n";
    StackFailure(text, sizeof text - 1);
}

__attribute__((noreturn)) void __chk_fail(void) {
    static const char text[] = "*** buffer overflow detected ***: terminated\r\n";
    StackFailure(text, sizeof text - 1);
}

__attribute__((noreturn)) void __stack_chk_fail_local(void) { __stack_chk_fail(); }
