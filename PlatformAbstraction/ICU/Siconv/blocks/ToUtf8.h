// Converts vectors of 16-bit or 32-bit units to UTF-8. Included by kernels only; everything is
// local to the including file.
//
// Each unit is spread over a lane that holds the bytes of every form it could take, and a table
// selects the bytes to keep.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOUTF8_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOUTF8_H

#include "PlatformAbstraction/ICU/Siconv/blocks/Driver.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/SingleByteSets.h"

namespace Orska::Support::Siconv {

namespace {

// Writes vectors of V::SIZE / 2 units. A write may put four bytes of scratch after its text.
template <class V>
struct Utf8Packer {
    using Type = typename V::Type;
    static constexpr std::uint64_t SCRATCH = 4;

    static ORSKA_INLINE Type IsAscii(Type in_units) {
        return V::Equal16(V::And(in_units, V::template All16<0xFF80>()), V::Zero());
    }

    // Writes units below 800; in_isAscii is a mask of lanes. True when all are ASCII.
    template <class To>
    static ORSKA_INLINE bool Write2(Type in_units, Type in_isAscii, To& io_to) {
        const auto lead = V::template ShiftRight16<6>(in_units);
        const auto follower =
            V::template ShiftLeft16<8>(V::And(in_units, V::template All16<0x3F>()));
        const auto both = V::Or(V::Or(lead, follower), V::template All16<0x80C0>());
        const auto lanes = V::Select(both, in_units, in_isAscii);
        const std::uint64_t isShort = V::GetSignBits(V::PackSigned16(in_isAscii, in_isAscii));
        V::PackUtf8Of2(io_to, lanes, isShort);
        return isShort == V::FULL;
    }

    // Writes bytes that are code points: the lead is C2 or C3, the follower lacks bit 6. True when
    // all are ASCII.
    template <class To>
    static ORSKA_INLINE bool WriteUpToFF(Type in_bytes, To& io_to) {
        const auto first =
            V::Select(in_bytes, GetLead<V>(in_bytes), V::GreaterSigned8(V::Zero(), in_bytes));
        const auto follower = V::And(in_bytes, V::template All8<0xBF>());
        const std::uint64_t isHigh = V::GetSignBits(in_bytes);
        V::PackUtf8Of2Pair(io_to, V::InterleaveLow8(first, follower),
                           V::InterleaveHigh8(first, follower), ~isHigh);
        return isHigh == 0;
    }

    // Writes bytes, given the last two bytes of their UTF-8, with E2 before those that have
    // no lead.
    template <class To>
    static ORSKA_INLINE void WriteMapped(Type in_bytes, Type in_middle, Type in_last, To& io_to) {
        // The signs tell which have more than one byte, and which have three.
        const auto isLong = V::Add8(in_middle, V::template All8<0x40>());
        const std::uint64_t sizes[] = {~V::GetSignBits(V::InterleaveLow32(in_bytes, isLong)),
                                       ~V::GetSignBits(V::InterleaveHigh32(in_bytes, isLong))};
        const auto first = V::template All8<0xE2>();
        Type front[2];
        Type back[2];
        V::template Interleave8<false>(first, in_middle, front);
        V::template Interleave8<false>(in_last, in_bytes, back);
        const Type low[] = {V::InterleaveLow16(front[0], back[0]),
                            V::InterleaveLow16(front[1], back[1])};
        const Type high[] = {V::InterleaveHigh16(front[0], back[0]),
                             V::InterleaveHigh16(front[1], back[1])};
        V::PackUtf8Pairs(io_to, low, high, sizes);
    }

    // Moves the bits of code points in 32-bit lanes to their places in a sequence of four bytes.
    static ORSKA_INLINE Type SpreadBits(Type in_at) {
        return V::Or(V::Or(V::template ShiftLeft32<24>(V::And(in_at, V::template All32<0x3F>())),
                           V::template ShiftLeft32<10>(V::And(in_at, V::template All32<0xFC0>()))),
                     V::Or(V::template ShiftRight32<4>(V::And(in_at, V::template All32<0x3F000>())),
                           V::template ShiftRight32<18>(in_at)));
    }

