// The process-wide random numbers: one generator behind a lock, seeded once
// from the system's randomness. Not for secrets; for names that must not
// meet by chance (write tests, scratch files).
#pragma once

#include <cstdint>

uint32_t RandomNumber();
// A number below `limit` by scaling the 32-bit value; 0 for a limit of 0.
uint32_t RandomBelow(uint32_t limit);
