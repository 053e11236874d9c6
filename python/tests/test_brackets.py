"""Bracketed sets, found by the tool."""

import os

import pytest
from conftest import bracket_photo

import tvmeta


def test_sets_have_their_files(tmp_path):
    names = [b"a-%d.jpg" % i for i in range(3)] + [b"caf\xe9-%d.jpg" % i for i in range(3)]
    paths = [os.path.join(os.fsencode(tmp_path), name) for name in names]
    for i, path in enumerate(paths):
        with open(path, "wb") as file:
            file.write(bracket_photo(10 * (i // 3) + i % 3, (500, 125, 31)[i % 3]))
    photos = [tvmeta.read(path) for path in paths]
    first, second = tvmeta.brackets(photos)
    assert (first.files, second.files) == (paths[:3], paths[3:])
    assert first.ev == [13.97, 11.97, 9.95] and first.offsets == [-2, 0, 2.01] and first.range == 4.01
    assert (first.taken, first.camera, first.focal_length) == (photos[0].taken, "TV-100", 16)
    assert [found.files for found in tvmeta.brackets(paths[:4], count=2)] == [paths[:2]]
    assert tvmeta.brackets([]) == tvmeta.brackets(paths[:1]) == []


def test_failures_name_the_file_or_the_tool(tmp_path, monkeypatch):
    with pytest.raises(tvmeta.Error, match="none.jpg"):
        tvmeta.brackets([tmp_path / "none.jpg"])
    monkeypatch.setenv("TVMETA_TOOL", "no-such-tool")
    with pytest.raises(tvmeta.Error, match="set TVMETA_TOOL"):
        tvmeta.brackets([tmp_path / "none.jpg"])
