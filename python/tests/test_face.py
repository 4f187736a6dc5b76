"""The module's face: docstrings, signatures, types."""

import inspect
import os
import subprocess
import sys
from pathlib import Path

import pytest
import varnet

TESTS = Path(__file__).parent
PACKAGE = Path(varnet.__file__).parent


def public(thing: object) -> list[str]:
    return [name for name in vars(thing) if not name.startswith("_")]


def test_every_public_name_has_a_docstring() -> None:
    for name in varnet.__all__:
        if name == "__version__":
            continue
        thing = getattr(varnet, name)
        assert inspect.getdoc(thing), name
        if inspect.isclass(thing) and not issubclass(thing, Exception):
            assert thing.__module__ == "varnet"
            for member in public(thing):
                assert inspect.getdoc(getattr(thing, member)), f"{name}.{member}"


def test_signatures_are_known_at_run_time() -> None:
    assert list(inspect.signature(varnet.slice).parameters)[:4] == ["parts", "layer", "hatch", "angle"]
    assert list(inspect.signature(varnet.Part).parameters)[:3] == ["points", "triangles", "weld"]
    repair = inspect.signature(varnet.Part.repair).parameters
    assert list(repair) == ["self", "fill_holes", "outward", "progress"] and repair["fill_holes"].default == 0.0
    assert inspect.getdoc(varnet.read)


def test_there_are_no_more_than_forty_functions() -> None:
    count = 0
    for name in varnet.__all__:
        thing = getattr(varnet, name)
        if inspect.isclass(thing):
            functions = [member for member in public(thing) if callable(getattr(thing, member))]
            count += 0 if issubclass(thing, Exception) else len(functions) + ("__init__" in vars(thing))
        else:
            count += callable(thing)
    assert count <= 40


def run(*words: str) -> None:
    environment = os.environ | {
        "MYPYPATH": os.pathsep.join([str(PACKAGE.parent), str(TESTS)]),
        "PYTHONPATH": str(PACKAGE.parent),
        # mypy is no program of ours to be watched by a sanitizer.
        "LD_PRELOAD": "",
    }
    done = subprocess.run([sys.executable, *words], capture_output=True, text=True, env=environment)
    assert done.returncode == 0, done.stdout + done.stderr


def test_mypy_strict_finds_nothing_in_the_tests(tmp_path: Path) -> None:
    pytest.importorskip("mypy")
    files = sorted(str(path) for path in TESTS.glob("*.py"))
    run("-m", "mypy", "--strict", "--cache-dir", str(tmp_path), *files)


def test_stubs_and_module_agree(tmp_path: Path) -> None:
    pytest.importorskip("mypy")
    if os.environ.get("LD_PRELOAD"):
        pytest.skip("stubtest imports the module, which needs the sanitizer")
    run("-m", "mypy.stubtest", "varnet", "--allowlist", str(TESTS / "stubtest-allowlist.txt"))


def test_importing_takes_no_other_module_than_numpy() -> None:
    code = "import sys, varnet; print(*[m for m in ('tqdm', 'trimesh', 'meshio') if m in sys.modules])"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert done.stdout.strip() == ""
