#include "cli/dsn/Import.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/ICUUtils.h"
#include "PlatformAbstraction/strings/orska_wstring.h"
#include "Setup/OdbcIniLine.h"
#include "VeltraneDialog/Utf8.h"
#include "cli/dsn/DsnPlan.h"
#include "cli/system/CommandError.h"
#include "cli/system/Words.h"

namespace Veltrane::Cli {

namespace {

using Orska::Support::EncodingType;

EncodingType GetEncoding(const ImportWish& in_wish) {
    if (in_wish.m_encoding.empty()) return EncodingType::ENC_CP1252;
    try {
        return Orska::Support::ICUUtils::GetEncodingEnum(in_wish.m_encoding);
    } catch (const Orska::Support::ErrorException&) {
        Refuse("--encoding names an encoding that is not known.");
    }
}

/// Chooses the DSNs of a file to import, and notes those left out.
class Chooser {
public:
    Chooser(const ImportWish& in_wish, std::vector<std::string>& out_notes)
        : m_wish(in_wish),
          m_driverThere(in_wish.m_driverThere.empty() ? in_wish.m_driver : in_wish.m_driverThere),
          m_notes(out_notes) {}

    std::vector<DsnDescription> Run(ImportedDsns in_dsns) {
        // A user's DSN hides a system DSN of the same name.
        std::stable_sort(in_dsns.begin(), in_dsns.end(),
                         [](const ImportedDsn& in_left, const ImportedDsn& in_right) {
                             return in_left.m_isSystem < in_right.m_isSystem;
                         });
        std::vector<DsnDescription> descriptions;
        std::unordered_set<std::string> names;
        for (const ImportedDsn& dsn : in_dsns) {
            const Entries values(dsn.m_values);
            const Driver driver = FindDriver(dsn.m_listed, WithoutBraces(values.Get("Driver")));
            std::string reason = WhyLeftOut(dsn, driver);
            if (reason.empty() && !names.insert(FoldCase(dsn.m_name)).second) {
                reason = "there is one of this name before it";
            }
            if (reason.empty()) {
                descriptions.push_back(Describe(dsn, driver, values));
            } else {
                m_notes.push_back(Quote(dsn.m_name) + " is left out: " + reason + ".");
            }
        }
        if (m_areSecretsLeftOut) {
            m_notes.emplace_back("Passwords are left out; --show-secrets takes them, too.");
        }
        return descriptions;
    }

private:
    struct Driver {
        std::string m_name;
        bool m_isOurs;
    };

    /// A file can name the driver in its list, and in the DSN by name or by the path of a library,
    /// which means nothing here.
    Driver FindDriver(const std::string& in_listed, const std::string& in_own) const {
        const bool isOurs = EqualsIgnoringCase(in_own, m_driverThere) ||
                            EqualsIgnoringCase(in_listed, m_driverThere);
        const bool isName = !in_own.empty() && in_own.find_first_of("/\\") == std::string::npos;
        return {isName || in_listed.empty() ? in_own : in_listed, isOurs};
    }

    std::string WhyLeftOut(const ImportedDsn& in_dsn, const Driver& in_driver) const {
        if (in_dsn.m_is32Bit) return "it is for 32-bit programs";
        if (in_driver.m_name.empty()) return "it has no driver";
        if (in_driver.m_isOurs || m_wish.m_areAllTaken) return {};
        return "it is one of the driver " + Quote(in_driver.m_name);
    }

    DsnDescription Describe(const ImportedDsn& in_dsn, const Driver& in_driver,
                            const Entries& in_values) {
        DsnDescription description;
        description.m_name = in_dsn.m_name;
        description.m_driver = in_driver.m_isOurs ? m_wish.m_driver : in_driver.m_name;
        for (const auto& [key, value] : in_values) {
            if (!WhyNoKey(key).empty() || (FindField(key) != nullptr && value.empty())) continue;
            if (!ODBC::OdbcIniLine::IsCarriableLine(key, value)) {
                m_notes.push_back(Quote(in_dsn.m_name) + ": " + key +
                                  " is left out: no line of odbc.ini can hold it unchanged.");
            } else if (IsSecretKey(key) && !m_wish.m_areSecretsTaken) {
                m_areSecretsLeftOut = true;
            } else {
                description.m_values.Set(CanonicalKey(key), value);
            }
        }
        return description;
    }

