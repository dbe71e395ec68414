#include "PlatformAbstraction/ICU/WideStreamBlitter.h"

#include <cstring>

namespace Orska::Support {

WideStreamBlitter::WideStreamBlitter(EncodingType in_encoding, std::uint8_t in_flag)
    : StreamConverter(in_encoding, in_encoding, in_flag) {}

void WideStreamBlitter::DoConvert(std::uint64_t in_bytesWanted) {
    const std::uint64_t remaining = GetSourceRemaining();
    // Never copies more than the target has room for, whatever the caller wants.
    const auto wanted =
        static_cast<std::uint64_t>(GetTargetLimit(in_bytesWanted) - m_targetPosition);
    const std::uint64_t count = remaining <= wanted ? remaining : wanted;
    if (count > 0) {
        std::memcpy(m_targetPosition, m_sourcePosition, count);
    }
    m_isSourceConsumed = remaining <= wanted;
    m_hasDataRemaining = remaining > wanted;
    m_isTargetFilled = remaining >= wanted;
    m_sourcePosition += count;
    AdvanceTarget(count);
}

}  // namespace Orska::Support
