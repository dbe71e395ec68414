#include "PlatformAbstraction/ICU/StreamConverter.h"

#include <algorithm>
#include <cstring>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\ICU\\StreamConverter";

// Replaces a null pointer, which ICU refuses even for no bytes. Never read or written.
char s_noBytes[1];

}  // namespace

StreamConverter::StreamConverter(EncodingType in_source, EncodingType in_target,
                                 std::uint8_t in_flag)
    : m_sourceEncoding(in_source),
      m_targetEncoding(in_target),
      m_flag(in_flag),
      m_targetCodeUnitWidth(EncodingInfo::GetCodeUnitWidth(in_target)),
      m_targetMostBytesPerCodePoint(static_cast<std::uint8_t>(
          EncodingInfo::GetMaxCodeUnitsPerCodePoint(in_target) * m_targetCodeUnitWidth)) {
    StreamConverter::Reset();
}

void StreamConverter::SetSource(const char* in_start, std::uint64_t in_length, bool in_isLast) {
    m_sourceStart = in_start == nullptr ? s_noBytes : in_start;
    m_sourceLength = in_length;
    m_isLastPiece = in_isLast;
    SetSourcePosition(0);
}

void StreamConverter::SetTarget(char* in_start, std::uint64_t in_length) {
    m_targetStart = in_start == nullptr ? s_noBytes : in_start;
    m_targetLength = in_length;
    m_isTargetFilled = false;
    SetTargetPosition(0);
}

void StreamConverter::DoConvert() { DoConvert(GetTargetSpace()); }

void StreamConverter::DoConvertWithNul() {
    const std::uint64_t space = GetTargetSpace();
    if (space < m_targetCodeUnitWidth) {
        SetTargetIsTooSmall();
        return;
    }
    DoConvert(space - m_targetCodeUnitWidth);
    WriteNul();
}

void StreamConverter::Reset() {
    SetSource(nullptr, 0);
    SetTarget(nullptr, 0);
    m_isSourceConsumed = true;
    m_hasDataRemaining = false;
    m_totalBytesWritten = 0;
    m_heldCount = 0;
}

void StreamConverter::SetSourcePosition(std::uint64_t in_position) {
    const std::uint64_t position = std::min(in_position, m_sourceLength);
    m_sourcePosition = m_sourceStart + position;
    m_sourceExcess = in_position - position;
    m_isSourceConsumed = false;
}

void StreamConverter::SetTargetPosition(std::uint64_t in_position) {
    const std::uint64_t position = std::min(in_position, m_targetLength);
    m_targetPosition = m_targetStart + position;
    m_targetExcess = in_position - position;
}

std::uint64_t StreamConverter::ThrowInvalidPosition() {
    ORSKA_THROW((TraceSite{"Orska::Support::StreamConverter::ThrowInvalidPosition", SOURCE, 0}),
                ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"InvalidBuffPos"));
}

char* StreamConverter::GetTargetLimit(std::uint64_t in_bytesWanted) const {
    return m_targetPosition + std::min(in_bytesWanted, GetTargetSpace());
}

void StreamConverter::SetTargetIsTooSmall() noexcept {
    m_isTargetFilled = true;
    m_hasDataRemaining = true;
}

void StreamConverter::WriteNul() noexcept {
    std::memset(m_targetPosition, 0, m_targetCodeUnitWidth);
}

bool StreamConverter::CopyHeldOutput(const char* in_limit) noexcept {
    const auto count =
        static_cast<std::uint8_t>(std::min<std::int64_t>(m_heldCount, in_limit - m_targetPosition));
    if (count > 0) {
        std::memcpy(m_targetPosition, m_held, count);
        AdvanceTarget(count);
        m_heldCount = static_cast<std::uint8_t>(m_heldCount - count);
        std::memmove(m_held, m_held + count, m_heldCount);
    }
    return m_heldCount == 0;
}

}  // namespace Orska::Support
