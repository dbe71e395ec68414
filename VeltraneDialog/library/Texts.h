/// The texts of the dialog in the user's language.
#ifndef VELTRANEDIALOG_LIBRARY_TEXTS_H
#define VELTRANEDIALOG_LIBRARY_TEXTS_H

#include <string>

namespace Veltrane::ODBC {

/// @param in_text  English, marked with `VELTRANE_TEXT` in the source
/// @return the translation into the language of the thread's user interface, or the text itself
std::wstring TranslateWide(const char* in_text);

/// Returns the title of the form; for an empty name, that of a new data source.
std::wstring WideTitleFor(const std::wstring& in_name);

}  // namespace Veltrane::ODBC

#endif
