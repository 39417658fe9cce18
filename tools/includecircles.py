#!/usr/bin/env python3
"""Finds circles of includes: includecircles.py ROOT FOLDER...

A header and the source of the same name are one unit, because what one of them needs the other needs with it. A circle
is a set of units, or of folders, each of which needs, by whatever way round, each of the others. Every circle is listed
with one of its shortest ways round. The status is 1 when there is one.
"""
import os
import re
import sys

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*"([^"]+)"', re.MULTILINE)
SUFFIXES = (".h", ".cpp")


def sources(root, folders):
    """The sources and headers below the folders, as paths from the root."""
    found = [os.path.relpath(os.path.join(where, name), root)
             for folder in folders for where, _, names in os.walk(os.path.join(root, folder))
             for name in names if name.endswith(SUFFIXES)]
    return sorted(path.replace(os.sep, "/") for path in found)


def resolve(name, including, by_ending):
    """The file that an include names: one beside it, else the one whose path ends so, None for one from elsewhere."""
    candidates = by_ending.get(os.path.basename(name), [])
    beside = os.path.normpath(os.path.join(os.path.dirname(including), name)).replace(os.sep, "/")
    if beside in candidates:
        return beside
    matching = [path for path in candidates if path == name or path.endswith("/" + name)]
    if len(matching) > 1:
        # Every include names its file from a root on, and the outermost is the one that has the fewest folders.
        matching.sort(key=lambda path: path.count("/"))
        if matching[0].count("/") == matching[1].count("/"):
            sys.exit(f'{including}: "{name}" could be {" or ".join(matching)}')
    return matching[0] if matching else None


def includes(root, folders):
    """For each file the files that it includes."""
    paths = sources(root, folders)
    by_ending = {}
    for path in paths:
        by_ending.setdefault(os.path.basename(path), []).append(path)
    graph = {}
    for path in paths:
        with open(os.path.join(root, path), encoding="utf-8") as file:
            names = INCLUDE.findall(file.read())
        graph[path] = {found for found in (resolve(name, path, by_ending) for name in names) if found}
    return graph


def grouped(graph, group):
    """The same graph between groups of its nodes, without what stays within one."""
    groups = {group(node): set() for node in graph}
    for node, targets in graph.items():
        groups[group(node)] |= {group(target) for target in targets} - {group(node)}
    return groups


def reachable(graph, start):
    seen, waiting = set(), [start]
    while waiting:
        for target in graph[waiting.pop()]:
            if target not in seen:
                seen.add(target)
                waiting.append(target)
    return seen


def circles(graph):
    """The sets of nodes that reach each other, each as a sorted list."""
    reached = {node: reachable(graph, node) for node in graph}
    found = {tuple(sorted(other for other in reached[node] if node in reached[other]))
             for node in graph if node in reached[node]}
    return [list(circle) for circle in sorted(found)]


def way_round(graph, start):
    """A shortest way from a node back to itself."""
    ways = [[start]]
    seen = set()
    for way in ways:
        for target in sorted(graph[way[-1]]):
            if target == start:
                return way + [start]
            if target not in seen:
                seen.add(target)
                ways.append(way + [target])
    return []


def report(kind, graph):
    found = circles(graph)
    for circle in found:
        print(f"{len(circle)} {kind} in a circle: {', '.join(circle)}")
        print("   for example " + " -> ".join(min((way_round(graph, node) for node in circle), key=len)))
    print(f"{len(found)} circles among {len(graph)} {kind}")
    return len(found)


def main(root, *folders):
    graph = includes(root, folders)
    count = report("units", grouped(graph, lambda path: os.path.splitext(path)[0]))
    count += report("folders", grouped(graph, os.path.dirname))
    if not graph:
        sys.exit("there are no sources in " + ", ".join(folders))
    return 1 if count else 0


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
