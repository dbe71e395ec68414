// Converts UTF-16 to latin1 or cp1252, which are one target. Included by kernels only; everything
// is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOSINGLEBYTE_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_TOSINGLEBYTE_H

#include "PlatformAbstraction/ICU/Siconv/blocks/Driver.h"

namespace Orska::Support::Siconv {

namespace {

template <class VECTOR, bool IS_BIG>
class Utf16ToSingleByteBlocks : public Utf16Source<VECTOR, IS_BIG, 0xFF00> {
    using Source = Utf16Source<VECTOR, IS_BIG, 0xFF00>;

public:
    using V = VECTOR;
    using Type = typename V::Type;
    static constexpr std::uint64_t ROOM = V::SIZE / 2;

    template <class To>
    ORSKA_INLINE bool Convert(Type in_at, To& io_to) {
        this->m_isPlain = Source::IsPlain(in_at) && !this->IsPending();
        this->m_hasSurrogates = false;
        if (this->m_isPlain) {
            PutPlain<Utf16ToSingleByteBlocks>(io_to, in_at);
            return true;
        }
        const auto isSmall = V::Equal16(V::And(in_at, V::template All16<0xFF00>()), V::Zero());
        const auto bytes = V::Select(V::template All16<0x1A>(), in_at, isSmall);
        const auto isSurrogate =
            V::Equal16(V::And(in_at, V::template All16<0xF800>()), V::template All16<0xD800>());
        if (V::IsZero(isSurrogate) && !this->IsPending()) {
            PutPlain<Utf16ToSingleByteBlocks>(io_to, bytes);
            return true;
        }
        // The lead surrogate becomes the pair's substitute, the trail nothing.
        Type isLead;
        Type isTrail;
        if (!Source::PairSurrogates(in_at, isSurrogate, isLead, isTrail)) {
            return false;
        }
        V::CompressNarrow16(io_to, bytes, ~V::GetSignBits(V::PackSigned16(isTrail, isTrail)));
        return true;
    }

    ORSKA_INLINE void ContinueRun(Cursor& io_cursor, const char*) {
        if (this->m_isPlain) {
            ConvertPlainRun<Utf16ToSingleByteBlocks>(io_cursor);
        } else if (!this->m_hasSurrogates) {
            ConvertMixedRun(io_cursor);
        }
    }

    ORSKA_INLINE void TakeBack(Cursor& io_cursor, const char*) {
        if (this->IsPending()) {
            io_cursor.m_from -= 2;
            io_cursor.m_to -= 1;
        }
    }

private:
    // Converts units that are not surrogates. After some up to FF only, a quicker way may continue.
    static ORSKA_INLINE void ConvertMixedRun(Cursor& io_cursor) {
        std::uint64_t steps = io_cursor.GetLeft() / V::SIZE;
        steps = steps < io_cursor.GetRoom() / ROOM ? steps : io_cursor.GetRoom() / ROOM;
        const char* from = io_cursor.m_from;
        char* to = io_cursor.m_to;
        for (std::uint32_t plain = 0; steps > 0 && plain < 8; --steps) {
            const auto units = Source::Load(from);
            const auto isSurrogate =
                V::Equal16(V::And(units, V::template All16<0xF800>()), V::template All16<0xD800>());
            if (!V::IsZero(isSurrogate)) {
                break;
            }
            const auto isSmall = V::Equal16(V::And(units, V::template All16<0xFF00>()), V::Zero());
            plain = V::GetSignBits(isSmall) == V::FULL ? plain + 1 : 0;
            Source::WritePlain(to, V::Select(V::template All16<0x1A>(), units, isSmall));
            from += V::SIZE;
            to += ROOM;
        }
        io_cursor.m_from = from;
        io_cursor.m_to = to;
    }
};

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
