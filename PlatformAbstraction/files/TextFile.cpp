#include "PlatformAbstraction/files/TextFile.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <vector>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/files/FileSystemUtils.h"
#include "PlatformAbstraction/files/OrskaUtility.h"

namespace Orska::Support {

namespace {

constexpr char SOURCE[] = "PlatformAbstraction\\TextFile_Windows";
constexpr char CONSTRUCTOR[] = "Orska::Support::TextFile::TextFile";
constexpr std::size_t READ_AHEAD_SIZE = 32'768;
constexpr std::size_t FORMAT_BUFFER_SIZE = 256;

/// The Windows call's mode of sharing for reading and writing, and its dispositions.
constexpr std::uint32_t SHARE = 3;
constexpr std::uint32_t ALWAYS_NEW = 2;
constexpr std::uint32_t EXISTING = 3;
constexpr std::uint32_t OPEN_OR_NEW = 4;

constexpr FileOpenArguments OPEN_MODES[] = {
    {0x80000000, SHARE, EXISTING},     // MODE_READ
    {0x40000002, SHARE, ALWAYS_NEW},   // MODE_WRITE
    {0x40000000, SHARE, OPEN_OR_NEW},  // MODE_APPEND
    {0xC0000000, SHARE, EXISTING},     // MODE_READ_WRITE
    {0xC0000002, SHARE, ALWAYS_NEW},   // MODE_READ_WRITE_EMPTY
    {0xC0000000, SHARE, OPEN_OR_NEW},  // MODE_READ_WRITE_CREATE
};

const FileOpenArguments& GetModeDword(std::int32_t in_mode) {
    if (in_mode < TextFile::MODE_READ || in_mode > TextFile::MODE_READ_WRITE_CREATE) {
        ORSKA_THROW((TraceSite{"GetModeDword", SOURCE, 86}),
                    ProductException(L"UnrecognizedOpenMode"));
    }
    return OPEN_MODES[in_mode - TextFile::MODE_READ];
}

}  // namespace

std::size_t FileHandle::Write(const void* in_buffer, std::size_t in_count) {
    const char* const bytes = static_cast<const char*>(in_buffer);
    std::size_t done = 0;
    std::int64_t count = 1;
    while (done < in_count && count > 0) {
        count = WriteSome(bytes + done, in_count - done);
        done += static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
    }
    return done;
}

TextFile::TextFile(const orska_wstring& in_fileName, std::int32_t in_mode)
    : m_fileName(in_fileName) {
    if (in_fileName.IsEmpty()) {
        ORSKA_THROW((TraceSite{CONSTRUCTOR, SOURCE, 0}), ProductException(L"InvalidFileName"));
    }
    const FileOpenArguments& arguments = GetModeDword(in_mode);
    if (in_mode != MODE_READ) {
        FileSystemUtils::CreateFileDirectory(in_fileName);
    }
    if (!m_handle.Open(in_fileName, arguments)) {
        const std::uint32_t error = GetLastErrorCode();
        const std::vector<orska_wstring> msgParams{in_fileName, GetLastErrorText(error)};
        ORSKA_THROW((TraceSite{CONSTRUCTOR, SOURCE, 144}),
                    ProductException((L"CannotOpenFile"), msgParams));
    }
    if (in_mode == MODE_APPEND && m_handle.Seek(0, FileHandle::Origin::END) < 0) {
        const std::uint32_t error = GetLastErrorCode();
        ORSKA_TRACE(1, CONSTRUCTOR, SOURCE, 161, "SetFilePointerEx() failed for file '%s': %s",
                    in_fileName.GetAsUtf8().c_str(), GetLastErrorText(error).GetAsUtf8().c_str());
        ORSKA_THROW((TraceSite{CONSTRUCTOR, SOURCE, 163}),
                    ProductException(L"CannotSetFilePosition"));
    }
}

TextFile::~TextFile() {
    if (m_isLocked) {
        Unlock();
    }
}

bool TextFile::ReadLine(std::string& out_line) {
    out_line.clear();
    bool isStarted = false;
    while (m_next != m_end || ReadAhead()) {
        const void* found = std::memchr(m_next, '\n', static_cast<std::size_t>(m_end - m_next));
        const char* lineEnd = found == nullptr ? m_end : static_cast<const char*>(found);
        const char* start = m_next;
        if (!AppendUpTo(lineEnd, out_line)) {
            // If only one byte was consumed, it is the mark, and there is no line.
            return isStarted || m_next - start > 1;
        }
        if (found != nullptr) {
            ++m_next;
            return true;
        }
        isStarted = true;
    }
    return isStarted;
}

/// Appends the read-ahead bytes before in_end, without carriage returns.
/// @return false when a byte 0xFF came before in_end; it is consumed
bool TextFile::AppendUpTo(const char* in_end, std::string& io_line) {
    for (;;) {
        const char* mark = std::min(FindMark(), in_end);
        io_line.append(m_next, static_cast<std::size_t>(mark - m_next));
        m_next = mark;
        if (mark == in_end) {
            return true;
        }
        ++m_next;
        if (*mark != '\r') {
            return false;
        }
    }
}

/// The first CR or 0xFF at or after m_next, or m_end. Each byte is searched once for each of them,
/// so a file without them costs two searches a buffer.
const char* TextFile::FindMark() {
    const auto update = [this](const char*& io_found, int in_byte) {
        if (io_found < m_next) {
            const void* found =
                std::memchr(m_next, in_byte, static_cast<std::size_t>(m_end - m_next));
            io_found = found == nullptr ? m_end : static_cast<const char*>(found);
        }
    };
    update(m_nextReturn, '\r');
    update(m_nextEndMark, END_OF_FILE);
    return std::min(m_nextReturn, m_nextEndMark);
}

std::uint8_t TextFile::ReadByte() {
    if (m_next == m_end && !ReadAhead()) {
        return END_OF_FILE;
    }
    return static_cast<std::uint8_t>(*m_next++);
}

std::size_t TextFile::Read(void* out_buffer, std::size_t in_count) {
    char* out = static_cast<char*>(out_buffer);
    std::size_t done = std::min(in_count, static_cast<std::size_t>(m_end - m_next));
    if (done != 0) {
        std::memcpy(out, m_next, done);
        m_next += done;
    }
    while (done < in_count) {
        const std::int64_t count = m_handle.Read(out + done, in_count - done);
        m_hasReadFailed |= count < 0;
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

/// Fills the empty buffer. False at the end of the file, which can have grown by the next call.
bool TextFile::ReadAhead() {
    if (m_buffer == nullptr) {
        m_buffer = std::make_unique_for_overwrite<char[]>(READ_AHEAD_SIZE);
    }
    const std::int64_t count = m_handle.Read(m_buffer.get(), READ_AHEAD_SIZE);
    m_hasReadFailed |= count < 0;
    m_next = m_buffer.get();
    m_end = m_next + std::max<std::int64_t>(count, 0);
    m_nextReturn = m_nextEndMark = nullptr;
    return count > 0;
}

/// Moves the handle back to the caller's position.
void TextFile::DropReadAhead() {
    if (m_next != m_end) {
        m_handle.Seek(m_next - m_end, FileHandle::Origin::CURRENT);
        m_next = m_end;
    }
}

std::size_t TextFile::Write(const void* in_buffer, std::size_t in_count) {
    DropReadAhead();
    return m_handle.Write(in_buffer, in_count);
}

std::size_t TextFile::WriteFormat(const char* in_format, ...) {
    va_list arguments;
    va_start(arguments, in_format);
    va_list again;
    va_copy(again, arguments);
    char shortText[FORMAT_BUFFER_SIZE];
    const int length = std::vsnprintf(shortText, sizeof shortText, in_format, arguments);
    va_end(arguments);
    std::unique_ptr<char[]> longText;
    if (length >= static_cast<int>(FORMAT_BUFFER_SIZE)) {
        const std::size_t size = static_cast<std::size_t>(length) + 1;
        longText = std::make_unique_for_overwrite<char[]>(size);
        std::vsnprintf(longText.get(), size, in_format, again);
    }
    va_end(again);
    if (length < 0) {
        return 0;
    }
    return Write(longText ? longText.get() : shortText, static_cast<std::size_t>(length));
}

std::size_t TextFile::WriteLine(std::string_view in_text) {
    std::string line(in_text);
    line += "\r\n";
    return Write(line.data(), line.size());
}

std::int64_t TextFile::Seek(std::int64_t in_offset, std::int32_t in_origin) {
    DropReadAhead();
    switch (in_origin) {
        case FROM_START:
            return m_handle.Seek(in_offset, FileHandle::Origin::START);
        case FROM_END:
            return m_handle.Seek(in_offset, FileHandle::Origin::END);
        default:  // 1 and 2 too, which other systems use for other origins: kept exactly so
            return m_handle.Seek(in_offset, FileHandle::Origin::CURRENT);
    }
}

std::int64_t TextFile::GetPosition() {
    const std::int64_t position = m_handle.Seek(0, FileHandle::Origin::CURRENT);
    return position < 0 ? -1 : position - (m_end - m_next);
}

std::uint32_t TextFile::GetLockRange() const {
    // Never empty: a lock of no bytes has no effect, or on some systems covers the whole file.
    return std::max<std::uint32_t>(static_cast<std::uint32_t>(GetSize()), 1);
}

void TextFile::Lock() {
    m_handle.Lock(GetLockRange());
    m_isLocked = true;
    // The lock's last holder can have changed the bytes that were read ahead.
    DropReadAhead();
}

void TextFile::Unlock() {
    m_handle.Unlock(GetLockRange());
    m_isLocked = false;
}

void TextFile::Clear() {
    m_next = m_end;
    if (m_handle.Seek(0, FileHandle::Origin::START) < 0) {
        ORSKA_THROW((TraceSite{"Orska::Support::TextFile::Clear", SOURCE, 616}),
                    ProductException(L"CannotSetFilePosition"));
    }
    if (!m_handle.SetEnd()) {
        ORSKA_THROW((TraceSite{"Orska::Support::TextFile::Clear", SOURCE, 620}),
                    ProductException(L"IOError"));
    }
}

bool TextFile::Truncate() {
    m_next = m_end;
    m_handle.Seek(0, FileHandle::Origin::START);
    return m_handle.SetEnd();
}

bool TextFile::Reopen(std::int32_t in_mode) {
    const FileOpenArguments& arguments = GetModeDword(in_mode);
    m_handle.Close();
    m_isLocked = false;
    m_hasReadFailed = false;
    m_next = m_end;
    if (!m_handle.Open(m_fileName, arguments)) {
        return false;
    }
    if (in_mode == MODE_APPEND && m_handle.Seek(0, FileHandle::Origin::END) < 0) {
        m_handle.Close();
    }
    return IsOpen();
}

}  // namespace Orska::Support
