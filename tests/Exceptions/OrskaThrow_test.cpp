#include "Exceptions/OrskaThrow.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TraceCapture.h"

namespace {

using Orska::Support::TraceSite;
using Orska::Test::TraceCapture;

struct Failure {
    Failure(const wchar_t* in_key, int in_number) : m_key(in_key), m_number(in_number) {}
    std::wstring m_key;
    int m_number;
};

void Fail() {
    ORSKA_THROW((TraceSite{"A::Fail", "Folder\\Source", 12}), Failure(L"100 %s \"Key\":", 3));
}

TEST(OrskaThrow, TheLineSpellsTheThrowAsTyped) {
    const TraceCapture capture;
    try {
        Fail();
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.m_key, L"100 %s \"Key\":");
        EXPECT_EQ(failure.m_number, 3);
    }
    EXPECT_EQ(capture.GetText(),
              "A::Fail:12\tThrowing: Failure(L\"100 %s \\\"Key\\\":\", 3) Source\n");
}

}  // namespace