    // Writes units that are not surrogates; in_isShort: those below 800.
    template <class To>
    static ORSKA_INLINE void Write3(Type in_units, Type in_isAscii, Type in_isShort, To& io_to) {
        WriteParts(GetFirstTwo(in_units, in_isShort), GetLastTwo(in_units), in_isAscii, in_isShort,
                   io_to);
    }

    // Writes units that all have three bytes.
    template <class To>
    static ORSKA_INLINE void Write3Only(Type in_units, To& io_to) {
        const auto first = GetFirstTwo(in_units, V::Zero());
        const auto last =
            V::Or(V::And(in_units, V::template All16<0x3F>()), V::template All16<0x80>());
        V::PackUtf8Of3(io_to, V::InterleaveLow16(first, last), V::InterleaveHigh16(first, last));
    }

    // The lead and the second byte of three. For two bytes the lead is in the second place.
    static ORSKA_INLINE Type GetFirstTwo(Type in_units, Type in_isShort) {
        // Bits 6 to 11 move two places up in their byte, to the higher one.
        const auto bits = V::MultiplyAdd8(
            V::And(V::template ShiftRight16<4>(in_units), V::template All16<0x0FFC>()),
            V::template All16<0x0140>());
        const auto marks =
            V::Or(V::template All16<0x80E0>(), V::And(in_isShort, V::template All16<0x4000>()));
        return V::Or(bits, marks);
    }
    // The last byte, and the single one of ASCII.
    static ORSKA_INLINE Type GetLastTwo(Type in_units) {
        const auto twice =
            V::Shuffle(in_units, V::RepeatLane(0x02020000, 0x06060404, 0x0A0A0808, 0x0E0E0C0C));
        return V::Or(V::And(twice, V::template All16<0x7F3F>()), V::template All16<0x0080>());
    }
    template <class To>
    static ORSKA_INLINE void WriteParts(Type in_first, Type in_last, Type in_isAscii,
                                        Type in_isShort, To& io_to) {
        const auto low = V::InterleaveLow16(in_first, in_last);
        const auto high = V::InterleaveHigh16(in_first, in_last);
        const std::uint64_t sizes =
            V::GetSignBits(V::SwapMiddle32(V::PackSigned16(in_isAscii, in_isShort)));
        V::PackUtf8Pair(io_to, low, high, sizes);
    }
};

// Writes units that are not surrogates. Guessing that all are ASCII pays for 8 units, even if often
// wrong; for 16 it does not.
template <class V, class To>
ORSKA_INLINE void WriteMixed(typename V::Type in_units, To& io_to) {
    const auto isAscii = Utf8Packer<V>::IsAscii(in_units);
    if constexpr (V::SIZE == 16) {
        if (V::GetSignBits(isAscii) == V::FULL) {
            V::PutLow(io_to, V::PackUnsigned16(in_units, in_units), V::SIZE / 2);
            return;
        }
    }
    const auto five = V::And(in_units, V::template All16<0xF800>());
    Utf8Packer<V>::Write3(in_units, isAscii, V::Equal16(five, V::Zero()), io_to);
}

// Writes one vector of units after another by the quickest form, with a loop for each form. Text in
// which the form is hard to predict stays for a while with one that handles all: wrong guesses of
// the processor cost more than the quicker form gains.
//
// The positions are kept in members: if the cursor is passed on, the compiler stores it at
// each step.
//
// Source is a class of blocks that has LoadUnits(at, units), for V::SIZE / 2 units from STEP bytes;
// it returns false for units of more than 16 bits.
template <class VECTOR, class Source>
class Utf8Run {
public:
    using V = VECTOR;
    using Type = typename V::Type;
    using Writer = Utf8Packer<V>;
    static constexpr std::uint64_t ROOM = V::SIZE / 2 * 3 + Writer::SCRATCH;

