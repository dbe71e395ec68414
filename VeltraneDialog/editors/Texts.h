/// The texts of the editors in the user's language.
#ifndef VELTRANEDIALOG_EDITORS_TEXTS_H
#define VELTRANEDIALOG_EDITORS_TEXTS_H

#include <string>

namespace Veltrane::ODBC {

/// Takes over the user's locale and finds the translations, beside the program in its build tree or
/// where both are installed. Texts are UTF-8 whatever the locale.
void StartTexts();

/// @param in_text  English, marked with `VELTRANE_TEXT` where it is
/// @return the translation, or the text itself; it lives as long as the program
const char* Translate(const char* in_text);

/// The translation without the ampersand before its accelerator.
std::string TranslatePlain(const char* in_text);

/// The translation with a name in the place of its %s.
std::string TranslateWith(const std::string& in_text, const std::string& in_name);

/// The title of the form; without a name, that of a new data source.
std::string TitleFor(const std::string& in_name);

}  // namespace Veltrane::ODBC

#endif
