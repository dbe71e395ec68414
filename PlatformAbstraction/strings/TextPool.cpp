#include "PlatformAbstraction/strings/TextPool.h"

#include <algorithm>
#include <new>
#include <typeinfo>

#include "PlatformAbstraction/base/Wipe.h"

namespace Orska::Support {

constinit thread_local TextPool t_textPool = {};

namespace {

/// Opens a pool that was never opened; false, with nothing changed, for any other.
bool OpenPool(TextPool& io_pool) noexcept {
    if (io_pool.m_isClosed || io_pool.m_capacity != 0) {
        return false;
    }
    ClosePoolAtThreadEnd();
    io_pool.m_capacity = TextPool::CAPACITY;
    return true;
}

/// Makes a text longer, which only ICU can do.
bool Lengthen(icu::UnicodeString& io_text, std::int32_t in_length) noexcept {
    if (io_text.getBuffer(in_length) == nullptr) {
        return false;
    }
    io_text.releaseBuffer(in_length);
    return true;
}

/// Clears all units that the text has room for; its length stays if it holds them in itself.
void WipeText(icu::UnicodeString& io_text) noexcept {
    const bool isPooled = HoldsItsUnits(io_text);
    const std::int32_t length = io_text.length();
    const std::int32_t capacity = io_text.getCapacity();
    // Null for a bogus or read-only text, which none of ours is.
    char16_t* const units = io_text.getBuffer(capacity);
    if (units == nullptr) return;
    WipeBytes(units, static_cast<std::size_t>(capacity) * sizeof(char16_t));
    io_text.releaseBuffer(isPooled ? length : 0);
}

}  // namespace

void ClosePool() noexcept {
    TextPool& pool = t_textPool;
    pool.m_isClosed = true;
    pool.m_capacity = 0;
    while (pool.m_count != 0) {
        icu::UnicodeString* const text = pool.m_texts[--pool.m_count];
        ASAN_UNPOISON_MEMORY_REGION(text, sizeof *text);
        delete text;
    }
}

icu::UnicodeString* MakeText(icu::UnicodeString* in_text, std::int32_t in_length) {
    // The units that a text object can hold in itself.
    constexpr std::int32_t INLINE_UNITS =
        (UNISTR_OBJECT_SIZE - sizeof(void*) - sizeof(char16_t)) / sizeof(char16_t);

    icu::UnicodeString* const text = in_text != nullptr ? in_text : new icu::UnicodeString();
    if (text == nullptr) {
        throw std::bad_alloc();
    }
    // At least as long as the object has room, so that the pooled text serves more lengths later.
    if (!Lengthen(*text, std::max(in_length, INLINE_UNITS))) {
        delete text;
        throw std::bad_alloc();
    }
    text->truncate(in_length);
    return text;
}

icu::UnicodeString* AcquireText(const char16_t* in_units, std::int32_t in_length) {
    icu::UnicodeString* const text = AcquireText(in_length);
    std::copy_n(in_units, in_length, GetUnits(*text));
    return text;
}

void ReleaseText(icu::UnicodeString* in_text) noexcept {
    if (t_textPool.m_isWiped && in_text != nullptr) WipeText(*in_text);
    // Only plain, usable objects are kept; a subclass is deleted.
    if (in_text == nullptr || !HoldsItsUnits(*in_text) ||
        &typeid(*in_text) != &typeid(icu::UnicodeString)) {
        delete in_text;
        return;
    }
    TextPool& pool = t_textPool;
    if (pool.m_count == pool.m_capacity && !OpenPool(pool)) {
        delete in_text;
        return;
    }
    ASAN_POISON_MEMORY_REGION(in_text, sizeof *in_text);
    pool.m_texts[pool.m_count++] = in_text;
}

}  // namespace Orska::Support
