#include "VeltraneDialog/library/NativeForm.h"

#include "VeltraneDialog/FieldRules.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/WideText.h"
#include "VeltraneDialog/Wipe.h"
#include "VeltraneDialog/library/Resource.h"
#include "VeltraneDialog/library/Texts.h"

namespace Veltrane::ODBC {

namespace {

/// Posted by the form to itself: a combo box reports a change before its text changes.
constexpr UINT MESSAGE_FOLLOW = WM_APP;

constexpr int ROW_COUNT = static_cast<int>(DIALOG_FIELDS.size());

constexpr int FindPasswordRow() {
    for (int i = 0; i < ROW_COUNT; ++i) {
        if (DIALOG_FIELDS[DISPLAY_ORDER[i]].m_kind == DialogFieldKind::PASSWORD) return i;
    }
    return -1;
}

constexpr int ID_PASSWORD = ID_INPUT + FindPasswordRow();

bool IsRowOf(int in_first, int in_control) {
    return in_control >= in_first && in_control < in_first + ROW_COUNT;
}

/// Mixes two colours. in_percent is the share of the first one.
COLORREF Mix(COLORREF in_color, COLORREF in_background, int in_percent) {
    const auto part = [&](int in_a, int in_b) {
        return static_cast<BYTE>((in_a * in_percent + in_b * (100 - in_percent)) / 100);
    };
    return RGB(part(GetRValue(in_color), GetRValue(in_background)),
               part(GetGValue(in_color), GetGValue(in_background)),
               part(GetBValue(in_color), GetBValue(in_background)));
}

/// A red that can be read on the background, light or dark.
COLORREF ReasonColor(COLORREF in_background) {
    const int brightness =
        (GetRValue(in_background) * 3 + GetGValue(in_background) * 6 + GetBValue(in_background)) /
        10;
    return brightness < 128 ? RGB(0xFF, 0x8A, 0x80) : RGB(0xB0, 0x00, 0x20);
}

/// True if the user has chosen high contrast. The form then sets no colours.
bool IsHighContrast() {
    HIGHCONTRASTW contrast{};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) != FALSE &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

}  // namespace

NativeForm::NativeForm(DialogValues& io_values) : m_values(io_values) {
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        m_rows[i].m_field = &DIALOG_FIELDS[DISPLAY_ORDER[i]];
    }
}

INT_PTR NativeForm::Show(HMODULE in_library, HWND in_owner) {
    const INT_PTR result = DialogBoxParamW(in_library, MAKEINTRESOURCEW(DIALOG_DSN), in_owner,
                                           &HandleMessage, reinterpret_cast<LPARAM>(this));
    if (m_failure) std::rethrow_exception(m_failure);
    return result;
}

INT_PTR CALLBACK NativeForm::HandleMessage(HWND in_window, UINT in_message, WPARAM in_first,
                                           LPARAM in_second) {
    if (in_message == WM_INITDIALOG) SetWindowLongPtrW(in_window, DWLP_USER, in_second);
    auto* const form = reinterpret_cast<NativeForm*>(GetWindowLongPtrW(in_window, DWLP_USER));
    if (form == nullptr) return FALSE;
    try {
        form->m_window = in_window;
        if (in_message == WM_CTLCOLORSTATIC) {
            return reinterpret_cast<INT_PTR>(form->PaintStatic(reinterpret_cast<HDC>(in_first),
                                                               reinterpret_cast<HWND>(in_second)));
        }
        return form->Handle(in_message, in_first) ? TRUE : FALSE;
    } catch (...) {
        // Must not pass through the system's code, which is the caller. Show throws it again.
        if (!form->m_failure) form->m_failure = std::current_exception();
        EndDialog(in_window, IDABORT);
        return FALSE;
    }
}

bool NativeForm::Handle(UINT in_message, WPARAM in_first) {
    switch (in_message) {
        case WM_INITDIALOG:
            Start();
            return false;  // the focus is set
        case WM_COMMAND:
            HandleCommand(LOWORD(in_first), HIWORD(in_first));
            return true;
        case MESSAGE_FOLLOW:
            Follow();
            return true;
        case WM_SYSCOLORCHANGE:
            InvalidateRect(m_window, nullptr, TRUE);
            return true;
        case WM_DESTROY:
            m_password.Overwrite();
            return true;
        default:
            return false;
    }
}

void NativeForm::HandleCommand(int in_control, int in_notice) {
    if (in_control == IDOK) {
        Accept();
    } else if (in_control == IDCANCEL) {
        EndDialog(m_window, IDCANCEL);
    } else if (in_control == ID_SHOW_PASSWORD && in_notice == BN_CLICKED) {
        ShowPassword(IsDlgButtonChecked(m_window, ID_SHOW_PASSWORD) == BST_CHECKED);
    } else if (IsRowOf(ID_INPUT, in_control) && m_isStarted) {
        Row& row = m_rows[static_cast<std::size_t>(in_control - ID_INPUT)];
        const bool isChoice = row.m_field->m_kind == DialogFieldKind::LOGIN_MODE;
        const bool isChanged = isChoice ? in_notice == CBN_EDITCHANGE || in_notice == CBN_SELCHANGE
                                        : in_notice == EN_CHANGE;
        if (!isChanged || m_password.IsOverwriting()) return;
        row.m_isEdited = true;
        if (isChoice) {
            PostMessageW(m_window, MESSAGE_FOLLOW, 0, 0);
        } else {
            Follow();
        }
    }
}

