#include <pthread.h>

#include "tools/NoCancellation.h"

namespace Orska {

NoCancellation::NoCancellation() noexcept {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before);
}

NoCancellation::~NoCancellation() { pthread_setcancelstate(m_before, nullptr); }

}  // namespace Orska
