/// Text between the record's strings, the editor's strings and the installer.
#ifndef SETUP_STRINGMARSHALLING_H
#define SETUP_STRINGMARSHALLING_H

#include <cstddef>
#include <string_view>

#include "PlatformAbstraction/strings/orska_wstring.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace Veltrane::ODBC {

/// The record's text for the editor; NULL gives an empty string.
/// @throws std::length_error "Size of string exceeds INT_MAX."
DialogString ToEditorString(const Orska::Support::orska_wstring& in_text);

/// The editor's text for the record, embedded NULs included; a null string gives NULL.
/// @throws std::range_error as CheckThreadCodePage
Orska::Support::orska_wstring FromEditorString(const DialogString& in_text);

/// The message of an exception, in UTF-8, for the installer.
/// @throws std::invalid_argument "NULLPTR is not supported for this conversion."
Orska::Support::orska_wstring ToInstallerText(const char* in_message);

/// @param in_length  code units
/// @throws std::length_error "Size of string exceeds INT_MAX."
void CheckEditorStringLength(std::size_t in_length);

/// Measures the text in the thread's code page, where there is one (Windows). Characters that the
/// code page lacks pass; the size is not used.
/// @throws std::range_error "Conversion from WideChar to MultiByte failed.  Please check the
///         content of the string and/or locale settings." when the conversion itself fails
void CheckThreadCodePage(std::u16string_view in_text);

}  // namespace Veltrane::ODBC

#endif
