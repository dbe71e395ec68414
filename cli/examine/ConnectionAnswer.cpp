/// The child process of a connection test.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/base/Wipe.h"
#include "cli/dsn/DsnStore.h"
#include "cli/examine/ApartProcess.h"
#include "cli/examine/ConnectionTest.h"
#include "cli/examine/DriverFindings.h"
#include "cli/examine/OdbcCalls.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

std::string ToLine(const Json& in_document) {
    return in_document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// The stored DSN, as the driver manager finds it.
struct Stored {
    std::string m_places;
    std::optional<Entries> m_entries;
};

Stored FindStored(const std::string& in_dsn) {
    Stored stored;
    for (const Scope scope : {Scope::User, Scope::System}) {
        const DsnStore store(scope);
        stored.m_places += (stored.m_places.empty() ? "" : " and ") + store.GetPath();
        stored.m_entries = store.Read(in_dsn);
        if (stored.m_entries) break;
    }
    return stored;
}

/// Returns a value as it is written in braces.
std::string DoubleBraces(const std::string& in_value) {
    std::string text;
    for (const char byte : in_value) text.append(byte == '}' ? 2 : 1, byte);
    return text;
}

std::string MakeConnectionString(const Entries& in_attributes) {
    std::string text;
    for (const auto& [key, value] : in_attributes) {
        // Some drivers do not know braces, so only values that need them get them.
        const bool isPlain =
            value.empty() || (value.find(';') == std::string::npos && value.front() != '{' &&
                              value.front() != ' ' && value.back() != ' ');
        text += key + "=" + (isPlain ? value : "{" + DoubleBraces(value) + "}") + ";";
    }
    return text;
}

/// Masks a secret in a driver's message, a short one only if it is a whole word.
void Mask(const std::string& in_secret, std::string& io_text) {
    constexpr std::size_t SHORT = 4;
    const auto isWord = [&](std::size_t in_at) {
        return in_at < io_text.size() && Orska::Support::IsAsciiLetterOrDigit(io_text[in_at]);
    };
    for (std::size_t at = 0; (at = io_text.find(in_secret, at)) != std::string::npos;) {
        const std::size_t size = in_secret.size();
        const bool isInWord = (at != 0 && isWord(at - 1)) || isWord(at + size);
        if (size < SHORT && isInWord) {
            ++at;
        } else {
            io_text.replace(at, size, MASK);
            at += MASK.size();
        }
    }
}

Json DescribeDiagnostics(std::vector<ConnectionDiagnostic> in_diagnostics,
                         const std::vector<const Entries*>& in_entries) {
    Json list = Json::array();
    for (ConnectionDiagnostic& diagnostic : in_diagnostics) {
        for (const Entries* const entries : in_entries) {
            for (const auto& [key, value] : *entries) {
                if (!IsSecretKey(key) || value.empty()) continue;
                Mask(value, diagnostic.m_text);
                Mask(DoubleBraces(value), diagnostic.m_text);
            }
        }
        list.push_back({{"state", diagnostic.m_state},
                        {"native_code", diagnostic.m_nativeCode},
                        {"text", diagnostic.m_text}});
    }
    return list;
}

/// Whether this can be the driver manager reporting that it found no driver.
bool IsFromDriverManager(const Json& in_diagnostics) {
    return std::any_of(in_diagnostics.begin(), in_diagnostics.end(), [](const Json& in_it) {
        const std::string state = in_it["state"];
        return state == "01000" || state.starts_with("IM00");
    });
}

/// Explains why the driver manager found no driver.
Findings Explain(const Entries& in_attributes, const Stored& in_stored) {
    constexpr auto ERROR = Severity::Error;
    const std::string dsn = in_attributes.Get("DSN");
    std::string driver = in_attributes.Get("Driver");
    if (driver.empty() && !in_stored.m_entries) {
        return {{ERROR, "dsn-missing",
                 "There is no DSN " + Quote(dsn) + " in " + in_stored.m_places + ".",
                 "Add it, or give the name of one that there is: veltrane-dsn list --both --all."}};
    }
    if (driver.empty()) driver = in_stored.m_entries->Get("Driver");
    if (driver.empty()) {
        return {{ERROR, "dsn-without-driver",
                 "The DSN " + Quote(dsn) + " of " + in_stored.m_places + " has no Driver entry.",
                 "Add it again, or remove its section."}};
    }
    Findings findings = ExamineDriverLibrary(driver);
    for (Finding& finding : findings) finding.m_severity = ERROR;
    return findings;
}

Entries ReadAttributes(const Json& in_request) {
    Entries attributes;
    for (const Json& attribute : in_request.at("attributes")) {
        attributes.Set(attribute.at(0).get<std::string>(), attribute.at(1).get<std::string>());
    }
    return attributes;
}

void Answer(const Json& in_request, ApartAnswer& io_answer) {
    const Entries attributes = ReadAttributes(in_request);
    const Stored stored = FindStored(attributes.Get("DSN"));
    if (in_request.value("explains", false)) {
        // A driver that was running has been found.
        const bool isKnown = stored.m_entries || attributes.Find("Driver") != nullptr;
        io_answer.Write(ToLine(isKnown ? ToJson(Explain(attributes, stored)) : Json::array()));
        return;
    }
    OdbcCalls calls(in_request.at("driver_manager"));
    std::string text = MakeConnectionString(attributes);
    const Orska::Support::WipeAtEnd wipe(text);
    const Clock::time_point begin = Clock::now();
    const bool isConnected = calls.Connect(text);
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    std::vector<const Entries*> secrets{&attributes};
    if (stored.m_entries) secrets.push_back(&*stored.m_entries);
    constexpr unsigned short DBMS_NAME = 17;  // SQL_DBMS_NAME
    constexpr unsigned short DBMS_VERSION = 18;
    Json result{{"connected", isConnected},
                {"time_ms", time.count()},
                {"diagnostics", DescribeDiagnostics(calls.GetDiagnostics(), secrets)}};
    if (isConnected) {
        result["server"] = calls.GetInfo(DBMS_NAME);
        result["version"] = calls.GetInfo(DBMS_VERSION);
    }
    io_answer.Write(ToLine(result));
    if (isConnected) {
        calls.Disconnect();
        io_answer.Write("[]");
    } else {
        const bool isUnknown = IsFromDriverManager(result["diagnostics"]);
        io_answer.Write(ToLine(isUnknown ? ToJson(Explain(attributes, stored)) : Json::array()));
    }
}

}  // namespace

void AnswerConnectionTest() {
    ApartAnswer answer;
    std::string line = answer.ReadRequest();
    const Orska::Support::WipeAtEnd wipe(line);
    try {
        Answer(Json::parse(line), answer);
    } catch (const std::exception& error) {
        answer.Write(ToLine({{"reason", error.what()}}));
    }
}

}  // namespace Veltrane::Cli
