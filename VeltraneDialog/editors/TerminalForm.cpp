#include "VeltraneDialog/editors/TerminalForm.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "VeltraneDialog/FieldRules.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"
#include "VeltraneDialog/editors/ConnectionTry.h"
#include "VeltraneDialog/editors/EditorMain.h"
#include "VeltraneDialog/editors/TerminalTest.h"
#include "VeltraneDialog/editors/Texts.h"

namespace Veltrane::ODBC {

namespace {

constexpr int MAX_WIDTH = 76;
constexpr int MIN_ENTRY_WIDTH = 20;
constexpr int MARGIN = 2;
constexpr int GAP = 2;

/// Two lines per field (the entry and its reason), the password switch and the buttons.
constexpr int HEIGHT = 2 * static_cast<int>(DIALOG_FIELDS.size()) + 4;
/// With the border, the line of keys above and the hint below.
constexpr int SCREEN_HEIGHT = HEIGHT + 5;

constexpr int REASON_COLORS = NEWT_COLORSET_CUSTOM(0);
constexpr char TEXT_KEYS[] =
    VELTRANE_TEXT("Tab: next field   Enter: OK   Esc: cancel   F2: show password   F4: choices");
constexpr char TEXT_KEYS_AND_TEST[] =
    VELTRANE_TEXT("Tab: next  Enter: OK  Esc: cancel  F2: show password  F4: choices  F5: test");
constexpr char TOO_SMALL[] =
    "The terminal is too small for the form; it needs 80 columns and 23 rows";

std::string LabelOf(const DialogField& in_field) {
    std::string label = TranslatePlain(in_field.m_label) + " (";
    label += in_field.m_key;
    return label + (in_field.m_isRequired ? ") *" : ")");
}

}  // namespace

TerminalForm::TerminalForm(DialogValues& io_values, int in_host)
    : m_values(io_values), m_host(in_host) {
    Start();
}

TerminalForm::~TerminalForm() { newtFormDestroy(m_form); }

int TerminalForm::LabelWidth() const {
    int width = 0;
    for (const DialogField& field : DIALOG_FIELDS) {
        width = std::max(width, ColumnsOf(LabelOf(field)));
    }
    return width;
}

void TerminalForm::Start() {
    int columns = 0;
    int lines = 0;
    newtGetScreenSize(&columns, &lines);
    m_width = std::min(columns - 4, MAX_WIDTH);
    m_entryLeft = MARGIN + LabelWidth() + GAP;
    if (lines < SCREEN_HEIGHT || m_width - m_entryLeft - MARGIN < MIN_ENTRY_WIDTH) {
        throw EditorUnavailable(TOO_SMALL);
    }
    if (UsesDefaultColors()) {
        static char foreground[] = "red";
        static char background[] = "lightgray";
        static char label[] = "blue";
        newtSetColor(REASON_COLORS, foreground, background);
        // The colours of a label: in those of an entry the password switch looks like one.
        newtSetColor(NEWT_COLORSET_CHECKBOX, label, background);
    }
    newtDrawRootText(1, 0, Translate(GetTestedDriver().empty() ? TEXT_KEYS : TEXT_KEYS_AND_TEST));
    newtPushHelpLine("");
    const std::string name = EncodeUtf8(*m_values.m_dsn);
    newtCenteredWindow(static_cast<unsigned>(m_width), HEIGHT, TitleFor(name).c_str());
    m_form = newtForm(nullptr, nullptr, NEWT_FLAG_NOF12);
    int top = 1;
    for (std::size_t i = 0; i < DISPLAY_ORDER.size(); ++i) {
        top = BuildRow(m_rows[i], DIALOG_FIELDS[DISPLAY_ORDER[i]], top);
    }
    BuildButtons(top);
    for (const int key : {NEWT_KEY_ESCAPE + 0, KEY_CONTROL_C, NEWT_KEY_F2, NEWT_KEY_F4}) {
        newtFormAddHotKey(m_form, key);
    }
    newtFormWatchFd(m_form, m_screen.GetWake(), NEWT_FD_READ);
    newtFormWatchFd(m_form, m_host, NEWT_FD_READ);
}

/// @return the line below the row
int TerminalForm::BuildRow(Row& out_row, const DialogField& in_field, int in_top) {
    const bool isPassword = in_field.m_kind == DialogFieldKind::PASSWORD;
    const bool isChoice = in_field.m_kind == DialogFieldKind::LOGIN_MODE;
    const int width = m_width - m_entryLeft - MARGIN - (isChoice ? 7 : 0);
    std::string value = EncodeUtf8(*(m_values.*in_field.m_value));
    const WipeAtEnd<char> wipe(value);
    out_row.m_field = &in_field;
    out_row.m_entry =
        newtEntry(m_entryLeft, in_top, value.c_str(), width, nullptr,
                  NEWT_FLAG_SCROLL | NEWT_FLAG_RETURNEXIT | (isPassword ? NEWT_FLAG_PASSWORD : 0));
    newtEntrySetFilter(out_row.m_entry, OnKey, this);
    newtComponentAddCallback(out_row.m_entry, OnChange, this);
    newtFormAddComponents(m_form, newtLabel(MARGIN, in_top, LabelOf(in_field).c_str()),
                          out_row.m_entry, nullptr);
    int top = in_top + 1;
    if (isPassword) {
        m_showPassword = newtCheckbox(m_entryLeft, top, TranslatePlain(TEXT_SHOW_PASSWORD).c_str(),
                                      ' ', nullptr, nullptr);
        newtComponentAddCallback(m_showPassword, OnChange, this);
        newtFormAddComponent(m_form, m_showPassword);
        ++top;
    }
    if (isChoice) {
        m_chooseLoginMode = newtCompactButton(m_width - MARGIN - 6, in_top, "...");
        newtFormAddComponent(m_form, m_chooseLoginMode);
    }
    out_row.m_reason = newtTextbox(MARGIN, top, m_width - 2 * MARGIN, 1, 0);
    if (UsesDefaultColors()) {
        newtTextboxSetColors(out_row.m_reason, REASON_COLORS, REASON_COLORS);
    }
    newtFormAddComponent(m_form, out_row.m_reason);
    return top + 1;
}

void TerminalForm::BuildButtons(int in_top) {
    const std::string ok = TranslatePlain(TEXT_OK);
    const std::string cancel = TranslatePlain(TEXT_CANCEL);
    const int cancelLeft = m_width - MARGIN - ColumnsOf(cancel) - 3;
    m_ok = newtCompactButton(cancelLeft - ColumnsOf(ok) - 5, in_top + 1, ok.c_str());
    m_cancel = newtCompactButton(cancelLeft, in_top + 1, cancel.c_str());
    newtFormAddComponents(m_form, newtLabel(MARGIN, in_top + 1, Translate(TEXT_REQUIRED)), m_ok,
                          m_cancel, nullptr);
    if (GetTestedDriver().empty()) return;
    const std::string test = TranslatePlain(TEXT_TEST);
    const int testLeft = cancelLeft - ColumnsOf(ok) - ColumnsOf(test) - 10;
    m_test = newtCompactButton(testLeft, in_top + 1, test.c_str());
    newtFormAddComponent(m_form, m_test);
    newtFormAddHotKey(m_form, NEWT_KEY_F5);
}

int TerminalForm::OnKey(newtComponent, void* in_form, int in_key, int) {
    auto* const form = static_cast<TerminalForm*>(in_form);
    form->m_startedIn = nullptr;
    form->m_screen.Wake();
    return in_key;
}

void TerminalForm::OnChange(newtComponent in_component, void* in_form) {
    auto* const form = static_cast<TerminalForm*>(in_form);
    // Each run of the form begins with a callback of the focused entry. Waking the form for that
    // would end this run at once, and every later one.
    if (in_component == form->m_startedIn) {
        form->m_startedIn = nullptr;
    } else {
        form->m_screen.Wake();
    }
}

/// Indents the reason to its entry, or less if it is too long.
std::string TerminalForm::Indented(const std::string& in_reason) const {
    const int room = m_width - 2 * MARGIN - ColumnsOf(in_reason);
    const int indent = std::clamp(room, 0, m_entryLeft - MARGIN);
    return std::string(static_cast<std::size_t>(indent), ' ') + in_reason;
}

void TerminalForm::Follow() {
    const newtComponent current = newtFormGetCurrent(m_form);
    const char* hint = "";
    m_startedIn = nullptr;
    for (const Row& row : m_rows) {
        const char* const value = newtEntryGetValue(row.m_entry);
        const bool isHidden = IsOnlyMissing(*row.m_field, value) && !m_showsMissing;
        const char* const reason = isHidden ? nullptr : WhyRefused(*row.m_field, value, m_values);
        const std::string text = reason != nullptr ? Translate(reason) : "";
        newtTextboxSetText(row.m_reason, Indented(text).c_str());
        if (row.m_entry == current) {
            hint = row.m_field->m_hint;
            m_startedIn = current;
        }
        if (row.m_field->m_kind == DialogFieldKind::PASSWORD) {
            const bool isShown = newtCheckboxGetValue(m_showPassword) == '*';
            newtEntrySetFlags(row.m_entry, NEWT_FLAG_PASSWORD,
                              isShown ? NEWT_FLAGS_RESET : NEWT_FLAGS_SET);
        }
    }
    newtPopHelpLine();
    newtPushHelpLine(*hint != '\0' ? Translate(hint) : "");
}

bool TerminalForm::Run() {
    bool isAccepted = false;
    for (;;) {
        Follow();
        newtExitStruct exit{};
        m_screen.Run(m_form, exit);
        if (HandleExit(exit, isAccepted)) {
            return isAccepted;
        }
    }
}

/// @return true when the form is done
bool TerminalForm::HandleExit(const newtExitStruct& in_exit, bool& out_accepted) {
    switch (in_exit.reason) {
        case newtExitStruct::NEWT_EXIT_HOTKEY:
            if (in_exit.u.key == NEWT_KEY_F2) {
                const bool isShown = newtCheckboxGetValue(m_showPassword) == '*';
                newtCheckboxSetValue(m_showPassword, isShown ? ' ' : '*');
                return false;
            }
            if (in_exit.u.key == NEWT_KEY_F4) {
                ChooseLoginMode();
                return false;
            }
            if (in_exit.u.key == NEWT_KEY_F5) {
                Test();
                return false;
            }
            return true;
        case newtExitStruct::NEWT_EXIT_COMPONENT:
            if (in_exit.u.co == m_chooseLoginMode) {
                ChooseLoginMode();
                return false;
            }
            if (m_test != nullptr && in_exit.u.co == m_test) {
                Test();
                return false;
            }
            out_accepted = in_exit.u.co != m_cancel && Accept();
            return out_accepted || in_exit.u.co == m_cancel;
        case newtExitStruct::NEWT_EXIT_FDREADY:
            m_screen.Drain();
            return in_exit.u.watch == m_host;
        case newtExitStruct::NEWT_EXIT_TIMER:
            return false;
        case newtExitStruct::NEWT_EXIT_ERROR:
            break;
    }
    TerminalScreen::FailWithoutTerminal();
}

void TerminalForm::ChooseLoginMode() {
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), [](const Row& in_row) {
        return in_row.m_field->m_kind == DialogFieldKind::LOGIN_MODE;
    });
    const int count = static_cast<int>(LOGIN_MODES.size());
    newtCenteredWindow(static_cast<unsigned>(m_width / 2), static_cast<unsigned>(count),
                       TranslatePlain(row->m_field->m_label).c_str());
    const newtComponent list = newtListbox(1, 0, count, NEWT_FLAG_RETURNEXIT);
    for (const char* mode : LOGIN_MODES) {
        newtListboxAppendEntry(list, mode, mode);
    }
    newtListboxSetWidth(list, m_width / 2 - 2);
    const newtComponent form = newtForm(nullptr, nullptr, NEWT_FLAG_NOF12);
    newtFormAddComponent(form, list);
    newtFormAddHotKey(form, NEWT_KEY_ESCAPE);
    newtFormWatchFd(form, m_host, NEWT_FD_READ);
    newtExitStruct exit{};
    m_screen.Run(form, exit);
    if (exit.reason == newtExitStruct::NEWT_EXIT_COMPONENT) {
        newtEntrySet(row->m_entry, static_cast<const char*>(newtListboxGetCurrent(list)), 1);
    }
    newtFormDestroy(form);
    newtPopWindow();
    newtFormSetCurrent(m_form, row->m_entry);
}

/// @return false when a field is refused, which then has the focus
bool TerminalForm::Accept() {
    for (const Row& row : m_rows) {
        if (WhyRefused(*row.m_field, newtEntryGetValue(row.m_entry), m_values) != nullptr) {
            m_showsMissing = true;
            newtBell();
            newtFormSetCurrent(m_form, row.m_entry);
            return false;
        }
    }
    m_values = Collect();
    return true;
}

DialogValues TerminalForm::Collect() const {
    DialogValues values;
    for (const Row& row : m_rows) {
        DecodeUtf8(newtEntryGetValue(row.m_entry), (values.*row.m_field->m_value).emplace());
    }
    return values;
}

void TerminalForm::Test() { TestInTerminal(Collect(), m_screen, m_host); }

}  // namespace Veltrane::ODBC
