#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the table and the pictures of a run from Google Benchmark's JSON files.

report.py JSON_DIR TARGETS TITLE [--plots DIR] [--markdown FILE] [--check]

A benchmark is named OPERATION/WHO or OPERATION/WHO/N. Every figure is the median of its repetitions, and a ratio is one
of two medians of the same run. With --check the exit status is 1 when a target is missed.
"""
import argparse
import collections
import json
import pathlib
import statistics
import sys

PEERS = ["glib", "apr", "nspr", "uv", "poco", "qt", "event", "icu", "utf8cpp", "plain", "rules"]
UNITS = [(1e9, "s"), (1e6, "ms"), (1e3, "µs"), (1, "ns")]


def load(folder):
    """Returns {topic: {(operation, n): {who: median}}} in the order of the files; n is None or a number. A topic's files
    are TOPIC.ROUND.json, from processes of the same program."""
    rounds = collections.defaultdict(list)
    for file in sorted(pathlib.Path(folder).glob("*.json")):
        rounds[file.name.split(".")[0]].append(json.loads(file.read_text())["benchmarks"])
    topics = {}
    for topic, processes in rounds.items():
        values = collections.defaultdict(lambda: collections.defaultdict(list))
        runs = [run for runs in processes for run in runs]  # in a random order
        for run in sorted(runs, key=lambda one: (one["family_index"], one["per_family_instance_index"])):
            if run.get("error_occurred"):
                sys.exit(f"{run['name']}: {run['error_message']}")
            if run["run_type"] != "iteration":
                continue
            parts = [part for part in run["name"].split("/") if ":" not in part and not part.endswith("_time")]
            key = (parts[0], int(parts[2]) if len(parts) > 2 else None)
            scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]
            values[key][parts[1]].append(run["KiB"] if "KiB" in run else run["real_time"] * scale)
        medians = {key: {who: statistics.median(v) for who, v in by.items()} for key, by in values.items()}
        for (operation, n), by in medians.items():  # a limit that does not depend on the number
            by.setdefault("limit", medians.get((operation, None), {}).get("limit"))
            if by["limit"] is None:
                del by["limit"]
        topics[topic] = {key: by for key, by in medians.items() if "ours" in by}
    return topics


def load_targets(file):
    targets = collections.defaultdict(list)
    for line in pathlib.Path(file).read_text().splitlines():
        words = line.split("#")[0].split()
        if words:
            targets[words[0]].append((words[1], float(words[2])))
    return targets


def name_of(key):
    return key[0] if key[1] is None else f"{key[0]}/{key[1]}"


def show(value, operation):
    if operation == "Resident":
        return f"{value:.0f} KiB"
    divisor, unit = next((u for u in UNITS if value >= u[0]), UNITS[-1])
    return f"{value / divisor:.3g} {unit}"


def judge(by, targets):
    """Returns the text of the column "to reach" and whether all targets are met; "-" where one cannot be told."""
    texts, met = [], True
    for base, most in targets:
        texts.append(f"≤ {most:g} {base}")
        if base not in by:
            texts[-1] += " (not measured)"
        elif by["ours"] / by[base] > most:
            met = False
            texts[-1] += f" (is {by['ours'] / by[base]:.2f})"
    return ", ".join(texts), ("yes" if met else "**no**") if targets else ""


def table(topics, targets):
    rows, missed = [], []
    peers = [p for p in PEERS if any(p in by for keys in topics.values() for by in keys.values())]
    head = ["operation", "ours", "limit", "ratio", "to reach", "met"] + peers
    for topic, keys in topics.items():
        rows.append([f"**{topic}**"] + [""] * (len(head) - 1))
        for key, by in keys.items():
            limit = by.get("limit")
            text, met = judge(by, targets.get(name_of(key), []))
            if met == "**no**":
                missed.append(name_of(key))
            base = limit or by["ours"]
            rows.append([name_of(key), show(by["ours"], key[0]), show(limit, key[0]) if limit else "",
                         f"{by['ours'] / limit:.2f}" if limit else "", text, met]
                        + [f"{by[p] / base:.2f}" if p in by else "" for p in peers])
    widths = [max(len(row[i]) for row in rows + [head]) for i in range(len(head))]
    lines = ["| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |" for row in [head] + rows]
    lines.insert(1, "|" + "|".join("---" if i in (0, 4, 5) else "---:" for i in range(len(head))) + "|")
    return "\n".join(lines), missed


def plots(topics, targets, folder):
    import matplotlib
    matplotlib.use("svg")
    matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "bench", "font.size": 8, "axes.grid": True,
                                "grid.linewidth": 0.3})
    from matplotlib import pyplot
    folder.mkdir(parents=True, exist_ok=True)
    written = []

    def save(figure, name):
        figure.savefig(folder / name, bbox_inches="tight", metadata={"Date": None})
        pyplot.close(figure)
        written.append(name)

    def marks(who):
        return {"ours": "D", "limit": "|", "rules": "s"}.get(who, "o")

    colours = {who: f"C{i}" for i, who in enumerate(PEERS)} | {"ours": "black", "limit": "red", "rules": "gold"}
    for topic, keys in topics.items():
        rows = [key for key, by in keys.items()
                if "limit" in by and (key[1] is None or name_of(key) in targets)][::-1]
        if rows:
            figure, axes = pyplot.subplots(figsize=(7, 0.6 + 0.22 * len(rows)))
            for who in ["ours"] + PEERS:
                points = [(keys[key][who] / keys[key]["limit"], i) for i, key in enumerate(rows) if who in keys[key]]
                if points:
                    axes.scatter(*zip(*points), marker=marks(who), s=18, color=colours[who], label=who, zorder=3)
            axes.axvline(1, color="red", linewidth=1)
            axes.set(xscale="log", xlabel="time ÷ limit (less is better)", title=topic)
            axes.set_yticks(range(len(rows)), [name_of(key) for key in rows])
            axes.legend(loc="center left", bbox_to_anchor=(1, 0.5), frameon=False)
            save(figure, f"ratio-{topic}.svg")
        numbers = collections.Counter(operation for operation, n in keys if n is not None)
        curves = [operation for operation, count in numbers.items() if count > 2]
        if curves:
            figure, grid = pyplot.subplots(1, len(curves), figsize=(2.9 * len(curves), 2.4), squeeze=False)
            for axes, operation in zip(grid[0], curves):
                points = sorted((n, by) for (name, n), by in keys.items() if name == operation and n is not None)
                for who in ["ours", "limit"] + PEERS:
                    line = [(n, by[who] / 1e3) for n, by in points if who in by and n > 0]
                    if line:
                        axes.plot(*zip(*line), marker=".", linewidth=1, color=colours[who], label=who)
                axes.set(xscale="log", yscale="log", title=operation, xlabel="N", ylabel="µs")
                axes.legend(fontsize=6, frameon=False)
            figure.tight_layout()
            save(figure, f"curves-{topic}.svg")
    return written


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("json")
    parser.add_argument("targets")
    parser.add_argument("title")
    parser.add_argument("--plots", type=pathlib.Path)
    parser.add_argument("--markdown", type=pathlib.Path)
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    topics, targets = load(options.json), load_targets(options.targets)
    text, missed = table(topics, targets)
    print(f"{options.title}\n\n{text}\n\nMissed: {', '.join(missed) or 'none'}")
    pictures = plots(topics, targets, options.plots) if options.plots else []
    if options.markdown:
        options.markdown.write_text(
            f"# A run of the bench\n\n{options.title}. Written by `script/bench --publish`;\n"
            "[how to read it](../performance.md).\n\n"
            f"{text}\n\n" + "\n".join(f"![{name}]({name})" for name in pictures) + "\n")
    return 1 if options.check and missed else 0


if __name__ == "__main__":
    sys.exit(main())
