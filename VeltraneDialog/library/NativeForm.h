/// The DSN editor as a native Windows dialog, made from the dialog resource.
#ifndef VELTRANEDIALOG_LIBRARY_NATIVEFORM_H
#define VELTRANEDIALOG_LIBRARY_NATIVEFORM_H

#include <windows.h>

#include <array>
#include <exception>
#include <string>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/library/PasswordField.h"

namespace Veltrane::ODBC {

class NativeForm {
public:
    /// @param io_values  changed when the form is accepted; none of them null
    explicit NativeForm(DialogValues& io_values);

    /// Shows the form and waits for the user.
    /// @param in_library  has the dialog resource
    /// @param in_owner  the window that waits meanwhile; can be null
    /// @return IDOK, IDCANCEL, or -1 with the reason in GetLastError
    /// @throws what a message handler throws, such as bad_alloc
    INT_PTR Show(HMODULE in_library, HWND in_owner);

private:
    struct Row {
        const DialogField* m_field = nullptr;
        /// Why the field is refused; null if it is not, or if that is not reported yet.
        const char* m_reason = nullptr;
        /// An empty field is reported only after the user has edited it.
        bool m_isEdited = false;
    };

    static INT_PTR CALLBACK HandleMessage(HWND in_window, UINT in_message, WPARAM in_first,
                                          LPARAM in_second);
    bool Handle(UINT in_message, WPARAM in_first);
    void HandleCommand(int in_control, int in_notice);

    void Start();
    void FillRow(std::size_t in_row);
    void FillChoices(HWND in_choice);
    void SetFirstFocus();

    /// Updates the notes, the title and OK after a change.
    void Follow();
    void ShowNote(std::size_t in_row);
    HBRUSH PaintStatic(HDC in_context, HWND in_control) const;
    void ShowPassword(bool in_isShown);
    void Accept();

    HWND Get(int in_control) const { return GetDlgItem(m_window, in_control); }
    void SetText(int in_control, const std::wstring& in_text);
    std::u16string GetText(int in_control) const;

    DialogValues& m_values;
    HWND m_window = nullptr;
    std::array<Row, DIALOG_FIELDS.size()> m_rows;
    PasswordField m_password;
    WPARAM m_passwordMark = 0;
    /// False while the form fills the fields, which is no change by the user.
    bool m_isStarted = false;
    /// The exception of a message handler, until the dialog has ended.
    std::exception_ptr m_failure;
};

}  // namespace Veltrane::ODBC

#endif
