// Stream converters allocate nothing after construction, and throw a clear error when ICU gets no
// memory. Counts this program's and ICU's allocations.
#include <gtest/gtest.h>
#include <unicode/uclean.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/ICU/StreamConverterFactory.h"
#include "tests/support/IcuText.h"
#include "tests/support/RefusedMemory.h"

namespace {

std::size_t s_leastRefused = SIZE_MAX;  // bytes; ICU gets only smaller blocks

void* PlainMalloc(std::size_t in_size) { return std::malloc(in_size); }

void* U_CALLCONV Allocate(const void*, std::size_t in_size) {
    return in_size < s_leastRefused ? operator new(in_size, std::nothrow) : nullptr;
}

void* U_CALLCONV Reallocate(const void*, void* in_memory, std::size_t in_size) {
    ++s_memory.m_count;
    return std::realloc(in_memory, in_size);
}

void U_CALLCONV Free(const void*, void* in_memory) { operator delete(in_memory); }

void CountIcuAllocations() {
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, Allocate, Reallocate, Free, &status);
    ASSERT_TRUE(U_SUCCESS(status));
}

}  // namespace

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
        s_memory.Start(SIZE_MAX, 0);
        for (std::size_t at = 0; at < source.size(); at += 3) {
            const std::size_t size = std::min<std::size_t>(3, source.size() - at);
            converter->SetSource(source.data() + at, size, at + size == source.size());
            do {
                converter->SetTarget(target, 7 + targets % 30);
                targets++ % 2 == 0 ? converter->DoConvert() : converter->DoConvertWithNul();
            } while (converter->HasDataRemaining());
        }
        EXPECT_EQ(0U, s_memory.m_count);
        EXPECT_GT(converter->GetTotalBytesWritten(), 100U);
    }
}

/// While it exists ICU gets memory for small objects only, not for a converter or a longer text.
struct RefuseLarge {
    RefuseLarge() { s_leastRefused = 200; }
    ~RefuseLarge() { s_leastRefused = SIZE_MAX; }
};

TEST(StreamMemory, AStringThatCannotChangeStaysAsItWas) {
    CountIcuAllocations();
    const orska_wstring longer(u'z', 300);
    const struct {
        const char* m_point;
        void (*m_change)(orska_wstring&, const orska_wstring&);
    } cases[] = {
        {"=", [](orska_wstring& io_text, const orska_wstring& in_other) { io_text = in_other; }},
        {"+=", [](orska_wstring& io_text, const orska_wstring& in_other) { io_text += in_other; }},
        {"replace", [](orska_wstring& io_text,
                       const orska_wstring& in_other) { io_text.FindAndReplace(u"b", in_other); }},
        {"regex", [](orska_wstring& io_text,
                     const orska_wstring& in_other) { io_text.RegexReplace(u"b", in_other); }},
        {"pad", [](orska_wstring& io_text, const orska_wstring&) { io_text.PadTrailing(300); }},
        {"pad beyond all",
         [](orska_wstring& io_text, const orska_wstring&) { io_text.PadTrailing(INT32_MAX); }},
        {"upper", [](orska_wstring& io_text, const orska_wstring&) { io_text.ToUpper(); }},
        {"lower", [](orska_wstring& io_text, const orska_wstring&) { io_text.ToLower(); }},
        {"UTF-8",
         [](orska_wstring& io_text, const orska_wstring&) { io_text = std::string(300, 'x'); }},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.m_point);
        // Changing case makes it too long.
        orska_wstring text = orska_wstring(u"ab") + orska_wstring(u'\u0390', 70);
        if (row.m_point == std::string("lower")) text = orska_wstring(u'\u0130', 70);
        const orska_wstring before = text;
        {
            const RefuseLarge refusal;
            EXPECT_ANY_THROW(row.m_change(text, longer));
        }
        EXPECT_TRUE(before == text) << text.GetLength();
    }
}

// 70,000 times 70,000 units are refused before any are copied.
TEST(StreamMemory, AStringRefusesAReplacementThatIsTooLong) {
    orska_wstring text(u'a', 70000);
    const orska_wstring replacement(u'b', 70000);
    EXPECT_THROW(text.FindAndReplace(u"a", replacement), ErrorException);
    EXPECT_TRUE(orska_wstring(u'a', 70000) == text);
}

TEST(StreamMemory, AStringReportsAConverterThatCannotBeOpened) {
    CountIcuAllocations();
    const orska_wstring text(u"\u6F22");
    for (const int encoding : {18, 67}) {
        const RefuseLarge refusal;
        EXPECT_THROW(text.GetAsAnsiString(Enc(encoding)), ErrorException);
        EXPECT_THROW(orska_wstring("\x8A\xBF", 2, Enc(encoding)), ErrorException);
    }
}

TEST(StreamMemory, ConverterThatCannotBeOpenedIsNamed) {
    CountIcuAllocations();
    try {
        const RefuseLarge refusal;
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
