#include "PlatformAbstraction/ICU/TextEncoding.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "PlatformAbstraction/ICU/IcuConverters.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Readers.h"
#include "PlatformAbstraction/ICU/UnicodeForms.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {

namespace {

constexpr std::uint64_t UNIT = sizeof(char16_t);
constexpr char16_t REPLACEMENT = 0xFFFD;

// How many last units of a text are encoded apart. Their output is longer than the scratch that a
// transcoder may leave after its position: less than the 128 bytes that it writes for a window.
constexpr std::size_t TAIL_UNITS = 128;
constexpr std::size_t MOST_BYTES_PER_UNIT = 4;

// Appends the encoded part; true when all of it fits. A surrogate without its partner becomes
// U+FFFD in the encoding.
bool EncodePart(TranscoderFunction in_encoder, std::u16string_view in_part, char* out_buffer,
                std::int64_t in_capacity, EncodedText& io_done) noexcept {
    TranscoderSource source{reinterpret_cast<const char*>(in_part.data()), in_part.size() * UNIT,
                            0};
    TranscoderTarget target{out_buffer, static_cast<std::uint64_t>(in_capacity), 0};
    std::int32_t result = in_encoder(source, target);
    while (result == TRANSCODER_INVALID || result == TRANSCODER_INCOMPLETE) {
        TranscoderSource replacement{reinterpret_cast<const char*>(&REPLACEMENT), UNIT, 0};
        result = in_encoder(replacement, target);
        if (result == TRANSCODER_DONE) {
            source.m_position += UNIT;
            result = in_encoder(source, target);
        }
    }
    io_done.m_bytes += static_cast<std::int64_t>(target.m_position);
    io_done.m_isTruncated = result == TRANSCODER_FULL;
    if (io_done.m_isTruncated && target.m_position < target.m_length) {
        std::memset(out_buffer + target.m_position, 0, target.m_length - target.m_position);
    }
    return !io_done.m_isTruncated;
}

std::size_t GetStartOfTail(std::u16string_view in_text) noexcept {
    if (in_text.size() <= TAIL_UNITS) {
        return 0;
    }
    std::size_t start = in_text.size() - TAIL_UNITS;
    U16_SET_CP_START(in_text.data(), std::size_t{0}, start);
    return start;
}

// One conversion with ICU. Buffers can have any size; ICU alone accepts less than 2 GiB.
class IcuEncoding {
public:
    IcuEncoding(UConverter& io_converter, std::u16string_view in_text) noexcept
        : m_converter(io_converter), m_source(in_text.data()), m_end(m_source + in_text.size()) {
        ResetConverter(io_converter);
    }

    /// Converts units; returns true at their end, false when the buffer is full or ICU fails.
    bool Run(char*& io_target, char* in_limit, UErrorCode& io_status) {
        return RunTo(m_end, io_target, in_limit, io_status);
    }

    bool RunTo(const char16_t* in_end, char*& io_target, char* in_limit, UErrorCode& io_status) {
        constexpr auto MOST = static_cast<std::ptrdiff_t>(ICU_MOST_BYTES_PER_CALL);
        char* limit = io_target;
        do {
            io_status = U_ZERO_ERROR;
            limit = io_target + std::min(in_limit - io_target, MOST);
            const char16_t* const end =
                m_source + std::min<std::ptrdiff_t>(in_end - m_source, MOST / 4);
            ucnv_fromUnicode(&m_converter, &io_target, limit, &m_source, end, nullptr, false,
                             &io_status);
        } while ((io_status == U_ZERO_ERROR && m_source < in_end) ||
                 (io_status == U_BUFFER_OVERFLOW_ERROR && limit < in_limit));
        return io_status == U_ZERO_ERROR;
    }

    /// True when the units that Run left have no output: the encoding lacks them, and displays
    /// ignore them. With a full buffer ICU reports an overflow before them too.
    bool HasSilentRest(UErrorCode& io_status) {
        char scratch[ICU_MOST_END_BYTES];
        char* position = scratch;
        return io_status == U_BUFFER_OVERFLOW_ERROR &&
               Run(position, scratch + sizeof(scratch), io_status) && position == scratch;
    }

    /// Call it after the last unit: ends the text.
    bool End(char*& io_target, const char* in_limit, UErrorCode& io_status) {
        UErrorCode status = U_ZERO_ERROR;
        if (!IsStateful(m_converter) && ucnv_fromUCountPending(&m_converter, &status) == 0) {
            return true;
        }
        char bytes[ICU_MOST_END_BYTES];
        const std::uint8_t count = EndText(m_converter, bytes, io_status);
        if (U_SUCCESS(io_status) && in_limit - io_target < count) {
            io_status = U_BUFFER_OVERFLOW_ERROR;
        }
        if (U_FAILURE(io_status)) {
            return false;
        }
        io_target = std::copy_n(bytes, count, io_target);
        return true;
    }

