#include "tools/Buffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>

#include "tests/support/Reallocate_Fake.h"
#include "tests/support/TraceCapture.h"

namespace {

using Orska::Buffer;
using Orska::Test::s_failReallocate;
using Orska::Test::TraceCapture;

/// A buffer with a capacity of 8, all 8 bytes "abcdefgh" written and some of them read.
void Fill(Buffer& out_buffer, std::uint32_t in_read) {
    out_buffer.Append("abcdefgh", 8);
    out_buffer.Consume(in_read);
    ASSERT_EQ(out_buffer.GetCapacity(), 8u);
}

std::string Unread(const Buffer& in_buffer) {
    return {in_buffer.GetReadPointer(), in_buffer.GetUnread()};
}

TEST(Buffer, AllowHelperCompactsAndGrows) {
    const struct {
        const char* m_point;
        std::uint32_t m_read;
        std::uint32_t m_allow;
        std::uint32_t m_capacityAfter;
        std::uint32_t m_readAfter;
        std::uint32_t m_usedAfter;
    } rows[] = {
        {"compacting is enough", 3, 3, 8, 0, 5},
        {"compacts, then grows", 3, 4, 16, 0, 5},
        {"nothing read", 0, 1, 16, 0, 8},
        {"everything read: offsets stay, and the end is short", 8, 1, 16, 8, 8},
        {"everything read, nothing wanted", 8, 0, 8, 8, 8},
        {"compacts even when nothing is wanted", 1, 0, 8, 0, 7},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.m_point);
        Buffer buffer;
        Fill(buffer, row.m_read);
        const std::string unread = Unread(buffer);
        buffer.AllowHelper(row.m_allow);
        EXPECT_EQ(buffer.GetCapacity(), row.m_capacityAfter);
        EXPECT_EQ(buffer.GetReadOffset(), row.m_readAfter);
        EXPECT_EQ(buffer.GetUsed(), row.m_usedAfter);
        EXPECT_EQ(Unread(buffer), unread);
    }
}

TEST(Buffer, AllowLeavesABufferWithRoomAlone) {
    Buffer buffer;
    buffer.Append("abcde", 5);
    buffer.Consume(2);
    buffer.Allow(3);
    EXPECT_EQ(buffer.GetReadOffset(), 2u);
    buffer.Append(nullptr, 0);
    EXPECT_EQ(Unread(buffer), "cde");
}

TEST(Buffer, GrownCapacity) {
    const struct {
        std::uint32_t m_used;
        std::uint32_t m_allow;
        std::uint32_t m_capacity;
    } rows[] = {
        {0, 1, 8},
        {0, 8, 8},
        {0, 9, 16},
        {4, 4, 8},
        {8, 1, 16},
        {50, 50, 128},
        {4096, 1, 8192},
        {0, 0x40000000, 0x40000000},
        {0, 0x40000001, 0x80000000},
        {0x7FFFFFFF, 1, 0x80000000},
        {0, 0x80000001, 1},           // the shift of 32 counts as 0
        {0x80000000, 0x80000000, 1},  // 2^32 in all
        {0x80000000, 0x80000001, 8},  // the sum wraps
        {0xFFFFFFF0, 0x20, 16},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.m_used << " + " << row.m_allow);
        EXPECT_EQ(Buffer::GrownCapacity(row.m_used, row.m_allow), row.m_capacity);
    }
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

TEST(Buffer, TakesWhatIsWrittenAtItsEnd) {
    Buffer buffer;
    buffer.Append("ab", 2);
    buffer.Consume(1);
    buffer.Allow(3);
    std::memcpy(buffer.GetWritePointer(), "cde", 3);
    buffer.Commit(2);
    EXPECT_EQ(std::string(buffer.GetReadPointer(), buffer.GetUnread()), "bcd");
}

TEST(Buffer, StopsWhenMoreIsTakenThanThereIs) {
    Buffer buffer;
    Fill(buffer, 7);
    EXPECT_DEATH(buffer.Consume(2), "Assertion failed: in_count <= GetUnread\\(\\)");
    EXPECT_DEATH(buffer.Commit(1), "Assertion failed: in_count <= GetFree\\(\\)");
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
    Buffer buffer;
    char address[32];
    std::snprintf(address, sizeof address, "%llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(&buffer)));
    const auto line = [&](const char* in_allow, const char* in_needed) {
        return std::string("Orska::Buffer::AllowHelper:33\tAllowing ") + in_allow + " on buffer " +
               address + ". Requires REALLOC or move: " + in_needed + " Buffer";
    };
    const TraceCapture trace("4");
    buffer.AllowHelper(5);  // no room
    buffer.AllowHelper(8);  // room
    buffer.Append("ab", 2);
    buffer.Consume(1);
    buffer.AllowHelper(1);  // room, but read bytes in front
    EXPECT_THAT(trace.GetLines(),
                testing::ElementsAre(line("5", "true"), line("8", "false"), line("1", "true")));
}

TEST(Buffer, TracesNothingBelowLevelFour) {
    const TraceCapture trace("3");
    Buffer buffer;
    buffer.AllowHelper(5);
    EXPECT_EQ(trace.GetText(), "");
}

}  // namespace
