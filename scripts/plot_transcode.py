#!/usr/bin/env python3
"""Makes tables of ratios from the JSON of bench_transcode.

    bench_transcode --benchmark_format=json --benchmark_repetitions=6 > transcode.json
    scripts/plot_transcode.py [--sizes=8-64,4096] [--ratios] transcode.json [more.json ...]

A row is a pair and a size, a column a text. A cell has our GB/s of source bytes, then how many times as
fast we are: our AVX-512, AVX2 and SSE4.2 forms compared with simdutf's for the same level, and ours with
the better of ICU and iconv; a dash if a peer lacks the pair. Each figure is the fastest of the
repetitions in all files. With --sizes only rows of these sizes; with --ratios cells without GB/s.
"""
import argparse
import json

TEXTS = ["ascii", "latin", "cyrgr", "cjk", "emoji", "w1252"]
ENCODINGS = ["utf8", "utf16le", "utf16be", "utf32le", "utf32be", "latin1", "cp1252"]
COMPARISONS = [
    ("ours-avx512", ["simdutf-icelake"]),
    ("ours-avx2", ["simdutf-haswell"]),
    ("ours-sse42", ["simdutf-westmere"]),
    ("ours", ["icu", "iconv"]),
]


def read(paths):
    """Returns {(pair, size): {text: {who: GB/s}}}."""
    samples = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run.get("run_type") == "aggregate" or "bytes_per_second" not in run:
                    continue
                who, pair, text, size = run["run_name"].split("/")
                by_who = samples.setdefault((pair, size), {}).setdefault(text, {})
                by_who.setdefault(who, []).append(run["bytes_per_second"] / 1e9)
    for texts in samples.values():
        for by_who in texts.values():
            for who, rates in by_who.items():
                by_who[who] = max(rates)
            # "ours" is the form for the processor's level, and may be missing.
            for level in ("ours-avx512", "ours-avx2"):
                if "ours" not in by_who and level in by_who:
                    by_who["ours"] = by_who[level]
    return samples


def order(key):
    pair, size = key
    kind = size.rstrip("0123456789-")
    digits = size[len(kind):].strip("-").split("-")[0]
    return [ENCODINGS.index(part) for part in pair.split("-")], kind, int(digits)


def cell(rates, has_speed):
    if rates is None or "ours" not in rates:
        return ""
    ratios = []
    for ours, peers in COMPARISONS:
        best = max((rates[who] for who in peers if who in rates), default=None)
        ratios.append("–" if best is None or ours not in rates else f"{rates[ours] / best:.1f}")
    speed = f"{rates['ours']:.1f}: " if has_speed else ""
    return speed + " ".join(ratios)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--sizes", type=lambda value: value.split(","))
    parser.add_argument("--ratios", action="store_true")
    parser.add_argument("paths", nargs="+")
    arguments = parser.parse_args()
    samples = read(arguments.paths)
    print("| pair | size | " + " | ".join(TEXTS) + " |")
    print("|" + "---|" * (len(TEXTS) + 2))
    for key in sorted(samples, key=order):
        if arguments.sizes and key[1] not in arguments.sizes:
            continue
        cells = [cell(samples[key].get(text), not arguments.ratios) for text in TEXTS]
        print("| " + " | ".join(list(key) + cells) + " |")


if __name__ == "__main__":
    main()