    // Stops at surrogates and near the ends.
    static ORSKA_INLINE void Continue(Cursor& io_cursor) {
        bool isBehindAscii = true;
        while (isBehindAscii) {
            Utf8Run run(io_cursor);
            isBehindAscii = run.Convert();
            io_cursor.m_from = run.m_from;
            io_cursor.m_to = run.m_to;
            if (isBehindAscii) {
                ConvertPlainRun<Source>(io_cursor);
            }
        }
    }

private:
    static constexpr std::uint64_t STAY_COUNT = 16;  // vectors
    static constexpr std::uint32_t ASCII_COUNT = 2;  // pairs

    explicit ORSKA_INLINE Utf8Run(const Cursor& in_cursor)
        : m_from(in_cursor.m_from),
          m_fromEnd(in_cursor.m_fromEnd),
          m_to(in_cursor.m_to),
          m_toEnd(in_cursor.m_toEnd) {}

    ORSKA_INLINE bool Convert() {
        while (CanRead(2) && CanWrite(2 * V::SIZE)) {
            if (WriteUpToFF()) {
                return true;
            }
            if (!WriteEach<UpTo7FF>() && !WriteEach<Of3Only>() && !WriteEach<UpToFFFF>()) {
                break;
            }
        }
        return false;
    }

    ORSKA_INLINE bool CanRead(std::uint64_t in_count) const {
        return static_cast<std::uint64_t>(m_fromEnd - m_from) >= in_count * Source::STEP;
    }
    ORSKA_INLINE bool CanWrite(std::uint64_t in_size) const {
        return static_cast<std::uint64_t>(m_toEnd - m_to) >= in_size;
    }
    // How many vectors can be converted without checks of the ends.
    ORSKA_INLINE std::uint64_t CountSteps() const {
        const std::uint64_t there = static_cast<std::uint64_t>(m_fromEnd - m_from) / Source::STEP;
        const std::uint64_t fitting = static_cast<std::uint64_t>(m_toEnd - m_to) / ROOM;
        const std::uint64_t steps = there < fitting ? there : fitting;
        return steps < STAY_COUNT ? steps : STAY_COUNT;
    }

    // Writes two vectors of units up to FF at a time; true after some of ASCII.
    ORSKA_INLINE bool WriteUpToFF() {
        std::uint32_t asciiRun = 0;
        while (CanRead(2) && CanWrite(2 * V::SIZE)) {
            Type first;
            Type second;
            if (!Source::LoadUnits(m_from, first) ||
                !Source::LoadUnits(m_from + Source::STEP, second) ||
                !V::IsZero(V::And(V::Or(first, second), V::template All16<0xFF00>()))) {
                return false;
            }
            const bool isAscii = Writer::WriteUpToFF(V::PackUnits16(first, second), m_to);
            m_from += 2 * Source::STEP;
            asciiRun = isAscii ? asciiRun + 1 : 0;
            if (asciiRun == ASCII_COUNT) {
                return true;
            }
        }
        return false;
    }

    // Writes vectors while Form accepts them; false when there was none.
    template <class Form>
    ORSKA_INLINE bool WriteEach() {
        const char* const start = m_from;
        for (std::uint64_t steps = CountSteps(); steps > 0; --steps) {
            Type units;
            if (!Source::LoadUnits(m_from, units) ||
                !Form::Write(units, V::And(units, V::template All16<0xF800>()), m_to)) {
                break;
            }
            m_from += Source::STEP;
        }
        return m_from != start;
    }

    static ORSKA_INLINE Type IsSurrogate(Type in_five) {
        return V::Equal16(in_five, V::template All16<0xD800>());
    }

    // Forms write units if they accept them. in_five: their upper five bits.
    struct UpTo7FF {
        static ORSKA_INLINE bool Write(Type in_units, Type in_five, char*& io_to) {
            if (!V::IsZero(in_five)) {
                return false;
            }
            Writer::Write2(in_units, Writer::IsAscii(in_units), io_to);
            return true;
        }
    };
    struct Of3Only {
        static ORSKA_INLINE bool Write(Type in_units, Type in_five, char*& io_to) {
            if (!V::IsZero(V::Or(IsSurrogate(in_five), V::Equal16(in_five, V::Zero())))) {
                return false;
            }
            Writer::Write3Only(in_units, io_to);
            return true;
        }
    };
    struct UpToFFFF {
        static ORSKA_INLINE bool Write(Type in_units, Type in_five, char*& io_to) {
            if (!V::IsZero(IsSurrogate(in_five))) {
                return false;
            }
            WriteMixed<V>(in_units, io_to);
            return true;
        }
    };

