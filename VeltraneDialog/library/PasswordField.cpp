#include "VeltraneDialog/library/PasswordField.h"

#include <algorithm>
#include <string>

namespace Veltrane::ODBC {

namespace {

/// The room that the control allocates at once, so that it leaves no copies in smaller buffers.
constexpr std::size_t ROOM = 2048;

bool IsDown(int in_key) { return GetKeyState(in_key) < 0; }

}  // namespace

void PasswordField::Attach(HWND in_control) {
    m_control = in_control;
    SendMessageW(in_control, EM_SETLIMITTEXT, 0, 0);
    SetWindowTextW(in_control, std::wstring(ROOM, L' ').c_str());
    SetWindowTextW(in_control, L"");
    SetWindowLongPtrW(in_control, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_procedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(in_control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&HandleMessage)));
}

LRESULT CALLBACK PasswordField::HandleMessage(HWND in_control, UINT in_message, WPARAM in_first,
                                              LPARAM in_second) {
    auto* const field =
        reinterpret_cast<PasswordField*>(GetWindowLongPtrW(in_control, GWLP_USERDATA));
    return field->Handle(in_message, in_first) ? 0 : field->Call(in_message, in_first, in_second);
}

bool PasswordField::Handle(UINT in_message, WPARAM in_first) {
    switch (in_message) {
        case WM_SETTEXT:
            OverwriteRange(0, static_cast<DWORD>(Call(WM_GETTEXTLENGTH)));
            return false;
        case EM_REPLACESEL:
        case WM_CLEAR:
            DeleteSelection();
            return false;
        case WM_PASTE:
            if (IsClipboardFormatAvailable(CF_UNICODETEXT) == FALSE) return true;
            DeleteSelection();
            return false;
        case WM_CUT:
            Cut();
            return true;
        case WM_KEYDOWN:
            Call(EM_EMPTYUNDOBUFFER);
            return HandleKey(in_first);
        case WM_CHAR:
            Call(EM_EMPTYUNDOBUFFER);
            if ((in_first < L' ' && in_first != VK_BACK) || !HasSelection()) return false;
            DeleteSelection();
            return in_first == VK_BACK;
        default:
            return false;
    }
}

/// Handles the keys that delete a selection without sending a message.
bool PasswordField::HandleKey(WPARAM in_key) {
    if (in_key == VK_INSERT && IsDown(VK_SHIFT)) {
        SendMessageW(m_control, WM_PASTE, 0, 0);
        return true;
    }
    if (in_key != VK_DELETE) return false;
    if (IsDown(VK_CONTROL) && !HasSelection()) {
        DWORD caret = 0;
        Call(EM_GETSEL, reinterpret_cast<WPARAM>(&caret));
        Call(EM_SETSEL, caret, -1);
    }
    if (!HasSelection()) return false;
    if (IsDown(VK_SHIFT)) {
        Cut();
    } else {
        DeleteSelection();
    }
    return true;
}

LRESULT PasswordField::Call(UINT in_message, WPARAM in_first, LPARAM in_second) const {
    return CallWindowProcW(m_procedure, m_control, in_message, in_first, in_second);
}

bool PasswordField::HasSelection() const {
    DWORD first = 0;
    DWORD last = 0;
    Call(EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
    return first != last;
}

void PasswordField::DeleteSelection() {
    DWORD first = 0;
    DWORD last = 0;
    Call(EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
    if (first == last) return;
    OverwriteRange(first, last);
    Call(EM_SETSEL, first, static_cast<LPARAM>(last));
    Call(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
}

void PasswordField::Cut() {
    Call(WM_COPY);  // which the control refuses while it hides the text
    if (Call(EM_GETPASSWORDCHAR) == 0) DeleteSelection();
}

/// Replaces one character at a time, because the control copies what a replacement deletes.
void PasswordField::OverwriteRange(DWORD in_first, DWORD in_last) {
    m_isOverwriting = true;
    for (DWORD i = in_last; i > in_first; --i) {
        Call(EM_SETSEL, i - 1, static_cast<LPARAM>(i));
        Call(EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L" "));
    }
    m_isOverwriting = false;
}

void PasswordField::Overwrite() {
    Call(EM_EMPTYUNDOBUFFER);
    const auto length = static_cast<std::size_t>(Call(WM_GETTEXTLENGTH));
    OverwriteRange(0, static_cast<DWORD>(length));
    // Deleting earlier text has moved characters to the place after the end.
    m_isOverwriting = true;
    const std::wstring blanks(std::max(ROOM, length), L' ');
    Call(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(blanks.c_str()));
    m_isOverwriting = false;
}

}  // namespace Veltrane::ODBC
