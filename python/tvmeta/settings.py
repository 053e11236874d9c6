"""Processing settings and the XMP packets that contain them."""

from __future__ import annotations

import math
from ctypes import byref, create_string_buffer
from functools import lru_cache
from typing import Any, Iterator, Mapping, MutableMapping, NamedTuple, Optional, Union

from . import _files as files
from ._library import MAX_BYTES, library, length_of
from ._records import Parameter as ParameterRecord
from ._records import SettingsValues
from .enums import Method
from .errors import AnyPath, Error, FormatError, file_error
from .photo import PathLike, library_path, read

Value = Union[float, bool, str]

_DETECT = -1
_NUMBER, _FRACTION, _GAMMA, _CLIP, _SMOOTHING_MODE, _SMOOTHING, _YES_NO = range(7)
_DECIMALS = {_NUMBER: 1, _FRACTION: 6, _GAMMA: 2, _CLIP: 3, _SMOOTHING: 1}  # in a packet
_LEVELS = ("Very High", "High", "Medium", "Low", "Very Low")
_LIGHT, _SLIDER = _MODES = ("Light", "Slider")
_SLIDER_SLOT = 17
_NEUTRAL_GAMMA = 50.0  # slider position
_CLIP_EXPONENT = 3.063922574380088
_MAX_NUMBER = 1e9  # far beyond any setting; its clip value still is a float


class Parameter(NamedTuple):
    """One parameter of a method: slot and kind as tvmeta.h defines them."""

    slot: int
    kind: int


@lru_cache(maxsize=None)
def parameters(method: Method) -> Mapping[str, Parameter]:
    """Return the parameters of a method by name, in the order of a packet."""
    found: dict[str, Parameter] = {}
    record = ParameterRecord()
    while library.tvmeta_parameter(method, len(found), byref(record)) > 0:
        found[record.name.decode()] = Parameter(record.slot, record.kind)
    return found


@lru_cache(maxsize=None)
def method_name(method: Method) -> str:
    """Return the name of a method as a packet contains it, such as "Details Enhancer"."""
    return str(library.tvmeta_method_name(method).decode())


def _method(method: Union[Method, int, str]) -> Method:
    if not isinstance(method, str):
        return Method(method)
    for candidate in Method:
        if method_name(candidate).lower() == method.lower():
            return candidate
    raise ValueError(f"no method {method!r}; there are: {', '.join(map(method_name, Method))}")


def _power(base: float, exponent: float) -> float:
    """Raise to a power as C does: NaN and infinity instead of an exception."""
    try:
        return math.pow(base, exponent)
    except ValueError:
        return math.nan
    except OverflowError:
        return math.inf


def _from_slot(kind: int, value: float) -> float:
    """Return a number as the packet contains it."""
    if kind == _GAMMA:
        value = _power(2, (50 - value) / 50)
    elif kind == _CLIP:
        value = 10 * _power(value / 10, 1 / _CLIP_EXPONENT)
    return round(value, _DECIMALS[kind])


def _to_slot(kind: int, value: float) -> float:
    if kind == _GAMMA:
        return 50 * (1 - math.log2(value))
    return 10 * math.pow(value / 10, _CLIP_EXPONENT) if kind == _CLIP else value


def _number(name: str, kind: int, value: Any) -> float:
    if isinstance(value, (str, bool)):
        raise ValueError(f"{name}: a number is required, not {value!r}")
    number = float(value)
    if not abs(number) < _MAX_NUMBER or (kind == _GAMMA and number <= 0) or (kind == _CLIP and number < 0):
        raise ValueError(f"{name}: {value!r} is out of range")
    return number


def _word(name: str, words: tuple[str, ...], value: Any) -> str:
    if value not in words:
        raise ValueError(f"{name}: {value!r} is not one of {', '.join(words)}")
    return str(value)


