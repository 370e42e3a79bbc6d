#!/usr/bin/env python3
"""The folders of src/ and which include which.

    tools/includegraph.py            prints every folder -> folder edge and the files behind it
    tools/includegraph.py --check    fails on an edge the README's layout table does not allow
    tools/includegraph.py --selftest runs the check on a copy with a forbidden include, which must fail

The table's "builds on" column names the folders directly below a folder; it may include those
and everything they build on in turn. The check also holds src/CMakeLists.txt to the table: each
folder's library must link exactly the folders its row names, so the build and the README cannot
drift apart, and a folder that includes above itself fails here before it fails to link.
"""

import argparse
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
INCLUDE = re.compile(r'^\s*#\s*include\s+"([a-z0-9_]+)/[^"]+"')
ROW = re.compile(r"^\|\s*`src/([a-z0-9_]+)/`\s*\|(.*)\|(.*)\|\s*$")
LAYER = re.compile(r"^zun_layer\(\s*([a-z0-9_]+)(.*?)\)", re.S | re.M)


def folders(src):
    return sorted(p.name for p in src.iterdir() if p.is_dir() and not p.name.startswith("."))


def include_edges(src):
    """{(from, to): [file:line, ...]} for every include of another folder's header."""
    known = set(folders(src))
    edges = {}
    for path in sorted(src.rglob("*")):
        if path.suffix not in (".h", ".cpp") or not path.is_file():
            continue
        owner = path.relative_to(src).parts[0]
        for number, line in enumerate(path.read_text(encoding="utf-8", errors="replace").splitlines(), 1):
            match = INCLUDE.match(line)
            if match and match.group(1) in known and match.group(1) != owner:
                where = f"{path.relative_to(src.parent)}:{number}"
                edges.setdefault((owner, match.group(1)), []).append(where)
    return edges


def read_table(readme):
    """{folder: [folders it builds on]} from the layout table's rows."""
    table = {}
    for line in readme.read_text(encoding="utf-8").splitlines():
        match = ROW.match(line)
        if match:
            below = re.findall(r"`([a-z0-9_]+)`", match.group(3))
            table[match.group(1)] = below
    return table


def read_layers(cmakelists):
    """{folder: [folders its library links]} from the zun_layer() calls."""
    layers = {}
    for match in LAYER.finditer(cmakelists.read_text(encoding="utf-8")):
        words = match.group(2).split()
        uses = []
        if "USES" in words:
            for word in words[words.index("USES") + 1 :]:
                if word.isupper():
                    break
                uses.append(word)
        layers[match.group(1)] = uses
    return layers


def reachable(table, start):
    seen, todo = set(), list(table.get(start, []))
    while todo:
        folder = todo.pop()
        if folder not in seen:
            seen.add(folder)
            todo.extend(table.get(folder, []))
    return seen


def check(src, readme, cmakelists):
    problems = []
    table = read_table(readme)
    if not table:
        return [f"{readme.name}: no layout table rows (| `src/<folder>/` | ... | ... |)"]
    for folder in folders(src):
        if folder not in table:
            problems.append(f"src/{folder}/ has no row in the README's layout table")
    for folder, below in table.items():
        for other in below:
            if other not in table:
                problems.append(f"the row of {folder} builds on {other}, which has no row")
        if folder in reachable(table, folder):
            problems.append(f"the table's layers form a cycle through {folder}")
    for (owner, target), places in sorted(include_edges(src).items()):
        if owner in table and target not in reachable(table, owner):
            for place in places:
                problems.append(f"{place}: {owner} includes {target}/, which it does not build on")
    layers = read_layers(cmakelists)
    for folder, below in table.items():
        if folder == "app":
            continue  # the programs, not a library
        if folder not in layers:
            problems.append(f"src/CMakeLists.txt: no zun_layer({folder} ...)")
        elif sorted(layers[folder]) != sorted(below):
            problems.append(
                f"src/CMakeLists.txt: zun_{folder} links {' '.join(sorted(layers[folder])) or 'no folder'},"
                f" the table says {' '.join(sorted(below)) or 'none'}"
            )
    return problems


def selftest():
    """The check passes on a copy of this tree and fails once a low folder includes a window."""
    import shutil
    import tempfile

    with tempfile.TemporaryDirectory(prefix="includegraph-") as tmp:
        copy = pathlib.Path(tmp)
        shutil.copytree(ROOT / "src", copy / "src", ignore=shutil.ignore_patterns("*.png", "*.wav"))
        shutil.copy(ROOT / "README.md", copy / "README.md")
        clean = check(copy / "src", copy / "README.md", copy / "src" / "CMakeLists.txt")
        if clean:
            print("selftest: the unchanged copy already fails:", *clean, sep="\n  ", file=sys.stderr)
            return 1
        victim = copy / "src" / "receivers" / "frames.cpp"
        victim.write_text(victim.read_text(encoding="utf-8") + '#include "mainscreen/mainwindow.h"\n', encoding="utf-8")
        found = check(copy / "src", copy / "README.md", copy / "src" / "CMakeLists.txt")
        if not any("src/receivers/frames.cpp" in p and "includes mainscreen/" in p for p in found):
            print("selftest: receivers including mainscreen/ went unnoticed", file=sys.stderr)
            return 1
    print("selftest: a forbidden include fails the check")
    return 0


def main():
    global ROOT
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--check", action="store_true", help="check against the README's layout table")
    parser.add_argument("--selftest", action="store_true", help="prove the check fails on a forbidden include")
    parser.add_argument("--root", type=pathlib.Path, default=None, help="the source tree (default: this one)")
    args = parser.parse_args()
    if args.root:
        ROOT = args.root.resolve()
    if args.selftest:
        return selftest()
    src, readme, cmakelists = ROOT / "src", ROOT / "README.md", ROOT / "src" / "CMakeLists.txt"
    if not args.check:
        for (owner, target), places in sorted(include_edges(src).items()):
            print(f"{owner} -> {target}  ({len(places)}: {places[0]}{', ...' if len(places) > 1 else ''})")
        return 0
    problems = check(src, readme, cmakelists)
    for problem in problems:
        print(problem, file=sys.stderr)
    if problems:
        print(f"includegraph: {len(problems)} problem(s)", file=sys.stderr)
        return 1
    print(f"includegraph: {len(include_edges(src))} folder edges, all allowed by the layout table")
    return 0


if __name__ == "__main__":
    sys.exit(main())
