#include "VeltraneDialog/VeltraneDSNDialog.h"

#include <utility>

#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

VeltraneDSNDialog::VeltraneDSNDialog() : m_values(LoadInitialValues()) {}

void VeltraneDSNDialog::SetDSN(DialogString in_text) { m_values.m_dsn = std::move(in_text); }

void VeltraneDSNDialog::SetServer(DialogString in_text) { m_values.m_server = std::move(in_text); }

void VeltraneDSNDialog::SetCognosNamespace(DialogString in_text) {
    m_values.m_cognosNamespace = std::move(in_text);
}

void VeltraneDSNDialog::SetMicroStrategyLoginMode(DialogString in_text) {
    m_values.m_microStrategyLoginMode = std::move(in_text);
}

void VeltraneDSNDialog::SetUid(DialogString in_text) { m_values.m_uid = std::move(in_text); }

void VeltraneDSNDialog::SetPwd(DialogString in_text) {
    if (m_values.m_pwd) {
        Wipe(*m_values.m_pwd);
    }
    m_values.m_pwd = in_text;
    if (in_text) {
        Wipe(*in_text);
    }
}

void VeltraneDSNDialog::SetDatabase(DialogString in_text) {
    m_values.m_database = std::move(in_text);
}

DialogString VeltraneDSNDialog::GetDSN() const { return m_values.m_dsn; }

DialogString VeltraneDSNDialog::GetServer() const { return m_values.m_server; }

DialogString VeltraneDSNDialog::GetCognosNamespace() const { return m_values.m_cognosNamespace; }

DialogString VeltraneDSNDialog::GetMicroStrategyLoginMode() const {
    return m_values.m_microStrategyLoginMode;
}

DialogString VeltraneDSNDialog::GetUid() const { return m_values.m_uid; }

DialogString VeltraneDSNDialog::GetPwd() const { return m_values.m_pwd; }

DialogString VeltraneDSNDialog::GetDatabase() const { return m_values.m_database; }

}  // namespace Veltrane::ODBC
