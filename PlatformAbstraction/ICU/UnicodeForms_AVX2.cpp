// The block steps for processors with AVX2.
#include "PlatformAbstraction/ICU/Siconv/blocks/Vector256.h"
#include "PlatformAbstraction/ICU/UnicodeFormsCopy.h"

namespace Orska::Support::UnicodeForms {

std::uint64_t CopyUtf16_AVX2(const char* in_source, char* out_target, std::uint64_t in_count) {
    using Blocks = Copy<Siconv::Vector256, false, false>;
    return in_count < Blocks::BLOCK ? CopyUtf16_SSE2(in_source, out_target, in_count)
                                    : Blocks::Convert(in_source, out_target, in_count);
}

}  // namespace Orska::Support::UnicodeForms
