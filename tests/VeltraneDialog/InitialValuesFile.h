/// Shared by the tests of the file of initial values on both systems.
#ifndef TESTS_VELTRANEDIALOG_INITIALVALUESFILE_H
#define TESTS_VELTRANEDIALOG_INITIALVALUESFILE_H

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

#include "VeltraneDialog/InitialValues.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/TestSystem.h"

namespace Veltrane::ODBC {

inline std::string ErrorOf(const std::function<void()>& in_action) {
    try {
        in_action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

/// VELTRANE_DSN_INITIAL_VALUES names a file that does not exist yet.
class InitialValuesFile : public testing::Test {
protected:
    InitialValuesFile() { Orska::Test::SetVariable("VELTRANE_DSN_INITIAL_VALUES", m_file.c_str()); }
    ~InitialValuesFile() override {
        Orska::Test::SetVariable("VELTRANE_DSN_INITIAL_VALUES", nullptr);
    }

    /// Returns the error text after the name of the file.
    std::string LoadError() const {
        const std::string error = ErrorOf([] { LoadInitialValues(); });
        const std::string start = "Initial values of a DSN: " + m_file;
        return error.starts_with(start) ? error.substr(start.size()) : error;
    }

    const Orska::Test::TemporaryDirectory m_directory;
    const std::string m_file = m_directory.GetPath("values.ini");
};

}  // namespace Veltrane::ODBC

#endif
