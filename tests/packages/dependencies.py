#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Compares the lists of dependencies of docs/architecture.md, scripts/prepare.sh, the Conan recipe and the vcpkg port with
the table packaging/dependencies.txt, and looks for places that spell the version of the product, which is a line of
CMakeLists.txt.

usage: dependencies.py [ROOT]
"""
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2])
faults = []


def read(path):
    return (ROOT / path).read_text(encoding="utf-8")


def compare(place, found, column):
    wanted = {name for row in table for name in row[column]}
    for names, fault in ((wanted - found, "lacks"), (found - wanted, "has, unlike packaging/dependencies.txt,")):
        if names:
            faults.append(f"{place} {fault} {', '.join(sorted(names))}")


table = []
for line in read("packaging/dependencies.txt").splitlines():
    if not line.startswith("#"):
        name, *packages = (cell.strip() for cell in line.split("|"))
        table.append([[name]] + [cell.split() for cell in packages])
table = [[[name for name in cell if name != "-"] for cell in row] for row in table]

lines = read("docs/architecture.md").split("## Dependencies")[1].splitlines()
documented = [re.sub(r" \(.*", "", line.split("|")[1].strip()) for line in lines
              if line.startswith("| ") and "not used by what is installed" not in line]
compare("docs/architecture.md", set(documented) - {"Library"}, 0)
prepared = re.search(r"^packages=\((.*?)\)", read("scripts/prepare.sh"), re.S | re.M).group(1)
compare("scripts/prepare.sh", set(re.sub(r'"\$.*?"', "", prepared).split()), 1)
compare("conanfile.py", set(re.findall(r'requires\("([^/"]+)/', read("packaging/conan/conanfile.py"))), 2)
port = json.loads(read("packaging/vcpkg/vcpkg.json.in"))["dependencies"]
compare("vcpkg.json.in", {entry if isinstance(entry, str) else entry["name"] for entry in port}, 3)

version = re.search(r"^project\(DataInterface VERSION ([0-9.]+)", read("CMakeLists.txt"), re.M).group(1)
newest = re.search(r"^## ([0-9.]+)", read("CHANGELOG.md"), re.M).group(1)
if newest != version:
    faults.append(f"CHANGELOG.md begins with {newest}, not with {version}")
listed = subprocess.run(["git", "-C", ROOT, "grep", "-lIwF", version], capture_output=True, text=True, check=False).stdout
for path in sorted(set(listed.splitlines()) - {"CMakeLists.txt", "CHANGELOG.md"}):
    faults.append(f"{path} spells the version {version}")

sys.exit("\n".join(faults) or None)
