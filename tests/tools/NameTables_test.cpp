#include "tools/NameTables.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

struct Row {
    int m_number;
    const char* m_name;
};

void Check(const char* (*in_lookup)(int) noexcept, std::initializer_list<Row> in_rows) {
    for (const Row& row : in_rows) {
        SCOPED_TRACE(row.m_number);
        EXPECT_STREQ(in_lookup(row.m_number), row.m_name);
    }
}

TEST(NameTables, ErrorNames) {
    Check(Orska::GetErrorName, {{0, ""},
                                {1, "EPERM"},
                                {2, "ENOENT"},
                                {-2, "ENOENT"},
                                {34, "ERANGE"},
                                {35, "EWOULDBLOCK"},
                                {71, "EREMOTE"},
                                {72, "10072"},
                                {100, "10100"},
                                {101, "EDISCON"},
                                {104, "EINVALIDPROCTABLE"},
                                {105, "10110"},
                                {106, "10111"},
                                {107, "EREFUSED"},
                                {108, "Eunknown"},
                                {500, "Eunknown"},
                                {9999, "Eunknown"},
                                {10000, ""},
                                {10054, "ECONNRESET"},
                                {-10054, "ECONNRESET"},
                                {10107, "EREFUSED"},
                                {10112, "Eunknown"},
                                {INT_MAX, "Eunknown"},
                                {INT_MIN, "Eunknown"}});
}

TEST(NameTables, SignalNames) {
    Check(Orska::GetSignalName, {{1, "SIGHUP"},
                                 {11, "SIGSEGV"},
                                 {16, "SIGSTKFLT"},
                                 {28, "SIGWINCH"},
                                 {31, "SIGSYS"},
                                 {32, "SIGUNUSED"},
                                 {33, "SIGunknown"},
                                 {0, "SIGunknown"},
                                 {-1, "SIGunknown"},
                                 {INT_MIN, "SIGunknown"}});
}

TEST(NameTables, AddressErrorNames) {
    Check(Orska::GetAddressErrorName, {{-1, "EAI_BADFLAGS"},
                                       {-6, "EAI_FAMILY"},
                                       {-8, "EAI_SERVICE"},
                                       {-11, "EAI_SYSTEM"},
                                       {11, "EAI_SYSTEM"},
                                       {0, "EAI_unknown"},
                                       {-12, "EAI_unknown"},
                                       {INT_MIN, "EAI_unknown"}});
}

TEST(NameTables, SocketOptionNames) {
    Check(Orska::GetSocketOptionName,
          {{0, "KEEPALIVE"}, {5, "RCVSIZE"}, {10, "REUSEADDR"}, {11, "unknown"}, {-1, "unknown"}});
}

}  // namespace
