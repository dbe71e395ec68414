// The loops over a text that all kernels share: whole blocks, the last one in part, and the ends of
// small targets. Included by kernels only; everything is local to the including file.
//
// A class of blocks converts from one encoding to another. It has
// - V, the vectors it uses; SOURCE_UNIT and TARGET_UNIT, the bytes of a plain character;
// - ROOM, the most bytes written for a block, scratch after the text included;
// - Load(at) and LoadPart(at, size), V::SIZE bytes with units in the processor's byte order;
// - IsPlain(block), whether its characters need no more than other units (at least ASCII is so),
//   and WritePlain(to, block);
// - Convert(block, to), false with nothing changed when the block is not valid so far;
// - ContinueRun(cursor, start), which may convert more after a converted block;
// - IsPending(), whether the last block ended inside a code point;
// - TakeBack(cursor, start), which steps back to the start of such a code point;
// - GetWhole(at, size), the size of the whole code points of a piece, if it is valid;
// - perhaps ConvertTwo(block, block, to), which converts two blocks if there is a quicker way for
//   their kind.
#ifndef PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_DRIVER_H
#define PLATFORMABSTRACTION_ICU_SICONV_BLOCKS_DRIVER_H

#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"
#include "PlatformAbstraction/ICU/Siconv/blocks/Vector128.h"

namespace Orska::Support::Siconv {

namespace {

// Copies up to 32 bytes by overlapping moves.
ORSKA_INLINE void CopyShort(char* out_to, const char* in_from, std::uint64_t in_size) {
    if (in_size >= 16) {
        const auto head = Vector128::Load(in_from);
        const auto tail = Vector128::Load(in_from + in_size - 16);
        Vector128::Store(out_to, head);
        Vector128::Store(out_to + in_size - 16, tail);
    } else if (in_size >= 8) {
        const auto head = Read<std::uint64_t>(in_from);
        const auto tail = Read<std::uint64_t>(in_from + in_size - 8);
        __builtin_memcpy(out_to, &head, 8);
        __builtin_memcpy(out_to + in_size - 8, &tail, 8);
    } else {
        Vector128::StorePart(out_to, Vector128::LoadPart(in_from, in_size), in_size);
    }
}

ORSKA_INLINE void CopyPiece(char* out_to, const char* in_from, std::uint64_t in_size) {
    std::uint64_t copied = 0;
    for (; in_size - copied > 32; copied += 32) {
        CopyShort(out_to + copied, in_from + copied, 32);
    }
    CopyShort(out_to + copied, in_from + copied, in_size - copied);
}

// The source and target of a call while it runs.
struct Cursor {
    const char* m_from;
    const char* m_fromEnd;
    char* m_to;
    char* m_toEnd;

    ORSKA_INLINE std::uint64_t GetLeft() const {
        return static_cast<std::uint64_t>(m_fromEnd - m_from);
    }
    ORSKA_INLINE std::uint64_t GetRoom() const {
        return static_cast<std::uint64_t>(m_toEnd - m_to);
    }
};

ORSKA_INLINE Cursor MakeCursor(const TranscoderSource& in_source,
                               const TranscoderTarget& in_target) {
    return {in_source.m_data + in_source.m_position, in_source.m_data + in_source.m_length,
            in_target.m_data + in_target.m_position, in_target.m_data + in_target.m_length};
}

ORSKA_INLINE void StorePositions(const Cursor& in_cursor, TranscoderSource& io_source,
                                 TranscoderTarget& io_target) {
    io_source.m_position = static_cast<std::uint64_t>(in_cursor.m_from - io_source.m_data);
    io_target.m_position = static_cast<std::uint64_t>(in_cursor.m_to - io_target.m_data);
}

// How many bytes of an incomplete code point are before a position, if the text is valid so far: 0
// to 3.
ORSKA_INLINE std::uint32_t GetCutBytes(const char* in_start, const char* in_at) {
    const auto available = static_cast<std::uint64_t>(in_at - in_start);
    for (std::uint32_t i = 1; i <= 3 && i <= available; ++i) {
        const auto byte = static_cast<unsigned char>(in_at[-static_cast<std::int32_t>(i)]);
        if (byte >= 0xC0) {
            const std::uint32_t size = byte < 0xE0 ? 2 : (byte < 0xF0 ? 3 : 4);
            return size > i ? i : 0;
        }
        if (byte < 0x80) {
            return 0;
        }
    }
    return 0;
}

// The size of a piece of UTF-16 without half a unit or a lead surrogate at its end.
template <bool IS_BIG>
ORSKA_INLINE std::uint64_t GetWholeUtf16(const char* in_at, std::uint64_t in_size) {
    const std::uint64_t size = in_size & ~std::uint64_t{1};
    if (size == 0) {
        return 0;
    }
    const auto high = static_cast<unsigned char>(in_at[size - (IS_BIG ? 2 : 1)]);
    return (high & 0xFC) == 0xD8 ? size - 2 : size;
}

// The common part of the classes of blocks from bytes of which those below 80 are plain.
template <class VECTOR>
struct ByteSource {
    using V = VECTOR;
    using Type = typename V::Type;
    static constexpr std::uint64_t SOURCE_UNIT = 1;

