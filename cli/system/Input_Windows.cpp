#include <memory>

#include "PlatformAbstraction/base/SystemError.h"
#include "cli/system/Input.h"
#include "cli/system/OpenExisting.h"

namespace Veltrane::Cli {

InputReader OpenInput(const std::string& in_path) {
    const auto file = std::make_shared<WindowsHandle>(OpenExisting(ToPath(in_path)));
    if (!in_path.empty() && !file->IsOpen()) {
        FailToRead(in_path, Orska::Support::DescribeLastError());
    }
    return [in_path, file](char* out_bytes, std::size_t in_size) {
        const HANDLE handle = in_path.empty() ? GetStdHandle(STD_INPUT_HANDLE) : file->Get();
        DWORD count = 0;
        // A pipe whose writer has gone is at its end.
        if (ReadFile(handle, out_bytes, static_cast<DWORD>(in_size), &count, nullptr) == FALSE &&
            GetLastError() != ERROR_BROKEN_PIPE) {
            FailToRead(in_path, Orska::Support::DescribeLastError());
        }
        return std::size_t{count};
    };
}

}  // namespace Veltrane::Cli
