/// What the fake editor answers and what it was asked. Process-wide: set by a test, read by the
/// fake.
#ifndef TESTS_SUPPORT_VELTRANEDSNDIALOG_FAKE_H
#define TESTS_SUPPORT_VELTRANEDSNDIALOG_FAKE_H

#include <functional>
#include <string>
#include <vector>

#include "VeltraneDialog/InitialValues.h"

namespace Veltrane::Test {

struct FakeEditor {
    Veltrane::ODBC::DialogValues m_initialValues;
    /// What the user makes of the texts when the editor is shown.
    std::function<void(Veltrane::ODBC::DialogValues&)> m_edit;
    int m_result = 1;
    /// Called by the constructor, to throw.
    std::function<void()> m_onConstruct;
    /// Each operation by its name, setters with their text.
    std::vector<std::string> m_calls;
};

extern FakeEditor s_editor;

}  // namespace Veltrane::Test

#endif
