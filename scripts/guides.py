"""How the guides are read by the scripts that make a site of them, check their links and run their
code: which text is code, what a link is, and how a heading is linked to."""
import re

LINK = re.compile(r"(?<!!)\[([^\]\[]+)\]\(([^()\s]+)\)")
HEADING = re.compile(r"^#{1,6} .*$", re.M)
FENCED = re.compile(r"^( *)```.*?^\1```$\n?", re.M | re.S)
SPAN = re.compile(r"`[^`]+`")


def is_external(target):
    return re.match(r"[a-z]+:", target) is not None


def pieces(text):
    """The text in pieces, each with whether it is a block of code."""
    at = 0
    for block in FENCED.finditer(text):
        yield False, text[at:block.start()]
        yield True, block[0]
        at = block.end()
    yield False, text[at:]


def prose(text):
    """The text without its code."""
    return SPAN.sub("code", "".join(piece for is_code, piece in pieces(text) if not is_code))


def slug(heading):
    """The anchor of a heading, as the places that show Markdown make it."""
    plain = LINK.sub(r"\1", heading.lstrip("#").strip()).lower()
    return re.sub(r"[^\w\- ]", "", plain).replace(" ", "-")


def headings(path):
    """The anchors of a guide, in the order of its headings; of equal ones the later are numbered."""
    seen = {}
    for is_code, piece in pieces(path.read_text(encoding="utf-8")):
        for heading in HEADING.findall("" if is_code else piece):
            anchor = slug(heading)
            count = seen[anchor] = seen.get(anchor, -1) + 1
            yield anchor if count == 0 else f"{anchor}-{count}"
