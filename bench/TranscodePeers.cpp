#include "bench/TranscodePeers.h"

#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"
// Some C libraries lack it.
#if __has_include(<iconv.h>)
#include <iconv.h>
#define ORSKA_HAVE_ICONV
#endif

#ifdef ORSKA_HAVE_SIMDUTF
#include <simdutf.h>
#endif

namespace Orska::Bench {

namespace {

using namespace Orska::Support;

enum Index { UTF8, UTF16LE, UTF16BE, UTF32LE, UTF32BE, LATIN1, CP1252 };

template <class ConvertOne>
Conversion OverPieces(ConvertOne in_convert) {
    return [in_convert](const TextPieces& in_pieces, char* out_to, std::size_t in_room) {
        std::size_t last = 0;
        const bool hasRooms = !in_pieces.m_rooms.empty();
        for (std::size_t i = 0; i < in_pieces.m_pieces.size(); ++i) {
            const std::string& piece = in_pieces.m_pieces[i];
            last = in_convert(piece.data(), piece.size(), out_to,
                              hasRooms ? in_pieces.m_rooms[i] : in_room);
            if (last == FAILED) break;
        }
        return last;
    };
}

Conversion MakeOurs(TranscoderFunction in_function) {
    return OverPieces([in_function](const char* in_from, std::size_t in_size, char* out_to,
                                    std::size_t in_room) -> std::size_t {
        TranscoderSource source{in_from, in_size, 0};
        TranscoderTarget target{out_to, in_room, 0};
        return in_function(source, target) == TRANSCODER_DONE ? target.m_position : FAILED;
    });
}

void AddOurs(std::vector<Peer>& io_peers, int in_source, int in_target) {
    constexpr std::pair<const char*, CpuLevel> LEVELS[] = {
        {"ours-sse2", CpuLevel::SSE2},   {"ours-ssse3", CpuLevel::SSSE3},
        {"ours-sse41", CpuLevel::SSE41}, {"ours-sse42", CpuLevel::SSE42},
        {"ours-avx2", CpuLevel::AVX2},   {"ours-avx512", CpuLevel::AVX512},
    };
    io_peers.push_back({"ours", MakeOurs(GetTranscoder(in_source, in_target))});
    for (const auto& [who, level] : LEVELS) {
        if (level > DetectCpuLevel()) continue;
        io_peers.push_back({who, MakeOurs(GetTranscoderAtLevel(in_source, in_target, level))});
    }
    io_peers.push_back({"ours-scalar", MakeOurs(GetScalarTranscoder(in_source, in_target))});
}

std::shared_ptr<UConverter> OpenIcu(int in_encoding) {
    constexpr const char* NAMES[] = {"UTF-8",    "UTF-16LE", "UTF-16BE", "UTF-32LE",
                                     "UTF-32BE", "latin1",   "cp1252"};
    UErrorCode status = U_ZERO_ERROR;
    std::shared_ptr<UConverter> converter(ucnv_open(NAMES[in_encoding], &status), ucnv_close);
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
    return converter;
}

UChar* AsUnits(char* in_bytes) { return reinterpret_cast<UChar*>(in_bytes); }

const UChar* AsUnits(const char* in_bytes) { return reinterpret_cast<const UChar*>(in_bytes); }

// ICU's quickest way for a pair.
Conversion MakeIcu(int in_source, int in_target) {
    const auto source = OpenIcu(in_source);
    const auto target = OpenIcu(in_target);
    if (in_source == UTF8 && in_target == UTF16LE) {
        return OverPieces([](const char* in_from, std::size_t in_size, char* out_to,
                             std::size_t in_room) -> std::size_t {
            UErrorCode status = U_ZERO_ERROR;
            std::int32_t length = 0;
            u_strFromUTF8(AsUnits(out_to), static_cast<std::int32_t>(in_room / 2), &length, in_from,
                          static_cast<std::int32_t>(in_size), &status);
            return U_SUCCESS(status) ? static_cast<std::size_t>(length) * 2 : FAILED;
        });
    }
    if (in_source == UTF16LE && in_target == UTF8) {
        return OverPieces([](const char* in_from, std::size_t in_size, char* out_to,
                             std::size_t in_room) -> std::size_t {
            UErrorCode status = U_ZERO_ERROR;
            std::int32_t length = 0;
            u_strToUTF8(out_to, static_cast<std::int32_t>(in_room), &length, AsUnits(in_from),
                        static_cast<std::int32_t>(in_size / 2), &status);
            return U_SUCCESS(status) ? static_cast<std::size_t>(length) : FAILED;
        });
    }
    if (in_target == UTF16LE) {
        return OverPieces([source](const char* in_from, std::size_t in_size, char* out_to,
                                   std::size_t in_room) -> std::size_t {
            UErrorCode status = U_ZERO_ERROR;
            const std::int32_t length =
                ucnv_toUChars(source.get(), AsUnits(out_to), static_cast<std::int32_t>(in_room / 2),
                              in_from, static_cast<std::int32_t>(in_size), &status);
            return U_SUCCESS(status) ? static_cast<std::size_t>(length) * 2 : FAILED;
        });
    }
    if (in_source == UTF16LE) {
        return OverPieces([target](const char* in_from, std::size_t in_size, char* out_to,
                                   std::size_t in_room) -> std::size_t {
            UErrorCode status = U_ZERO_ERROR;
            const std::int32_t length =
                ucnv_fromUChars(target.get(), out_to, static_cast<std::int32_t>(in_room),
                                AsUnits(in_from), static_cast<std::int32_t>(in_size / 2), &status);
            return U_SUCCESS(status) ? static_cast<std::size_t>(length) : FAILED;
        });
    }
    return OverPieces([source, target](const char* in_from, std::size_t in_size, char* out_to,
                                       std::size_t in_room) -> std::size_t {
        UErrorCode status = U_ZERO_ERROR;
        UChar pivot[1024];
        UChar* pivotSource = pivot;
        UChar* pivotTarget = pivot;
        char* to = out_to;
        const char* from = in_from;
        ucnv_convertEx(target.get(), source.get(), &to, out_to + in_room, &from, in_from + in_size,
                       pivot, &pivotSource, &pivotTarget, pivot + 1024, true, true, &status);
        return U_SUCCESS(status) ? static_cast<std::size_t>(to - out_to) : FAILED;
    });
}

#ifdef ORSKA_HAVE_ICONV
Conversion MakeIconv(int in_source, int in_target) {
    constexpr const char* NAMES[] = {"UTF-8",    "UTF-16LE",   "UTF-16BE", "UTF-32LE",
                                     "UTF-32BE", "ISO-8859-1", "CP1252"};
    const std::shared_ptr<void> converter(iconv_open(NAMES[in_target], NAMES[in_source]),
                                          iconv_close);
    return OverPieces([converter](const char* in_from, std::size_t in_size, char* out_to,
                                  std::size_t in_room) -> std::size_t {
        // iconv does not write to its source, but its parameter is not const.
        char* from = const_cast<char*>(in_from);
        std::size_t left = in_size;
        char* to = out_to;
        std::size_t room = in_room;
        const std::size_t result = iconv(converter.get(), &from, &left, &to, &room);
        return result == static_cast<std::size_t>(-1) ? FAILED : in_room - room;
    });
}
#endif

#ifdef ORSKA_HAVE_SIMDUTF

template <class Result>
std::size_t GetCount(const Result& in_result, std::size_t in_unit) {
    if constexpr (std::is_same_v<Result, simdutf::result>) {
        return in_result.error == simdutf::SUCCESS ? in_result.count * in_unit : FAILED;
    } else {
        return in_result * in_unit;
    }
}

// Calls one of simdutf's members, from units of one type to units of another.
template <class From, class To, auto MEMBER>
Conversion CallSimdutf(const simdutf::implementation* in_simdutf) {
    return OverPieces([in_simdutf](const char* in_from, std::size_t in_size, char* out_to,
                                   std::size_t) -> std::size_t {
        return GetCount(
            (in_simdutf->*MEMBER)(reinterpret_cast<const From*>(in_from), in_size / sizeof(From),
                                  reinterpret_cast<To*>(out_to)),
            sizeof(To));
    });
}

// Empty for pairs that simdutf does not have.
Conversion MakeSimdutf(const simdutf::implementation* in_simdutf, int in_source, int in_target) {
    using S = simdutf::implementation;
    switch (in_source * 7 + in_target) {
        case UTF8 * 7 + UTF16LE:
            return CallSimdutf<char, char16_t, &S::convert_utf8_to_utf16le_with_errors>(in_simdutf);
        case UTF8 * 7 + UTF16BE:
            return CallSimdutf<char, char16_t, &S::convert_utf8_to_utf16be_with_errors>(in_simdutf);
        case UTF8 * 7 + UTF32LE:
            return CallSimdutf<char, char32_t, &S::convert_utf8_to_utf32_with_errors>(in_simdutf);
        case UTF8 * 7 + LATIN1:
            return CallSimdutf<char, char, &S::convert_utf8_to_latin1_with_errors>(in_simdutf);
        case UTF16LE * 7 + UTF8:
            return CallSimdutf<char16_t, char, &S::convert_utf16le_to_utf8_with_errors>(in_simdutf);
        case UTF16BE * 7 + UTF8:
            return CallSimdutf<char16_t, char, &S::convert_utf16be_to_utf8_with_errors>(in_simdutf);
        case UTF16LE * 7 + LATIN1:
            return CallSimdutf<char16_t, char, &S::convert_utf16le_to_latin1_with_errors>(
                in_simdutf);
        case UTF16BE * 7 + LATIN1:
            return CallSimdutf<char16_t, char, &S::convert_utf16be_to_latin1_with_errors>(
                in_simdutf);
        case UTF32LE * 7 + UTF8:
            return CallSimdutf<char32_t, char, &S::convert_utf32_to_utf8_with_errors>(in_simdutf);
        case LATIN1 * 7 + UTF8:
            return CallSimdutf<char, char, &S::convert_latin1_to_utf8>(in_simdutf);
        case LATIN1 * 7 + UTF16LE:
            return CallSimdutf<char, char16_t, &S::convert_latin1_to_utf16le>(in_simdutf);
        case LATIN1 * 7 + UTF16BE:
            return CallSimdutf<char, char16_t, &S::convert_latin1_to_utf16be>(in_simdutf);
        case LATIN1 * 7 + UTF32LE:
            return CallSimdutf<char, char32_t, &S::convert_latin1_to_utf32>(in_simdutf);
        default:
            return {};
    }
}

std::vector<std::pair<std::string, const simdutf::implementation*>> GetSimdutfs() {
    std::vector<std::pair<std::string, const simdutf::implementation*>> all;
    const auto& available = simdutf::get_available_implementations();
    all.push_back({"simdutf", available.detect_best_supported()});
    for (const auto* const implementation : available) {
        if (implementation->supported_by_runtime_system()) {
            all.push_back({"simdutf-" + std::string(implementation->name()), implementation});
        }
    }
    return all;
}

void AddSimdutf(std::vector<Peer>& io_peers, int in_source, int in_target) {
    for (const auto& [who, implementation] : GetSimdutfs()) {
        Conversion conversion = MakeSimdutf(implementation, in_source, in_target);
        if (conversion) io_peers.push_back({who, std::move(conversion)});
    }
}

Conversion MakeExactSimdutf(const simdutf::implementation* in_simdutf, int in_source,
                            int in_target) {
    if (in_source == UTF8 && in_target == UTF16LE) {
        return OverPieces([in_simdutf](const char* in_from, std::size_t in_size, char* out_to,
                                       std::size_t in_room) -> std::size_t {
            // Malformed input makes the count meaningless: users validate first, or count and then
            // convert with errors. This is the cheaper form.
            if (in_simdutf->utf16_length_from_utf8(in_from, in_size) * 2 > in_room) return FAILED;
            return GetCount(in_simdutf->convert_utf8_to_utf16le_with_errors(
                                in_from, in_size, reinterpret_cast<char16_t*>(out_to)),
                            2);
        });
    }
    if (in_source == UTF16LE && in_target == UTF8) {
        return OverPieces([in_simdutf](const char* in_from, std::size_t in_size, char* out_to,
                                       std::size_t in_room) -> std::size_t {
            const auto* const units = reinterpret_cast<const char16_t*>(in_from);
            if (in_simdutf->utf8_length_from_utf16le(units, in_size / 2) > in_room) return FAILED;
            return GetCount(
                in_simdutf->convert_utf16le_to_utf8_with_errors(units, in_size / 2, out_to), 1);
        });
    }
    return {};
}

// Converts one text into targets of in_targetSize bytes. A piece is trimmed to what surely fits,
// and a code point that is cut off goes before the next piece.
std::size_t StreamSimdutf(const simdutf::implementation* in_simdutf, const std::string& in_text,
                          std::size_t in_pieceSize, char* out_target, std::size_t in_targetSize) {
    std::string carried;
    std::size_t total = 0;
    std::size_t position = 0;
    for (std::size_t at = 0; at < in_text.size(); at += in_pieceSize) {
        const std::size_t taken = std::min(in_pieceSize, in_text.size() - at);
        const char* from = in_text.data() + at;
        std::size_t left = taken;
        if (!carried.empty()) {
            carried.append(from, taken);
            from = carried.data();
            left = carried.size();
        }
        std::size_t whole = simdutf::trim_partial_utf8(from, left);
        const std::size_t cut = left - whole;
        while (whole > 0) {
            // A byte becomes at most one unit.
            std::size_t size = std::min(whole, (in_targetSize - position) / 2);
            size = simdutf::trim_partial_utf8(from, size);
            if (size == 0) {
                position = 0;  // the next target
                continue;
            }
            const std::size_t written =
                GetCount(in_simdutf->convert_utf8_to_utf16le_with_errors(
                             from, size, reinterpret_cast<char16_t*>(out_target + position)),
                         2);
            if (written == FAILED) return FAILED;
            from += size;
            whole -= size;
            position += written;
            total += written;
        }
        carried = std::string(from, cut);
    }
    return total;
}

#else

void AddSimdutf(std::vector<Peer>&, int, int) {}

#endif

std::size_t StreamOurs(TranscoderFunction in_function, const std::string& in_text,
                       std::size_t in_pieceSize, char* out_target, std::size_t in_targetSize) {
    char pending[4 + 4];
    std::size_t pendingSize = 0;
    std::size_t total = 0;
    TranscoderTarget target{out_target, in_targetSize, 0};
    for (std::size_t at = 0; at < in_text.size(); at += in_pieceSize) {
        const std::size_t taken = std::min(in_pieceSize, in_text.size() - at);
        TranscoderSource source{in_text.data() + at, taken, 0};
        // Up to four bytes complete the code point that the end of the last piece cut.
        while (pendingSize > 0) {
            const std::size_t added = std::min<std::size_t>(4 - pendingSize, taken);
            std::memcpy(pending + pendingSize, source.m_data, added);
            TranscoderSource both{pending, pendingSize + added, 0};
            const std::uint64_t before = target.m_position;
            const std::int32_t result = in_function(both, target);
            if (result == TRANSCODER_INVALID) return FAILED;
            total += target.m_position - before;
            if (both.m_position >= pendingSize) {
                source.m_position = both.m_position - pendingSize;
                pendingSize = 0;
            } else if (result == TRANSCODER_FULL) {
                target.m_position = 0;
            } else {
                return FAILED;  // a piece is shorter than a code point
            }
        }
        for (;;) {
            const std::uint64_t before = target.m_position;
            const std::int32_t result = in_function(source, target);
            total += target.m_position - before;
            if (result == TRANSCODER_INVALID) return FAILED;
            if (result != TRANSCODER_FULL) break;
            target.m_position = 0;
        }
        pendingSize = taken - source.m_position;
        std::memcpy(pending, source.m_data + source.m_position, pendingSize);
    }
    return total;
}

}  // namespace

std::vector<Peer> GetPeers(int in_source, int in_target) {
    std::vector<Peer> peers;
    AddOurs(peers, in_source, in_target);
    AddSimdutf(peers, in_source, in_target);
    peers.push_back({"icu", MakeIcu(in_source, in_target)});
#ifdef ORSKA_HAVE_ICONV
    peers.push_back({"iconv", MakeIconv(in_source, in_target)});
#endif
    peers.push_back({"memcpy", OverPieces([](const char* in_from, std::size_t in_size, char* out_to,
                                             std::size_t) {
                         std::memcpy(out_to, in_from, in_size);
                         return in_size;
                     })});
    return peers;
}

std::vector<Peer> GetExactPeers(int in_source, int in_target) {
    std::vector<Peer> peers;
    AddOurs(peers, in_source, in_target);
#ifdef ORSKA_HAVE_SIMDUTF
    for (const auto& [who, implementation] : GetSimdutfs()) {
        Conversion conversion = MakeExactSimdutf(implementation, in_source, in_target);
        if (conversion) peers.push_back({who, std::move(conversion)});
    }
#endif
    return peers;
}

std::vector<Peer> GetStreamingPeers(std::size_t in_pieceSize, std::size_t in_targetSize) {
    std::vector<Peer> peers;
    constexpr std::pair<const char*, CpuLevel> LEVELS[] = {{"ours-sse42", CpuLevel::SSE42},
                                                           {"ours-avx2", CpuLevel::AVX2},
                                                           {"ours-avx512", CpuLevel::AVX512}};
    const auto add = [&](const std::string& in_who, TranscoderFunction in_function) {
        peers.push_back({in_who, [=](const TextPieces& in_pieces, char* out_to, std::size_t) {
                             return StreamOurs(in_function, in_pieces.m_pieces.front(),
                                               in_pieceSize, out_to, in_targetSize);
                         }});
    };
    add("ours", GetTranscoder(UTF8, UTF16LE));
    for (const auto& [who, level] : LEVELS) {
        if (level <= DetectCpuLevel()) add(who, GetTranscoderAtLevel(UTF8, UTF16LE, level));
    }
#ifdef ORSKA_HAVE_SIMDUTF
    for (const auto& [who, implementation] : GetSimdutfs()) {
        peers.push_back({who, [=, simdutf = implementation](const TextPieces& in_pieces,
                                                            char* out_to, std::size_t) {
                             return StreamSimdutf(simdutf, in_pieces.m_pieces.front(), in_pieceSize,
                                                  out_to, in_targetSize);
                         }});
    }
#endif
    return peers;
}

}  // namespace Orska::Bench
