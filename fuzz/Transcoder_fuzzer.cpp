// Every body of a pair against the reference, with the source and the target cut anywhere, and
// against ICU where the text is valid.
//
// Input: the pair, the kind of text, two bytes of room, one of offset, then the text: as it is,
// or as numbers that become valid code points, so that deep blocks of valid text are reached, and
// on request one ill-formed sequence among them, as long as the one in whose place it stands.
#include <unicode/ucnv.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/TranscoderReference.h"

namespace {

using namespace Orska::Support;
using namespace Orska::Support::Testing;

constexpr std::size_t HEADER = 5;

[[noreturn]] void Fail(const Kernel& in_kernel, const char* in_what) {
    std::fprintf(stderr, "%s: %s\n", in_kernel.m_name.c_str(), in_what);
    std::abort();
}

/// A sequence of this size that is not well-formed, or a code point that is none.
std::string MakeIllFormed(std::size_t in_size, std::uint8_t in_choice, int in_encoding) {
    constexpr const char* SEQUENCES[][4] = {
        {"\x80", "\xBF", "\xC2", "\xFF"},
        {"\xC0\x80", "\xC1\xBF", "\xC2\x7F", "\xDF\xC0"},
        {"\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF", "\xE1\x80\x7F"},
        {"\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF7\xBF\xBF\xBF", "\xF8\x90\x80\x80"}};
    constexpr char32_t CODE_POINTS[] = {0xD800, 0xDFFF, 0x110000, 0xDC00};
    return in_encoding == UTF8 ? SEQUENCES[in_size - 1][in_choice % 4]
                               : EncodeCodePoint(in_size == 2 ? 0xD800 | (in_choice % 8) << 8
                                                              : CODE_POINTS[in_choice % 4],
                                                 in_encoding);
}

/// @param in_bad  the code point that is ill-formed, counted from 0
std::string MakeValid(const std::uint8_t* in_data, std::size_t in_size, int in_encoding,
                      std::size_t in_bad, std::uint8_t in_choice) {
    std::string text;
    for (std::size_t i = 0; i + 1 < in_size; i += 2) {
        char32_t codePoint = in_data[i] | static_cast<char32_t>(in_data[i + 1] & 0x0F) << 8;
        switch (in_data[i + 1] >> 4) {
            case 0:
            case 1:
            case 2:
            case 3:
                codePoint &= 0x7F;
                break;
            case 4:
            case 5:
                codePoint &= 0xFF;
                break;
            case 6:
            case 7:
                codePoint &= 0x7FF;
                break;
            case 8:
            case 9:
            case 10:
            case 11:
                codePoint |= 0x4000;
                break;
            case 12:
                codePoint |= 0xE000;
                break;
            case 13:
                codePoint |= 0x10F000;
                break;
            default:
                codePoint |= 0x1F000;
                break;
        }
        const std::string sequence = EncodeCodePoint(codePoint, in_encoding);
        const bool isBad = i / 2 == in_bad && in_encoding < LATIN1;
        text += isBad ? MakeIllFormed(sequence.size(), in_choice, in_encoding) : sequence;
    }
    return text;
}

// Buffers of exactly the sizes given, so that the sanitizer sees every byte outside.
void Compare(const Kernel& in_kernel, const std::string& in_text, std::size_t in_room,
             std::size_t in_offset, const ReferenceResult& in_expected) {
    const std::size_t sourceSize = in_text.size() + in_offset;
    const std::size_t targetSize = in_room + in_offset;
    const std::unique_ptr<char[]> from(new char[sourceSize]);
    const std::unique_ptr<char[]> to(new char[targetSize]);
    std::memset(from.get(), 0xC3, in_offset);
    std::memset(to.get(), 0x5A, targetSize);
    if (!in_text.empty()) std::memcpy(from.get() + in_offset, in_text.data(), in_text.size());
    TranscoderSource source{from.get(), sourceSize, in_offset};
    TranscoderTarget target{to.get(), targetSize, in_offset};
    if (in_kernel.m_function(source, target) != in_expected.m_result) {
        Fail(in_kernel, "another result");
    }
    if (source.m_position != in_offset + in_expected.m_used) {
        Fail(in_kernel, "another source position");
    }
    if (target.m_position != in_offset + in_expected.m_bytes.size() ||
        std::memcmp(to.get() + in_offset, in_expected.m_bytes.data(), in_expected.m_bytes.size()) !=
            0) {
        Fail(in_kernel, "other bytes");
    }
    for (std::size_t i = 0; i < in_offset; ++i) {
        if (to[i] != 0x5A) Fail(in_kernel, "wrote before the target position");
    }
}

// Single-byte targets are left out: ICU's bytes for cp1252 and its substitutes are not ours.
void CompareWithIcu(const Kernel& in_kernel, const std::string& in_text,
                    const ReferenceResult& in_result) {
    constexpr const char* NAMES[] = {"UTF-8",    "UTF-16LE", "UTF-16BE", "UTF-32LE",
                                     "UTF-32BE", "latin1",   "cp1252"};
    if (in_kernel.m_target >= LATIN1 || in_result.m_result != TRANSCODER_DONE) return;
    std::vector<char> bytes(in_text.size() * 4 + 16);
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_convert(NAMES[in_kernel.m_target], NAMES[in_kernel.m_source], bytes.data(),
                     static_cast<std::int32_t>(bytes.size()), in_text.data(),
                     static_cast<std::int32_t>(in_text.size()), &status);
    if (U_FAILURE(status) ||
        in_result.m_bytes != std::string(bytes.data(), static_cast<std::size_t>(length))) {
        Fail(in_kernel, "the reference is not as ICU");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    static const std::vector<Kernel> s_kernels = GetKernels();
    if (in_size < HEADER) return 0;
    const Kernel& first = s_kernels[in_data[0] % s_kernels.size()];
    const bool isValid = (in_data[1] & 1) != 0;
    const std::size_t raw = in_data[2] | static_cast<std::size_t>(in_data[3]) << 8;
    const std::size_t bad = (in_data[1] & 8) != 0 ? raw % (in_size / 2) : in_size;
    std::string text =
        isValid ? MakeValid(in_data + HEADER, in_size - HEADER, first.m_source, bad, in_data[4])
                : std::string(in_data + HEADER, in_data + in_size);
    if (isValid && (in_data[1] & 2) != 0 && !text.empty()) {
        text.resize(text.size() - in_data[4] % text.size());
    }
    const ReferenceResult whole =
        ReferenceTranscode(first.m_source, first.m_target, text, text.size() * 4);
    CompareWithIcu(first, text, whole);
    // Mostly just below or above what the text needs.
    const std::size_t needed = whole.m_bytes.size();
    const std::size_t room = (in_data[1] & 4) != 0 ? raw % (needed + 1) : needed + raw % 160;
    const ReferenceResult expected = ReferenceTranscode(first.m_source, first.m_target, text, room);
    for (const Kernel& kernel : s_kernels) {
        if (kernel.m_source == first.m_source && kernel.m_target == first.m_target) {
            Compare(kernel, text, room, in_data[4] % 16, expected);
        }
    }
    return 0;
}
