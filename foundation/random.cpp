#include "foundation/random.h"

#include <mutex>
#include <random>

#include "foundation/platform/processinfo.h"

namespace {

std::mutex generatorLock;

std::mt19937& Generator() {
    static std::mt19937 generator = [] {
        unsigned char seed[16] = {};
        PlatformCreateGuid(seed);
        std::seed_seq sequence(seed, seed + 16);
        return std::mt19937(sequence);
    }();
    return generator;
}

}  // namespace

uint32_t RandomNumber() {
    std::lock_guard<std::mutex> hold(generatorLock);
    return static_cast<uint32_t>(Generator()());
}

uint32_t RandomBelow(uint32_t limit) { return static_cast<uint32_t>((uint64_t{RandomNumber()} * limit) >> 32); }
