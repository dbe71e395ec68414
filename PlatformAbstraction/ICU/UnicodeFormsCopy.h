// Copies UTF-16 while it is well-formed, with the vectors of a level. Included by the bodies of
// UnicodeFormsKernels.h only; everything is local to the including file.
#ifndef PLATFORMABSTRACTION_ICU_UNICODEFORMSCOPY_H
#define PLATFORMABSTRACTION_ICU_UNICODEFORMSCOPY_H

#include "PlatformAbstraction/ICU/Siconv/blocks/Vector128.h"
#include "PlatformAbstraction/ICU/UnicodeFormsKernels.h"

namespace Orska::Support::UnicodeForms {

namespace {

// Sets each 16-bit lane whose upper bits are those of the kind to all ones.
template <class V, std::uint32_t MASK, std::uint32_t KIND>
ORSKA_INLINE typename V::Type IsKind(typename V::Type in_units) {
    return V::Equal16(V::And(in_units, V::template All16<MASK>()), V::template All16<KIND>());
}

// IS_SOURCE_BIG, IS_TARGET_BIG: the byte order of each text.
template <class VECTOR, bool IS_SOURCE_BIG, bool IS_TARGET_BIG>
struct Copy {
    using V = VECTOR;
    using Type = typename V::Type;
    static constexpr std::uint64_t BLOCK = V::SIZE / 2;  // units

    template <bool IS_BIG>
    static ORSKA_INLINE Type Order(Type in_units) {
        return IS_BIG ? V::Or(V::template ShiftLeft16<8>(in_units),
                              V::template ShiftRight16<8>(in_units))
                      : in_units;
    }
    static ORSKA_INLINE Type Load(const char* in_at) {
        return Order<IS_SOURCE_BIG>(V::Load(in_at));
    }
    static ORSKA_INLINE void Store(char* out_at, Type in_units) {
        V::Store(out_at, Order<IS_TARGET_BIG>(in_units));
    }
    static bool IsUnitOfKind(const char* in_at, unsigned in_kind) {
        return (static_cast<unsigned char>(in_at[IS_SOURCE_BIG ? 0 : 1]) & 0xFCU) == in_kind >> 8;
    }

    // Forms of text. GetOthers marks the lanes that are not of the form. It reads AHEAD units after
    // the block.

    struct Plain {
        static constexpr std::uint64_t AHEAD = 0;
        static ORSKA_INLINE Type GetOthers(const char*, Type in_units) {
            return IsKind<V, 0xF800, 0xD800>(in_units);
        }
    };
    // A lead in each even place and a trail in each odd one.
    struct Pairs {
        static constexpr std::uint64_t AHEAD = 0;
        static ORSKA_INLINE Type GetOthers(const char*, Type in_units) {
            return V::Xor(V::And(in_units, V::template All16<0xFC00>()),
                          V::template All32<0xDC00D800>());
        }
    };
    // A trail after each lead, and a lead before each trail.
    struct Mixed {
        static constexpr std::uint64_t AHEAD = 1;
        static ORSKA_INLINE Type GetOthers(const char* in_at, Type in_units) {
            return V::Xor(IsKind<V, 0xFC00, 0xD800>(in_units),
                          IsKind<V, 0xFC00, 0xDC00>(Load(in_at + 2)));
        }
    };

    // Copies COUNT blocks at a time until some hold units outside the form.
    template <class Form, std::uint64_t COUNT>
    static ORSKA_INLINE void CopyBlocks(const char* in_source, char* out_target,
                                        std::uint64_t in_count, std::uint64_t& io_done) {
        while (io_done + COUNT * BLOCK + Form::AHEAD <= in_count) {
            auto others = V::Zero();
            for (std::uint64_t i = 0; i < COUNT; ++i) {
                const std::uint64_t at = 2 * (io_done + i * BLOCK);
                const auto units = Load(in_source + at);
                Store(out_target + at, units);
                others = V::Or(others, Form::GetOthers(in_source + at, units));
            }
            if (!V::IsZero(others)) {
                return;
            }
            io_done += COUNT * BLOCK;
        }
    }

    // A BlockStep. Most text has no surrogates, or runs of nothing else, so one test of each unit
    // is enough.
    static ORSKA_INLINE std::uint64_t Convert(const char* in_source, char* out_target,
                                              std::uint64_t in_count) {
        if (in_count < BLOCK || IsUnitOfKind(in_source, 0xDC00)) {
            return 0;
        }
        std::uint64_t done = 0;
        if (in_count >= 4 * BLOCK) {
            CopyBlocks<Plain, 4>(in_source, out_target, in_count, done);
            CopyBlocks<Pairs, 4>(in_source, out_target, in_count, done);
            // Neither ends after a lead. The code below looks for trails after its own units only.
            if (done < in_count && IsUnitOfKind(in_source + 2 * done, 0xDC00)) {
                return done;
            }
            CopyBlocks<Mixed, 4>(in_source, out_target, in_count, done);
        }
        CopyBlocks<Mixed, 1>(in_source, out_target, in_count, done);
        // The last block may overlap the one before it.
        if (done + BLOCK >= in_count) {
            const auto units = Load(in_source + 2 * (in_count - BLOCK));
            if (V::IsZero(Plain::GetOthers(nullptr, units))) {
                Store(out_target + 2 * (in_count - BLOCK), units);
                return in_count;
            }
        }
        return done > 0 && IsUnitOfKind(in_source + 2 * (done - 1), 0xD800) ? done - 1 : done;
    }
};

}  // namespace

}  // namespace Orska::Support::UnicodeForms

#endif
