// Converts UTF-8 by whole vectors. Included by levels only; everything is local to the
// including file.
//
// Every byte of a block is handled as if it were the last one of its code point, with the three
// bytes before it, which may be in the block before. Then the places that are not a last byte are
// dropped. So a block always uses all of its bytes, and a code point can be in two blocks.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_FROMUTF8_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_FROMUTF8_H

#include "PlatformAbstraction/ICU/Siconv/blocks/Driver.h"

namespace Orska::Support::Siconv {

namespace {

// The leads of a block, with one bit for each byte.
struct Utf8Masks {
    std::uint64_t m_lead = 0;   // a byte C0 or above
    std::uint64_t m_lead3 = 0;  // a byte E0 or above
    std::uint64_t m_lead4 = 0;  // a byte F0 or above
};

// The bytes of a block, those 1, 2 and 3 places earlier, and a mask of those that are not ASCII.
template <class V>
struct Utf8Bytes {
    typename V::Type m_at;
    typename V::Type m_1;
    typename V::Type m_2;
    typename V::Type m_3;
    typename V::Type m_isHigh;
};

template <class V, bool IS_BIG>
struct UnitsOf16 {
    using Type = typename V::Type;
    static constexpr std::uint32_t UNIT = 2;
    // The third byte of four becomes the lead surrogate, the fourth the trail.
    static constexpr bool KEEPS_THIRD = true;
    static constexpr bool HAS_RUNS = true;

    static ORSKA_INLINE void WriteAscii(char* out_at, Type in_bytes) {
        V::template WriteWide16<IS_BIG>(out_at, in_bytes);
    }
    template <class To>
    static ORSKA_INLINE void Write(To& io_at, Type in_low, Type in_high, std::uint64_t in_keep) {
        Type units[2];
        V::template Interleave8<IS_BIG>(in_low, in_high, units);
        V::CompressUnits(io_at, units[0], units[1], in_keep);
    }
    // Writes two vectors of 16-bit code points in 32-bit lanes.
    static ORSKA_INLINE void WriteRun3(char* out_at, Type in_first, Type in_second) {
        V::Store(out_at, V::template OrderUnits16<IS_BIG>(V::PackUnits32(in_first, in_second)));
    }
    // Writes code points minus 10000 in 32-bit lanes.
    static ORSKA_INLINE void WriteRun4(char* out_at, Type in_offsets) {
        const auto lead = V::template ShiftRight32<10>(in_offsets);
        const auto trail =
            V::template ShiftLeft32<16>(V::And(in_offsets, V::template All32<0x3FF>()));
        const auto pair = V::Or(V::Or(lead, trail), V::template All32<0xDC00D800>());
        V::Store(out_at, V::template OrderUnits16<IS_BIG>(pair));
    }
    // in_plane: bits 16 to 20 of the code point, minus 1, where in_isThird is set.
    template <class To>
    static ORSKA_INLINE void Write4(To& io_at, const Utf8Bytes<V>& in_bytes, Type in_low,
                                    Type in_high, Type in_plane, Type in_isThird, Type in_isFourth,
                                    std::uint64_t in_keep) {
        const auto leadHigh =
            V::Or(V::template All8<0xD8>(),
                  V::And(V::template ShiftRight16<2>(in_plane), V::template All8<0x03>()));
        const auto leadLow =
            V::Or(V::Or(V::And(V::template ShiftLeft16<6>(in_plane), V::template All8<0xC0>()),
                        V::And(V::template ShiftLeft16<2>(in_bytes.m_1), V::template All8<0x3C>())),
                  V::And(V::template ShiftRight16<4>(in_bytes.m_at), V::template All8<0x03>()));
        const auto trailHigh =
            V::Or(V::template All8<0xDC>(), V::And(in_high, V::template All8<0x03>()));
        const auto high =
            V::Select(V::Select(in_high, leadHigh, in_isThird), trailHigh, in_isFourth);
        Write(io_at, V::Select(in_low, leadLow, in_isThird), high, in_keep);
    }
};

template <class V, bool IS_BIG>
struct UnitsOf32 {
    using Type = typename V::Type;
    static constexpr std::uint32_t UNIT = 4;
    static constexpr bool KEEPS_THIRD = false;
    static constexpr bool HAS_RUNS = true;

