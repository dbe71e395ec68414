#include "tests/PlatformAbstraction/settings/OwnIniProbe.h"

#include <string>

#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"

extern "C" __attribute__((visibility("default"))) const char* ReadOwnIni() {
    using namespace Orska::Support;
    static std::string s_value;
    SectionMap section;
    const bool isRead =
        IniFileConfigurationReader(true, true).LoadConfiguration(section, L"own.ini", L"DRIVER");
    s_value = isRead ? section.Find(L"from")->GetAsText().GetAsUtf8() : "none";
    return s_value.c_str();
}
