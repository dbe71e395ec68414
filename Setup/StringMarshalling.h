/// Converts text between the record, the editor and the installer.
#ifndef SETUP_STRINGMARSHALLING_H
#define SETUP_STRINGMARSHALLING_H

#include <cstddef>
#include <string_view>

#include "PlatformAbstraction/strings/orska_wstring.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::ODBC {

/// Returns the record's text for the editor; NULL becomes an empty string.
/// @throws std::length_error "Size of string exceeds INT_MAX."
DialogString ToEditorString(const Orska::Support::orska_wstring& in_text);

/// Returns the editor's text for the record, embedded NULs included; a null string becomes NULL.
/// @throws std::range_error as CheckThreadCodePage
Orska::Support::orska_wstring FromEditorString(const DialogString& in_text);

/// Returns the message of an exception, in UTF-8, for the installer.
/// @throws std::invalid_argument "NULLPTR is not supported for this conversion."
Orska::Support::orska_wstring ToInstallerText(const char* in_message);

/// @param in_length  code units
/// @throws std::length_error "Size of string exceeds INT_MAX."
void CheckEditorStringLength(std::size_t in_length);

/// Checks that the text can be converted to the thread's code page (Windows). Characters that the
/// code page lacks are accepted.
/// @throws std::range_error "Conversion from WideChar to MultiByte failed.  Please check the
///         content of the string and/or locale settings." when the conversion itself fails
void CheckThreadCodePage(std::u16string_view in_text);

}  // namespace Veltrane::ODBC

#endif
