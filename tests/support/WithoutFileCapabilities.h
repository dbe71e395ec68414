/// Gives up root's rights over files, for tests of what others may not do. Unlike another user, the
/// process can still reach its scratch folder anywhere.
#ifndef TESTS_SUPPORT_WITHOUTFILECAPABILITIES_H
#define TESTS_SUPPORT_WITHOUTFILECAPABILITIES_H

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

namespace Orska::Support {

/// While one exists, this thread has no rights beyond those of its user.
class WithoutFileCapabilities {
public:
    WithoutFileCapabilities() {
        syscall(SYS_capget, &m_header, m_before);
        __user_cap_data_struct wanted[2] = {m_before[0], m_before[1]};
        wanted[0].effective &= ~(Bit(CAP_DAC_OVERRIDE) | Bit(CAP_DAC_READ_SEARCH));
        syscall(SYS_capset, &m_header, wanted);
    }
    WithoutFileCapabilities(const WithoutFileCapabilities&) = delete;
    WithoutFileCapabilities& operator=(const WithoutFileCapabilities&) = delete;
    ~WithoutFileCapabilities() { syscall(SYS_capset, &m_header, m_before); }

private:
    static std::uint32_t Bit(unsigned in_capability) { return 1U << in_capability; }
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[2] = {};
};

}  // namespace Orska::Support

#endif
