#!/usr/bin/env python3
"""Turns the comments of the public headers into ones that Doxygen reads, for docs/Doxyfile.in.

The headers are written to be read as they are. A comment before a declaration belongs to every
declaration up to the next blank line; one that a blank line follows belongs to its section; a section
begins with a comment "---- Title ----"; the first comment is the file's.
"""
import re
import sys


def plain(text):
    """What Doxygen would take for a command, a tag or a link, as the characters that it is."""
    return re.sub(r"([@\\<#])(?=[A-Za-z/])", r"\\\1", text)


def paragraphs(comment):
    """The text of a comment, its indented tables set off as Markdown wants them."""
    text = re.sub(r"^/\*+ ?|\s*\*/$", "", comment.strip())
    lines = [re.sub(r"^\s*\* ?", "", line) for line in text.split("\n")]
    if len(lines) > 1:
        rest = [len(line) - len(line.lstrip()) for line in lines[1:] if line.strip()]
        margin = min(rest) if rest and not comment.startswith("/*\n") else 0
        lines = [lines[0]] + [line[margin:] for line in lines[1:]]
    out = []
    for line in lines:
        table = line.startswith("    ")
        if out and out[-1].strip() and table != out[-1].startswith("    "):
            out.append("")
        out.append(line if table else plain(line))
    return "\n".join(out).strip("\n")


def documented(text, indent=""):
    lines = (f"{indent} * {line}".rstrip() for line in text.split("\n"))
    return f"{indent}/**\n" + "\n".join(lines) + f"\n{indent} */\n"


def functions(block):
    """A run of declarations, one string each, when they all are functions; else nothing."""
    if "{" in block and not block.startswith("static inline"):
        return []
    if block.startswith("static inline") and "{" in block:
        found = re.findall(r"static inline .*?\n\}\n", block + "\n", re.S)
    else:
        found = re.findall(r"[^;]*;[^\n]*\n", block + "\n")
    return found if all("(" in one for one in found) else []


def filtered(source, header):
    blocks = re.split(r"\n\s*\n(?=\S)", source)
    out, section = [], ""
    for number, block in enumerate(blocks):
        match = re.match(r"/\*.*?\*/", block, re.S)
        if not match:
            out.append(block)
            continue
        text, rest = paragraphs(match.group()), block[match.end() :].strip("\n")
        title = re.match(r"-{3,} (.*?) -{3,}\n*", text)
        if number == 0:
            out.append(documented("@file\n" + text) + rest)
        elif title:
            if section:
                out.append("/** @} */")
            section = header.split(".")[0] + "_" + re.sub(r"\W+", "_", title.group(1)).strip("_").lower()
            out.append(documented(f"@defgroup {section} {title.group(1)}\n\n{text[title.end() :]}") + "/** @{ */")
            family = documented(text[title.end() :])
            out.append("\n".join(family + one.strip() for one in functions(rest)) if rest and functions(rest) else rest)
        elif not rest or rest.startswith(("#include", "#define ZOX_DEFINE")):
            if section:
                out.append("/** @} */\n" + documented(f"@addtogroup {section}\n\n{text}") + "/** @{ */")
            out.append(rest)
        else:
            each = functions(rest)
            out.append("\n".join(documented(text) + one.strip() for one in each) if each else documented(text) + rest)
    if section:
        out.append("/** @} */")
    text = "\n\n".join(out)
    # Within records and lists: before a field, and behind one.
    text = re.sub(
        r"^( +)/\*(?!\*)(.*?)\*/\n",
        lambda m: documented(paragraphs("/*" + m.group(2) + "*/"), m.group(1)),
        text,
        flags=re.S | re.M,
    )
    return re.sub(
        r"(?<=[,;{\w)]) +/\* (.*?)\s*\*/",
        lambda m: " /**< " + plain(re.sub(r"\s+", " ", m.group(1))) + " */",
        text,
        flags=re.S,
    )


with open(sys.argv[1], encoding="utf-8") as header:
    sys.stdout.write(filtered(header.read(), sys.argv[1].split("/")[-1]))
