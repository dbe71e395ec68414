#include "tests/support/VeltraneDSNDialog_Fake.h"

#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::Test {

FakeEditor s_editor;

}  // namespace Veltrane::Test

namespace Veltrane::ODBC {

using Veltrane::Test::s_editor;

VeltraneDSNDialog::VeltraneDSNDialog() : m_values(s_editor.m_initialValues) {
    s_editor.m_calls.emplace_back("construct");
    if (s_editor.m_onConstruct) {
        s_editor.m_onConstruct();
    }
}

int VeltraneDSNDialog::ShowDialog(const char* /*in_otherWay*/) {
    s_editor.m_calls.emplace_back("ShowDialog");
    if (s_editor.m_edit) {
        s_editor.m_edit(m_values);
    }
    return s_editor.m_result;
}

void VeltraneDSNDialog::Set(const DialogField& in_field, DialogString in_text) {
    s_editor.m_calls.push_back("Set " + std::string(in_field.m_key) + " " +
                               EncodeUtf8(in_text.value_or(u"")));
    m_values.*in_field.m_value = std::move(in_text);
}

DialogString VeltraneDSNDialog::Get(const DialogField& in_field) const {
    s_editor.m_calls.push_back("Get " + std::string(in_field.m_key));
    return m_values.*in_field.m_value;
}

}  // namespace Veltrane::ODBC
