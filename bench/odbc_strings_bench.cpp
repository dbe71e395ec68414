// Strings to and from the driver manager's buffers, compared with ICU with a converter that stays
// open, ICU that opens one by name each time, and memcpy of the same bytes. Names are who, work,
// text and size, joined by slashes, with the size in UTF-16 code units.
#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <cstring>
#include <string>
#include <vector>

#include "PlatformAbstraction/ICU/ODBCStringConverter.h"
#include "PlatformAbstraction/ICU/WideStringConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/orska_wstring.h"

namespace {

using namespace Orska::Support;

struct Text {
    const char* m_name;
    std::u16string m_units;  ///< repeated to the size
};

const Text TEXTS[] = {
    {"ascii", u"The quick brown fox jumps over the lazy dog. "},
    {"latin", u"Übergrößenträger für naïve Cafés à Genève. "},
    {"cjk", u"日本語の文字列を変換します。漢字仮名交"},
    {"emoji", u"\U0001F600\U0001F680\U0001F4A1\U0001F30D"},
};
constexpr std::size_t SIZES[] = {16, 64, 256, 4096};
constexpr EncodingType ENCODINGS[] = {EncodingType::ENC_UTF16LE, EncodingType::ENC_UTF32LE,
                                      EncodingType::ENC_UTF8};

/// A case: one text of one size, its string and its bytes in one encoding.
struct Case {
    EncodingType m_encoding;
    std::u16string m_units;
    orska_wstring m_string;
    std::string m_bytes;

