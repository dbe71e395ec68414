// Stream converters compared with ICU's converter-to-converter function with converters kept open.
//
// Names: ours|icu/<source>-<target>/<text>/<size>, the size in bytes of the source; with "-61" or
// "-4093" after the size the source comes in pieces of that many bytes and the targets have 1,000.
#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {
namespace {

struct Pair {
    const char* m_name;
    int m_source, m_target;
    const char* m_textName;
    const char16_t* m_text;
};

constexpr char16_t ASCII[] = u"The quick brown fox jumps over the lazy dog; 0123456789. ";
constexpr char16_t JAPANESE[] =
    u"\u65E5\u672C\u8A9E\u306E\u6587\u7AE0\u3092\u5909\u63DB\u3059\u308B\u3002 abc "
    u"\u30C7\u30FC\u30BF\u30D9\u30FC\u30B9";
constexpr char16_t CHINESE[] =
    u"\u4E2D\u6587\u5B57\u7B26\u4E32\u8F6C\u6362\u3002 abc \u6570\u636E\u5E93\u670D\u52A1\u5668";
constexpr char16_t KOREAN[] = u"\uD55C\uAD6D\uC5B4 \uBB38\uC790\uC5F4 abc \uBCC0\uD658\uD569\uB2C8";
constexpr char16_t LATIN[] = u"caf\u00E9 na\u00EFve Stra\u00DFe \u00FCber alles, plain text too ";

constexpr Pair PAIRS[] = {
    {"sjis-utf16le", 18, 1, "cjk", JAPANESE},   {"utf16le-sjis", 1, 18, "cjk", JAPANESE},
    {"sjis-utf8", 18, 0, "cjk", JAPANESE},      {"sjis-utf8", 18, 0, "ascii", ASCII},
    {"utf8-sjis", 0, 18, "cjk", JAPANESE},      {"eucjp-utf8", 19, 0, "cjk", JAPANESE},
    {"utf8-eucjp", 0, 19, "cjk", JAPANESE},     {"gbk-utf8", 32, 0, "cjk", CHINESE},
    {"utf8-gbk", 0, 32, "cjk", CHINESE},        {"gb2312-utf16le", 38, 1, "cjk", CHINESE},
    {"euckr-utf8", 23, 0, "cjk", KOREAN},       {"utf8-euckr", 0, 23, "cjk", KOREAN},
    {"ibm037-utf8", 41, 0, "latin", LATIN},     {"utf8-ibm037", 0, 41, "latin", LATIN},
    {"ibm037-utf16le", 41, 1, "latin", LATIN},  {"ibm500-ibm037", 52, 41, "ascii", ASCII},
    {"iso2022jp-utf8", 24, 0, "cjk", JAPANESE}, {"utf8-iso2022jp", 0, 24, "cjk", JAPANESE},
};

constexpr std::size_t TARGET_SIZE = 1000;

icu::LocalUConverterPointer Open(int in_encoding) {
    UErrorCode status = U_ZERO_ERROR;
    return icu::LocalUConverterPointer(
        ucnv_open(EncodingInfo::GetName(EncodingType{in_encoding}), &status));
}

// Repeats the whole text as often as it fits into the size, at least once.
std::string MakeSource(const Pair& in_pair, std::size_t in_size) {
    const icu::LocalUConverterPointer converter = Open(in_pair.m_source);
    const std::size_t length = std::char_traits<char16_t>::length(in_pair.m_text);
    std::u16string text;
    std::string bytes;
    for (std::size_t i = 0; bytes.size() < in_size; ++i) {
        text += in_pair.m_text[i % length];
        std::string more(text.size() * 8, '\0');
        UErrorCode status = U_ZERO_ERROR;
        const auto written = static_cast<std::size_t>(ucnv_fromUChars(
            converter.getAlias(), more.data(), static_cast<std::int32_t>(more.size()), text.data(),
            static_cast<std::int32_t>(text.size()), &status));
        more.resize(written);
        if (in_size > 8 * length && text.size() == length) {
            // Long sources repeat the encoded text, which avoids quadratic time.
            while (bytes.size() + more.size() <= in_size) bytes += more;
            return bytes;
        }
        bytes = more;
    }
    return bytes;
}

void CheckSame(const std::string& in_ours, const std::string& in_icu) {
    if (in_ours != in_icu) {
        std::fprintf(stderr, "the outputs differ\n");
        std::abort();
    }
}

std::string RunOurs(StreamConverter& io_converter, const std::string& in_source,
                    std::size_t in_piece, std::size_t in_targetSize,
                    std::vector<char>& out_target) {
    std::string joined;
    const bool isKept = out_target.empty();
    if (isKept) out_target.resize(in_targetSize);
    for (std::size_t at = 0; at < in_source.size(); at += in_piece) {
        const std::size_t size = std::min(in_piece, in_source.size() - at);
        io_converter.SetSource(in_source.data() + at, size, at + size == in_source.size());
        do {
            io_converter.SetTarget(out_target.data(), in_targetSize);
            io_converter.DoConvert();
            benchmark::DoNotOptimize(out_target.data());
            if (isKept) joined.append(out_target.data(), io_converter.GetTargetPosition());
        } while (io_converter.HasDataRemaining());
    }
    return joined;
}

struct IcuPivot {
    UChar m_units[7168];
    UChar* m_source = m_units;
    UChar* m_target = m_units;
};

std::string RunIcu(UConverter& io_target, UConverter& io_source, IcuPivot& io_pivot,
                   const std::string& in_source, std::size_t in_piece, std::size_t in_targetSize,
                   std::vector<char>& out_target) {
    std::string joined;
    const bool isKept = out_target.empty();
    if (isKept) out_target.resize(in_targetSize);
    for (std::size_t at = 0; at < in_source.size(); at += in_piece) {
        const std::size_t size = std::min(in_piece, in_source.size() - at);
        const char* source = in_source.data() + at;
        const bool isLast = at + size == in_source.size();
        UErrorCode status = U_ZERO_ERROR;
        do {
            status = U_ZERO_ERROR;
            char* target = out_target.data();
            ucnv_convertEx(&io_target, &io_source, &target, target + in_targetSize, &source,
                           in_source.data() + at + size, io_pivot.m_units, &io_pivot.m_source,
                           &io_pivot.m_target, io_pivot.m_units + 7168,
                           at == 0 && source == in_source.data(), isLast, &status);
            benchmark::DoNotOptimize(out_target.data());
            if (isKept) joined.append(out_target.data(), target);
        } while (status == U_BUFFER_OVERFLOW_ERROR);
    }
    return joined;
}

void Register(const Pair& in_pair, std::size_t in_size, std::size_t in_piece) {
    const auto source = std::make_shared<std::string>(MakeSource(in_pair, in_size));
    const std::size_t piece = in_piece == 0 ? source->size() : in_piece;
    const std::size_t targetSize = in_piece == 0 ? source->size() * 8 + 64 : TARGET_SIZE;
    std::string name = std::string("/") + in_pair.m_name + "/" + in_pair.m_textName + "/" +
                       std::to_string(in_size);
    if (in_piece != 0) name += "-" + std::to_string(in_piece);

    benchmark::RegisterBenchmark(("ours" + name).c_str(), [=](benchmark::State& io_state) {
        const auto converter = StreamConverterFactory::CreateConverter(
            EncodingType{in_pair.m_source}, EncodingType{in_pair.m_target});
        const auto icuSource = Open(in_pair.m_source);
        const auto icuTarget = Open(in_pair.m_target);
        const auto pivot = std::make_unique<IcuPivot>();
        std::vector<char> target, icuBuffer;
        CheckSame(RunOurs(*converter, *source, piece, targetSize, target),
                  RunIcu(*icuTarget, *icuSource, *pivot, *source, piece, targetSize, icuBuffer));
        for (auto _ : io_state) {
            RunOurs(*converter, *source, piece, targetSize, target);
        }
        io_state.SetBytesProcessed(static_cast<std::int64_t>(io_state.iterations()) *
                                   static_cast<std::int64_t>(source->size()));
    });
    benchmark::RegisterBenchmark(("icu" + name).c_str(), [=](benchmark::State& io_state) {
        const auto icuSource = Open(in_pair.m_source);
        const auto icuTarget = Open(in_pair.m_target);
        const auto pivot = std::make_unique<IcuPivot>();
        std::vector<char> target(targetSize);
        for (auto _ : io_state) {
            RunIcu(*icuTarget, *icuSource, *pivot, *source, piece, targetSize, target);
        }
        io_state.SetBytesProcessed(static_cast<std::int64_t>(io_state.iterations()) *
                                   static_cast<std::int64_t>(source->size()));
    });
}

const bool s_isRegistered = [] {
    for (const Pair& pair : PAIRS) {
        for (const std::size_t size : {16U, 64U, 4096U, 1048576U}) {
            Register(pair, size, 0);
        }
        Register(pair, 65536, 61);
        Register(pair, 65536, 4093);
    }
    return true;
}();

}  // namespace
}  // namespace Orska::Support
