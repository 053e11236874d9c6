"""Processing settings and the XMP packets that contain them."""

from __future__ import annotations

import math
import os
from ctypes import Array, byref, c_float, create_string_buffer
from functools import lru_cache
from typing import Callable, Iterator, Mapping, MutableMapping, NamedTuple, Optional, SupportsFloat, Union

from . import _files as files
from ._library import MAX_BYTES, library, length_of
from ._records import Parameter as ParameterRecord
from ._records import SettingsValues
from ._sources import PathLike, library_path
from .enums import Method
from .errors import AnyPath, FormatError, file_error
from .photo import UNKNOWN_KIND, read

Value = Union[float, bool, str]
Slots = Array[c_float]

_DETECT = -1
_SMOOTHING_MODE, _SMOOTHING, _YES_NO = 4, 5, 6  # kinds
_SETTING_OK, _SETTING_INVALID = 1, -1
_TEXT_SIZE = 64


class Parameter(NamedTuple):
    """One parameter of a method: slot and kind as tvmeta.h defines them."""

    place: int  # index in the method
    slot: int
    kind: int


@lru_cache(maxsize=None)
def parameters(method: Method) -> Mapping[str, Parameter]:
    """Return the parameters of a method by name, in the order of a packet."""
    found: dict[str, Parameter] = {}
    record = ParameterRecord()
    while library.tvmeta_parameter(method, len(found), byref(record)) > 0:
        found[record.name.decode()] = Parameter(len(found), record.slot, record.kind)
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


def _text(method: Method, parameter: Parameter, slots: Slots) -> str:
    """Return a value as the packet contains it."""
    text = create_string_buffer(_TEXT_SIZE)
    library.tvmeta_setting_text(method, parameter.place, slots, text)
    return text.value.decode()


def _words(method: Method, parameter: Parameter) -> list[str]:
    """Return the words of a parameter: the texts of slot values from 0 on, until one is repeated."""
    words: list[str] = []
    slots = SettingsValues()
    while (word := _text(method, parameter, slots)) not in words:
        words.append(word)
        slots[parameter.slot] += 1
    return words


def _number(name: str, value: object) -> str:
    """Return the text of a number."""
    if isinstance(value, (str, bool)) or not isinstance(value, SupportsFloat):
        raise ValueError(f"{name}: a number is required, not {value!r}")
    try:
        return repr(float(value))
    except OverflowError:
        return repr(math.inf)


