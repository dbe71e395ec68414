#include <charconv>
#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/GivenValues.h"
#include "cli/commands/Report.h"
#include "cli/dsn/ConnectionString.h"
#include "cli/examine/ConnectionTest.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

namespace {

using Outcome = ConnectionOutcome;

std::chrono::seconds GetTimeout(const CommandLine& in_line) {
    constexpr int MAX_SECONDS = 24 * 60 * 60;
    const std::string text = in_line.Get(OptionId::Timeout, "15");
    int seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || seconds < 1 || seconds > MAX_SECONDS) {
        throw CommandError(EXIT_USAGE, "--timeout is a number of seconds from 1 to " +
                                           std::to_string(MAX_SECONDS) + ".");
    }
    return std::chrono::seconds(seconds);
}

ConnectionRequest MakeRequest(const CommandLine& in_line) {
    ConnectionRequest request;
    request.m_timeout = GetTimeout(in_line);
    request.m_driverManager = in_line.Get(OptionId::DriverManager);
    const std::string& name = in_line.m_arguments.front();
    if (name != "-") {
        request.m_attributes.Set("DSN", name);
    } else if (in_line.Has(OptionId::PwdStdin)) {
        throw CommandError(EXIT_USAGE,
                           "Standard input cannot give a connection string and a password.");
    } else {
        request.m_attributes = ParseConnectionString(ReadText({}));
        if (request.m_attributes.IsEmpty()) {
            throw CommandError(EXIT_USAGE, "Standard input has no connection string.");
        }
    }
    if (in_line.Has(OptionId::Uid)) request.m_attributes.Set("UID", in_line.Get(OptionId::Uid));
    TakePassword(in_line, request.m_attributes);
    return request;
}

const char* GetName(Outcome in_outcome) {
    switch (in_outcome) {
        case Outcome::Connected:
            return "connected";
        case Outcome::Refused:
            return "refused";
        case Outcome::TimedOut:
            return "timed out";
        case Outcome::Crashed:
            return "crashed";
        case Outcome::Cancelled:
            return "cancelled";
        case Outcome::NotTested:
            break;
    }
    return "not tested";
}

Json ToJson(const std::string& in_name, const ConnectionResult& in_result) {
    Json diagnostics = Json::array();
    for (const auto& [state, code, text] : in_result.m_diagnostics) {
        diagnostics.push_back({{"state", state}, {"native_code", code}, {"text", text}});
    }
    return {{"name", in_name},
            {"connected", in_result.m_outcome == Outcome::Connected},
            {"outcome", GetName(in_result.m_outcome)},
            {"text", in_result.m_text},
            {"time_ms", in_result.m_time.count()},
            {"server", in_result.m_serverName},
            {"version", in_result.m_serverVersion},
            {"diagnostics", std::move(diagnostics)},
            {"findings", ToJson(in_result.m_reasons)}};
}

void Print(const std::string& in_name, const ConnectionResult& in_result) {
    std::cout << (in_name == "-" ? "" : in_name + ": ") << in_result.m_text << "\n";
    for (const auto& [state, code, text] : in_result.m_diagnostics) {
        std::cout << state << " (" << code << ") " << text << "\n";
    }
    PrintFindings(in_result.m_reasons);
}

ExitCode GetExitCode(const ConnectionResult& in_result) {
    if (in_result.m_outcome == Outcome::Connected) return EXIT_DONE;
    if (in_result.m_outcome == Outcome::TimedOut) return EXIT_NO_ANSWER;
    const bool isMissing = in_result.m_outcome == Outcome::Refused &&
                           !in_result.m_reasons.empty() &&
                           in_result.m_reasons.front().m_id == "dsn-missing";
    return isMissing ? EXIT_NOT_FOUND : EXIT_FAILED;
}

}  // namespace

ExitCode TestDsn(const CommandLine& in_line) {
    if (in_line.Has(OptionId::Apart)) {
        AnswerConnectionTest();
        return EXIT_DONE;
    }
    const ConnectionResult result = ConnectionTest(MakeRequest(in_line)).Wait();
    const ExitCode code = GetExitCode(result);
    if (in_line.Has(OptionId::Json)) {
        PrintJson(ToJson(in_line.m_arguments.front(), result));
    } else if (!in_line.Has(OptionId::Quiet) || code != EXIT_DONE) {
        Print(in_line.m_arguments.front(), result);
    }
    return code;
}

}  // namespace Veltrane::Cli
