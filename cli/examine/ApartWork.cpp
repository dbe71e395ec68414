#include "cli/examine/ApartWork.h"

#include "cli/examine/ApartProcess.h"
#include "cli/examine/OdbcCalls.h"
#include "cli/examine/OdbcPlatform.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Json = nlohmann::ordered_json;
using Clock = std::chrono::steady_clock;

/// Names, paths and error texts as an array of bytes: they need not be UTF-8, and strings of JSON
/// do.
Json ToBytes(const std::string& in_text) {
    return std::vector<unsigned char>(in_text.begin(), in_text.end());
}

std::string ToText(const Json& in_bytes) {
    const std::vector<unsigned char> bytes = in_bytes;
    return {bytes.begin(), bytes.end()};
}

/// Sends the setup library, through the installer, a request that it has to refuse.
/// @return "=" if it answered, else the installer's errors
std::string AskSetupLibrary(const std::string& in_driver) {
    const auto driver = OdbcPlatform::ToOdbc(in_driver);
    // No DSN can have this name.
    const auto attributes = OdbcPlatform::ToOdbc(std::string("DSN=[]") + '\0');
    if (SQLConfigDataSource(nullptr, ODBC_REMOVE_DSN,
                            reinterpret_cast<const TCHAR*>(driver.c_str()),
                            reinterpret_cast<const TCHAR*>(attributes.c_str())) != 0) {
        return "=";
    }
    std::string text;
    for (WORD i = 1; i <= 8; ++i) {
        DWORD code = 0;
        TCHAR message[SQL_MAX_MESSAGE_LENGTH + 1] = {};
        WORD length = 0;
        if (!SQL_SUCCEEDED(SQLInstallerError(i, &code, message, SQL_MAX_MESSAGE_LENGTH, &length))) {
            break;
        }
        const bool isAnswer =
            code >= ODBC_ERROR_INVALID_KEYWORD_VALUE && code <= ODBC_ERROR_REQUEST_FAILED;
        if (isAnswer) return "=";
        text += (text.empty() ? "" : ", ") + std::to_string(code) + " " +
                OdbcPlatform::FromOdbc(reinterpret_cast<const SQLTCHAR*>(message));
    }
    return text.empty() ? "the installer gave no reason" : text;
}

LibraryProbe ProbeHere(const std::string& in_path, const std::vector<std::string>& in_functions) {
    void* library = nullptr;
    const LibraryProbe loaded = LoadHere(in_path, library);
    if (loaded.m_fault != LibraryFault::None || in_functions.empty()) return loaded;
    for (const std::string& function : in_functions) {
        if (OdbcPlatform::FindFunction(library, function.c_str()) != nullptr) return {};
    }
    return {LibraryFault::NoEntryPoint, Join(in_functions)};
}

void Connect(const Json& in_request, const ApartRequest& in_parent) {
    OdbcCalls calls(in_request.at("driver_manager"));
    const Clock::time_point begin = Clock::now();
    const bool isConnected = calls.Connect(in_request.at("connection_string"));
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    Json diagnostics = Json::array();
    for (const auto& [state, code, said] : calls.GetDiagnostics()) {
        diagnostics.push_back({{"state", state}, {"native_code", code}, {"text", said}});
    }
    in_parent.m_answer(ToLine({{"connected", isConnected},
                               {"time_ms", time.count()},
                               {"server", isConnected ? calls.GetInfo(SQL_DBMS_NAME) : ""},
                               {"version", isConnected ? calls.GetInfo(SQL_DBMS_VER) : ""},
                               {"diagnostics", std::move(diagnostics)}}));
    if (!isConnected) return;
    calls.Disconnect();
    in_parent.m_answer("disconnected");
}

}  // namespace

std::string ToLine(const Json& in_document) {
    return in_document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string AskApart(const char* in_kind, const std::string& in_text,
                     const std::vector<std::string>& in_functions) {
    try {
        ApartProcess process(ToLine({{in_kind, ToBytes(in_text)}, {"functions", in_functions}}));
        std::string line;
        if (process.ReadLine(Clock::now() + std::chrono::seconds(20), line) !=
            ApartProcess::Event::Line) {
            return {};
        }
        const Json answer = Json::parse(line);
        return answer.is_array() ? ToText(answer) : answer.at("reason").get<std::string>();
    } catch (const std::exception& error) {
        return error.what();
    }
}

LibraryProbe ProbeLibrary(const std::string& in_path,
                          const std::vector<std::string>& in_functions) {
    const std::string answer = AskApart("library", in_path, in_functions);
    if (answer.empty()) return {LibraryFault::Crashes, {}};
    const int fault = answer.front() - '0';
    // Other answers say why the process could not be asked.
    if (fault < 0 || fault > static_cast<int>(LibraryFault::NoEntryPoint)) {
        return {LibraryFault::CannotLoad, answer};
    }
    return {static_cast<LibraryFault>(fault), answer.substr(1)};
}

void DoApartWork() {
    const ApartRequest parent = TakeRequest();
    try {
        const Json request = Json::parse(parent.m_line);
        if (request.contains("library")) {
            const auto [fault, detail] =
                ProbeHere(ToText(request["library"]), request["functions"]);
            const auto digit = static_cast<char>('0' + static_cast<int>(fault));
            parent.m_answer(ToLine(ToBytes(digit + detail)));
        } else if (request.contains("driver")) {
            parent.m_answer(ToLine(ToBytes(AskSetupLibrary(ToText(request["driver"])))));
        } else {
            Connect(request, parent);
        }
    } catch (const std::exception& error) {
        parent.m_answer(ToLine({{"reason", error.what()}}));
    }
}

}  // namespace Veltrane::Cli