    static ORSKA_INLINE void WriteAscii(char* out_at, Type in_bytes) {
        V::template WriteWide32<IS_BIG>(out_at, in_bytes);
    }
    template <class To>
    static ORSKA_INLINE void Write(To& io_at, Type in_low, Type in_high, std::uint64_t in_keep) {
        Type units[2];
        V::template Interleave8<IS_BIG>(in_low, in_high, units);
        V::template CompressToUnits32<IS_BIG>(io_at, units[0], units[1], in_keep);
    }
    static ORSKA_INLINE void WriteRun3(char* out_at, Type in_first, Type in_second) {
        V::Store(out_at, V::template OrderUnits32<IS_BIG>(in_first));
        V::Store(out_at + V::SIZE, V::template OrderUnits32<IS_BIG>(in_second));
    }
    static ORSKA_INLINE void WriteRun4(char* out_at, Type in_offsets) {
        V::Store(out_at, V::template OrderUnits32<IS_BIG>(
                             V::Add32(in_offsets, V::template All32<0x10000>())));
    }
    template <class To>
    static ORSKA_INLINE void Write4(To& io_at, const Utf8Bytes<V>& in_bytes, Type in_low,
                                    Type in_high, Type, Type, Type in_isFourth,
                                    std::uint64_t in_keep) {
        const auto high = V::Or(in_high, V::And(V::template ShiftLeft16<4>(in_bytes.m_2),
                                                V::And(in_isFourth, V::template All8<0xF0>())));
        const auto top = V::And(
            V::Or(V::And(V::template ShiftLeft16<2>(in_bytes.m_3), V::template All8<0x1C>()),
                  V::And(V::template ShiftRight16<4>(in_bytes.m_2), V::template All8<0x03>())),
            in_isFourth);
        Type units[2];
        Type tops[2];
        V::template Interleave8<IS_BIG>(in_low, high, units);
        V::template Interleave8<IS_BIG>(top, V::Zero(), tops);
        V::template CompressPairs<IS_BIG>(io_at, units[0], units[1], tops[0], tops[1], in_keep);
    }
};

template <class V>
struct UnitsOf8 {
    using Type = typename V::Type;
    static constexpr std::uint32_t UNIT = 1;
    static constexpr bool KEEPS_THIRD = false;
    static constexpr bool HAS_RUNS = false;

