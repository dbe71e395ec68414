#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "PlatformAbstraction/base/SystemError.h"
#include "Setup/SystemCalls.h"
#include "cli/system/Input.h"

namespace Veltrane::Cli {

InputReader OpenInput(const std::string& in_path) {
    const auto file = std::make_shared<ODBC::SystemCalls::Descriptor>();
    if (!in_path.empty()) {
        *file =
            ODBC::SystemCalls::Descriptor(open(in_path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
        if (!file->IsOpen()) FailToRead(in_path, Orska::Support::DescribeLastError());
    }
    return [in_path, file](char* out_bytes, std::size_t in_size) {
        const int handle = in_path.empty() ? STDIN_FILENO : file->Get();
        ssize_t count = 0;
        do {
            count = read(handle, out_bytes, in_size);
        } while (count < 0 && errno == EINTR);
        if (count < 0) FailToRead(in_path, Orska::Support::DescribeLastError());
        return static_cast<std::size_t>(count);
    };
}

}  // namespace Veltrane::Cli
