/// The string type's pool of text objects.
///
/// ICU's allocator makes and deletes text objects. That costs more than most work on the text, so
/// each thread keeps a few short ones that were returned for its next strings and deletes them when
/// it ends. bench_strings constructs strings of 16 bytes 2.3 times as fast with it, of 64 bytes 1.4
/// times. Only the string layer uses the pool; WipedTexts is for everyone.
#ifndef PLATFORMABSTRACTION_TEXTPOOL_H
#define PLATFORMABSTRACTION_TEXTPOOL_H

#include <unicode/unistr.h>

#include <cstdint>
#include <cstring>
#include <memory>

// Texts in the pool have no owner: the address sanitizer, if there is one, reports their use.
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(in_address, in_size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(in_address, in_size) static_cast<void>(0)
#endif

namespace Orska::Support {

/// The texts that a thread keeps. Each holds its units in itself, whatever its length. The type is
/// trivial, so that strings that outlive the thread's other objects can still use it.
struct TextPool {
    static constexpr std::uint32_t CAPACITY = 32;

    std::uint32_t m_count;
    std::uint32_t m_capacity;  ///< 0 before the first text is returned and after the thread's end
    bool m_isClosed;
    bool m_isWiped;  ///< texts are cleared when they are returned
    icu::UnicodeString* m_texts[CAPACITY];
};

// Per thread: set and read by AcquireText and ReleaseText.
extern constinit thread_local TextPool t_textPool;

/// Registers ClosePool for the end of this thread.
void ClosePoolAtThreadEnd() noexcept;
/// Deletes the texts in this thread's pool, which keeps no more from then on.
void ClosePool() noexcept;

/// AcquireText when the pool has no text that is long enough.
/// @param in_text  a pooled text to lengthen, or null
icu::UnicodeString* MakeText(icu::UnicodeString* in_text, std::int32_t in_length);

/// Returns a text object of `in_length` code units that are not set yet. The caller owns it, sets
/// the units through GetUnits, truncates it if there are fewer, and returns it with ReleaseText.
/// @throws std::bad_alloc
inline icu::UnicodeString* AcquireText(std::int32_t in_length) {
    TextPool& pool = t_textPool;
    icu::UnicodeString* text = nullptr;
    if (pool.m_count != 0) {
        text = pool.m_texts[--pool.m_count];
        ASAN_UNPOISON_MEMORY_REGION(text, sizeof *text);
        const std::int32_t length = text->length();
        if (length == in_length) {
            return text;
        }
        if (length > in_length) {
            text->truncate(in_length);
            return text;
        }
    }
    return MakeText(text, in_length);
}

/// A text object with a copy of the units.
icu::UnicodeString* AcquireText(const char16_t* in_units, std::int32_t in_length);

/// The units of a text object that no other object shares, for writing.
inline char16_t* GetUnits(icu::UnicodeString& io_text) noexcept {
    return const_cast<char16_t*>(io_text.getBuffer());
}

/// True when a text object holds its units in itself, so that no other object shares them.
inline bool HoldsItsUnits(const icu::UnicodeString& in_text) noexcept {
    const auto units = reinterpret_cast<std::uintptr_t>(in_text.getBuffer());
    return units - reinterpret_cast<std::uintptr_t>(&in_text) < sizeof in_text;
}

/// Replaces the units of a text object by as many or fewer.
/// @return false, with nothing changed, when it is shorter or does not hold its units in itself
inline bool OverwriteText(icu::UnicodeString& io_text, const char16_t* in_units,
                          std::int32_t in_count) noexcept {
    if (io_text.length() < in_count || !HoldsItsUnits(io_text)) {
        return false;
    }
    io_text.truncate(in_count);
    std::memcpy(GetUnits(io_text), in_units, static_cast<std::size_t>(in_count) * sizeof(char16_t));
    return true;
}

/// Returns a text object to the pool, or deletes it. It was made here or with `new
/// icu::UnicodeString`, or is null.
void ReleaseText(icu::UnicodeString* in_text) noexcept;

/// While one exists, the texts that this thread's strings return are cleared: for threads that
/// handle passwords.
class WipedTexts {
public:
    WipedTexts() noexcept : m_wasWiped(t_textPool.m_isWiped) { t_textPool.m_isWiped = true; }
    WipedTexts(const WipedTexts&) = delete;
    WipedTexts& operator=(const WipedTexts&) = delete;
    ~WipedTexts() { t_textPool.m_isWiped = m_wasWiped; }

private:
    bool m_wasWiped;
};

struct TextReleaser {
    void operator()(icu::UnicodeString* in_text) const noexcept { ReleaseText(in_text); }
};
using TextOwner = std::unique_ptr<icu::UnicodeString, TextReleaser>;

}  // namespace Orska::Support

#endif
