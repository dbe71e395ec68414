/// A directory for one test, with helpers to write and read the files in it. The destructor removes
/// it with everything in it.
#ifndef TESTS_SUPPORT_TEMPORARYDIRECTORY_H
#define TESTS_SUPPORT_TEMPORARYDIRECTORY_H

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace Orska::Test {

class TemporaryDirectory {
public:
    TemporaryDirectory() {
        // No other process has this number now; directories that an earlier one left are skipped.
        static int s_count = 0;
        do {
            m_path = testing::TempDir() + "orska." + std::to_string(getpid()) + "." +
                     std::to_string(++s_count) + "/";
        } while (!std::filesystem::create_directory(m_path));
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// Ends in "/".
    const std::string& GetPath() const { return m_path; }
    std::string GetPath(const std::string& in_name) const { return m_path + in_name; }

    /// Creates or replaces a file.
    /// @return its path
    std::string Write(const std::string& in_name, std::string_view in_bytes) const {
        std::ofstream file(GetPath(in_name), std::ios::binary);
        file.write(in_bytes.data(), static_cast<std::streamsize>(in_bytes.size()));
        EXPECT_TRUE(file.good());
        return GetPath(in_name);
    }

    std::string Read(const std::string& in_name) const {
        std::ifstream file(GetPath(in_name), std::ios::binary);
        EXPECT_TRUE(file.is_open());
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string m_path;
};

}  // namespace Orska::Test

#endif