void NativeForm::Start() {
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        FillRow(i);
    }
    m_passwordMark = static_cast<WPARAM>(SendMessageW(Get(ID_PASSWORD), EM_GETPASSWORDCHAR, 0, 0));
    SetText(ID_SHOW_PASSWORD, TranslateWide(TEXT_SHOW_PASSWORD));
    SetText(ID_REQUIRED, TranslateWide(TEXT_REQUIRED));
    SetText(IDOK, TranslateWide(TEXT_OK));
    SetText(IDCANCEL, TranslateWide(TEXT_CANCEL));
    m_isStarted = true;
    Follow();
    SetFirstFocus();
    if (GetWindow(m_window, GW_OWNER) == nullptr) SetForegroundWindow(m_window);
}

void NativeForm::FillRow(std::size_t in_row) {
    const DialogField& field = *m_rows[in_row].m_field;
    const int row = static_cast<int>(in_row);
    const HWND input = Get(ID_INPUT + row);
    SetText(ID_LABEL + row, TranslateWide(field.m_label) + (field.m_isRequired ? L" *" : L""));
    SetText(ID_KEY + row, ToWide(field.m_key));
    if (field.m_kind == DialogFieldKind::LOGIN_MODE) {
        FillChoices(input);
    } else if (field.m_kind == DialogFieldKind::PASSWORD) {
        m_password.Attach(input);
    } else {
        SendMessageW(input, EM_SETLIMITTEXT, 0, 0);
    }
    SetWindowTextW(input, AsWide((m_values.*field.m_value)->c_str()));
}

void NativeForm::FillChoices(HWND in_choice) {
    SendMessageW(in_choice, CB_LIMITTEXT, 0, 0);
    for (const char* mode : LOGIN_MODES) {
        SendMessageW(in_choice, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(ToWide(mode).c_str()));
    }
}

void NativeForm::SetFirstFocus() {
    int first = 0;
    for (int i = ROW_COUNT - 1; i >= 0; --i) {
        const bool isMissing = m_rows[static_cast<std::size_t>(i)].m_field->m_isRequired &&
                               GetWindowTextLengthW(Get(ID_INPUT + i)) == 0;
        if (isMissing) first = i;
    }
    SetFocus(Get(ID_INPUT + first));
}

void NativeForm::Follow() {
    bool isAcceptable = true;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        Row& row = m_rows[i];
        std::u16string value = GetText(ID_INPUT + static_cast<int>(i));
        std::string text = EncodeUtf8(value);
        const WipeAtEnd wipeValue(value);
        const WipeAtEnd wipeText(text);
        const char* const reason = WhyRefused(*row.m_field, text, m_values);
        row.m_reason = IsOnlyMissing(*row.m_field, text) && !row.m_isEdited ? nullptr : reason;
        ShowNote(i);
        isAcceptable = isAcceptable && reason == nullptr;
        if (row.m_field->m_value == &DialogValues::m_dsn) {
            SetWindowTextW(m_window, WideTitleFor(ToWide(text)).c_str());
        }
    }
    EnableWindow(Get(IDOK), isAcceptable ? TRUE : FALSE);
}

void NativeForm::ShowNote(std::size_t in_row) {
    const Row& row = m_rows[in_row];
    const int note = ID_NOTE + static_cast<int>(in_row);
    const std::wstring text =
        TranslateWide(row.m_reason != nullptr ? row.m_reason : row.m_field->m_hint);
    // Set only when it changes: otherwise it flickers, and screen readers read it again.
    if (GetText(note) != std::u16string(text.begin(), text.end())) SetText(note, text);
}

HBRUSH NativeForm::PaintStatic(HDC in_context, HWND in_control) const {
    const int control = GetDlgCtrlID(in_control);
    const bool isNote = IsRowOf(ID_NOTE, control);
    const bool isQuiet = isNote || IsRowOf(ID_KEY, control) || control == ID_REQUIRED;
    if (!isQuiet || IsHighContrast()) return nullptr;  // as the system paints it
    const COLORREF background = GetSysColor(COLOR_BTNFACE);
    const bool isReason =
        isNote && m_rows[static_cast<std::size_t>(control - ID_NOTE)].m_reason != nullptr;
    SetTextColor(in_context, isReason ? ReasonColor(background)
                                      : Mix(GetSysColor(COLOR_BTNTEXT), background, 72));
    SetBkColor(in_context, background);
    return GetSysColorBrush(COLOR_BTNFACE);
}

void NativeForm::ShowPassword(bool in_isShown) {
    SendMessageW(Get(ID_PASSWORD), EM_SETPASSWORDCHAR, in_isShown ? 0 : m_passwordMark, 0);
    InvalidateRect(Get(ID_PASSWORD), nullptr, TRUE);
}

void NativeForm::Accept() {
    Follow();
    // Enter calls this even when the button is disabled.
    if (IsWindowEnabled(Get(IDOK)) == FALSE) {
        MessageBeep(MB_OK);
        return;
    }
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        std::u16string text = GetText(ID_INPUT + static_cast<int>(i));
        const WipeAtEnd wipe(text);
        DialogString& value = m_values.*m_rows[i].m_field->m_value;
        if (value) Wipe(*value);  // before a longer value frees its memory
        value = text;
    }
    EndDialog(m_window, IDOK);
}

void NativeForm::SetText(int in_control, const std::wstring& in_text) {
    SetDlgItemTextW(m_window, in_control, in_text.c_str());
}

std::u16string NativeForm::GetText(int in_control) const {
    const HWND control = Get(in_control);
    const int length = GetWindowTextLengthW(control);
    std::u16string text(static_cast<std::size_t>(length) + 1, u'\0');
    const int count = GetWindowTextW(control, AsWide(text.data()), length + 1);
    text.resize(static_cast<std::size_t>(count));
    return text;
}

}  // namespace Veltrane::ODBC
