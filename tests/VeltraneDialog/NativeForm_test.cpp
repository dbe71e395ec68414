/// The native Windows dialog, which a second thread of the test uses.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/DialogLibrary.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"
#include "VeltraneDialog/WideText.h"
#include "VeltraneDialog/Wipe.h"
#include "VeltraneDialog/library/Resource.h"
#include "tests/support/DialogUser.h"
#include "tests/support/PasswordCopies.h"

namespace Veltrane::ODBC {
namespace {

/// The form as the user sees and uses it.
class Form {
public:
    explicit Form(HWND in_window) : m_window(in_window) {}

    std::wstring Text(int in_control) const { return TextOf(Get(in_control)); }
    std::wstring Title() const { return TextOf(m_window); }
    void Enter(int in_control, const std::wstring& in_text) const {
        SendMessageW(Get(in_control), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(in_text.c_str()));
    }
    void Choose(int in_control, WPARAM in_index) const {
        SendMessageW(Get(in_control), CB_SETCURSEL, in_index, 0);
        SendMessageW(m_window, WM_COMMAND, MAKEWPARAM(in_control, CBN_SELCHANGE),
                     reinterpret_cast<LPARAM>(Get(in_control)));
    }
    /// As Enter and Escape do, whether the button is enabled or not.
    void Press(int in_control) const {
        SendMessageW(m_window, WM_COMMAND, MAKEWPARAM(in_control, BN_CLICKED),
                     reinterpret_cast<LPARAM>(Get(in_control)));
    }
    /// Clicks again if there was no effect: a window that comes to the front meanwhile takes the
    /// mouse from the button.
    void Click(int in_control) const {
        const auto isChecked = [&] { return SendMessageW(Get(in_control), BM_GETCHECK, 0, 0); };
        const LRESULT before = isChecked();
        for (int i = 0; i < 100 && IsOpen() && isChecked() == before; ++i) {
            SendMessageW(Get(in_control), BM_CLICK, 0, 0);
        }
    }
    bool IsEnabled(int in_control) const { return IsWindowEnabled(Get(in_control)) != FALSE; }
    /// A form that has ended is hidden before it is destroyed.
    bool IsOpen() const { return IsWindowVisible(m_window) != FALSE; }
    HWND Get(int in_control) const { return GetDlgItem(m_window, in_control); }
    HWND Window() const { return m_window; }

private:
    static std::wstring TextOf(HWND in_window) {
        std::wstring text(2048, L'\0');
        text.resize(static_cast<std::size_t>(SendMessageW(in_window, WM_GETTEXT, text.size(),
                                                          reinterpret_cast<LPARAM>(text.data()))));
        return text;
    }

