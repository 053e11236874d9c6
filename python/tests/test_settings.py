"""Settings as mappings, packets and files."""

import copy
import fractions
import math
import pickle

import numpy
import pytest
from conftest import EXAMPLES, tags_of

import tvmeta

# Values to set, and all others that follow from them; packet texts by exiftool.
MAPPINGS = {
    "numbers": ("Details Enhancer", {"Strength": 70, "Gamma": 1.2, "WhiteClip": 0.25}, {"Gamma": 1.2}),
    "light": ("Details Enhancer", {"Smoothing": "Very Low"}, {"SmoothingMode": "Light", "Smoothing": "Very Low"}),
    "slider": ("Details Enhancer", {"Smoothing": 4.5}, {"SmoothingMode": "Slider", "Smoothing": 4.5}),
    "slider first": ("details enhancer", {"SmoothingMode": "Slider", "Smoothing": -3}, {"Smoothing": -3}),
    "panorama": ("Fusion/Adjust", {"IsPano360": True}, {"IsPano360": "Yes"}),
    "every number": ("Fusion/Real-Estate", {"Highlights": -1.5, "LocalContrast": 8}, {"LocalContrast": 8}),
    "compressor": (tvmeta.Method.TONE_COMPRESSOR, {"Compression": 7}, {"Compression": 7, "Method": "Tone Compressor"}),
}


@pytest.mark.parametrize("method, values, texts", MAPPINGS.values(), ids=MAPPINGS.keys())
def test_round_trip(tmp_path, method, values, texts):
    settings, path = tvmeta.Settings(method), tmp_path / "settings.xmp"
    settings.update(values)
    settings.save(path)
    tags = tags_of(path)
    assert {name: tags[name] for name in texts} == texts
    assert tvmeta.Settings.load(path) == tvmeta.Settings.loads(settings.dumps()) == settings
    assert {name: settings[name] for name in values} == values
    assert eval(repr(settings), vars(tvmeta)) == settings
    packet = settings.insert((EXAMPLES / "packet.xmp").read_bytes())
    assert tvmeta.Settings.loads(packet) == settings
    path.write_bytes(packet)
    assert tags_of(path)["Format"] == "image/tiff"


STORED = {
    "nearest float": ("Details Enhancer", "Strength", 16777217, 16777216.0),
    "exponent": ("Fusion/Intensive", "Radius", 1e-9, 0.0),
    "fraction": ("Fusion/Adjust", "WhiteClip", fractions.Fraction(1, 3), 0.333333),
    "clip": ("Contrast Optimizer", "BlackClip", 2.34567, 2.346),
    "truth": ("Details Enhancer", "IsPano360", 1.0, True),
    "numpy": ("Details Enhancer", "Strength", numpy.float32(70.3), 70.3),
}


@pytest.mark.parametrize("method, name, value, stored", STORED.values(), ids=STORED.keys())
def test_values_are_those_of_the_packet(method, name, value, stored):
    settings = tvmeta.Settings(method, {name: value})
    assert settings[name] == stored and type(settings[name]) is type(stored)
    assert tvmeta.Settings.loads(settings.dumps()) == settings
    assert tvmeta.Settings(method, settings) == settings


def test_mapping_that_always_has_its_names():
    settings = tvmeta.Settings("Details Enhancer", {"Strength": 7, "Gamma": 2, "Smoothing": 9})
    assert settings == dict(settings) and dict(settings) == settings and settings != {"Strength": 7} and settings != 7
    assert settings.pop("Gamma") == 2 and settings.pop("Hue", None) is None and settings["Gamma"] == 1
    with pytest.raises(KeyError, match="it has: Strength"):
        settings.pop("Hue")
    assert [settings.popitem(), settings.popitem()] == [("Smoothing", 9.0), ("Strength", 7.0)]
    assert settings == tvmeta.Settings("Details Enhancer") and len(settings) == 17
    with pytest.raises(KeyError):
        settings.popitem()
    settings.update(Gamma=3, IsPano360=True)
    settings.clear()
    assert settings == tvmeta.Settings("Details Enhancer")
    with pytest.raises(AttributeError):
        settings.method = 11
    names = [tuple(sorted(tvmeta.Settings(method))) for method in tvmeta.Method]
    assert len(set(names)) == 6  # so equal mappings have equal methods


