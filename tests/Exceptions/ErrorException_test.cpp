#include "Exceptions/ErrorException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Exceptions/ILogger.h"
#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tests/support/TraceCapture.h"

namespace Orska::Support {
namespace {

using Strings = std::vector<std::string>;
using Test::TraceCapture;
using Test::TraceSetting;

const std::string NO_SOURCE = "Cannot create a message with a NULL message source";

/// Has a text for keys that begin with "Known", and records the keys asked for.
class FakeSource : public IMessageSource {
public:
    void GetMessageWithParameters(const orska_wstring& in_locale,
                                  const orska_wstring& in_messageKey, std::uint32_t in_componentId,
                                  const std::vector<orska_wstring>& in_parameters,
                                  orska_wstring& out_text,
                                  std::int32_t& out_nativeErrorCode) override {
        Answer("parameters " + std::to_string(in_parameters.size()), in_locale, in_messageKey,
               in_componentId, out_text, out_nativeErrorCode);
    }
    void GetMessage(const orska_wstring& in_locale, const orska_wstring& in_messageKey,
                    std::uint32_t in_componentId, orska_wstring& out_text,
                    std::int32_t& out_nativeErrorCode) override {
        Answer("plain", in_locale, in_messageKey, in_componentId, out_text, out_nativeErrorCode);
    }

