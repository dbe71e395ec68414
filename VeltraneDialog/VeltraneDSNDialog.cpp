#include "VeltraneDialog/VeltraneDSNDialog.h"

#include <utility>

#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

VeltraneDSNDialog::VeltraneDSNDialog() = default;

void VeltraneDSNDialog::Give(DialogString DialogValues::*in_value, DialogString in_text) {
    DialogString& value = m_values.*in_value;
    if (value) {
        Wipe(*value);  // a password: a shorter one would leave the rest of it in its memory
    }
    value = in_text;
    if (in_text) {
        Wipe(*in_text);
    }
    for (std::size_t i = 0; i < DIALOG_FIELDS.size(); ++i) {
        if (DIALOG_FIELDS[i].m_value == in_value) {
            m_isGiven.set(i);
        }
    }
}

void VeltraneDSNDialog::Accept(const DialogValues& in_values) {
    for (const DialogField& field : DIALOG_FIELDS) {
        Give(field.m_value, in_values.*field.m_value);
    }
}

const DialogValues& VeltraneDSNDialog::Values() const {
    if (!m_isGiven.all()) {
        DialogValues initial = LoadInitialValues();
        for (std::size_t i = 0; i < DIALOG_FIELDS.size(); ++i) {
            if (!m_isGiven[i]) {
                m_values.*DIALOG_FIELDS[i].m_value = initial.*DIALOG_FIELDS[i].m_value;
            }
        }
        m_isGiven.set();
    }
    return m_values;
}

void VeltraneDSNDialog::SetDSN(DialogString in_text) {
    Give(&DialogValues::m_dsn, std::move(in_text));
}

void VeltraneDSNDialog::SetServer(DialogString in_text) {
    Give(&DialogValues::m_server, std::move(in_text));
}

void VeltraneDSNDialog::SetCognosNamespace(DialogString in_text) {
    Give(&DialogValues::m_cognosNamespace, std::move(in_text));
}

void VeltraneDSNDialog::SetMicroStrategyLoginMode(DialogString in_text) {
    Give(&DialogValues::m_microStrategyLoginMode, std::move(in_text));
}

void VeltraneDSNDialog::SetUid(DialogString in_text) {
    Give(&DialogValues::m_uid, std::move(in_text));
}

void VeltraneDSNDialog::SetPwd(DialogString in_text) {
    Give(&DialogValues::m_pwd, std::move(in_text));
}

void VeltraneDSNDialog::SetDatabase(DialogString in_text) {
    Give(&DialogValues::m_database, std::move(in_text));
}

DialogString VeltraneDSNDialog::GetDSN() const { return Values().m_dsn; }

DialogString VeltraneDSNDialog::GetServer() const { return Values().m_server; }

DialogString VeltraneDSNDialog::GetCognosNamespace() const { return Values().m_cognosNamespace; }

DialogString VeltraneDSNDialog::GetMicroStrategyLoginMode() const {
    return Values().m_microStrategyLoginMode;
}

DialogString VeltraneDSNDialog::GetUid() const { return Values().m_uid; }

DialogString VeltraneDSNDialog::GetPwd() const { return Values().m_pwd; }

DialogString VeltraneDSNDialog::GetDatabase() const { return Values().m_database; }

}  // namespace Veltrane::ODBC
