#include <hivex.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unicode/uchar.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "PlatformAbstraction/files/OrskaUtility.h"
#include "PlatformAbstraction/settings/RegistryKey.h"
#include "tools/trace.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\RegistryKey_Linux";

template <typename Type>
using Allocated = std::unique_ptr<Type, decltype(&std::free)>;

template <typename Type>
Allocated<Type> Own(Type* in_allocated) {
    return {in_allocated, &std::free};
}

std::string FindHome() {
    const char* home = secure_getenv("HOME");
    if (home != nullptr && home[0] == '/') {  // a relative one could be somebody else's
        return home;
    }
    passwd entry;
    passwd* found = nullptr;
    char buffer[4096];
    getpwuid_r(getuid(), &entry, buffer, sizeof buffer, &found);
    return found != nullptr ? found->pw_dir : "";
}

std::string FindHiveFile(RegistryKey::Root in_root) {
    const bool isMachine = in_root == RegistryKey::Root::LOCAL_MACHINE;
    if (const char* named =
            secure_getenv(isMachine ? "VELTRANE_MACHINE_HIVE" : "VELTRANE_USER_HIVE")) {
        return named;
    }
    if (isMachine) {
        return "/etc/veltrane/machine.hive";
    }
    const char* configuration = secure_getenv("XDG_CONFIG_HOME");
    const bool isUsable = configuration != nullptr && configuration[0] == '/';
    return (isUsable ? std::string(configuration) : FindHome() + "/.config") +
           "/veltrane/user.hive";
}

void TraceUnreadable(const std::string& in_file, int in_error) {
    ORSKA_TRACE(1, "Orska::Support::RegistryKey::Open", SOURCE, 0, "Cannot read the hive '%s': %s",
                in_file.c_str(),
                GetLastErrorText(static_cast<std::uint32_t>(in_error)).GetAsUtf8().c_str());
}

/// Null for a hive that is missing or cannot be read.
std::shared_ptr<hive_h> OpenHive(const std::string& in_file) {
    struct stat status;
    if (stat(in_file.c_str(), &status) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) {
            TraceUnreadable(in_file, errno);
        }
        return nullptr;
    }
    if (!S_ISREG(status.st_mode)) {  // opening a FIFO would wait for its other end
        TraceUnreadable(in_file, S_ISDIR(status.st_mode) ? EISDIR : ESPIPE);
        return nullptr;
    }
    // Opened for writing, because hivex then reads the file into memory. Otherwise it maps the
    // file, and one that shrinks meanwhile would kill the process. Nothing is ever written back.
    hive_h* hive = hivex_open(in_file.c_str(), HIVEX_OPEN_WRITE);
    if (hive == nullptr) {
        TraceUnreadable(in_file, errno);
        return nullptr;
    }
    return {hive, &hivex_close};
}

/// Frees a name from hivex and returns its text; NULL if hivex could not read it.
orska_wstring TakeName(char* in_name) {
    const auto name = Own(in_name);
    orska_wstring text;
    if (name != nullptr) {
        text.SetFromUtf8(name.get(), orska_wstring::NUL_TERMINATED);
    }
    return text;
}

/// Copies a name and a NUL, if both fit.
bool CopyName(const orska_wstring& in_name, std::span<char16_t> out_name,
              std::uint32_t& out_length) {
    const std::u16string_view name = in_name.GetView();
    if (in_name.IsNull() || name.size() >= out_name.size()) {
        return false;
    }
    *std::copy(name.begin(), name.end(), out_name.begin()) = u'\0';
    out_length = static_cast<std::uint32_t>(name.size());
    return true;
}

/// Copies an array that ends with a zero, and frees it; false if hivex could not read it.
bool TakeHandles(std::size_t* in_handles, std::vector<std::size_t>& out_handles) {
    const auto handles = Own(in_handles);
    for (const std::size_t* next = handles.get(); next != nullptr && *next != 0; ++next) {
        out_handles.push_back(*next);
    }
    return handles != nullptr;
}

/// Compares names as Windows does: code unit by code unit, in simple upper case. "ß" is not "SS".
bool IsSameName(std::u16string_view in_left, std::u16string_view in_right) {
    const auto upper = [](char16_t in_unit) {
        const auto mapped = static_cast<char16_t>(u_toupper(in_unit));
        // Windows pairs letters both ways or not at all: dotless i and long s are not I and S.
        return u_tolower(mapped) == in_unit ? mapped : in_unit;
    };
    return std::equal(in_left.begin(), in_left.end(), in_right.begin(), in_right.end(),
                      [&](char16_t in_a, char16_t in_b) { return upper(in_a) == upper(in_b); });
}

hive_node_h FindChild(hive_h* in_hive, hive_node_h in_node, std::u16string_view in_name) {
    std::vector<hive_node_h> children;
    TakeHandles(hivex_node_children(in_hive, in_node), children);
    for (const hive_node_h child : children) {
        if (IsSameName(TakeName(hivex_node_name(in_hive, child)).GetView(), in_name)) {
            return child;
        }
    }
    return 0;
}

