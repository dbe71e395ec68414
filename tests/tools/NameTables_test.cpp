#include "tools/NameTables.h"

#include <gtest/gtest.h>

#include <climits>
#include <initializer_list>
#include <string>

namespace {

using namespace Orska;

/// The names of some numbers, each with a blank after it.
std::string Names(const char* (*in_lookup)(int) noexcept, std::initializer_list<int> in_numbers) {
    std::string names;
    for (const int number : in_numbers) names.append(in_lookup(number)).append(" ");
    return names;
}

TEST(NameTables, HaveANameForEveryNumber) {
    EXPECT_EQ(Names(GetErrorName, {0, 10000, 1, 2, -2, 34, 35, 71}),
              "  EPERM ENOENT ENOENT ERANGE EWOULDBLOCK EREMOTE ");
    EXPECT_EQ(Names(GetErrorName, {72, 100, 101, 104, 105, 106, 107, 108}),
              "10072 10100 EDISCON EINVALIDPROCTABLE 10110 10111 EREFUSED Eunknown ");
    EXPECT_EQ(Names(GetErrorName, {500, 9999, 10054, -10054, 10107, 10112, INT_MAX, INT_MIN}),
              "Eunknown Eunknown ECONNRESET ECONNRESET EREFUSED Eunknown Eunknown Eunknown ");
    EXPECT_EQ(Names(GetSignalName, {1, 11, 16, 28, 31, 32}),
              "SIGHUP SIGSEGV SIGSTKFLT SIGWINCH SIGSYS SIGUNUSED ");
    EXPECT_EQ(Names(GetSignalName, {33, 0, -1, INT_MIN}),
              "SIGunknown SIGunknown SIGunknown SIGunknown ");
    EXPECT_EQ(Names(GetAddressErrorName, {-1, -6, -8, -11, 11, 0, -12, INT_MIN}),
              "EAI_BADFLAGS EAI_FAMILY EAI_SERVICE EAI_SYSTEM EAI_SYSTEM EAI_unknown EAI_unknown "
              "EAI_unknown ");
    EXPECT_EQ(Names(GetSocketOptionName, {0, 5, 10, 11, -1}),
              "KEEPALIVE RCVSIZE REUSEADDR unknown unknown ");
}

}  // namespace