    static ORSKA_INLINE void WriteAscii(char* out_at, Type in_bytes) { V::Store(out_at, in_bytes); }
    template <class To>
    static ORSKA_INLINE void Write(To& io_at, Type in_low, Type in_high, std::uint64_t in_keep) {
        const auto fits = V::Equal8(in_high, V::Zero());
        V::CompressBytes(io_at, V::Select(V::template All8<0x1A>(), in_low, fits), in_keep);
    }
    template <class To>
    static ORSKA_INLINE void Write4(To& io_at, const Utf8Bytes<V>&, Type in_low, Type in_high, Type,
                                    Type, Type in_isFourth, std::uint64_t in_keep) {
        Write(io_at, in_low, V::Or(in_high, in_isFourth), in_keep);
    }
};

// Converts sequences of three bytes only, from the start of one on. Reads 4 bytes past a step of
// 3/2 of V::SIZE and writes V::SIZE / 2 units, without scratch.
template <class V, class Target>
ORSKA_INLINE void ConvertRun3(Cursor& io_cursor) {
    constexpr std::uint64_t HALF = V::SIZE / 4 * 3;
    constexpr std::uint64_t WRITTEN = V::SIZE / 2 * Target::UNIT;
    const auto spread = V::RepeatLane(0xFF000102, 0xFF030405, 0xFF060708, 0xFF090A0B);
    while (io_cursor.GetLeft() >= 2 * HALF + 4 && io_cursor.GetRoom() >= WRITTEN) {
        typename V::Type codePoints[2];
        auto isGood = V::template All8<0xFF>();
        for (std::uint32_t i = 0; i < 2; ++i) {
            const auto bytes = V::Shuffle(V::LoadTwelves(io_cursor.m_from + i * HALF), spread);
            const auto marks = V::And(bytes, V::template All32<0x00F0C0C0>());
            const auto bits = V::And(bytes, V::template All32<0x000F3F3F>());
            const auto halves = V::MultiplyAdd8(bits, V::template All32<0x00014001>());
            codePoints[i] = V::MultiplyAdd16(halves, V::template All32<0x10000001>());
            const auto isSurrogate = V::Equal32(V::And(codePoints[i], V::template All32<0xF800>()),
                                                V::template All32<0xD800>());
            const auto isLong = V::GreaterSigned32(codePoints[i], V::template All32<0x7FF>());
            isGood = V::And(isGood, V::And(V::AndNot(isSurrogate, isLong),
                                           V::Equal32(marks, V::template All32<0x00E08080>())));
        }
        if (V::GetSignBits(isGood) != V::FULL) {
            return;
        }
        Target::WriteRun3(io_cursor.m_to, codePoints[0], codePoints[1]);
        io_cursor.m_from += 2 * HALF;
        io_cursor.m_to += WRITTEN;
    }
}

// Converts sequences of four bytes only, from the start of one on. Writes V::SIZE bytes,
// without scratch.
template <class V, class Target>
ORSKA_INLINE void ConvertRun4(Cursor& io_cursor) {
    while (io_cursor.GetLeft() >= V::SIZE && io_cursor.GetRoom() >= V::SIZE) {
        const auto bytes = V::Load(io_cursor.m_from);
        const auto marks = V::And(bytes, V::template All32<0xC0C0C0F8>());
        const auto bits = V::And(bytes, V::template All32<0x3F3F3F07>());
        const auto halves = V::MultiplyAdd8(bits, V::template All32<0x01400140>());
        const auto codePoints = V::MultiplyAdd16(halves, V::template All32<0x00011000>());
        const auto offsets = V::Add32(codePoints, V::template All32<0xFFFF0000>());
        const auto tooLarge = V::And(offsets, V::template All32<0xFFF00000>());
        const auto isGood = V::And(V::Equal32(marks, V::template All32<0x808080F0>()),
                                   V::Equal32(tooLarge, V::Zero()));
        if (V::GetSignBits(isGood) != V::FULL) {
            return;
        }
        Target::WriteRun4(io_cursor.m_to, offsets);
        io_cursor.m_from += V::SIZE;
        io_cursor.m_to += V::SIZE;
    }
}

template <class VECTOR, class Target>
class Utf8Blocks : public ByteSource<VECTOR> {
public:
    using V = VECTOR;
    using Type = typename V::Type;
    static constexpr std::uint64_t TARGET_UNIT = Target::UNIT;
    static constexpr std::uint64_t ROOM = V::SIZE * Target::UNIT;

    static ORSKA_INLINE void WritePlain(char* out_to, Type in_at) {
        Target::WriteAscii(out_to, in_at);
    }
    static ORSKA_INLINE std::uint64_t GetWhole(const char* in_at, std::uint64_t in_size) {
        return in_size - GetCutBytes(in_at, in_at + in_size);
    }

    ORSKA_INLINE bool IsPending() const {
        return ((m_masks.m_lead3 >> (V::SIZE - 3)) | (m_masks.m_lead >> (V::SIZE - 1))) != 0;
    }

    // An error in the last code point of a block may be found in the next block only.
    template <class To>
    ORSKA_INLINE bool Convert(Type in_at, To& io_to) {
        m_high = V::GetSignBits(in_at);
        if (m_high == 0 && !IsPending()) {
            PutPlain<Utf8Blocks>(io_to, in_at);
            m_before = in_at;  // the masks are still right for the next block
            return true;
        }
        return ConvertHigh(in_at, io_to);
    }

    ORSKA_INLINE void ContinueRun(Cursor& io_cursor, const char* in_start) {
        if (m_high == 0) {
            ConvertPlainRun<Utf8Blocks>(io_cursor);
        } else if constexpr (Target::HAS_RUNS) {
            if (m_high == V::FULL && m_masks.m_lead == m_masks.m_lead3 &&
                io_cursor.GetLeft() >= 2 * V::SIZE) {
                ContinueLongRun(io_cursor, in_start);
            }
        }
    }

