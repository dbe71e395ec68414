/// Turns the trace on while the object exists, into a new file, and reads it back.
#ifndef TESTS_SUPPORT_TRACECAPTURE_H
#define TESTS_SUPPORT_TRACECAPTURE_H

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"
#include "tools/trace.h"

namespace Orska::Test {

/// Sets TR4CE, or unsets it for null, and makes the trace read it again; undoes both at the end.
class TraceSetting {
public:
    explicit TraceSetting(const char* in_value) {
        SetVariable("TR4CE", in_value);
        ResetTrace();
    }
    ~TraceSetting() {
        SetVariable("TR4CE", nullptr);
        ResetTrace();
    }
    TraceSetting(const TraceSetting&) = delete;
    TraceSetting& operator=(const TraceSetting&) = delete;
};

class TraceCapture {
public:
    /// @param in_settings  the part before the ":" of TR4CE, such as "1" or "4st"
    explicit TraceCapture(const std::string& in_settings = "1")
        : m_setting((in_settings + ":" + GetPath()).c_str()) {}

    std::string GetPath() const { return m_directory.GetPath("a trace.log"); }

    std::string GetText() const {
        std::ifstream file(GetPath());  // a text file
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::vector<std::string> GetLines() const {
        std::istringstream text(GetText());
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        return lines;
    }

private:
    TemporaryDirectory m_directory;
    TraceSetting m_setting;
};

/// Returns what a trace line writes to standard error with this setting.
inline std::string TraceOnStandardError(const char* in_value, int in_level = 1) {
    const TraceSetting setting(in_value);
    testing::internal::CaptureStderr();
    trace(in_level, "F", "S", 7, "text");
    return testing::internal::GetCapturedStderr();
}

}  // namespace Orska::Test

#endif
