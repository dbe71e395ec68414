/// One file in a directory of its own, rewritten for each input and removed at the end.
#ifndef FUZZ_SCRATCHFILE_H
#define FUZZ_SCRATCHFILE_H

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "fuzz/FuzzInput.h"

namespace Orska::Fuzz {

class ScratchFile {
public:
    ScratchFile() {
        std::string folder = (std::filesystem::temp_directory_path() / "fuzz-XXXXXX").string();
        Require(mkdtemp(folder.data()) != nullptr, "no scratch directory", folder);
        m_folder = folder;
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    std::string GetPath() const { return (m_folder / "file").string(); }

    void Write(std::string_view in_bytes) const {
        const int file = open(GetPath().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        Require(file >= 0 && write(file, in_bytes.data(), in_bytes.size()) ==
                                 static_cast<ssize_t>(in_bytes.size()),
                "the scratch file cannot be written");
        close(file);
    }

private:
    std::filesystem::path m_folder;
};

}  // namespace Orska::Fuzz

#endif
