#include "cli/examine/LibraryProbe.h"

#include <gtest/gtest.h>

#include "cli/examine/DriverFindings.h"
#include "cli/examine/DriverManagerFindings.h"

namespace Veltrane::Cli {
namespace {

TEST(LibraryProbe, DistinguishesTheLoadersReasons) {
    const struct {
        const char* m_error;
        LibraryFault m_fault;
        const char* m_detail;
    } cases[] = {
        {"/l.so: undefined symbol: f, version V_1", LibraryFault::MissingSymbol, "f"},
        {"/lib/libc.so.6: version `GLIBC_2.99' not found (required by /l.so)",
         LibraryFault::MissingSymbol, "version GLIBC_2.99"},
        {"/l.so: invalid ELF header", LibraryFault::CannotLoad, "/l.so: invalid ELF header"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_error);
        const LibraryProbe probe = ClassifyLoaderError("/l.so", c.m_error);
        EXPECT_EQ(probe.m_fault, c.m_fault);
        EXPECT_EQ(probe.m_detail, c.m_detail);
        const Finding finding = DescribeFault(probe, "Veltrane", "Setup", "/l.so");
        EXPECT_NE(finding.m_text.find(c.m_detail), std::string::npos) << finding.m_text;
        EXPECT_TRUE(finding.m_repair.ends_with(".")) << finding.m_repair;
    }
}

TEST(DriverManagerFindings, NamesTheDefectsOfItsVersion) {
    const auto ids = [](const char* in_version, bool in_hasLock) {
        std::string text;
        for (const Finding& f : ExamineDriverManager({"/lib", in_version, in_hasLock, false})) {
            text += std::string(f.m_id) + " ";
        }
        return text;
    };
    EXPECT_NE(ids("2.3.11", false).find("manager-remembers-values"), std::string::npos);
    EXPECT_EQ(ids("2.3.11", false).find("manager-locks-requests"), std::string::npos);
    EXPECT_EQ(ids("2.3.12", false).find("manager-remembers-values"), std::string::npos);
    EXPECT_NE(ids("2.3.14", true).find("manager-locks-requests"), std::string::npos);
    EXPECT_NE(ids("", true).find("manager-locks-requests"), std::string::npos);
}

}  // namespace
}  // namespace Veltrane::Cli
