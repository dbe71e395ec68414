/// Postpones a cancellation of the calling thread until the object is destroyed. On Linux
/// cancelling unwinds the thread like an exception that has to be rethrown, so noexcept code would
/// end the process instead of the thread. Windows has no cancellation.
#ifndef TOOLS_NOCANCELLATION_H
#define TOOLS_NOCANCELLATION_H

namespace Orska {

class NoCancellation {
public:
    NoCancellation() noexcept;
    ~NoCancellation();
    NoCancellation(const NoCancellation&) = delete;
    NoCancellation& operator=(const NoCancellation&) = delete;

private:
    int m_before = 0;
};

}  // namespace Orska

#endif
