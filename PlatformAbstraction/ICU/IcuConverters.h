/// Functions that the ICU converters of this folder share: they open converters and do what ICU
/// leaves undone.
#ifndef PLATFORMABSTRACTION_ICU_ICUCONVERTERS_H
#define PLATFORMABSTRACTION_ICU_ICUCONVERTERS_H

#include <unicode/ucnv.h>

#include <cstdint>

#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/strings/EncodingType.h"

namespace Orska::Support {

/// The most bytes that one call of an ICU converter gets: ICU refuses buffers of 2 GiB.
constexpr std::uint64_t ICU_MOST_BYTES_PER_CALL = std::uint64_t{1} << 30;

/// Opens an ICU converter of a legal encoding. This costs far more than a short conversion.
/// @param in_site  the place that the trace shows if it fails
/// @throws ErrorException "ICUCreateUConverterErr" with the encoding's ICU name
icu::LocalUConverterPointer OpenConverter(EncodingType in_encoding, const TraceSite& in_site);

/// Makes a converter of OpenConverter that has ended a text as good as new: even after ucnv_reset,
/// ICU keeps the substitute that it chose for a code point until it writes the next one.
void ForgetSubstitute(UConverter& io_converter) noexcept;

/// The same for a converter in any state.
void ResetConverter(UConverter& io_converter) noexcept;

/// True for the encodings with shift states, ISO-2022 and HZ, whose texts must be ended by EndText.
bool IsStateful(const UConverter& in_converter) noexcept;

/// The most bytes that EndText writes.
constexpr std::uint32_t ICU_MOST_END_BYTES = 16;

/// Ends a text: writes the bytes that are still missing, often none, and leaves the converter in
/// its initial state. The bytes are the sequence that returns to that state in a stateful encoding
/// (HZ too, which ICU leaves open) and the substitute for a lead surrogate at the end.
/// @param io_converter  has converted all units of the text without a flush and holds no output
/// @param out_bytes     ICU_MOST_END_BYTES bytes
/// @return the number of bytes
std::uint8_t EndText(UConverter& io_converter, char* out_bytes, UErrorCode& io_status);

}  // namespace Orska::Support

#endif
