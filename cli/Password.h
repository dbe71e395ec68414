/// Where a password comes from, so that it never stands on a command line.
#ifndef CLI_PASSWORD_H
#define CLI_PASSWORD_H

#include <string>

namespace Veltrane::Cli {

/// At most one is given.
struct PasswordSource {
    bool m_isInput = false;   ///< the first line of standard input
    bool m_isPrompt = false;  ///< asked for on the terminal
    std::string m_file;       ///< the first line of this file
    std::string m_variable;   ///< this environment variable

    bool IsGiven() const {
        return m_isInput || m_isPrompt || !m_file.empty() || !m_variable.empty();
    }
};

/// The caller wipes what it gets.
/// @throws CommandError when there is none to be had
std::string ReadPassword(const PasswordSource& in_source);

}  // namespace Veltrane::Cli

#endif