    ORSKA_INLINE void TakeBack(Cursor& io_cursor, const char* in_start) {
        const std::uint32_t cut = GetCutBytes(in_start, io_cursor.m_from);
        io_cursor.m_from -= cut;
        // Three bytes of four have already written a lead surrogate.
        io_cursor.m_to -= Target::KEEPS_THIRD && cut == 3 ? Target::UNIT : 0;
    }

private:
    // Continues after a block with sequences of three or four bytes only.
    ORSKA_INLINE void ContinueLongRun(Cursor& io_cursor, const char* in_start) {
        const bool isRun3 = m_masks.m_lead4 == 0;
        if (!isRun3 && m_masks.m_lead4 != m_masks.m_lead) {
            return;
        }
        TakeBack(io_cursor, in_start);
        m_before = V::Zero();
        m_masks = Utf8Masks();
        if (isRun3) {
            ConvertRun3<V, Target>(io_cursor);
        } else {
            ConvertRun4<V, Target>(io_cursor);
        }
    }

    template <class To>
    ORSKA_INLINE bool ConvertHigh(Type in_at, To& io_to) {
        const std::uint64_t pending = m_masks.m_lead3 >> (V::SIZE - 3);
        // Signed comparisons: ASCII counts as greater, and the mask removes it.
        Utf8Masks masks;
        const std::uint64_t head =
            V::GetSignBits(V::GreaterSigned8(in_at, V::template All8<0xBF>()));
        masks.m_lead = m_high & head;
        masks.m_lead3 = m_high & V::GetSignBits(V::GreaterSigned8(in_at, V::template All8<0xDF>()));
        const std::uint64_t isOverlong2 = V::GetSignBits(
            V::Equal8(V::And(in_at, V::template All8<0xFE>()), V::template All8<0xC0>()));
        const std::uint64_t follower = m_high & ~head;

        Utf8Bytes<V> bytes;
        bytes.m_at = in_at;
        bytes.m_1 = V::template Earlier<1>(in_at, m_before);
        bytes.m_isHigh = V::GreaterSigned8(V::Zero(), in_at);
        const std::uint64_t after = FromBefore<1>(masks.m_lead, m_masks.m_lead);
        if ((masks.m_lead3 | pending) == 0) {
            if (((follower ^ after) | isOverlong2) != 0) {
                return false;
            }
            Target::Write(io_to, GetLow(bytes), GetHighOf2(bytes), ~masks.m_lead);
        } else if (!ConvertLong(bytes, masks, follower ^ after, isOverlong2, io_to)) {
            return false;
        }
        m_before = in_at;
        m_masks = masks;
        return true;
    }

    template <int COUNT>
    static ORSKA_INLINE std::uint64_t FromBefore(std::uint64_t in_mask, std::uint64_t in_before) {
        return ((in_mask << COUNT) | (in_before >> (V::SIZE - COUNT))) & V::FULL;
    }

    // The low byte of the code point, if the byte ends one.
    static ORSKA_INLINE Type GetLow(const Utf8Bytes<V>& in_bytes) {
        const auto bits =
            V::And(V::template ShiftLeft16<6>(in_bytes.m_1), V::template All8<0xC0>());
        return V::Or(V::And(in_bytes.m_at, V::template All8<0x7F>()),
                     V::And(bits, in_bytes.m_isHigh));
    }
    // Bits 8 to 11. A lead of two bytes has bit 5 clear, so it can be read like a follower.
    static ORSKA_INLINE Type GetHighOf2(const Utf8Bytes<V>& in_bytes) {
        const auto bits =
            V::And(V::template ShiftRight16<2>(in_bytes.m_1), V::template All8<0x0F>());
        return V::And(bits, in_bytes.m_isHigh);
    }

