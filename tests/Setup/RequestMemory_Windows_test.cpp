// Memory runs out at each allocation of a whole request: nothing crashes or leaks, and the request
// returns 0 with one error if there is memory for one.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/InstallerStage.h"
#include "tests/support/RefusedMemory.h"
#include "tests/support/TemporaryDirectory.h"
#include "tools/WindowsApi.h"
// Must follow <windows.h>.
#include <odbcinst.h>

namespace {

/// The installer has its own allocator.
void* PlainMalloc(std::size_t in_size) { return std::malloc(in_size); }

}  // namespace

namespace Veltrane::Test {
namespace {

class RequestOnProfile {
public:
    RequestOnProfile(WORD in_request, bool in_isWide) : m_request(in_request), m_isWide(in_isWide) {
        const std::string values =
            m_directory.Write("values.ini", "[DSN]\nDSN=x\nServer=new\nUID=u\nPWD=p\nDatabase=d\n");
        SetEnvironmentVariableA("VELTRANE_DSN_INITIAL_VALUES", values.c_str());
    }

    std::string Describe() const { return "request " + std::to_string(m_request); }
    void Prepare() const { m_stage.Begin(false, BEFORE); }
    int Run() const {
        return m_isWide ? ConfigDSNW(nullptr, m_request, L"drv", L"DSN=x\0")
                        : ConfigDSN(nullptr, m_request, "drv", "DSN=x\0");
    }
    std::size_t CountErrors() const { return m_stage.Posted().size(); }
    bool IsRestWhole() const { return m_stage.Get().at("y") == BEFORE.at("y"); }

private:
    const Profile BEFORE = {{"x", {{"Driver", "drv"}, {"Server", "old"}, {"Database", "d"}}},
                            {"y", {{"Driver", "drv"}, {"k", "v"}}}};
    WORD m_request;
    bool m_isWide;
    Orska::Test::TemporaryDirectory m_directory;
    mutable InstallerStage m_stage;
};

TEST(RequestMemory, RunsOut) {
    RunOutOfMemory(RequestOnProfile(ODBC_ADD_DSN, true));
    RunOutOfMemory(RequestOnProfile(ODBC_CONFIG_DSN, false));
    RunOutOfMemory(RequestOnProfile(ODBC_REMOVE_DSN, true));
}

}  // namespace
}  // namespace Veltrane::Test
