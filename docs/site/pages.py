"""The Markdown pages of the documentation, as a Git host and the site see them: which there are, where their headings
and links lead, and which names of the library they mention. Used by filter.py and .ci/docs."""
import functools
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
DOCS = ROOT / "docs"
OTHERS = ("CHANGELOG.md", "CONTRIBUTING.md", "RELEASING.md", "SECURITY.md")  # pages of the site, too
FENCE = re.compile(r"^(```|~~~).*?^\1[^\n]*$", re.M | re.S)
HEADING = re.compile(r"^(#+)\s+(.*?)\s*$", re.M)
# A code span, or a link or picture whose text may hold code spans.
SPAN = re.compile(r"`(?P<code>[^`\n]+)`|(?P<picture>!?)\[(?P<text>(?:`[^`\n]*`|[^\[\]`])*)\]\((?P<target>[^()\s]+)\)")
CLASS = re.compile(r"(?:class|struct|enum class|enum) (?:VELTOR_UTILS_EXPORT )?(\w+)(?=[^;]*$)")
FUNCTION = re.compile(r"(?=\S)(?!return|using|static_assert|friend|#)[\w:<>,&*\[\] ]+[ &*](\w+)\(")
# Where a program's quoted part begins and ends, and where a page quotes it.
MARK = "//! [{}]"
QUOTE = re.compile(r"^<!-- quote: (?P<file>\S+)(?: (?P<part>\S+))? -->\n(?P<fence>```\w*\n)(?P<text>.*?)^```$", re.M | re.S)


def pages():
    """Every page of the site: found by rule, not by a list."""
    return sorted(DOCS.rglob("*.md")) + [ROOT / name for name in OTHERS]


def index_of(page):
    """The page under which a page stands in the navigation; none for the first page."""
    if page.parent == ROOT:
        return DOCS / "README.md"
    folder = page.parent.parent if page.name == "README.md" else page.parent
    return folder / "README.md" if page != DOCS / "README.md" else None


def identifier(page):
    """A page's name in the site, which is also that of its file there."""
    if page in (DOCS / "README.md", ROOT / "README.md"):
        return "index"
    return (page.parent.name if page.name == "README.md" else page.stem).lower()


def slug(heading):
    """A heading's anchor, made as the usual viewers of Markdown make it."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def anchors(page):
    return {slug(heading) for _, heading in HEADING.findall(FENCE.sub("", page.read_text(encoding="utf-8")))}


def resolve(page, target):
    """The file that a link of a page leads to."""
    return (page.parent / target).resolve() if target else page


def quoted(file, part):
    """The text of a file, or of its part between two marks, without the part's indentation and inner marks."""
    lines = (ROOT / file).read_text(encoding="utf-8").splitlines()
    if part:
        marks = [number for number, line in enumerate(lines) if line.strip() == MARK.format(part)]
        if len(marks) != 2:
            raise ValueError(f"{file} has {len(marks)} marks of {part}, not two")
        lines = lines[marks[0] + 1:marks[1]]
    lines = [line for line in lines if not re.fullmatch(r"\s*//! \[\w+\]", line)]
    margin = min((len(line) - len(line.lstrip()) for line in lines if line.strip()), default=0)
    return "".join(line[margin:] + "\n" for line in lines)


@functools.lru_cache(maxsize=None)
def header_names():
    """Every public class, enumeration and free function by its short name: its full name and its header."""
    found = {}
    for header in sorted((ROOT / "include/veltor").rglob("*.h")):
        text = re.sub(r"^namespace [\w:]+ \{\n(?:(?:class|struct) \w+;\n)+\}.*\n", "",
                      header.read_text(encoding="utf-8"), flags=re.M)  # without what is only announced
        scopes = []
        for line in text.splitlines():
            if match := re.match(r"namespace ([\w:]+) \{", line):
                scopes.append(match[1])
            elif line.startswith("} // namespace"):
                scopes.pop()
            elif (match := CLASS.match(line) or FUNCTION.match(line)) and "result" not in scopes:
                found.setdefault(match[1], {}).setdefault("::".join([*scopes, match[1]]), header)
    return {name: next(iter(places.items())) for name, places in found.items() if len(places) == 1}


def header_target(header):
    """What stands for a public header in the reference: its group, the class that has its name, or what it names first."""
    names, text = header_names(), header.read_text(encoding="utf-8")
    if group := re.search(r"@defgroup (\w+)", text):
        return group[1]
    first = next((full for full, place in names.values() if place == header), None)
    return names[header.stem][0] if header.stem in names else first


def name_target(code):
    """What a code span such as `Task`, `Task::start()` or `run()` names in the reference, if anything."""
    match = re.fullmatch(r"(\w+)(?:::(\w+))?(\(\))?", code)
    if not match or match[1] not in header_names():
        return None
    name, header = header_names()[match[1]]
    text = header.read_text(encoding="utf-8")
    is_class = re.search(rf"^(?:class|struct|enum class|enum)\b.*\b{match[1]}\b[^;]*$", text, re.M)
    if bool(match[3]) == bool(is_class) and not match[2]:
        return None  # a function is named with its brackets, a class without
    if match[2] and re.search(rf"\b(?:enum class|enum|struct|class) {match[2]}\b|[ *&]{match[2]}\(", text):
        return f"{name}::{match[2]}"
    return name
