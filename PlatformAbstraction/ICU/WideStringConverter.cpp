#include "PlatformAbstraction/ICU/WideStringConverter.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <mutex>
#include <string_view>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/IcuConverters.h"
#include "PlatformAbstraction/ICU/ShortText.h"
#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "PlatformAbstraction/ICU/UnicodeForms.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/TextPool.h"
#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\ICU\\WideStringConverter";

[[noreturn]] void ThrowConversionError(const char* in_function) {
    ORSKA_THROW((TraceSite{in_function, SOURCE, 0}),
                ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"ICUConvErr"));
}

void CheckStatus(UErrorCode in_status, const char* in_function) {
    if (U_FAILURE(in_status)) {
        ThrowConversionError(in_function);
    }
}

// True when the bytes are inside the text that they will replace.
bool IsInside(const char* in_bytes, const icu::UnicodeString& in_text) noexcept {
    const char* const start = reinterpret_cast<const char*>(in_text.getBuffer());
    return !std::less<>()(in_bytes, start) &&
           std::less<>()(in_bytes, start + in_text.getCapacity() * sizeof(char16_t));
}

// Counts the bytes before the first zero code unit.
template <std::size_t WIDTH>
std::int64_t FindNul(const char* in_buffer) noexcept {
    constexpr char NUL[WIDTH] = {};
    const char* position = in_buffer;
    while (std::memcmp(position, NUL, WIDTH) != 0) {
        position += WIDTH;
    }
    return position - in_buffer;
}

}  // namespace

struct WideStringConverter::ConverterPool {
    std::mutex m_lock;
    std::vector<icu::LocalUConverterPointer> m_converters;
    std::size_t m_opened = 0;  ///< including those in use
};

/// Takes a converter from the pool for one conversion.
class WideStringConverter::AutoPoolConverter {
public:
    /// @throws ErrorException "ICUCreateUConverterErr" with the encoding's ICU name
    AutoPoolConverter(ConverterPool& io_pool, EncodingType in_encoding) : m_pool(io_pool) {
        {
            const std::lock_guard<std::mutex> lock(m_pool.m_lock);
            if (!m_pool.m_converters.empty()) {
                m_converter = std::move(m_pool.m_converters.back());
                m_pool.m_converters.pop_back();
                return;
            }
        }
        m_converter = OpenConverter(
            in_encoding,
            TraceSite{"Orska::Support::AutoPoolConverter::AutoPoolConverter", SOURCE, 0});
        // Reserves room for it in the list, so that returning it cannot fail.
        const std::lock_guard<std::mutex> lock(m_pool.m_lock);
        m_pool.m_converters.reserve(m_pool.m_opened + 1);
        ++m_pool.m_opened;
    }
    AutoPoolConverter(const AutoPoolConverter&) = delete;
    AutoPoolConverter& operator=(const AutoPoolConverter&) = delete;
    ~AutoPoolConverter() {
        const std::lock_guard<std::mutex> lock(m_pool.m_lock);
        m_pool.m_converters.push_back(std::move(m_converter));
    }

    UConverter& Get() noexcept { return *m_converter; }

private:
    ConverterPool& m_pool;
    icu::LocalUConverterPointer m_converter;
};

WideStringConverter::WideStringConverter()
    : m_pools(std::make_unique<ConverterPool[]>(ENCODING_COUNT)) {}

WideStringConverter::~WideStringConverter() = default;

// Only the low 16 bits of an encoding count, as everywhere.
WideStringConverter::ConverterPool& WideStringConverter::GetPool(EncodingType in_encoding) const {
    return m_pools[static_cast<std::uint16_t>(in_encoding)];
}

std::size_t WideStringConverter::CountPooledConverters(EncodingType in_encoding) const {
    ConverterPool& pool = GetPool(in_encoding);
    const std::lock_guard<std::mutex> lock(pool.m_lock);
    return pool.m_converters.size();
}

