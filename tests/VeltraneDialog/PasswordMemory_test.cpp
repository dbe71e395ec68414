#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "VeltraneDialog/VeltraneDSNDialog.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {
namespace {

/// The password is computed, never stored, so that a search finds only copies of it.
char PasswordCharacter(std::size_t in_index) {
    return static_cast<char>('!' + (in_index * in_index * 31 + in_index / 5 * 7) % 89);
}

/// The piece that is searched for: not the beginning, which the allocator overwrites in freed
/// memory, and too long to appear by chance.
constexpr std::size_t FIRST_SEARCHED = 16;
constexpr std::size_t SEARCHED_LENGTH = 12;

template <typename Char>
std::size_t CountCopies(std::span<const char> in_memory) {
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

/// Copies in UTF-8 and UTF-16 in everything that this process can write to.
std::size_t CopiesOfThePassword() {
    constexpr std::size_t LARGEST_REGION = std::size_t{64} << 20;
    static std::vector<char> s_bytes(LARGEST_REGION);
    const auto own = reinterpret_cast<std::uintptr_t>(s_bytes.data());
    std::size_t copies = 0;
    std::ifstream maps("/proc/self/maps");
    const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        char mode[5] = "";
        const int fields = std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, mode);
        const bool isWritable = fields == 3 && mode[0] == 'r' && mode[1] == 'w';
        if (!isWritable || end - begin > LARGEST_REGION || (begin <= own && own < end)) {
            continue;
        }
        const ssize_t count = pread(memory, s_bytes.data(), end - begin, static_cast<off_t>(begin));
        const std::span<const char> bytes(s_bytes.data(),
                                          count < 0 ? 0 : static_cast<std::size_t>(count));
        copies += CountCopies<char>(bytes) + CountCopies<char16_t>(bytes);
    }
    close(memory);
    return copies;
}

void ShowWithPassword(const char* in_mode, std::size_t in_length) {
    setenv("VELTRANE_DSN_EDITOR", FAKE_EDITOR_PROGRAM, 1);
    setenv("FAKE_EDITOR", in_mode, 1);
    VeltraneDSNDialog dialog;
    {
        DialogString password(std::in_place, in_length, u' ');
        for (std::size_t i = 0; i < in_length; ++i) {
            (*password)[i] = static_cast<char16_t>(PasswordCharacter(i));
        }
        dialog.SetPwd(*password);
        Wipe(*password);
    }
    EXPECT_EQ(CopiesOfThePassword(), 1U) << "the search finds what is there";
    try {
        dialog.ShowDialog();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(CopiesOfThePassword(), 1U) << error.what();
    }
    EXPECT_EQ(CopiesOfThePassword(), 1U) << "besides the editor's own value";
}

TEST(PasswordMemory, NoCopyStaysBehind) {
    for (const char* mode : {"ok", "cancel", "garbage", "end"}) {
        for (const std::size_t length : {std::size_t{30}, std::size_t{400}}) {
            SCOPED_TRACE(std::string(mode) + " " + std::to_string(length));
            ShowWithPassword(mode, length);
            EXPECT_EQ(CopiesOfThePassword(), 0U);
        }
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