/// Walks down a path; 0 when there is no such key. Windows treats several separators as one and
/// refuses one at the start.
hive_node_h FindNode(hive_h* in_hive, hive_node_h in_node, const orska_wstring& in_path) {
    std::u16string_view rest = in_path.GetView();
    if (rest.starts_with(u'\\')) {
        return 0;
    }
    while (in_node != 0 && !rest.empty()) {
        const std::u16string_view name = rest.substr(0, rest.find(u'\\'));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (!name.empty()) {
            in_node = FindChild(in_hive, in_node, name);
        }
    }
    return in_node;
}

struct Value {
    orska_wstring m_name;  ///< NULL when the name or the data cannot be read
    std::uint32_t m_type = 0;
    std::string m_data;
};

/// Reads the data too, not only their size: in a damaged hive the size can be anything.
Value ReadValue(hive_h* in_hive, hive_value_h in_value) {
    hive_type type = hive_t_REG_NONE;
    std::size_t size = 0;
    const auto data = Own(hivex_value_value(in_hive, in_value, &type, &size));
    Value value;
    if (data != nullptr) {
        value.m_name = TakeName(hivex_value_key(in_hive, in_value));
        value.m_data.assign(data.get(), size);
        // Copied, not converted: a hive can hold any number, and the enumeration has only some.
        static_assert(sizeof type == sizeof value.m_type);
        std::memcpy(&value.m_type, &type, sizeof type);
    }
    return value;
}

}  // namespace

struct RegistryKey::State {
    std::shared_ptr<hive_h> m_hive;
    hive_node_h m_node = 0;
    bool m_isReadable = false;  ///< whether the lists of sub-keys and values could be read
    std::vector<hive_node_h> m_children;
    std::vector<Value> m_values;

    State(std::shared_ptr<hive_h> in_hive, hive_node_h in_node)
        : m_hive(std::move(in_hive)), m_node(in_node) {
        std::vector<hive_value_h> values;
        m_isReadable = TakeHandles(hivex_node_children(m_hive.get(), m_node), m_children) &&
                       TakeHandles(hivex_node_values(m_hive.get(), m_node), values);
        for (const hive_value_h value : values) {
            m_values.push_back(ReadValue(m_hive.get(), value));
        }
    }
};

RegistryKey::RegistryKey() noexcept = default;
RegistryKey::RegistryKey(RegistryKey&&) noexcept = default;
RegistryKey& RegistryKey::operator=(RegistryKey&&) noexcept = default;
RegistryKey::~RegistryKey() = default;

bool RegistryKey::Open(Root in_root, const orska_wstring& in_path) {
    std::shared_ptr<hive_h> hive = OpenHive(FindHiveFile(in_root));
    const hive_node_h node =
        hive == nullptr ? 0 : FindNode(hive.get(), hivex_root(hive.get()), in_path);
    if (node != 0) {
        m_state = std::make_unique<State>(std::move(hive), node);
    }
    return node != 0;
}

bool RegistryKey::OpenSubKey(const orska_wstring& in_path, RegistryKey& out_key) const {
    const hive_node_h node = FindNode(m_state->m_hive.get(), m_state->m_node, in_path);
    if (node != 0) {
        out_key.m_state = std::make_unique<State>(m_state->m_hive, node);
    }
    return node != 0;
}

bool RegistryKey::QueryInfo(Info& out_info) const {
    if (!m_state->m_isReadable) {
        return false;
    }
    out_info = {static_cast<std::uint32_t>(m_state->m_children.size()),
                static_cast<std::uint32_t>(m_state->m_values.size()), 0, 0};
    for (const Value& value : m_state->m_values) {
        out_info.m_longestValueName = std::max(
            out_info.m_longestValueName, static_cast<std::uint32_t>(value.m_name.GetLength()));
        out_info.m_longestData =
            std::max(out_info.m_longestData, static_cast<std::uint32_t>(value.m_data.size()));
    }
    return true;
}

bool RegistryKey::EnumValue(std::uint32_t in_index, std::span<char16_t> out_name,
                            std::uint32_t& out_nameLength, std::uint32_t& out_type,
                            std::span<std::byte> out_data, std::uint32_t& out_dataLength) const {
    if (in_index >= m_state->m_values.size()) {
        return false;
    }
    const Value& value = m_state->m_values[in_index];
    if (value.m_data.size() > out_data.size() ||
        !CopyName(value.m_name, out_name, out_nameLength)) {
        return false;
    }
    std::memcpy(out_data.data(), value.m_data.data(), value.m_data.size());
    out_type = value.m_type;
    out_dataLength = static_cast<std::uint32_t>(value.m_data.size());
    return true;
}

bool RegistryKey::EnumKey(std::uint32_t in_index, std::span<char16_t> out_name,
                          std::uint32_t& out_nameLength) const {
    return in_index < m_state->m_children.size() &&
           CopyName(TakeName(hivex_node_name(m_state->m_hive.get(), m_state->m_children[in_index])),
                    out_name, out_nameLength);
}

}  // namespace Orska::Support