class Settings(MutableMapping[str, Value]):
    """The settings of one processing run: a method, and its parameters by name.

    Values are those of a packet: numbers, True or False, and the words of SmoothingMode and
    Smoothing. A number is rounded to the decimals of a packet. A word for Smoothing selects the
    mode "Light", a number the mode "Slider". Each parameter of the method is always present:
    `del`, `pop()`, `popitem()` and `clear()` restore defaults.

    >>> settings = Settings("Details Enhancer", {"Strength": 70, "Gamma": 1.2})
    >>> settings["Smoothing"] = "Low"
    """

    def __init__(self, method: Union[Method, int, str], values: Optional[Mapping[str, Value]] = None) -> None:
        """Start with the defaults of a method and set the given values."""
        self._method = _method(method)
        self.clear()
        self.update(values or {})

    @property
    def method(self) -> Method:
        """Return the method, which determines the names."""
        return self._method

    def __repr__(self) -> str:
        """Return the expression that makes the same settings."""
        return f"Settings({method_name(self.method)!r}, {dict(self)!r})"

    def __len__(self) -> int:
        """Return the number of parameters of the method."""
        return len(parameters(self.method))

    def __iter__(self) -> Iterator[str]:
        """Iterate over the names in the order of a packet."""
        return iter(parameters(self.method))

    def __getitem__(self, name: str) -> Value:
        """Return a value by name."""
        parameter = self._parameter(name)
        if parameter.kind == _YES_NO:
            return self._slots[parameter.slot] > 0
        text = _text(self.method, parameter, self._slots)
        try:
            number = float(text)
        except ValueError:
            return text
        return math.nan if math.isnan(number) else number  # dictionaries compare NaN by identity

    def __setitem__(self, name: str, value: Value) -> None:
        """Set a value that the packet can contain; anything else is a ValueError."""
        parameter = self._parameter(name)
        slots = self.slots()
        if parameter.kind == _YES_NO:
            if value not in (True, False):
                raise ValueError(f"{name}: True or False is required, not {value!r}")
            slots[parameter.slot] = bool(value)
        elif parameter.kind == _SMOOTHING_MODE:
            wanted = self.slots()
            self._store(wanted, name, value)
            self._select(slots, wanted[parameter.slot])
        else:
            if parameter.kind == _SMOOTHING:
                self._select(slots, 0 if isinstance(value, str) else 1)
            self._store(slots, name, value)
        self._slots = slots

    def __delitem__(self, name: str) -> None:
        """Restore the default of a value."""
        self[name] = type(self)(self.method)[name]

    def __or__(self, other: Mapping[str, Value]) -> Settings:
        """Return a copy with the values of another mapping."""
        if not isinstance(other, Mapping):
            return NotImplemented
        result = self.copy()
        result.update(other)
        return result

    def __ror__(self, other: Mapping[str, Value]) -> dict[str, Value]:
        """Return a dictionary of another mapping and these settings."""
        return {**other, **self} if isinstance(other, Mapping) else NotImplemented

    def __ior__(self, other: Mapping[str, Value]) -> Settings:
        """Set the values of another mapping."""
        self.update(other)
        return self

    def __copy__(self) -> Settings:
        """Return a copy that shares nothing."""
        return self.copy()

    def __reduce__(self) -> tuple[Callable[[bytes], Settings], tuple[bytes]]:
        """Pickle the packet, which every version of the package can read."""
        return type(self).loads, (self.dumps(),)

    def copy(self) -> Settings:
        """Return a copy that shares nothing."""
        result = type(self)(self.method)
        result._slots = self.slots()
        return result

    def clear(self) -> None:
        """Restore all defaults."""
        self._slots = SettingsValues()
        for parameter in parameters(self.method).values():
            library.tvmeta_setting_value(self.method, parameter.place, None, self._slots)

    def popitem(self) -> tuple[str, Value]:
        """Restore the default of the last value that is another; return its name and value.

        KeyError if all values are the defaults.
        """
        defaults = type(self)(self.method)
        for name in reversed(list(self)):
            value = self[name]
            if value != defaults[name]:
                self[name] = defaults[name]
                return name, value
        raise KeyError("all settings have their defaults")

    def _parameter(self, name: str) -> Parameter:
        known = parameters(self.method)
        if name not in known:
            raise KeyError(f"{method_name(self.method)} has no setting {name!r}; it has: {', '.join(known)}")
        return known[name]

    def _store(self, slots: Slots, name: str, value: Value) -> None:
        """Set a number or a word in slots."""
        parameter = self._parameter(name)
        is_word = parameter.kind == _SMOOTHING_MODE or isinstance(value, str) and parameter.kind == _SMOOTHING
        text = str(value) if is_word else _number(name, value)
        code = library.tvmeta_setting_value(self.method, parameter.place, text.encode(), slots)
        if is_word and (code != _SETTING_OK or "\0" in text):
            raise ValueError(f"{name}: {value!r} is not one of {', '.join(_words(self.method, parameter))}")
        if code != _SETTING_OK:
            raise ValueError(f"{name}: {value!r} is out of range")

    def _select(self, slots: Slots, mode: float) -> None:
        """Set the smoothing mode in slots. If it changes, the smoothing starts with its default."""
        known = parameters(self.method)
        slot, smoothing = known["SmoothingMode"].slot, known["Smoothing"].place
        if slots[slot] != mode:
            library.tvmeta_setting_value(self.method, smoothing, None, slots)  # of the old mode
            slots[slot] = mode
            library.tvmeta_setting_value(self.method, smoothing, None, slots)

    def slots(self) -> Slots:
        """Return the SettingsValues array of the C interface, a copy."""
        return SettingsValues(*self._slots)

    @classmethod
    def loads(cls, packet: bytes) -> Settings:
        """Read the settings in an XMP packet; FormatError if it contains none."""
        return cls._loads(packet, None)

    @classmethod
    def _loads(cls, packet: bytes, path: Optional[AnyPath]) -> Settings:
        text = memoryview(packet).tobytes()
        size = length_of(text) + 1
        method = library.get_settings_from_xmp(_DETECT, size, text, None, None)
        if method <= 0:
            raise FormatError(path, "no settings of a known method", method)
        settings = cls(method)
        code = library.get_settings_from_xmp(method, size, text, None, settings._slots)
        if code <= 0:
            raise FormatError(path, "the settings cannot be read", code)
        return settings

    @classmethod
    def load(cls, path: PathLike) -> Settings:
        """Read the settings in a photograph, a result or a settings file."""
        name, _ = library_path(path)
        try:
            photo = read(os.fsdecode(path))
        except FormatError as error:
            if error.code != UNKNOWN_KIND:
                raise
        else:
            return cls._loads(photo.xmp(), name)
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
        """Return an XMP packet with the settings added to it; of several, the first count.

        FormatError if the packet does not begin in the usual form.
        """
        slots = self.slots()
        shift = library.insert_xmp(0, self.method, slots, 0, 0, None)
        length = length_of(packet)
        buffer = create_string_buffer(bytes(packet), length + shift)
        code = library.insert_xmp(1, self.method, slots, length, shift, buffer)
        if code <= 0:
            raise FormatError(None, "not an XMP packet with the openings of x:xmpmeta and rdf:RDF", code)
        return buffer.raw
