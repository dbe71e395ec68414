/// A program of ours in a process of its own, and the two ends of what they say to each other:
/// lines in UTF-8 without line feeds. Unlike RunApart, it begins anew, so a program with threads
/// may start it.
#ifndef CLI_APARTPROCESS_H
#define CLI_APARTPROCESS_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace Veltrane::Cli {

/// The end of the process that starts the other one.
class ApartProcess {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    enum class Event { Line, Ended, TimedOut };

    /// @param in_program  its path; empty: the program of this process
    /// @param in_request  the line that it gets
    /// @throws CommandError EXIT_FAILED with the reason
    ApartProcess(const std::string& in_program, const std::vector<std::string>& in_arguments,
                 const std::string& in_request);
    ApartProcess(const ApartProcess&) = delete;
    ApartProcess& operator=(const ApartProcess&) = delete;
    /// Kills the process.
    ~ApartProcess();

    /// Waits for a line, the end of the process or a time.
    Event ReadLine(TimePoint in_until, std::string& out_line);
    /// How the process has ended, after `Ended`: "signal 11 (Segmentation fault)". Kills it where
    /// it has only fallen silent.
    std::string DescribeEnd();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// The end of the process that is kept apart. Whoever else reads and writes the standard streams of
/// this process then finds them empty. The process ends with the other one.
class ApartAnswer {
public:
    ApartAnswer();
    ApartAnswer(const ApartAnswer&) = delete;
    ApartAnswer& operator=(const ApartAnswer&) = delete;
    ~ApartAnswer();

    /// @throws CommandError EXIT_USAGE where nobody asks
    std::string ReadRequest();
    void Write(const std::string& in_line);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Takes the first line out of what has come. @return false when there is none yet
inline bool TakeLine(std::string& io_received, std::string& out_line) {
    const std::size_t end = io_received.find('\n');
    if (end == std::string::npos) return false;
    out_line = io_received.substr(0, end);
    io_received.erase(0, end + 1);
    return true;
}

}  // namespace Veltrane::Cli

#endif
