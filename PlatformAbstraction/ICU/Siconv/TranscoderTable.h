/// The pairs that the transcoder converts, and the table of functions that the scalar form and each
/// processor level have for them. Files compiled for a level include this, so it has no code that
/// could be linked into other files.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_TRANSCODERTABLE_H
#define PLATFORMABSTRACTION_ICU_SICONV_TRANSCODERTABLE_H

#include <type_traits>
#include <utility>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"

// Hidden, if the object format can do that, so that a kernel reads a table without loading its
// address first.
#ifdef __ELF__
#define ORSKA_TABLE extern const __attribute__((visibility("hidden")))
#else
#define ORSKA_TABLE extern const
#endif

namespace Orska::Support::Siconv {

/// The encodings as GetTranscoderIndex numbers them.
enum Index : int { UTF8, UTF16LE, UTF16BE, UTF32LE, UTF32BE, LATIN1, CP1252, INDEX_COUNT };

template <int INDEX>
constexpr bool IS_UTF16 = INDEX == UTF16LE || INDEX == UTF16BE;
template <int INDEX>
constexpr bool IS_UTF32 = INDEX == UTF32LE || INDEX == UTF32BE;
template <int INDEX>
constexpr bool IS_BIG_ENDIAN = INDEX == UTF16BE || INDEX == UTF32BE;
/// The bytes of a code unit.
template <int INDEX>
constexpr std::uint32_t UNIT = IS_UTF32<INDEX> ? 4 : (IS_UTF16<INDEX> ? 2 : 1);

/// The type for the kind of an encoding.
template <int INDEX, class Utf8, class Utf16, class Utf32, class SingleByte>
using TypeOf =
    std::conditional_t<INDEX == UTF8, Utf8,
                       std::conditional_t<IS_UTF16<INDEX>, Utf16,
                                          std::conditional_t<IS_UTF32<INDEX>, Utf32, SingleByte>>>;

/// Rows are sources and columns targets, in the order of Index.
constexpr bool IS_PAIR[INDEX_COUNT][INDEX_COUNT] = {
    {false, true, true, true, true, true, true},
    {true, false, false, false, false, true, true},
    {true, false, false, false, false, true, true},
    {true, false, false, false, false, false, false},
    {true, false, false, false, false, false, false},
    {true, true, true, true, true, false, true},
    {true, true, true, false, false, true, false},
};

/// A function for each pair, null for the others.
struct TranscoderTable {
    TranscoderFunction m_functions[INDEX_COUNT][INDEX_COUNT];
};

/// latin1 to cp1252, at every level: copies the bytes (see Transcoder.h for 80 to 9F).
std::int32_t CopyBytes(TranscoderSource& io_source, TranscoderTarget& io_target);

// latin1 and cp1252 are one target: see Transcoder.h.
template <class Form, int SOURCE, int TARGET>
consteval TranscoderFunction GetFunction() {
    if constexpr (!IS_PAIR[SOURCE][TARGET]) {
        return nullptr;
    } else if constexpr (SOURCE == LATIN1 && TARGET == CP1252) {
        return CopyBytes;
    } else {
        constexpr int SAME_TARGET = TARGET == CP1252 ? LATIN1 : TARGET;
        return Form::template Convert<SOURCE, SAME_TARGET>;
    }
}

template <class Form, int SOURCE, int... TARGETS>
consteval void FillRow(TranscoderTable& out_table, std::integer_sequence<int, TARGETS...>) {
    ((out_table.m_functions[SOURCE][TARGETS] = GetFunction<Form, SOURCE, TARGETS>()), ...);
}

template <class Form, int... SOURCES>
consteval TranscoderTable MakeRows(std::integer_sequence<int, SOURCES...> in_indexes) {
    TranscoderTable table{};
    (FillRow<Form, SOURCES>(table, in_indexes), ...);
    return table;
}

/// The functions of a form: a class, local to its file, with `template <int SOURCE, int TARGET>
/// static std::int32_t Convert(TranscoderSource&, TranscoderTarget&)` for all pairs.
template <class Form>
consteval TranscoderTable MakeTranscoderTable() {
    return MakeRows<Form>(std::make_integer_sequence<int, INDEX_COUNT>());
}

ORSKA_TABLE TranscoderTable SCALAR_TABLE;
ORSKA_TABLE TranscoderTable SSE2_TABLE;
ORSKA_TABLE TranscoderTable SSSE3_TABLE;
ORSKA_TABLE TranscoderTable SSE42_TABLE;
ORSKA_TABLE TranscoderTable AVX2_TABLE;
ORSKA_TABLE TranscoderTable AVX512_TABLE;

}  // namespace Orska::Support::Siconv

#endif
