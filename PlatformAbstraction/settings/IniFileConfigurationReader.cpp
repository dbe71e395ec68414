#include "PlatformAbstraction/settings/IniFileConfigurationReader.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/ICU/TextEncoding.h"
#include "PlatformAbstraction/base/Ascii.h"
#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "PlatformAbstraction/files/TextFile.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tools/NoCancellation.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\IniFileConfigurationReader";
constexpr char PARSE_KEY_VALUE[] = "`anonymous-namespace'::ParseKeyValue";

/// The line up to the first comment sign, even one in quotes, on purpose.
std::string_view CutComment(std::string_view in_line) {
    const std::size_t sign = in_line.find('#');
    const std::string_view line = in_line.substr(0, sign);
    return line.substr(0, line.find(';'));
}

/// ASCII letters only: a byte above 127 is part of a longer character in UTF-8.
void ToUpper(std::string_view in_text, std::string& out_upper) {
    out_upper.resize(in_text.size());
    for (std::size_t index = 0; index < in_text.size(); ++index) {
        out_upper[index] = ToUpperAscii(in_text[index]);
    }
}

/// Decodes bytes in GetByteTextEncoding.
class Decoder {
public:
    std::u16string_view Decode(std::string_view in_bytes) {
        m_units.resize(in_bytes.size());
        if (!m_isAsciiSuperset || !WidenText(in_bytes, m_units.data())) {
            m_units = orska_wstring(in_bytes.data(), in_bytes.size(), m_encoding).GetView();
        }
        return m_units;
    }

private:
    EncodingType m_encoding = GetByteTextEncoding();
    bool m_isAsciiSuperset = EncodingInfo::IsAsciiSuperset(m_encoding);
    std::u16string m_units;  ///< kept for its memory
};

struct KeyValue {
    std::string_view m_key;
    std::string_view m_value;
};

/// @param in_line  trimmed
KeyValue ParseKeyValue(std::string_view in_line) {
    if (in_line.empty()) {
        ORSKA_THROW((TraceSite{PARSE_KEY_VALUE, SOURCE, 65}), std::exception());
    }
    const std::size_t equals = in_line.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        ORSKA_THROW((TraceSite{PARSE_KEY_VALUE, SOURCE, 75}), std::exception());
    }
    const std::string_view key = Trim(in_line.substr(0, equals));
    std::string_view value = Trim(in_line.substr(equals + 1));
    if (value.size() > 1 && (value.front() == '"' || value.front() == '\'')) {
        if (value.find(value.front(), 1) != value.size() - 1) {
            ORSKA_THROW((TraceSite{PARSE_KEY_VALUE, SOURCE, 102}), std::exception());
        }
        value = value.substr(1, value.size() - 2);
    }
    return {key, value};
}

/// Turns lines into entries of a configuration map.
class LineLoader {
public:
    LineLoader(ConfigurationMap& io_configuration, std::optional<orska_wstring> in_wantedSection,
               bool in_isCaseSensitive)
        : m_configuration(io_configuration),
          m_wantedSection(std::move(in_wantedSection)),
          m_isCaseSensitive(in_isCaseSensitive) {
        EnterSection({});
    }

    void LoadLine(std::string_view in_line) {
        const std::string_view line = Trim(CutComment(in_line));
        if (line.empty()) {
            return;
        }
        if (line.front() == '[' && line.back() == ']') {
            EnterSection(line.substr(1, line.size() - 2));
            return;
        }
        // A malformed line is an error in every section.
        const KeyValue entry = ParseKeyValue(line);
        if (m_isWanted) {
            Store(entry);
        }
    }

    /// Sorts the sections now, so that the next read of each does not have to.
    void Finish() {
        for (const auto& entry : m_configuration) {
            entry.second.Sort();
        }
    }

private:
    void EnterSection(std::string_view in_name) {
        ToUpper(in_name, m_upper);
        const std::u16string_view name = m_keyDecoder.Decode(m_upper);
        m_sectionName = orska_wstring(name.data(), name.size());
        m_isWanted = !m_wantedSection || *m_wantedSection == m_sectionName;
        m_section = nullptr;
    }

