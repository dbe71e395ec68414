#include <csignal>

#include "cli/dsn/HeldSignals.h"

namespace Veltrane::Cli {

struct HeldSignals::State {
    sigset_t m_before;
};

HeldSignals::HeldSignals() : m_state(std::make_unique<State>()) {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &m_state->m_before);
}

HeldSignals::~HeldSignals() { sigprocmask(SIG_SETMASK, &m_state->m_before, nullptr); }

}  // namespace Veltrane::Cli
