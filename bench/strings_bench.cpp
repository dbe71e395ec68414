// The cost of making a string from bytes and bytes from a string, compared with ICU's string.
// Names: who, work, text and size, joined by slashes, with the size in bytes of the narrow form.
#include <benchmark/benchmark.h>
#include <unicode/unistr.h>

#include <string>

#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Support {
namespace {

struct Text {
    const char* m_name;
    const char* m_utf8;  ///< one round of the text
};

constexpr Text TEXTS[] = {
    {"ascii", "SERVER=bi.example.com;"},
    {"latin",
     "Gr\xC3\xBC\xC3\x9F"
     "e aus K\xC3\xB6ln "},
    {"cjk", "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE6\x96\x87"},
    {"emoji", "\xF0\x9F\x98\x80\xF0\x9F\x9A\x80"},
};

struct Encoding {
    const char* m_name;
    EncodingType m_type;
};

constexpr Encoding ENCODINGS[] = {
    {"utf8", EncodingType::ENC_UTF8},       {"utf16le", EncodingType::ENC_UTF16LE},
    {"utf16be", EncodingType::ENC_UTF16BE}, {"latin1", EncodingType::ENC_LATIN1},
    {"cp1252", EncodingType::ENC_CP1252},   {"ascii", EncodingType::ENC_US_ASCII},
};

constexpr std::size_t SIZES[] = {16, 64, 4096};

/// Text of about `in_size` bytes of UTF-8, in whole code points.
orska_wstring MakeText(const Text& in_text, std::size_t in_size) {
    std::string utf8;
    while (utf8.size() < in_size) {
        utf8 += in_text.m_utf8;
    }
    std::size_t end = in_size;
    while ((utf8[end] & 0xC0) == 0x80) {
        --end;
    }
    return orska_wstring().SetFromUtf8(utf8.substr(0, end));
}

void SetBytes(benchmark::State& io_state, std::size_t in_bytes) {
    io_state.SetBytesProcessed(io_state.iterations() * static_cast<std::int64_t>(in_bytes));
}

void OursConstruct(benchmark::State& io_state, const std::string& in_bytes,
                   EncodingType in_encoding) {
    for (auto _ : io_state) {
        const orska_wstring text(in_bytes.data(), in_bytes.size(), in_encoding);
        benchmark::DoNotOptimize(text.GetLength());
    }
    SetBytes(io_state, in_bytes.size());
}

void IcuConstruct(benchmark::State& io_state, const std::string& in_bytes,
                  EncodingType in_encoding) {
    const char* const name = EncodingInfo::GetName(in_encoding);
    for (auto _ : io_state) {
        const icu::UnicodeString text(in_bytes.data(), static_cast<std::int32_t>(in_bytes.size()),
                                      name);
        benchmark::DoNotOptimize(text.length());
    }
    SetBytes(io_state, in_bytes.size());
}

void OursExtract(benchmark::State& io_state, const orska_wstring& in_text,
                 EncodingType in_encoding) {
    for (auto _ : io_state) {
        benchmark::DoNotOptimize(in_text.GetAsAnsiString(in_encoding));
    }
    SetBytes(io_state, in_text.GetAsAnsiString(in_encoding).size());
}

void IcuExtract(benchmark::State& io_state, const orska_wstring& in_text,
                EncodingType in_encoding) {
    const char* const name = EncodingInfo::GetName(in_encoding);
    const icu::UnicodeString& text = *in_text.GetImpl();
    for (auto _ : io_state) {
        const std::int32_t length = text.extract(0, text.length(), nullptr, 0, name);
        std::string bytes(static_cast<std::size_t>(length), '\0');
        text.extract(0, text.length(), bytes.data(), static_cast<std::uint32_t>(length), name);
        benchmark::DoNotOptimize(bytes);
    }
    SetBytes(io_state, in_text.GetAsAnsiString(in_encoding).size());
}

void Register(const Encoding& in_encoding, const Text& in_text, std::size_t in_size) {
    const orska_wstring text = MakeText(in_text, in_size);
    const std::string bytes = text.GetAsAnsiString(in_encoding.m_type);
    const std::string tail =
        std::string(in_encoding.m_name) + "/" + in_text.m_name + "/" + std::to_string(in_size);
    const EncodingType type = in_encoding.m_type;
    benchmark::RegisterBenchmark(("ours/construct-" + tail).c_str(), OursConstruct, bytes, type);
    benchmark::RegisterBenchmark(("icu/construct-" + tail).c_str(), IcuConstruct, bytes, type);
    benchmark::RegisterBenchmark(("ours/extract-" + tail).c_str(), OursExtract, text, type);
    benchmark::RegisterBenchmark(("icu/extract-" + tail).c_str(), IcuExtract, text, type);
}

[[maybe_unused]] const bool s_isRegistered = [] {
    for (const Encoding& encoding : ENCODINGS) {
        for (const Text& text : TEXTS) {
            for (const std::size_t size : SIZES) {
                Register(encoding, text, size);
            }
        }
    }
    return true;
}();

}  // namespace
}  // namespace Orska::Support