    HWND m_window;
};

/// Shows the editor to a user, who cancels it if it is still open at the end.
/// @param out_failure  for a test that expects one
int ShowTo(VeltraneDSNDialog& io_editor, const std::function<void(const Form&)>& in_user,
           std::string* out_failure = nullptr) {
    const Test::DialogUser user(nullptr, [&](HWND in_window) {
        const Form form(in_window);
        in_user(form);
        if (form.IsOpen()) form.Press(IDCANCEL);
    });
    try {
        return io_editor.ShowDialog();
    } catch (const std::exception& exception) {
        if (out_failure == nullptr) ADD_FAILURE() << exception.what();
        if (out_failure != nullptr) *out_failure = exception.what();
    }
    return -1;
}

constexpr int ROWS = static_cast<int>(DIALOG_FIELDS.size());
/// The field of a row of the form.
const DialogField& FieldOf(int in_row) {
    return DIALOG_FIELDS[DISPLAY_ORDER[static_cast<std::size_t>(in_row)]];
}

constexpr int NAME = ID_INPUT;
constexpr int SERVER = ID_INPUT + 1;
constexpr int DATABASE = ID_INPUT + 2;
constexpr int PASSWORD = ID_INPUT + 4;
constexpr int LOGIN_MODE = ID_INPUT + 6;

int NoteOf(int in_input) { return in_input - ID_INPUT + ID_NOTE; }

/// In the order of the form's rows.
const std::u16string OLD[] = {u"sales", u"bi.example.com", u"売上 Größe", u"anna", u"geheim",
                              u"ns",    u"my own mode"};

VeltraneDSNDialog MakeEditor() {
    VeltraneDSNDialog editor;
    for (int i = 0; i < ROWS; ++i) editor.Set(FieldOf(i), OLD[i]);
    return editor;
}

/// A field that reports a text too long for memory.
LRESULT CALLBACK TellAbsurdLength(HWND in_field, UINT in_message, WPARAM in_first,
                                  LPARAM in_second) {
    return in_message == WM_GETTEXTLENGTH
               ? -5
               : DefWindowProcW(in_field, in_message, in_first, in_second);
}

TEST(NativeForm, AnExceptionInAMessageEndsTheDialog) {
    VeltraneDSNDialog editor = MakeEditor();
    std::string failure;
    const auto breakIt = [](const Form& in_form) {
        SetWindowLongPtrW(in_form.Get(SERVER), GWLP_WNDPROC,
                          reinterpret_cast<LONG_PTR>(&TellAbsurdLength));
        in_form.Enter(DATABASE, L"x");
    };
    ShowTo(editor, breakIt, &failure);
    EXPECT_NE(failure.find("basic_string"), std::string::npos) << failure;
    EXPECT_EQ(editor.GetDatabase(), OLD[2]);
}

TEST(NativeForm, ShowsTheTextsAndReturnsTheInput) {
    const std::wstring entered[] = {L"neu \U0001F600", L"s2", L"d2",  L"",
                                    L"p\x20AC",        L"n2", L"LDAP"};
    VeltraneDSNDialog editor = MakeEditor();
    const int result = ShowTo(editor, [&](const Form& in_form) {
        EXPECT_EQ(in_form.Title(), L"Data source sales");
        // For a screen of 800 x 480, with 31 pixels for the frame and Windows' font of 7 x 15.
        RECT form{};
        RECT font{0, 0, 4, 8};
        GetClientRect(in_form.Window(), &form);
        MapDialogRect(in_form.Window(), &font);
        EXPECT_LE(form.right * 7 / font.right, 800);
        EXPECT_LE(form.bottom * 15 / font.bottom, 480 - 31);
        for (int i = 0; i < ROWS; ++i) {
            EXPECT_EQ(in_form.Text(ID_INPUT + i), AsWide(OLD[i].c_str())) << i;
            if (ID_INPUT + i != LOGIN_MODE) in_form.Enter(ID_INPUT + i, entered[i]);
        }
        in_form.Choose(LOGIN_MODE, 1);
        EXPECT_EQ(in_form.Title(), L"Data source neu \U0001F600");
        in_form.Click(IDOK);
    });
    EXPECT_EQ(result, VeltraneDSNDialog::RESULT_OK);
    for (int i = 0; i < ROWS; ++i) {
        EXPECT_EQ(AsWide(editor.Get(FieldOf(i))->c_str()), entered[i]) << i;
    }
}

TEST(NativeForm, LoadedValuesAreValidUntilTheyAreChanged) {
    const std::u16string odd = std::u16string(300, u'x') + u"\t\x01\x7F\v\x85 ";
    VeltraneDSNDialog editor = MakeEditor();
    editor.SetServer(odd);
    editor.SetPwd(odd);
    editor.SetMicroStrategyLoginMode(odd);
    const int result = ShowTo(editor, [](const Form& in_form) {
        in_form.Enter(DATABASE, L"d2");
        EXPECT_TRUE(in_form.IsEnabled(IDOK));
        in_form.Click(IDOK);
    });
    EXPECT_EQ(result, VeltraneDSNDialog::RESULT_OK);
    EXPECT_EQ(editor.GetServer(), odd);
    EXPECT_EQ(editor.GetPwd(), odd);
    EXPECT_EQ(editor.GetMicroStrategyLoginMode(), odd);
}

TEST(NativeForm, CancelChangesNothing) {
    VeltraneDSNDialog editor = MakeEditor();
    for (const bool isCross : {false, true}) {
        const int result = ShowTo(editor, [&](const Form& in_form) {
            in_form.Enter(SERVER, L"other");
            if (isCross) {
                SendMessageW(in_form.Window(), WM_CLOSE, 0, 0);
            } else {
                in_form.Click(IDCANCEL);
            }
        });
        EXPECT_EQ(result, VeltraneDSNDialog::RESULT_CANCEL);
        EXPECT_EQ(editor.GetServer(), OLD[1]);
    }
}

TEST(NativeForm, ShowsTheReasonOfARefusalBelowTheField) {
    const struct {
        int m_input;
        std::wstring m_text;
        const wchar_t* m_reason;
    } cases[] = {
        {NAME, L"a[b", L"A name cannot contain [ ] { } ( ) , ; ? * = ! @ \\"},
        {NAME, std::wstring(33, L'\x65E5'), L"Too long: a name has at most 32 characters."},
        {DATABASE, L" d", L"Blanks at the beginning or the end cannot be stored."},
        {PASSWORD, std::wstring(260, L'x'), L"Too long: a value has at most 259 characters."},
    };
    VeltraneDSNDialog editor = MakeEditor();
    const int result = ShowTo(editor, [&](const Form& in_form) {
        for (const auto& c : cases) {
            SCOPED_TRACE(ToUtf8(c.m_text));
            const std::wstring sound = in_form.Text(c.m_input);
            const std::wstring hint = in_form.Text(NoteOf(c.m_input));
            in_form.Enter(c.m_input, c.m_text);
            EXPECT_EQ(in_form.Text(NoteOf(c.m_input)), c.m_reason);
            EXPECT_FALSE(in_form.IsEnabled(IDOK));
            in_form.Press(IDOK);
            ASSERT_TRUE(in_form.IsOpen());
            in_form.Enter(c.m_input, sound);
            EXPECT_EQ(in_form.Text(NoteOf(c.m_input)), hint);
            EXPECT_TRUE(in_form.IsEnabled(IDOK));
        }
        in_form.Enter(NAME, std::wstring(32, L'\x65E5'));
        EXPECT_TRUE(in_form.IsEnabled(IDOK)) << "32 characters, 96 bytes";
    });
    EXPECT_EQ(result, VeltraneDSNDialog::RESULT_CANCEL);
}

TEST(NativeForm, ANewFormShowsNoErrorsYetAndStartsAtTheName) {
    VeltraneDSNDialog editor;
    ShowTo(editor, [&](const Form& in_form) {
        EXPECT_EQ(in_form.Title(), L"New data source");
        EXPECT_FALSE(in_form.IsEnabled(IDOK));
        EXPECT_EQ(in_form.Text(ID_NOTE), L"The name under which programs find this data source.");
        EXPECT_EQ(in_form.Text(ID_LABEL), L"&Name *");
        EXPECT_EQ(in_form.Text(ID_KEY), L"DSN");
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        GetGUIThreadInfo(GetWindowThreadProcessId(in_form.Window(), nullptr), &info);
        EXPECT_EQ(info.hwndFocus, in_form.Get(NAME));
    });
}

TEST(NativeForm, SpeaksTheLanguageOfTheUser) {
    if (PRIMARYLANGID(GetThreadUILanguage()) != LANG_GERMAN) {
        GTEST_SKIP() << "dialog_native_german runs it";
    }
    VeltraneDSNDialog editor;
    ShowTo(editor, [](const Form& in_form) {
        EXPECT_EQ(in_form.Title(), L"Neue Datenquelle");
        EXPECT_EQ(in_form.Text(IDCANCEL), L"Abbre&chen");
    });
}

TEST(NativeForm, TabGoesThroughTheFieldsInTheirOrder) {
    VeltraneDSNDialog editor = MakeEditor();
    ShowTo(editor, [&](const Form& in_form) {
        std::vector<int> order;
        HWND control = in_form.Get(NAME);
        do {
            order.push_back(GetDlgCtrlID(control));
            control = GetNextDlgTabItem(in_form.Window(), control, FALSE);
        } while (control != in_form.Get(NAME) && order.size() < 20);
        EXPECT_EQ(order, (std::vector<int>{ID_INPUT, ID_INPUT + 1, ID_INPUT + 2, ID_INPUT + 3,
                                           ID_INPUT + 4, ID_SHOW_PASSWORD, ID_INPUT + 5,
                                           ID_INPUT + 6, IDOK, IDCANCEL}));
    });
}

TEST(NativeForm, ThePasswordIsMaskedUnlessShown) {
    VeltraneDSNDialog editor = MakeEditor();
    ShowTo(editor, [&](const Form& in_form) {
        const auto mark = [&] {
            return SendMessageW(in_form.Get(PASSWORD), EM_GETPASSWORDCHAR, 0, 0);
        };
        const LRESULT masked = mark();
        EXPECT_NE(masked, 0);
        in_form.Click(ID_SHOW_PASSWORD);
        EXPECT_EQ(mark(), 0);
        in_form.Click(ID_SHOW_PASSWORD);
        EXPECT_EQ(mark(), masked);
    });
}

/// Sends a user's action to the password's field.
void Send(const Form& in_form, UINT in_message, WPARAM in_first = 0, LPARAM in_second = 0) {
    SendMessageW(in_form.Get(PASSWORD), in_message, in_first, in_second);
}

void Type(const Form& in_form, const std::u16string& in_keys) {
    for (const char16_t key : in_keys) Send(in_form, WM_CHAR, key);
}

void SelectPassword(const Form& in_form, WPARAM in_first, LPARAM in_last) {
    Send(in_form, EM_SETSEL, in_first, in_last);
}

TEST(NativeForm, NoCopyOfThePasswordIsLeft) {
    const struct {
        const char* m_name;
        std::size_t m_length;
        bool m_isKept;
        std::function<void(const Form&)> m_act;
    } cases[] = {
        {"short, unchanged", 30, true, [](const Form&) {}},
        {"long, unchanged", 250, true, [](const Form&) {}},
        {"looked at", 30, true, [](const Form& in_form) { in_form.Click(ID_SHOW_PASSWORD); }},
        {"typed over", 30, false,
         [](const Form& in_form) {
             SelectPassword(in_form, 0, -1);
             Type(in_form, u"new");
             EXPECT_EQ(in_form.Text(PASSWORD), L"new");
         }},
        {"replaced by a longer one", 30, false,
         [](const Form& in_form) { in_form.Enter(PASSWORD, std::wstring(200, L'n')); }},
        {"deleted by Delete", 30, false,
         [](const Form& in_form) {
             SelectPassword(in_form, 10, 30);
             Send(in_form, WM_KEYDOWN, VK_DELETE);
             EXPECT_EQ(in_form.Text(PASSWORD).size(), 10U);
         }},
        {"deleted letter by letter", 30, false,
         [](const Form& in_form) {
             SelectPassword(in_form, 30, 30);
             Type(in_form, std::u16string(25, u'\b'));
             EXPECT_EQ(in_form.Text(PASSWORD).size(), 5U);
             Send(in_form, EM_UNDO);
             EXPECT_LE(in_form.Text(PASSWORD).size(), 6U);
         }},
    };
    for (const auto& c : cases) {
        for (const int button : {IDOK, IDCANCEL}) {
            SCOPED_TRACE(std::string(c.m_name) + " " + std::to_string(button));
            VeltraneDSNDialog editor = MakeEditor();
            {
                DialogString password = MakePassword(c.m_length);
                editor.SetPwd(*password);
                Wipe(*password);
            }
            ASSERT_EQ(CopiesOfThePassword(), 1U) << "the search finds what is there";
            ShowTo(editor, [&](const Form& in_form) {
                EXPECT_GT(CopiesOfThePassword(), 1U) << "the form holds it";
                in_form.Enter(SERVER, L"other");
                c.m_act(in_form);
                in_form.Click(button);
            });
            const bool isKept = c.m_isKept || button == IDCANCEL;
            EXPECT_EQ(CopiesOfThePassword(), isKept ? 1U : 0U) << "besides the editor's own value";
        }
    }
}

TEST(NativeForm, ThePasswordIsEditedLikeAnyText) {
    const struct {
        const char* m_name;
        WPARAM m_first;  ///< the selection before
        LPARAM m_last;
        std::function<void(const Form&)> m_act;
        const wchar_t* m_text;
    } cases[] = {
        {"typed", 6, 6, [](const Form& in_form) { Type(in_form, u"x\u20AC"); }, L"geheimx\u20AC"},
        {"typed over", 1, 5, [](const Form& in_form) { Type(in_form, u"xy"); }, L"gxym"},
        {"Backspace", 0, 5, [](const Form& in_form) { Type(in_form, u"\b"); }, L"m"},
        {"Delete", 2, 2, [](const Form& in_form) { Send(in_form, WM_KEYDOWN, VK_DELETE); },
         L"geeim"},
        {"copied, undone", 0, 5, [](const Form& in_form) { Type(in_form, u"\3\x1A"); }, L"geheim"},
        {"Home", 0, 5, [](const Form& in_form) { Send(in_form, WM_KEYDOWN, VK_HOME); }, L"geheim"},
        {"cut while it is hidden", 0, 5, [](const Form& in_form) { Send(in_form, WM_CUT); },
         L"geheim"},
        {"cut and pasted twice while it is shown", 6, 6,
         [](const Form& in_form) {
             in_form.Click(ID_SHOW_PASSWORD);
             SelectPassword(in_form, 0, 5);
             Send(in_form, WM_CUT);
             EXPECT_EQ(in_form.Text(PASSWORD), L"m");
             SelectPassword(in_form, 0, 1);
             Send(in_form, WM_PASTE);
             Send(in_form, WM_PASTE);
         },
         L"geheigehei"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.m_name);
        VeltraneDSNDialog editor = MakeEditor();
        ShowTo(editor, [&](const Form& in_form) {
            SelectPassword(in_form, c.m_first, c.m_last);
            c.m_act(in_form);
            EXPECT_EQ(in_form.Text(PASSWORD), c.m_text);
            in_form.Click(IDOK);
        });
        EXPECT_EQ(AsWide(editor.GetPwd()->c_str()), std::wstring(c.m_text));
    }
}

TEST(NativeForm, TheActiveWindowWaits) {
    const HWND host = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                      200, 100, nullptr, nullptr, nullptr, nullptr);
    SetActiveWindow(host);
    VeltraneDSNDialog editor = MakeEditor();
    ShowTo(editor, [&](const Form& in_form) {
        EXPECT_EQ(GetWindow(in_form.Window(), GW_OWNER), host);
        EXPECT_FALSE(IsWindowEnabled(host));
    });
    EXPECT_TRUE(IsWindowEnabled(host));
    DestroyWindow(host);
}

TEST(NativeForm, ARequestOfAnotherVersionIsRefused) {
    const HMODULE library = LoadLibraryW(DIALOG_LIBRARY_NAME);
    ASSERT_NE(library, nullptr);
    const auto show = reinterpret_cast<ShowDialogFunction>(
        reinterpret_cast<void*>(GetProcAddress(library, DIALOG_FUNCTION_NAME)));
    ASSERT_NE(show, nullptr);
    DialogRequest request{};
    request.m_size = sizeof request - 1;
    EXPECT_EQ(show(&request), DIALOG_OTHER_VERSION);
    EXPECT_EQ(show(nullptr), DIALOG_OTHER_VERSION);
}

}  // namespace
}  // namespace Veltrane::ODBC
