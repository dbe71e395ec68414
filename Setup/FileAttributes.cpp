#include "Setup/FileAttributes.h"

#include <sys/types.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <string_view>

#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC::FileAttributes {

namespace {

constexpr char ACCESS_LIST[] = "system.posix_acl_access";
constexpr char NETWORK_ACCESS_LIST[] = "system.nfs4_acl";
/// The system's limit for one attribute and for the list of names.
constexpr std::size_t MAX_ATTRIBUTE = 65536;
constexpr std::size_t USUAL_ATTRIBUTE = 256;

/// Calls with a buffer of the usual size, and again with the largest one if that is too small.
/// @return false when the call fails
template <typename Call>
bool ReadBytes(const Call& in_call, std::string& out_bytes) {
    char usual[USUAL_ATTRIBUTE];
    ssize_t size = in_call(usual, sizeof usual);
    if (size >= 0) {
        out_bytes.assign(usual, static_cast<std::size_t>(size));
        return true;
    }
    out_bytes.resize(errno == ERANGE ? MAX_ATTRIBUTE : 0);
    if (!out_bytes.empty()) size = in_call(out_bytes.data(), out_bytes.size());
    out_bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return size >= 0;
}

bool GetAttribute(int in_handle, const char* in_name, std::string& out_value) {
    return ReadBytes(
        [&](char* out_bytes, std::size_t in_size) {
            return SystemCalls::GetAttribute(in_handle, in_name, out_bytes, in_size);
        },
        out_value);
}

bool SetAttribute(int in_handle, const char* in_name, const std::string& in_value) {
    return SystemCalls::SetAttribute(in_handle, in_name, in_value.data(), in_value.size()) == 0;
}

bool IsWithoutAttribute() { return errno == ENODATA || errno == ENOTSUP; }

/// Signatures belong to the old bytes and capabilities to programs, so neither is copied.
bool IsCopied(std::string_view in_attribute) {
    return in_attribute.starts_with("user.") || in_attribute == "security.selinux" ||
           in_attribute == "security.SMACK64" || in_attribute == NETWORK_ACCESS_LIST;
}

}  // namespace

CopyResult CopyAccessList(int in_from, int in_to) {
    std::string list;
    if (GetAttribute(in_from, ACCESS_LIST, list)) {
        if (SetAttribute(in_to, ACCESS_LIST, list)) return {nullptr, 0, true};
        return {"cannot keep the access list", errno};
    }
    if (!IsWithoutAttribute()) return {"cannot read the access list", errno};
    // A list inherited from the directory grants rights that the old file did not.
    const bool isNone = !GetAttribute(in_to, ACCESS_LIST, list) && IsWithoutAttribute();
    if (isNone || SystemCalls::RemoveAttribute(in_to, ACCESS_LIST) == 0 || IsWithoutAttribute()) {
        return {};
    }
    return {"cannot remove the access list of the directory", errno};
}

CopyResult CopyExtendedAttributes(int in_from, int in_to) {
    std::string names;
    ReadBytes(
        [in_from](char* out_names, std::size_t in_size) {
            return SystemCalls::ListAttributes(in_from, out_names, in_size);
        },
        names);
    std::string value;
    for (std::size_t i = 0; i < names.size(); i = names.find('\0', i) + 1) {
        const char* const name = names.c_str() + i;
        if (!IsCopied(name)) continue;
        const bool isKept = GetAttribute(in_from, name, value) && SetAttribute(in_to, name, value);
        if (!isKept && std::string_view(name) == NETWORK_ACCESS_LIST) {
            return {"cannot keep the access list", errno};
        }
    }
    return {};
}

}  // namespace Veltrane::ODBC::FileAttributes