    static ORSKA_INLINE Type Load(const char* in_at) { return V::Load(in_at); }
    static ORSKA_INLINE Type LoadPart(const char* in_at, std::uint64_t in_size) {
        return V::LoadPart(in_at, in_size);
    }
    static ORSKA_INLINE bool IsPlain(Type in_at) { return V::GetSignBits(in_at) == 0; }
};

// The common part of the classes of blocks from UTF-16. OTHER: the bits that no plain unit has.
template <class VECTOR, bool IS_BIG, std::uint32_t OTHER>
class Utf16Source {
public:
    using V = VECTOR;
    using Type = typename V::Type;
    static constexpr std::uint64_t SOURCE_UNIT = 2;
    static constexpr std::uint64_t TARGET_UNIT = 1;

    static ORSKA_INLINE Type Load(const char* in_at) {
        return V::template OrderUnits16<IS_BIG>(V::Load(in_at));
    }
    static ORSKA_INLINE Type LoadPart(const char* in_at, std::uint64_t in_size) {
        return V::template OrderUnits16<IS_BIG>(V::LoadPart(in_at, in_size));
    }
    static ORSKA_INLINE bool IsPlain(Type in_at) {
        return V::IsZero(V::And(in_at, V::template All16<OTHER>()));
    }
    static ORSKA_INLINE void WritePlain(char* out_to, Type in_at) {
        V::WriteNarrow16(out_to, in_at);
    }
    static ORSKA_INLINE std::uint64_t GetWhole(const char* in_at, std::uint64_t in_size) {
        return GetWholeUtf16<IS_BIG>(in_at, in_size);
    }
    ORSKA_INLINE bool IsPending() const { return m_isLead >> (V::SIZE - 1) != 0; }

protected:
    // Finds lead and trail surrogates; false if one has no partner.
    ORSKA_INLINE bool PairSurrogates(Type in_at, Type in_isSurrogate, Type& out_isLead,
                                     Type& out_isTrail) {
        out_isTrail =
            V::Equal16(V::And(in_at, V::template All16<0xFC00>()), V::template All16<0xDC00>());
        out_isLead = V::AndNot(out_isTrail, in_isSurrogate);
        const std::uint64_t lead = V::GetSignBits(out_isLead);
        const std::uint64_t expected = ((lead << 2) | (m_isLead >> (V::SIZE - 2))) & V::FULL;
        if (expected != V::GetSignBits(out_isTrail)) {
            return false;
        }
        m_isLead = lead;
        m_hasSurrogates = true;
        return true;
    }

