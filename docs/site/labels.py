#!/usr/bin/env python3
"""Tells screen readers what Doxygen 1.9.4 leaves unsaid: the language of the pages, and what the fields of the search are.

    labels.py SITE"""
import pathlib
import sys

LABELS = {
    "*.html": [('<html xmlns="http://www.w3.org/1999/xhtml">', '<html xmlns="http://www.w3.org/1999/xhtml" lang="en">'),
               ('name="MSearchResults"', 'name="MSearchResults" title="What the search has found"')],
    "menu.js": [('id="MSearchField" value', 'id="MSearchField" aria-label="Search" value'),
                ('id="MSearchClose" ', 'id="MSearchClose" aria-label="Close the search" ')],
}


def main():
    site = pathlib.Path(sys.argv[1])
    for pattern, changes in LABELS.items():
        done = [0] * len(changes)
        for file in site.glob(pattern):
            text = file.read_text(encoding="utf-8")
            for number, (old, new) in enumerate(changes):
                done[number] += text.count(old)
                text = text.replace(old, new)
            file.write_text(text, encoding="utf-8")
        if not all(done):
            sys.exit(f"docs/site/labels.py: {pattern}: another Doxygen, which has no {changes[done.index(0)][0]}")


main()
