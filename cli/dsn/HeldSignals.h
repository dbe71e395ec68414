/// Holds back the signals that end a program from outside (Ctrl-C, a closed terminal, kill) while a
/// DSN is half way through its change. They act when the object ends.
#ifndef CLI_HELDSIGNALS_H
#define CLI_HELDSIGNALS_H

#include <memory>

namespace Veltrane::Cli {

class HeldSignals {
public:
    HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace Veltrane::Cli

#endif
