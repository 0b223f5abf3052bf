"""field_tables.py [--update] PROGRAM GUIDE...

Holds the tables of the guides against the code. `<!-- table: NAME -->` stands above a table whose
first columns are those that PROGRAM prints under that name. The last of these is what a row is
known by; the columns behind it are the guide's own words. With --update the first columns are
written anew, in the order of the code. A row without words is a fault; so is a table that one of
the two lacks."""
import difflib
import pathlib
import re
import subprocess
import sys

TABLE = re.compile(r"^(?P<front><!-- table: (?P<name>\S+) -->\n\n(?P<titles>\|.*\n)\|[-:| ]+\n)"
                   r"(?P<rows>(?:\|.*\n)*)", re.M)


def printed_by(program):
    """The rows of the code, by their tables."""
    tables = {}
    done = subprocess.run([program], check=True, capture_output=True, text=True)
    for line in done.stdout.splitlines():
        name, *cells = line.split("\t")
        tables.setdefault(name, []).append(cells)
    return tables


def cells_of(row):
    return [cell.strip() for cell in row.strip().strip("|").split("|")]


def row_of(cells):
    return "|" + "".join(f" {cell} |" if cell else " |" for cell in cells) + "\n"


class Guides:
    def __init__(self, printed):
        self.printed = printed
        self.found = set()
        self.faults = []

    def current(self, text):
        """The text of a guide with the code's cells."""
        return TABLE.sub(self._current_table, text)

    def _current_table(self, table):
        name = table["name"]
        self.found.add(name)
        if name not in self.printed:
            self.faults.append(f"the code prints no table {name}")
            return table[0]
        own = len(cells_of(table["titles"])) - len(self.printed[name][0])
        rows = [cells_of(row) for row in table["rows"].splitlines()]
        words = {cells[-own - 1]: cells[-own:] for cells in rows}
        return table["front"] + "".join(row_of(cells + self._words_for(name, cells[-1], words, own))
                                        for cells in self.printed[name])

    def _words_for(self, name, row, words, count):
        found = words.get(row, [""] * count)
        if not any(found):
            self.faults.append(f"{name}: the row of {row} has no words")
        return found

    def missing(self):
        return [f"no guide has the table {name}" for name in self.printed if name not in self.found]


def differences(path, current):
    return difflib.unified_diff(path.read_text(encoding="utf-8").splitlines(), current.splitlines(),
                                path.name, "as the code has it", n=0, lineterm="")


def main(words):
    update = words[0] == "--update"
    program, *paths = words[1:] if update else words
    guides = Guides(printed_by(program))
    faults = []
    for path in map(pathlib.Path, paths):
        current = guides.current(path.read_text(encoding="utf-8"))
        if update:
            path.write_text(current, encoding="utf-8")
        else:
            faults += differences(path, current)
    if faults:
        faults.append("`scripts/docs --update-tables` writes the tables as the code has them")
    faults += guides.faults + guides.missing()
    for fault in faults:
        print(fault)
    return 1 if faults else 0


sys.exit(main(sys.argv[1:]))
