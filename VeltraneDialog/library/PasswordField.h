/// The field of the password, which leaves no copy of a password in memory. What an edit control
/// deletes it copies, into its undo buffer and into memory that it gives back as it is; so here
/// text is overwritten in its place before it is deleted, and there is no undo.
#ifndef VELTRANEDIALOG_LIBRARY_PASSWORDFIELD_H
#define VELTRANEDIALOG_LIBRARY_PASSWORDFIELD_H

#include <windows.h>

namespace Veltrane::ODBC {

class PasswordField {
public:
    /// Takes over the messages of an edit control that is empty yet, until that is destroyed.
    void Attach(HWND in_control);

    /// Overwrites all that the control holds.
    void Overwrite();

    /// True while text is overwritten, of which the control tells as of a change by the user.
    bool IsOverwriting() const { return m_isOverwriting; }

private:
    static LRESULT CALLBACK HandleMessage(HWND in_control, UINT in_message, WPARAM in_first,
                                          LPARAM in_second);
    /// @return true when nothing is left for the control to do
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
