#include "VeltraneDialog/VeltraneDSNDialog.h"

#include <utility>

#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

namespace {

template <std::size_t INDEX>
constexpr const DialogField& FIELD = DIALOG_FIELDS[INDEX];

}  // namespace

VeltraneDSNDialog::VeltraneDSNDialog() = default;

void VeltraneDSNDialog::Set(const DialogField& in_field, DialogString in_text) {
    DialogString& value = m_values.*in_field.m_value;
    if (value) {
        Wipe(*value);  // a shorter password would leave the rest of the old one in memory
    }
    value = in_text;
    if (in_text) {
        Wipe(*in_text);
    }
    m_isGiven.set(static_cast<std::size_t>(&in_field - DIALOG_FIELDS.data()));
}

DialogString VeltraneDSNDialog::Get(const DialogField& in_field) const {
    return Values().*in_field.m_value;
}

void VeltraneDSNDialog::Accept(const DialogValues& in_values) {
    for (const DialogField& field : DIALOG_FIELDS) {
        Set(field, in_values.*field.m_value);
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
    Set(FIELD<FieldIndex("DSN")>, std::move(in_text));
}

void VeltraneDSNDialog::SetServer(DialogString in_text) {
    Set(FIELD<FieldIndex("Server")>, std::move(in_text));
}

void VeltraneDSNDialog::SetCognosNamespace(DialogString in_text) {
    Set(FIELD<FieldIndex("Namespace")>, std::move(in_text));
}

void VeltraneDSNDialog::SetMicroStrategyLoginMode(DialogString in_text) {
    Set(FIELD<FieldIndex("LoginMode")>, std::move(in_text));
}

void VeltraneDSNDialog::SetUid(DialogString in_text) {
    Set(FIELD<FieldIndex("UID")>, std::move(in_text));
}

void VeltraneDSNDialog::SetPwd(DialogString in_text) {
    Set(FIELD<FieldIndex("PWD")>, std::move(in_text));
}

void VeltraneDSNDialog::SetDatabase(DialogString in_text) {
    Set(FIELD<FieldIndex("Database")>, std::move(in_text));
}

DialogString VeltraneDSNDialog::GetDSN() const { return Get(FIELD<FieldIndex("DSN")>); }

DialogString VeltraneDSNDialog::GetServer() const { return Get(FIELD<FieldIndex("Server")>); }

DialogString VeltraneDSNDialog::GetCognosNamespace() const {
    return Get(FIELD<FieldIndex("Namespace")>);
}

DialogString VeltraneDSNDialog::GetMicroStrategyLoginMode() const {
    return Get(FIELD<FieldIndex("LoginMode")>);
}

DialogString VeltraneDSNDialog::GetUid() const { return Get(FIELD<FieldIndex("UID")>); }

DialogString VeltraneDSNDialog::GetPwd() const { return Get(FIELD<FieldIndex("PWD")>); }

DialogString VeltraneDSNDialog::GetDatabase() const { return Get(FIELD<FieldIndex("Database")>); }

}  // namespace Veltrane::ODBC
