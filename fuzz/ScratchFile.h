/// One file in a directory of its own, rewritten for each input and removed at the end.
#ifndef FUZZ_SCRATCHFILE_H
#define FUZZ_SCRATCHFILE_H

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/FuzzInput.h"

namespace Orska::Fuzz {

class ScratchFile {
public:
    ScratchFile() {
        // The process is the only one of its number now, and what another left behind is skipped.
        int number = 0;
        do {
            m_folder = std::filesystem::temp_directory_path() /
                       ("fuzz-" + std::to_string(getpid()) + "." + std::to_string(++number));
        } while (!std::filesystem::create_directory(m_folder));
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }

    std::string GetPath() const { return (m_folder / "file").string(); }

    void Write(std::string_view in_bytes) const {
        std::ofstream file(GetPath(), std::ios::binary);
        file.write(in_bytes.data(), static_cast<std::streamsize>(in_bytes.size())).flush();
        Require(file.good(), "the scratch file cannot be written");
    }

private:
    std::filesystem::path m_folder;
};

}  // namespace Orska::Fuzz

#endif
