// What stream converters do with memory: nothing after construction, and a clear error when ICU
// gets none. Counts this program's and ICU's allocations.
#include <gtest/gtest.h>
#include <unicode/uclean.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "tests/support/StreamDriver.h"

namespace {

// Process-wide: set by the tests of this file, read by the allocators below.
int s_allocations = 0;
bool s_isNextLargeOneRefused = false;

void* U_CALLCONV Allocate(const void*, std::size_t in_size) {
    ++s_allocations;
    constexpr std::size_t LEAST_CONVERTER = 200;  // bytes; more than a string object
    if (s_isNextLargeOneRefused && in_size >= LEAST_CONVERTER) {
        s_isNextLargeOneRefused = false;
        return nullptr;
    }
    return std::malloc(in_size);
}

void* U_CALLCONV Reallocate(const void*, void* in_memory, std::size_t in_size) {
    ++s_allocations;
    return std::realloc(in_memory, in_size);
}

void U_CALLCONV Free(const void*, void* in_memory) { std::free(in_memory); }

void CountIcuAllocations() {
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, Allocate, Reallocate, Free, &status);
    ASSERT_TRUE(U_SUCCESS(status));
}

}  // namespace

void* operator new(std::size_t in_size) {
    ++s_allocations;
    if (void* const memory = std::malloc(in_size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* in_memory) noexcept { std::free(in_memory); }
void operator delete(void* in_memory, std::size_t) noexcept { std::free(in_memory); }

namespace Orska::Support::Testing {
namespace {

EncodingType Enc(int in_value) { return static_cast<EncodingType>(in_value); }

TEST(StreamMemory, PiecesAndTargetsCostNoAllocation) {
    CountIcuAllocations();
    for (const auto& [from, to] :
         {std::pair{0, 0}, {0, 1}, {1, 0}, {0, 24}, {24, 0}, {18, 3}, {67, 27}, {22, 22}}) {
        SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
        const std::string source = EncodeWithIcu(GetMixedText(), Enc(from));
        const auto converter = StreamConverterFactory::CreateConverter(Enc(from), Enc(to));
        char target[40];
        std::uint64_t targets = 0;
        const int before = s_allocations;
        for (std::size_t at = 0; at < source.size(); at += 3) {
            const std::size_t size = std::min<std::size_t>(3, source.size() - at);
            converter->SetSource(source.data() + at, size, at + size == source.size());
            do {
                converter->SetTarget(target, 7 + targets % 30);
                targets++ % 2 == 0 ? converter->DoConvert() : converter->DoConvertWithNul();
            } while (converter->HasDataRemaining());
        }
        EXPECT_EQ(before, s_allocations);
        EXPECT_GT(converter->GetTotalBytesWritten(), 100U);
    }
}

TEST(StreamMemory, ConverterThatCannotBeOpenedIsNamed) {
    CountIcuAllocations();
    s_isNextLargeOneRefused = true;
    try {
        StreamConverterFactory::CreateConverter(Enc(18), Enc(27));
        FAIL() << "nothing thrown";
    } catch (const ErrorException& error) {
        EXPECT_EQ("ICUCreateUConverterErr", error.GetMessageKeyOrText().GetAsUtf8());
        ASSERT_EQ(1U, error.GetMessageParameters().size());
        EXPECT_EQ("SJIS", error.GetMessageParameters()[0].GetAsUtf8());
        EXPECT_EQ(DIAG_GENERAL_ERROR, error.GetDiagState());
    }
}

}  // namespace
}  // namespace Orska::Support::Testing
