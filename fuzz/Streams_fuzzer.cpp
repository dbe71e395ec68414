// Stream converters of all three kinds: a text in pieces and into targets of any size gives the
// bytes that it gives at once, and ends at the same place when it is refused. Where ICU has the
// same rules, the bytes are ICU's.
//
// Input: the two encodings, how to cut, then the text: bytes as they stand, or UTF-8 that is turned
// into the source encoding.
#include <algorithm>
#include <memory>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/SiconvStreamConverter.h"
#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "PlatformAbstraction/ICU/WideStreamConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/StreamDriver.h"

namespace {

using namespace Orska::Support;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;
using Testing::NextSize;
using Testing::Random;

constexpr int ENCODINGS = 119;
constexpr int MOST_IDLE_TARGETS = 200;

/// The Unicode encodings, latin1 and cp1252 are the ones of the transcoder; half of all inputs are
/// about them.
EncodingType PickEncoding(std::uint8_t in_byte) {
    return EncodingType{in_byte < 128 ? in_byte % 7 : (in_byte - 128) % ENCODINGS};
}

struct Outcome {
    std::string m_bytes;
    bool m_isRefused = false;

    bool operator==(const Outcome&) const = default;
};

/// Converts one piece into as many targets as it takes.
void ConvertPiece(StreamConverter& io_converter, const NextSize& in_targetSize, bool in_isWithNul,
                  Outcome& io_outcome) {
    int idle = 0;
    do {
        const std::size_t size = in_targetSize();
        const std::unique_ptr<char[]> target(new char[size]);
        io_converter.SetTarget(target.get(), size);
        const auto take = [&] {
            Require(io_converter.GetTargetPosition() <= size, "a target is written past its end");
            io_outcome.m_bytes.append(target.get(), io_converter.GetTargetPosition());
            Require(io_converter.GetTotalBytesWritten() == io_outcome.m_bytes.size(),
                    "another total");
        };
        try {
            in_isWithNul ? io_converter.DoConvertWithNul() : io_converter.DoConvert();
        } catch (const ErrorException& error) {
            Require(error.GetMessageKeyOrText() == orska_wstring("ICUConvErrNotRecog"),
                    "another key");
            io_outcome.m_isRefused = true;
            take();
            return;
        }
        const std::size_t before = io_outcome.m_bytes.size();
        take();
        idle = io_outcome.m_bytes.size() == before ? idle + 1 : 0;
        Require(idle < MOST_IDLE_TARGETS, "no progress");
    } while (io_converter.HasDataRemaining());
    Require(io_converter.IsSourceConsumed(), "a piece that is left");
}

Outcome Convert(StreamConverter& io_converter, std::string_view in_source,
                const NextSize& in_pieceSize, const NextSize& in_targetSize, bool in_isWithNul) {
    io_converter.Reset();
    Outcome outcome;
    bool isLast = false;
    while (!isLast && !outcome.m_isRefused) {
        const std::size_t size = std::min<std::size_t>(in_pieceSize(), in_source.size());
        isLast = size == in_source.size();
        const std::unique_ptr<char[]> piece(new char[size]);
        std::copy_n(in_source.data(), size, piece.get());
        in_source.remove_prefix(size);
        io_converter.SetSource(piece.get(), size, isLast);
        ConvertPiece(io_converter, in_targetSize, in_isWithNul, outcome);
    }
    return outcome;
}

/// The text as it was asked for, and whether it is valid and every character of it stands in both
/// encodings.
std::string MakeSource(bool in_isText, const std::string& in_input, EncodingType in_from,
                       EncodingType in_to, bool& out_isExact) {
    out_isExact = false;
    if (!in_isText) return in_input;
    const orska_wstring text(in_input);
    const std::string source = Testing::EncodeWithIcu(text.GetView(), in_from);
    const auto holds = [&](EncodingType in_encoding) {
        const std::string bytes = Testing::EncodeWithIcu(text.GetView(), in_encoding);
        return orska_wstring(bytes.data(), bytes.size(), in_encoding) == text;
    };
    out_isExact = holds(in_from) && holds(in_to);
    return source;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    FuzzInput input(in_data, in_size);
    const EncodingType from = PickEncoding(input.TakeByte());
    const EncodingType to = PickEncoding(input.TakeByte());
    const std::uint8_t cut = input.TakeByte();
    Random random(input.TakeNumber(2));
    bool isExact = false;
    const std::string source = MakeSource((cut & 1) != 0, input.TakeRest(), from, to, isExact);
    const auto converter = StreamConverterFactory::CreateConverter(from, to);
    const auto all = [&] { return source.size() * 8 + 64; };
    const Outcome whole = Convert(*converter, source, all, all, false);
    const bool isSiconv = dynamic_cast<SiconvStreamConverter*>(converter.get()) != nullptr;
    const bool isWide = dynamic_cast<WideStreamConverter*>(converter.get()) != nullptr;
    Require(isSiconv || !whole.m_isRefused, "a refusal by another kind");
    // Blitted text is not read at all. ICU opens ISO-2022-KR with a header, but not where it is
    // given an empty text at once. The transcoder writes cp1252 as latin1, which is meant.
    const bool isCp1252 = to == EncodingType{6} || to == EncodingType{96};
    if (!source.empty() && (isWide || (isSiconv && isExact && !isCp1252))) {
        Require(whole.m_bytes == Testing::ConvertWithIcu(source, from, to),
                "other bytes than ICU's");
    }
    const bool isWithNul = (cut & 2) != 0;
    const std::uint32_t mostPiece = 1 + (cut >> 2 & 7) * 7;
    const std::uint32_t leastTarget = isWithNul ? 8 : 1;
    const std::uint32_t mostTarget = 1 + (cut >> 5) * 9;
    const Outcome pieces = Convert(
        *converter, source, [&] { return random.Below(mostPiece) + (mostPiece == 1); },
        [&] { return leastTarget + random.Below(mostTarget); }, isWithNul);
    Require(pieces.m_isRefused == whole.m_isRefused, "refused only once");
    Require(pieces.m_bytes == whole.m_bytes, "other bytes in pieces");
    return 0;
}
