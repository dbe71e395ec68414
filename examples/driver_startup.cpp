// Shows how a driver starts the support library: settings first, then the platform, then strings.
//
// Usage: driver_startup FILE.ini
#include <cstdio>
#include <exception>
#include <string>

#include <orska/Exceptions/ErrorException.h>
#include <orska/PlatformAbstraction/Platform.h>
#include <orska/PlatformAbstraction/settings/OrskaSettingReader.h>
#include <orska/PlatformAbstraction/strings/EncodingInfo.h>
#include <orska/PlatformAbstraction/strings/ProcessEncodings.h>
#include <orska/PlatformAbstraction/strings/orska_wstring.h>

using Orska::Support::EncodingInfo;
using Orska::Support::orska_wstring;
using Orska::Support::OrskaSettingReader;

namespace {

void PrintSettings() {
    std::printf("locale:          %s\n", OrskaSettingReader::GetDriverLocale().c_str());
    std::printf("log level:       %s\n", OrskaSettingReader::GetLogLevel().c_str());
    std::printf("log path:        %s\n", OrskaSettingReader::GetLogPath().c_str());
    std::printf("application:     %s\n", EncodingInfo::GetName(Orska::Support::GetAnsiEncoding()));
    std::printf("driver manager:  %s\n",
                EncodingInfo::GetName(Orska::Support::GetDriverManagerEncoding()));
}

/// Prints text from the application, in the ANSI encoding, in two other encodings.
void ConvertText(const std::string& in_fromApplication) {
    const orska_wstring text(in_fromApplication);
    std::printf("code units:      %d\n", static_cast<int>(text.GetLength()));
    std::printf("as UTF-8:        %s\n", text.GetAsUtf8().c_str());
    const std::string bytes = text.GetAsAnsiString(Orska::Support::GetDriverManagerEncoding());
    std::printf("for the manager: %zu bytes\n", bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: driver_startup FILE.ini\n");
        return 2;
    }
    try {
        // Once per process, before the platform starts: the file, the registry key that is read
        // when there is no file, and the section.
        OrskaSettingReader::Initialize(argv[1], L"Veltrane", L"Driver");
        // Reads both encodings from the settings and refuses invalid names. Exists as long as the
        // driver works, and stops the platform at its end.
        const Orska::Platform::PlatformGuard platform;
        PrintSettings();
        ConvertText(
            "Stra\xDF"
            "e 5 \x80");
    } catch (const Orska::Support::ErrorException& exception) {
        std::fprintf(stderr, "driver_startup: %s\n",
                     exception.GetUnformattedDescription().GetAsUtf8().c_str());
        return 1;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "driver_startup: %s\n", exception.what());
        return 1;
    }
    return 0;
}
