/// An installer in memory that records calls and fails on demand. Process-wide: set by a test, read
/// by the fake body of OdbcInstaller.h, which is linked instead of the real one.
#ifndef TESTS_SUPPORT_ODBCINSTALLER_FAKE_H
#define TESTS_SUPPORT_ODBCINSTALLER_FAKE_H

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Veltrane::Test {

struct FakeInstaller {
    using Section = std::vector<std::pair<std::string, std::string>>;

    /// Sections by name, each with its keys in order. UTF-8.
    std::map<std::string, Section> m_profile;
    /// Names that ValidDSN refuses; the empty name is always refused.
    std::vector<std::string> m_invalidNames;
    /// Every operation with its arguments: "Write [a] Server=x", "Commit" ...
    std::vector<std::string> m_calls;
    /// Called with the text of each operation before it; true makes the operation fail.
    std::function<bool(const std::string&)> m_fails;
    /// Code and text of every posted error.
    std::vector<std::pair<unsigned long, std::string>> m_posted;
};

extern FakeInstaller s_installer;

}  // namespace Veltrane::Test

#endif
