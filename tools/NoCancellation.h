/// While one lives, the calling thread is not cancelled; a cancellation waits until it is gone. On
/// Linux cancelling unwinds the thread like an exception that must not be caught for good, so code
/// that lets nothing pass would end the process instead of the thread. Windows has no such thing.
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
