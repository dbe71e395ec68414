// Shows what a driver's function does with a value: it writes text into the application's SQLWCHAR
// buffer, truncated if it does not fit, and returns an SQLSTATE for text that is not a number. The
// page docs/sqlwchar-to-sqlstate.md explains it step by step.
//
// Usage: sqlwchar_to_sqlstate FILE.ini TEXT
#include <cstdint>
#include <cstdio>
#include <exception>

#include <orska/Exceptions/ErrorException.h>
#include <orska/PlatformAbstraction/ICU/ODBCStringConverter.h>
#include <orska/PlatformAbstraction/Platform.h>
#include <orska/PlatformAbstraction/numbers/NumberConverter.h>
#include <orska/PlatformAbstraction/settings/OrskaSettingReader.h>
#include <orska/PlatformAbstraction/strings/orska_wstring.h>
#include <orska/tools/trace.h>

using namespace Orska::Support;

namespace {

constexpr char SOURCE[] = "examples\\sqlwchar_to_sqlstate";

/// The diagnosis that an ODBC function returns to its caller.
struct Diagnosis {
    SQLState m_state;  ///< not set: nothing to report
    orska_wstring m_text;
};

/// Writes the text for an application with room for this many SQLWCHAR units.
Diagnosis WriteText(ODBCStringConverter& io_converter, const orska_wstring& in_text,
                    char16_t* out_buffer, std::int64_t in_units) {
    bool isTruncated = false;
    const std::int64_t written = io_converter.ConvertWStringToSQLWCHARString(
        in_text, out_buffer, in_units, false, isTruncated);
    const std::int64_t needed = io_converter.GetLengthAsSQLWCHARString(in_text, false);
    std::printf("written: %d of %d units\n", static_cast<int>(written), static_cast<int>(needed));
    if (!isTruncated) return {};
    return {SQLState(DIAG_01004), orska_wstring("String data, right truncated")};
}

/// Converts a text to the integer that the application asks for.
Diagnosis ReadNumber(const orska_wstring& in_text, std::int32_t& out_number) {
    try {
        out_number = NumberConverter::StringToInteger<std::int32_t>(in_text, true);
        return {};
    } catch (const NumberConversionOutOfRangeException&) {
        return {SQLState(DIAG_22003), orska_wstring("Numeric value out of range")};
    } catch (const NumberConversionInvalidDataException&) {
        return {SQLState(DIAG_22018), orska_wstring("Invalid character value for cast")};
    }
}

void Report(const char* in_what, const Diagnosis& in_diagnosis) {
    if (!in_diagnosis.m_state.IsSet()) return;
    const char* const state = in_diagnosis.m_state.GetText();
    std::printf("%s: [%s] %s\n", in_what, state, in_diagnosis.m_text.GetAsUtf8().c_str());
    ORSKA_TRACE(1, "Report", SOURCE, 0, "%s: SQLSTATE %s", in_what, state);
}

void Run(const char* in_settings, const char* in_text) {
    OrskaSettingReader::Initialize(in_settings, L"Veltrane", L"Driver");
    const Orska::Platform::PlatformGuard platform;
    ODBCStringConverter converter(platform);
    std::printf("log level: %s\n", OrskaSettingReader::GetLogLevel().c_str());

    orska_wstring text;
    text.SetFromUtf8(in_text);
    char16_t buffer[6] = {};
    Report("text", WriteText(converter, text, buffer, 6));
    std::printf("application reads: %s\n", orska_wstring(buffer).GetAsUtf8().c_str());

    std::int32_t number = 0;
    const Diagnosis diagnosis = ReadNumber(text, number);
    if (!diagnosis.m_state.IsSet()) std::printf("number: %d\n", number);
    Report("number", diagnosis);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: sqlwchar_to_sqlstate FILE.ini TEXT\n");
        return 2;
    }
    try {
        Run(argv[1], argv[2]);
        return 0;
    } catch (const ErrorException& exception) {
        std::fprintf(stderr, "%s\n", exception.GetUnformattedDescription().GetAsUtf8().c_str());
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "%s\n", exception.what());
    }
    return 1;
}
