/// A file that is opened by name in one of six modes, and read by lines or bytes.
///
/// A TextFile owns its handle and is used by one thread at a time. Text is bytes; the caller knows
/// their encoding. Lines and bytes are read ahead into a buffer; positions, seeks and writes behave
/// as if each byte were read alone. FileHandle has the system's calls, with one body for each
/// system (TextFile_Linux.cpp).
#ifndef PLATFORMABSTRACTION_TEXTFILE_H
#define PLATFORMABSTRACTION_TEXTFILE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "../../tools/trace.h"
#include "../strings/orska_wstring.h"

namespace Orska::Support {

/// The arguments that an open mode passes to the system, with the values of the Windows call. On
/// Linux the read and write bits and the disposition are translated; sharing needs no flag there.
struct FileOpenArguments {
    std::uint32_t m_access;
    std::uint32_t m_shareMode;
    std::uint32_t m_creationDisposition;
};

/// The calls on one open file. Results report failures; GetLastErrorCode then says why.
class FileHandle {
public:
    enum class Origin { START, CURRENT, END };

    FileHandle() noexcept = default;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle() { Close(); }

    /// Opens a closed handle. Never waits: anything but a file or the null device (a directory, a
    /// FIFO, a socket, another device) is refused.
    bool Open(const orska_wstring& in_fileName, const FileOpenArguments& in_arguments);
    /// Releases the lock and closes the handle, if it is open.
    void Close() noexcept;
    bool IsOpen() const noexcept { return m_handle != INVALID; }

    /// @return bytes read, 0 at the end of the file, -1 on failure
    std::int64_t Read(void* out_buffer, std::size_t in_count);
    /// @return bytes written; fewer than asked for, or 0, when the system fails
    std::size_t Write(const void* in_buffer, std::size_t in_count);
    /// @return the new position, or -1 with the position unchanged
    std::int64_t Seek(std::int64_t in_offset, Origin in_origin);
    /// Ends the file at the position.
    bool SetEnd();
    bool Flush();
    /// Bytes; 0 when the query fails.
    std::uint64_t GetSize() const;
    /// Waits until no other handle holds a lock on the first bytes, then locks them.
    void Lock(std::uint32_t in_byteCount);
    void Unlock(std::uint32_t in_byteCount);

private:
    /// @return bytes written, -1 on failure
    std::int64_t WriteSome(const void* in_buffer, std::size_t in_count);

    static constexpr std::intptr_t INVALID = -1;

    std::intptr_t m_handle = INVALID;
    // Each is used by one body only.
    /// The lock's handle, if `m_handle` cannot lock.
    [[maybe_unused]] std::intptr_t m_lockHandle = INVALID;
    /// The locked range, if unlocking has to name it; 0 when none is locked.
    [[maybe_unused]] std::uint32_t m_lockedBytes = 0;
};

class TextFile {
public:
    /// Open modes. Any other number is refused with "UnrecognizedOpenMode".
    enum OpenMode : std::int32_t {
        MODE_READ = 1,               ///< an existing file
        MODE_WRITE = 2,              ///< truncates or creates
        MODE_APPEND = 3,             ///< creates if absent; the position is set to the end, once
        MODE_READ_WRITE = 4,         ///< an existing file
        MODE_READ_WRITE_EMPTY = 5,   ///< truncates or creates
        MODE_READ_WRITE_CREATE = 6,  ///< creates if absent
    };
    /// Seek origins. Every other code counts from the current position.
    enum SeekOrigin : std::int32_t { FROM_START = 3, FROM_END = 4 };

    /// ReadByte returns this at the end of the file.
    static constexpr std::uint8_t END_OF_FILE = 0xFF;

    /// Opens at once; every mode but MODE_READ first creates the file's directory (one level).
    /// @param in_mode  an OpenMode
    /// @throws ProductException "InvalidFileName" (empty), "UnrecognizedOpenMode", "CannotOpenFile"
    ///         (name and system error text), "CannotSetFilePosition"
    TextFile(const orska_wstring& in_fileName, std::int32_t in_mode);
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    /// Unlocks and closes.
    ~TextFile();

    /// Reads the next line, without its line feed. All carriage returns are dropped. A byte 0xFF
    /// ends the line, as the end of the file does, and is consumed.
    /// @return false when nothing is left, the byte 0xFF comes first or the read fails
    bool ReadLine(std::string& out_line);
    /// The next byte; END_OF_FILE at the end or when the read fails (or when the file has
    /// that byte).
    std::uint8_t ReadByte();
    /// @return bytes read, 0 at the end or on failure
    std::size_t Read(void* out_buffer, std::size_t in_count);
    /// True if a read has failed since the file was opened. The end of the file is no failure.
    bool HasReadFailed() const noexcept { return m_hasReadFailed; }

    /// @return bytes written; fewer than asked for, or 0, when the system fails
    std::size_t Write(const void* in_buffer, std::size_t in_count);
    /// Writes printf-style text, without its terminator.
    /// @return bytes written; 0 when the formatting fails
    std::size_t WriteFormat(const char* in_format, ...) ORSKA_PRINTF_FORMAT(2, 3);
    /// Writes the text and "\r\n".
    std::size_t WriteLine(std::string_view in_text);

    /// @param in_origin  a SeekOrigin, or any other number for the current position
    /// @return the new position, or -1 with the position unchanged
    std::int64_t Seek(std::int64_t in_offset, std::int32_t in_origin);
    /// @return the position, or -1 on failure
    std::int64_t GetPosition();
    /// Bytes.
    std::uint64_t GetSize() const { return m_handle.GetSize(); }
    /// Writes the system's buffers to the disk.
    bool Flush() { return m_handle.Flush(); }
    bool IsOpen() const noexcept { return m_handle.IsOpen(); }

    /// Waits for an exclusive lock on the range from 0 to the file's size (1 byte for an empty
    /// file; the low 32 bits of the size). It excludes other processes and other objects of
    /// this one.
    void Lock();
    void Unlock();

    /// Empties the file.
    /// @throws ProductException "CannotSetFilePosition", "IOError"
    void Clear();
    /// Empties the file.
    /// @return false on failure
    bool Truncate();
    /// Closes the file and opens its name again; creates no directory.
    /// @return whether the file is open
    /// @throws ProductException "UnrecognizedOpenMode"; the file is then unchanged
    bool Reopen(std::int32_t in_mode);

    const orska_wstring& GetFileName() const noexcept { return m_fileName; }

private:
    bool ReadAhead();
    void DropReadAhead();
    bool AppendUpTo(const char* in_end, std::string& io_line);
    const char* FindMark();
    std::uint32_t GetLockRange() const;

    orska_wstring m_fileName;
    FileHandle m_handle;
    bool m_isLocked = false;
    bool m_hasReadFailed = false;
    /// The bytes read ahead are [m_next, m_end); the handle's position is that of m_end.
    std::unique_ptr<char[]> m_buffer;
    const char* m_next = nullptr;
    const char* m_end = nullptr;
    /// The first CR and the first 0xFF at or after m_next as last searched; else m_end.
    const char* m_nextReturn = nullptr;
    const char* m_nextEndMark = nullptr;
};

}  // namespace Orska::Support

#endif
