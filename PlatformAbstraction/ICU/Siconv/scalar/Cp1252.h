/// The only table of cp1252's code points for the bytes that are control characters in latin1.
/// Files compiled for a processor level include it, so it has no code.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_SCALAR_CP1252_H
#define PLATFORMABSTRACTION_ICU_SICONV_SCALAR_CP1252_H

namespace Orska::Support::Siconv {

/// The code points of the bytes 80 to 9F.
inline constexpr char16_t CP1252_HIGH[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  //
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  //
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  //
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

}  // namespace Orska::Support::Siconv

#endif
