# SPDX-License-Identifier: MIT
"""The defects that change nothing a test could see: scripts/mutants-equivalent.txt against the sources of today."""
import re
from collections import defaultdict

from mutation import plant

FORM = (
    "a block is a file (', place 2 of 3' or ', places 1 3 of 3' behind it where the line is there several times), "
    "'- ' its line, '+ ' the line changed, and the reason"
)
HEAD = re.compile(r"(?P<path>[^,\s]+)(?:, places? (?P<places>\d+(?: \d+)*) of (?P<total>\d+))?")


class Equivalents:
    """Members: defects (a set), and complaints about entries that match nothing or leave open which place they mean."""

    def __init__(self, root):
        self.defects, self.complaints = set(), []
        self.root, self.planted = root, {}
        self.file = root / "scripts" / "mutants-equivalent.txt"
        blocks = self.file.read_text().split("\n\n") if self.file.exists() else []
        for block in blocks:
            lines = [line for line in block.splitlines() if line and not line.startswith("#")]
            if lines:
                self._take(block, lines)

    def _take(self, block, lines):
        head = HEAD.fullmatch(lines[0])
        changes = [line[2:] for line in lines[2:] if line.startswith("+ ")]
        reason = [line for line in lines[2:] if not line.startswith("+ ")]
        if not head or not lines[1:] or not lines[1].startswith("- ") or not changes or not reason:
            raise ValueError(f"{self.file}: {FORM}:\n{block}")
        for change in changes:
            found = self._planted(head["path"]).get((lines[1][2:], change), [])
            wanted = [int(place) for place in head["places"].split()] if head["places"] else [1]
            if len(found) == int(head["total"] or 1) and all(1 <= place <= len(found) for place in wanted):
                self.defects.update(found[place - 1] for place in wanted)
            else:
                self.complaints.append(f"{self._why(found)}\n  {lines[0]}\n  {lines[1]}\n  + {change}")

    def _planted(self, path):
        """(line, changed line) -> the defects that are so, in the order of the file."""
        if path not in self.planted:
            self.planted[path] = defaultdict(list)
            file = self.root / path
            for defect in plant.defects(path, file.read_text()) if file.exists() else []:
                self.planted[path][defect.old, defect.new].append(defect)
        return self.planted[path]

    def _why(self, found):
        if not found:
            return f"{self.file.name}: no such defect is planted any more; take this out, or write the line as it is now:"
        lines = ", ".join(str(defect.line) for defect in found)
        return f"{self.file.name}: planted in so many places: {len(found)} (line {lines}); say 'place 1 of {len(found)}':"
