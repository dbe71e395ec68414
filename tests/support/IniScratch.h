/// A folder with a user's and a system's odbc.ini that exists as long as the object, and the
/// environment that makes the driver manager use them. A process makes one, before its first call
/// into the installer library, which keeps the system's path.
#ifndef TESTS_SUPPORT_INISCRATCH_H
#define TESTS_SUPPORT_INISCRATCH_H

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace Veltrane::Test {

class IniScratch {
public:
    explicit IniScratch(
        const std::filesystem::path& in_parent = std::filesystem::temp_directory_path()) {
        std::string folder = (in_parent / "odbcini-XXXXXX").string();
        m_folder = mkdtemp(folder.data());
        std::filesystem::create_directory(m_folder / "system");
        setenv("ODBCINI", UserFile().c_str(), 1);
        setenv("ODBCSYSINI", (m_folder / "system").c_str(), 1);
        unsetenv("ODBCSEARCH");
    }
    /// A parent in memory: on a disk every replaced file takes long.
    static std::filesystem::path InMemory() {
        return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::filesystem::temp_directory_path();
    }
    IniScratch(const IniScratch&) = delete;
    IniScratch& operator=(const IniScratch&) = delete;
    ~IniScratch() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    const std::filesystem::path& Folder() const { return m_folder; }
    std::filesystem::path UserFile() const { return m_folder / "user.ini"; }
    std::filesystem::path SystemFile() const { return m_folder / "system" / "odbc.ini"; }

    static void Write(const std::filesystem::path& in_path, const std::string& in_bytes) {
        std::ofstream(in_path, std::ios::binary) << in_bytes;
    }
    static std::string Read(const std::filesystem::path& in_path) {
        std::ifstream file(in_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Counts what a folder has, hidden files included.
    static std::ptrdiff_t CountEntries(const std::filesystem::path& in_folder) {
        using std::filesystem::directory_iterator;
        return std::distance(directory_iterator(in_folder), directory_iterator());
    }
    static std::ptrdiff_t CountOpenFiles() { return CountEntries("/proc/self/fd"); }
    /// Counts the files in the folder of the user's file, without folders.
    std::size_t CountFiles() const {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder)) {
            count += entry.is_directory() ? 0 : 1;
        }
        return count;
    }

private:
    std::filesystem::path m_folder;
};

}  // namespace Veltrane::Test

#endif
