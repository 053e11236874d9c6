"""A program as users write it. mypy checks it with --strict, and test_tiff.py runs it."""

import io
import os
from datetime import datetime, timedelta
from fractions import Fraction
from pathlib import Path
from typing import Optional

import numpy

import tvmeta


def use(photograph: Path, result: Path) -> list[tvmeta.Loss]:
    """Read a photograph in every way and save a result."""
    photo: tvmeta.Photo = tvmeta.read(photograph)
    content: bytes = photograph.read_bytes()
    for other in (tvmeta.read(str(photograph)), tvmeta.read(content), tvmeta.read(bytearray(content))):
        assert other.model == photo.model
    assert tvmeta.read(io.BytesIO(content)).tags() == tvmeta.read(memoryview(content)).tags()
    exposure: Optional[Fraction] = photo.exposure_time
    taken: Optional[datetime] = photo.taken
    east: Optional[timedelta] = photo.utc_offset
    keywords: tuple[str, ...] = photo.keywords
    assert exposure and taken and east is None and "sun" in keywords and "derived" not in photo.fields()
    settings = tvmeta.Settings("Fusion/Intensive", {"Strength": 5})
    settings.update({"Strength": 6.5} | settings)
    pixels = numpy.zeros((4, 6, 3), numpy.uint8)
    sets: tvmeta.Brackets = tvmeta.brackets([photo, os.fsencode(photograph)], gap=2)
    assert [failure.reason for failure in sets.failures] == [group.evidence for group in sets] == []
    with open(photograph, "rb") as file:
        lost = tvmeta.save_tiff(result, pixels, photo=file, settings=settings, modify_date=taken, keywords=keywords)
    tvmeta.save_tiff(result, memoryview(bytes(24)).cast("B", (4, 6)), photo=photo, xmp=photo.xmp())
    return [loss for loss in lost if loss.reason is not tvmeta.LossReason.PRIVATE]
