// Converts whole short texts with instructions up to SSE4.2 and POPCNT: block after block
// into scratch with room for all that they may write, without the entry and exit of the
// general functions.
#include "PlatformAbstraction/ICU/Siconv/ShortTextKernels.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/FromUtf8.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/ToUtf8.h"

namespace Orska::Support::Siconv {

namespace {

// False for text that is not plain, or too short or too long for four blocks.
template <class Blocks>
ORSKA_INLINE bool ConvertPlain(const char* in_from, std::uint64_t in_size, char* out_to) {
    if (in_size - 16 > 64 - 16) {
        return false;
    }
    return in_size <= 32 ? ConvertPlainEnds<Blocks, 1>(in_from, in_size, out_to)
                         : ConvertPlainEnds<Blocks, 2>(in_from, in_size, out_to);
}

template <class Blocks>
ORSKA_INLINE std::int64_t ConvertWhole(const char* in_from, std::uint64_t in_size,
                                       char* out_scratch) {
    constexpr std::uint64_t STEP = Blocks::V::SIZE;
    Blocks blocks;
    char* to = out_scratch;
    for (; in_size >= STEP; in_size -= STEP, in_from += STEP) {
        if (!blocks.Convert(Blocks::Load(in_from), to)) {
            return -1;
        }
    }
    // The zeros after the text show a code point that is cut off.
    if ((in_size > 0 || blocks.IsPending()) && !ConvertPart(blocks, in_from, in_size, to)) {
        return -1;
    }
    return to - out_scratch;
}

}  // namespace

std::int64_t ShortUtf16ToUtf8_SSE42(std::u16string_view in_text, char* out_buffer,
                                    std::int64_t in_capacity) noexcept {
    using Blocks = Utf16Blocks<Vector128, false>;
    const auto* const from = reinterpret_cast<const char*>(in_text.data());
    const std::uint64_t size = 2 * in_text.size();
    const auto units = static_cast<std::int64_t>(in_text.size());
    if (units <= in_capacity && ConvertPlain<Blocks>(from, size, out_buffer)) {
        return units;
    }
    char scratch[3 * MOST_SHORT_UNITS + Blocks::ROOM];
    const std::int64_t written = ConvertWhole<Blocks>(from, size, scratch);
    if (written > in_capacity) {
        return -1;
    }
    if (written > 0) {
        CopyPiece(out_buffer, scratch, static_cast<std::uint64_t>(written));
    }
    return written;
}

std::int64_t ShortUtf8ToUtf16_SSE42(std::string_view in_bytes, char16_t* out_units) noexcept {
    using Blocks = Utf8Blocks<Vector128, UnitsOf16<Vector128, false>>;
    auto* const to = reinterpret_cast<char*>(out_units);
    if (ConvertPlain<Blocks>(in_bytes.data(), in_bytes.size(), to)) {
        return static_cast<std::int64_t>(in_bytes.size());
    }
    const std::int64_t written = ConvertWhole<Blocks>(in_bytes.data(), in_bytes.size(), to);
    return written < 0 ? written : written / 2;
}

}  // namespace Orska::Support::Siconv
