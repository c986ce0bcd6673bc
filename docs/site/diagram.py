"""Draws the part of Mermaid that these pages use, by Graphviz: so that a diagram has one source, which a Git host
draws by itself and the site draws when it is built.

    stateDiagram-v2:  [*] --> A    A --> B: label    state "words" as A
    flowchart TB|LR:  a[words] --> b    a -->|label| b    a -.->|label| b
"""
import html
import re
import subprocess

NODE = re.compile(r'(?P<id>\[\*\]|\w+)(?:\["?(?P<label>[^\]"]+)"?\])?')
EDGE = re.compile(rf"^{NODE.pattern}\s*(?P<line>-->|-\.->)\s*(?:\|\"?(?P<flow>[^|\"]*)\"?\|)?\s*"
                  + NODE.pattern.replace("?P<id>", "?P<to>").replace("?P<label>", "?P<tolabel>")
                  + r"(?:\s*:\s*(?P<state>.+))?$")
FACE = ('graph [rankdir={}, nodesep=0.4, ranksep=0.4, bgcolor=transparent]\n'
        'node [shape=box, style="rounded,filled", fontname="Helvetica,sans-serif", fontsize=11, margin="0.15,0.08"]\n'
        'edge [fontname="Helvetica,sans-serif", fontsize=10, arrowsize=0.7]\n')


def words(text):
    """A label for Graphviz: its line breaks are Mermaid's."""
    return '"' + re.sub(r"<br\s*/?>", r"\\n", text.strip()).replace('"', r"\"") + '"'


def to_dot(source):
    lines = [line.strip() for line in source.strip().splitlines()]
    kind, *rest = lines.pop(0).split()
    if kind not in ("stateDiagram-v2", "flowchart"):
        raise ValueError(f"a diagram of a kind that diagram.py does not draw: {kind}")
    dot = [FACE.format(rest[0] if rest else "TB")]
    for line in filter(None, lines):
        if line.startswith("%%"):
            continue
        if match := re.fullmatch(r'state "([^"]+)" as (\w+)', line):
            dot.append(f"{match[2]} [label={words(match[1])}]")
        elif match := EDGE.match(line):
            for name, label in ((match["id"], match["label"]), (match["to"], match["tolabel"])):
                if name == "[*]":
                    dot.append('"[*]" [shape=point, width=0.12, label=""]')
                elif label:
                    dot.append(f"{name} [label={words(label)}]")
            said = match["flow"] or match["state"]
            label = f', label={words("  " + said.strip())}' if said else ""
            style = "dashed" if "." in match["line"] else "solid"
            dot.append(f'"{match["id"]}" -> "{match["to"]}" [style={style}{label}]')
        elif match := re.fullmatch(NODE.pattern, line):
            dot.append(f"{match['id']} [label={words(match['label'] or match['id'])}]")
        else:
            raise ValueError(f"a line that diagram.py does not draw: {line}")
    return "digraph {\n" + "\n".join(dot) + "\n}\n"


def draw(source, title):
    """The diagram as an element of HTML whose colours are the style sheet's."""
    drawn = subprocess.run(["dot", "-Tsvg"], input=to_dot(source), capture_output=True, text=True, check=True).stdout
    drawn = re.sub(r"<title>.*?</title>|<!--.*?-->|\n", "", drawn[drawn.index("<svg"):], flags=re.S)
    return drawn.replace("<svg", f'<svg role="img" aria-label="{html.escape(title)}"', 1)