    const char* m_from;
    const char* m_fromEnd;
    char* m_to;
    char* m_toEnd;
};

template <class VECTOR, bool IS_BIG>
class Utf16Blocks : public Utf16Source<VECTOR, IS_BIG, 0xFF80> {
    using Source = Utf16Source<VECTOR, IS_BIG, 0xFF80>;

public:
    using V = VECTOR;
    using Type = typename V::Type;
    static constexpr std::uint64_t ROOM = V::SIZE / 2 * 3 + Utf8Packer<V>::SCRATCH;
    static constexpr std::uint64_t STEP = V::SIZE;

    static ORSKA_INLINE bool LoadUnits(const char* in_at, Type& out_units) {
        out_units = Source::Load(in_at);
        return true;
    }

    // Near the end of a target this is slower than block by block.
    static ORSKA_INLINE bool ConvertTwo(Type, Type, BoundedTo&) { return false; }
    // Units up to FF.
    static ORSKA_INLINE bool ConvertTwo(Type in_first, Type in_second, char*& io_to) {
        if (!V::IsZero(V::And(V::Or(in_first, in_second), V::template All16<0xFF00>()))) {
            return false;
        }
        Utf8Packer<V>::WriteUpToFF(V::PackUnits16(in_first, in_second), io_to);
        return true;
    }

    template <class To>
    ORSKA_INLINE bool Convert(Type in_at, To& io_to) {
        this->m_isPlain = Source::IsPlain(in_at) && !this->IsPending();
        this->m_hasSurrogates = false;
        if (this->m_isPlain) {
            PutPlain<Utf16Blocks>(io_to, in_at);
            return true;
        }
        const auto isAscii = V::Equal16(V::And(in_at, V::template All16<0xFF80>()), V::Zero());
        const auto five = V::And(in_at, V::template All16<0xF800>());
        if (V::IsZero(five) && !this->IsPending()) {
            Utf8Packer<V>::Write2(in_at, isAscii, io_to);
            return true;
        }
        const auto isShort = V::Equal16(five, V::Zero());
        const auto isSurrogate = V::Equal16(five, V::template All16<0xD800>());
        if (V::GetSignBits(isSurrogate) == 0 && !this->IsPending()) {
            Utf8Packer<V>::Write3(in_at, isAscii, isShort, io_to);
            return true;
        }
        return ConvertSurrogates(in_at, isAscii, isShort, isSurrogate, io_to);
    }

    ORSKA_INLINE void ContinueRun(Cursor& io_cursor, const char*) {
        if (this->m_hasSurrogates) {
            return;
        }
        if (this->m_isPlain) {
            ConvertPlainRun<Utf16Blocks>(io_cursor);
        }
        Utf8Run<V, Utf16Blocks>::Continue(io_cursor);
    }

    // A lead surrogate has already written two bytes.
    ORSKA_INLINE void TakeBack(Cursor& io_cursor, const char*) {
        if (this->IsPending()) {
            io_cursor.m_from -= 2;
            io_cursor.m_to -= 2;
        }
    }

private:
    // Writes surrogate pairs, each from a separate lane.
    template <class To>
    static ORSKA_INLINE void WritePairs(Type in_at, To& io_to) {
        const auto upper = V::template ShiftLeft32<10>(V::And(in_at, V::template All32<0x3FF>()));
        const auto lower = V::And(V::template ShiftRight32<16>(in_at), V::template All32<0x3FF>());
        const auto at = V::Add32(V::Or(upper, lower), V::template All32<0x10000>());
        V::Put(io_to, V::Or(Utf8Packer<V>::SpreadBits(at), V::template All32<0x808080F0>()),
               V::SIZE);
    }

