/// Converts text between strings and the character buffers of the ODBC interface: wide buffers
/// (SQLWCHAR) in the driver manager's encoding, narrow ones (SQLCHAR) in the process ANSI encoding.
///
/// Lengths follow ODBC: -3 marks a NUL-terminated argument, and lengths of wide buffers are in code
/// units unless a parameter says bytes. Output always ends with a NUL as wide as a code unit, never
/// splits a code point, and ends in the initial state of a stateful encoding. After the NUL the
/// buffer is unchanged, except for zeros in place of a code point that did not fit.
///
/// One instance serves the driver and is thread-safe. Threads wait for each other only if the
/// driver manager's encoding needs an ICU converter; the Unicode and the common single-byte
/// encodings do not.
#ifndef PLATFORMABSTRACTION_ICU_ODBCSTRINGCONVERTER_H
#define PLATFORMABSTRACTION_ICU_ODBCSTRINGCONVERTER_H

#include <unicode/ucnv.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string_view>

#include "../strings/EncodingType.h"
#include "../strings/orska_wstring.h"
#include "ShortText.h"

namespace Orska::Support {

class WideStringConverter;

class ODBCStringConverter {
public:
    /// Reads the process's driver-manager encoding and keeps it.
    /// @param in_converter  the platform's; must outlive this object
    /// @throws ErrorException "ICUCreateUConverterErr" with the encoding's ICU name,
    ///         "EncodingNotRecog" when there is none
    explicit ODBCStringConverter(WideStringConverter& in_converter);
    ODBCStringConverter(const ODBCStringConverter&) = delete;
    ODBCStringConverter& operator=(const ODBCStringConverter&) = delete;
    virtual ~ODBCStringConverter();

    /// Writes a string in the driver manager's encoding and ends it with a NUL, if there is room
    /// for one.
    /// @param out_buffer         a null pointer counts as a buffer of length 0
    /// @param in_bufferLength    code units (bytes if `in_lengthInBytes`), counting the NUL;
    ///                           -3: as long as the NUL-terminated text in it
    /// @param out_truncated      true when the text, or its NUL, did not fit
    /// @return code units (or bytes) written, without the NUL
    /// @throws ErrorException "ICUConvErrNotRecog" for a bad length; it or "ICUConvErr" when
    ///         ICU fails
    virtual std::int64_t ConvertWStringToSQLWCHARString(const orska_wstring& in_string,
                                                        void* out_buffer,
                                                        std::int64_t in_bufferLength,
                                                        bool in_lengthInBytes, bool& out_truncated);

    /// The same in the ANSI encoding; lengths are bytes and the NUL is one byte.
    virtual std::int64_t ConvertWStringToSQLCHARString(const orska_wstring& in_string,
                                                       char* out_buffer,
                                                       std::int64_t in_bufferLength,
                                                       bool& out_truncated);

    /// The length that a string has in the driver manager's encoding, without a NUL; 0 for NULL.
    /// @return bytes or code units
    /// @throws ErrorException "ICUConvErrNotRecog" when ICU fails, "StrByteAlignErr" when the bytes
    ///         are no whole code units
    virtual std::int64_t GetLengthAsSQLWCHARString(const orska_wstring& in_string, bool in_inBytes);

    /// The length that a string has in the ANSI encoding, in bytes; 0 for NULL.
    virtual std::int64_t GetLengthAsSQLCHARString(const orska_wstring& in_string);

    /// Sets a string from a buffer in the driver manager's encoding.
    /// @param in_buffer  null makes the string NULL
    /// @param in_length  code units (bytes if `in_lengthInBytes`), or -3
    /// @throws ErrorException "ICUConvErrNotRecog" for any other negative length, "ICUConvErr" when
    ///         ICU fails
    virtual void ConvertSQLWCHARToWString(const void* in_buffer, std::int64_t in_length,
                                          bool in_lengthInBytes, orska_wstring& out_result);

    /// The same from the ANSI encoding; lengths are bytes.
    virtual void ConvertSQLCHARToWString(const char* in_buffer, std::int64_t in_length,
                                         orska_wstring& out_result);

    /// The size of a SQLWCHAR buffer for narrow text, by the table of encodings. It is too small
    /// only for EUC-JP, ISO-2022 and HZ (17, 19, 22, 24, 25, 27, 28 and 67): the table has two
    /// bytes for their code points, which take up to three, and no shift sequences.
    /// @param in_length   bytes, or -3: up to the first NUL
    /// @param in_withNul  true: with room for a NUL
    /// @return bytes or code units
    /// @throws ErrorException "InvalidNullParam" for a null text, "ICUConvErrNotRecog" for
    ///         any other negative length and for a size beyond 32 bits
    static std::uint32_t GetSQLCHARToSQLWCHARMaxBufferLength(
        const ODBCStringConverter& in_converter, const char* in_text, std::int64_t in_length,
        bool in_inBytes, bool in_withNul);

    EncodingType GetDriverManagerEncoding() const noexcept { return m_encoding; }

private:
    std::int64_t Encode(std::u16string_view in_text, char* out_buffer, std::int64_t in_capacity,
                        bool& out_truncated);

    WideStringConverter& m_stringConverter;
    const EncodingType m_encoding;
    const std::uint8_t m_codeUnitWidth;              ///< bytes
    const std::uint8_t m_mostCodeUnitsPerCodePoint;  ///< by the table of encodings
    const std::uint8_t m_mostBytesPerCodePoint;
    const ShortEncoder m_shortEncoder;
    const ShortDecoder m_shortDecoder;
    const icu::LocalUConverterPointer m_converter;
    std::mutex m_lock;  ///< guards what m_converter points to
};

}  // namespace Orska::Support

#endif
