"""Settings as mappings, packets and files."""

import math

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
    "clip": ("Contrast Optimizer", {"WhiteClip": 2.5}, {"WhiteClip": 2.5}),
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


def test_slots_are_those_of_the_header():
    settings = tvmeta.Settings("Details Enhancer", {"Gamma": 2, "Smoothing": 30, "IsPano360": True, "BlackClip": 0.5})
    slots = list(settings.slots())
    assert {slot: value for slot, value in enumerate(slots) if value} == {4: 0.5, 15: 1, 16: 1, 17: 30}
    assert tvmeta.Settings("Details Enhancer").slots()[8] == 50
    clip = tvmeta.Settings("Contrast Optimizer", {"WhiteClip": 5}).slots()[3]
    assert clip == pytest.approx(10 * 0.5**3.063922574380088, rel=1e-6)


REFUSED = [
    ("Strenght", 1, KeyError, "it has: Strength"),
    ("Strength", "much", ValueError, "number"),
    ("Strength", True, ValueError, "number"),
    ("Strength", math.nan, ValueError, "range"),
    ("Gamma", 0, ValueError, "range"),
    ("Smoothing", "Lowest", ValueError, "Very High, High"),
    ("SmoothingMode", "Dark", ValueError, "Light, Slider"),
    ("IsPano360", "Yes", ValueError, "True or False"),
]


@pytest.mark.parametrize("name, value, kind, reason", REFUSED, ids=[f"{case[0]}={case[1]}" for case in REFUSED])
def test_refused_values(name, value, kind, reason):
    settings = tvmeta.Settings("Details Enhancer")
    before = dict(settings)
    with pytest.raises(kind, match=reason):
        settings[name] = value
    assert dict(settings) == before and len(settings) == 17


def test_defaults_come_back():
    settings = tvmeta.Settings("Details Enhancer", {"Gamma": 2, "Smoothing": 9})
    del settings["Gamma"], settings["Smoothing"]
    assert settings == tvmeta.Settings("Details Enhancer")
    assert (settings["Gamma"], settings["Smoothing"]) == (1, "Very High")


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