    // A lead surrogate becomes the first two of four bytes, a trail the last two.
    template <class To>
    ORSKA_INLINE bool ConvertSurrogates(Type in_at, Type in_isAscii, Type in_isShort,
                                        Type in_isSurrogate, To& io_to) {
        using Writer = Utf8Packer<V>;
        Type isLead;
        Type isTrail;
        if (!Source::PairSurrogates(in_at, in_isSurrogate, isLead, isTrail)) {
            return false;
        }
        if (this->m_isLead == (V::FULL & 0x3333333333333333)) {
            WritePairs(in_at, io_to);
            m_before = in_at;
            return true;
        }
        const auto offset = V::Add16(in_at, V::template All16<0x40>());
        const auto leadFirst =
            V::Or(V::And(offset, V::template All16<0x0700>()), V::template All16<0xF000>());
        const auto leadLast =
            V::Or(V::And(V::template ShiftRight16<2>(offset), V::template All16<0x3F>()),
                  V::template All16<0x80>());
        const auto before = V::template ShiftLeft16<12>(
            V::And(V::template Earlier<2>(in_at, m_before), V::template All16<0x03>()));
        const auto trailFirst = V::Or(
            V::Or(V::And(V::template ShiftLeft16<2>(in_at), V::template All16<0x0F00>()), before),
            V::template All16<0x8000>());
        const auto first =
            V::Select(V::Select(Writer::GetFirstTwo(in_at, in_isShort), leadFirst, isLead),
                      trailFirst, isTrail);
        const auto last = V::Select(Writer::GetLastTwo(in_at), leadLast, isLead);
        Writer::WriteParts(first, last, in_isAscii, V::Or(in_isShort, in_isSurrogate), io_to);
        m_before = in_at;
        return true;
    }

    Type m_before = V::Zero();  // the last block with surrogates
};

template <class VECTOR, bool IS_BIG>
class Utf32Blocks {
public:
    using V = VECTOR;
    using Type = typename V::Type;
    static constexpr std::uint64_t SOURCE_UNIT = 4;
    static constexpr std::uint64_t TARGET_UNIT = 1;
    static constexpr std::uint64_t ROOM = V::SIZE;
    static constexpr std::uint64_t STEP = 2 * V::SIZE;

    static ORSKA_INLINE Type Load(const char* in_at) {
        return V::template OrderUnits32<IS_BIG>(V::Load(in_at));
    }
    static ORSKA_INLINE Type LoadPart(const char* in_at, std::uint64_t in_size) {
        return V::template OrderUnits32<IS_BIG>(V::LoadPart(in_at, in_size));
    }
    static ORSKA_INLINE bool LoadUnits(const char* in_at, Type& out_units) {
        const auto first = Load(in_at);
        const auto second = Load(in_at + V::SIZE);
        out_units = V::PackUnits32(first, second);
        return V::IsZero(V::And(V::Or(first, second), V::template All32<0xFFFF0000>()));
    }
    static ORSKA_INLINE bool IsPlain(Type in_at) {
        return V::IsZero(V::And(in_at, V::template All32<0xFFFFFF80>()));
    }
    static ORSKA_INLINE void WritePlain(char* out_to, Type in_at) {
        V::WriteNarrow32(out_to, in_at);
    }
    static ORSKA_INLINE std::uint64_t GetWhole(const char*, std::uint64_t in_size) {
        return in_size & ~std::uint64_t{3};
    }
    ORSKA_INLINE bool IsPending() const { return false; }

    // Converts code points below 10000, as 16-bit units.
    template <class To>
    static ORSKA_INLINE bool ConvertTwo(Type in_first, Type in_second, To& io_to) {
        using Writer = Utf8Packer<V>;
        if (!V::IsZero(V::And(V::Or(in_first, in_second), V::template All32<0xFFFF0000>()))) {
            return false;
        }
        const auto units = V::PackUnits32(in_first, in_second);
        const auto five = V::And(units, V::template All16<0xF800>());
        const auto isAscii = Writer::IsAscii(units);
        if (V::IsZero(five)) {
            Writer::Write2(units, isAscii, io_to);
            return true;
        }
        if (!V::IsZero(V::Equal16(five, V::template All16<0xD800>()))) {
            return false;
        }
        Writer::Write3(units, isAscii, V::Equal16(five, V::Zero()), io_to);
        return true;
    }

