#include "PlatformAbstraction/base/CpuLevel.h"

#include <cstdlib>
#include <cstring>

namespace Orska::Support {

namespace {

struct LevelName {
    const char* m_name;
    CpuLevel m_level;
};

constexpr LevelName LEVEL_NAMES[] = {
    {"sse2", CpuLevel::SSE2},     {"sse3", CpuLevel::SSE3},   {"ssse3", CpuLevel::SSSE3},
    {"sse41", CpuLevel::SSE41},   {"sse42", CpuLevel::SSE42}, {"avx2", CpuLevel::AVX2},
    {"avx512", CpuLevel::AVX512},
};

CpuLevel LevelInForce() noexcept {
    const CpuLevel detected = DetectCpuLevel();
    const char* wanted = std::getenv("ORSKA_CPU_LEVEL");
    if (wanted == nullptr) {
        return detected;
    }
    for (const LevelName& entry : LEVEL_NAMES) {
        if (std::strcmp(wanted, entry.m_name) == 0 && entry.m_level < detected) {
            return entry.m_level;
        }
    }
    return detected;
}

}  // namespace

CpuLevel DetectCpuLevel() noexcept {
    // __builtin_cpu_supports also checks that the system saves the wide registers.
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("sse3")) return CpuLevel::SSE2;
    if (!__builtin_cpu_supports("ssse3")) return CpuLevel::SSE3;
    if (!__builtin_cpu_supports("sse4.1")) return CpuLevel::SSSE3;
    if (!__builtin_cpu_supports("sse4.2") || !__builtin_cpu_supports("popcnt")) {
        return CpuLevel::SSE41;
    }
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") ||
        !__builtin_cpu_supports("bmi2")) {
        return CpuLevel::SSE42;
    }
    if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512bw") ||
        !__builtin_cpu_supports("avx512dq") || !__builtin_cpu_supports("avx512vl") ||
        !__builtin_cpu_supports("avx512vbmi") || !__builtin_cpu_supports("avx512vbmi2")) {
        return CpuLevel::AVX2;
    }
    return CpuLevel::AVX512;
}

CpuLevel GetCpuLevel() noexcept {
    // Process-wide: set by the first call, read by every kernel dispatch.
    static const CpuLevel s_level = LevelInForce();
    return s_level;
}

}  // namespace Orska::Support
