#include "Setup/ConfigDSNInternal.h"

#include <exception>
#include <stdexcept>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "Setup/DriverLibrary.h"
#include "Setup/OdbcInstaller.h"
#include "Setup/StringMarshalling.h"
#include "Setup/TracedInstaller.h"
#include "Setup/VeltraneDSNConfiguration.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {

using Orska::Support::ErrorException;
using Orska::Support::orska_wstring;
using Orska::Support::TraceSite;

namespace {

constexpr char FUNCTION[] = "Veltrane::ODBC::ConfigDSNInternal";
constexpr char SOURCE[] = "Setup\\ConfigDSNInternal";

/// The dialog result that counts as acceptance.
constexpr int DIALOG_OK = 1;

void FillEditor(const VeltraneDSNConfiguration& in_record, VeltraneDSNDialog& io_editor) {
    for (const DialogField& field : DIALOG_FIELDS) {
        io_editor.Set(field, ToEditorString(in_record.Get(field)));
    }
}

void ReadEditor(const VeltraneDSNDialog& in_editor, VeltraneDSNConfiguration& io_record) {
    for (const DialogField& field : DIALOG_FIELDS) {
        io_record.Set(field, FromEditorString(in_editor.Get(field)));
    }
}

int RemoveDSN(VeltraneDSNConfiguration& io_record, const orska_wstring& in_attributes) {
    io_record.Load(in_attributes);
    // No error is posted for a refusal: only the installer knows the reason.
    return TracedInstaller::RemoveDSNFromIni(io_record.GetDsn()) ? 1 : 0;
}

int EditDSN(VeltraneDSNConfiguration& io_record, bool in_hasParentWindow, bool in_isConfigure,
            const orska_wstring& in_driverDescription, const orska_wstring& in_attributes) {
    // Needed even when it is not shown: without a window a new DSN gets its initial values.
    VeltraneDSNDialog editor;
    if (in_isConfigure || !in_attributes.IsEmpty()) {
        io_record.Load(in_attributes);
    }
    if (in_isConfigure && in_hasParentWindow) {
        FillEditor(io_record, editor);
    }
    if (in_hasParentWindow) {
        const std::string driver = in_driverDescription.GetAsUtf8();
        if (HasDriverLibrary(driver)) {
            editor.SetTestedDriver(driver);
        }
    }
    // Cancelling the editor does not abandon the request: the record is saved as it was loaded.
    // Kept on purpose: callers rely on the section being written in either case.
    if (!in_hasParentWindow || editor.ShowDialog() == DIALOG_OK) {
        ReadEditor(editor, io_record);
    }
    // A DSN that was renamed in the editor is saved under its new name, and the old section stays.
    // Kept on purpose: a rename loses nothing.
    io_record.Save();
    return 1;
}

bool IsSystemRequest(unsigned short in_requestType) {
    return in_requestType >= ODBC_ADD_SYS_DSN && in_requestType <= ODBC_REMOVE_SYS_DSN;
}

int Dispatch(bool in_hasParentWindow, unsigned short in_requestType,
             const orska_wstring& in_driverDescription, const orska_wstring& in_attributes) {
    VeltraneDSNConfiguration record(in_driverDescription);
    switch (in_requestType) {
        case ODBC_REMOVE_DSN:
        case ODBC_REMOVE_SYS_DSN:
            return RemoveDSN(record, in_attributes);
        case ODBC_ADD_DSN:
        case ODBC_ADD_SYS_DSN:
            return EditDSN(record, in_hasParentWindow, false, in_driverDescription, in_attributes);
        case ODBC_CONFIG_DSN:
        case ODBC_CONFIG_SYS_DSN:
            return EditDSN(record, in_hasParentWindow, true, in_driverDescription, in_attributes);
        default:
            ORSKA_THROW((TraceSite{FUNCTION, SOURCE, 0}),
                        VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_REQUEST_TYPE));
    }
}

void Post(unsigned long in_code, const orska_wstring& in_text) {
    ORSKA_TRACE(1, FUNCTION, SOURCE, 0, "Request failed: installer error %lu \"%s\"", in_code,
                TracedInstaller::ForTrace(in_text).c_str());
    TracedInstaller::PostInstallerError(in_code, in_text);
}

/// Returns the message of an exception, or the reason why it has none.
orska_wstring MessageOf(const std::exception& in_exception) {
    try {
        return ToInstallerText(in_exception.what());
    } catch (const std::invalid_argument& failure) {
        return ToInstallerText(failure.what());
    }
}

/// Posts the exception that is being handled, by its type.
void PostByKind() {
    try {
        throw;
    } catch (const ErrorException& exception) {
        Post(INSTALLER_REQUEST_FAILED, exception.GetMessageKeyOrText());
    } catch (const VeltraneDSNSetupException& exception) {
        Post(exception.GetErrorCode(), exception.GetErrorMsg());
    } catch (const std::exception& exception) {
        Post(INSTALLER_REQUEST_FAILED, MessageOf(exception));
    } catch (...) {
        const VeltraneDSNSetupException exception(VeltraneDSNSetupException::REQUEST_FAILED);
        Post(exception.GetErrorCode(), exception.GetErrorMsg());
    }
}

}  // namespace

int PostCurrentException() noexcept {
    try {
        PostByKind();
    } catch (...) {
        // No memory for the text: only the result reports the failure.
    }
    return 0;
}

int ConfigDSNInternal(void* in_parentWindow, unsigned short in_requestType,
                      const orska_wstring& in_driverDescription,
                      const orska_wstring& in_attributes) noexcept {
    try {
        const OdbcInstaller::Request request(IsSystemRequest(in_requestType));
        ORSKA_TRACE(2, FUNCTION, SOURCE, 0, "Request %u for driver \"%s\", mode %s, %s window",
                    in_requestType, TracedInstaller::ForTrace(in_driverDescription).c_str(),
                    request.GetModeName(), in_parentWindow != nullptr ? "with" : "without");
        const int result = Dispatch(in_parentWindow != nullptr, in_requestType,
                                    in_driverDescription, in_attributes);
        ORSKA_TRACE(2, FUNCTION, SOURCE, 0, "Request %u: result %d", in_requestType, result);
        return result;
    } catch (...) {
        return PostCurrentException();
    }
}

}  // namespace Veltrane::ODBC