    const char16_t* GetPosition() const noexcept { return m_source; }

private:
    UConverter& m_converter;
    const char16_t* m_source;
    const char16_t* m_end;
};

// The start of the last code point that has bytes in the encoding, in a text that was
// converted whole.
std::size_t FindLastWithBytes(UConverter& io_converter, std::u16string_view in_text,
                              UErrorCode& io_status) {
    IcuEncoding encoding(io_converter, in_text);
    std::size_t last = 0;
    for (std::size_t start = 0; start < in_text.size();) {
        std::size_t end = start;
        U16_FWD_1(in_text.data(), end, in_text.size());
        char scratch[ICU_MOST_END_BYTES];
        char* position = scratch;
        encoding.RunTo(in_text.data() + end, position, scratch + sizeof(scratch), io_status);
        const bool isKept = ucnv_fromUCountPending(&io_converter, &io_status) > 0;
        last = position != scratch || isKept ? start : last;
        start = end;
    }
    return last;
}

// The length of the longest beginning of a text to try next, when the converter stopped after
// `in_converted` units of the first `in_tried`. ICU stops before a unit that has no room at all,
// and after one whose output fits in part. If only the end of the text did not fit, code points
// without bytes are dropped too: dropping them alone frees no room.
std::size_t GetShorterBeginning(UConverter& io_converter, std::u16string_view in_text,
                                std::size_t in_converted, std::size_t in_tried,
                                UErrorCode& io_status) {
    if (in_converted == in_tried) {
        return FindLastWithBytes(io_converter, in_text.substr(0, in_tried), io_status);
    }
    U16_SET_CP_START(in_text.data(), std::size_t{0}, in_converted);
    return in_converted;
}

// How many bytes of the buffer ICU gets. Its converters of latin1 and US-ASCII leave scratch after
// their output, so they get no more than they fill.
std::int64_t CountBytesToOffer(UConverter& io_converter, std::u16string_view in_text,
                               std::int64_t in_capacity) {
    const UConverterType type = ucnv_getType(&io_converter);
    if (type != UCNV_LATIN_1 && type != UCNV_US_ASCII) {
        return in_capacity;
    }
    UErrorCode status = U_ZERO_ERROR;
    return std::min(in_capacity, MeasureThroughIcu(io_converter, in_text, status));
}

// How many of the malformed bytes at the start one U+FFFD replaces.
std::size_t CountMalformedBytes(std::string_view in_bytes, EncodingType in_encoding) noexcept {
    if (in_encoding != EncodingType::ENC_UTF8) {
        return EncodingInfo::GetCodeUnitWidth(in_encoding);
    }
    // The longest run of bytes that can begin a sequence.
    const auto* const at = reinterpret_cast<const unsigned char*>(in_bytes.data());
    char32_t codePoint = 0;
    std::size_t count = 1;
    while (Siconv::Utf8Reader::Read(at, count, codePoint) == TRANSCODER_INCOMPLETE &&
           Siconv::Utf8Reader::Read(at, count + 1, codePoint) == TRANSCODER_INCOMPLETE) {
        ++count;
    }
    return count;
}

}  // namespace

bool EncodeDirectly(std::u16string_view in_text, char* out_buffer, std::int64_t in_capacity,
                    EncodingType in_encoding, EncodedText& out_done,
                    bool in_isScratchAllowed) noexcept {
    out_done = {};
    const TranscoderFunction encoder = GetUtf16Encoder(in_encoding);
    if (encoder == nullptr) {
        return false;
    }
    if (in_encoding != EncodingType::ENC_UTF8 || in_isScratchAllowed) {
        EncodePart(encoder, in_text, out_buffer, in_capacity, out_done);
        return true;
    }
    // The transcoder may leave scratch after its position, up to the end of the buffer. The
    // output of the tail overwrites the scratch of the head; the scratch of the tail stays out of
    // the buffer.
    const std::size_t start = GetStartOfTail(in_text);
    if (start > 0 &&
        !EncodePart(encoder, in_text.substr(0, start), out_buffer, in_capacity, out_done)) {
        return true;
    }
    char tail[(TAIL_UNITS + 1) * MOST_BYTES_PER_UNIT];
    const std::int64_t before = out_done.m_bytes;
    const std::int64_t room = std::min<std::int64_t>(in_capacity - before, sizeof(tail));
    EncodePart(encoder, in_text.substr(start), tail, room, out_done);
    // A truncated tail fills its room, with zeros at the end.
    const std::int64_t count = out_done.m_isTruncated ? room : out_done.m_bytes - before;
    if (count > 0) {
        std::memcpy(out_buffer + before, tail, static_cast<std::size_t>(count));
    }
    return true;
}

std::int64_t MeasureDirectly(std::u16string_view in_text, EncodingType in_encoding) noexcept {
    const std::int64_t counted = CountEncodedBytes(in_text, in_encoding);
    const TranscoderFunction encoder = GetUtf16Encoder(in_encoding);
    if (counted >= 0 || encoder == nullptr) {
        return counted;
    }
    // In a single-byte set no code point has more bytes than UTF-16 units.
    char scratch[1024];
    EncodedText done;
    for (std::size_t start = 0; start < in_text.size();) {
        const std::size_t end = std::min(in_text.size(), start + sizeof(scratch));
        const bool isInPair = end < in_text.size() && U16_IS_LEAD(in_text[end - 1]);
        const std::size_t count = end - start - (isInPair ? 1 : 0);
        EncodePart(encoder, in_text.substr(start, count), scratch, sizeof(scratch), done);
        start += count;
    }
    return done.m_bytes;
}

