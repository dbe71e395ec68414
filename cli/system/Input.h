/// Input of the tool: a file or standard input. No copy is kept.
#ifndef CLI_INPUT_H
#define CLI_INPUT_H

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace Veltrane::Cli {

/// Returns the path of a UTF-8 text, whatever the code page is.
inline std::filesystem::path ToPath(const std::string& in_text) {
    return {std::u8string(in_text.begin(), in_text.end())};
}

/// Returns the UTF-8 text of a path.
inline std::string FromPath(const std::filesystem::path& in_path) {
    const std::u8string text = in_path.u8string();
    return {text.begin(), text.end()};
}

/// Whether it has a folder, so that it is not searched for.
inline bool HasFolder(const std::string& in_path) { return ToPath(in_path).has_parent_path(); }

/// Returns the name for messages of a path that can be empty, for standard input.
inline std::string DescribeInput(const std::string& in_path) {
    return in_path.empty() ? "standard input" : in_path;
}

/// Returns the UTF-16 of bytes, without a last odd one.
std::u16string ToUnits(std::string_view in_bytes, bool in_isBig);

/// The longest accepted line, in bytes.
inline constexpr std::size_t MAX_LINE = 64 << 10;

/// Reads the next bytes of an input into a buffer. Returns their number; 0 at the end.
using InputReader = std::function<std::size_t(char* out_bytes, std::size_t in_size)>;
/// The part of the functions below that differs between the systems. The reader owns the file.
/// @param in_path  empty for standard input, which is not closed
/// @throws CommandError EXIT_FAILED with path and reason, as the reader does
InputReader OpenInput(const std::string& in_path);
[[noreturn]] void FailToRead(const std::string& in_path, const std::string& in_reason);

/// Returns the password in the first line of a file, in UTF-8, without the line end and a byte
/// order mark. UTF-16 needs the mark.
/// @param in_path  empty for standard input, which is read only up to the line end
/// @throws CommandError EXIT_FAILED with path and reason, also for an empty line and for one of
///         more than 64 KiB
std::string ReadFirstLine(const std::string& in_path);

/// Throws the error for an empty password, which would be stored as none. Nobody who names a source
/// wants that.
[[noreturn]] void RefuseEmptySecret(const std::string& in_source);

/// Returns a whole text file, or standard input if the path is empty, in UTF-8 as ReadFirstLine.
/// @throws CommandError EXIT_FAILED with path and reason, and for more than 256 MiB
std::string ReadText(const std::string& in_path);

/// Returns all bytes of a file. Same errors as ReadText.
std::string ReadAll(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
