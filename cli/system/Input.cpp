#include "cli/system/Input.h"

#include "VeltraneDialog/Utf8.h"
#include "cli/system/CommandError.h"

namespace Veltrane::Cli {

namespace {

constexpr std::string_view UTF8_MARK("\xEF\xBB\xBF");
constexpr std::string_view BIG_MARK("\xFE\xFF");
constexpr std::string_view LITTLE_MARK("\xFF\xFE");

/// Removes a byte order mark, and converts UTF-16 with one to UTF-8.
std::string Decode(const std::string& in_path, std::string in_bytes) {
    const bool isBig = in_bytes.starts_with(BIG_MARK);
    if (!isBig && !in_bytes.starts_with(LITTLE_MARK)) {
        if (in_bytes.starts_with(UTF8_MARK)) in_bytes.erase(0, UTF8_MARK.size());
        return in_bytes;
    }
    const std::u16string units = ToUnits(std::string_view(in_bytes).substr(2), isBig);
    std::string text = ODBC::EncodeUtf8(units);
    // An unpaired surrogate has become another character.
    std::u16string again;
    if (in_bytes.size() % 2 != 0 || !ODBC::DecodeUtf8(text, again) || again != units) {
        FailToRead(in_path, "not valid UTF-16");
    }
    return text;
}

bool IsLineEnd(std::string_view in_bytes) {
    using namespace std::string_view_literals;
    const bool isWhole = in_bytes.size() % 2 == 0;
    if (in_bytes.starts_with(BIG_MARK)) return isWhole && in_bytes.ends_with("\0\n"sv);
    if (in_bytes.starts_with(LITTLE_MARK)) return isWhole && in_bytes.ends_with("\n\0"sv);
    return in_bytes.ends_with('\n');
}

}  // namespace

std::string ReadAll(const std::string& in_path) {
    const InputReader read = OpenInput(in_path);
    constexpr std::size_t MAX_FILE = 256 << 20;
    constexpr std::size_t STEP = 64 << 10;
    std::string text;
    for (;;) {
        const std::size_t size = text.size();
        text.resize(size + STEP);
        const std::size_t count = read(text.data() + size, STEP);
        text.resize(size + count);
        if (count == 0) return text;
        if (text.size() > MAX_FILE) FailToRead(in_path, "larger than 256 MiB");
    }
}

void FailToRead(const std::string& in_path, const std::string& in_reason) {
    FailWith(DescribeInput(in_path) + ": cannot read: " + in_reason);
}

std::u16string ToUnits(std::string_view in_bytes, bool in_isBig) {
    std::u16string units;
    units.reserve(in_bytes.size() / 2);
    for (; in_bytes.size() >= 2; in_bytes.remove_prefix(2)) {
        const auto high = static_cast<unsigned char>(in_bytes[in_isBig ? 0 : 1]);
        const auto low = static_cast<unsigned char>(in_bytes[in_isBig ? 1 : 0]);
        units += static_cast<char16_t>(high << 8 | low);
    }
    return units;
}

void RefuseEmptySecret(const std::string& in_source) {
    FailWith(in_source +
             ": there is no password in it. To remove a stored one: "
             "veltrane-dsn set NAME --unset PWD.");
}

std::string ReadFirstLine(const std::string& in_path) {
    const InputReader read = OpenInput(in_path);
    std::string bytes;
    bytes.reserve(MAX_LINE + 1);  // so that it is not copied
    // Byte by byte, so that input after the line is not consumed.
    for (char byte = 0; !IsLineEnd(bytes) && read(&byte, 1) == 1; bytes += byte) {
        if (bytes.size() == MAX_LINE) FailToRead(in_path, "the first line is too long");
    }
    std::string line = Decode(in_path, std::move(bytes));
    if (line.ends_with('\n')) line.pop_back();
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty()) RefuseEmptySecret(DescribeInput(in_path));
    return line;
}

std::string ReadText(const std::string& in_path) { return Decode(in_path, ReadAll(in_path)); }

}  // namespace Veltrane::Cli
