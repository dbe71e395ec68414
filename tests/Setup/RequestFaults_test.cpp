// Every system call of a whole request fails. The request returns 0 and posts one error, or works
// without the call. The file is the old or the new one, and no other file is left.
#include <gtest/gtest.h>
#include <odbcinst.h>

#include <cerrno>
#include <utility>

#include "tests/support/IniScratch.h"
#include "tests/support/SystemCalls_Fake.h"

namespace Veltrane::Test {
namespace {

/// Whole requests on real files, called as unixODBC calls them: the config mode selects the user's
/// or the system's.
class RequestFaults : public testing::Test {
protected:
    RequestFaults() {
        const auto values = m_scratch.Folder() / "system" / "values.ini";
        IniScratch::Write(values, "[DSN]\nDSN=sales\nServer=new\nUID=u\nPWD=p\nDatabase=d\n");
        setenv("VELTRANE_DSN_INITIAL_VALUES", values.c_str(), 1);
    }

    std::filesystem::path File() const {
        return m_isSystem ? m_scratch.SystemFile() : m_scratch.UserFile();
    }
    std::string Read() const { return IniScratch::Read(File()); }

    /// Makes the request on new files, with calls that call the function first.
    int Run(decltype(FakeSystemCalls::m_before) in_before = nullptr) const {
        std::filesystem::remove(m_scratch.UserFile());
        std::filesystem::remove(m_scratch.SystemFile());
        if (!m_old.empty()) IniScratch::Write(File(), m_old);
        SQLSetConfigMode(m_isSystem ? ODBC_SYSTEM_DSN : ODBC_USER_DSN);
        s_systemCalls = {};
        s_systemCalls.m_before = std::move(in_before);
        return m_isWide ? ConfigDSNW(nullptr, m_request, reinterpret_cast<LPCWSTR>(u"Veltrane"),
                                     reinterpret_cast<LPCWSTR>(u"DSN=sales\0"))
                        : ConfigDSN(nullptr, m_request, "Veltrane", "DSN=sales\0");
    }

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
    static std::size_t CountErrors() {
        WORD count = 0;
        DWORD code = 0;
        char text[512] = "";
        while (SQL_SUCCEEDED(SQLInstallerError(count + 1U, &code, text, sizeof text, nullptr))) {
            ++count;
        }
        return count;
    }

    void Check(int in_result, const std::string& in_failed) const {
        const std::string now = Read();
        EXPECT_TRUE(!now.empty() || !std::filesystem::exists(File()));
        EXPECT_LE(CountLeftFiles(), in_failed == "unlink" ? 1u : 0u);
        EXPECT_EQ(CountErrors(), in_result == 0 ? 1u : 0u);
        // When the directory cannot be synced it is too late to go back, but the request must not
        // report success.
        EXPECT_TRUE(now == (in_result == 1 ? m_new : m_old) ||
                    (in_failed == "fsync" && in_result == 0 && now == m_new))
            << now;
        EXPECT_EQ(IniScratch::CountOpenFiles(), m_openFiles);
        // No lock is held: the same request succeeds.
        Run();
        EXPECT_EQ(Read(), m_new);
        EXPECT_EQ(CountLeftFiles(), 0u);
    }

    const IniScratch m_scratch{IniScratch::InMemory()};
    WORD m_request = 0;
    bool m_isWide = false;
    bool m_isSystem = false;
    std::string m_old;  ///< the file; empty for none
    std::string m_new;
    std::ptrdiff_t m_openFiles = 0;
};

TEST_F(RequestFaults, EachSystemCallFails) {
    std::size_t failed = 0;
    for (unsigned bits = 0; bits < 24; ++bits) {
        m_isWide = bits % 2 != 0;
        m_isSystem = bits / 2 % 2 != 0;
        m_old = bits / 4 % 2 == 0
                    ? ""
                    : "# kept\n[Other]\nk = v\n\n[sales]\nDriver=Veltrane\nServer=old\n"
                      "Database=d\n\n[z]\nlast=1";
        m_request = static_cast<WORD>(ODBC_ADD_DSN + bits / 8);
        SCOPED_TRACE(testing::Message()
                     << "request " << m_request << (m_isWide ? ", wide" : ", narrow")
                     << (m_isSystem ? ", system" : ", user") << (m_old.empty() ? ", no file" : ""));
        // Without it, finding the mode takes 6 to 20 ms since unixODBC 2.3.13.
        setenv("ODBCSEARCH", m_isSystem ? "ODBC_SYSTEM_DSN" : "ODBC_USER_DSN", 1);
        const int plainResult = Run();
        EXPECT_EQ(CountErrors(), plainResult == 0 ? 1u : 0u);
        m_new = Read();
        m_openFiles = IniScratch::CountOpenFiles();
        const std::size_t calls = s_systemCalls.m_calls.size();
        ASSERT_GT(calls, 3u);
        for (std::size_t call = 0; call < calls; ++call) {
            for (const int error : {EIO, ENOSPC, ESTALE, ENOLCK, EOPNOTSUPP}) {
                // The kind of list makes no difference to system calls.
                if (m_isWide && error != EIO) continue;
                const int result = Run([=](const std::string&, std::size_t in_call) {
                    return in_call == call ? error : 0;
                });
                // The number of calls depends on how often a request waits for others.
                const auto& made = s_systemCalls.m_calls;
                const std::string name = call < made.size() ? made[call] : "not reached";
                SCOPED_TRACE(name + " " + std::to_string(call) + ", error " +
                             std::to_string(error));
                failed += result == 0 ? 1 : 0;
                Check(result, name);
                if (HasFailure()) return;
            }
        }
    }
    EXPECT_GT(failed, 500u);
}

}  // namespace
}  // namespace Veltrane::Test
