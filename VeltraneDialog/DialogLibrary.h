/// The one call between the setup library and VeltraneDialog.dll. It is plain C, and each side
/// keeps its own memory: the two are linked with a C++ run-time of their own each. Windows only.
#ifndef VELTRANEDIALOG_DIALOGLIBRARY_H
#define VELTRANEDIALOG_DIALOGLIBRARY_H

#include <cstddef>

#include "VeltraneDialog/DialogFields.h"

namespace Veltrane::ODBC {

/// The texts in the order of `DIALOG_FIELDS`, and after them the reason of a failure.
constexpr unsigned DIALOG_TEXT_COUNT = DIALOG_FIELDS.size();
constexpr unsigned DIALOG_REASON = DIALOG_TEXT_COUNT;

/// UTF-16, not ended by a NUL; belongs to whoever hands it over, for as long as the call lasts.
struct DialogText {
    const char16_t* m_text;
    std::size_t m_length;  ///< code units
};

struct DialogRequest {
    /// sizeof(DialogRequest) of the caller: another one is another version of this interface.
    std::size_t m_size;
    /// The window that waits for the dialog; null: the active one of the calling thread, if any.
    void* m_owner;
    DialogText m_texts[DIALOG_TEXT_COUNT];
    /// Takes an answer: each field after the user accepted, `DIALOG_REASON` when nothing can be
    /// shown. Must not throw.
    void (*m_take)(void* io_context, unsigned in_index, DialogText in_text);
    void* m_context;
};

constexpr int DIALOG_ACCEPTED = 1;
constexpr int DIALOG_CANCELLED = 2;
/// Nothing was shown; the reason has been handed over.
constexpr int DIALOG_FAILED = 0;
/// The request is of another version of this interface.
constexpr int DIALOG_OTHER_VERSION = -1;

/// Shows the values in a modal dialog and waits for the user.
using ShowDialogFunction = int (*)(const DialogRequest* in_request);

constexpr char DIALOG_FUNCTION_NAME[] = "VeltraneShowDSNDialog";
constexpr wchar_t DIALOG_LIBRARY_NAME[] = L"VeltraneDialog.dll";

}  // namespace Veltrane::ODBC

#endif
