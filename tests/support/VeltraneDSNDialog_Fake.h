/// The fake editor's answers. Process-wide: set by a test, read by the fake.
#ifndef TESTS_SUPPORT_VELTRANEDSNDIALOG_FAKE_H
#define TESTS_SUPPORT_VELTRANEDSNDIALOG_FAKE_H

#include <functional>

#include "VeltraneDialog/InitialValues.h"

namespace Veltrane::Test {

/// Values with these texts, or null, and the others empty.
inline ODBC::DialogValues MakeDialogValues(const char16_t* in_dsn, const char16_t* in_server,
                                           const char16_t* in_database,
                                           const char16_t* in_uid = u"",
                                           const char16_t* in_pwd = u"") {
    const auto text = [](const char16_t* in_text) {
        return in_text == nullptr ? ODBC::DialogString() : in_text;
    };
    ODBC::DialogValues values;
    values.m_dsn = text(in_dsn);
    values.m_server = text(in_server);
    values.m_database = text(in_database);
    values.m_uid = text(in_uid);
    values.m_pwd = text(in_pwd);
    return values;
}

struct FakeEditor {
    Veltrane::ODBC::DialogValues m_initialValues;
    /// Changes the texts as a user would when the editor is shown.
    std::function<void(Veltrane::ODBC::DialogValues&)> m_edit;
    int m_result = 1;
    /// Called by the constructor, to throw.
    std::function<void()> m_onConstruct;
    bool m_isMade = false;
};

extern FakeEditor s_editor;

}  // namespace Veltrane::Test

#endif
