#include "tests/support/VeltraneDSNDialog_Fake.h"

#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::Test {

FakeEditor s_editor;

}  // namespace Veltrane::Test

namespace Veltrane::ODBC {

using Veltrane::Test::s_editor;

namespace {

void Set(const char* in_name, DialogString in_text, DialogString& out_field) {
    s_editor.m_calls.push_back(std::string(in_name) + " " + EncodeUtf8(in_text.value_or(u"")));
    out_field = std::move(in_text);
}

DialogString Get(const char* in_name, const DialogString& in_field) {
    s_editor.m_calls.emplace_back(in_name);
    return in_field;
}

}  // namespace

VeltraneDSNDialog::VeltraneDSNDialog() : m_values(s_editor.m_initialValues) {
    s_editor.m_calls.emplace_back("construct");
    if (s_editor.m_onConstruct) {
        s_editor.m_onConstruct();
    }
}

int VeltraneDSNDialog::ShowDialog() {
    s_editor.m_calls.emplace_back("ShowDialog");
    if (s_editor.m_edit) {
        s_editor.m_edit(m_values);
    }
    return s_editor.m_result;
}

void VeltraneDSNDialog::SetDSN(DialogString in_text) {
    Set("SetDSN", std::move(in_text), m_values.m_dsn);
}
void VeltraneDSNDialog::SetServer(DialogString in_text) {
    Set("SetServer", std::move(in_text), m_values.m_server);
}
void VeltraneDSNDialog::SetCognosNamespace(DialogString in_text) {
    Set("SetCognosNamespace", std::move(in_text), m_values.m_cognosNamespace);
}
void VeltraneDSNDialog::SetMicroStrategyLoginMode(DialogString in_text) {
    Set("SetMicroStrategyLoginMode", std::move(in_text), m_values.m_microStrategyLoginMode);
}
void VeltraneDSNDialog::SetUid(DialogString in_text) {
    Set("SetUid", std::move(in_text), m_values.m_uid);
}
void VeltraneDSNDialog::SetPwd(DialogString in_text) {
    Set("SetPwd", std::move(in_text), m_values.m_pwd);
}
void VeltraneDSNDialog::SetDatabase(DialogString in_text) {
    Set("SetDatabase", std::move(in_text), m_values.m_database);
}

DialogString VeltraneDSNDialog::GetDSN() const { return Get("GetDSN", m_values.m_dsn); }
DialogString VeltraneDSNDialog::GetServer() const { return Get("GetServer", m_values.m_server); }
DialogString VeltraneDSNDialog::GetCognosNamespace() const {
    return Get("GetCognosNamespace", m_values.m_cognosNamespace);
}
DialogString VeltraneDSNDialog::GetMicroStrategyLoginMode() const {
    return Get("GetMicroStrategyLoginMode", m_values.m_microStrategyLoginMode);
}
DialogString VeltraneDSNDialog::GetUid() const { return Get("GetUid", m_values.m_uid); }
DialogString VeltraneDSNDialog::GetPwd() const { return Get("GetPwd", m_values.m_pwd); }
DialogString VeltraneDSNDialog::GetDatabase() const {
    return Get("GetDatabase", m_values.m_database);
}

}  // namespace Veltrane::ODBC
