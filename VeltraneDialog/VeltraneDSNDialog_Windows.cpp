#include "VeltraneDialog/VeltraneDSNDialog.h"

#include <windows.h>

#include <new>
#include <stdexcept>
#include <utility>

#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/DialogLibrary.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/WideText.h"

namespace Veltrane::ODBC {

namespace {

[[noreturn]] void Fail(const std::string& in_reason, const std::string& in_otherWay) {
    throw std::runtime_error("No DSN editor can be shown. " + in_reason +
                             ". To work without one, " + in_otherWay);
}

/// Loads a library by its full path, and its dependencies only from its own folder and the
/// system's, never from the host's folder, the working directory or PATH.
HMODULE LoadFrom(const std::wstring& in_path) {
    const HMODULE library = LoadLibraryExW(
        in_path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    // Windows 7 without updates does not know these flags.
    if (library == nullptr && GetLastError() == ERROR_INVALID_PARAMETER) {
        return LoadLibraryExW(in_path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    }
    return library;
}

/// Returns the function of the library beside this module. The library stays loaded: each new load
/// would leak a slot of the C++ run-time library that is linked into it.
ShowDialogFunction FindShowDialog(const char* in_otherWay) {
    const std::wstring path = PathBesideModule(DIALOG_LIBRARY_NAME);
    const HMODULE library = LoadFrom(path);
    if (library == nullptr) {
        const DWORD error = GetLastError();
        Fail(ToUtf8(path) + " cannot be loaded: " + Orska::Support::DescribeSystemError(error),
             in_otherWay);
    }
    const FARPROC function = GetProcAddress(library, DIALOG_FUNCTION_NAME);
    if (function == nullptr) {
        Fail(ToUtf8(path) + " has no function " + DIALOG_FUNCTION_NAME, in_otherWay);
    }
    return reinterpret_cast<ShowDialogFunction>(reinterpret_cast<void*>(function));
}

struct Answer {
    DialogValues m_values;
    std::u16string m_reason;
    bool m_isWhole = true;
};

/// Called by the dialog. Must not throw.
void TakeText(void* io_context, unsigned in_index, DialogText in_text) {
    Answer& answer = *static_cast<Answer*>(io_context);
    try {
        std::u16string text(in_text.m_text, in_text.m_length);
        if (in_index < DIALOG_TEXT_COUNT) {
            answer.m_values.*DIALOG_FIELDS[in_index].m_value = std::move(text);
        } else {
            answer.m_reason = std::move(text);
        }
    } catch (const std::bad_alloc&) {
        answer.m_isWhole = false;
    }
}

DialogRequest MakeRequest(const DialogValues& in_values, Answer& out_answer) {
    DialogRequest request{};
    request.m_size = sizeof request;
    for (unsigned i = 0; i < DIALOG_TEXT_COUNT; ++i) {
        const DialogString& text = in_values.*DIALOG_FIELDS[i].m_value;
        request.m_texts[i] = text ? DialogText{text->data(), text->size()} : DialogText{u"", 0};
    }
    request.m_take = TakeText;
    request.m_context = &out_answer;
    return request;
}

}  // namespace

int VeltraneDSNDialog::ShowDialog(const char* in_otherWay) {
    Answer answer;
    const DialogRequest request = MakeRequest(Values(), answer);
    const int result = FindShowDialog(in_otherWay)(&request);
    if (!answer.m_isWhole) throw std::bad_alloc();
    switch (result) {
        case DIALOG_ACCEPTED:
            Accept(answer.m_values);
            return RESULT_OK;
        case DIALOG_CANCELLED:
            return RESULT_CANCEL;
        case DIALOG_OTHER_VERSION:
            Fail("VeltraneDialog.dll is of another version than the setup library", in_otherWay);
        default:
            Fail(ToUtf8(AsWide(answer.m_reason.c_str())), in_otherWay);
    }
}

bool VeltraneDSNDialog::Ask(const char* in_text, const std::string& in_name) {
    std::string text = in_text;
    text.replace(text.find("%s"), 2, in_name);
    std::u16string wide;
    DecodeUtf8(text, wide);
    return MessageBoxW(GetActiveWindow(), AsWide(wide.c_str()), L"Veltrane",
                       MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

}  // namespace Veltrane::ODBC
