"""Pages to look at."""

import html
import re
from collections.abc import Iterator
from pathlib import Path

import pytest
import shapes
import varnet


def table() -> varnet.Part:
    return varnet.Part(*shapes.table())


def test_a_part_with_all_that_belongs_to_it_is_one_part() -> None:
    part = table()
    view = varnet.view(part, part.supports(), part.surfaces())
    assert (view.parts, view.layers) == (1, 0)
    assert repr(view) == "<varnet.View: 1 parts, 0 layers>"


def test_supports_bring_their_part() -> None:
    part = table()
    assert varnet.view(part.supports()).parts == 1
    assert varnet.view(part, table().supports()).parts == 2
    assert varnet.view(part, part.supports(), part.supports()).parts == 2


def test_layers_come_from_files_iterables_and_one_by_one(tmp_path: Path) -> None:
    part = table()
    path = tmp_path / "table.cli"
    assert varnet.write_slices(path, varnet.slice(part, layer=1.0)) == 12
    file = varnet.SliceFile(path)
    assert varnet.view(file).layers == 12
    assert varnet.view(varnet.slice(part, layer=0.5)).layers == 24
    assert varnet.view(file[0], file[1], file[2]).layers == 3
    assert varnet.view(part, file, file[:5], file[0]).layers == 12 + 5 + 1


def test_what_is_written_is_the_page(tmp_path: Path) -> None:
    view = varnet.view(table(), title="A & B </script>")
    view.write(tmp_path / "page.html")
    assert (tmp_path / "page.html").read_text("utf-8") == view.html
    assert [p.name for p in tmp_path.iterdir()] == ["page.html"]
    assert "<title>A &amp; B &lt;/script&gt;</title>" in view.html
    with pytest.raises(varnet.FileError):
        view.write(tmp_path / "missing" / "page.html")


def test_a_notebook_gets_the_page_in_a_frame() -> None:
    view = varnet.view(table(), height=321)
    frame = re.fullmatch(r'<iframe sandbox="allow-scripts" style="([^"]*)" title="[^"]*" srcdoc="([^"]*)"></iframe>',
                         view._repr_html_(), re.DOTALL)
    assert frame is not None and "height:321px" in frame[1]
    assert html.unescape(frame[2]) == view.html


def test_without_pictures_the_page_is_smaller() -> None:
    assert "<svg" in varnet.view(table()).html
    assert len(varnet.view(table(), pictures=False).html) < len(varnet.view(table()).html)


def test_wrong_items_are_refused() -> None:
    part = table()
    for item in (1, "part.stl", None, [1], b"x"):
        with pytest.raises(TypeError, match="view\\(\\) takes parts"):
            varnet.view(item)  # type: ignore[arg-type]
    with pytest.raises(varnet.ArgumentError, match="behind the part"):
        varnet.view(part.surfaces())
    with pytest.raises(varnet.ArgumentError, match="another part"):
        varnet.view(varnet.Part(*shapes.cube()), part.surfaces())
    with pytest.raises(varnet.Error, match="nothing to show"):
        varnet.view()
    with pytest.raises(varnet.Error, match="nothing to show"):
        varnet.view([])
    for height in (0, -1, 100001):
        with pytest.raises(varnet.ArgumentError, match="height"):
            varnet.view(part, height=height)


def test_progress_is_told_and_stops_it() -> None:
    shares: list[float] = []
    varnet.view(varnet.Part(*shapes.sphere(10.0, 400)), progress=shares.append)
    assert shares == sorted(shares) and all(0.0 <= share <= 1.0 for share in shares)
    with pytest.raises(varnet.Cancelled):
        varnet.view(varnet.Part(*shapes.sphere(10.0, 700)), progress=lambda share: False)


def test_an_error_of_an_iterable_comes_through() -> None:
    def layers() -> Iterator[varnet.Layer]:
        yield from varnet.slice(table(), layer=4.0)
        raise KeyError("mine")

    with pytest.raises(KeyError, match="mine"):
        varnet.view(layers())
