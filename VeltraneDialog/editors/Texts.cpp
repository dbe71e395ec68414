#include "VeltraneDialog/editors/Texts.h"

#include <libintl.h>
#include <sys/stat.h>

#include <clocale>
#include <cwchar>

#include "PlatformAbstraction/base/OwnDirectory.h"
#include "VeltraneDialog/DialogFields.h"

#ifndef VELTRANE_LOCALE_DIRECTORY
#error "The build defines where translations are installed, relative to the editors"
#endif

namespace Veltrane::ODBC {

namespace {

constexpr char DOMAIN[] = "veltrane-dsn-editor";

std::string DirectoryOf(const std::string& in_path) {
    return in_path.substr(0, in_path.rfind('/'));
}

std::string TranslationDirectory() {
    const std::string own = DirectoryOf(Orska::Support::GetOwnDirectory());
    const std::string inBuildTree = DirectoryOf(own) + "/share/locale";
    struct stat status {};
    return stat(inBuildTree.c_str(), &status) == 0 ? inBuildTree
                                                   : own + "/" VELTRANE_LOCALE_DIRECTORY;
}

}  // namespace

void StartTexts() {
    setlocale(LC_ALL, "");
    bindtextdomain(DOMAIN, TranslationDirectory().c_str());
    bind_textdomain_codeset(DOMAIN, "UTF-8");
    textdomain(DOMAIN);
}

const char* Translate(const char* in_text) { return gettext(in_text); }

std::string TranslatePlain(const char* in_text) {
    std::string text = Translate(in_text);
    const std::size_t ampersand = text.find('&');
    return ampersand == std::string::npos ? text : text.erase(ampersand, 1);
}

std::string TranslateWith(const std::string& in_text, const std::string& in_name) {
    std::string text = Translate(in_text.c_str());
    const std::size_t place = text.find("%s");
    return place == std::string::npos ? text : text.replace(place, 2, in_name);
}

std::string TitleFor(const std::string& in_name) {
    return in_name.empty() ? Translate(TEXT_TITLE_NEW) : TranslateWith(TEXT_TITLE, in_name);
}

}  // namespace Veltrane::ODBC
