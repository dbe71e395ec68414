/// The platform's converter between strings and bytes in any of the encodings. The platform object
/// owns one. It is thread-safe.
///
/// Text in the Unicode encodings, latin1, cp1252 and US-ASCII is converted directly, all else by
/// ICU converters. These are costly to open, so each encoding has a pool of them, which grows to as
/// many as convert at the same time. A pool's lock is held only to take or return a converter.
#ifndef PLATFORMABSTRACTION_ICU_WIDESTRINGCONVERTER_H
#define PLATFORMABSTRACTION_ICU_WIDESTRINGCONVERTER_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "../strings/IPlatformStringConverter.h"

namespace Orska::Support {

class WideStringConverter final : public IPlatformStringConverter {
public:
    WideStringConverter();
    WideStringConverter(const WideStringConverter&) = delete;
    WideStringConverter& operator=(const WideStringConverter&) = delete;
    /// Closes all ICU converters. No thread may be converting.
    ~WideStringConverter() override;

    // All operations throw ErrorException "EncodingNotRecog" for a value that is not an encoding.

    /// See IPlatformStringConverter. Malformed bytes become U+FFFD, or ICU's replacement for the
    /// encoding. A null pointer becomes NULL. After an exception the result's text is unspecified.
    /// @throws ErrorException also "ICUConvErr" for any other negative length
    void ConvertToWString(const char* in_bytes, std::int64_t in_byteLength,
                          EncodingType in_encoding, orska_wstring& out_result) override;

    /// Counts the bytes with which a stateful encoding returns to its initial state.
    std::int64_t GetLengthInBytes(const orska_wstring& in_string,
                                  EncodingType in_encoding) override;

    /// Writes whole code points only, and the return to the initial state in a stateful encoding.
    /// Bytes of the buffer after the result may become zeros if the text does not fit.
    /// @throws ErrorException "ICUConvErr" for a negative length, or when ICU fails
    std::int64_t ConvertFromWString(const orska_wstring& in_string, char* out_buffer,
                                    std::int64_t in_bufferLength,
                                    EncodingType in_encoding) override;

    /// As above.
    /// @param out_truncated  true when the text did not fit
    std::int64_t ConvertFromWString(const orska_wstring& in_string, char* out_buffer,
                                    std::int64_t in_bufferLength, EncodingType in_encoding,
                                    bool& out_truncated);

    /// The NUL is as wide as the encoding's code unit. A null pointer has length 0.
    std::int64_t GetNulTerminatedStringLength(const char* in_buffer,
                                              EncodingType in_encoding) override;

    /// How many open ICU converters of a legal encoding are in its pool now.
    std::size_t CountPooledConverters(EncodingType in_encoding) const;

private:
    struct ConverterPool;
    class AutoPoolConverter;

    ConverterPool& GetPool(EncodingType in_encoding) const;

    const std::unique_ptr<ConverterPool[]> m_pools;  // one for each encoding
};

}  // namespace Orska::Support

#endif
