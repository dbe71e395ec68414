// Transcoding by us and the peers: who/pair/text/size, in bytes of source a second. Sizes: bytes of
// one text; "8-64": lengths in random order; "exact-N": into a target just as large as the output;
// "stream-N": in pieces of N bytes into targets of 1,000 bytes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"
#include "bench/TranscodeGoals.h"
#include "bench/TranscodePeers.h"
#include "bench/TranscodeTexts.h"

namespace Orska::Bench {

namespace {

constexpr int INDEX_COUNT = 7;
constexpr std::size_t LARGE = 1048576;

std::size_t GetRoom(const TextPieces& in_pieces) {
    // A pair needs four times the source at most; peers may write scratch after it.
    return in_pieces.m_longest * 4 + 256;
}

// A peer with different output does different work and is left out. (For the punctuation of cp1252,
// ICU and iconv write bytes and ours the substitute; they stay in, because the work is the same.)
bool IsAsOurs(const Peer& in_ours, const Peer& in_peer, const std::string& in_name,
              const TextPieces& in_pieces, std::size_t in_room) {
    if (in_peer.m_who == "memcpy" || in_name.find("-cp1252/w1252/") != std::string::npos) {
        return true;
    }
    // Kept between calls: new pages for large texts would take most of the start-up time.
    static std::string ours;
    static std::string theirs;
    ours.resize(std::max(ours.size(), in_room));
    theirs.resize(ours.size());
    for (const std::string& piece : in_pieces.m_pieces) {
        const TextPieces one{{piece}, piece.size(), piece.size(), {}};
        const std::size_t expected = in_ours.m_convert(one, ours.data(), in_room);
        const std::size_t written = in_peer.m_convert(one, theirs.data(), in_room);
        if (expected == FAILED || written != expected ||
            ours.compare(0, expected, theirs, 0, expected) != 0) {
            return false;
        }
        if (piece.size() > 65536) break;
    }
    return true;
}

using SharedPieces = std::shared_ptr<const TextPieces>;

void Register(const Peer& in_peer, const std::string& in_name, const SharedPieces& in_pieces,
              std::size_t in_room) {
    benchmark::RegisterBenchmark(
        (in_peer.m_who + "/" + in_name).c_str(),
        [in_peer, in_pieces, in_room](benchmark::State& io_state) {
            // Its place in a cache line can halve the speed, so every target starts at one.
            constexpr std::size_t LINE = 64;
            std::string target(in_room + LINE, '\0');
            const auto address = reinterpret_cast<std::uintptr_t>(target.data());
            char* const to = target.data() + (LINE - address % LINE) % LINE;
            for (auto _ : io_state) {
                benchmark::DoNotOptimize(in_peer.m_convert(*in_pieces, to, in_room));
                benchmark::ClobberMemory();
            }
            const auto bytes = static_cast<std::int64_t>(in_pieces->m_bytes);
            io_state.SetBytesProcessed(static_cast<std::int64_t>(io_state.iterations()) * bytes);
        });
}

void RegisterPeers(const std::vector<Peer>& in_peers, const std::string& in_name,
                   const SharedPieces& in_pieces, std::size_t in_room) {
    for (const Peer& peer : in_peers) {
        if (IsAsOurs(in_peers.front(), peer, in_name, *in_pieces, in_room)) {
            Register(peer, in_name, in_pieces, in_room);
        } else {
            std::fprintf(stderr, "%s writes other bytes and is left out: %s\n", peer.m_who.c_str(),
                         in_name.c_str());
        }
    }
}

std::string GetPairName(int in_source, int in_target) {
    return std::string(GetEncodingName(in_source)) + "-" + GetEncodingName(in_target);
}

void RegisterPair(int in_source, int in_target) {
    const std::vector<Peer> peers = GetPeers(in_source, in_target);
    for (const std::string& text : GetTextNames()) {
        if (!CanHold(in_source, text) || !CanHold(in_target, text)) continue;
        const std::string name = GetPairName(in_source, in_target) + "/" + text + "/";
        for (const std::size_t size : {std::size_t{16}, std::size_t{64}, std::size_t{256},
                                       std::size_t{4096}, LARGE, std::size_t{0}}) {
            const auto pieces =
                std::make_shared<const TextPieces>(MakePieces(text, in_source, size));
            RegisterPeers(peers, name + (size == 0 ? "8-64" : std::to_string(size)), pieces,
                          GetRoom(*pieces));
        }
    }
}

// Converts each piece into a target that is just as large as its output.
void RegisterExact(int in_source, int in_target) {
    const std::vector<Peer> peers = GetExactPeers(in_source, in_target);
    for (const std::string& text : GetTextNames()) {
        for (const std::size_t size : {std::size_t{16}, std::size_t{64}, std::size_t{4096}}) {
            TextPieces pieces = MakePieces(text, in_source, size);
            std::string target(GetRoom(pieces), '\0');
            for (const std::string& piece : pieces.m_pieces) {
                const TextPieces one{{piece}, piece.size(), piece.size(), {}};
                pieces.m_rooms.push_back(
                    peers.front().m_convert(one, target.data(), target.size()));
            }
            RegisterPeers(
                peers,
                GetPairName(in_source, in_target) + "/" + text + "/exact-" + std::to_string(size),
                std::make_shared<const TextPieces>(pieces), GetRoom(pieces));
        }
    }
}

void RegisterStreaming() {
    constexpr std::size_t TARGET_SIZE = 1000;
    for (const std::string& text : GetTextNames()) {
        TextPieces pieces = MakePieces(text, 0, 65536);
        pieces.m_pieces.resize(1);
        pieces.m_bytes = pieces.m_pieces.front().size();
        const auto shared = std::make_shared<const TextPieces>(pieces);
        for (const std::size_t size : {std::size_t{61}, std::size_t{4093}}) {
            for (const Peer& peer : GetStreamingPeers(size, TARGET_SIZE)) {
                Register(peer, "utf8-utf16le/" + text + "/stream-" + std::to_string(size), shared,
                         TARGET_SIZE);
            }
        }
    }
}

}  // namespace

}  // namespace Orska::Bench

int main(int argc, char** argv) {
    using namespace Orska;
    for (int source = 0; source < Bench::INDEX_COUNT; ++source) {
        for (int target = 0; target < Bench::INDEX_COUNT; ++target) {
            if (Support::GetTranscoder(source, target) == nullptr) continue;
            Bench::RegisterPair(source, target);
        }
    }
    Bench::RegisterExact(0, 1);
    Bench::RegisterExact(1, 0);
    Bench::RegisterStreaming();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Bench::GoalReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::fprintf(stderr, "%s\n", reporter.GetGoals().c_str());
    return 0;
}
