#include <charconv>
#include <iostream>

#include "cli/commands/Commands.h"
#include "cli/commands/Report.h"
#include "cli/dsn/ConnectionString.h"
#include "cli/examine/ApartWork.h"
#include "cli/examine/ConnectionTest.h"
#include "cli/examine/Findings.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

namespace {

std::chrono::seconds GetTimeout(const CommandLine& in_line) {
    constexpr int MAX_SECONDS = 24 * 60 * 60;
    const std::string text = in_line.Get("--timeout", "15");
    int seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || seconds < 1 || seconds > MAX_SECONDS) {
        Refuse("--timeout is a number of seconds from 1 to " + std::to_string(MAX_SECONDS) + ".");
    }
    return std::chrono::seconds(seconds);
}

ConnectionRequest MakeRequest(const CommandLine& in_line) {
    ConnectionRequest request;
    request.m_timeout = GetTimeout(in_line);
    request.m_driverManager = in_line.Get("--driver-manager");
    const std::string& name = in_line.m_arguments.front();
    if (name != "-") {
        request.m_attributes.Set("DSN", name);
    } else if (in_line.Has("--pwd-stdin")) {
        Refuse("Standard input cannot give a connection string and a password.");
    } else {
        request.m_attributes = ParseConnectionString(ReadText({}));
        if (request.m_attributes.IsEmpty()) {
            Refuse("Standard input has no connection string.");
        }
    }
    if (in_line.Has("--uid")) request.m_attributes.Set("UID", in_line.Get("--uid"));
    TakePassword(in_line, request.m_attributes);
    return request;
}

void Print(const std::string& in_name, const Json& in_result) {
    std::cout << (in_name == "-" ? "" : in_name + ": ") << in_result["text"].get<std::string>()
              << "\n";
    for (const Json& it : in_result["diagnostics"]) {
        std::cout << it["state"].get<std::string>() << " (" << it["native_code"] << ") "
                  << it["text"].get<std::string>() << "\n";
    }
    Findings findings;
    for (const Json& it : in_result["findings"]) {
        findings.push_back({Severity::Error, it["id"], it["text"], it["repair"]});
    }
    PrintFindings(findings);
}

ExitCode GetExitCode(const Json& in_result) {
    if (in_result["connected"]) return EXIT_DONE;
    if (in_result["outcome"] == "timed out") return EXIT_NO_ANSWER;
    const Json& findings = in_result["findings"];
    const bool isMissing = !findings.empty() && findings[0]["id"] == "dsn-missing";
    return isMissing ? EXIT_NOT_FOUND : EXIT_FAILED;
}

}  // namespace

ExitCode TestDsn(const CommandLine& in_line) {
    if (in_line.Has("--apart")) {
        DoApartWork();
        return EXIT_DONE;
    }
    const std::string& name = in_line.m_arguments.front();
    const Json result = TestConnection(MakeRequest(in_line));
    const ExitCode code = GetExitCode(result);
    if (in_line.Has("--json")) {
        Json document{{"name", name}};
        document.update(result);
        PrintJson(document);
    } else if (!in_line.Has("--quiet") || code != EXIT_DONE) {
        Print(name, result);
    }
    return code;
}

}  // namespace Veltrane::Cli