    Strings m_calls;
    bool m_isBroken = false;

private:
    void Answer(const std::string& in_kind, const orska_wstring& in_locale,
                const orska_wstring& in_messageKey, std::uint32_t in_componentId,
                orska_wstring& out_text, std::int32_t& out_nativeErrorCode) {
        m_calls.push_back(in_kind + " " + in_locale.GetAsUtf8() + " " + in_messageKey.GetAsUtf8() +
                          " " + std::to_string(in_componentId));
        if (m_isBroken) {
            throw std::runtime_error("no messages");
        }
        const bool isKnown = in_messageKey.StartsWith(u"Known");
        out_text = (isKnown ? u"Text of " : u"Unknown: ") + in_messageKey;
        out_nativeErrorCode = isKnown ? 4711 : -1;
    }
};

std::string Text(ErrorException& io_exception, IMessageSource* in_source) {
    return io_exception.GetMessageText(in_source, u"de-DE").GetAsUtf8();
}

const std::vector<orska_wstring> PARAMETERS = {u"x", u"\""};

TEST(ErrorExceptionTest, DescribesItselfOnOneLine) {
    const std::string head = "Unformatted ErrorException: {MessageKey=\"K\" ComponentID=";
    const std::string unknown = "' RowNumber=UNKNOWN ColumnNumber=UNKNOWN ";
    const struct {
        const char* m_point;
        ErrorException m_exception;
        std::string m_description;
    } cases[] = {
        {"diag, key",
         {DIAG_01000, 0, u"K", 0, 0},
         head + "0' RowNumber=0 ColumnNumber=0 DiagState=0}"},
        {"diag, key, parameters",
         {DIAG_IM009, 0xFFFFFFFF, u"K", PARAMETERS, UNKNOWN_ROW - 1, 12},
         head + "4294967295' RowNumber=18446744073709551614 ColumnNumber=12 DiagState=106 "
                "MessageParameters=[\"x\", \"\\\"\"]}"},
        {"state, key",
         {SQLState("42S02"), 3, u"K"},
         head + "3" + unknown + "CustomState=\"42S02\"}"},
        {"state, key, parameters",
         {SQLState("42S02"), 3, u"K", PARAMETERS},
         head + "3" + unknown + "CustomState=\"42S02\" MessageParameters=[\"x\", \"\\\"\"]}"},
        {"a state with a quote",
         {SQLState("\"\""), 3, u"K"},
         head + "3" + unknown + "CustomState=\"\\\"\\\"000\"}"},
        {"quotes in the key",
         {DIAG_GENERAL_ERROR, 3, u"a\"b\\\""},
         "Unformatted ErrorException: {MessageKey=\"a\\\"b\\\\\"\" ComponentID=3" + unknown +
             "DiagState=63}"},
        {"a NULL key",
         {DIAG_GENERAL_ERROR, 3, orska_wstring()},
         "Unformatted ErrorException: {MessageKey=\"\" ComponentID=3" + unknown + "DiagState=63}"},
        {"diag, text", {DIAG_HYC00, u"All is lost", 5, 1, 2}, "All is lost"},
        {"state, text", {SQLState("42S02"), u"All is lost", 5}, "All is lost"},
        {"product", ProductException(u"K"), head + "3" + unknown + "DiagState=63}"},
        {"start-up", StartupInitException("K"), head + "3" + unknown + "DiagState=63}"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_point);
        EXPECT_EQ(row.m_exception.GetUnformattedDescription().GetAsUtf8(), row.m_description);
    }
}

TEST(ErrorExceptionTest, ReturnsItsParts) {
    const ErrorException withState(SQLState("42S02"), 7, u"K", PARAMETERS, 1, 2);
    EXPECT_EQ(withState.GetDiagState(), DIAG_GENERAL_ERROR);
    EXPECT_STREQ(withState.GetCustomState().GetText(), "42S02");
    EXPECT_EQ(withState.GetComponentId(), 7u);
    EXPECT_EQ(withState.GetMessageKeyOrText(), orska_wstring(u"K"));
    EXPECT_EQ(withState.GetMessageKeyOrTextRef(), orska_wstring(u"K"));
    EXPECT_EQ(withState.GetMessageParameters(), PARAMETERS);
    EXPECT_EQ(withState.GetRowNumber(), 1u);
    EXPECT_EQ(withState.GetColumnNumber(), 2u);
    ErrorException finished(DIAG_HYC00, u"Text", -55);
    EXPECT_EQ(finished.GetDiagState(), DIAG_HYC00);
    EXPECT_FALSE(finished.GetCustomState().IsSet());
    EXPECT_STREQ(finished.GetCustomState().GetText(), "");
    EXPECT_EQ(finished.GetComponentId(), 0u);
    EXPECT_EQ(finished.GetNativeErrorCode(nullptr, u""), -55);
}

TEST(ErrorExceptionTest, MakesTheMessageOnce) {
    const struct {
        const char* m_point;
        ErrorException m_exception;
        std::string m_text;
        std::int32_t m_code;
        Strings m_calls;
    } cases[] = {
        {"a known key",
         {DIAG_GENERAL_ERROR, 3, u"KnownKey"},
         "Text of KnownKey",
         4711,
         {"plain de-DE KnownKey 3"}},
        {"a known key, parameters",
         {DIAG_GENERAL_ERROR, 9, u"KnownKey", PARAMETERS},
         "Text of KnownKey",
         4711,
         {"parameters 2 de-DE KnownKey 9"}},
        {"an unknown key", {DIAG_GENERAL_ERROR, 3, u"K"}, "Unknown: K", -1, {"plain de-DE K 3"}},
        {"an unknown key, parameters",
         {DIAG_GENERAL_ERROR, 3, u"K", PARAMETERS},
         "Unknown: K MessageParameters=[\"x\", \"\\\"\"]",
         -1,
         {"parameters 2 de-DE K 3"}},
        {"an unknown key, empty list",
         {SQLState("42S02"), 3, u"K", std::vector<orska_wstring>()},
         "Unknown: K MessageParameters=[]",
         -1,
         {"parameters 0 de-DE K 3"}},
        {"a finished text", {DIAG_GENERAL_ERROR, u"KnownKey", 5}, "KnownKey", 5, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_point);
        FakeSource source;
        ErrorException exception = row.m_exception;
        EXPECT_EQ(Text(exception, &source), row.m_text);
        EXPECT_EQ(exception.GetNativeErrorCode(&source, u"fr"), row.m_code);
        EXPECT_EQ(exception.GetMessageKeyOrText().GetAsUtf8(), row.m_text);
        EXPECT_EQ(exception.GetUnformattedDescription().GetAsUtf8(), row.m_text);
        ErrorException copy = exception;
        EXPECT_EQ(Text(copy, nullptr), row.m_text);
        EXPECT_EQ(source.m_calls, row.m_calls);

        FakeSource otherSource;
        exception = row.m_exception;
        EXPECT_EQ(exception.GetNativeErrorCode(&otherSource, u"de-DE"), row.m_code);
        EXPECT_EQ(otherSource.m_calls, row.m_calls);
    }
}

TEST(ErrorExceptionTest, TriesAgainAfterAMissingSource) {
    for (ErrorException exception : {ErrorException(DIAG_GENERAL_ERROR, 3, u"KnownKey"),
                                     ErrorException(DIAG_GENERAL_ERROR, 3, u"KnownKey", PARAMETERS),
                                     ErrorException(DIAG_GENERAL_ERROR, 3, orska_wstring())}) {
        const bool isNull = exception.GetMessageKeyOrText().IsNull();
        const orska_wstring before = exception.GetUnformattedDescription();
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(Text(exception, nullptr), NO_SOURCE);
            EXPECT_EQ(exception.GetNativeErrorCode(nullptr, u""), -1);
            EXPECT_EQ(exception.GetMessageKeyOrText().GetAsUtf8(), NO_SOURCE);
            EXPECT_EQ(exception.GetUnformattedDescription(), before);
        }
        FakeSource source;
        EXPECT_EQ(Text(exception, &source), isNull ? "Unknown: " : "Text of KnownKey");
        EXPECT_EQ(exception.GetNativeErrorCode(nullptr, u""), isNull ? -1 : 4711);
    }
}

class CountedSource : public FakeSource {
public:
    std::uint32_t GetRefCount() const { return m_refCount; }

protected:
    std::uint32_t Destroy() override { return 0; }
};

TEST(ErrorExceptionTest, ReleasesTheSharedReference) {
    CountedSource source;
    ErrorException exception(DIAG_GENERAL_ERROR, 3, u"KnownKey");
    SharedPtr<IMessageSource> held(&source);
    source.m_isBroken = true;
    EXPECT_THROW(exception.GetMessageText(held, u""), std::runtime_error);
    EXPECT_THROW(exception.GetNativeErrorCode(held, u""), std::runtime_error);
    EXPECT_EQ(source.GetRefCount(), 1u);
    source.m_isBroken = false;
    EXPECT_EQ(exception.GetMessageText(held, u"").GetAsUtf8(), "Text of KnownKey");
    EXPECT_EQ(exception.GetNativeErrorCode(held, u""), 4711);
    EXPECT_EQ(source.GetRefCount(), 1u);
    EXPECT_EQ((exception.GetMessageText(std::move(held), u""), source.GetRefCount()), 0u);
    ErrorException without(DIAG_GENERAL_ERROR, 3, u"KnownKey");
    EXPECT_EQ(without.GetMessageText(SharedPtr<IMessageSource>(), u"").GetAsUtf8(), NO_SOURCE);
    EXPECT_EQ(without.GetNativeErrorCode(SharedPtr<IMessageSource>(), u""), -1);
}

class FakeLogger : public ILogger {
public:
    explicit FakeLogger(std::int32_t in_level) : m_level(in_level) {}

