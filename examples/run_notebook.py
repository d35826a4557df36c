#!/usr/bin/env python3
"""Runs a notebook's cells one after the other, without Jupyter, and saves the pictures that they show.

    python3 run_notebook.py notebook.ipynb NAME       writes NAME-1.png, NAME-2.png ...
"""
import ast
import json
import sys


def run(source: str, names: dict) -> object:
    """The value of a cell's last line, as Jupyter shows it."""
    tree = ast.parse(source)
    last = tree.body.pop() if tree.body and isinstance(tree.body[-1], ast.Expr) else None
    exec(compile(tree, "cell", "exec"), names)
    return eval(compile(ast.Expression(last.value), "cell", "eval"), names) if last else None


def main(notebook: str, name: str) -> None:
    with open(notebook, encoding="utf-8") as file:
        cells = json.load(file)["cells"]
    names: dict = {}
    shown = 0
    for cell in cells:
        if cell["cell_type"] != "code":
            continue
        value = run("".join(cell["source"]), names)
        if value is not None:
            shown += 1
            with open(f"{name}-{shown}.png", "wb") as file:
                file.write(value._repr_png_())


main(*sys.argv[1:])