    const ImportWish& m_wish;
    const std::string& m_driverThere;
    std::vector<std::string>& m_notes;
    bool m_areSecretsLeftOut = false;
};

ImportedDsns Read(const std::string& in_text, const ImportWish& in_wish,
                  std::vector<std::string>& out_notes) {
    if (IsRegistryExport(in_text)) return ReadRegistryExport(in_text, in_wish, out_notes);
    if (GuessFormat(in_text) == DescriptionFormat::JSON) {
        return ReadPowerShellJson(in_text, in_wish, out_notes);
    }
    return ReadForeignIni(in_text, in_wish, out_notes);
}

}  // namespace

std::string WithoutBraces(const std::string& in_text) {
    if (in_text.size() < 2 || in_text.front() != '{' || in_text.back() != '}') return in_text;
    std::string text;
    for (std::size_t at = 1; at + 1 < in_text.size(); ++at) {
        text += in_text[at];
        if (in_text[at] == '}' && in_text[at + 1] == '}') ++at;
    }
    return text;
}

std::string DecodeAnsi(const std::string& in_bytes, const ImportWish& in_wish) {
    const EncodingType encoding = GetEncoding(in_wish);
    std::u16string units;
    if (ODBC::DecodeUtf8(in_bytes, units)) return in_bytes;
    std::string text =
        Orska::Support::orska_wstring(in_bytes.data(), in_bytes.size(), encoding).GetAsUtf8();
    constexpr const char* REPLACEMENT = "\xEF\xBF\xBD";
    if (text.find(REPLACEMENT) != std::string::npos) {
        FailWith(in_wish.m_source + " has bytes that are invalid in its encoding.");
    }
    return text;
}

void TakeList(ImportedDsns& io_dsns, std::vector<std::string>& out_notes) {
    const auto found = std::find_if(io_dsns.begin(), io_dsns.end(), [](const ImportedDsn& in_dsn) {
        return EqualsIgnoringCase(in_dsn.m_name, "ODBC Data Sources");
    });
    if (found == io_dsns.end()) return;
    const std::vector<Entry> list = std::move(found->m_values);
    io_dsns.erase(found);
    std::unordered_map<std::string, ImportedDsn*> known;
    for (ImportedDsn& dsn : io_dsns) known.emplace(FoldCase(dsn.m_name), &dsn);
    for (const auto& [name, driver] : list) {
        const auto dsn = known.find(FoldCase(name));
        if (dsn == known.end()) {
            out_notes.push_back(Quote(name) + " is left out: it is listed, but has no values.");
        } else if (dsn->second->m_listed.empty()) {
            dsn->second->m_listed = driver;
        }
    }
}

std::vector<DsnDescription> ImportDsns(std::string in_text, const ImportWish& in_wish,
                                       std::vector<std::string>& out_notes) {
    const auto fail = [&in_wish](const std::string& in_reason) {
        FailWith(in_wish.m_source + in_reason);
    };
    if (Orska::Support::Trim(in_text).empty()) fail(" is empty: it has no DSN.");
    if (in_text.find('\0') != std::string::npos) {
        fail(" is not text, or is UTF-16 without a byte order mark.");
    }
    in_text = DecodeAnsi(in_text, in_wish);
    ImportedDsns dsns = Read(in_text, in_wish, out_notes);
    if (dsns.empty()) fail(" has no DSN.");
    if (in_wish.m_isNameGiven && (dsns.size() != 1 || dsns.front().m_name != in_wish.m_name)) {
        Refuse("--name is for a file DSN; " + in_wish.m_source + " has the names of its DSNs.");
    }
    return Chooser(in_wish, out_notes).Run(std::move(dsns));
}

}  // namespace Veltrane::Cli
