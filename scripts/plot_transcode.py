#!/usr/bin/env python3
"""Makes tables of ratios from the JSON of bench_transcode.

    bench_transcode --benchmark_format=json --benchmark_repetitions=5 > transcode.json
    scripts/plot_transcode.py transcode.json [more.json ...] > table.md

Each figure is the median over the repetitions of all files. GB/s are of source bytes.
"""
import json
import statistics
import sys

COMPARISONS = [
    # heading, ours, peers of which the best counts
    ("AVX2", "ours-avx2", ["simdutf-haswell"]),
    ("SSE4.2", "ours-sse42", ["simdutf-westmere"]),
    ("ICU, iconv", "ours", ["icu", "iconv"]),
]


def read(paths):
    """Gives {pair/text/size: {who: GB/s}} in the order of the files."""
    samples = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run.get("run_type") == "aggregate" or "bytes_per_second" not in run:
                    continue
                who, rest = run["run_name"].split("/", 1)
                rates = samples.setdefault(rest, {}).setdefault(who, [])
                rates.append(run["bytes_per_second"] / 1e9)
    return {
        name: {who: statistics.median(rates) for who, rates in by_who.items()}
        for name, by_who in samples.items()
    }


def cell(rates, ours, peers):
    best = max((rates[who] for who in peers if who in rates), default=None)
    if best is None or ours not in rates:
        return "–"
    return f"{rates[ours] / best:.2f}"


def main(paths):
    if not paths:
        sys.exit(__doc__)
    rows = read(paths)
    heads = ["pair", "text", "size", "ours, GB/s"] + [head for head, _, _ in COMPARISONS]
    print("| " + " | ".join(heads) + " |")
    print("|" + "---|" * len(heads))
    for name, rates in rows.items():
        pair, text, size = name.split("/")
        ours = f"{rates['ours']:.2f}" if "ours" in rates else "–"
        cells = [cell(rates, who, peers) for _, who, peers in COMPARISONS]
        print("| " + " | ".join([pair, text, size, ours] + cells) + " |")


if __name__ == "__main__":
    main(sys.argv[1:])
