#include "VeltraneDialog/library/Texts.h"

#include <windows.h>

#include <cstring>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/WideText.h"

namespace Veltrane::ODBC {

namespace {

struct Translation {
    const char* m_english;
    const char* m_translated;
};

/// Made by the build from editors/po.
constexpr Translation GERMAN[] = {
#include <VeltraneTexts_de.inc>
};

const char* Translate(const char* in_text) {
    if (PRIMARYLANGID(GetThreadUILanguage()) != LANG_GERMAN) return in_text;
    for (const Translation& translation : GERMAN) {
        if (std::strcmp(translation.m_english, in_text) == 0) return translation.m_translated;
    }
    return in_text;
}

}  // namespace

std::wstring TranslateWide(const char* in_text) { return ToWide(Translate(in_text)); }

std::wstring WideTitleFor(const std::wstring& in_name) {
    if (in_name.empty()) return TranslateWide(TEXT_TITLE_NEW);
    std::wstring title = TranslateWide(TEXT_TITLE);
    const std::size_t place = title.find(L"%s");
    return place == std::wstring::npos ? title : title.replace(place, 2, in_name);
}

}  // namespace Veltrane::ODBC
