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

/// Time to explain why the driver manager found no driver.
constexpr std::chrono::seconds TIME_TO_EXPLAIN{10};
/// Time to disconnect: servers log connections that are not closed.
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

/// Reads the last line of the process.
Json ReadFindings(ApartProcess& io_process, std::chrono::seconds in_patience) {
    std::string line;
    const Event event = io_process.ReadLine(Clock::now() + in_patience, line);
    return event == Event::Line ? Json::parse(line) : Json::array();
}

Json ReadAnswer(const Json& in_answer, ApartProcess& io_process) {
    if (in_answer.contains("reason")) return MakeResult("not tested", in_answer["reason"]);
    const milliseconds time(in_answer.at("time_ms").get<long long>());
    const std::string took = DescribeTime(time);
    const bool isConnected = in_answer.at("connected");
    Json result = MakeResult("refused", "Not connected; it took " + took + ".", time);
    result["diagnostics"] = in_answer.at("diagnostics");
    if (isConnected) {
        const std::string name = in_answer.at("server");
        const std::string version = in_answer.at("version");
        const bool isKnown = !name.empty() || !version.empty();
        result.update({{"connected", true},
                       {"outcome", "connected"},
                       {"text", "Connected in " + took +
                                    (isKnown ? " to " + name + " " + version + "." : ".")},
                       {"server", name},
                       {"version", version}});
    }
    result["findings"] =
        ReadFindings(io_process, isConnected ? TIME_TO_DISCONNECT : TIME_TO_EXPLAIN);
    return result;
}

}  // namespace

Json TestConnection(const ConnectionRequest& in_request) {
    const Clock::time_point begin = Clock::now();
    ApartProcess process = Start(in_request, false);
    std::string line;
    const Event event = process.ReadLine(begin + in_request.m_timeout, line);
    const auto time = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
    if (event == Event::TimedOut) {
        return MakeResult(
            "timed out",
            "No answer within " + DescribeTime(in_request.m_timeout) + "; the driver was stopped.",
            time);
    }
    if (event == Event::Ended) {
        Json result = MakeResult(
            "crashed", "The driver has ended its process: " + process.DescribeEnd() + ".", time);
        // With lazy binding, a function that no library defines ends the process.
        ApartProcess explainer = Start(in_request, true);
        result["findings"] = ReadFindings(explainer, TIME_TO_EXPLAIN);
        return result;
    }
    try {
        return ReadAnswer(Json::parse(line), process);
    } catch (const Json::exception& error) {
        // For example another version of the tool has replaced this one.
        return MakeResult("not tested",
                          std::string("The test's own process answers nonsense: ") + error.what());
    }
}

}  // namespace Veltrane::Cli
