"""Renders docs/tsrt.md, the one text of tsrt's manual, as what `tsrt --help` prints and as
the manual page tsrt(1).

    python3 render_manual.py MARKDOWN VERSION HELP_CPP MANPAGE

HELP_CPP defines tsrt::kUsage (the synopsis: the first code block) and tsrt::kHelp (the
whole text, laid out for a terminal); MANPAGE is the same text in roff, tables for tbl.
The Markdown is the subset the page uses: headings, paragraphs, fenced code, "- " lists,
pipe tables, `code` and [links](target).
"""

import re
import sys
import textwrap

WIDTH = 80


def parse(text):
    """Blocks: ("h", level, text), ("p", text), ("code", lines), ("list", items),
    ("table", rows)."""
    blocks, lines, i = [], text.split("\n"), 0
    while i < len(lines):
        line = lines[i]
        if not line.strip():
            i += 1
        elif line.startswith("#"):
            level = len(line) - len(line.lstrip("#"))
            blocks.append(("h", level, line[level:].strip()))
            i += 1
        elif line.startswith("```"):
            j = i + 1
            while not lines[j].startswith("```"):
                j += 1
            blocks.append(("code", lines[i + 1:j]))
            i = j + 1
        elif line.startswith("|"):
            rows = []
            while i < len(lines) and lines[i].startswith("|"):
                cells = [c.strip() for c in re.split(r"(?<!\\)\|", lines[i].strip())[1:-1]]
                if not all(re.fullmatch(r":?-+:?", c) for c in cells):
                    rows.append([c.replace("\\|", "|") for c in cells])
                i += 1
            blocks.append(("table", rows))
        elif line.startswith("- "):
            items = []
            while i < len(lines) and (lines[i].startswith("- ") or lines[i].startswith("  ")):
                if lines[i].startswith("- "):
                    items.append(lines[i][2:].strip())
                else:
                    items[-1] += " " + lines[i].strip()
                i += 1
            blocks.append(("list", items))
        else:
            para = []
            while i < len(lines) and lines[i].strip() and not re.match(r"#|```|\||- ", lines[i]):
                para.append(lines[i].strip())
                i += 1
            blocks.append(("p", " ".join(para)))
    return blocks


def links_to_text(text):
    return re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", text)


# --- The terminal text -------------------------------------------------------------------

def plain(text):
    return links_to_text(text).replace("`", "")


def wrap(text, indent, hanging=None):
    return textwrap.fill(plain(text), WIDTH, initial_indent=indent,
                         subsequent_indent=hanging if hanging is not None else indent,
                         break_long_words=False, break_on_hyphens=False)


def terminal(blocks):
    out = []
    for block in blocks:
        kind = block[0]
        if kind == "h":
            level, text = block[1], plain(block[2])
            out.append(text if level == 1 else text.upper() if level == 2 else "  " + text)
        elif kind == "p":
            out.append(wrap(block[1], "  "))
        elif kind == "code":
            out.append("\n".join("    " + line for line in block[1]))
        elif kind == "list":
            out.append("\n".join(wrap(item, "  - ", "    ") for item in block[1]))
        elif kind == "table":
            rows = [[plain(c) for c in row] for row in block[1]]
            widths = [max(len(r[k]) for r in rows) for k in range(len(rows[0]))]
            out.append("\n".join(
                ("  " + "  ".join(c.ljust(w) for c, w in zip(row, widths))).rstrip()
                for row in rows))
    return "\n\n".join(out) + "\n"


def cpp_string(text):
    body = "".join('    "' + line.replace("\\", "\\\\").replace('"', '\\"') + '\\n"\n'
                   for line in text.rstrip("\n").split("\n"))
    return body.rstrip("\n")


def help_source(blocks, markdown):
    synopsis = next(b[1] for b in blocks if b[0] == "code")
    usage = "\n".join(("usage: " if k == 0 else "       ") + line
                      for k, line in enumerate(synopsis)) + "\n"
    return (f"// Generated from {markdown} by tools/render_manual.py; edit that page.\n"
            '#include "help.h"\n\nnamespace tsrt {\n\n'
            f"const char kUsage[] =\n{cpp_string(usage)};\n\n"
            f"const char kHelp[] =\n{cpp_string(terminal(blocks))};\n\n"
            "}  // namespace tsrt\n")


# --- The manual page ---------------------------------------------------------------------

def roff_escape(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "".join(c if ord(c) < 128 else f"\\[u{ord(c):04X}]" for c in text)


def roff_inline(text):
    parts = re.split(r"(`[^`]*`)", links_to_text(text))
    out = "".join(f"\\fB{roff_escape(p[1:-1])}\\fR" if p.startswith("`") else roff_escape(p)
                  for p in parts)
    return re.sub(r"^([.'])", r"\\&\1", out)


def roff_lines(text):
    return "\n".join(re.sub(r"^([.'])", r"\\&\1", line) for line in text.split("\n"))


def manpage(blocks, version):
    title = plain(blocks[0][2])
    name, _, what = title.partition(", ")
    out = ["'\\\" t", f'.TH TSRT 1 "" "TSRuntimeLib {version}" "User Commands"',
           ".SH NAME", f"{roff_escape(name)} \\- {roff_escape(what)}"]
    # The synopsis is the first code block; what leads up to it opens the description.
    first_code = next(k for k, b in enumerate(blocks) if b[0] == "code")
    out += [".SH SYNOPSIS", ".nf"] + [roff_lines(roff_escape(l)) for l in blocks[first_code][1]]
    out += [".fi", ".SH DESCRIPTION"]
    for block in blocks[1:first_code] + blocks[first_code + 1:]:
        kind = block[0]
        if kind == "h":
            macro = ".SH" if block[1] <= 2 else ".SS"
            text = plain(block[2])
            out.append(f"{macro} {roff_escape(text.upper() if macro == '.SH' else text)}")
        elif kind == "p":
            out += [".PP", roff_inline(block[1])]
        elif kind == "code":
            out += [".PP", ".RS 4", ".nf"] + [roff_lines(roff_escape(l)) for l in block[1]]
            out += [".fi", ".RE"]
        elif kind == "list":
            for item in block[1]:
                out += [".IP \\(bu 2", roff_inline(item)]
        elif kind == "table":
            columns = len(block[1][0])
            # Cells are text blocks, left-aligned: code in them does not stretch.
            out += [".PP", ".ad l", ".TS", " ".join(["lb"] * columns),
                    " ".join(["l"] * (columns - 1) + ["lx"]) + ".",
                    "\t".join(roff_inline(c) for c in block[1][0])]
            for row in block[1][1:]:
                out.append("\t".join(f"T{{\n{roff_inline(c)}\nT}}" for c in row))
            out += [".TE", ".ad"]
    return "\n".join(out) + "\n"


def main():
    markdown, version, help_cpp, page = sys.argv[1:5]
    with open(markdown, encoding="utf-8") as f:
        blocks = parse(f.read())
    for path, text in ((help_cpp, help_source(blocks, "docs/tsrt.md")),
                       (page, manpage(blocks, version))):
        with open(path, "w", encoding="utf-8") as f:
            f.write(text)


if __name__ == "__main__":
    main()
