/// The string converter that a started platform installs into orska_wstring. The interface is
/// beside the string, so that strings do not depend on the converters; WideStringConverter
/// implements it. Any thread may call an implementation.
#ifndef PLATFORMABSTRACTION_IPLATFORMSTRINGCONVERTER_H
#define PLATFORMABSTRACTION_IPLATFORMSTRINGCONVERTER_H

#include <cstdint>

#include "EncodingType.h"

namespace Orska::Support {

class orska_wstring;

class IPlatformStringConverter {
public:
    virtual ~IPlatformStringConverter() = default;

    /// Sets `out_result` to the text of the bytes.
    /// @param in_byteLength  bytes; -3: up to the first NUL code unit
    /// @throws ErrorException "ICUConvErr" when ICU fails, "ICUCreateUConverterErr" when the
    ///         encoding's converter cannot be opened
    virtual void ConvertToWString(const char* in_bytes, std::int64_t in_byteLength,
                                  EncodingType in_encoding, orska_wstring& out_result) = 0;

    /// The length of a string in an encoding, in bytes; 0 for a NULL string.
    virtual std::int64_t GetLengthInBytes(const orska_wstring& in_string,
                                          EncodingType in_encoding) = 0;

    /// Writes a string in an encoding, without a terminator.
    /// @param in_bufferLength  bytes
    /// @return bytes written, at most `in_bufferLength`
    virtual std::int64_t ConvertFromWString(const orska_wstring& in_string, char* out_buffer,
                                            std::int64_t in_bufferLength,
                                            EncodingType in_encoding) = 0;

    /// The length in bytes of a NUL-terminated buffer, not counting the terminator.
    /// @throws ErrorException "EncodingNotRecog" when the encoding cannot be measured
    virtual std::int64_t GetNulTerminatedStringLength(const char* in_buffer,
                                                      EncodingType in_encoding) = 0;
};

}  // namespace Orska::Support

#endif
