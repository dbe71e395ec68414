/// The password field. It leaves no copy of a password in memory. An edit control copies what it
/// deletes, into its undo buffer and into memory that it frees uncleared. So this class overwrites
/// text in place before it deletes it, and has no undo.
#ifndef VELTRANEDIALOG_LIBRARY_PASSWORDFIELD_H
#define VELTRANEDIALOG_LIBRARY_PASSWORDFIELD_H

#include <windows.h>

namespace Veltrane::ODBC {

class PasswordField {
public:
    /// Handles the messages of an edit control, which is still empty, until it is destroyed.
    void Attach(HWND in_control);

    /// Overwrites everything that the control holds.
    void Overwrite();

    /// True while text is overwritten, which the control reports like a change by the user.
    bool IsOverwriting() const { return m_isOverwriting; }

private:
    static LRESULT CALLBACK HandleMessage(HWND in_control, UINT in_message, WPARAM in_first,
                                          LPARAM in_second);
    /// @return true when the control need not handle the message
    bool Handle(UINT in_message, WPARAM in_first);
    bool HandleKey(WPARAM in_key);

    LRESULT Call(UINT in_message, WPARAM in_first = 0, LPARAM in_second = 0) const;
    bool HasSelection() const;
    void DeleteSelection();
    void Cut();
    void OverwriteRange(DWORD in_first, DWORD in_last);

    HWND m_control = nullptr;
    WNDPROC m_procedure = nullptr;
    bool m_isOverwriting = false;
};

}  // namespace Veltrane::ODBC

#endif
