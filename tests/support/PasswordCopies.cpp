#include "tests/support/PasswordCopies.h"

#include <cstring>

namespace Veltrane::ODBC {

namespace {

char PasswordCharacter(std::size_t in_index) {
    return static_cast<char>('!' + (in_index * in_index * 31 + in_index / 5 * 7) % 89);
}

/// The piece to search for: not the beginning, which the allocator overwrites in freed memory, and
/// too long to appear by chance.
constexpr std::size_t FIRST_SEARCHED = 16;
constexpr std::size_t SEARCHED_LENGTH = 12;

template <typename Char>
std::size_t CountCopies(std::span<const char> in_memory) {
    if (in_memory.size() < SEARCHED_LENGTH * sizeof(Char)) {
        return 0;
    }
    const auto unitAt = [&](std::size_t in_position) {
        Char unit{};
        std::memcpy(&unit, &in_memory[in_position], sizeof unit);
        return unit;
    };
    std::size_t copies = 0;
    for (std::size_t i = 0; i + SEARCHED_LENGTH * sizeof(Char) <= in_memory.size(); ++i) {
        const void* const next =
            std::memchr(&in_memory[i], PasswordCharacter(FIRST_SEARCHED),
                        in_memory.size() - SEARCHED_LENGTH * sizeof(Char) + 1 - i);
        if (next == nullptr) {
            break;
        }
        i = static_cast<std::size_t>(static_cast<const char*>(next) - in_memory.data());
        std::size_t matched = 0;
        while (matched < SEARCHED_LENGTH &&
               unitAt(i + matched * sizeof(Char)) ==
                   static_cast<Char>(PasswordCharacter(FIRST_SEARCHED + matched))) {
            ++matched;
        }
        copies += matched == SEARCHED_LENGTH ? 1 : 0;
    }
    return copies;
}

}  // namespace

std::u16string MakePassword(std::size_t in_length) {
    std::u16string password(in_length, u' ');
    for (std::size_t i = 0; i < in_length; ++i) {
        password[i] = static_cast<char16_t>(PasswordCharacter(i));
    }
    return password;
}

std::size_t CopiesOfThePassword() {
    std::size_t copies = 0;
    ForEachWritableRegion([&](std::span<const char> in_bytes) {
        copies += CountCopies<char>(in_bytes) + CountCopies<char16_t>(in_bytes);
    });
    return copies;
}

}  // namespace Veltrane::ODBC
