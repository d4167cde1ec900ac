#!/usr/bin/env python3
"""Copies a hunspell dictionary (.dic and .aff) keeping each entry as `word/FLAGS` only.

Debian's French dictionary writes many entries with morphological fields ("le po:mg po:det"),
and Qt's dictionary converter does not keep such words as words: "le", "des", "ou" would be
marked as misspelled. Entries that become identical are written once."""
import re
import shutil
import sys

FIELD = re.compile(r"\s+[a-z][a-z]:.*$")


def main(source_dic, source_aff, target_dic, target_aff):
    with open(source_dic, encoding="utf-8") as f:
        lines = f.read().splitlines()
    entries = []
    seen = set()
    for line in lines[1:]:
        entry = FIELD.sub("", line.split("\t", 1)[0]).rstrip()
        if entry and entry not in seen:
            seen.add(entry)
            entries.append(entry)
    with open(target_dic, "w", encoding="utf-8") as f:
        f.write("%d\n" % len(entries))
        f.write("\n".join(entries))
        f.write("\n")
    shutil.copyfile(source_aff, target_aff)


if __name__ == "__main__":
    main(*sys.argv[1:5])
