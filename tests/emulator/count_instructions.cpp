// How many instructions the transcoder's AVX2 and AVX-512 kernels take for a text. Only of use in
// an emulator that counts one tick of its time-stamp counter an instruction: scripts/emulate-avx512
// --count. Instructions are not time; but what takes a third of them is hardly slower.
#include <immintrin.h>

#include <cstdio>
#include <string>

#include "tests/support/TranscoderReference.h"

namespace {

using namespace Orska::Support;
using namespace Orska::Support::Testing;

struct Pair {
    int m_source;
    int m_target;
};

constexpr Pair PAIRS[] = {{UTF8, UTF16LE},   {UTF8, UTF16BE},   {UTF8, UTF32LE}, {UTF8, LATIN1},
                          {UTF16LE, UTF8},   {UTF16LE, LATIN1}, {UTF32LE, UTF8}, {LATIN1, UTF8},
                          {LATIN1, UTF16LE}, {LATIN1, UTF32LE}, {CP1252, UTF8},  {CP1252, UTF16LE},
                          {CP1252, LATIN1}};
constexpr const char* KIND_NAMES[] = {"ascii", "latin", "cyrgr", "cjk", "emoji", "w1252", "mixed"};
constexpr std::size_t BUFFER_SIZE = 32768;
char s_target[BUFFER_SIZE];

// Whole code points of about in_size bytes.
std::string MakePiece(TextKind in_kind, std::size_t in_size, int in_encoding) {
    const std::size_t sample = MakeText(in_kind, 256, 1, in_encoding).size();
    return MakeText(in_kind, in_size * 256 / sample, 1, in_encoding);
}

unsigned long long Count(TranscoderFunction in_function, const std::string& in_text) {
    constexpr unsigned ROUNDS = 16;
    const unsigned long long start = __rdtsc();
    for (unsigned i = 0; i < ROUNDS; ++i) {
        TranscoderSource source{in_text.data(), in_text.size(), 0};
        TranscoderTarget target{s_target, BUFFER_SIZE, 0};
        in_function(source, target);
    }
    return (__rdtsc() - start) / ROUNDS;
}

}  // namespace

int main() {
    if (DetectCpuLevel() < CpuLevel::AVX512) {
        std::puts("This processor has no AVX-512 with VBMI2.");
        return 1;
    }
    std::puts("pair text bytes avx2 avx512");
    for (const auto& [from, to] : PAIRS) {
        for (const TextKind kind : TEXT_KINDS) {
            for (const std::size_t size : {40, 4096}) {
                const std::string text = MakePiece(kind, size, from);
                std::printf("%s-%s %s %zu %llu %llu\n", GetIndexName(from), GetIndexName(to),
                            KIND_NAMES[static_cast<int>(kind)], text.size(),
                            Count(GetTranscoderAtLevel(from, to, CpuLevel::AVX2), text),
                            Count(GetTranscoderAtLevel(from, to, CpuLevel::AVX512), text));
            }
        }
    }
    return 0;
}
