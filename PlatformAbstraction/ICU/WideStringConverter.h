/// The string converter of the platform: between strings and bytes in any of the encodings. The
/// platform object owns one; any thread may use it at any time.
///
/// Text in the Unicode encodings, latin1, cp1252 and US-ASCII is converted directly, all else by
/// ICU converters. These are costly to open, so they are kept in a pool for each encoding, which
/// grows to as many as convert at the same time. A pool's lock is held only to take or to return a
/// converter.
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

    // All operations throw ErrorException "EncodingNotRecog" for a value that is no encoding.

    /// See IPlatformStringConverter. Malformed bytes become U+FFFD, or what ICU has for the
    /// encoding. A null pointer gives NULL. After an exception the result holds some text.
    /// @throws ErrorException also "ICUConvErr" for any other negative length
    void ConvertToWString(const char* in_bytes, std::int64_t in_byteLength,
                          EncodingType in_encoding, orska_wstring& out_result) override;

    /// What a stateful encoding needs to end in its initial state is counted.
    std::int64_t GetLengthInBytes(const orska_wstring& in_string,
                                  EncodingType in_encoding) override;

    /// Writes whole code points only and, in a stateful encoding, back to the initial state. Bytes
    /// of the buffer after the result may be set to zero if the text did not fit.
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

    /// How many open ICU converters of a legal encoding lie in its pool just now.
    std::size_t CountPooledConverters(EncodingType in_encoding) const;

private:
    struct ConverterPool;
    class AutoPoolConverter;

    ConverterPool& GetPool(EncodingType in_encoding) const;

    const std::unique_ptr<ConverterPool[]> m_pools;  // one an encoding
};

}  // namespace Orska::Support

#endif
