/// Whole requests on real files, called as unixODBC calls them: the config mode selects the user's
/// or the system's. For tests that make calls below them fail. One for each process.
#ifndef TESTS_SUPPORT_REQUESTONFILES_H
#define TESTS_SUPPORT_REQUESTONFILES_H

#include <gtest/gtest.h>
#include <odbcinst.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/support/IniScratch.h"

namespace Veltrane::Test {

struct FileRequest {
    unsigned short m_request;  ///< ODBC_ADD_DSN ...
    bool m_isWide;
    bool m_isSystem;
    bool m_hasFile;  ///< the file has the data source
};

class RequestOnFiles {
public:
    RequestOnFiles() {
        IniScratch::Write(m_scratch.Folder() / "system" / "values.ini",
                          "[DSN]\nDSN=sales\nServer=new\nUID=u\nPWD=p\nDatabase=d\n");
        setenv("VELTRANE_DSN_INITIAL_VALUES",
               (m_scratch.Folder() / "system" / "values.ini").c_str(), 1);
    }

    /// Sets the kind of the next requests.
    void Use(const FileRequest& in_request) { m_request = in_request; }

    /// Every kind of request that differs for a file.
    static std::vector<FileRequest> All() {
        std::vector<FileRequest> all;
        for (const WORD request :
             {WORD{ODBC_ADD_DSN}, WORD{ODBC_CONFIG_DSN}, WORD{ODBC_REMOVE_DSN}}) {
            for (int bits = 0; bits < 8; ++bits) {
                all.push_back({request, (bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0});
            }
        }
        return all;
    }

    std::string Describe() const {
        return "request " + std::to_string(m_request.m_request) +
               (m_request.m_isWide ? ", wide" : ", narrow") +
               (m_request.m_isSystem ? ", system" : ", user") +
               (m_request.m_hasFile ? ", a file" : ", no file");
    }

    std::filesystem::path File() const {
        return m_request.m_isSystem ? m_scratch.SystemFile() : m_scratch.UserFile();
    }
    /// Writes the files and sets the mode as the installer does.
    void Prepare() const {
        std::filesystem::remove(m_scratch.UserFile());
        std::filesystem::remove(m_scratch.SystemFile());
        if (m_request.m_hasFile) IniScratch::Write(File(), BEFORE);
        SQLSetConfigMode(m_request.m_isSystem ? ODBC_SYSTEM_DSN : ODBC_USER_DSN);
    }
    /// Allocates nothing itself.
    int Run() const {
        if (m_request.m_isWide) {
            return ConfigDSNW(nullptr, m_request.m_request, reinterpret_cast<LPCWSTR>(u"Veltrane"),
                              reinterpret_cast<LPCWSTR>(u"DSN=sales\0"));
        }
        return ConfigDSN(nullptr, m_request.m_request, "Veltrane", "DSN=sales\0");
    }
    /// The contents of the file; empty when there is none.
    std::string Read() const { return IniScratch::Read(File()); }

    /// Counts files that do not belong there.
    std::size_t CountLeftFiles() const {
        std::size_t count = 0;
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(m_scratch.Folder())) {
            const std::string name = entry.path().filename();
            count += entry.is_directory() || name == "values.ini" || entry.path() == File() ? 0 : 1;
        }
        return count;
    }

    /// True if the parts of others are there, and no other file is.
    bool IsRestWhole() const {
        return CountLeftFiles() == 0 && Read().starts_with("# kept\n[Other]\nk = v\n") &&
               Read().ends_with("[z]\nlast=1");
    }

    static long CountOpenFiles() {
        using std::filesystem::directory_iterator;
        return std::distance(directory_iterator("/proc/self/fd"), directory_iterator());
    }

    static std::size_t CountErrors() {
        std::size_t count = 0;
        for (WORD i = 1; i <= 8; ++i) {
            DWORD code = 0;
            char text[512] = "";
            WORD length = 0;
            const RETCODE result = SQLInstallerError(i, &code, text, sizeof text, &length);
            if (result != SQL_SUCCESS && result != SQL_SUCCESS_WITH_INFO) break;
            ++count;
        }
        return count;
    }

    static constexpr char BEFORE[] =
        "# kept\n[Other]\nk = v\n\n[sales]\nDriver=Veltrane\nServer=old\nDatabase=d\n\n[z]\nlast=1";

private:
    /// A file system in memory: on a disk every replaced file takes long.
    static std::filesystem::path Parent() {
        return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::filesystem::temp_directory_path();
    }

    FileRequest m_request{};
    IniScratch m_scratch{Parent()};
};

}  // namespace Veltrane::Test

#endif
