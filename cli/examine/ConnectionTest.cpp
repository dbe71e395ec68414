#include "cli/examine/ConnectionTest.h"

#include <algorithm>

#include "PlatformAbstraction/base/Ascii.h"
#include "cli/dsn/ConnectionString.h"
#include "cli/dsn/DsnStore.h"
#include "cli/examine/ApartProcess.h"
#include "cli/examine/ApartWork.h"
#include "cli/examine/Findings.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Json = nlohmann::ordered_json;
using Event = ApartProcess::Event;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Time to disconnect: servers log connections that are not closed.
constexpr std::chrono::seconds TIME_TO_DISCONNECT{2};

std::string DescribeTime(milliseconds in_time) {
    const auto count = in_time.count();
    if (count < 1000) return std::to_string(count) + " ms";
    const auto tenths = (count % 1000) / 100;
    return std::to_string(count / 1000) + (tenths == 0 ? "" : "." + std::to_string(tenths)) + " s";
}

Json MakeResult(const char* in_outcome, const std::string& in_text, milliseconds in_time = {}) {
    return {{"connected", false},
            {"outcome", in_outcome},
            {"text", in_text},
            {"time_ms", in_time.count()},
            {"server", ""},
            {"version", ""},
            {"diagnostics", Json::array()},
            {"findings", Json::array()}};
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
        stored.m_entries = ReadDsn(store.Read(), in_dsn);
        if (stored.m_entries) break;
    }
    return stored;
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

void MaskSecrets(const Entries& in_entries, Json& io_diagnostics) {
    for (Json& diagnostic : io_diagnostics) {
        std::string text = diagnostic.at("text");
        for (const auto& [key, value] : in_entries) {
            if (!IsSecretKey(key) || value.empty()) continue;
            Mask(value, text);
            Mask(DoubleBraces(value), text);
        }
        diagnostic["text"] = text;
    }
}

/// Whether this can be the driver manager reporting that it found no driver.
bool IsFromDriverManager(const Json& in_diagnostics) {
    return std::any_of(in_diagnostics.begin(), in_diagnostics.end(), [](const Json& in_it) {
        const std::string state = in_it.at("state");
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
                 "Add it, or name an existing one: veltrane-dsn list --both --all."}};
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

Json ReadAnswer(const Json& in_answer, const Entries& in_attributes, const Stored& in_stored) {
    if (in_answer.contains("reason")) return MakeResult("not tested", in_answer["reason"]);
    const std::string took = DescribeTime(milliseconds(in_answer.at("time_ms").get<long long>()));
    Json result = MakeResult("refused", "Not connected; it took " + took + ".");
    for (const char* const key : {"connected", "time_ms", "server", "version", "diagnostics"}) {
        result[key] = in_answer.at(key);
    }
    Json& diagnostics = result["diagnostics"];
    MaskSecrets(in_attributes, diagnostics);
    if (in_stored.m_entries) MaskSecrets(*in_stored.m_entries, diagnostics);
    const std::string server =
        result["server"].get<std::string>() + " " + result["version"].get<std::string>();
    if (result["connected"]) {
        result["outcome"] = "connected";
        result["text"] = "Connected in " + took + (server == " " ? "." : " to " + server + ".");
    } else if (IsFromDriverManager(diagnostics)) {
        result["findings"] = ToJson(Explain(in_attributes, in_stored));
    }
    return result;
}

}  // namespace

Json TestConnection(const ConnectionRequest& in_request) {
    const Entries& attributes = in_request.m_attributes;
    const Clock::time_point begin = Clock::now();
    ApartProcess process(ToLine({{"connection_string", FormatConnectionString(attributes)},
                                 {"driver_manager", in_request.m_driverManager}}));
    std::string line;
    const Event event = process.ReadLine(begin + in_request.m_timeout, line);
    const auto time = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    if (event == Event::TimedOut) {
        return MakeResult(
            "timed out",
            "No answer within " + DescribeTime(in_request.m_timeout) + "; the driver was stopped.",
            time);
    }
    try {
        const Stored stored = FindStored(attributes.Get("DSN"));
        if (event == Event::Line) {
            Json result = ReadAnswer(Json::parse(line), attributes, stored);
            if (result["connected"]) process.ReadLine(Clock::now() + TIME_TO_DISCONNECT, line);
            return result;
        }
        Json result = MakeResult(
            "crashed", "The driver has ended its process: " + process.DescribeEnd() + ".", time);
        // With lazy binding, a missing function ends the process at its call and is named here.
        if (stored.m_entries || attributes.Find("Driver") != nullptr) {
            result["findings"] = ToJson(Explain(attributes, stored));
        }
        return result;
    } catch (const Json::exception& error) {
        // For example if another version has replaced the tool meanwhile.
        return MakeResult("not tested",
                          std::string("The test process sent an invalid answer: ") + error.what());
    } catch (const std::exception& error) {
        return MakeResult("not tested", error.what());
    }
}

}  // namespace Veltrane::Cli
