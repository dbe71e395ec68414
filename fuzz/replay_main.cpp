// Runs a fuzzer's function once on each file in its arguments, and on the files of directories.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size);

namespace {

void Replay(const std::filesystem::path& in_file) {
    std::ifstream stream(in_file, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        if (!fs::is_directory(argv[i])) {
            Replay(argv[i]);
            ++count;
            continue;
        }
        for (const auto& entry : fs::directory_iterator(argv[i])) {
            Replay(entry.path());
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;  // an empty corpus tests nothing
}
