/// The stream converter for all pairs that have no direct way: two ICU converters with UTF-16
/// between them. Where one side is an encoding of Unicode, latin1 or cp1252, its ICU converter only
/// does what is malformed or cut; the rest goes the faster way that gives the same.
///
/// Malformed input, an incomplete code point at the end of the last piece included, and code
/// points that the target lacks are substituted as ICU does by default. A stateful target encoding
/// is led back to its initial state at the end of the last piece.
/// ICU's own conversion differs in one point: it does not lead HZ back.
///
/// DoConvertWithNul keeps code points whole: one that does not fit in front of the NUL is
/// held for the next target. If a code point takes more bytes than the encoding's table allows
/// (only by the shift sequences of ISO-2022), the surplus stays in the first target; joined, the
/// parts are right. A target that cannot take what is held takes nothing.
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
    bool CopyHeldOutput(const char* in_limit) noexcept;
    bool IsIntermediateEmpty() const noexcept { return m_read == m_fill; }

    static constexpr std::size_t INTERMEDIATE_UNITS = 7168;

    const icu::LocalUConverterPointer m_sourceConverter;
    const icu::LocalUConverterPointer m_targetConverter;
    /// The faster ways to and from UTF-16, null where ICU is the only one. ICU still converts what
    /// is malformed or cut by the end of a piece or target.
    const TranscoderFunction m_decoder;
    const TranscoderFunction m_encoder;
    /// ICU has ways of its own from UTF-8 to many encodings.
    const bool m_isIcuDirect;
    /// The most bytes that one UTF-16 code unit can give, shift sequences included.
    const std::int64_t m_mostBytesPerUnit;
    bool m_isIcuReading = false;  ///< the source's converter keeps input or output
    bool m_isIcuWriting = false;  ///< the target's converter does
    bool m_isFinished = false;    ///< the text has ended; both converters are as new
    std::uint8_t m_heldCount = 0;
    char m_held[ICU_MOST_END_BYTES] = {};
    UChar* m_read = m_intermediate;
    UChar* m_fill = m_intermediate;
    UChar m_intermediate[INTERMEDIATE_UNITS];
};

}  // namespace Orska::Support

#endif