    std::uint64_t m_isLead = 0;  // two bits for each unit of the last block with surrogates
    bool m_isPlain = false;
    bool m_hasSurrogates = false;
};

// Writes blocks of plain characters. UTF-16 is narrowed two blocks at a time, which halves
// the stores.
template <class Blocks, std::uint32_t COUNT>
ORSKA_INLINE void WritePlainBlocks(char* out_to, const typename Blocks::V::Type* in_parts) {
    using V = typename Blocks::V;
    constexpr std::uint64_t WRITTEN = V::SIZE / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT;
    constexpr std::uint32_t STEP = Blocks::SOURCE_UNIT == 2 && COUNT > 1 ? 2 : 1;
    for (std::uint32_t i = 0; i < COUNT; i += STEP) {
        if constexpr (STEP == 1) {
            Blocks::WritePlain(out_to + i * WRITTEN, in_parts[i]);
        } else {
            V::Store(out_to + i * WRITTEN, V::PackUnits16(in_parts[i], in_parts[i + 1]));
        }
    }
}

// Converts STEP bytes if they are plain; otherwise returns false and changes nothing. Writes
// no scratch.
template <class Blocks, std::uint32_t STEP>
ORSKA_INLINE bool ConvertPlainStep(const char* in_from, char* out_to) {
    using V = typename Blocks::V;
    constexpr std::uint32_t COUNT = STEP / V::SIZE;
    typename V::Type parts[COUNT];
    auto all = V::Zero();
    for (std::uint32_t i = 0; i < COUNT; ++i) {
        parts[i] = Blocks::Load(in_from + i * V::SIZE);
        all = V::Or(all, parts[i]);
    }
    if (!Blocks::IsPlain(all)) {
        return false;
    }
    WritePlainBlocks<Blocks, COUNT>(out_to, parts);
    return true;
}

// Prefetches memory that will be written soon; a prefetch past the target is not an access. Not
// done for text that grows, where it gains nothing.
template <std::uint64_t WRITTEN>
ORSKA_INLINE void PrefetchTarget(const char* in_to) {
    if constexpr (WRITTEN <= 64) {
        __builtin_prefetch(in_to + 256, 1);
    }
}

// Converts whole steps; false at one that is not plain. The positions are local: the compiler would
// store those of the cursor at each step, and a store between those of a cache line keeps the
// processor from joining them.
template <class Blocks, std::uint32_t STEP>
ORSKA_INLINE bool ConvertPlainSteps(Cursor& io_cursor) {
    constexpr std::uint64_t WRITTEN = STEP / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT;
    std::uint64_t steps = io_cursor.GetLeft() / STEP;
    steps = steps < io_cursor.GetRoom() / WRITTEN ? steps : io_cursor.GetRoom() / WRITTEN;
    const char* from = io_cursor.m_from;
    char* to = io_cursor.m_to;
    for (; steps > 0; --steps) {
        PrefetchTarget<WRITTEN>(to);
        if (!ConvertPlainStep<Blocks, STEP>(from, to)) {
            break;
        }
        from += STEP;
        to += WRITTEN;
    }
    io_cursor.m_from = from;
    io_cursor.m_to = to;
    return steps == 0;
}

// Converts steps of 64 bytes while they are plain; of UTF-16 twice as many, which fill a cache
// line. At the end of the text the last step overlaps the one before.
template <class Blocks>
ORSKA_INLINE void ConvertPlainRun(Cursor& io_cursor) {
    constexpr std::uint64_t WRITTEN = 64 / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT;
    const char* const start = io_cursor.m_from;
    if (Blocks::SOURCE_UNIT == 2 && !ConvertPlainSteps<Blocks, 128>(io_cursor)) {
        return;
    }
    if (!ConvertPlainSteps<Blocks, 64>(io_cursor)) {
        return;
    }
    const std::uint64_t left = io_cursor.GetLeft();
    const std::uint64_t written = left / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT;
    if (io_cursor.m_from != start && left > 0 && left < 64 && left % Blocks::SOURCE_UNIT == 0 &&
        io_cursor.GetRoom() >= written &&
        ConvertPlainStep<Blocks, 64>(io_cursor.m_fromEnd - 64,
                                     io_cursor.m_to + written - WRITTEN)) {
        io_cursor.m_from += left;
        io_cursor.m_to += written;
    }
}

// Writes a plain block, without scratch.
template <class Blocks>
ORSKA_INLINE void PutPlain(char*& io_to, typename Blocks::V::Type in_at) {
    Blocks::WritePlain(io_to, in_at);
    io_to += Blocks::V::SIZE / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT;
}
template <class Blocks>
ORSKA_INLINE void PutPlain(BoundedTo& io_to, typename Blocks::V::Type in_at) {
    constexpr std::int64_t WRITTEN = Blocks::V::SIZE / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT;
    char* const to = io_to.m_end - io_to.m_room;
    if (io_to.m_room >= WRITTEN) {
        Blocks::WritePlain(to, in_at);
    } else if (io_to.m_room > 0) {
        char target[WRITTEN + 32];
        Blocks::WritePlain(target, in_at);
        CopyPiece(to, target, static_cast<std::uint64_t>(io_to.m_room));
    }
    io_to.m_room -= WRITTEN;
}

ORSKA_INLINE void StepBack(char*& io_to, std::uint64_t in_size) { io_to -= in_size; }
ORSKA_INLINE void StepBack(BoundedTo& io_to, std::uint64_t in_size) {
    io_to.m_room += static_cast<std::int64_t>(in_size);
}

// Converts a block of fewer than V::SIZE bytes, with zero bytes after it. Each zero byte writes one
// more character.
template <class Blocks, class To>
ORSKA_INLINE bool ConvertPart(Blocks& io_blocks, const char* in_from, std::uint64_t in_size,
                              To& io_to) {
    if (!io_blocks.Convert(Blocks::LoadPart(in_from, in_size), io_to)) {
        return false;
    }
    StepBack(io_to, (Blocks::V::SIZE - in_size) / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT);
    return true;
}

// Converts the start of a text in two blocks, if the class can convert them at once; returns its
// size, or 0.
template <class Blocks, class To>
ORSKA_INLINE std::uint64_t ConvertPair(const char* in_from, std::uint64_t in_left, To& io_to) {
    constexpr std::uint64_t STEP = Blocks::V::SIZE;
    if constexpr (requires(typename Blocks::V::Type in_at) {
                      Blocks::ConvertTwo(in_at, in_at, io_to);
                  }) {
        const std::uint64_t size = in_left < 2 * STEP ? in_left : 2 * STEP;
        if (size <= STEP || size % Blocks::SOURCE_UNIT != 0) {
            return 0;
        }
        const auto second = size == 2 * STEP ? Blocks::Load(in_from + STEP)
                                             : Blocks::LoadPart(in_from + STEP, size - STEP);
        if (Blocks::ConvertTwo(Blocks::Load(in_from), second, io_to)) {
            StepBack(io_to, (2 * STEP - size) / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT);
            return size;
        }
    }
    return 0;
}

// Converts the rest when a target has no room for all that a block may write, or when the text is
// invalid or cut off. Stops where only the scalar form can go on.
template <class Blocks>
__attribute__((noinline)) void ConvertEnds(Cursor& io_cursor) {
    constexpr std::uint64_t STEP = Blocks::V::SIZE;
    while (io_cursor.m_from < io_cursor.m_fromEnd) {
        const std::uint64_t left = io_cursor.GetLeft();
        const std::uint64_t size = Blocks::GetWhole(io_cursor.m_from, left < STEP ? left : STEP);
        Blocks blocks;
        const auto room = static_cast<std::int64_t>(io_cursor.GetRoom());
        BoundedTo to{io_cursor.m_toEnd, room};
        if (size == 0) {
            return;
        }
        const std::uint64_t pair = ConvertPair<Blocks>(io_cursor.m_from, left, to);
        if (pair > 0 && to.m_room >= 0) {
            io_cursor.m_from += pair;
            io_cursor.m_to = io_cursor.m_toEnd - to.m_room;
            continue;
        }
        to.m_room = room;
        const auto block = size == STEP ? Blocks::Load(io_cursor.m_from)
                                        : Blocks::LoadPart(io_cursor.m_from, size);
        const bool isValid = blocks.Convert(block, to);
        StepBack(to, (STEP - size) / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT);
        if (!isValid) {
            return;
        }
        if (to.m_room < 0) {
            if (Blocks::IsPlain(block)) {
                // Each character is one unit, so the ones that fit are written.
                const std::uint64_t units = io_cursor.GetRoom() / Blocks::TARGET_UNIT;
                io_cursor.m_from += units * Blocks::SOURCE_UNIT;
                io_cursor.m_to += units * Blocks::TARGET_UNIT;
            }
            return;
        }
        io_cursor.m_from += size;
        io_cursor.m_to = io_cursor.m_toEnd - to.m_room;
    }
}

// Converts blocks while the target has room for all that one may write, the last one in part.
template <class Blocks>
ORSKA_INLINE void ConvertBlocks(Cursor& io_cursor) {
    constexpr std::uint64_t SIZE = Blocks::V::SIZE;
    Blocks blocks;
    const char* const start = io_cursor.m_from;
    if (io_cursor.GetRoom() >= 2 * Blocks::ROOM) {
        io_cursor.m_from +=
            ConvertPair<Blocks>(io_cursor.m_from, io_cursor.GetLeft(), io_cursor.m_to);
    }
    while (io_cursor.GetRoom() >= Blocks::ROOM) {
        const std::uint64_t left = io_cursor.GetLeft();
        if (left < SIZE) {
            if (left == 0 && !blocks.IsPending()) {
                return;
            }
            const std::uint64_t whole = Blocks::GetWhole(io_cursor.m_from, left);
            if (ConvertPart(blocks, io_cursor.m_from, whole, io_cursor.m_to)) {
                io_cursor.m_from += whole;
                return;
            }
            break;
        }
        if (!blocks.Convert(Blocks::Load(io_cursor.m_from), io_cursor.m_to)) {
            break;
        }
        io_cursor.m_from += SIZE;
        blocks.ContinueRun(io_cursor, start);
    }
    blocks.TakeBack(io_cursor, start);
}

// The scalar function of a pair.
template <int SOURCE, int TARGET>
ORSKA_INLINE std::int32_t ConvertScalar(TranscoderSource& io_source, TranscoderTarget& io_target) {
    return SCALAR_TABLE.m_functions[SOURCE][TARGET](io_source, io_target);
}

// IS_LONG: of more than 16 bytes.
template <int SOURCE, int TARGET, class Blocks, bool IS_LONG>
__attribute__((noinline)) std::int32_t ConvertAny(TranscoderSource& io_source,
                                                  TranscoderTarget& io_target) {
    Cursor cursor = MakeCursor(io_source, io_target);
    if (IS_LONG && cursor.GetLeft() > 64) {  // ConvertText has tried shorter ones
        ConvertPlainRun<Blocks>(cursor);
    }
    ConvertBlocks<Blocks>(cursor);
    if (cursor.m_from != cursor.m_fromEnd) {
        ConvertEnds<Blocks>(cursor);
    }
    StorePositions(cursor, io_source, io_target);
    return cursor.m_from == cursor.m_fromEnd ? TRANSCODER_DONE
                                             : ConvertScalar<SOURCE, TARGET>(io_source, io_target);
}

// Converts COUNT blocks from the start and COUNT to the end of a plain text; they may overlap.
template <class Blocks, std::uint32_t COUNT>
ORSKA_INLINE bool ConvertPlainEnds(const char* in_from, std::uint64_t in_size, char* out_to) {
    using V = typename Blocks::V;
    const std::uint64_t second = in_size - COUNT * V::SIZE;
    typename V::Type parts[2 * COUNT];
    auto all = V::Zero();
    for (std::uint32_t i = 0; i < COUNT; ++i) {
        parts[i] = Blocks::Load(in_from + i * V::SIZE);
        parts[COUNT + i] = Blocks::Load(in_from + second + i * V::SIZE);
        all = V::Or(all, V::Or(parts[i], parts[COUNT + i]));
    }
    if (!Blocks::IsPlain(all)) {
        return false;
    }
    char* const behind = out_to + second / Blocks::SOURCE_UNIT * Blocks::TARGET_UNIT;
    WritePlainBlocks<Blocks, COUNT>(out_to, parts);
    WritePlainBlocks<Blocks, COUNT>(behind, parts + COUNT);
    return true;
}

// The entry of every function: it converts 16 to 64 plain bytes here, with few registers to save,
// and the rest out of line. Small and Large: the blocks of the pair with Vector128 and with the
// level's vectors.
template <int SOURCE, int TARGET, class Small, class Large>
ORSKA_INLINE std::int32_t ConvertText(TranscoderSource& io_source, TranscoderTarget& io_target) {
    const std::uint64_t size = io_source.m_length - io_source.m_position;
    const std::uint64_t end = io_target.m_position + size / Large::SOURCE_UNIT * Large::TARGET_UNIT;
    if (size - 16 <= 64 - 16 && size % Large::SOURCE_UNIT == 0 && io_target.m_length >= end)
        [[likely]] {
        const char* const from = io_source.m_data + io_source.m_position;
        char* const to = io_target.m_data + io_target.m_position;
        const bool isDone = size <= 32
                                ? ConvertPlainEnds<Small, 1>(from, size, to)
                                : ConvertPlainEnds<Large, 32 / Large::V::SIZE>(from, size, to);
        if (isDone) {
            io_source.m_position += size;
            io_target.m_position = end;
            return TRANSCODER_DONE;
        }
    }
    if (size <= 4) {
        return ConvertScalar<SOURCE, TARGET>(io_source, io_target);
    }
    return size <= 16 ? ConvertAny<SOURCE, TARGET, Small, false>(io_source, io_target)
                      : ConvertAny<SOURCE, TARGET, Large, true>(io_source, io_target);
}

}  // namespace

}  // namespace Orska::Support::Siconv

#endif
