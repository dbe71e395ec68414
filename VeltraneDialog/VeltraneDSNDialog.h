/// The DSN editor: seven texts and a modal form. Texts are UTF-16; the editor treats a null text as
/// empty. An editor lives for one setup request and is used by one thread.
#ifndef VELTRANEDIALOG_VELTRANEDSNDIALOG_H
#define VELTRANEDIALOG_VELTRANEDSNDIALOG_H

#include <bitset>
#include <string>
#include <utility>

#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::ODBC {

class VeltraneDSNDialog {
public:
    /// ShowDialog returns RESULT_OK if the user accepted. Any other value means cancelled.
    static constexpr int RESULT_OK = 1;
    static constexpr int RESULT_CANCEL = 2;
    static constexpr char REQUEST_WITHOUT_WINDOW[] =
        "make the request without a parent window: it then takes the values from the file that "
        "VELTRANE_DSN_INITIAL_VALUES names.";

    /// Creates an editor with the initial values (see LoadInitialValues); shows nothing. The file
    /// is read when one of its values is needed, so a bad file stops no request that sets them all.
    VeltraneDSNDialog();

    /// Sets a row of `DIALOG_FIELDS`; the setters below do the same by name.
    void Set(const DialogField& in_field, DialogString in_text);
    void SetDSN(DialogString in_text);
    void SetServer(DialogString in_text);
    void SetCognosNamespace(DialogString in_text);
    void SetMicroStrategyLoginMode(DialogString in_text);
    void SetUid(DialogString in_text);
    void SetPwd(DialogString in_text);
    void SetDatabase(DialogString in_text);

    /// Lets the user test a connection through this driver with the values of the form (Linux).
    /// @param in_driver  UTF-8; empty, the default, for no test
    void SetTestedDriver(std::string in_driver) { m_testedDriver = std::move(in_driver); }

    /// Shows the editor modally, without an owner window.
    /// @param in_otherWay  how to work without an editor, for the error when none can be shown
    /// @return RESULT_OK or another value; the texts change only with RESULT_OK
    /// @throws std::runtime_error when no editor can be shown, or as the getters
    int ShowDialog(const char* in_otherWay = REQUEST_WITHOUT_WINDOW);

    /// Asks a question where the editor would be shown.
    /// @param in_text  English, a key of the translations, with one %s
    /// @param in_name  UTF-8, replaces the %s
    /// @return true for yes
    /// @throws std::runtime_error as ShowDialog
    static bool Ask(const char* in_text, const std::string& in_name);

    /// Gets a row of `DIALOG_FIELDS`; the getters below do the same by name.
    /// @throws std::runtime_error when the file of initial values is needed and cannot be used
    DialogString Get(const DialogField& in_field) const;
    DialogString GetDSN() const;
    DialogString GetServer() const;
    DialogString GetCognosNamespace() const;
    DialogString GetMicroStrategyLoginMode() const;
    DialogString GetUid() const;
    DialogString GetPwd() const;
    DialogString GetDatabase() const;

private:
    void Accept(const DialogValues& in_values);
    /// Returns all texts, with initial values for those that were not set.
    const DialogValues& Values() const;

    std::string m_testedDriver;
    mutable DialogValues m_values;
    /// In the order of `DIALOG_FIELDS`.
    mutable std::bitset<DIALOG_FIELDS.size()> m_isGiven;
};

}  // namespace Veltrane::ODBC

#endif