class Settings(MutableMapping[str, Value]):
    """The settings of one processing run: a method, and its parameters by name.

    Values are those of a packet: numbers, True or False, and the words of SmoothingMode and
    Smoothing. A word for Smoothing selects the mode "Light", a number the mode "Slider". Each
    parameter of the method is always present; `del` restores its default.

    >>> settings = Settings("Details Enhancer", {"Strength": 70, "Gamma": 1.2})
    >>> settings["Smoothing"] = "Low"
    """

    def __init__(self, method: Union[Method, int, str], values: Optional[Mapping[str, Value]] = None) -> None:
        """Start with the defaults of a method and set the given values."""
        self.method = _method(method)
        self._values = self._from_slots(self._default_slots())
        self.update(values or {})

    def __repr__(self) -> str:
        """Return the expression that makes the same settings."""
        return f"Settings({method_name(self.method)!r}, {self._values!r})"

    def __eq__(self, other: object) -> bool:
        """Compare method and values."""
        if not isinstance(other, Settings):
            return NotImplemented
        return self.method == other.method and self._values == other._values

    def __len__(self) -> int:
        """Return the number of parameters of the method."""
        return len(self._values)

    def __iter__(self) -> Iterator[str]:
        """Iterate over the names in the order of a packet."""
        return iter(self._values)

    def __getitem__(self, name: str) -> Value:
        """Return a value by name."""
        self._parameter(name)
        return self._values[name]

    def __setitem__(self, name: str, value: Value) -> None:
        """Set a value that the packet can contain; anything else is a ValueError."""
        kind = self._parameter(name).kind
        if kind == _YES_NO:
            if value not in (True, False):
                raise ValueError(f"{name}: True or False is required, not {value!r}")
            self._values[name] = bool(value)
        elif kind == _SMOOTHING_MODE:
            mode = _word(name, _MODES, value)
            if mode != self._values[name]:
                self._values["Smoothing"] = _LEVELS[0] if mode == _LIGHT else 0.0
            self._values[name] = mode
        elif kind == _SMOOTHING and isinstance(value, str):
            self._values[name] = _word(name, _LEVELS, value)
            self._values["SmoothingMode"] = _LIGHT
        else:
            self._values[name] = _number(name, kind, value)
            if kind == _SMOOTHING:
                self._values["SmoothingMode"] = _SLIDER

    def __delitem__(self, name: str) -> None:
        """Restore the default of a value."""
        self[name] = self._from_slots(self._default_slots())[name]

    def _parameter(self, name: str) -> Parameter:
        known = parameters(self.method)
        if name not in known:
            raise KeyError(f"{method_name(self.method)} has no setting {name!r}; it has: {', '.join(known)}")
        return known[name]

    def _default_slots(self) -> Any:
        slots = SettingsValues()
        for slot, kind in parameters(self.method).values():
            if kind == _GAMMA:
                slots[slot] = _NEUTRAL_GAMMA
        return slots

    def _from_slots(self, slots: Any) -> dict[str, Value]:
        """Return the values of slots, which may come from a hostile packet."""
        values: dict[str, Value] = {}
        for name, (slot, kind) in parameters(self.method).items():
            number = slots[slot]
            if kind == _YES_NO:
                values[name] = number != 0
            elif kind == _SMOOTHING_MODE:
                values[name] = _SLIDER if number == 1 else _LIGHT
            elif kind == _SMOOTHING and values["SmoothingMode"] == _LIGHT:
                values[name] = _LEVELS[int(number)] if 0 <= number < len(_LEVELS) else _LEVELS[0]
            else:
                values[name] = _from_slot(kind, slots[_SLIDER_SLOT] if kind == _SMOOTHING else number)
        return values

    def slots(self) -> Any:
        """Return the SettingsValues array of the C interface."""
        slots = SettingsValues()
        for name, (slot, kind) in parameters(self.method).items():
            value = self._values[name]
            if not isinstance(value, str):
                slots[_SLIDER_SLOT if kind == _SMOOTHING else slot] = _to_slot(kind, float(value))
            else:
                slots[slot] = (_MODES if kind == _SMOOTHING_MODE else _LEVELS).index(value)
        return slots

    @classmethod
    def loads(cls, packet: bytes) -> Settings:
        """Read the settings in an XMP packet; FormatError if it contains none."""
        return cls._loads(packet, None)

    @classmethod
    def _loads(cls, packet: bytes, path: Optional[AnyPath]) -> Settings:
        text = bytes(packet)
        size = length_of(text) + 1
        method = library.get_settings_from_xmp(_DETECT, size, text, None, None)
        if method <= 0:
            raise FormatError(path, "no settings of a known method", method)
        settings = cls(method)
        slots = settings._default_slots()
        code = library.get_settings_from_xmp(method, size, text, None, slots)
        if code <= 0:
            raise FormatError(path, "the settings cannot be read", code)
        settings._values = settings._from_slots(slots)
        return settings

    @classmethod
    def load(cls, path: PathLike) -> Settings:
        """Read the settings in a photograph, a result or a settings file."""
        name, encoded = library_path(path)
        if library.tvmeta_file_type(encoded) >= 0:
            return cls._loads(read(path).xmp(), name)
        try:
            with open(name, "rb") as file:
                packet = file.read(MAX_BYTES + 1)
        except OSError as error:
            raise file_error(name, error) from error
        return cls._loads(packet, name)

    def dumps(self) -> bytes:
        """Return an XMP packet with the settings."""
        slots = self.slots()
        packet = create_string_buffer(library.embed_xmp(0, self.method, slots, 0, None, None))
        library.embed_xmp(1, self.method, slots, 0, None, packet)
        return packet.raw

    def save(self, path: PathLike) -> None:
        """Write a settings file. If that fails, an old file remains as it was."""
        files.write(library_path(path)[0], self.dumps())

    def insert(self, packet: bytes) -> bytes:
        """Return an XMP packet with the settings added to it; of several, the first count."""
        slots = self.slots()
        shift = library.insert_xmp(0, self.method, slots, 0, 0, None)
        length = length_of(packet)
        buffer = create_string_buffer(bytes(packet), length + shift)
        code = library.insert_xmp(1, self.method, slots, length, shift, buffer)
        if code <= 0:
            raise Error(None, "not an XMP packet with the openings of x:xmpmeta and rdf:RDF", code)
        return buffer.raw
