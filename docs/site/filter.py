#!/usr/bin/env python3
"""Doxygen's input filter for Markdown: writes a page that a Git host shows as it stands so that Doxygen links it.
Headings get the names that links use, links to pages become references (in an index: its subpages, which make the
navigation), names of the library between backquotes lead to the reference, and Mermaid is drawn."""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import diagram  # noqa: E402
import pages  # noqa: E402

LONG_PAGE = 5  # headings from which on a page has a table of contents


class Page:
    def __init__(self, file):
        self.file = file
        self.name = pages.identifier(file)
        self.heading = ""
        self.named = set()     # names linked in this section: the first mention is enough
        self.listed = set()    # subpages

    def link(self, match):
        if match["code"]:
            return self.code(match["code"], match[0])
        path, _, anchor = match["target"].partition("#")
        if re.match(r"\w+:", match["target"]):
            return match[0]
        target = pages.resolve(self.file, path)
        if match["picture"]:
            return f"![{match['text']}]({target.name})"
        return self.reference(target, anchor, match["text"])

    def reference(self, target, anchor, text):
        text = text.replace("`", "")  # which a reference would show
        if target.is_dir() and (target / "README.md") in pages.pages():
            target = target / "README.md"
        if target in pages.pages() or target == pages.ROOT / "README.md":
            name = pages.identifier(target)
            if anchor:
                return f"[{text}](@ref {name}_{anchor})"
            if pages.index_of(target) == self.file and name not in self.listed:
                self.listed.add(name)
                return f'@subpage {name} "{text}"'
            return f"[{text}](@ref {name})"
        if target.suffix == ".h" and (pages.ROOT / "include") in target.parents:
            name = pages.header_target(target)
            return f"[{text}](@ref {name})" if name else text
        return f'<a href="{self.example(target)}">{text}</a>' if self.example(target) else text

    @staticmethod
    def example(target):
        """The page of an example's source, if it is one."""
        target = target / "main.cpp" if target.is_dir() else target
        examples = pages.ROOT / "examples"
        if target.suffix != ".cpp" or examples not in target.parents or not target.exists():
            return None
        name = str(target.relative_to(examples)).replace("/", "_2").replace(".", "_8")
        return name + "-example.html"

    def code(self, code, whole):
        if "'" in code:  # Doxygen takes it for the end of the span
            return f"``{code}``"
        if code in self.named:
            return whole
        target = pages.name_target(code)
        if not target and (example := code.startswith("examples/") and self.example(pages.ROOT / code)):
            self.named.add(code)
            return f'<a href="{example}">{code}</a>'
        if not target:
            return whole
        self.named.add(code)
        return f"<tt>[{code}](@ref {target})</tt>"

    def prose(self, text):
        """A piece of the page without fenced code."""
        parts = re.split(r"(^#+ .*$)", text, flags=re.M)
        return "".join(self.title(part) if re.match(r"#+ ", part) else pages.SPAN.sub(self.link, part) for part in parts)

    def title(self, line):
        marks, words = pages.HEADING.match(line).groups()
        self.named = set()
        self.heading = words.replace("`", "")
        if len(marks) > 1 and self.file.name == "README.md":
            return f"<h2>{self.heading}</h2>"  # the navigation is to show the pages of an index alone
        if len(marks) > 1:
            return f"{marks} {self.heading} {{#{self.name}_{pages.slug(words)}}}"
        name = "mainpage" if self.name == "index" else self.name
        return f"{marks} {self.heading} {{#{name}}}" + ("\n\n[TOC]\n" if self.long else "")

    def fence(self, block):
        if not block.startswith("```mermaid"):
            return block
        drawn = diagram.draw(block.split("\n", 1)[1].rsplit("\n", 1)[0], self.heading)
        return f'\n@htmlonly[block]\n<div class="diagram">{drawn}</div>\n@endhtmlonly\n'

    def convert(self):
        text = re.sub(r"^<!--.*?-->\n", "", self.file.read_text(encoding="utf-8"), flags=re.M | re.S)
        self.long = len(pages.HEADING.findall(pages.FENCE.sub("", text))) > LONG_PAGE and self.name != "index"
        result, end = [], 0
        for block in pages.FENCE.finditer(text):
            result += [self.prose(text[end:block.start()]), self.fence(block[0])]
            end = block.end()
        return "".join(result) + self.prose(text[end:])


def main():
    file = pathlib.Path(sys.argv[1]).resolve()
    try:
        sys.stdout.write(Page(file).convert())
    except (OSError, ValueError) as fault:  # Doxygen looks at no exit code, but warns of this, which fails the build
        print(f"docs/site/filter.py: {file}: {fault}", file=sys.stderr)
        print("@ref the-filter-has-failed")


main()
