/// The only call between the setup library and VeltraneDialog.dll (Windows). It is plain C, and
/// each side owns its memory, because each is linked with its own C++ run-time library.
#ifndef VELTRANEDIALOG_DIALOGLIBRARY_H
#define VELTRANEDIALOG_DIALOGLIBRARY_H

#include <cstddef>

#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::ODBC {

/// The texts have the order of `DIALOG_FIELDS`. The reason of a failure comes after them.
constexpr unsigned DIALOG_TEXT_COUNT = DIALOG_FIELDS.size();
constexpr unsigned DIALOG_REASON = DIALOG_TEXT_COUNT;

/// UTF-16 without a terminating NUL. Owned by the side that passes it, valid during the call.
struct DialogText {
    const char16_t* m_text;
    std::size_t m_length;  ///< code units
};

struct DialogRequest {
    /// sizeof(DialogRequest) of the caller; another size means another version of this interface.
    std::size_t m_size;
    /// The window that waits for the dialog; null for the active window of the calling thread.
    void* m_owner;
    DialogText m_texts[DIALOG_TEXT_COUNT];
    /// Receives the answer: each field if the user accepted, `DIALOG_REASON` if nothing can be
    /// shown. Must not throw.
    void (*m_take)(void* io_context, unsigned in_index, DialogText in_text);
    void* m_context;
};

constexpr int DIALOG_ACCEPTED = 1;
constexpr int DIALOG_CANCELLED = 2;
/// Nothing was shown; m_take received the reason.
constexpr int DIALOG_FAILED = 0;
/// The request has another version of this interface.
constexpr int DIALOG_OTHER_VERSION = -1;

/// Shows the values in a modal dialog and waits for the user.
using ShowDialogFunction = int (*)(const DialogRequest* in_request);

constexpr char DIALOG_FUNCTION_NAME[] = "VeltraneShowDSNDialog";
constexpr wchar_t DIALOG_LIBRARY_NAME[] = L"VeltraneDialog.dll";

}  // namespace Veltrane::ODBC

#endif
