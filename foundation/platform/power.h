// The machine's power state: keeping it awake during a run, and the
// actions a user may choose for the end of one.
#pragma once

#include <cstdint>

// Power actions, numbered as the "After Conversion" menu numbers them.
constexpr int32_t clPowerOff = 1;
constexpr int32_t clPowerHibernate = 2;
constexpr int32_t clPowerStandBy = 3;
constexpr int32_t clPowerLogOff = 4;
constexpr int32_t clPowerRestart = 5;

// While on, the system is asked not to sleep for idleness. Windows only:
// POSIX systems offer no per-process request without a session bus, so
// there it does nothing.
void PlatformKeepAwake(bool on);

// Starts the action and does not wait for it. Windows first enables the
// shutdown privilege; POSIX asks systemctl (poweroff, hibernate, suspend,
// reboot) or loginctl (terminate-user), found on PATH. False when the code
// is unknown or nothing could be started; a refusal by the system later is
// not seen.
bool PlatformPowerAction(int32_t action);
