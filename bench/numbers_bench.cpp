/// Number conversion compared with its peers, in one process and on the same inputs.
///
/// Names are who, work and input, joined by slashes. The counter "each" is the time of one
/// conversion. Before anything is measured, every peer's result is compared with ours; a peer that
/// disagrees stops the program.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#ifdef ORSKA_HAVE_FMT
#include <fmt/compile.h>
#endif
#ifdef ORSKA_HAVE_FAST_FLOAT
#include <fast_float/fast_float.h>
#endif
#ifdef ORSKA_HAVE_DOUBLE_CONVERSION
#include <double-conversion/double-conversion.h>
#endif

#include "PlatformAbstraction/numbers/NumberConverter.h"

namespace {

using Orska::Support::NumberConverter;

constexpr std::size_t COUNT = 8192;  // more than a branch predictor remembers

/// NUL-terminated text, as strtoll and strtod need it.
struct Text {
    const char* m_text;
    std::size_t m_length;
};

/// Inputs side by side in memory.
class Texts {
public:
    explicit Texts(const std::function<std::string()>& in_make) {
        std::vector<std::size_t> starts;
        for (std::size_t i = 0; i < COUNT; ++i) {
            starts.push_back(m_memory.size());
            m_memory += in_make() + '\0';
        }
        starts.push_back(m_memory.size());
        for (std::size_t i = 0; i < COUNT; ++i) {
            m_texts.push_back({m_memory.data() + starts[i], starts[i + 1] - starts[i] - 1});
        }
    }
    Texts(const Texts&) = delete;
    Texts& operator=(const Texts&) = delete;