    const char* GetIcuName() const { return EncodingInfo::GetName(m_encoding); }
};

Case MakeCase(const Text& in_text, std::size_t in_size, EncodingType in_encoding) {
    Case made{in_encoding, {}, {}, {}};
    while (made.m_units.size() < in_size) made.m_units += in_text.m_units;
    made.m_units.resize(in_size);
    made.m_string = orska_wstring(made.m_units);
    made.m_bytes = made.m_string.GetAsAnsiString(in_encoding);
    return made;
}

void CountText(benchmark::State& io_state, const Case& in_case) {
    io_state.SetBytesProcessed(static_cast<std::int64_t>(io_state.iterations()) *
                               static_cast<std::int64_t>(in_case.m_units.size() * 2));
}

/// An ICU converter for one conversion or for all.
class IcuConverter {
public:
    explicit IcuConverter(const Case& in_case) {
        UErrorCode status = U_ZERO_ERROR;
        m_converter.adoptInstead(ucnv_open(in_case.GetIcuName(), &status));
    }
    UConverter* Get() { return m_converter.getAlias(); }

private:
    icu::LocalUConverterPointer m_converter;
};

void OursTo(benchmark::State& io_state, const Case& in_case) {
    WideStringConverter platform;
    orska_wstring::SetDriverManagerEncoding(in_case.m_encoding);
    ODBCStringConverter converter(platform);
    std::vector<char> buffer(in_case.m_bytes.size() + 16);
    for (auto _ : io_state) {
        bool isTruncated = false;
        benchmark::DoNotOptimize(converter.ConvertWStringToSQLWCHARString(
            in_case.m_string, buffer.data(), static_cast<std::int64_t>(buffer.size()), true,
            isTruncated));
        benchmark::ClobberMemory();
    }
    CountText(io_state, in_case);
}

void OursFrom(benchmark::State& io_state, const Case& in_case) {
    WideStringConverter platform;
    orska_wstring::SetDriverManagerEncoding(in_case.m_encoding);
    ODBCStringConverter converter(platform);
    orska_wstring result;
    for (auto _ : io_state) {
        converter.ConvertSQLWCHARToWString(in_case.m_bytes.data(),
                                           static_cast<std::int64_t>(in_case.m_bytes.size()), true,
                                           result);
        benchmark::DoNotOptimize(result.GetLength());
    }
    CountText(io_state, in_case);
}

/// Writes the text and a NUL, as a caller of ICU does.
void IcuWrite(UConverter* io_converter, const Case& in_case, std::vector<char>& out_buffer) {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = in_case.m_string.GetImpl()->extract(
        out_buffer.data(), static_cast<std::int32_t>(out_buffer.size()), io_converter, status);
    benchmark::DoNotOptimize(length);
    benchmark::ClobberMemory();
}

void IcuOpenTo(benchmark::State& io_state, const Case& in_case) {
    IcuConverter converter(in_case);
    std::vector<char> buffer(in_case.m_bytes.size() + 16);
    for (auto _ : io_state) IcuWrite(converter.Get(), in_case, buffer);
    CountText(io_state, in_case);
}

void IcuByNameTo(benchmark::State& io_state, const Case& in_case) {
    std::vector<char> buffer(in_case.m_bytes.size() + 16);
    for (auto _ : io_state) {
        IcuConverter converter(in_case);
        IcuWrite(converter.Get(), in_case, buffer);
    }
    CountText(io_state, in_case);
}

void IcuOpenFrom(benchmark::State& io_state, const Case& in_case) {
    IcuConverter converter(in_case);
    for (auto _ : io_state) {
        UErrorCode status = U_ZERO_ERROR;
        const icu::UnicodeString result(in_case.m_bytes.data(),
                                        static_cast<std::int32_t>(in_case.m_bytes.size()),
                                        converter.Get(), status);
        benchmark::DoNotOptimize(result.length());
    }
    CountText(io_state, in_case);
}

void IcuByNameFrom(benchmark::State& io_state, const Case& in_case) {
    for (auto _ : io_state) {
        const icu::UnicodeString result(in_case.m_bytes.data(),
                                        static_cast<std::int32_t>(in_case.m_bytes.size()),
                                        in_case.GetIcuName());
        benchmark::DoNotOptimize(result.length());
    }
    CountText(io_state, in_case);
}

void Memcpy(benchmark::State& io_state, const Case& in_case) {
    std::vector<char> buffer(in_case.m_bytes.size() + 16);
    for (auto _ : io_state) {
        std::memcpy(buffer.data(), in_case.m_bytes.data(), in_case.m_bytes.size());
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    CountText(io_state, in_case);
}

/// Measures how much two threads do in the time of one, with a platform converter for both.
void OursThreads(benchmark::State& io_state) {
    static WideStringConverter s_platform;
    const Case made = MakeCase(TEXTS[2], 256, EncodingType{18});
    std::vector<char> buffer(made.m_bytes.size() + 16);
    for (auto _ : io_state) {
        benchmark::DoNotOptimize(s_platform.ConvertFromWString(
            made.m_string, buffer.data(), static_cast<std::int64_t>(buffer.size()),
            made.m_encoding));
    }
    io_state.SetItemsProcessed(static_cast<std::int64_t>(io_state.iterations()));
}

/// The same with an ICU converter for each thread: the most that the machine can do.
void IcuThreads(benchmark::State& io_state) {
    const Case made = MakeCase(TEXTS[2], 256, EncodingType{18});
    IcuConverter converter(made);
    std::vector<char> buffer(made.m_bytes.size() + 16);
    for (auto _ : io_state) IcuWrite(converter.Get(), made, buffer);
    io_state.SetItemsProcessed(static_cast<std::int64_t>(io_state.iterations()));
}

void Register(const std::string& in_who, const std::string& in_direction, const Case& in_case,
              const std::string& in_suffix, void (*in_run)(benchmark::State&, const Case&)) {
    std::string pair;
    for (const char c : std::string(in_case.GetIcuName())) {
        if (c != '-') pair += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    benchmark::RegisterBenchmark((in_who + "/" + in_direction + "-" + pair + in_suffix).c_str(),
                                 [=](benchmark::State& io_state) { in_run(io_state, in_case); });
}

void RegisterAll() {
    for (const EncodingType encoding : ENCODINGS) {
        for (const Text& text : TEXTS) {
            for (const std::size_t size : SIZES) {
                const Case made = MakeCase(text, size, encoding);
                const std::string suffix =
                    "/" + std::string(text.m_name) + "/" + std::to_string(size);
                Register("ours", "to-sqlwchar", made, suffix, OursTo);
                Register("icu-open", "to-sqlwchar", made, suffix, IcuOpenTo);
                Register("icu-by-name", "to-sqlwchar", made, suffix, IcuByNameTo);
                Register("memcpy", "to-sqlwchar", made, suffix, Memcpy);
                Register("ours", "from-sqlwchar", made, suffix, OursFrom);
                Register("icu-open", "from-sqlwchar", made, suffix, IcuOpenFrom);
                Register("icu-by-name", "from-sqlwchar", made, suffix, IcuByNameFrom);
            }
        }
    }
    benchmark::RegisterBenchmark("ours/pooled-sjis/cjk/256", OursThreads)
        ->ThreadRange(1, 2)
        ->UseRealTime();
    benchmark::RegisterBenchmark("icu-open/pooled-sjis/cjk/256", IcuThreads)
        ->ThreadRange(1, 2)
        ->UseRealTime();
}

}  // namespace

int main(int in_count, char** in_arguments) {
    RegisterAll();
    benchmark::Initialize(&in_count, in_arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
