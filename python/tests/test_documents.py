"""The notebook and the programs in the pages run; a wheel can be built."""

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest
import shapes
import varnet

ROOT = Path(__file__).parents[2]


def environment(**more: str) -> dict[str, str]:
    return os.environ | {"PYTHONPATH": str(Path(varnet.__file__).parents[1])} | more


def test_the_notebook_runs_and_ends_with_a_picture(tmp_path: Path) -> None:
    for needed in ("nbconvert", "ipykernel"):
        pytest.importorskip(needed)
    # The kernel of this interpreter, whatever others are known to Jupyter.
    kernel = tmp_path / "kernels" / "python3"
    kernel.mkdir(parents=True)
    words = [sys.executable, "-m", "ipykernel_launcher", "-f", "{connection_file}"]
    (kernel / "kernel.json").write_text(json.dumps({"argv": words, "display_name": "Python 3", "language": "python"}))
    done = subprocess.run(
        [sys.executable, "-m", "nbconvert", "--to", "notebook", "--execute", "--output-dir", str(tmp_path)]
        + ["--output", "done.ipynb", str(ROOT / "docs" / "tour.ipynb")],
        capture_output=True,
        text=True,
        env=environment(JUPYTER_PATH=str(tmp_path), HOME=str(tmp_path)),
    )
    assert done.returncode == 0, done.stderr
    cells = json.loads((tmp_path / "done.ipynb").read_text())["cells"]
    assert "image/svg+xml" in cells[-1]["outputs"][0]["data"]


def programs() -> list[str]:
    pages = [ROOT / "docs" / "python.md", ROOT / "python" / "README.md"]
    return [program for page in pages for program in re.findall(r"```python\n(.*?)```", page.read_text(), re.S)]


@pytest.mark.parametrize("number", range(len(programs())))
def test_programs_in_the_pages_run(tmp_path: Path, number: int) -> None:
    shapes.save(tmp_path / "part.stl", shapes.table())
    done = subprocess.run(
        [sys.executable, "-c", programs()[number]], capture_output=True, text=True, cwd=tmp_path, env=environment()
    )
    assert done.returncode == 0, done.stderr


def check_alone(folder: Path) -> None:
    """The package in the folder uses nothing of the build tree."""
    code = "import varnet; print(varnet.Part([], []), varnet.__file__, open('/proc/self/maps').read())"
    done = subprocess.run(
        [sys.executable, "-c", code], capture_output=True, text=True, env=environment(PYTHONPATH=str(folder))
    )
    assert done.returncode == 0, done.stderr
    libraries = set(re.findall(r"\S+/(?:lib|_)[Vv]arnet\S+", done.stdout))
    assert len(libraries) == 3 and all(str(folder) in library for library in libraries), libraries


def test_an_installed_package_stands_alone(tmp_path: Path) -> None:
    build = Path(varnet.__file__).parents[2]
    if not (build / "CMakeCache.txt").is_file() or shutil.which("cmake") is None:
        pytest.skip("the module does not stand in a build tree")
    words = ["cmake", "--install", str(build), "--component", "python", "--prefix", str(tmp_path)]
    subprocess.run(words, check=True, capture_output=True, env=environment(LD_PRELOAD=""))
    assert {"__init__.py", "__init__.pyi", "py.typed"} < {path.name for path in (tmp_path / "varnet").iterdir()}
    check_alone(tmp_path)


def test_a_wheel_can_be_built(tmp_path: Path) -> None:
    pytest.importorskip("scikit_build_core")
    words = [sys.executable, "-m", "pip", "wheel", "--no-build-isolation", "--no-deps", "-w", str(tmp_path)]
    done = subprocess.run([*words, str(ROOT / "python")], capture_output=True, text=True)
    assert done.returncode == 0, done.stdout + done.stderr
    (wheel,) = tmp_path.glob("varnet-*.whl")
    target = tmp_path / "installed"
    subprocess.run([sys.executable, "-m", "zipfile", "-e", str(wheel), str(target)], check=True)
    check_alone(target)
