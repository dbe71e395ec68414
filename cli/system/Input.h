/// What the tool reads: a file, or standard input. Bytes are handed on as they come; nothing keeps
/// them.
#ifndef CLI_INPUT_H
#define CLI_INPUT_H

#include <cstddef>
#include <memory>
#include <string>

namespace Veltrane::Cli {

/// The longest line that is read, in bytes.
inline constexpr std::size_t MAX_LINE = 64 << 10;

class Input {
public:
    /// @param in_path  empty: standard input, which is not closed
    /// @throws CommandError EXIT_FAILED with path and reason, as each operation
    explicit Input(const std::string& in_path);
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    ~Input();

    /// @return bytes; 0 at the end
    std::size_t Read(char* out_bytes, std::size_t in_size) const;
    [[noreturn]] void Fail(const std::string& in_reason) const;

private:
    struct State;
    std::string m_path;
    std::unique_ptr<State> m_state;
};

/// The first line, without its end.
/// @param in_path  empty: standard input, which is not read further than the line
/// @throws CommandError EXIT_FAILED with path and reason, and for a line of more than 64 KiB
std::string ReadFirstLine(const std::string& in_path);

/// All of a file, or of standard input if the path is empty.
/// @throws CommandError EXIT_FAILED with path and reason, and for more than 256 MiB
std::string ReadAll(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
