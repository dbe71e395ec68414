/// The DSN editor: seven texts and a modal form. Texts are UTF-16; a null text is an empty one for
/// every purpose of the editor. An editor lives for one setup request and is used by one thread.
#ifndef VELTRANEDIALOG_VELTRANEDSNDIALOG_H
#define VELTRANEDIALOG_VELTRANEDSNDIALOG_H

#include <exception>

#include "VeltraneDialog/InitialValues.h"

namespace Veltrane::ODBC {

class VeltraneDSNDialog {
public:
    /// The result of ShowDialog that means acceptance; every other value means that the user left.
    static constexpr int RESULT_OK = 1;
    static constexpr int RESULT_CANCEL = 2;

    /// An editor with its initial values (see LoadInitialValues); nothing is shown. A file of
    /// initial values that cannot be used stops whoever asks for one of them: ShowDialog and the
    /// getters then throw std::runtime_error until the texts in question have been set.
    VeltraneDSNDialog();

    void SetDSN(DialogString in_text);
    void SetServer(DialogString in_text);
    void SetCognosNamespace(DialogString in_text);
    void SetMicroStrategyLoginMode(DialogString in_text);
    void SetUid(DialogString in_text);
    void SetPwd(DialogString in_text);
    void SetDatabase(DialogString in_text);

    /// Shows the editor modally, without an owner window.
    /// @return RESULT_OK or another value; the texts change only with RESULT_OK
    /// @throws std::runtime_error when no editor can be shown
    int ShowDialog();

    DialogString GetDSN() const;
    DialogString GetServer() const;
    DialogString GetCognosNamespace() const;
    DialogString GetMicroStrategyLoginMode() const;
    DialogString GetUid() const;
    DialogString GetPwd() const;
    DialogString GetDatabase() const;

private:
    void SetText(DialogString DialogValues::*in_field, DialogString in_text);
    const DialogString& GetText(DialogString DialogValues::*in_field) const;
    /// @throws std::runtime_error when an initial value is missing
    void CheckAllValues() const;

    DialogValues m_values;
    /// Why there are no initial values. Texts that have not been set are null then.
    std::exception_ptr m_failure;
};

}  // namespace Veltrane::ODBC

#endif
