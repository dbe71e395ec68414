#include <sys/stat.h>
#include <unistd.h>

#include "tests/VeltraneDialog/InitialValuesFile.h"

namespace Veltrane::ODBC {
namespace {

TEST_F(InitialValuesFile, WhatIsNotAFileIsRefusedAtOnce) {
    EXPECT_EQ(LoadError(), ": No such file or directory.");
    const std::pair<const char*, int (*)(const char*)> cases[] = {
        {"folder", [](const char* in_path) { return mkdir(in_path, 0700); }},
        {"pipe without a writer", [](const char* in_path) { return mkfifo(in_path, 0600); }},
        {"device", [](const char* in_path) { return symlink("/dev/zero", in_path); }},
    };
    for (const auto& [point, make] : cases) {
        SCOPED_TRACE(point);
        ASSERT_EQ(make(m_file.c_str()), 0);
        EXPECT_EQ(LoadError(), ": not a regular file.");
        remove(m_file.c_str());
    }
    ASSERT_EQ(symlink("/dev/null", m_file.c_str()), 0);
    EXPECT_EQ(LoadInitialValues().m_dsn, u"");
}

}  // namespace
}  // namespace Veltrane::ODBC