    // Converts a block with sequences of three or four bytes.
    template <class To>
    ORSKA_INLINE bool ConvertLong(Utf8Bytes<V>& io_bytes, Utf8Masks& io_masks,
                                  std::uint64_t in_unexplained, std::uint64_t in_bad, To& io_to) {
        const auto& at = io_bytes.m_at;
        io_bytes.m_2 = V::template Earlier<2>(at, m_before);
        const std::uint64_t after1 = FromBefore<1>(io_masks.m_lead3, m_masks.m_lead3);
        const std::uint64_t after2 = FromBefore<2>(io_masks.m_lead3, m_masks.m_lead3);
        const std::uint64_t drop = io_masks.m_lead | after1;
        const auto low = GetLow(io_bytes);
        // E0 to EF minus E0 are bits 12 to 15; everything below becomes 0.
        const auto bits = V::template ShiftLeft16<4>(
            V::SubtractSaturated8(io_bytes.m_2, V::template All8<0xE0>()));
        const std::uint64_t isLead4 =
            V::GetSignBits(V::GreaterSigned8(at, V::template All8<0xEF>()));
        io_masks.m_lead4 = isLead4 & io_masks.m_lead3;
        const std::uint64_t pending4 = m_masks.m_lead4 >> (V::SIZE - 3);
        if ((io_masks.m_lead4 | pending4) == 0) {
            const auto high = V::Or(GetHighOf2(io_bytes), bits);
            const std::uint64_t bad3 = GetBadHigh(high) & after2;
            if (((in_unexplained ^ after2) | in_bad | bad3) != 0) {
                return false;
            }
            Target::Write(io_to, low, high, ~drop);
            return true;
        }
        return ConvertLong4(io_bytes, io_masks, in_unexplained ^ after2, in_bad, after2, drop, low,
                            V::Or(GetHighOf2(io_bytes), V::And(bits, V::template All8<0xF0>())),
                            io_to);
    }

    template <class To>
    ORSKA_INLINE bool ConvertLong4(Utf8Bytes<V>& io_bytes, const Utf8Masks& in_masks,
                                   std::uint64_t in_unexplained, std::uint64_t in_bad,
                                   std::uint64_t in_after2, std::uint64_t in_drop, Type in_low,
                                   Type in_high, To& io_to) {
        const auto& at = io_bytes.m_at;
        io_bytes.m_3 = V::template Earlier<3>(at, m_before);
        const auto isThird =
            V::Equal8(V::SubtractSaturated8(V::template All8<0xF0>(), io_bytes.m_2), V::Zero());
        const auto isFourth =
            V::Equal8(V::SubtractSaturated8(V::template All8<0xF0>(), io_bytes.m_3), V::Zero());
        const std::uint64_t third = FromBefore<2>(in_masks.m_lead4, m_masks.m_lead4);
        const std::uint64_t fourth = FromBefore<3>(in_masks.m_lead4, m_masks.m_lead4);
        // Bits 16 to 20 must be 1 to 16.
        const auto plane =
            V::Or(V::And(V::template ShiftLeft16<2>(io_bytes.m_2), V::template All8<0x1C>()),
                  V::And(V::template ShiftRight16<4>(io_bytes.m_1), V::template All8<0x03>()));
        const auto plane1 = V::Add8(plane, V::template All8<0xFF>());
        const std::uint64_t isGood4 =
            V::GetSignBits(V::Equal8(V::And(plane1, V::template All8<0xF0>()), V::Zero()));
        const std::uint64_t tooLarge =
            V::GetSignBits(V::GreaterSigned8(at, V::template All8<0xF4>())) & in_masks.m_lead4;
        const std::uint64_t bad =
            (~isGood4 & third) | tooLarge | (GetBadHigh(in_high) & in_after2 & ~third);
        if (((in_unexplained ^ fourth) | in_bad | bad) != 0) {
            return false;
        }
        const std::uint64_t drop = Target::KEEPS_THIRD ? in_drop : in_drop | third;
        Target::Write4(io_to, io_bytes, in_low, in_high, plane1, isThird, isFourth, ~drop);
        return true;
    }

    // Marks high bytes of three-byte sequences below U+0800 and of surrogates.
    static ORSKA_INLINE std::uint64_t GetBadHigh(Type in_high) {
        const auto five = V::And(in_high, V::template All8<0xF8>());
        return V::GetSignBits(
            V::Or(V::Equal8(five, V::Zero()), V::Equal8(five, V::template All8<0xD8>())));
    }

    Type m_before = V::Zero();
    Utf8Masks m_masks;
    std::uint64_t m_high = 0;  // the bytes of the last block that are not ASCII
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
