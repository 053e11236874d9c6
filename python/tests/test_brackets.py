"""Bracketed sets."""

import os

import numpy
import pytest
from conftest import SCENE, bracket_photo, write

import tvmeta


@pytest.fixture
def paths(tmp_path):
    """Two sets of three photographs; of the second, the names are not UTF-8."""
    names = [b"a-%d.jpg" % i for i in range(3)] + [b"caf\xe9-%d.jpg" % i for i in range(3)]
    paths = [os.path.join(os.fsencode(tmp_path), name) for name in names]
    for i, path in enumerate(paths):
        write(path, bracket_photo(10 * (i // 3) + i % 3, (500, 125, 31)[i % 3]))
    return paths


def test_sets_have_their_files(paths):
    photos = [tvmeta.read(os.fsdecode(path)) for path in paths]
    found = tvmeta.brackets(photos)
    first, second = found
    assert (first.files, second.files) == (paths[:3], paths[3:]) and found.failures == []
    assert first.ev == [13.97, 11.97, 9.95] and first.offsets == [-2, 0, 2.01] and first.range == 4.01
    assert (first.taken, first.camera, first.focal_length) == (photos[0].taken, "TV-100", 16)
    assert first.evidence == "exposures repeat" and first.expected == 3
    assert tvmeta.brackets(iter(paths[::-1])) == found  # in any order
    assert [group.files for group in tvmeta.brackets(paths[:4], count=2)] == [paths[:2]]
    assert [group.files for group in tvmeta.brackets(paths, count=6, gap=30)] == [paths]
    assert tvmeta.brackets(paths, gap=0.5, count=6) == []
    assert tvmeta.brackets([]) == tvmeta.brackets(paths[:1]) == []


def test_photographs_that_cannot_be_read_cost_no_set(tmp_path, paths):
    damaged = os.fsencode(tmp_path / "damaged.jpg")
    scan = SCENE.read_bytes().rindex(b"\xff\xda")
    write(damaged, bracket_photo(45, 60)[:scan] + b"no marker")
    text, gone = os.fsencode(tmp_path / "text.jpg"), os.fsencode(tmp_path / "none.jpg")
    write(text, b"text")
    found = tvmeta.brackets([gone, *paths[:3], text, *paths[3:], damaged])
    assert [group.files for group in found] == [paths[:3], paths[3:]]
    assert found.failures == [
        (gone, "No such file or directory"),
        (text, "not a photograph: starts with 74 65 78 74"),
        (damaged, f"damaged at byte {scan}; the rest was read"),
    ]


def test_files_of_one_photograph(tmp_path, paths):
    small = []
    for path in paths[:3]:  # the same photograph as a raw file, which is the first of the two
        small.append(path[:-4] + b".nef")
        tvmeta.save_tiff(small[-1], numpy.zeros((2, 2), "u1"), photo=os.fsdecode(path))
    (found,) = tvmeta.brackets([*paths[:3], *small])
    assert found.files == small and found.all_files == [name for pair in zip(small, paths) for name in pair]


@pytest.mark.parametrize("options", [{"gap": -1}, {"gap": float("nan")}, {"count": 1}, {"count": -3}])
def test_refused_options(options):
    with pytest.raises(ValueError, match="required"):
        tvmeta.brackets([SCENE], **options)
    with pytest.raises(ValueError, match="path"):
        tvmeta.brackets([tvmeta.read(SCENE.read_bytes())])
