#include "tests/support/TextFile_Fake.h"

#include <algorithm>
#include <cstring>

#include "PlatformAbstraction/files/TextFile.h"
#include "tests/support/TestSystem.h"

namespace Orska::Test {

FakeFile& FakeFile::Get() {
    static FakeFile s_file;
    return s_file;
}

}  // namespace Orska::Test

namespace Orska::Support {

using Test::FakeFile;

namespace {

bool Fail(bool in_fails) {
    if (in_fails) {
        Test::SetLastErrorCode(Test::SYSTEM_ERRORS.m_inputOutput);
    }
    return in_fails;
}

}  // namespace

bool FileHandle::Open(const orska_wstring&, const FileOpenArguments&) {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_openFails)) {
        return false;
    }
    file.m_position = 0;
    file.m_isOpen = true;
    m_handle = 1;
    return true;
}

void FileHandle::Close() noexcept {
    if (IsOpen()) {
        FakeFile::Get().m_isOpen = false;
        m_handle = INVALID;
    }
}

std::int64_t FileHandle::Read(void* out_buffer, std::size_t in_count) {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_position >= file.m_readFailsAt)) {
        return -1;
    }
    const std::size_t end = std::min(file.m_content.size(), file.m_readFailsAt);
    const std::size_t count = std::min(in_count, end - std::min(file.m_position, end));
    std::memcpy(out_buffer, file.m_content.data() + file.m_position, count);
    file.m_position += count;
    return static_cast<std::int64_t>(count);
}

std::size_t FileHandle::Write(const void* in_buffer, std::size_t in_count) {
    FakeFile& file = FakeFile::Get();
    const std::size_t room = file.m_writeFailsAt - std::min(file.m_position, file.m_writeFailsAt);
    const std::size_t count = std::min(in_count, room);
    file.m_content.resize(std::max(file.m_content.size(), file.m_position + count));
    std::memcpy(file.m_content.data() + file.m_position, in_buffer, count);
    file.m_position += count;
    return count;
}

std::int64_t FileHandle::Seek(std::int64_t in_offset, Origin in_origin) {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_seekFails)) {
        return -1;
    }
    const std::size_t base = in_origin == Origin::START ? 0
                             : in_origin == Origin::END ? file.m_content.size()
                                                        : file.m_position;
    file.m_position = base + static_cast<std::size_t>(in_offset);
    return static_cast<std::int64_t>(file.m_position);
}

bool FileHandle::SetEnd() {
    FakeFile& file = FakeFile::Get();
    if (Fail(file.m_setEndFails)) {
        return false;
    }
    file.m_content.resize(file.m_position);
    return true;
}

bool FileHandle::Flush() { return true; }

std::uint64_t FileHandle::GetSize() const { return FakeFile::Get().m_content.size(); }

void FileHandle::Lock(std::uint32_t) { FakeFile::Get().m_isLocked = true; }

void FileHandle::Unlock(std::uint32_t) { FakeFile::Get().m_isLocked = false; }

}  // namespace Orska::Support
