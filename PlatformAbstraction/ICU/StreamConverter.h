/// A stream converter converts bytes of one encoding to another, piece by piece.
///
/// The caller sets one piece of the source and then one target after another:
///
///     converter->SetSource(piece, pieceLength, isLastPiece);
///     do {
///         converter->SetTarget(buffer, sizeof(buffer));
///         converter->DoConvert();
///         Use(buffer, converter->GetTargetPosition());
///     } while (converter->HasDataRemaining());
///
/// and then goes on with the next piece. The resulting bytes do not depend on how the source is cut
/// into pieces or on the sizes of the targets: an incomplete code point is kept for the next piece,
/// and bytes that do not fit are kept for the next target.
///
/// The caller marks the last piece, which may be empty, so that the converter knows where the text
/// ends. Only then does it report an incomplete code point at the end, and return a stateful target
/// encoding (ISO-2022, HZ) to its initial state. The next piece begins a new text.
///
/// StreamConverterFactory makes the right one of the three kinds. Malformed input is handled by
/// kind: WideStreamBlitter copies it, SiconvStreamConverter throws "ICUConvErrNotRecog", and
/// WideStreamConverter substitutes, as ICU does. After an exception all written bytes are counted,
/// and Reset makes the converter ready for another text.
///
/// A converter is used by one thread at a time. It allocates nothing after construction.
#ifndef PLATFORMABSTRACTION_ICU_STREAMCONVERTER_H
#define PLATFORMABSTRACTION_ICU_STREAMCONVERTER_H

#include <cstdint>

#include "../strings/EncodingType.h"

namespace Orska::Support {

class StreamConverter {
public:
    StreamConverter(const StreamConverter&) = delete;
    StreamConverter& operator=(const StreamConverter&) = delete;
    virtual ~StreamConverter() = default;

    /// Sets the next piece of the source. The unread rest of an earlier piece is dropped.
    /// @param in_start   not owned; must live until the piece is consumed; may be null for no bytes
    /// @param in_length  bytes
    /// @param in_isLast  true: the text ends with this piece
    void SetSource(const char* in_start, std::uint64_t in_length, bool in_isLast = false);

    /// Sets the next target.
    /// @param in_start   not owned; may be null for no bytes
    /// @param in_length  bytes
    void SetTarget(char* in_start, std::uint64_t in_length);

    /// Converts into the rest of the target. A code point that does not fit whole is cut: its first
    /// bytes end this target and the others begin the next, so a target of one byte is enough.
    /// @throws ErrorException "InvalidBuffPos" when a position is past the end of its buffer,
    ///         "ICUConvErrNotRecog" for input that the converter refuses
    void DoConvert();

    /// As above, but writes at most `in_bytesWanted` bytes.
    virtual void DoConvert(std::uint64_t in_bytesWanted) = 0;

    /// As DoConvert, but leaves room for a NUL as wide as the target's code unit and writes it
    /// after the converted bytes. The NUL does not count as written: the target position stays
    /// before it. A target without room for the NUL is unchanged. Only WideStreamConverter keeps
    /// code points whole here.
    virtual void DoConvertWithNul();

    /// Drops the state between pieces and targets; the next piece begins a new text.
    virtual void Reset();

    /// Moves forward or back in a buffer. A position past the end makes the next conversion throw.
    /// @param in_position  bytes from the start
    void SetSourcePosition(std::uint64_t in_position);
    void SetTargetPosition(std::uint64_t in_position);

    /// Bytes of the piece that have been read.
    std::uint64_t GetSourcePosition() const noexcept {
        return static_cast<std::uint64_t>(m_sourcePosition - m_sourceStart) + m_sourceExcess;
    }
    /// Bytes of the target that have been written.
    std::uint64_t GetTargetPosition() const noexcept {
        return static_cast<std::uint64_t>(m_targetPosition - m_targetStart) + m_targetExcess;
    }
    /// Bytes written since construction or Reset, to all targets, without NULs.
    std::uint64_t GetTotalBytesWritten() const noexcept { return m_totalBytesWritten; }

    /// True when the piece has been read to its end, and before there is a piece.
    bool IsSourceConsumed() const noexcept { return m_isSourceConsumed; }
    /// True when the last conversion could not write more bytes than it did.
    bool IsTargetFilled() const noexcept { return m_isTargetFilled; }
    /// True when the last conversion had more to write: the same piece needs another target.
    bool HasDataRemaining() const noexcept { return m_hasDataRemaining; }

    EncodingType GetSourceEncoding() const noexcept { return m_sourceEncoding; }
    EncodingType GetTargetEncoding() const noexcept { return m_targetEncoding; }
    /// The value that the factory was called with; the converters do not use it.
    std::uint8_t GetFlag() const noexcept { return m_flag; }
    /// Bytes of the target encoding's code unit, and so of its NUL.
    std::uint8_t GetTargetCodeUnitWidth() const noexcept { return m_targetCodeUnitWidth; }

protected:
    /// The encodings must be legal.
    StreamConverter(EncodingType in_source, EncodingType in_target, std::uint8_t in_flag);

    /// Bytes of the source, or of the target, after its position.
    /// @throws ErrorException "InvalidBuffPos" when the position is past the end
    std::uint64_t GetSourceRemaining() const {
        const std::uint64_t position = GetSourcePosition();
        return position <= m_sourceLength ? m_sourceLength - position : ThrowInvalidPosition();
    }
    std::uint64_t GetTargetSpace() const {
        const std::uint64_t position = GetTargetPosition();
        return position <= m_targetLength ? m_targetLength - position : ThrowInvalidPosition();
    }
    /// The end of the bytes that may be written: the wanted ones, limited by the room in
    /// the target.
    char* GetTargetLimit(std::uint64_t in_bytesWanted) const;

    /// Counts bytes that are at the target position as written.
    void AdvanceTarget(std::uint64_t in_bytes) noexcept {
        m_targetPosition += in_bytes;
        m_totalBytesWritten += in_bytes;
    }
    void SetTargetIsTooSmall() noexcept;
    void WriteNul() noexcept;
    /// Copies as much of the held output as fits before the limit; true when none is left.
    bool CopyHeldOutput(const char* in_limit) noexcept;

    static constexpr std::uint32_t MOST_HELD_BYTES = 16;

    const EncodingType m_sourceEncoding;
    const EncodingType m_targetEncoding;
    const std::uint8_t m_flag;
    bool m_isSourceConsumed = true;
    bool m_isTargetFilled = false;
    bool m_hasDataRemaining = false;
    bool m_isLastPiece = false;
    const char* m_sourceStart;
    std::uint64_t m_sourceLength = 0;
    const char* m_sourcePosition;
    std::uint64_t m_sourceExcess = 0;  ///< how far past the end a caller has set the position
    char* m_targetStart;
    std::uint64_t m_targetLength = 0;
    char* m_targetPosition;
    std::uint64_t m_targetExcess = 0;
    std::uint64_t m_totalBytesWritten = 0;
    const std::uint8_t m_targetCodeUnitWidth;
    /// By the table of encodings, which counts no shift sequences.
    const std::uint8_t m_targetMostBytesPerCodePoint;
    /// Output that did not fit into the targets so far.
    std::uint8_t m_heldCount = 0;
    char m_held[MOST_HELD_BYTES] = {};

private:
    [[noreturn]] static std::uint64_t ThrowInvalidPosition();
};

}  // namespace Orska::Support

#endif
