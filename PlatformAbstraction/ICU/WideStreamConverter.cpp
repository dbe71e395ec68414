#include "PlatformAbstraction/ICU/WideStreamConverter.h"

#include <algorithm>
#include <cstring>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\ICU\\WideStreamConverter";

icu::LocalUConverterPointer Open(EncodingType in_encoding) {
    return OpenConverter(
        in_encoding,
        TraceSite{"Orska::Support::WideStreamConverter::WideStreamConverter", SOURCE, 0});
}

// ICU's "buffer overflow" means that the buffer is full, which is how most calls end. One of its
// functions also warns when a full buffer has no room for a NUL.
void CheckStatus(UErrorCode in_status, const char* in_function) {
    if (in_status != U_ZERO_ERROR && in_status != U_BUFFER_OVERFLOW_ERROR &&
        in_status != U_STRING_NOT_TERMINATED_WARNING) {
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
      m_decoder(GetUtf16Decoder(in_source)),
      m_encoder(GetUtf16Encoder(in_target)),
      m_isIcuDirect(in_source == EncodingType::ENC_UTF8 && m_encoder == nullptr &&
                    ucnv_getMaxCharSize(m_targetConverter.getAlias()) <= 2),
      m_mostBytesPerUnit(ucnv_getMaxCharSize(m_targetConverter.getAlias())) {}

void WideStreamConverter::DoConvert(std::uint64_t in_bytesWanted) {
    GetSourceRemaining();  // refuses a wrong position before anything is written
    char* const limit = GetTargetLimit(in_bytesWanted);
    bool isRoomLeft = CopyHeldOutput(limit);
    if (isRoomLeft) {
        isRoomLeft = m_isIcuDirect ? ConvertWithoutIntermediate(limit) : DoRegularConvert(limit);
    }
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
    ResetConverter(*m_targetConverter);
    m_isIcuReading = false;
    m_isIcuWriting = false;
    m_isFinished = false;
    m_read = m_intermediate;
    m_fill = m_intermediate;
}

// Called when the intermediate buffer is empty: fills it from the source position on.
void WideStreamConverter::ConvertSourceToIntermediate() {
    m_isFinished = false;
    m_hasDataRemaining = true;
    m_read = m_intermediate;
    m_fill = m_intermediate;
    std::int32_t result = TRANSCODER_INCOMPLETE;
    do {
        if (m_decoder != nullptr && !m_isIcuReading) {
            result = ReadDirectly();
        }
        if (result == TRANSCODER_INCOMPLETE || result == TRANSCODER_INVALID) {
            result = ReadThroughIcu();
        }
    } while (result == TRANSCODER_INCOMPLETE);
    m_isSourceConsumed = result == TRANSCODER_DONE;
}

// Reads well-formed text; returns the transcoder's result.
std::int32_t WideStreamConverter::ReadDirectly() {
    TranscoderSource source{m_sourcePosition, GetSourceRemaining(), 0};
    TranscoderTarget target{reinterpret_cast<char*>(m_intermediate), sizeof(m_intermediate),
                            static_cast<std::uint64_t>(m_fill - m_intermediate) * sizeof(UChar)};
    const std::int32_t result = m_decoder(source, target);
    m_sourcePosition += source.m_position;
    m_fill = m_intermediate + target.m_position / sizeof(UChar);
    return result;
}

// Reads through ICU: everything, or, if there is a faster way, only past the malformed or cut
// place. Returns DONE when the piece has been read, FULL, or INCOMPLETE when there is more to read.
std::int32_t WideStreamConverter::ReadThroughIcu() {
    const std::uint64_t remaining = GetSourceRemaining();
    const std::uint64_t count = std::min(remaining, CountBytesForIcu());
    UErrorCode status = U_ZERO_ERROR;
    // At the end of the text ICU flushes, and so replaces an incomplete code point.
    ucnv_toUnicode(m_sourceConverter.getAlias(), &m_fill, m_intermediate + INTERMEDIATE_UNITS,
                   &m_sourcePosition, m_sourcePosition + count, nullptr,
                   m_isLastPiece && count == remaining, &status);
    CheckStatus(status, "Orska::Support::WideStreamConverter::ConvertSourceToIntermediate");
    UErrorCode countStatus = U_ZERO_ERROR;
    m_isIcuReading = status == U_BUFFER_OVERFLOW_ERROR ||
                     ucnv_toUCountPending(m_sourceConverter.getAlias(), &countStatus) > 0;
    if (status == U_BUFFER_OVERFLOW_ERROR) {
        return TRANSCODER_FULL;
    }
    return count == remaining ? TRANSCODER_DONE : TRANSCODER_INCOMPLETE;
}

// Converts the piece with ICU alone, which converts UTF-8 without UTF-16 in between. False: the
// target is full.
bool WideStreamConverter::ConvertWithoutIntermediate(char* in_limit) {
    if (m_isFinished && m_isSourceConsumed) {
        return true;
    }
    do {
        const std::uint64_t remaining = GetSourceRemaining();
        const std::uint64_t count = std::min(remaining, ICU_MOST_BYTES_PER_CALL);
        const auto room = static_cast<std::uint64_t>(in_limit - m_targetPosition);
        char* const limit = m_targetPosition + std::min(room, ICU_MOST_BYTES_PER_CALL);
        const bool isEnd = m_isLastPiece && count == remaining;
        char* position = m_targetPosition;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_convertEx(m_targetConverter.getAlias(), m_sourceConverter.getAlias(), &position, limit,
                       &m_sourcePosition, m_sourcePosition + count, m_intermediate, &m_read,
                       &m_fill, m_intermediate + INTERMEDIATE_UNITS, false, isEnd, &status);
        AdvanceTarget(static_cast<std::uint64_t>(position - m_targetPosition));
        CheckStatus(status, "Orska::Support::WideStreamConverter::DoRegularConvert");
        const bool isCut = status == U_BUFFER_OVERFLOW_ERROR;
        // Both converters may keep something, so only ICU can go on.
        m_isIcuReading = true;
        m_isIcuWriting = isCut;
        if (isEnd && !isCut) {
            FinishText();
        }
        m_isSourceConsumed = count == remaining && !isCut;
        if (isCut && limit == in_limit) {
            return false;
        }
    } while (!m_isSourceConsumed);
    return true;
}

// Converts the intermediate buffer. The end of the target cuts a code point; ICU keeps its rest.
// False: the target is full.
bool WideStreamConverter::DoRegularConvert(char* in_limit) {
    bool isRoomLeft = false;
    char* limit = m_targetPosition;
    do {
        limit += std::min(static_cast<std::uint64_t>(in_limit - limit), ICU_MOST_BYTES_PER_CALL);
        isRoomLeft = ConvertUnits(limit, m_fill - m_read);
    } while (!isRoomLeft && limit < in_limit);
    return isRoomLeft;
}

// Writes the bytes that did not fit into an earlier target, and those of the same code point that
// ICU kept. False: they do not fit here either, and are held again.
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
    // No new units, so all bytes belong to one code point.
    if (ConvertUnits(in_limit, 0)) {
        return true;
    }
    HoldCutOutput(entry);
    SetTargetIsTooSmall();
    return false;
}

// Converts so that the target ends with a whole code point. It converts many units at once while
// there is room for any output of them, then one by one, because it has to know where a code point
// begins. The first call passes no new unit and writes what ICU kept.
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

// Converts units of the intermediate buffer; false: the limit cut the output, and ICU keeps
// the rest.
bool WideStreamConverter::ConvertUnits(char* in_limit, std::int64_t in_units) {
    if (m_isFinished || (in_units == 0 && !m_isIcuWriting)) {
        return true;
    }
    const UChar* const end = m_read + in_units;
    do {
        if (m_encoder != nullptr && !m_isIcuWriting && WriteDirectly(in_limit, end)) {
            return true;
        }
        // If there is a faster way, ICU converts only the code point that it left out.
        const UChar* const icuEnd =
            m_encoder == nullptr ? end : m_read + std::min<std::int64_t>(end - m_read, 2);
        if (!WriteThroughIcu(in_limit, icuEnd)) {
            return false;
        }
    } while (m_read < end);
    return true;
}

// How many bytes ICU reads before the faster way is tried again.
std::uint64_t WideStreamConverter::CountBytesForIcu() const noexcept {
    constexpr std::uint64_t BYTES_AROUND_A_MALFORMED_PLACE = 8;
    if (m_decoder == nullptr) {
        return ICU_MOST_BYTES_PER_CALL;
    }
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t pending = ucnv_toUCountPending(m_sourceConverter.getAlias(), &status);
    if (pending == 0) {
        return BYTES_AROUND_A_MALFORMED_PLACE;
    }
    // One code unit more, so that ICU stops after the code point.
    const std::int32_t width = EncodingInfo::GetCodeUnitWidth(m_sourceEncoding);
    return static_cast<std::uint64_t>(width - pending % width);
}

// Writes whole code points; true when all units have been converted.
bool WideStreamConverter::WriteDirectly(const char* in_limit, const UChar* in_end) {
    TranscoderSource source{reinterpret_cast<const char*>(m_read),
                            static_cast<std::uint64_t>(in_end - m_read) * sizeof(UChar), 0};
    TranscoderTarget target{m_targetPosition,
                            static_cast<std::uint64_t>(in_limit - m_targetPosition), 0};
    const std::int32_t result = m_encoder(source, target);
    m_read += source.m_position / sizeof(UChar);
    AdvanceTarget(target.m_position);
    return result == TRANSCODER_DONE;
}

// Writes through ICU; false: the limit cut the output, and ICU keeps the rest.
bool WideStreamConverter::WriteThroughIcu(const char* in_limit, const UChar* in_end) {
    char* position = m_targetPosition;
    const UChar* read = m_read;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(m_targetConverter.getAlias(), &position, in_limit, &read, in_end, nullptr,
                     false, &status);
    m_read += read - m_read;
    AdvanceTarget(static_cast<std::uint64_t>(position - m_targetPosition));
    CheckStatus(status, "Orska::Support::WideStreamConverter::DoRegularConvert");
    UErrorCode countStatus = U_ZERO_ERROR;
    m_isIcuWriting = status == U_BUFFER_OVERFLOW_ERROR ||
                     ucnv_fromUCountPending(m_targetConverter.getAlias(), &countStatus) > 0;
    return status == U_ZERO_ERROR;
}

// Called when all units have been converted: at the end of the text, holds its last bytes.
void WideStreamConverter::HoldEndOfText() {
    if (m_isFinished || !m_isLastPiece) {
        return;
    }
    static_assert(MOST_HELD_BYTES >= ICU_MOST_END_BYTES);
    UErrorCode status = U_ZERO_ERROR;
    if (IsStateful(*m_targetConverter) || m_isIcuWriting) {
        m_heldCount = EndText(*m_targetConverter, m_held, status);
    }
    CheckStatus(status, "Orska::Support::WideStreamConverter::HoldEndOfText");
    FinishText();
}

void WideStreamConverter::FinishText() noexcept {
    ForgetSubstitute(*m_targetConverter);
    m_isIcuWriting = false;
    m_isFinished = true;
}

// How many units of the intermediate buffer can be converted without being cut; at least 1 unless
// it is empty. The 10 units less are the extra room that ICU asks for, for shift sequences around
// the text.
std::int64_t WideStreamConverter::CountUnitsThatFit(const char* in_limit) const noexcept {
    const std::int64_t fitting = (in_limit - m_targetPosition) / m_mostBytesPerUnit - 10;
    return std::min<std::int64_t>(std::max<std::int64_t>(fitting, 1), m_fill - m_read);
}

// Moves the bytes of a cut code point from the target into the held output, but no more than a code
// point has by the encoding's table: so a target with that much room always gets something.
void WideStreamConverter::HoldCutOutput(const char* in_entry) noexcept {
    const auto count = static_cast<std::uint8_t>(
        std::min<std::int64_t>(m_targetPosition - in_entry, m_targetMostBytesPerCodePoint));
    m_targetPosition -= count;
    m_totalBytesWritten -= count;
    std::memcpy(m_held, m_targetPosition, count);
    std::memset(m_targetPosition, 0, count);
    m_heldCount = count;
}

}  // namespace Orska::Support
