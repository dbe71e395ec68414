#include "VeltraneDialog/editors/ConnectionTry.h"

#include <cstdlib>

#include "PlatformAbstraction/base/OwnDirectory.h"
#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/EditorProcess.h"
#include "VeltraneDialog/RunnableProgram.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"

#ifndef VELTRANE_PROGRAM_DIRECTORY
#error "The build defines where programs are installed, relative to the editors"
#endif

namespace Veltrane::ODBC {

namespace {

void Append(std::string_view in_key, std::string_view in_value, std::string& io_text) {
    io_text.append(in_key).append("={");
    for (const char byte : in_value) io_text.append(byte == '}' ? 2 : 1, byte);
    io_text.append("};");
}

}  // namespace

std::string FindTool() {
    constexpr char NAME[] = "veltrane-dsn";
    const std::string own = Orska::Support::GetOwnDirectory();
    for (const std::string& directory : {own, own + VELTRANE_PROGRAM_DIRECTORY "/"}) {
        if (WhyNotRunnable(directory + NAME).empty()) return directory + NAME;
    }
    return own + NAME;
}

std::string GetTestedDriver() {
    const char* const driver = std::getenv(DRIVER_VARIABLE);
    return driver != nullptr && WhyNotRunnable(FindTool()).empty() ? driver : "";
}

std::string MakeConnectionString(const DialogValues& in_values) {
    std::string text;
    text.reserve(std::size_t{64} << 10);  // a buffer that grows leaves copies
    Append("Driver", GetTestedDriver(), text);
    for (const DialogField& field : DIALOG_FIELDS) {
        std::string value = EncodeUtf8(*(in_values.*field.m_value));
        const WipeAtEnd<char> wipe(value);
        if (field.m_key != "DSN" && !value.empty()) Append(field.m_key, value, text);
    }
    return text;
}

}  // namespace Veltrane::ODBC
