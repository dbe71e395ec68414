#include "PlatformAbstraction/strings/TextPool.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace Orska::Support {
namespace {

std::u16string_view View(const icu::UnicodeString& in_text) {
    return {in_text.getBuffer(), static_cast<std::size_t>(in_text.length())};
}

// Every test runs in a new thread, because each thread has its own pool.
template <typename Action>
void InNewThread(const Action& in_action) {
    std::thread(in_action).join();
}

TEST(TextPoolTest, ReturnsTheLengthWantedWhateverIsInThePool) {
    InNewThread([] {
        for (const int first : {0, 1, 5, 26, 27, 28, 60, 500}) {
            for (const int second : {0, 1, 5, 26, 27, 28, 60, 500}) {
                ReleaseText(AcquireText(first));
                const std::u16string units(static_cast<std::size_t>(second), u'x');
                icu::UnicodeString* const text = AcquireText(units.data(), second);
                EXPECT_EQ(View(*text), units);
                text->append(u'y');
                EXPECT_EQ(View(*text), units + u'y');
                ReleaseText(text);
            }
        }
    });
}

TEST(TextPoolTest, KeepsNoMoreThanItsCapacity) {
    InNewThread([] {
        std::vector<icu::UnicodeString*> texts;
        for (std::uint32_t count = 0; count < 3 * TextPool::CAPACITY; ++count) {
            texts.push_back(AcquireText(1));
        }
        EXPECT_EQ(std::set<icu::UnicodeString*>(texts.begin(), texts.end()).size(), texts.size());
        for (icu::UnicodeString* text : texts) {
            ReleaseText(text);
        }
        EXPECT_EQ(t_textPool.m_count, TextPool::CAPACITY);
    });
}

struct CountedText : icu::UnicodeString {
    explicit CountedText(int& io_deleted) : m_deleted(io_deleted) {}
    ~CountedText() override { ++m_deleted; }
    int& m_deleted;
};

TEST(TextPoolTest, DeletesTextsThatItCannotReuse) {
    InNewThread([] {
        int deleted = 0;
        ReleaseText(new CountedText(deleted));
        EXPECT_EQ(deleted, 1);
        ReleaseText(nullptr);
        ReleaseText(new icu::UnicodeString(std::u16string(100, u'x').c_str()));
        auto* const bogus = new icu::UnicodeString();
        bogus->setToBogus();
        ReleaseText(bogus);
        auto* const open = new icu::UnicodeString();
        open->getBuffer(4);
        ReleaseText(open);
        static const char16_t s_text[] = u"not the text's own";
        ReleaseText(new icu::UnicodeString(true, s_text, -1));
        EXPECT_EQ(t_textPool.m_count, 0u);
    });
}

/// Returns a text after the end of the pool, as a static string does.
struct LateReleaser {
    ~LateReleaser() {
        ReleaseText(m_text);
        EXPECT_EQ(t_textPool.m_count, 0u);
        EXPECT_EQ(t_textPool.m_capacity, 0u);
        icu::UnicodeString* const late = AcquireText(u"late", 4);
        EXPECT_EQ(View(*late), u"late");
        ReleaseText(late);
    }
    icu::UnicodeString* m_text = nullptr;
};

TEST(TextPoolTest, IsEmptyAfterTheThreadsEnd) {
    InNewThread([] {
        // Made before the pool is opened, so destroyed after it is closed.
        static thread_local LateReleaser s_late;
        s_late.m_text = AcquireText(u"text", 4);
        ReleaseText(AcquireText(u"opens the pool", 14));
        EXPECT_EQ(t_textPool.m_count, 1u);
    });
}

TEST(TextPoolTest, ATextCanEndOnAnotherThread) {
    icu::UnicodeString* text = nullptr;
    InNewThread([&] { text = AcquireText(u"text", 4); });
    EXPECT_EQ(View(*text), u"text");
    ReleaseText(text);
}

}  // namespace
}  // namespace Orska::Support