    std::int32_t GetLogLevel() override { return m_level; }
    void LogError(const char* in_namespace, const char* in_class, const char* in_function,
                  const char* in_format, ...) override __attribute__((format(printf, 5, 6))) {
        std::va_list arguments;
        va_start(arguments, in_format);
        char text[200];
        std::vsnprintf(text, sizeof text, in_format, arguments);
        va_end(arguments);
        Record(in_namespace, in_class, in_function, std::string("error ") + in_format, text);
    }
    void LogErrorException(const char* in_namespace, const char* in_class, const char* in_function,
                           const ErrorException& in_exception) override {
        Record(in_namespace, in_class, in_function, "exception",
               in_exception.GetMessageKeyOrText().GetAsUtf8());
    }

    Strings m_lines;
    bool m_isBroken = false;

private:
    void Record(const char* in_namespace, const char* in_class, const char* in_function,
                const std::string& in_kind, const std::string& in_text) {
        if (m_isBroken) {
            throw std::runtime_error("log full");
        }
        m_lines.push_back(std::string(in_namespace) + "::" + in_class + "::" + in_function + " " +
                          in_kind + ": " + in_text);
    }

    std::int32_t m_level;
};

/// Throws and, in the catch block, logs and then runs `in_then`.
template <typename Thrown, typename Then>
void Log(const Thrown& in_thrown, FakeLogger& io_logger, const Then& in_then) {
    try {
        throw in_thrown;
    } catch (...) {
        ErrorException::LogCurrentException(&io_logger, "N", "C", "F");
        in_then();
    }
}

template <typename Thrown>
void ExpectDescribed(const char* in_point, const Thrown& in_thrown,
                     const std::string& in_description) {
    SCOPED_TRACE(in_point);
    const TraceCapture trace;
    FakeLogger logger(2);
    Log(in_thrown, logger, [&] {
        EXPECT_EQ(ErrorException::DescribeCurrentException().GetAsUtf8(), in_description);
        const ErrorException other = ErrorException::FromCurrentException(42);
        EXPECT_EQ(other.GetMessageKeyOrText().GetAsUtf8(), in_description);
        EXPECT_EQ(other.GetUnformattedDescription().GetAsUtf8(),
                  "Unformatted ErrorException: {MessageKey=\"" + in_description +
                      "\" ComponentID=42' RowNumber=UNKNOWN ColumnNumber=UNKNOWN DiagState=63}");
    });
    EXPECT_EQ(logger.m_lines, Strings{"N::C::F error %s: " + in_description});
    EXPECT_EQ(trace.GetText(), "Orska::Support::ErrorException::LogCurrentException:0\t" +
                                   in_description + " ErrorException\n");
}

TEST(LogCurrentExceptionTest, DescribesEachKind) {
    static char s_narrow[] = "characters";
    static wchar_t s_wide[] = L"wide characters";
    ExpectDescribed("standard exception", std::out_of_range("out of range"), "out of range");
    ExpectDescribed("narrow string", std::string("gr\xC3\xBCn 100%"), "gr\xC3\xBCn 100%");
    ExpectDescribed("wide string", std::wstring(L"gr\u00FCn"), "gr\xC3\xBCn");
    ExpectDescribed("orska_wstring", orska_wstring(u"text"), "text");
    ExpectDescribed<const char*>("narrow pointer", "literal", "literal");
    ExpectDescribed<char*>("narrow pointer, not const", s_narrow, "characters");
    ExpectDescribed<const wchar_t*>("wide pointer", L"literal", "literal");
    ExpectDescribed<wchar_t*>("wide pointer, not const", s_wide, "wide characters");
    ExpectDescribed<const char*>("null pointer", nullptr, "");
    ExpectDescribed("anything else", 5, "Unknown exception.");
}

TEST(LogCurrentExceptionTest, TextsDoNotDependOnTheProcessEncoding) {
    for (const char* name : {"UTF-16LE", "UTF-32LE", "IBM037", "KOI8-R", "US-ASCII"}) {
        SCOPED_TRACE(name);
        SetAnsiEncoding(ICUUtils::GetEncodingEnum(name));
        EXPECT_EQ(StartupInitException("Not legal.").GetMessageKeyOrText().GetAsUtf8(),
                  "Not legal.");
        ExpectDescribed("standard exception", std::out_of_range("out of range"), "out of range");
        ExpectDescribed("narrow string", std::string("text"), "text");
        ExpectDescribed<const char*>("narrow pointer", "literal", "literal");
        const TraceCapture trace;
        FakeLogger logger(2);
        Log(ProductException(u"gr\u00FCn"), logger, [] {});
        Log(std::runtime_error("gr\xC3\xBCn"), logger, [] {});
        EXPECT_THAT(trace.GetLines(), testing::Each(testing::HasSubstr("gr\xC3\xBCn")));
    }
    SetAnsiEncoding(EncodingType::ENC_UTF8);
}

TEST(LogCurrentExceptionTest, PassesAnErrorExceptionOn) {
    const TraceCapture trace;
    FakeLogger logger(3);
    const NumberConversionInvalidDataException thrown(u"K", PARAMETERS);
    Log(thrown, logger, [&] {
        const std::string line = thrown.GetUnformattedDescription().GetAsUtf8();
        EXPECT_EQ(trace.GetText(),
                  "Orska::Support::ErrorException::LogCurrentException:0\tException: " + line +
                      " ErrorException\n");
        EXPECT_EQ(ErrorException::DescribeCurrentException().GetAsUtf8(), line);
        const ErrorException same = ErrorException::FromCurrentException(42);
        EXPECT_EQ(same.GetUnformattedDescription().GetAsUtf8(), line);
        FakeSource source;
        EXPECT_EQ(ErrorException::DescribeCurrentException(&source, u"fr").GetAsUtf8(),
                  "Unknown: K MessageParameters=[\"x\", \"\\\"\"]");
        EXPECT_EQ(source.m_calls, Strings{"parameters 2 fr K 3"});
    });
    EXPECT_EQ(logger.m_lines, Strings{"N::C::F exception: K"});
}

TEST(LogCurrentExceptionTest, TheLevelOfTheLoggerDecidesNotTheTrace) {
    const TraceSetting off(nullptr);
    for (const std::int32_t level : {0, 1, 2}) {
        FakeLogger logger(level);
        Log(ProductException(u"K"), logger, [] {});
        Log(5, logger, [] {});
        EXPECT_EQ(logger.m_lines, level < 2 ? Strings()
                                            : Strings({"N::C::F exception: K",
                                                       "N::C::F error %s: Unknown exception."}));
    }
    const TraceCapture trace;
    FakeLogger logger(1);
    Log(ProductException(u"K"), logger, [] {});
    Log(5, logger, [] {});
    EXPECT_EQ(trace.GetText(), "");
}

TEST(LogCurrentExceptionTest, NothingEscapesAndTheExceptionStaysHandled) {
    FakeLogger logger(2);
    logger.m_isBroken = true;
    const auto rethrow = [] { throw; };
    EXPECT_THROW(Log(ProductException(u"K"), logger, rethrow), ProductException);
    EXPECT_THROW(Log(5, logger, rethrow), int);
    try {
        throw 5;
    } catch (...) {
        ErrorException::LogCurrentException(nullptr, "N", "C", "F");
    }
}

}  // namespace
}  // namespace Orska::Support
