/// A file handle in memory, linked in place of the system's, whose calls fail on demand.
#ifndef TESTS_SUPPORT_TEXTFILE_FAKE_H
#define TESTS_SUPPORT_TEXTFILE_FAKE_H

#include <cstddef>
#include <string>

namespace Orska::Test {

/// What every handle works on, and which calls fail. One set for the process.
struct FakeFile {
    std::string m_content;
    std::size_t m_position = 0;
    bool m_isOpen = false;
    bool m_isLocked = false;
    bool m_openFails = false;
    bool m_seekFails = false;
    bool m_setEndFails = false;
    /// Reads fail from this position on.
    std::size_t m_readFailsAt = std::string::npos;
    /// Writes fail from this position on.
    std::size_t m_writeFailsAt = std::string::npos;

    static FakeFile& Get();
};

}  // namespace Orska::Test

#endif
