#include "Setup/VeltraneDSNConfiguration.h"

#include <string>
#include <string_view>

#include "Exceptions/OrskaThrow.h"
#include "Setup/OdbcInstaller.h"
#include "Setup/TracedInstaller.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {

using Orska::Support::orska_wstring;
using Orska::Support::TraceSite;

const orska_wstring DSN_CONFIG_KEY_ODBC_INI(L"odbc.ini");
const orska_wstring DSN_CONFIG_KEY_DSN(L"DSN");
const orska_wstring DSN_CONFIG_KEY_DRIVER(L"Driver");
const orska_wstring SERVER(L"Server");
const orska_wstring COGNOS_NAMESPACE(L"Namespace");
const orska_wstring MICROSTRATEGY_LOGINMODE(L"LoginMode");
const orska_wstring UID(L"UID");
const orska_wstring PWD(L"PWD");
const orska_wstring DATABASE(L"Database");

namespace {

/// Buffer sizes of the profile reads, in characters with the terminator.
constexpr int VALUE_BUFFER_SIZE = 260;
constexpr int DRIVER_BUFFER_SIZE = 32;

constexpr char SOURCE[] = "Setup\\VeltraneDSNConfiguration";

/// A throw site of the record.
constexpr TraceSite Site(const char* in_function) { return {in_function, SOURCE, 0}; }

void TraceDsn(const char* in_function, const orska_wstring& in_dsn) {
    ORSKA_TRACE(2, in_function, SOURCE, 0, "DSN \"%s\"", TracedInstaller::ForTrace(in_dsn).c_str());
}

}  // namespace

VeltraneDSNConfiguration::VeltraneDSNConfiguration(const orska_wstring& in_driverDescription)
    : m_driverDescription(in_driverDescription) {}

void VeltraneDSNConfiguration::ParseDSNAttribute(const orska_wstring& in_attributeString) {
    if (in_attributeString.GetLength() == 0) {
        return;
    }
    static const std::wstring pairDelimiter(1, L'\0');
    static const std::wstring entryDelimiter(L"=");
    const std::pair<const orska_wstring*, orska_wstring*> fields[] = {
        {&DSN_CONFIG_KEY_DSN, &m_dsn},
        {&SERVER, &m_server},
        {&COGNOS_NAMESPACE, &m_cognosNamespace},
        {&MICROSTRATEGY_LOGINMODE, &m_microStrategyLoginMode},
        {&UID, &m_uid},
        {&PWD, &m_pwd},
        {&DATABASE, &m_database},
    };
    const std::wstring text = in_attributeString.GetAsPlatformWString();
    const std::wstring_view view(text);
    std::size_t start = 0;
    std::size_t end = view.find(pairDelimiter);
    for (;;) {
        // The cut is as long as the delimiter's absolute position, so that later cuts run on into
        // the entries behind. Harmless and kept: a key that holds a NUL equals no known key, and a
        // value ends at its first NUL. So only what stands before that NUL needs to be looked at; a
        // search through the whole cut would take the square of the list's length.
        const std::wstring_view cut = view.substr(start, end);
        const std::wstring_view entry = cut.substr(0, cut.find(pairDelimiter));
        const std::size_t equals = entry.find(entryDelimiter);
        if (equals != std::wstring_view::npos) {
            const orska_wstring key(entry.data(), equals);
            for (const auto& [name, field] : fields) {
                if (key == *name) {
                    const std::wstring_view value = entry.substr(equals + 1);
                    *field = orska_wstring(value.data(), value.size());
                    break;
                }
            }
        }
        if (end == std::wstring_view::npos) {
            return;
        }
        start = end + 1;
        end = view.find(pairDelimiter, start);
    }
}

void VeltraneDSNConfiguration::Load(const orska_wstring& in_attributeString) {
    ParseDSNAttribute(in_attributeString);
    TraceDsn("Veltrane::ODBC::VeltraneDSNConfiguration::Load", m_dsn);
    if (!TracedInstaller::ValidDSN(m_dsn)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::Load")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_KEYWORD_VALUE));
    }
    const auto read = [this](const orska_wstring& in_key, orska_wstring& out_field) {
        TracedInstaller::GetPrivateProfileString(m_dsn, in_key, orska_wstring(L""), out_field,
                                                 VALUE_BUFFER_SIZE, DSN_CONFIG_KEY_ODBC_INI);
    };
    read(SERVER, m_server);
    read(COGNOS_NAMESPACE, m_cognosNamespace);
    read(MICROSTRATEGY_LOGINMODE, m_microStrategyLoginMode);
    read(UID, m_uid);
    read(PWD, m_pwd);
    read(DATABASE, m_database);
}

