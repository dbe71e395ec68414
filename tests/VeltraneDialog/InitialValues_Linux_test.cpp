#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::ODBC {
namespace {

class InitialValuesFileTest : public testing::Test {
protected:
    void SetUp() override {
        m_directory = testing::TempDir() + "initial-values-XXXXXX";
        ASSERT_NE(mkdtemp(m_directory.data()), nullptr);
        m_file = m_directory + "/values.ini";
        setenv("VELTRANE_DSN_INITIAL_VALUES", m_file.c_str(), 1);
    }
    void TearDown() override {
        unlink(m_file.c_str());
        rmdir(m_file.c_str());
        rmdir(m_directory.c_str());
    }
    std::string LoadError() {
        try {
            LoadInitialValues();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no error";
    }
    std::string m_directory;
    std::string m_file;
};

TEST_F(InitialValuesFileTest, ReadsTheNamedFile) {
    std::ofstream(m_file) << "[DSN]\nDatabase=d\n" << std::string(9000, '#') << "\nUID=u\n";
    const DialogValues values = LoadInitialValues();
    EXPECT_EQ(values.m_database, u"d");
    EXPECT_EQ(values.m_uid, u"u");
}

TEST_F(InitialValuesFileTest, AMissingNamedFileIsAnError) {
    EXPECT_EQ(LoadError(), "Initial values of a DSN: " + m_file + ": No such file or directory.");
}

TEST_F(InitialValuesFileTest, WhatIsNoFileIsRefusedAtOnce) {
    const std::pair<const char*, int (*)(const char*)> cases[] = {
        {"folder", [](const char* in_path) { return mkdir(in_path, 0700); }},
        {"pipe that nobody writes to", [](const char* in_path) { return mkfifo(in_path, 0600); }},
        {"device", [](const char* in_path) { return symlink("/dev/zero", in_path); }},
    };
    for (const auto& [point, make] : cases) {
        SCOPED_TRACE(point);
        ASSERT_EQ(make(m_file.c_str()), 0);
        EXPECT_EQ(LoadError(), "Initial values of a DSN: " + m_file + ": not a regular file.");
        remove(m_file.c_str());
    }
    setenv("VELTRANE_DSN_INITIAL_VALUES", "/dev/null", 1);
    EXPECT_EQ(LoadInitialValues().m_dsn, u"");
}

TEST_F(InitialValuesFileTest, ALargeFileIsRefused) {
    std::ofstream(m_file) << std::string((1 << 20) + 1, '#');
    EXPECT_EQ(LoadError(), "Initial values of a DSN: " + m_file + ": larger than 1 MiB.");
}

TEST_F(InitialValuesFileTest, WhatNobodySetComesFromTheFile) {
    std::ofstream(m_file) << "[DSN]\nServer=s\nUID=u\n";
    VeltraneDSNDialog dialog;
    dialog.SetServer(u"");
    EXPECT_EQ(dialog.GetServer(), u"");
    EXPECT_EQ(dialog.GetUid(), u"u");
    EXPECT_EQ(dialog.GetPwd(), u"");
}

TEST_F(InitialValuesFileTest, WithoutAnyFileAllValuesAreEmptyNotNull) {
    if (access(DEFAULT_INITIAL_VALUES_FILE, F_OK) == 0) {
        GTEST_SKIP() << "this machine has defaults of its own";
    }
    unsetenv("VELTRANE_DSN_INITIAL_VALUES");
    const DialogValues values = LoadInitialValues();
    EXPECT_EQ(values.m_dsn, u"");
    EXPECT_EQ(values.m_database, u"");
}

}  // namespace
}  // namespace Veltrane::ODBC
