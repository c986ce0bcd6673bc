#!/usr/bin/env python3
"""Widens the site's search. Doxygen 1.9.4 finds a page by the beginning of its title alone; this adds each further word
of the titles of pages and groups, and the headings of the pages, to what the search looks through.

    search_words.py SITE"""
import html
import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import pages  # noqa: E402

IDLE = set("a an and as at by do for from how i in is it its my no not of on one or that the there to what when where "
           "which who why with your".split())
ROW = re.compile(r"^  \['(?P<id>.+?)_\d+',(?P<rest>\['(?P<text>(?:[^'\\]|\\.)*)',.*\])\](?:,?)$", re.M)


def identifier(text):
    """A text as the search's script spells it."""
    return "".join(c if re.match(r"[a-z0-9\u0080-\uffff]", c) else f"_{ord(c):02x}" for c in text.lower())


def rows_of(text, rest, first):
    """One row for each word that the text can be found by, from its word number `first` on."""
    for number, word in enumerate(re.finditer(r"\w[\w'.-]*", text)):
        if number == 0 and first == 0 or number > 0 and word[0].lower() not in IDLE:
            yield identifier(text[word.start():]), rest


def headings():
    """The headings of all pages, as rows of the search."""
    for page in pages.pages():
        found = pages.HEADING.findall(pages.FENCE.sub("", page.read_text(encoding="utf-8")))
        if page.name == "README.md" or not found:
            continue
        title = html.escape(found[0][1].replace("`", ""), quote=True)
        name = pages.identifier(page)
        for _, heading in found[1:]:
            text = heading.replace("`", "")
            said = html.escape(text, quote=True).replace("\\", "")
            yield from rows_of(text, f"['{said}',['../{name}.html#{name}_{pages.slug(heading)}',1,'{title}']]", 0)


def main():
    folder = pathlib.Path(sys.argv[1]) / "search"
    listed = (folder / "searchdata.js").read_text(encoding="utf-8")
    letters = re.search(r'0: "([^"]+)"', listed)[1]
    files = {letter: folder / f"all_{number:x}.js" for number, letter in enumerate(letters)}
    rows = [(match["id"], match["rest"]) for file in files.values()
            for match in ROW.finditer(file.read_text(encoding="utf-8"))]
    for _, rest in list(rows):
        text = html.unescape(re.match(r"\['((?:[^'\\]|\\.)*)'", rest)[1].replace("\\'", "'"))
        if " " in text and not re.search(r"operator|[(<=]", text):
            rows += rows_of(text, rest, 1)
    rows = sorted({*rows, *headings()})
    for letter, file in files.items():
        lines = [f"  ['{name}_{number}',{rest}]" for number, (name, rest) in enumerate(rows) if name[0] == letter]
        file.write_text("var searchData=\n[\n" + ",\n".join(lines) + "\n];\n", encoding="utf-8")
    left = {name[0] for name, _ in rows} - set(letters)
    print(f"search: {len(rows)} entries" + (f", none for those that begin with {sorted(left)}" if left else ""))


main()
