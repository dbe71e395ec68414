// Both growable buffers, the library's and that of the trace and dump tools.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <regex>
#include <sstream>
#include <string>

#include "tests/support/Reallocate_Fake.h"
#include "tests/support/TraceCapture.h"
#include "tools/Buffer.h"
#include "tools/buf.h"
#include "tools/trace.h"

namespace {

using namespace Orska;
using Orska::Test::s_failReallocate;
using Orska::Test::TraceCapture;

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

/// A buffer with a capacity of 8, all 8 bytes "abcdefgh" written and some of them read.
void Fill(Buffer& out_buffer, std::uint32_t in_read) {
    out_buffer.Append("abcdefgh", 8);
    out_buffer.Consume(in_read);
    ASSERT_EQ(out_buffer.GetCapacity(), 8u);
}

std::string Unread(const Buffer& in_buffer) {
    return {in_buffer.GetReadPointer(), in_buffer.GetUnread()};
}

std::string Address(const void* in_pointer) {
    std::ostringstream text;
    text << std::hex << reinterpret_cast<std::uintptr_t>(in_pointer);
    return text.str();
}

TEST(Buffer, MakingRoomCompactsAndGrows) {
    const struct {
        const char* m_point;
        std::uint32_t m_read, m_allow;
        std::uint32_t m_capacity, m_readAfter, m_usedAfter;
        std::uint64_t m_size, m_put;  // of a buf, which has then read nothing
    } rows[] = {
        {"compacting is enough", 3, 3, 8, 0, 5, 8, 5},
        {"compacts, then grows", 3, 4, 16, 0, 5, 16, 5},
        {"nothing read", 0, 1, 16, 0, 8, 16, 8},
        {"everything read: a Buffer's offsets stay, and its end is short", 8, 1, 16, 8, 8, 8, 0},
        {"everything read, and the whole block is wanted", 8, 8, 16, 8, 8, 8, 0},
        {"everything read, and more is wanted", 8, 9, 32, 8, 8, 16, 0},
        {"everything read, nothing wanted", 8, 0, 8, 8, 8, 8, 0},
        {"nothing wanted", 1, 0, 8, 0, 7, 8, 7},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_point);
        Buffer buffer;
        Fill(buffer, row.m_read);
        const std::string unread = Unread(buffer);
        buffer.AllowHelper(row.m_allow);
        EXPECT_EQ(buffer.GetCapacity(), row.m_capacity);
        EXPECT_EQ(buffer.GetReadOffset(), row.m_readAfter);
        EXPECT_EQ(buffer.GetUsed(), row.m_usedAfter);
        EXPECT_EQ(Unread(buffer), unread);
        OwnedBuf my;
        my.Write("abcdefgh");
        buf_get(&my, row.m_read);
        buf_allow(&my, row.m_allow);
        EXPECT_EQ(my.size, row.m_size);
        EXPECT_EQ(my.get, 0u);
        EXPECT_EQ(my.put, row.m_put);
        EXPECT_EQ(my.Unread(), unread);
    }
}

TEST(Buffer, GrownCapacity) {
    const struct {
        std::uint32_t m_used, m_allow, m_capacity;
        std::uint64_t m_size;  // of a buf
    } rows[] = {
        {0, 1, 8, 8},
        {0, 8, 8, 8},
        {0, 9, 16, 16},
        {50, 50, 128, 128},
        {0, 0x40000001, 0x80000000, 0x80000000},
        {0, 0x80000001, 1, 0x100000000},           // the shift of 32 counts as 0
        {0x80000000, 0x80000000, 1, 0x100000000},  // 2^32 in all
        {0x80000000, 0x80000001, 8, 0x200000000},  // the sum wraps
        {0xFFFFFFF0, 0x20, 16, 0x200000000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.m_used << " + " << row.m_allow);
        EXPECT_EQ(Buffer::GrownCapacity(row.m_used, row.m_allow), row.m_capacity);
        EXPECT_EQ(buf_grown_size(row.m_used, row.m_allow), row.m_size);
    }
    EXPECT_EQ(buf_grown_size(0, std::uint64_t{1} << 63), std::uint64_t{1} << 63);
    EXPECT_EQ(buf_grown_size(1, std::uint64_t{1} << 63), 1u);
}