void WideStringConverter::ConvertToWString(const char* in_bytes, std::int64_t in_byteLength,
                                           EncodingType in_encoding, orska_wstring& out_result) {
    constexpr char FUNCTION[] = "Orska::Support::WideStringConverter::ConvertToWString";
    EncodingInfo::CheckEncodingType(in_encoding);
    if (in_bytes == nullptr) {
        out_result.SetImpl(nullptr);
        return;
    }
    const std::int64_t length = in_byteLength == orska_wstring::NUL_TERMINATED
                                    ? GetNulTerminatedStringLength(in_bytes, in_encoding)
                                    : in_byteLength;
    if (length < 0 || length > INT32_MAX) {
        ThrowConversionError(FUNCTION);
    }
    const std::string_view bytes(in_bytes, static_cast<std::size_t>(length));
    if (DecodeShortText(bytes, GetShortDecoder(in_encoding), out_result)) {
        return;
    }
    const TranscoderFunction decoder = GetUtf16Decoder(in_encoding);
    const auto most = static_cast<std::int32_t>(GetMostUtf16Units(in_encoding, bytes.size()));
    icu::UnicodeString* const text = out_result.GetImpl();
    if (decoder != nullptr && text != nullptr && most <= text->getCapacity() &&
        !IsInside(in_bytes, *text)) {
        // Null if others share the units and there is no memory for a copy.
        if (char16_t* const units = text->getBuffer(most)) {
            text->releaseBuffer(DecodeDirectly(bytes, in_encoding, decoder, units, most));
            return;
        }
    }
    TextOwner owner(AcquireText(decoder != nullptr ? most : 0));
    if (decoder != nullptr) {
        owner->truncate(DecodeDirectly(bytes, in_encoding, decoder, GetUnits(*owner), most));
    } else {
        AutoPoolConverter converter(GetPool(in_encoding), in_encoding);
        UErrorCode status = U_ZERO_ERROR;
        DecodeThroughIcu(converter.Get(), bytes, *owner, status);
        CheckStatus(status, FUNCTION);
    }
    out_result.SetImpl(owner.release());
}

std::int64_t WideStringConverter::GetLengthInBytes(const orska_wstring& in_string,
                                                   EncodingType in_encoding) {
    EncodingInfo::CheckEncodingType(in_encoding);
    const std::u16string_view text = in_string.GetView();
    const std::int64_t counted = MeasureDirectly(text, in_encoding);
    if (counted >= 0 || text.empty()) {
        return text.empty() ? 0 : counted;
    }
    AutoPoolConverter converter(GetPool(in_encoding), in_encoding);
    UErrorCode status = U_ZERO_ERROR;
    const std::int64_t measured = MeasureThroughIcu(converter.Get(), text, status);
    CheckStatus(status, "Orska::Support::WideStringConverter::GetLengthInBytes");
    return measured;
}

std::int64_t WideStringConverter::ConvertFromWString(const orska_wstring& in_string,
                                                     char* out_buffer, std::int64_t in_bufferLength,
                                                     EncodingType in_encoding) {
    bool isTruncated = false;
    return ConvertFromWString(in_string, out_buffer, in_bufferLength, in_encoding, isTruncated);
}

std::int64_t WideStringConverter::ConvertFromWString(const orska_wstring& in_string,
                                                     char* out_buffer, std::int64_t in_bufferLength,
                                                     EncodingType in_encoding,
                                                     bool& out_truncated) {
    constexpr char FUNCTION[] = "Orska::Support::WideStringConverter::ConvertFromWString";
    EncodingInfo::CheckEncodingType(in_encoding);
    if (in_bufferLength < 0) {
        ThrowConversionError(FUNCTION);
    }
    const std::u16string_view text = in_string.GetView();
    const std::int64_t capacity = GetUsableCapacity(text, in_bufferLength);
    const std::int64_t bytes =
        EncodeShortText(text, GetShortEncoder(in_encoding), out_buffer, capacity);
    if (bytes >= 0) {
        out_truncated = false;
        return bytes;
    }
    EncodedText encoded;
    if (!EncodeDirectly(text, out_buffer, capacity, in_encoding, encoded)) {
        AutoPoolConverter converter(GetPool(in_encoding), in_encoding);
        UErrorCode status = U_ZERO_ERROR;
        int attempts = 0;
        encoded = EncodeThroughIcu(converter.Get(), text, out_buffer, capacity, attempts, status);
        CheckStatus(status, FUNCTION);
    }
    out_truncated = encoded.m_isTruncated;
    return encoded.m_bytes;
}

std::int64_t WideStringConverter::GetNulTerminatedStringLength(const char* in_buffer,
                                                               EncodingType in_encoding) {
    EncodingInfo::CheckEncodingType(in_encoding);
    if (in_buffer == nullptr) {
        return 0;
    }
    // ICU would count the same when it converts the text to its own encoding: a U+FFFD is as long
    // as the malformed unit that it replaces.
    switch (EncodingInfo::GetCodeUnitWidth(in_encoding)) {
        case 1:
            return static_cast<std::int64_t>(std::strlen(in_buffer));
        case 2:
            return FindNul<2>(in_buffer);
        default:
            return FindNul<4>(in_buffer);
    }
}

}  // namespace Orska::Support
