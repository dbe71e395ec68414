#include "tests/support/VeltraneDSNDialog_Fake.h"

#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::Test {

FakeEditor s_editor;

}  // namespace Veltrane::Test

namespace Veltrane::ODBC {

using Veltrane::Test::s_editor;

VeltraneDSNDialog::VeltraneDSNDialog() : m_values(s_editor.m_initialValues) {
    s_editor.m_isMade = true;
    if (s_editor.m_onConstruct) s_editor.m_onConstruct();
}

int VeltraneDSNDialog::ShowDialog(const char* /*in_otherWay*/) {
    if (s_editor.m_edit) s_editor.m_edit(m_values);
    return s_editor.m_result;
}

void VeltraneDSNDialog::Set(const DialogField& in_field, DialogString in_text) {
    m_values.*in_field.m_value = std::move(in_text);
}

DialogString VeltraneDSNDialog::Get(const DialogField& in_field) const {
    return m_values.*in_field.m_value;
}

}  // namespace Veltrane::ODBC