void VeltraneDSNConfiguration::RemoveStoredSection() {
    orska_wstring driver;
    const int count = TracedInstaller::GetPrivateProfileString(
        m_dsn, DSN_CONFIG_KEY_DRIVER, orska_wstring(L""), driver, DRIVER_BUFFER_SIZE,
        DSN_CONFIG_KEY_ODBC_INI);
    if (count > 0 && !TracedInstaller::RemoveDSNFromIni(m_dsn)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::RemoveStoredSection")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
}

void VeltraneDSNConfiguration::WriteKey(const orska_wstring& in_key,
                                        const orska_wstring& in_value) {
    if (!TracedInstaller::WritePrivateProfileString(m_dsn, in_key, in_value,
                                                    DSN_CONFIG_KEY_ODBC_INI)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::WriteKey")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
}

/// A key of the section with what is to be written.
struct VeltraneDSNConfiguration::Line {
    const orska_wstring& m_key;
    orska_wstring m_value;
};

/// The lines of the section in their order; trims the optional fields.
std::vector<VeltraneDSNConfiguration::Line> VeltraneDSNConfiguration::TakeLines() {
    // A NULL would remove the key, which is there even when it is empty.
    const auto required = [](const orska_wstring& in_value) {
        return in_value.IsNull() ? orska_wstring(L"") : in_value;
    };
    std::vector<Line> lines = {{DSN_CONFIG_KEY_DRIVER, m_driverDescription},
                               {SERVER, required(m_server)}};
    const auto addOptional = [&](const orska_wstring& in_key, orska_wstring& io_value) {
        const orska_wstring before = io_value;
        if (io_value.IsNull() || io_value.Trim().GetLength() == 0) return;
        // What nobody has changed keeps its outer blanks, as it keeps everything else.
        lines.push_back({in_key, OdbcInstaller::IsAsRead(in_key, before) ? before : io_value});
    };
    addOptional(COGNOS_NAMESPACE, m_cognosNamespace);
    addOptional(MICROSTRATEGY_LOGINMODE, m_microStrategyLoginMode);
    addOptional(UID, m_uid);
    addOptional(PWD, m_pwd);
    lines.push_back({DATABASE, required(m_database)});
    return lines;
}

/// A text that cannot be stored is known before the section is touched, and refused with the code
/// that its write would give: nothing is lost for it. What fails later, a write itself, is not
/// rolled back.
void VeltraneDSNConfiguration::CheckLines(const std::vector<Line>& in_lines) const {
    if (!TracedInstaller::IsWritableDSN(m_dsn, m_driverDescription)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::CheckLines")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_NAME));
    }
    for (const auto& [key, value] : in_lines) {
        if (!TracedInstaller::IsWritableValue(key, value)) {
            ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::CheckLines")),
                        VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
        }
    }
}

void VeltraneDSNConfiguration::Save() {
    TraceDsn("Veltrane::ODBC::VeltraneDSNConfiguration::Save", m_dsn);
    const std::vector<Line> lines = TakeLines();
    CheckLines(lines);
    // One locked read-modify-write. Its destructor still writes what came before a failure.
    OdbcInstaller::Update update;
    RemoveStoredSection();
    if (!TracedInstaller::WriteDSNToIni(m_dsn, m_driverDescription)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::Save")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_NAME));
    }
    for (const auto& [key, value] : lines) WriteKey(key, value);
    if (!update.Commit()) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::Save")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
}

void VeltraneDSNConfiguration::SetDsn(const orska_wstring& in_dsn) {
    if (!TracedInstaller::ValidDSN(in_dsn)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::SetDsn")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
    m_dsn = in_dsn;
}

void VeltraneDSNConfiguration::SetServer(const orska_wstring& in_server) {
    if (in_server.GetLength() == 0) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::SetServer")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
    m_server = in_server;
}

void VeltraneDSNConfiguration::SetDatabase(const orska_wstring& in_database) {
    if (in_database.GetLength() == 0) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::SetDatabase")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
    m_database = in_database;
}

void VeltraneDSNConfiguration::SetCognosNamespace(const orska_wstring& in_cognos_namespace) {
    m_cognosNamespace = in_cognos_namespace;
}

void VeltraneDSNConfiguration::SetMicroStrategyLoginMode(
    const orska_wstring& in_microstrategy_loginmode) {
    m_microStrategyLoginMode = in_microstrategy_loginmode;
}

void VeltraneDSNConfiguration::SetUid(const orska_wstring& in_uid) { m_uid = in_uid; }

void VeltraneDSNConfiguration::SetPwd(const orska_wstring& in_pwd) { m_pwd = in_pwd; }

}  // namespace Veltrane::ODBC