    template <class To>
    ORSKA_INLINE bool Convert(Type in_at, To& io_to) {
        m_isPlain = IsPlain(in_at);
        m_isLarge = false;
        if (m_isPlain) {
            PutPlain<Utf32Blocks>(io_to, in_at);
            return true;
        }
        const auto isSurrogate =
            V::Equal32(V::And(in_at, V::template All32<0xFFFFF800>()), V::template All32<0xD800>());
        // Signed: values with the highest bit are below 0.
        const auto isTooLarge = V::Or(V::GreaterSigned32(in_at, V::template All32<0x10FFFF>()),
                                      V::GreaterSigned32(V::Zero(), in_at));
        if (!V::IsZero(V::Or(isSurrogate, isTooLarge))) {
            return false;
        }
        const auto is1 = V::GreaterSigned32(V::template All32<0x80>(), in_at);
        const auto is2 = V::GreaterSigned32(V::template All32<0x800>(), in_at);
        const auto is3 = V::GreaterSigned32(V::template All32<0x10000>(), in_at);
        m_isLarge = V::GetSignBits(is3) != V::FULL;
        const auto bits = Utf8Packer<V>::SpreadBits(in_at);
        const auto marks = V::Select(
            V::Select(V::template All32<0x808080F0>(), V::template All32<0x8080E000>(), is3),
            V::template All32<0x80C00000>(), is2);
        const auto lanes = V::Select(V::Or(bits, marks), V::template ShiftLeft32<24>(in_at), is1);
        const auto first = V::Or(is1, V::Equal32(is3, V::Zero()));
        const auto sizes = V::PackSigned32(first, is2);
        V::PackUtf8(PACK_UTF8_4, io_to, lanes, V::GetSignBits(V::PackSigned16(sizes, sizes)));
        return true;
    }

    // Converts two vectors at a time, as 16-bit units, while all code points are below 10000.
    ORSKA_INLINE void ContinueRun(Cursor& io_cursor, const char*) {
        if (m_isPlain) {
            ConvertPlainRun<Utf32Blocks>(io_cursor);
        }
        if (!m_isLarge) {
            Utf8Run<V, Utf32Blocks>::Continue(io_cursor);
        }
    }
    ORSKA_INLINE void TakeBack(Cursor&, const char*) {}

private:
    bool m_isPlain = false;
    bool m_isLarge = false;  // the last block has code points above FFFF
};

// latin1 and cp1252.
template <class VECTOR, class Set>
class SingleByteBlocks : public ByteSource<VECTOR> {
public:
    using V = VECTOR;
    using Type = typename V::Type;
    using ByteSource<VECTOR>::IsPlain;
    static constexpr std::uint64_t TARGET_UNIT = 1;
    static constexpr std::uint64_t ROOM = V::SIZE * Set::MAX_UTF8 + Utf8Packer<V>::SCRATCH;

    static ORSKA_INLINE void WritePlain(char* out_to, Type in_at) { V::Store(out_to, in_at); }
    static ORSKA_INLINE std::uint64_t GetWhole(const char*, std::uint64_t in_size) {
        return in_size;
    }
    ORSKA_INLINE bool IsPending() const { return false; }

    template <class To>
    ORSKA_INLINE bool Convert(Type in_at, To& io_to) {
        m_isPlain = IsPlain(in_at);
        if (m_isPlain) {
            PutPlain<SingleByteBlocks>(io_to, in_at);
            return true;
        }
        auto middle = V::Zero();
        auto last = V::Zero();
        if (Set::template MapToUtf8<V>(in_at, middle, last)) {
            Utf8Packer<V>::WriteMapped(in_at, middle, last, io_to);
        } else {
            Utf8Packer<V>::WriteUpToFF(in_at, io_to);
        }
        return true;
    }

    ORSKA_INLINE void ContinueRun(Cursor& io_cursor, const char*) {
        if (m_isPlain) {
            ConvertPlainRun<SingleByteBlocks>(io_cursor);
        }
    }
    ORSKA_INLINE void TakeBack(Cursor&, const char*) {}

private:
    bool m_isPlain = false;
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
