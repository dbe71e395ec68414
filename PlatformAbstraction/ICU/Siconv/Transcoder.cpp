#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

#include <limits>

#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"

namespace Orska::Support {

namespace {

using namespace Siconv;

const TranscoderTable& GetTable(CpuLevel in_level) noexcept {
    if (in_level >= CpuLevel::AVX512) return AVX512_TABLE;
    if (in_level >= CpuLevel::AVX2) return AVX2_TABLE;
    if (in_level >= CpuLevel::SSE42) return SSE42_TABLE;
    return in_level >= CpuLevel::SSSE3 ? SSSE3_TABLE : SSE2_TABLE;
}

// Bytes of output for four bytes of source. The single-byte rows equal the UTF-8 row, so their
// factor to UTF-8 is 1 although a cp1252 byte can take three bytes there. Callers rely on the table
// as it is.
constexpr std::uint8_t RATIO[INDEX_COUNT][INDEX_COUNT] = {
    {4, 8, 8, 16, 16, 4, 4},  //
    {6, 4, 4, 8, 8, 2, 2},    //
    {6, 4, 4, 8, 8, 2, 2},    //
    {4, 4, 4, 4, 4, 1, 1},    //
    {4, 4, 4, 4, 4, 1, 1},    //
    {4, 8, 8, 16, 16, 4, 4},  //
    {4, 8, 8, 16, 16, 4, 4},
};

bool IsIndexPair(int in_source, int in_target) noexcept {
    return in_source >= 0 && in_source < INDEX_COUNT && in_target >= 0 && in_target < INDEX_COUNT;
}

}  // namespace

int GetTranscoderIndex(EncodingType in_encoding) noexcept {
    if (in_encoding == EncodingType::ENC_IBM5348) {
        return static_cast<int>(EncodingType::ENC_CP1252);
    }
    const int value = static_cast<int>(in_encoding);
    return value >= 0 && value < INDEX_COUNT ? value : TRANSCODER_NO_INDEX;
}

TranscoderFunction GetTranscoder(int in_source, int in_target) noexcept {
    return GetTranscoderAtLevel(in_source, in_target, GetCpuLevel());
}

TranscoderFunction GetTranscoderAtLevel(int in_source, int in_target, CpuLevel in_level) noexcept {
    if (!IsIndexPair(in_source, in_target)) {
        return nullptr;
    }
    return GetTable(in_level).m_functions[in_source][in_target];
}

TranscoderFunction GetScalarTranscoder(int in_source, int in_target) noexcept {
    return IsIndexPair(in_source, in_target) ? SCALAR_TABLE.m_functions[in_source][in_target]
                                             : nullptr;
}

std::int64_t GetTranscoderWorstCase(int in_source, int in_target,
                                    std::uint64_t in_sourceBytes) noexcept {
    if (!IsIndexPair(in_source, in_target)) {
        return -1;
    }
    const std::uint64_t ratio = RATIO[in_source][in_target];
    const std::uint64_t rest = ratio * (in_sourceBytes % 4) / 4;
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
    return in_sourceBytes / 4 > (MOST - rest) / ratio
               ? MOST
               : static_cast<std::int64_t>(in_sourceBytes / 4 * ratio + rest);
}

}  // namespace Orska::Support
