/// The common part of the editor programs: arguments, the conversation with the host, the answer.
#ifndef VELTRANEDIALOG_EDITORS_EDITORMAIN_H
#define VELTRANEDIALOG_EDITORS_EDITORMAIN_H

#include <stdexcept>
#include <string>

#include "VeltraneDialog/editors/HostConnection.h"

namespace Veltrane::ODBC {

/// Thrown when nothing can be shown. The text says why, without a full stop. The host can then try
/// another editor.
class EditorUnavailable : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The functions that differ between the editors. They return when the user is done or the host has
/// gone, and can throw EditorUnavailable.
struct EditorScreen {
    /// Shows the form.
    /// @param io_values  never null; changed only for OK
    /// @return true for OK
    bool (*m_showForm)(DialogValues& io_values, HostConnection& io_host);
    /// Asks a question in the user's language.
    /// @return true for yes
    bool (*m_ask)(const std::string& in_question, HostConnection& io_host);
};

/// @return the exit status: 0 after an answer
int EditorMain(int in_argumentCount, char** in_arguments, const EditorScreen& in_screen);

}  // namespace Veltrane::ODBC

#endif
