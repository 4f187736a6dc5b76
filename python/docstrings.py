"""Makes the C++ table of docstrings from the stub file, so that they are written once.

usage: docstrings.py STUB OUTPUT

Functions get a text signature in front, which inspect.signature() reads.
"""

import ast
import sys
from pathlib import Path


def signature(function: ast.FunctionDef) -> str:
    """The arguments without types: "(self, path, *, weld=None)"."""
    arguments = ast.parse(ast.unparse(function.args).join(("def f(", "): pass"))).body[0].args  # type: ignore
    for argument in arguments.posonlyargs + arguments.args + arguments.kwonlyargs:
        argument.annotation = None
    for rest in (arguments.vararg, arguments.kwarg):
        if rest is not None:
            rest.annotation = None
    # What the stub leaves open is an empty sequence.
    text = ast.unparse(arguments).replace("=...", "=()")
    return f"({text})"


def entries(body: list[ast.stmt], prefix: str = "") -> dict[str, str]:
    found: dict[str, str] = {}
    for node in body:
        if isinstance(node, ast.ClassDef):
            doc = ast.get_docstring(node) or ""
            for member in node.body:
                if isinstance(member, ast.FunctionDef) and member.name == "__init__":
                    doc = f"{node.name}{signature(member).replace('(self, ', '(', 1)}\n--\n\n{doc}"
            found[prefix + node.name] = doc
            found |= entries(node.body, node.name + ".")
        elif isinstance(node, ast.FunctionDef):
            doc = ast.get_docstring(node) or ""
            names = {d.id for d in node.decorator_list if isinstance(d, ast.Name)}
            if "overload" in names:
                continue
            if "property" not in names:
                doc = f"{node.name}{signature(node)}\n--\n\n{doc}"
            found[prefix + node.name] = doc
    return found


def main() -> None:
    stub, output = Path(sys.argv[1]), Path(sys.argv[2])
    table = entries(ast.parse(stub.read_text("utf-8")).body)
    lines = ["// Made from the stub file by docstrings.py."]
    lines += [f'{{"{name}", R"~({doc})~"}},' for name, doc in table.items()]
    output.write_text("\n".join(lines) + "\n", "utf-8")


if __name__ == "__main__":
    main()