    const std::vector<Text>& Get() const { return m_texts; }

private:
    std::string m_memory;
    std::vector<Text> m_texts;
};

[[noreturn]] void Stop(const std::string& in_name, const std::string& in_input) {
    std::fprintf(stderr, "%s disagrees about %s\n", in_name.c_str(), in_input.c_str());
    std::exit(1);
}

template <class Item, class Function>
void Register(const std::string& in_name, const std::vector<Item>& in_items, Function in_function) {
    benchmark::RegisterBenchmark(
        in_name.c_str(), [&in_items, in_function](benchmark::State& state) {
            for (auto _ : state) {
                for (const Item& item : in_items) {
                    benchmark::DoNotOptimize(in_function(item));
                }
            }
            state.counters["each"] =
                benchmark::Counter(static_cast<double>(state.iterations() * in_items.size()),
                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
        });
}

/// Registers a way to parse; its results must be near those of `in_reference`.
template <class Function, class Reference>
void RegisterParser(const std::string& in_who, const std::string& in_work, const Texts& in_texts,
                    Function in_function, Reference in_reference) {
    for (const Text& text : in_texts.Get()) {
        const auto expected = in_reference(text);
        const auto value = in_function(text);
        bool isSame = value == expected;
        if constexpr (std::is_floating_point_v<decltype(value)>) {
            isSame = std::fabs(value - expected) <= std::fabs(expected) * 1e-15;
        }
        if (!isSame) Stop(in_who + in_work, text.m_text);
    }
    Register(in_who + in_work, in_texts.Get(), in_function);
}

template <class T>
T FromChars(const Text& in_text) {
    T value{};
    std::from_chars(in_text.m_text, in_text.m_text + in_text.m_length, value);
    return value;
}

template <class T>
void RegisterIntegerParsers(const std::string& in_type, const std::string& in_input,
                            const std::function<T()>& in_make) {
    const std::string work = "/parse-" + in_type + "/" + in_input;
    const auto* const texts = new Texts([&] { return std::to_string(in_make()); });
    const auto ours = [](const Text& text) {
        return NumberConverter::StringToInteger<T>(text.m_text, text.m_length, true);
    };
    RegisterParser("ours", work, *texts, ours, ours);
    RegisterParser("from_chars", work, *texts, FromChars<T>, ours);
    const auto c = [](const Text& text) {
        if constexpr (std::is_signed_v<T>) {
            return static_cast<T>(std::strtoll(text.m_text, nullptr, 10));
        } else {
            return static_cast<T>(std::strtoull(text.m_text, nullptr, 10));
        }
    };
    RegisterParser("strtoll", work, *texts, c, ours);
}

#ifdef ORSKA_HAVE_DOUBLE_CONVERSION
const double_conversion::StringToDoubleConverter& GetPeerParser() {
    static const double_conversion::StringToDoubleConverter s_parser(
        double_conversion::StringToDoubleConverter::NO_FLAGS, 0.0, 0.0, nullptr, nullptr);
    return s_parser;
}

const double_conversion::DoubleToStringConverter& GetPeerPrinter() {
    static const double_conversion::DoubleToStringConverter s_printer(
        double_conversion::DoubleToStringConverter::NO_TRAILING_ZERO, "inf", "nan", 'e', -5, 21, 6,
        0);
    return s_printer;
}
#endif

void RegisterDoubleParsers(const std::string& in_input,
                           const std::function<std::string()>& in_make) {
    const std::string work = "/parse-double/" + in_input;
    const auto* const texts = new Texts(in_make);
    const auto ours = [](const Text& text) {
        return NumberConverter::ConvertStringToFloatingPoint<double>(text.m_text, text.m_length,
                                                                     true);
    };
    RegisterParser("ours", work, *texts, ours, ours);
    RegisterParser("from_chars", work, *texts, FromChars<double>, ours);
    RegisterParser(
        "strtod", work, *texts, [](const Text& text) { return std::strtod(text.m_text, nullptr); },
        ours);
#ifdef ORSKA_HAVE_FAST_FLOAT
    const auto fastFloat = [](const Text& text) {
        double value = 0;
        fast_float::from_chars(text.m_text, text.m_text + text.m_length, value);
        return value;
    };
    RegisterParser("fast_float", work, *texts, fastFloat, ours);
#endif
#ifdef ORSKA_HAVE_DOUBLE_CONVERSION
    const auto doubleConversion = [](const Text& text) {
        int used = 0;
        return GetPeerParser().StringToDouble(text.m_text, static_cast<int>(text.m_length), &used);
    };
    RegisterParser("double-conversion", work, *texts, doubleConversion, ours);
#endif
}

/// Registers a way to print: `in_print` writes into a buffer and returns the text's two ends.
template <class T, class Function>
void RegisterPrinter(const std::string& in_name, const std::vector<T>& in_values,
                     Function in_print) {
    for (const T value : in_values) {
        char buffer[64];
        const std::string_view text = in_print(value, buffer);
        const double seen = std::strtod(std::string(text).c_str(), nullptr);
        const double tolerance = std::is_same_v<T, float> ? 1e-6 : 1e-14;
        if (std::fabs(seen - static_cast<double>(value)) >
            std::fabs(static_cast<double>(value)) * tolerance) {
            Stop(in_name, std::string(text));
        }
    }
    Register(in_name, in_values, [in_print](T value) {
        char buffer[64];
        const std::string_view text = in_print(value, buffer);
        benchmark::DoNotOptimize(text.data());
        benchmark::ClobberMemory();
        return text.size();
    });
}

constexpr std::size_t ROOM = 64;

std::string_view Between(const char* in_start, const char* in_end) {
    return {in_start, static_cast<std::size_t>(in_end - in_start)};
}

template <class T>
void RegisterIntegerPrinters(const std::string& in_type, const std::string& in_input,
                             const std::function<T()>& in_make) {
    const std::string work = "/print-" + in_type + "/" + in_input;
    auto* const values = new std::vector<T>;
    for (std::size_t i = 0; i < COUNT; ++i) values->push_back(in_make());
    RegisterPrinter("ours" + work, *values, [](T value, char* buffer) {
        const char* const text = NumberConverter::IntegerToBuffer(value, ROOM, buffer);
        return Between(text, buffer + ROOM - 1);
    });
    RegisterPrinter("to_chars" + work, *values, [](T value, char* buffer) {
        return Between(buffer, std::to_chars(buffer, buffer + ROOM, value).ptr);
    });
#ifdef ORSKA_HAVE_FMT
    RegisterPrinter("fmt" + work, *values, [](T value, char* buffer) {
        return Between(buffer, fmt::format_to(buffer, FMT_COMPILE("{}"), value));
    });
#endif
    RegisterPrinter("snprintf" + work, *values, [](T value, char* buffer) {
        const int length =
            std::is_signed_v<T>
                ? std::snprintf(buffer, ROOM, "%lld", static_cast<long long>(value))
                : std::snprintf(buffer, ROOM, "%llu", static_cast<unsigned long long>(value));
        return std::string_view(buffer, static_cast<std::size_t>(length));
    });
}

template <class T>
void RegisterFloatPrinters(const std::string& in_input, const std::function<double()>& in_make) {
    constexpr int DIGITS = std::is_same_v<T, float> ? 7 : 15;
    const std::string work =
        (std::is_same_v<T, float> ? "/print-float7/" : "/print-double15/") + in_input;
    auto* const values = new std::vector<T>;
    for (std::size_t i = 0; i < COUNT; ++i) values->push_back(static_cast<T>(in_make()));
    RegisterPrinter("ours" + work, *values, [](T value, char* buffer) {
        return std::string_view(buffer,
                                NumberConverter::ConvertFloatingPointToBuffer(value, buffer));
    });
    RegisterPrinter("to_chars" + work, *values, [](T value, char* buffer) {
        return Between(
            buffer,
            std::to_chars(buffer, buffer + ROOM, value, std::chars_format::general, DIGITS).ptr);
    });
#ifdef ORSKA_HAVE_FMT
    RegisterPrinter("fmt" + work, *values, [](T value, char* buffer) {
        if constexpr (DIGITS == 7) {
            return Between(buffer, fmt::format_to(buffer, FMT_COMPILE("{:.7g}"), value));
        } else {
            return Between(buffer, fmt::format_to(buffer, FMT_COMPILE("{:.15g}"), value));
        }
    });
#endif
#ifdef ORSKA_HAVE_DOUBLE_CONVERSION
    RegisterPrinter("double-conversion" + work, *values, [](T value, char* buffer) {
        double_conversion::StringBuilder builder(buffer, ROOM);
        GetPeerPrinter().ToPrecision(static_cast<double>(value), DIGITS, &builder);
        const auto length = static_cast<std::size_t>(builder.position());
        builder.Finalize();
        return std::string_view(buffer, length);
    });
#endif
    RegisterPrinter("snprintf" + work, *values, [](T value, char* buffer) {
        const int length = std::snprintf(buffer, ROOM, "%.*g", DIGITS, static_cast<double>(value));
        return std::string_view(buffer, static_cast<std::size_t>(length));
    });
}

std::mt19937_64& GetRandom() {
    static std::mt19937_64 s_random(42);
    return s_random;
}

template <class T>
void RegisterIntegers(const std::string& in_type) {
    const auto uniform = [] { return static_cast<T>(GetRandom()()); };
    // 1 to 4 digits, mostly few, as in settings and counts.
    const auto small = [] {
        return static_cast<T>((GetRandom()() % 10000) >> (GetRandom()() % 13));
    };
    RegisterIntegerParsers<T>(in_type, "uniform", uniform);
    RegisterIntegerParsers<T>(in_type, "small", small);
    RegisterIntegerPrinters<T>(in_type, "uniform", uniform);
    RegisterIntegerPrinters<T>(in_type, "small", small);
}

/// Prints as "%.*f" or "%.*e" does.
std::string Print(std::chars_format in_format, int in_precision, double in_value) {
    char text[64];
    return std::string(
        text, std::to_chars(text, text + sizeof(text), in_value, in_format, in_precision).ptr);
}

double MakePrice() { return static_cast<double>(GetRandom()() % 10000000) / 100.0; }

std::string MakeSetting() {
    static const char* const SETTINGS[] = {"0",     "1",     "30",    "0.5",  "100",  "1000",
                                           "0.001", "65536", "1.25",  "-1",   "3600", "0.75",
                                           "1e6",   "1e-3",  "2.5e3", "86400"};
    return SETTINGS[GetRandom()() % 16];
}

/// 15 to 17 significant digits, as for doubles that have to be read back.
std::string MakeLong() {
    const double value = static_cast<double>(GetRandom()() >> 11) / 9007199254740992.0 *
                         std::pow(10.0, static_cast<double>(GetRandom()() % 5));
    char text[64];
    std::snprintf(text, sizeof(text), "%.*g", static_cast<int>(15 + GetRandom()() % 3), value);
    return text;
}

double MakeLarge() {
    return std::ldexp(static_cast<double>(GetRandom()() >> 11),
                      static_cast<int>(GetRandom()() % 60));
}

bool RegisterAll() {
    RegisterIntegers<std::int16_t>("int16");
    RegisterIntegers<std::uint16_t>("uint16");
    RegisterIntegers<std::int32_t>("int32");
    RegisterIntegers<std::uint32_t>("uint32");
    RegisterIntegers<std::int64_t>("int64");
    RegisterIntegers<std::uint64_t>("uint64");
    RegisterDoubleParsers("price", [] { return Print(std::chars_format::fixed, 2, MakePrice()); });
    RegisterDoubleParsers("setting", MakeSetting);
    RegisterDoubleParsers("exponent",
                          [] { return Print(std::chars_format::scientific, 4, MakeLarge()); });
    RegisterDoubleParsers("digits15-17", MakeLong);
    RegisterFloatPrinters<double>("price", MakePrice);
    RegisterFloatPrinters<double>("large", MakeLarge);
    RegisterFloatPrinters<float>("price", [] { return MakePrice() / 10.0; });
    RegisterFloatPrinters<float>("large", MakeLarge);
    return true;
}

[[maybe_unused]] const bool s_isRegistered = RegisterAll();

}  // namespace
