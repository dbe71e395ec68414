#include "PlatformAbstraction/ICU/SiconvStreamConverter.h"

#include <algorithm>
#include <cstring>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"

namespace Orska::Support {

SiconvStreamConverter::SiconvStreamConverter(EncodingType in_source, EncodingType in_target,
                                             std::uint8_t in_flag, TranscoderFunction in_transcoder)
    : StreamConverter(in_source, in_target, in_flag), m_transcoder(in_transcoder) {}

void SiconvStreamConverter::DoConvert(std::uint64_t in_bytesWanted) {
    GetSourceRemaining();  // refuses a wrong position before anything is written
    char* const limit = GetTargetLimit(in_bytesWanted);
    if (!CopyHeldOutput(limit)) {
        SetTargetIsTooSmall();
        return;
    }
    TranscoderTarget target{m_targetPosition, static_cast<std::uint64_t>(limit - m_targetPosition),
                            0};
    std::int32_t outcome = DoSiconvConvert(target);
    AdvanceTarget(target.m_position);
    if (outcome == TRANSCODER_FULL && m_targetPosition < limit) {
        outcome = ConvertStraddlingCodePoint(limit);
    }
    const bool isOutputHeld = m_heldCount > 0;
    // The bytes before the malformed place are delivered first; the next call finds it again.
    if (outcome == TRANSCODER_INVALID && !isOutputHeld) {
        ThrowInvalidInput();
    }
    m_isSourceConsumed = outcome == TRANSCODER_DONE;
    m_hasDataRemaining = outcome != TRANSCODER_DONE || isOutputHeld;
    m_isTargetFilled = m_targetPosition == limit;
}

void SiconvStreamConverter::Reset() {
    StreamConverter::Reset();
    m_pendingInputLength = 0;
}

// Converts as much of the pending input and the piece as fits.
std::int32_t SiconvStreamConverter::DoSiconvConvert(TranscoderTarget& io_target) {
    if (m_pendingInputLength > 0) {
        const std::int32_t outcome = ConvertPendingInput(io_target);
        if (outcome != TRANSCODER_DONE) {
            return outcome;
        }
    }
    TranscoderSource source{m_sourcePosition, GetSourceRemaining(), 0};
    const std::int32_t result = m_transcoder(source, io_target);
    m_sourcePosition += source.m_position;
    return result == TRANSCODER_INCOMPLETE ? KeepPendingInput() : result;
}

// Completes the pending code point with new bytes. DONE: the piece goes on at the source position.
std::int32_t SiconvStreamConverter::ConvertPendingInput(TranscoderTarget& io_target) {
    const std::uint64_t pending = m_pendingInputLength;
    const std::uint64_t added = std::min(GetSourceRemaining(), PENDING_INPUT_SIZE - pending);
    if (added > 0) {
        std::memcpy(m_pendingInput + pending, m_sourcePosition, added);
    }
    TranscoderSource joined{m_pendingInput, pending + added, 0};
    const std::int32_t result = m_transcoder(joined, io_target);
    if (joined.m_position > 0) {
        // The pending code point is complete. Whatever stopped the transcoder after it, the new
        // bytes that it did not use are still in the piece and are read again.
        m_sourcePosition += joined.m_position - pending;
        m_pendingInputLength = 0;
        return result == TRANSCODER_FULL ? TRANSCODER_FULL : TRANSCODER_DONE;
    }
    if (result == TRANSCODER_INCOMPLETE && GetSourceRemaining() == added) {
        return KeepPendingInput();
    }
    return result == TRANSCODER_FULL ? TRANSCODER_FULL : TRANSCODER_INVALID;
}

// Moves the rest of the piece, the beginning of one code point, into the pending input.
std::int32_t SiconvStreamConverter::KeepPendingInput() noexcept {
    const auto tail = static_cast<std::uint32_t>(m_sourceStart + m_sourceLength - m_sourcePosition);
    if (m_isLastPiece || m_pendingInputLength + tail >= PENDING_INPUT_SIZE) {
        return TRANSCODER_INVALID;
    }
    if (tail > 0) {
        std::memcpy(m_pendingInput + m_pendingInputLength, m_sourcePosition, tail);
    }
    m_pendingInputLength = static_cast<std::uint8_t>(m_pendingInputLength + tail);
    m_sourcePosition += tail;
    return TRANSCODER_DONE;
}

// Converts the code point that does not fit into the held output and fills the target with its
// first bytes. The room grows by single bytes, so no second code point gets in.
std::int32_t SiconvStreamConverter::ConvertStraddlingCodePoint(const char* in_limit) {
    std::int32_t outcome = TRANSCODER_FULL;
    TranscoderTarget target{m_held, static_cast<std::uint64_t>(in_limit - m_targetPosition), 0};
    while (outcome == TRANSCODER_FULL && target.m_position == 0 &&
           target.m_length < MOST_HELD_BYTES) {
        ++target.m_length;
        outcome = DoSiconvConvert(target);
    }
    m_heldCount = static_cast<std::uint8_t>(target.m_position);
    CopyHeldOutput(in_limit);
    return outcome;
}

void SiconvStreamConverter::ThrowInvalidInput() const {
    ORSKA_THROW((TraceSite{"Orska::Support::SiconvStreamConverter::DoSiconvConvert",
                           "PlatformAbstraction\\ICU\\SiconvStreamConverter", 0}),
                ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErrNotRecog"));
}

}  // namespace Orska::Support
