/// Finds copies of a test's password in the memory of this process. The password is computed, never
/// stored, so that a search finds only copies of it.
#ifndef TESTS_SUPPORT_PASSWORDCOPIES_H
#define TESTS_SUPPORT_PASSWORDCOPIES_H

#include <cstddef>
#include <functional>
#include <span>
#include <string>

namespace Veltrane::ODBC {

/// @param in_length  at least 28: the search is for an inner piece
std::u16string MakePassword(std::size_t in_length);

/// Counts copies in UTF-8 and UTF-16 in all memory that this process can write to.
std::size_t CopiesOfThePassword();

/// Calls the function with each writable region of this process, or a copy of it, up to 64 MiB.
void ForEachWritableRegion(const std::function<void(std::span<const char>)>& in_function);

}  // namespace Veltrane::ODBC

#endif
