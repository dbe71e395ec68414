#include "PlatformAbstraction/files/FileSystemUtils.h"

#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/files/OrskaUtility.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\FileSystemUtils_Windows";

}  // namespace

void FileSystemUtils::CreateFileDirectory(const orska_wstring& in_path) {
    const std::size_t separator = in_path.GetView().find_last_of(u"/\\");
    if (separator == std::u16string_view::npos) {
        return;
    }
    const orska_wstring directory = in_path.Substring(0, static_cast<std::int32_t>(separator) + 1);
    if (IsDirectory(directory) || CreateOneDirectory(directory)) {
        return;
    }
    const std::uint32_t error = GetLastErrorCode();
    const std::vector<orska_wstring> msgParams{in_path, GetLastErrorText(error)};
    ORSKA_THROW((TraceSite{"Orska::Support::FileSystemUtils::CreateFileDirectory", SOURCE, 0}),
                ProductException((L"CannotOpenFile"), msgParams));
}

bool FileSystemUtils::IsJoinedToDirectory(const orska_wstring& in_path) {
    return in_path.IsEmpty() || in_path.GetView().front() == u'.' || IsRelative(in_path);
}

}  // namespace Orska::Support
