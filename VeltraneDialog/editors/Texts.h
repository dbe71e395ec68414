/// The texts of the editors in the user's language.
#ifndef VELTRANEDIALOG_EDITORS_TEXTS_H
#define VELTRANEDIALOG_EDITORS_TEXTS_H

#include <string>

namespace Veltrane::ODBC {

/// Sets the user's locale and finds the translations, in the build tree or where they are
/// installed. Texts are UTF-8 in any locale.
void StartTexts();

/// @param in_text  English, marked with `VELTRANE_TEXT` in the source
/// @return the translation, or the text itself; valid until the program ends
const char* Translate(const char* in_text);

/// Returns the translation without the ampersand before its accelerator.
std::string TranslatePlain(const char* in_text);

/// Returns the translation with the name instead of %s.
std::string TranslateWith(const std::string& in_text, const std::string& in_name);

/// Returns the title of the form; for an empty name, that of a new data source.
std::string TitleFor(const std::string& in_name);

}  // namespace Veltrane::ODBC

#endif
