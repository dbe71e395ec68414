#include "VeltraneDialog/VeltraneDSNDialog.h"

#include <stdexcept>
#include <utility>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

VeltraneDSNDialog::VeltraneDSNDialog() {
    try {
        m_values = LoadInitialValues();
    } catch (const std::runtime_error&) {
        m_failure = std::current_exception();
        for (const DialogField& field : DIALOG_FIELDS) (m_values.*field.m_value).reset();
    }
}

void VeltraneDSNDialog::SetText(DialogString DialogValues::*in_field, DialogString in_text) {
    m_values.*in_field = std::move(in_text);
    if (m_failure && !(m_values.*in_field)) (m_values.*in_field).emplace();
}

const DialogString& VeltraneDSNDialog::GetText(DialogString DialogValues::*in_field) const {
    const DialogString& text = m_values.*in_field;
    if (m_failure && !text) std::rethrow_exception(m_failure);
    return text;
}

void VeltraneDSNDialog::CheckAllValues() const {
    for (const DialogField& field : DIALOG_FIELDS) GetText(field.m_value);
}

void VeltraneDSNDialog::SetDSN(DialogString in_text) {
    SetText(&DialogValues::m_dsn, std::move(in_text));
}

void VeltraneDSNDialog::SetServer(DialogString in_text) {
    SetText(&DialogValues::m_server, std::move(in_text));
}

void VeltraneDSNDialog::SetCognosNamespace(DialogString in_text) {
    SetText(&DialogValues::m_cognosNamespace, std::move(in_text));
}

void VeltraneDSNDialog::SetMicroStrategyLoginMode(DialogString in_text) {
    SetText(&DialogValues::m_microStrategyLoginMode, std::move(in_text));
}

void VeltraneDSNDialog::SetUid(DialogString in_text) {
    SetText(&DialogValues::m_uid, std::move(in_text));
}

void VeltraneDSNDialog::SetPwd(DialogString in_text) {
    if (m_values.m_pwd) {
        Wipe(*m_values.m_pwd);
    }
    SetText(&DialogValues::m_pwd, in_text);
    if (in_text) {
        Wipe(*in_text);
    }
}

void VeltraneDSNDialog::SetDatabase(DialogString in_text) {
    SetText(&DialogValues::m_database, std::move(in_text));
}

DialogString VeltraneDSNDialog::GetDSN() const { return GetText(&DialogValues::m_dsn); }

DialogString VeltraneDSNDialog::GetServer() const { return GetText(&DialogValues::m_server); }

DialogString VeltraneDSNDialog::GetCognosNamespace() const {
    return GetText(&DialogValues::m_cognosNamespace);
}

DialogString VeltraneDSNDialog::GetMicroStrategyLoginMode() const {
    return GetText(&DialogValues::m_microStrategyLoginMode);
}

DialogString VeltraneDSNDialog::GetUid() const { return GetText(&DialogValues::m_uid); }

DialogString VeltraneDSNDialog::GetPwd() const { return GetText(&DialogValues::m_pwd); }

DialogString VeltraneDSNDialog::GetDatabase() const { return GetText(&DialogValues::m_database); }

}  // namespace Veltrane::ODBC