TEST(Buffer, StopsWhenTheNeedIsAbove2To31) {
    const char* const text =
        "Assertion failed: newCapacity && \\(newCapacity > m_capacity\\), file Buffer, line 46";
    Buffer empty;
    EXPECT_DEATH(empty.AllowHelper(0x80000001), text);
    Buffer written;
    Fill(written, 0);
    EXPECT_DEATH(written.AllowHelper(0xFFFFFFFF), text);
}

TEST(Buffer, StopsWhenMoreIsConsumedThanThereIs) {
    Buffer buffer;
    Fill(buffer, 7);
    EXPECT_DEATH(buffer.Consume(2), "Assertion failed: in_count <= GetUnread\\(\\)");
    EXPECT_DEATH(buffer.Commit(1), "Assertion failed: in_count <= GetFree\\(\\)");
    OwnedBuf my;
    my.Write("abc");
    EXPECT_DEATH(buf_put(&my, 6), "Assertion failed: n <= buf_left\\(my\\), file tools");
    EXPECT_DEATH(buf_get(&my, 4), "Assertion failed: n <= buf_len\\(my\\), file tools");
}

TEST(Buffer, AFailingReallocLeavesItUnchanged) {
    for (const std::uint32_t read : {0u, 8u}) {
        SCOPED_TRACE(read);
        Buffer buffer;
        Fill(buffer, read);
        const char* const block = buffer.GetReadPointer();
        const std::string unread = Unread(buffer);
        s_failReallocate = true;
        EXPECT_THROW(buffer.AllowHelper(100), std::bad_alloc);
        EXPECT_THROW(buffer.Append("x", 1), std::bad_alloc);
        s_failReallocate = false;
        EXPECT_EQ(buffer.GetReadPointer(), block);
        EXPECT_EQ(buffer.GetCapacity(), 8u);
        EXPECT_EQ(buffer.GetReadOffset(), read);
        EXPECT_EQ(buffer.GetUsed(), 8u);
        EXPECT_EQ(Unread(buffer), unread);
    }
}

TEST(Buffer, TracesAtLevelFour) {
    for (const char* level : {"3", "4"}) {
        const TraceCapture trace(level);
        Buffer buffer;
        buffer.AllowHelper(5);  // no room
        buffer.AllowHelper(8);  // room
        buffer.Append("ab", 2);
        buffer.Consume(1);
        buffer.AllowHelper(1);  // room, but read bytes in front
        const std::string on = " on buffer " + Address(&buffer) + ". Requires REALLOC or move: ";
        const std::string start = "Orska::Buffer::AllowHelper:33\tAllowing ";
        EXPECT_EQ(trace.GetText(), *level == '3'
                                       ? ""
                                       : start + "5" + on + "true Buffer\n" + start + "8" + on +
                                             "false Buffer\n" + start + "1" + on + "true Buffer\n");
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
    s_failReallocate = true;
    EXPECT_THROW(buf_allow(&my, 100), std::bad_alloc);
    s_failReallocate = false;
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

/// The dump with its two addresses, which differ from run to run, written as @.
std::string Dump(const buf& in_buffer, bool in_toStandardError = false) {
    testing::internal::CaptureStderr();
    buf_dump(&in_buffer, in_toStandardError ? nullptr : stderr);
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_THAT(text, testing::StartsWith("BUF 0x" + Address(&in_buffer) + " {"));
    EXPECT_THAT(text, testing::HasSubstr("data=0x" + Address(in_buffer.data) + " "));
    return std::regex_replace(text, std::regex("0x[0-9a-f]+"), "@");
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
