#include "Setup/VeltraneDSNConfiguration.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "Exceptions/OrskaThrow.h"
#include "Setup/OdbcInstaller.h"
#include "Setup/TracedInstaller.h"
#include "Setup/VeltraneDSNSetupException.h"
#include "tools/trace.h"

namespace Veltrane::ODBC {

using Orska::Support::orska_wstring;
using Orska::Support::TraceSite;

const orska_wstring DSN_CONFIG_KEY_ODBC_INI(L"odbc.ini");
const orska_wstring DSN_CONFIG_KEY_DRIVER(L"Driver");
// Constructed in place: on Windows a text that is destroyed while the library is being loaded keeps
// it loaded until the thread ends, and the thread's end waits for the loader.
const std::array<orska_wstring, DIALOG_FIELDS.size()> DSN_CONFIG_KEYS =
    []<std::size_t... FIELD>(std::index_sequence<FIELD...>) {
    return std::array<orska_wstring, sizeof...(FIELD)>{
        orska_wstring(std::string(DIALOG_FIELDS[FIELD].m_key))...};
}
(std::make_index_sequence<DIALOG_FIELDS.size()>());
const orska_wstring& DSN_CONFIG_KEY_DSN = DSN_CONFIG_KEYS[FieldIndex("DSN")];
const orska_wstring& SERVER = DSN_CONFIG_KEYS[FieldIndex("Server")];
const orska_wstring& COGNOS_NAMESPACE = DSN_CONFIG_KEYS[FieldIndex("Namespace")];
const orska_wstring& MICROSTRATEGY_LOGINMODE = DSN_CONFIG_KEYS[FieldIndex("LoginMode")];
const orska_wstring& UID = DSN_CONFIG_KEYS[FieldIndex("UID")];
const orska_wstring& PWD = DSN_CONFIG_KEYS[FieldIndex("PWD")];
const orska_wstring& DATABASE = DSN_CONFIG_KEYS[FieldIndex("Database")];

namespace {

/// Buffer sizes of the profile reads, in characters with the terminator.
constexpr int VALUE_BUFFER_SIZE = 260;
constexpr int DRIVER_BUFFER_SIZE = 32;

/// The field that names the section. It is not stored as a key.
constexpr std::size_t NAME = FieldIndex("DSN");

constexpr char SOURCE[] = "Setup\\VeltraneDSNConfiguration";

const orska_wstring NO_TEXT(L"");

/// Returns a throw site of this file.
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
    const std::wstring text = in_attributeString.GetAsPlatformWString();
    const std::wstring_view view(text);
    std::size_t start = 0;
    std::size_t end = view.find(pairDelimiter);
    for (;;) {
        // The length of the cut is the delimiter's absolute position, so later cuts run into the
        // entries after it. Harmless and kept: a key with a NUL equals no known key, and a value
        // ends at its first NUL. So only the part before that NUL is searched; searching the whole
        // cut would take quadratic time.
        const std::wstring_view cut = view.substr(start, end);
        const std::wstring_view entry = cut.substr(0, cut.find(pairDelimiter));
        const std::size_t equals = entry.find(entryDelimiter);
        if (equals != std::wstring_view::npos) {
            const orska_wstring key(entry.data(), equals);
            const auto known = std::find(DSN_CONFIG_KEYS.begin(), DSN_CONFIG_KEYS.end(), key);
            if (known != DSN_CONFIG_KEYS.end()) {
                const std::wstring_view value = entry.substr(equals + 1);
                m_values.at(static_cast<std::size_t>(known - DSN_CONFIG_KEYS.begin())) =
                    orska_wstring(value.data(), value.size());
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
    TraceDsn("Veltrane::ODBC::VeltraneDSNConfiguration::Load", GetDsn());
    if (!TracedInstaller::ValidDSN(GetDsn())) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::Load")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_KEYWORD_VALUE));
    }
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (i != NAME) {
            TracedInstaller::GetPrivateProfileString(GetDsn(), DSN_CONFIG_KEYS[i], NO_TEXT,
                                                     m_values[i], VALUE_BUFFER_SIZE,
                                                     DSN_CONFIG_KEY_ODBC_INI);
        }
    }
}

void VeltraneDSNConfiguration::RemoveStoredSection() {
    orska_wstring driver;
    const int count =
        TracedInstaller::GetPrivateProfileString(GetDsn(), DSN_CONFIG_KEY_DRIVER, NO_TEXT, driver,
                                                 DRIVER_BUFFER_SIZE, DSN_CONFIG_KEY_ODBC_INI);
    if (count > 0 && !TracedInstaller::RemoveDSNFromIni(GetDsn())) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::RemoveStoredSection")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
}

void VeltraneDSNConfiguration::WriteKey(const orska_wstring& in_key,
                                        const orska_wstring& in_value) {
    if (!TracedInstaller::WritePrivateProfileString(GetDsn(), in_key, in_value,
                                                    DSN_CONFIG_KEY_ODBC_INI)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::WriteKey")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
}

/// A key of the section and the value to write, which the record owns.
struct VeltraneDSNConfiguration::Line {
    const orska_wstring& m_key;
    const orska_wstring& m_trimmed;
    orska_wstring m_asRead;  ///< NULL for a value that was changed

    const orska_wstring& GetValue() const { return m_asRead.IsNull() ? m_trimmed : m_asRead; }
};

/// Returns the lines of the section in their order. Trims the optional fields.
std::vector<VeltraneDSNConfiguration::Line> VeltraneDSNConfiguration::TakeLines() {
    std::vector<Line> lines;
    lines.reserve(m_values.size());  // the driver in place of the name
    lines.push_back({DSN_CONFIG_KEY_DRIVER, m_driverDescription, {}});
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const orska_wstring& key = DSN_CONFIG_KEYS[i];
        orska_wstring& value = m_values[i];
        if (i == NAME) continue;
        if (DIALOG_FIELDS[i].m_isRequired) {
            // NULL would remove the key, and a required key is written even when it is empty.
            lines.push_back({key, value.IsNull() ? NO_TEXT : value, {}});
            continue;
        }
        if (value.IsNull()) continue;
        // A value that nobody has changed keeps its outer blanks and everything else.
        orska_wstring asRead = OdbcInstaller::IsAsRead(key, value) ? value : orska_wstring();
        if (value.Trim().GetLength() > 0) lines.push_back({key, value, std::move(asRead)});
    }
    return lines;
}

/// Refuses a text that cannot be stored before the section is changed, with the error code that its
/// write would post. A write that fails later is not rolled back.
void VeltraneDSNConfiguration::CheckLines(const std::vector<Line>& in_lines) const {
    if (!TracedInstaller::IsWritableDSN(GetDsn(), m_driverDescription)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::CheckLines")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_NAME));
    }
    for (const Line& line : in_lines) {
        if (!TracedInstaller::IsWritableValue(line.m_key, line.GetValue())) {
            ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::CheckLines")),
                        VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
        }
    }
}

void VeltraneDSNConfiguration::Save() {
    TraceDsn("Veltrane::ODBC::VeltraneDSNConfiguration::Save", GetDsn());
    const std::vector<Line> lines = TakeLines();
    CheckLines(lines);
    // One locked read-modify-write. Its destructor writes what came before a failure.
    OdbcInstaller::Update update;
    RemoveStoredSection();
    if (!TracedInstaller::WriteDSNToIni(GetDsn(), m_driverDescription)) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::Save")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::INVALID_NAME));
    }
    for (const Line& line : lines) WriteKey(line.m_key, line.GetValue());
    if (!update.Commit()) {
        ORSKA_THROW((Site("Veltrane::ODBC::VeltraneDSNConfiguration::Save")),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
}

void VeltraneDSNConfiguration::Set(const DialogField& in_field, const orska_wstring& in_value) {
    const std::size_t index = IndexOf(in_field);
    const bool isLegal = index == NAME ? TracedInstaller::ValidDSN(in_value)
                                       : !in_field.m_isRequired || in_value.GetLength() != 0;
    if (!isLegal) {
        const std::string function =
            "Veltrane::ODBC::VeltraneDSNConfiguration::Set" +
            (index == NAME ? std::string("Dsn") : std::string(in_field.m_key));
        ORSKA_THROW((Site(function.c_str())),
                    VeltraneDSNSetupException(VeltraneDSNSetupException::REQUEST_FAILED));
    }
    m_values[index] = in_value;
}

}  // namespace Veltrane::ODBC
