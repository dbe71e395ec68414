/// VeltraneShowDSNDialog, the only function of VeltraneDialog.dll. It converts the arguments to
/// DialogValues and hands the user's answer back.
#include <windows.h>

#include <exception>
#include <string>

#include "PlatformAbstraction/base/SystemError.h"
#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/DialogLibrary.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/WideText.h"
#include "VeltraneDialog/library/NativeForm.h"
#include "VeltraneDialog/library/ThreadLook.h"

namespace Veltrane::ODBC {

namespace {

HMODULE OwnLibrary() {
    HMODULE library = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<const wchar_t*>(&OwnLibrary), &library);
    return library;
}

void Hand(const DialogRequest& in_request, unsigned in_index, const std::u16string& in_text) {
    in_request.m_take(in_request.m_context, in_index, {in_text.data(), in_text.size()});
}

int Fail(const DialogRequest& in_request, const std::string& in_reason) {
    std::u16string reason;
    DecodeUtf8(in_reason, reason);
    Hand(in_request, DIALOG_REASON, reason);
    return DIALOG_FAILED;
}

/// @param out_error  why the form did not open, read before the thread's look is restored
INT_PTR Show(DialogValues& io_values, HWND in_owner, DWORD& out_error) {
    const HMODULE library = OwnLibrary();
    const SharpAtEachScale scale;
    const CurrentControls look(library);
    const INT_PTR result = NativeForm(io_values).Show(library, in_owner);
    out_error = GetLastError();
    return result;
}

int ShowRequest(const DialogRequest& in_request) {
    DialogValues values;
    for (unsigned i = 0; i < DIALOG_TEXT_COUNT; ++i) {
        const DialogText& text = in_request.m_texts[i];
        values.*DIALOG_FIELDS[i].m_value = std::u16string(text.m_text, text.m_length);
    }
    // Without an owner the host's window would accept input while the user edits.
    const HWND owner =
        in_request.m_owner != nullptr ? static_cast<HWND>(in_request.m_owner) : GetActiveWindow();
    DWORD error = ERROR_SUCCESS;
    const INT_PTR result = Show(values, owner, error);
    if (result == IDCANCEL) return DIALOG_CANCELLED;
    if (result != IDOK) {
        return Fail(in_request,
                    "The dialog cannot be opened: " + Orska::Support::DescribeSystemError(error));
    }
    for (unsigned i = 0; i < DIALOG_TEXT_COUNT; ++i) {
        Hand(in_request, i, *(values.*DIALOG_FIELDS[i].m_value));
    }
    return DIALOG_ACCEPTED;
}

}  // namespace

}  // namespace Veltrane::ODBC

extern "C" int VeltraneShowDSNDialog(const Veltrane::ODBC::DialogRequest* in_request) {
    using namespace Veltrane::ODBC;
    if (in_request == nullptr || in_request->m_size != sizeof(DialogRequest)) {
        return DIALOG_OTHER_VERSION;
    }
    try {
        return ShowRequest(*in_request);
    } catch (const std::exception& exception) {
        // Copied without allocation: memory may have run out.
        const char* const what = exception.what();
        char16_t text[256];
        std::size_t length = 0;
        for (; what[length] != '\0' && length < std::size(text); ++length) {
            text[length] = static_cast<unsigned char>(what[length]);
        }
        in_request->m_take(in_request->m_context, DIALOG_REASON, {text, length});
        return DIALOG_FAILED;
    }
}
