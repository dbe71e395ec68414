#include "cli/examine/ConnectionTest.h"

#include <nlohmann/json.hpp>

#include "PlatformAbstraction/base/Wipe.h"
#include "cli/examine/ApartProcess.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

using Json = nlohmann::ordered_json;
using Event = ApartProcess::Event;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// For why the driver manager has found no driver.
constexpr std::chrono::seconds TIME_TO_EXPLAIN{10};
/// Servers note a connection that is not closed.
constexpr std::chrono::seconds TIME_TO_DISCONNECT{2};

ApartProcess Start(const ConnectionRequest& in_request, bool in_explains) {
    Json attributes = Json::array();
    for (const auto& [key, value] : in_request.m_attributes) attributes.push_back({key, value});
    std::string line = Json{
        {"attributes", std::move(attributes)},
        {"driver_manager", in_request.m_driverManager},
        {"explains",
         in_explains}}.dump(-1, ' ', false, Json::error_handler_t::replace);
    const Orska::Support::WipeAtEnd wipe(line);
    return ApartProcess(in_request.m_program, {"test", "-", "--apart"}, line);
}

std::string DescribeTime(milliseconds in_time) {
    const auto count = in_time.count();
    if (count < 1000) return std::to_string(count) + " ms";
    const auto tenths = (count % 1000) / 100;
    return std::to_string(count / 1000) + (tenths == 0 ? "" : "." + std::to_string(tenths)) + " s";
}

void ReadAnswer(const Json& in_answer, ConnectionResult& out_result) {
    if (in_answer.contains("reason")) {
        out_result.m_text = in_answer["reason"];
        return;
    }
    const bool isConnected = in_answer.at("connected");
    out_result.m_outcome = isConnected ? ConnectionOutcome::Connected : ConnectionOutcome::Refused;
    out_result.m_time = milliseconds(in_answer.at("time_ms").get<long long>());
    out_result.m_serverName = in_answer.value("server", "");
    out_result.m_serverVersion = in_answer.value("version", "");
    for (const Json& it : in_answer.at("diagnostics")) {
        out_result.m_diagnostics.push_back({it.at("state"), it.at("native_code"), it.at("text")});
    }
    const std::string time = DescribeTime(out_result.m_time);
    if (!isConnected) {
        out_result.m_text = "Not connected; it took " + time + ".";
        return;
    }
    const std::string server = out_result.m_serverName + " " + out_result.m_serverVersion;
    out_result.m_text = "Connected in " + time + (server == " " ? "" : " to " + server) + ".";
}

/// What the process says last.
Findings ReadFindings(ApartProcess& io_process, std::chrono::seconds in_patience) {
    Findings findings;
    std::string line;
    if (io_process.ReadLine(Clock::now() + in_patience, line) != Event::Line) return findings;
    for (const Json& it : Json::parse(line)) {
        findings.push_back({Severity::Error, it.at("id"), it.at("text"), it.at("repair")});
    }
    return findings;
}

}  // namespace

struct ConnectionTest::State {
    explicit State(const ConnectionRequest& in_request)
        : m_request(in_request), m_process(Start(in_request, false)) {}

    const ConnectionRequest m_request;
    const Clock::time_point m_begin = Clock::now();
    ApartProcess m_process;

    ConnectionResult DescribeSilence(Event in_event) {
        ConnectionResult result;
        result.m_time = std::chrono::duration_cast<milliseconds>(Clock::now() - m_begin);
        const std::string time = DescribeTime(m_request.m_timeout);
        if (in_event == Event::TimedOut) {
            result.m_outcome = ConnectionOutcome::TimedOut;
            result.m_text = "No answer within " + time + "; the driver was stopped.";
        } else if (in_event == Event::Cancelled) {
            result.m_outcome = ConnectionOutcome::Cancelled;
            result.m_text = "Cancelled.";
        } else {
            result.m_outcome = ConnectionOutcome::Crashed;
            result.m_text = "The driver has ended its process: " + m_process.DescribeEnd() + ".";
            // A function that no library defines ends it, where the driver is bound as it is used.
            ApartProcess explainer = Start(m_request, true);
            result.m_reasons = ReadFindings(explainer, TIME_TO_EXPLAIN);
        }
        return result;
    }

    ConnectionResult Read(const std::string& in_line) {
        ConnectionResult result;
        try {
            ReadAnswer(Json::parse(in_line), result);
            if (result.m_outcome == ConnectionOutcome::NotTested) return result;
            const bool isConnected = result.m_outcome == ConnectionOutcome::Connected;
            result.m_reasons =
                ReadFindings(m_process, isConnected ? TIME_TO_DISCONNECT : TIME_TO_EXPLAIN);
        } catch (const Json::exception& error) {
            // Another version of the tool, say, which has replaced this one.
            result.m_outcome = ConnectionOutcome::NotTested;
            result.m_text = std::string("The test's own process answers nonsense: ") + error.what();
        }
        return result;
    }
};

ConnectionTest::ConnectionTest(const ConnectionRequest& in_request)
    : m_state(std::make_unique<State>(in_request)) {}

ConnectionTest::~ConnectionTest() = default;

ConnectionResult ConnectionTest::Wait() {
    std::string line;
    const Event event =
        m_state->m_process.ReadLine(m_state->m_begin + m_state->m_request.m_timeout, line);
    return event == Event::Line ? m_state->Read(line) : m_state->DescribeSilence(event);
}

void ConnectionTest::Cancel() { m_state->m_process.Cancel(); }

}  // namespace Veltrane::Cli