EncodedText EncodeThroughIcu(UConverter& io_converter, std::u16string_view in_text,
                             char* out_buffer, std::int64_t in_capacity, int& out_attempts,
                             UErrorCode& io_status) {
    char* const limit = out_buffer + CountBytesToOffer(io_converter, in_text, in_capacity);
    EncodedText done;
    std::size_t units = in_text.size();
    out_attempts = 0;
    while (units > 0) {
        char* target = out_buffer;
        IcuEncoding encoding(io_converter, in_text.substr(0, units));
        ++out_attempts;
        const bool isConverted = encoding.Run(target, limit, io_status);
        const std::size_t converted = encoding.GetPosition() - in_text.data();
        if ((isConverted || encoding.HasSilentRest(io_status)) &&
            encoding.End(target, limit, io_status)) {
            done.m_bytes = target - out_buffer;
            break;
        }
        if (U_FAILURE(io_status) && io_status != U_BUFFER_OVERFLOW_ERROR) {
            return done;
        }
        // It does not fit. Only a try shows how many bytes return a stateful encoding to its
        // initial state.
        io_status = U_ZERO_ERROR;
        units = GetShorterBeginning(io_converter, in_text, converted, units, io_status);
        done.m_isTruncated = true;
    }
    if (done.m_isTruncated) {
        std::fill(out_buffer + done.m_bytes, out_buffer + in_capacity, '\0');
    }
    return done;
}

std::int64_t MeasureThroughIcu(UConverter& io_converter, std::u16string_view in_text,
                               UErrorCode& io_status) {
    char scratch[1024];
    std::int64_t bytes = 0;
    if (in_text.empty()) {
        return bytes;
    }
    IcuEncoding encoding(io_converter, in_text);
    bool isMore = true;
    while (isMore) {
        char* target = scratch;
        isMore = !encoding.Run(target, scratch + sizeof(scratch), io_status);
        if (isMore && io_status != U_BUFFER_OVERFLOW_ERROR) {
            return bytes;
        }
        bytes += target - scratch;
    }
    char* target = scratch;
    encoding.End(target, scratch + sizeof(scratch), io_status);
    return bytes + (target - scratch);
}

std::int32_t DecodeDirectly(std::string_view in_bytes, EncodingType in_encoding,
                            TranscoderFunction in_decoder, char16_t* out_units,
                            std::int32_t in_room) noexcept {
    TranscoderSource source{in_bytes.data(), in_bytes.size(), 0};
    TranscoderTarget target{reinterpret_cast<char*>(out_units),
                            static_cast<std::uint64_t>(in_room) * UNIT, 0};
    std::int32_t result = in_decoder(source, target);
    while (result == TRANSCODER_INVALID || result == TRANSCODER_INCOMPLETE) {
        std::memcpy(target.m_data + target.m_position, &REPLACEMENT, UNIT);
        target.m_position += UNIT;
        // A sequence cut off by the end is one error.
        source.m_position +=
            result == TRANSCODER_INCOMPLETE
                ? source.m_length - source.m_position
                : CountMalformedBytes(in_bytes.substr(source.m_position), in_encoding);
        result = in_decoder(source, target);
    }
    return static_cast<std::int32_t>(target.m_position / UNIT);
}

void DecodeThroughIcu(UConverter& io_converter, std::string_view in_bytes,
                      icu::UnicodeString& io_text, UErrorCode& io_status) {
    constexpr std::ptrdiff_t LEAST_ROOM = 16;  // units
    const char* source = in_bytes.data();
    const char* const end = source + in_bytes.size();
    const char* sourceLimit = source;
    ResetConverter(io_converter);
    do {
        const std::int64_t length = io_text.length();
        const std::int64_t wanted =
            std::min<std::int64_t>(length + std::max(end - source, LEAST_ROOM), INT32_MAX);
        char16_t* const units = io_text.getBuffer(static_cast<std::int32_t>(wanted));
        if (units == nullptr || length == INT32_MAX) {
            io_status = U_MEMORY_ALLOCATION_ERROR;
            return;
        }
        sourceLimit = source + std::min<std::ptrdiff_t>(end - source, ICU_MOST_BYTES_PER_CALL);
        char16_t* target = units + length;
        io_status = U_ZERO_ERROR;
        ucnv_toUnicode(&io_converter, &target, units + wanted, &source, sourceLimit, nullptr,
                       sourceLimit == end, &io_status);
        io_text.releaseBuffer(static_cast<std::int32_t>(target - units));
    } while (io_status == U_BUFFER_OVERFLOW_ERROR ||
             (io_status == U_ZERO_ERROR && sourceLimit < end));
}

}  // namespace Orska::Support