def test_another_mode_starts_with_its_default():
    settings = tvmeta.Settings("Details Enhancer", {"Smoothing": "Low"})
    settings["SmoothingMode"] = "Slider"
    assert settings["Smoothing"] == 0
    settings["Smoothing"] = 4
    settings["SmoothingMode"] = "Slider"
    assert settings["Smoothing"] == 4
    settings["SmoothingMode"] = "Light"
    assert settings["Smoothing"] == "Very High" and list(settings.slots())[16:] == [0, 0]


def pickled(settings):
    return pickle.loads(pickle.dumps(settings))


@pytest.mark.parametrize("copied", [copy.copy, copy.deepcopy, tvmeta.Settings.copy, pickled, lambda one: one | {}])
def test_copies_share_nothing(copied):
    settings = tvmeta.Settings("Fusion/Intensive", {"Radius": 7})
    other = copied(settings)
    assert other == settings and type(other) is tvmeta.Settings and other.method == 11
    other["Radius"] = 8
    settings["Strength"] = 1
    assert (dict(settings), other["Strength"]) == ({"Strength": 1, "Saturation": 0, "Radius": 7}, 0)


def test_unions():
    settings = tvmeta.Settings("Fusion/Intensive", {"Radius": 7, "Strength": 2})
    assert settings | {"Radius": 8} == {"Strength": 2, "Saturation": 0, "Radius": 8} and settings["Radius"] == 7
    assert {"Radius": 8, "Hue": 1} | settings == {"Radius": 7, "Hue": 1, "Strength": 2, "Saturation": 0}
    same = settings
    settings |= {"Saturation": 5}
    assert same["Saturation"] == 5
    with pytest.raises(KeyError, match="Hue"):
        settings | {"Hue": 1}
    with pytest.raises(TypeError):
        settings | 7


def test_slots_are_those_of_the_header():
    settings = tvmeta.Settings("Details Enhancer", {"Gamma": 2, "Smoothing": 30, "IsPano360": True, "BlackClip": 0.5})
    slots = list(settings.slots())
    assert {slot: value for slot, value in enumerate(slots) if value} == {4: 0.5, 15: 1, 16: 1, 17: 30}


REFUSED = [
    ("Strenght", 1, KeyError, "it has: Strength"),
    ("Strength", "much", ValueError, "number"),
    ("Strength", True, ValueError, "number"),
    ("Strength", math.nan, ValueError, "range"),
    ("Strength", None, ValueError, "number"),
    ("Strength", 10**400, ValueError, "range"),
    ("Gamma", 0.004, ValueError, "range"),
    ("Smoothing", "Lowest", ValueError, "Very High, High, Medium, Low, Very Low$"),
    ("Smoothing", "Low\0", ValueError, "Very High"),
    ("SmoothingMode", "Dark", ValueError, "Light, Slider$"),
    ("IsPano360", "Yes", ValueError, "True or False"),
]


@pytest.mark.parametrize("name, value, kind, reason", REFUSED, ids=[f"{case[0]}={case[1]}" for case in REFUSED])
def test_refused_values(name, value, kind, reason):
    settings = tvmeta.Settings("Details Enhancer")
    before = dict(settings)
    with pytest.raises(kind, match=reason):
        settings[name] = value
    assert dict(settings) == before and len(settings) == 17


def test_failures(tmp_path):
    with pytest.raises(ValueError, match="there are: Details Enhancer"):
        tvmeta.Settings("Detail")
    with pytest.raises(tvmeta.FormatError, match="no settings") as caught:
        tvmeta.Settings.load(EXAMPLES / "packet.xmp")
    assert caught.value.path == str(EXAMPLES / "packet.xmp")
    with pytest.raises(FileNotFoundError):
        tvmeta.Settings.load(tmp_path / "none.xmp")
    with pytest.raises(tvmeta.Error, match="xmpmeta"):
        tvmeta.Settings(11).insert(b"<xml/>")


def test_values_of_hostile_packets_are_numbers():
    packet = tvmeta.Settings("Contrast Optimizer", {"WhiteClip": 1, "Midtone": 7}).dumps()
    for text in (b"-9.000", b"1e30", b"inf", b"nan"):
        settings = tvmeta.Settings.loads(packet.replace(b">1.000<", b">" + text + b"<"))
        assert isinstance(settings["WhiteClip"], float) and settings["Midtone"] == 7
        assert tvmeta.Settings.loads(settings.dumps()) == settings and copy.copy(settings) == settings
