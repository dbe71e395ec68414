/// The stream converter for all other pairs: two ICU converters with UTF-16 between them. If one
/// side is a Unicode encoding, latin1 or cp1252, its ICU converter only handles malformed or cut
/// code points; a faster way converts the rest with the same result.
///
/// Malformed input, an incomplete code point at the end of the last piece included, and code points
/// that the target lacks are substituted as ICU does by default. A stateful target encoding returns
/// to its initial state at the end of the last piece. ICU's own conversion differs in one point: HZ
/// does not return to ASCII.
///
/// DoConvertWithNul keeps code points whole: one that does not fit before the NUL is held for the
/// next target. If a code point takes more bytes than the encoding's table allows (only by the
/// shift sequences of ISO-2022), the surplus stays in the first target; joined, the parts are
/// right. A target without room for the held bytes gets nothing.
#ifndef PLATFORMABSTRACTION_ICU_WIDESTREAMCONVERTER_H
#define PLATFORMABSTRACTION_ICU_WIDESTREAMCONVERTER_H

#include <unicode/ucnv.h>

#include "PlatformAbstraction/ICU/IcuConverters.h"
#include "PlatformAbstraction/ICU/StreamConverter.h"
#include "PlatformAbstraction/ICU/UnicodeForms.h"

namespace Orska::Support {

class WideStreamConverter final : public StreamConverter {
public:
    /// @throws ErrorException "ICUCreateUConverterErr" with the name of the encoding
    WideStreamConverter(EncodingType in_source, EncodingType in_target, std::uint8_t in_flag);

    using StreamConverter::DoConvert;
    void DoConvert(std::uint64_t in_bytesWanted) override;
    void DoConvertWithNul() override;
    void Reset() override;

private:
    void ConvertSourceToIntermediate();
    bool ConvertWithoutIntermediate(char* in_limit);
    bool DoRegularConvert(char* in_limit);
    bool ConvertWholeCodePointWithPartials(char* in_limit);
    void FinishConvertForNulTerminated(char* in_limit);

    std::int32_t ReadDirectly();
    std::int32_t ReadThroughIcu();
    std::uint64_t CountBytesForIcu() const noexcept;
    bool ConvertUnits(char* in_limit, std::int64_t in_units);
    bool WriteDirectly(const char* in_limit, const UChar* in_end);
    bool WriteThroughIcu(const char* in_limit, const UChar* in_end);
    void HoldEndOfText();
    void FinishText() noexcept;
    std::int64_t CountUnitsThatFit(const char* in_limit) const noexcept;
    void HoldCutOutput(const char* in_entry) noexcept;
    bool IsIntermediateEmpty() const noexcept { return m_read == m_fill; }

    static constexpr std::size_t INTERMEDIATE_UNITS = 7168;

    const icu::LocalUConverterPointer m_sourceConverter;
    const icu::LocalUConverterPointer m_targetConverter;
    /// The faster ways to and from UTF-16, null if only ICU can convert. ICU still converts code
    /// points that are malformed or cut by the end of a piece or target.
    const TranscoderFunction m_decoder;
    const TranscoderFunction m_encoder;
    /// ICU converts UTF-8 to many encodings without UTF-16.
    const bool m_isIcuDirect;
    /// The most bytes of one UTF-16 code unit, shift sequences included.
    const std::int64_t m_mostBytesPerUnit;
    bool m_isIcuReading = false;  ///< the source's converter keeps input or output
    bool m_isIcuWriting = false;  ///< the target's converter does
    bool m_isFinished = false;    ///< the text has ended; both converters are reset
    UChar* m_read = m_intermediate;
    UChar* m_fill = m_intermediate;
    UChar m_intermediate[INTERMEDIATE_UNITS];
};

}  // namespace Orska::Support

#endif
