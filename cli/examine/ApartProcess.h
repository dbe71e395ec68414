/// The tool in a separate process, and both ends of the connection to it. A message is one line in
/// UTF-8.
#ifndef CLI_APARTPROCESS_H
#define CLI_APARTPROCESS_H

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace Veltrane::Cli {

/// The end of the parent process.
class ApartProcess {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    enum class Event { Line, Ended, TimedOut };

    /// Starts this program, which is the tool, as `veltrane-dsn test - --apart`.
    /// @param in_request  the line that the process receives
    /// @throws CommandError EXIT_FAILED with the reason
    explicit ApartProcess(const std::string& in_request);
    ApartProcess(const ApartProcess&) = delete;
    ApartProcess& operator=(const ApartProcess&) = delete;
    /// Kills the process.
    ~ApartProcess();

    /// Waits for a line, the end of the process or a time.
    Event ReadLine(TimePoint in_until, std::string& out_line);
    /// Describes how the process ended, after `Ended`: "signal 11 (Segmentation fault)". Kills a
    /// process that has only closed its output.
    std::string DescribeEnd();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// The end of the child process.
struct ApartRequest {
    std::string m_line;
    std::function<void(const std::string& in_line)> m_answer;  ///< writes a line
};

/// Takes the request. Other readers and writers of the process's standard streams then find them
/// empty, and the process ends with its parent.
/// @throws CommandError EXIT_USAGE if there is no parent
ApartRequest TakeRequest();

/// Removes the first received line. @return false if there is no complete line yet
inline bool TakeLine(std::string& io_received, std::string& out_line) {
    const std::size_t end = io_received.find('\n');
    if (end == std::string::npos) return false;
    out_line = io_received.substr(0, end);
    io_received.erase(0, end + 1);
    return true;
}

}  // namespace Veltrane::Cli

#endif
