/// The stream converter for the pairs of the transcoder: no ICU and no intermediate form.
///
/// It refuses malformed input with "ICUConvErrNotRecog", and also an incomplete code point at the
/// end of the last piece: the transcoder replaces nothing, so the caller decides. Bytes before the
/// malformed place are converted by then, and the source position is at that place (or after its
/// bytes that were in earlier pieces).
#ifndef PLATFORMABSTRACTION_ICU_SICONVSTREAMCONVERTER_H
#define PLATFORMABSTRACTION_ICU_SICONVSTREAMCONVERTER_H

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"
#include "PlatformAbstraction/ICU/StreamConverter.h"

namespace Orska::Support {

class SiconvStreamConverter final : public StreamConverter {
public:
    /// @param in_transcoder  the function of the pair
    SiconvStreamConverter(EncodingType in_source, EncodingType in_target, std::uint8_t in_flag,
                          TranscoderFunction in_transcoder);

    using StreamConverter::DoConvert;
    void DoConvert(std::uint64_t in_bytesWanted) override;
    void Reset() override;

private:
    // A TranscoderResult other than INCOMPLETE.
    std::int32_t DoSiconvConvert(TranscoderTarget& io_target);
    std::int32_t ConvertPendingInput(TranscoderTarget& io_target);
    std::int32_t KeepPendingInput() noexcept;
    std::int32_t ConvertStraddlingCodePoint(const char* in_limit);
    [[noreturn]] void ThrowInvalidInput() const;

    static constexpr std::uint32_t PENDING_INPUT_SIZE = 4;

    const TranscoderFunction m_transcoder;
    /// The incomplete code point at the end of the pieces so far.
    char m_pendingInput[PENDING_INPUT_SIZE] = {};
    std::uint8_t m_pendingInputLength = 0;
};

}  // namespace Orska::Support

#endif
