#include "tools/buf.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>

#include "tests/support/Reallocate_Fake.h"
#include "tools/trace.h"

namespace {

using namespace Orska;

/// A tools buffer that releases its block.
struct OwnedBuf : buf {
    OwnedBuf() : buf{} {}
    ~OwnedBuf() { buf_free(this); }

    void Write(const std::string& in_bytes) {
        buf_allow(this, in_bytes.size());
        std::memcpy(buf_put(this, in_bytes.size()), in_bytes.data(), in_bytes.size());
    }
    std::string Unread() const { return {data + get, buf_len(this)}; }
};

TEST(buf, MakingRoomCompactsResetsAndGrows) {
    const struct {
        const char* m_point;
        std::uint64_t m_read;
        std::uint64_t m_n;
        std::uint64_t m_sizeAfter;
        std::uint64_t m_putAfter;
    } rows[] = {
        {"compacting is enough", 3, 3, 8, 5},
        {"compacts, then grows", 3, 4, 16, 5},
        {"nothing read", 0, 1, 16, 8},
        {"everything read: starts again at the front", 8, 8, 8, 0},
        {"everything read, and more is wanted", 8, 9, 16, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_point);
        OwnedBuf my;
        my.Write("abcdefgh");
        buf_get(&my, row.m_read);
        const std::string unread = my.Unread();
        buf_allow(&my, row.m_n);
        EXPECT_EQ(my.size, row.m_sizeAfter);
        EXPECT_EQ(my.get, 0u);
        EXPECT_EQ(my.put, row.m_putAfter);
        EXPECT_EQ(my.Unread(), unread);
    }
}

TEST(buf, GrownSize) {
    const struct {
        std::uint64_t m_put;
        std::uint64_t m_n;
        std::uint64_t m_size;
    } rows[] = {
        {0, 1, 8},
        {0, 8, 8},
        {0, 9, 16},
        {50, 50, 128},
        {1, 0x80000000, 0x100000000},
        {0xFFFFFFFF, 1, 0x100000000},
        {0, 0x100000001, 0x200000000},
        {0, std::uint64_t{1} << 63, std::uint64_t{1} << 63},
        {1, std::uint64_t{1} << 63, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.m_put << " + " << row.m_n);
        EXPECT_EQ(buf_grown_size(row.m_put, row.m_n), row.m_size);
    }
}

TEST(buf, ASizeThatNoPowerOfTwoReachesIsRefused) {
    OwnedBuf my;
    my.Write("abc");
    EXPECT_THROW(buf_allow(&my, ~std::uint64_t{0}), std::bad_alloc);
    EXPECT_THROW(buf_allow(&my, std::uint64_t{1} << 63), std::bad_alloc);
    EXPECT_EQ(my.size, 8u);
    EXPECT_EQ(my.Unread(), "abc");
}

TEST(buf, AFailingReallocThrowsWithTheSizeAlreadyStored) {
    OwnedBuf my;
    my.Write("abcdefgh");
    Orska::Test::s_failReallocate = true;
    EXPECT_THROW(buf_allow(&my, 100), std::bad_alloc);
    Orska::Test::s_failReallocate = false;
    EXPECT_EQ(my.size, 128u);
    EXPECT_EQ(my.Unread(), "abcdefgh");
}

TEST(buf, AMappedBlockIsUsedButNeverGrown) {
    char block[8] = "mapped!";
    buf my{0, 4, 8, block, BUF_MAPPED};
    buf_allow(&my, 4);
    EXPECT_EQ(my.data, block);
    EXPECT_DEATH(buf_allow(&my, 5), "Assertion failed: !buf_mapped\\(my\\), file tools, line 633");
    buf_free(&my);
    EXPECT_EQ(my.data, nullptr);
}

TEST(buf, StopsWhenMoreIsTakenThanThereIs) {
    OwnedBuf my;
    my.Write("abc");
    EXPECT_DEATH(buf_put(&my, 6), "Assertion failed: n <= buf_left\\(my\\), file tools");
    EXPECT_DEATH(buf_get(&my, 4), "Assertion failed: n <= buf_len\\(my\\), file tools");
}

/// The dump with the two addresses, which differ from run to run, written as @.
std::string Dump(const buf& in_buffer, bool in_toStandardError = false) {
    char buffer[32], data[32];
    std::snprintf(buffer, sizeof buffer, "BUF 0x%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&in_buffer)));
    std::snprintf(
        data, sizeof data, "data=0x%llx",
        static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(in_buffer.data)));
    testing::internal::CaptureStderr();
    buf_dump(&in_buffer, in_toStandardError ? nullptr : stderr);
    std::string text = testing::internal::GetCapturedStderr();
    for (const auto& [found, replacement] :
         {std::pair<std::string, const char*>{buffer, "BUF @"}, {data, "data=@"}}) {
        const std::size_t position = text.find(found);
        EXPECT_NE(position, text.npos) << found;
        if (position != text.npos) {
            text.replace(position, found.size(), replacement);
        }
    }
    return text;
}

TEST(buf, Dump) {
    OwnedBuf my;
    EXPECT_EQ(Dump(my), "BUF @ { size=0 get=0 put=0 data=@ }\n");
    my.Write(
        std::string("\xFF"
                    "0123456789ABCDEFG",
                    18));
    buf_get(&my, 1);
    EXPECT_EQ(Dump(my, true),
              "BUF @ { size=32 get=1 put=18 data=@ \n"
              " 30 31 32 33 34 35 36 37 38 39 41 42 43 44 45 46\t#0000\n"
              " 47\t#0010\n"
              "}\n");
    SetDumpLimit(2);
    EXPECT_EQ(Dump(my), "BUF @ { size=32 get=1 put=18 data=@ \n 30 31\t#0000\n}\n");
    SetDumpLimit(0);
    EXPECT_EQ(Dump(my), "BUF @ { size=32 get=1 put=18 data=@ }\n");
    SetDumpLimit(1024);
    char block[1] = {};
    EXPECT_EQ(Dump(buf{0, 0, 1, block, BUF_MAPPED}),
              "BUF @ { size=1 get=0 put=0 data=@ mapped }\n");
}

TEST(buf, ADumpShowsUpTo1024Bytes) {
    OwnedBuf my;
    my.Write(std::string(2000, 'x'));
    const std::string text = Dump(my);
    EXPECT_NE(text.find("\t#03F0\n}\n"), text.npos) << text;
}

}  // namespace
