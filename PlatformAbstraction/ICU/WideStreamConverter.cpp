#include "PlatformAbstraction/ICU/WideStreamConverter.h"

#include <algorithm>
#include <cstring>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\ICU\\WideStreamConverter";

icu::LocalUConverterPointer Open(EncodingType in_encoding) {
    return OpenConverter(
        in_encoding,
        TraceSite{"Orska::Support::WideStreamConverter::WideStreamConverter", SOURCE, 0});
}

// ICU's "buffer overflow" means that the buffer is full, which is how most calls end.
void CheckStatus(UErrorCode in_status, const char* in_function) {
    if (in_status != U_ZERO_ERROR && in_status != U_BUFFER_OVERFLOW_ERROR) {
        ORSKA_THROW((TraceSite{in_function, SOURCE, 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErrNotRecog"));
    }
}

}  // namespace

WideStreamConverter::WideStreamConverter(EncodingType in_source, EncodingType in_target,
                                         std::uint8_t in_flag)
    : StreamConverter(in_source, in_target, in_flag),
      m_sourceConverter(Open(in_source)),
      m_targetConverter(Open(in_target)),
      m_mostBytesPerUnit(ucnv_getMaxCharSize(m_targetConverter.getAlias())) {}

void WideStreamConverter::DoConvert(std::uint64_t in_bytesWanted) {
    GetSourceRemaining();  // refuses a wrong position before anything is written
    char* const limit = GetTargetLimit(in_bytesWanted);
    bool isRoomLeft = CopyHeldOutput(limit) && DoRegularConvert(limit);
    while (isRoomLeft && !m_isSourceConsumed) {
        ConvertSourceToIntermediate();
        isRoomLeft = DoRegularConvert(limit);
    }
    if (isRoomLeft) {
        HoldEndOfText();
        isRoomLeft = CopyHeldOutput(limit);
    }
    if (!isRoomLeft) {
        SetTargetIsTooSmall();
        return;
    }
    m_isTargetFilled = m_targetPosition == limit;
    m_hasDataRemaining = false;
}

void WideStreamConverter::DoConvertWithNul() {
    GetSourceRemaining();
    const std::uint64_t space = GetTargetSpace();
    if (space < m_targetCodeUnitWidth) {
        SetTargetIsTooSmall();
        return;
    }
    char* const limit = m_targetPosition + (space - m_targetCodeUnitWidth);
    if (ConvertWholeCodePointWithPartials(limit)) {
        FinishConvertForNulTerminated(limit);
    }
    WriteNul();
}

void WideStreamConverter::Reset() {
    StreamConverter::Reset();
    ucnv_reset(m_sourceConverter.getAlias());
    ucnv_reset(m_targetConverter.getAlias());
    m_isFinished = false;
    m_heldCount = 0;
    m_read = m_intermediate;
    m_fill = m_intermediate;
}

// Called when the intermediate buffer is empty. At the end of the text ICU is told so, and replaces
// an incomplete code point.
void WideStreamConverter::ConvertSourceToIntermediate() {
    const std::uint64_t remaining = GetSourceRemaining();
    const std::uint64_t count = std::min(remaining, ICU_MOST_BYTES_PER_CALL);
    const bool isAll = count == remaining;
    UChar* fill = m_intermediate;
    m_isFinished = false;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(m_sourceConverter.getAlias(), &fill, m_intermediate + INTERMEDIATE_UNITS,
                   &m_sourcePosition, m_sourcePosition + count, nullptr, m_isLastPiece && isAll,
                   &status);
    m_read = m_intermediate;
    m_fill = fill;
    m_hasDataRemaining = true;
    CheckStatus(status, "Orska::Support::WideStreamConverter::ConvertSourceToIntermediate");
    m_isSourceConsumed = status == U_ZERO_ERROR && isAll;
}

// Converts the intermediate buffer, cutting code points where the target ends; ICU itself keeps the
// rest of a cut one. False: the target is full.
bool WideStreamConverter::DoRegularConvert(char* in_limit) {
    bool isRoomLeft = false;
    char* limit = m_targetPosition;
    do {
        limit += std::min(static_cast<std::uint64_t>(in_limit - limit), ICU_MOST_BYTES_PER_CALL);
        isRoomLeft = ConvertUnits(limit, m_fill - m_read);
    } while (!isRoomLeft && limit < in_limit);
    return isRoomLeft;
}

// Gives out what an earlier target could not take, and with it what ICU kept of the same code
// point. False: this target cannot take it either; what it cannot take is held again.
bool WideStreamConverter::ConvertWholeCodePointWithPartials(char* in_limit) {
    if (m_heldCount == 0) {
        return true;
    }
    if (in_limit - m_targetPosition < m_heldCount) {
        SetTargetIsTooSmall();
        return false;
    }
    const char* const entry = m_targetPosition;
    CopyHeldOutput(in_limit);
    // No new units, so that all that is written belongs to one code point.
    if (ConvertUnits(in_limit, 0)) {
        return true;
    }
    HoldCutOutput(entry);
    SetTargetIsTooSmall();
    return false;
}

// Converts so that the target ends with a whole code point. The units are converted one by one, so
// that it is known where a code point begins, but as long as there is room for any output of many
// they go together. The first call passes no new unit and gives out what ICU kept.
void WideStreamConverter::FinishConvertForNulTerminated(char* in_limit) {
    std::int64_t units = 0;
    for (;;) {
        const char* const entry = m_targetPosition;
        if (!ConvertUnits(in_limit, units)) {
            HoldCutOutput(entry);
            SetTargetIsTooSmall();
            return;
        }
        if (IsIntermediateEmpty()) {
            if (m_isSourceConsumed) {
                break;
            }
            ConvertSourceToIntermediate();
        }
        units = CountUnitsThatFit(in_limit);
    }
    HoldEndOfText();
    if (ConvertWholeCodePointWithPartials(in_limit)) {
        m_isTargetFilled = m_targetPosition == in_limit;
        m_hasDataRemaining = false;
    }
}

// Converts units of the intermediate buffer; false: the limit cut the output, and ICU keeps the
// rest.
bool WideStreamConverter::ConvertUnits(char* in_limit, std::int64_t in_units) {
    if (m_isFinished) {
        return true;
    }
    const char* const entry = m_targetPosition;
    char* position = m_targetPosition;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(m_targetConverter.getAlias(), &position, in_limit, &m_read, m_read + in_units,
                     nullptr, false, &status);
    AdvanceTarget(static_cast<std::uint64_t>(position - entry));
    CheckStatus(status, "Orska::Support::WideStreamConverter::DoRegularConvert");
    return status == U_ZERO_ERROR;
}

// Called when all units have been converted: at the end of the text, holds what ends it.
void WideStreamConverter::HoldEndOfText() {
    if (m_isFinished || !m_isLastPiece) {
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    m_heldCount = EndText(*m_targetConverter, m_held, status);
    CheckStatus(status, "Orska::Support::WideStreamConverter::HoldEndOfText");
    m_isFinished = true;
}

// How many units of the intermediate buffer can be converted without being cut; at least 1 unless
// it is empty. The 10 units less are what ICU asks for on top, for shift sequences around the text.
std::int64_t WideStreamConverter::CountUnitsThatFit(const char* in_limit) const noexcept {
    const std::int64_t fitting = (in_limit - m_targetPosition) / m_mostBytesPerUnit - 10;
    return std::min<std::int64_t>(std::max<std::int64_t>(fitting, 1), m_fill - m_read);
}

// Takes the bytes of a cut code point back from the target, but no more than a code point may have
// by the encoding's table, so that a target with that much room always takes something.
void WideStreamConverter::HoldCutOutput(const char* in_entry) noexcept {
    const auto count = static_cast<std::uint8_t>(
        std::min<std::int64_t>(m_targetPosition - in_entry, m_targetMostBytesPerCodePoint));
    m_targetPosition -= count;
    m_totalBytesWritten -= count;
    std::memcpy(m_held, m_targetPosition, count);
    std::memset(m_targetPosition, 0, count);
    m_heldCount = count;
}

// Copies as much of the held output as fits; true when none is left.
bool WideStreamConverter::CopyHeldOutput(const char* in_limit) noexcept {
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