    void Store(const KeyValue& in_entry) {
        if (m_section == nullptr) {
            m_section = &m_configuration[m_sectionName];
        }
        std::string_view key = in_entry.m_key;
        if (!m_isCaseSensitive) {
            ToUpper(key, m_upper);
            key = m_upper;
        }
        m_section->SetText(m_keyDecoder.Decode(key), m_valueDecoder.Decode(in_entry.m_value));
    }

    ConfigurationMap& m_configuration;
    std::optional<orska_wstring> m_wantedSection;  ///< in upper case; absent: all
    bool m_isCaseSensitive;
    orska_wstring m_sectionName;
    bool m_isWanted = true;
    std::string m_upper;  ///< kept for its memory
    Decoder m_keyDecoder;
    Decoder m_valueDecoder;
    SectionMap* m_section = nullptr;  ///< the current section's map, once it has a key
};

/// Null when the file cannot be opened, which is not an error: there are other sources.
std::unique_ptr<TextFile> OpenForReading(const orska_wstring& in_path) {
    try {
        return std::make_unique<TextFile>(in_path, TextFile::MODE_READ);
    } catch (const ProductException&) {
        return nullptr;
    }
}

}  // namespace

bool IniFileConfigurationReader::LoadConfiguration(ConfigurationMap& io_configuration,
                                                   const orska_wstring& in_filePath,
                                                   const orska_wstring* in_section) const {
    const orska_wstring path = in_filePath.IsEmpty() ? in_filePath : ResolvePath(in_filePath);
    const std::unique_ptr<TextFile> file = path.IsEmpty() ? nullptr : OpenForReading(path);
    if (file == nullptr) {
        return false;
    }
    const NoCancellation noCancellation;  // the catch block below would swallow a cancellation
    constexpr char FUNCTION[] = "Orska::Support::IniFileConfigurationReader::LoadConfiguration";
    std::uint64_t lineNumber = 1;
    try {
        std::optional<orska_wstring> wantedSection;
        if (in_section != nullptr) {
            wantedSection = in_section->IsNull() ? orska_wstring("") : *in_section;
            wantedSection->ToUpper();
        }
        LineLoader loader(io_configuration, std::move(wantedSection), m_isCaseSensitive);
        for (std::string line; file->ReadLine(line); ++lineNumber) {
            loader.LoadLine(line);
        }
        loader.Finish();
        if (file->HasReadFailed()) {
            ORSKA_THROW((TraceSite{FUNCTION, SOURCE, 0}), std::exception());
        }
    } catch (...) {
        const std::vector<orska_wstring> msgParams{file->GetFileName(),
                                                   orska_wstring(std::to_wstring(lineNumber))};
        ORSKA_THROW((TraceSite{FUNCTION, SOURCE, 301}),
                    ProductException((L"IniParseError"), msgParams));
    }
    return true;
}

bool IniFileConfigurationReader::LoadConfiguration(SectionMap& out_section,
                                                   const orska_wstring& in_filePath,
                                                   const orska_wstring& in_section) const {
    ConfigurationMap configuration;
    if (!LoadConfiguration(configuration, in_filePath, &in_section)) {
        return false;
    }
    // The map has the wanted section only, or nothing.
    out_section = configuration.empty() ? SectionMap() : std::move(configuration.begin()->second);
    return true;
}

orska_wstring IniFileConfigurationReader::ResolvePath(const orska_wstring& in_filePath) const {
    if (m_resolveIniPathFromModule && FileSystemUtils::IsJoinedToDirectory(in_filePath)) {
        // Without a known directory there is no file: a relative path could be somebody else's.
        const orska_wstring directory = FileSystemUtils::GetModuleDirectory();
        return directory.IsEmpty() ? directory : directory + in_filePath;
    }
    return in_filePath;
}

}  // namespace Orska::Support
