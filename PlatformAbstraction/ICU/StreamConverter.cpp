#include "PlatformAbstraction/ICU/StreamConverter.h"

#include <algorithm>
#include <cstring>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/EncodingInfo.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\ICU\\StreamConverter";

}  // namespace

StreamConverter::StreamConverter(EncodingType in_source, EncodingType in_target,
                                 std::uint8_t in_flag)
    : m_sourceEncoding(in_source),
      m_targetEncoding(in_target),
      m_flag(in_flag),
      m_targetCodeUnitWidth(EncodingInfo::GetCodeUnitWidth(in_target)),
      m_targetMostBytesPerCodePoint(static_cast<std::uint8_t>(
          EncodingInfo::GetMaxCodeUnitsPerCodePoint(in_target) * m_targetCodeUnitWidth)) {}

void StreamConverter::SetSource(const char* in_start, std::uint64_t in_length, bool in_isLast) {
    m_sourceStart = in_start;
    m_sourceLength = in_length;
    m_sourcePosition = in_start;
    m_isSourceConsumed = false;
    m_isLastPiece = in_isLast;
}

void StreamConverter::SetTarget(char* in_start, std::uint64_t in_length) {
    m_targetStart = in_start;
    m_targetLength = in_length;
    m_targetPosition = in_start;
    m_isTargetFilled = false;
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
}

void StreamConverter::SetSourcePosition(std::uint64_t in_position) {
    m_sourcePosition = m_sourceStart + in_position;
    m_isSourceConsumed = false;
}

void StreamConverter::SetTargetPosition(std::uint64_t in_position) {
    m_targetPosition = m_targetStart + in_position;
}

std::uint64_t StreamConverter::GetSourcePosition() const noexcept {
    return static_cast<std::uint64_t>(m_sourcePosition - m_sourceStart);
}

std::uint64_t StreamConverter::GetTargetPosition() const noexcept {
    return static_cast<std::uint64_t>(m_targetPosition - m_targetStart);
}

std::uint64_t StreamConverter::GetSourceRemaining() const {
    if (GetSourcePosition() > m_sourceLength) {
        ORSKA_THROW((TraceSite{"Orska::Support::StreamConverter::GetSourceRemaining", SOURCE, 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"InvalidBuffPos"));
    }
    return m_sourceLength - GetSourcePosition();
}

std::uint64_t StreamConverter::GetTargetSpace() const {
    if (GetTargetPosition() > m_targetLength) {
        ORSKA_THROW((TraceSite{"Orska::Support::StreamConverter::GetTargetSpace", SOURCE, 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"InvalidBuffPos"));
    }
    return m_targetLength - GetTargetPosition();
}

char* StreamConverter::GetTargetLimit(std::uint64_t in_bytesWanted) const {
    return m_targetPosition + std::min(in_bytesWanted, GetTargetSpace());
}

void StreamConverter::AdvanceTarget(std::uint64_t in_bytes) noexcept {
    m_targetPosition += in_bytes;
    m_totalBytesWritten += in_bytes;
}

void StreamConverter::SetTargetIsTooSmall() noexcept {
    m_isTargetFilled = true;
    m_hasDataRemaining = true;
}

void StreamConverter::WriteNul() noexcept {
    std::memset(m_targetPosition, 0, m_targetCodeUnitWidth);
}

}  // namespace Orska::Support
