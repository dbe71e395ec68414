/// The processor's vector level, detected once per process.
///
/// Kernels that need more than SSE2 are chosen by this level when they are first used. Owned by
/// CpuLevel.cpp; any thread may call.
#ifndef PLATFORMABSTRACTION_CPULEVEL_H
#define PLATFORMABSTRACTION_CPULEVEL_H

#include <cstdint>

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

/// Levels include all lower ones. Values are ordered and stable: the transcoder's byte swaps need
/// level 2 or higher.
enum class CpuLevel : std::int32_t {
    SSE2 = 0,    ///< every x86-64 processor
    SSE3 = 1,    ///< adds SSE3
    SSSE3 = 2,   ///< adds the byte shuffle
    SSE41 = 3,   ///< adds SSE4.1
    SSE42 = 4,   ///< adds SSE4.2 and POPCNT
    AVX2 = 5,    ///< adds AVX, AVX2, BMI1, BMI2 and LZCNT, with the system saving YMM registers
    AVX512 = 6,  ///< adds AVX-512 F, BW, DQ, VL, VBMI and VBMI2, with ZMM registers saved
};

/// The level to use: the processor's own, or the lower one that the environment variable
/// ORSKA_CPU_LEVEL names (sse2, sse3, ssse3, sse41, sse42, avx2, avx512). The first call reads the
/// variable. An unknown name, or a level that the processor lacks, changes nothing.
CpuLevel GetCpuLevel() noexcept;

/// The level of the processor itself, whatever the environment says.
CpuLevel DetectCpuLevel() noexcept;

}  // namespace Orska::Support

#endif
