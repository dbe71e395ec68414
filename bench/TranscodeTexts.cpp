#include "bench/TranscodeTexts.h"

#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <unordered_map>

namespace Orska::Bench {

namespace {

constexpr const char* ENCODING_NAMES[] = {"utf8",    "utf16le", "utf16be", "utf32le",
                                          "utf32be", "latin1",  "cp1252"};
constexpr const char* ICU_NAMES[] = {"UTF-8",    "UTF-16LE", "UTF-16BE", "UTF-32LE",
                                     "UTF-32BE", "latin1",   "cp1252"};

char32_t PickLetter(const std::string& in_text, std::mt19937& io_random) {
    const auto below = [&io_random](unsigned in_limit) {
        return static_cast<char32_t>(io_random() % in_limit);
    };
    const char32_t ascii = U'a' + below(26);
    if (in_text == "latin") return below(8) == 0 ? 0xC0 + below(0x40) : ascii;
    if (in_text == "cyrgr") return below(2) == 0 ? 0x410 + below(0x40) : 0x391 + below(0x38);
    if (in_text == "cjk") return 0x4E00 + below(0x5000);
    if (in_text == "emoji") return 0x1F300 + below(0x300);
    if (in_text == "w1252") {
        constexpr char32_t SIGNS[] = {0x20AC, 0x201C, 0x201D, 0x2019, 0x2013, 0x2014, 0x2022, 0xE9};
        return below(8) == 0 ? SIGNS[below(8)] : ascii;
    }
    return ascii;
}

// Makes words of 2 to 10 letters with a space after each; emoji and cjk have no spaces, only a full
// stop now and then.
std::u32string MakeWord(const std::string& in_text, std::mt19937& io_random) {
    std::u32string word;
    const std::size_t letters = 2 + io_random() % 9;
    for (std::size_t i = 0; i < letters; ++i) {
        word += PickLetter(in_text, io_random);
    }
    if (in_text == "cjk") return word + (io_random() % 2 == 0 ? U"\u3001" : U"\u3002");
    return in_text == "emoji" ? word : word + U' ';
}

UConverter* GetConverter(int in_encoding) {
    static UConverter* s_converters[7] = {};
    UErrorCode status = U_ZERO_ERROR;
    if (s_converters[in_encoding] == nullptr) {
        s_converters[in_encoding] = ucnv_open(ICU_NAMES[in_encoding], &status);
    }
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
    return s_converters[in_encoding];
}

const std::string& Encode(char32_t in_codePoint, int in_encoding) {
    static std::unordered_map<char32_t, std::string> s_known[7];
    std::string& known = s_known[in_encoding][in_codePoint];
    if (!known.empty()) return known;
    UChar units[2];
    std::int32_t count = 0;
    U16_APPEND_UNSAFE(units, count, in_codePoint);
    char bytes[8];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_fromUChars(GetConverter(in_encoding), bytes, sizeof bytes, units, count, &status);
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
    known.assign(bytes, static_cast<std::size_t>(length));
    return known;
}

std::string MakePiece(const std::string& in_text, int in_encoding, std::size_t in_size,
                      std::mt19937& io_random) {
    std::string piece;
    while (piece.size() < in_size) {
        for (const char32_t letter : MakeWord(in_text, io_random)) {
            const std::string& bytes = Encode(letter, in_encoding);
            if (piece.size() + bytes.size() > in_size) break;
            piece += bytes;
        }
        const std::string& space = Encode(U' ', in_encoding);
        while (in_size - piece.size() < 4 && piece.size() + space.size() <= in_size) piece += space;
        if (in_size - piece.size() < space.size()) break;
    }
    return piece;
}

}  // namespace

const std::vector<std::string>& GetTextNames() {
    static const std::vector<std::string> s_names = {"ascii", "latin", "cyrgr",
                                                     "cjk",   "emoji", "w1252"};
    return s_names;
}

const char* GetEncodingName(int in_index) { return ENCODING_NAMES[in_index]; }

bool CanHold(int in_encoding, const std::string& in_text) {
    constexpr int LATIN1 = 5;
    constexpr int CP1252 = 6;
    if (in_encoding < LATIN1 || in_text == "ascii" || in_text == "latin") return true;
    return in_encoding == CP1252 && in_text == "w1252";
}

TextPieces MakePieces(const std::string& in_text, int in_encoding, std::size_t in_size) {
    constexpr std::size_t BYTES = 16384;
    constexpr std::size_t CHUNK = 262144;
    std::mt19937 random(20);
    TextPieces pieces;
    while (pieces.m_bytes < (in_size == 0 ? BYTES : std::max(BYTES, in_size))) {
        const std::size_t size = in_size != 0 ? in_size : 8 + random() % 57;
        std::string piece;
        // Longer pieces repeat a chunk, because making them letter by letter is slow. The chunk is
        // too large for a processor to learn.
        if (size > CHUNK) {
            const std::string chunk = MakePiece(in_text, in_encoding, CHUNK, random);
            while (piece.size() + chunk.size() <= size) piece += chunk;
        } else {
            piece = MakePiece(in_text, in_encoding, size, random);
        }
        pieces.m_bytes += piece.size();
        pieces.m_longest = std::max(pieces.m_longest, piece.size());
        pieces.m_pieces.push_back(std::move(piece));
    }
    return pieces;
}

}  // namespace Orska::Bench
