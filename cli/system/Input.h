/// Input of the tool: a file, or standard input. No copy of it is kept.
#ifndef CLI_INPUT_H
#define CLI_INPUT_H

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

namespace Veltrane::Cli {

/// A path of a text in UTF-8, whatever the code page is.
inline std::filesystem::path ToPath(const std::string& in_text) {
    return {std::u8string(in_text.begin(), in_text.end())};
}

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

/// The password in the first line of a file, in UTF-8, without the line's end and a byte order
/// mark. UTF-16 has to have one.
/// @param in_path  empty: standard input, which is not read further than the line
/// @throws CommandError EXIT_FAILED with path and reason, also for an empty line and for one of
///         more than 64 KiB
std::string ReadFirstLine(const std::string& in_path);

/// The failure for an empty password. It would be stored as none, which nobody wants who
/// names a source.
[[noreturn]] void RefuseEmptySecret(const std::string& in_source);

/// All of a text file, or of standard input if the path is empty, as ReadFirstLine in UTF-8.
/// @throws CommandError EXIT_FAILED with path and reason, and for more than 256 MiB
std::string ReadText(const std::string& in_path);

/// All bytes of a file, with ReadText's errors.
std::string ReadAll(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
