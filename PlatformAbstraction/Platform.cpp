#include "PlatformAbstraction/Platform.h"

#include <unicode/locid.h>

#include <cstdint>
#include <cwchar>
#include <iterator>
#include <string>

#include "PlatformAbstraction/ICU/WideStringConverter.h"
#include "PlatformAbstraction/settings/OrskaSettingReader.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"

namespace Orska::Platform {

namespace {

// Process-wide: how many starts have no stop yet. Changed by InitializePlatform
// and UninitializePlatform.
std::uint32_t s_initCount = 0;

// Process-wide: the platform object while the count is above 0. Changed by the same functions.
PlatformInstance* s_instance = nullptr;

void WriteEntering(const char* in_call) {
    WriteVerboseLine(("Entering Orska::Platform::" + std::string(in_call) +
                      " with s_initCount ==" + std::to_string(s_initCount) + ".")
                         .c_str());
}

/// Runs the wide formatter once and drops the text.
void RunWideFormatter() {
    wchar_t text[256];
    std::swprintf(text, std::size(text), L"Executing: %hs", "_vsnwprintf_s");
}

/// Sets both encodings; if one of them throws, both are unchanged.
void TakeEncodingsFromSettings() {
    using Support::orska_wstring;
    using Support::OrskaSettingReader;
    const Support::EncodingType before = Support::GetAnsiEncoding();
    Support::SetAnsiEncodingSetting(&OrskaSettingReader::GetAppCharEncoding);
    orska_wstring::InitializeAnsiEncoding();
    try {
        orska_wstring::SetDriverManagerEncoding(OrskaSettingReader::GetDriverManagerEncoding());
    } catch (...) {
        Support::SetAnsiEncoding(before);
        throw;
    }
}

}  // namespace

PlatformInstance::PlatformInstance()
    : m_lock(std::make_unique<PlatformLock>()),
      m_stringConverter(std::make_unique<Support::WideStringConverter>()),
      m_service(std::make_unique<PlatformService>()) {
    m_defaultLocale.SetFromUtf8(icu::Locale::getDefault().getName(),
                                Support::orska_wstring::NUL_TERMINATED);
}

PlatformInstance::~PlatformInstance() = default;

PlatformInstance* InitializePlatform(bool in_isVerbose) {
    if (in_isVerbose) {
        WriteEntering("InitializePlatform(true)");
    }
    if (s_initCount > 0) {
        ++s_initCount;
        if (in_isVerbose) {
            SetVerbose(true);
        }
        return s_instance;
    }
    auto instance = std::make_unique<PlatformInstance>();
    SetVerbose(in_isVerbose);
    RunWideFormatter();
    // Before this, strings convert through ICU directly; from here on they use the converter. The
    // text is the same.
    TakeEncodingsFromSettings();
    Support::SetPlatformStringConverter(&instance->GetStringConverter());
    s_initCount = 1;
    s_instance = instance.release();
    return s_instance;
}

void UninitializePlatform() {
    if (IsVerbose()) {
        WriteEntering("UninitializePlatform()");
    }
    --s_initCount;
    if (s_initCount == 0) {
        Support::SetPlatformStringConverter(nullptr);
        delete s_instance;
        s_instance = nullptr;
    }
}

}  // namespace Orska::Platform
