"""Pixels of any object that shows its memory, without a copy where that is possible.

That is an object with the buffer protocol; with the method `__array__`, which returns one, as
torch tensors have it; or with the property `__array_interface__`, version 3, as PIL images have it.
"""

from __future__ import annotations

import math
import sys
from contextlib import contextmanager
from ctypes import Structure, byref, c_char_p, c_int, c_ssize_t, c_void_p, py_object, pythonapi
from typing import Iterator, Mapping, Protocol, Union

_STRIDED_READ_ONLY = 0x18  # PyBUF_STRIDES
_READ_ONLY = 0x100  # PyBUF_READ
_ORDERS = "|" + ("<" if sys.byteorder == "little" else ">")
_FORMATS = {"u1": "B", "u2": "H", "f4": "f"}  # of an array interface


class HasArray(Protocol):
    """An object that returns an array with the buffer protocol."""

    def __array__(self) -> object:
        """Return the array."""


class HasArrayInterface(Protocol):
    """An object that describes its memory."""

    @property
    def __array_interface__(self) -> Mapping[str, object]:
        """Describe the memory."""


Pixels = Union[memoryview, HasArray, HasArrayInterface]


class _PyBuffer(Structure):
    """Py_buffer of the stable ABI; memoryview gives all of it but the address."""

    _fields_ = [
        ("buf", c_void_p),
        ("obj", c_void_p),
        ("len", c_ssize_t),
        ("itemsize", c_ssize_t),
        ("readonly", c_int),
        ("ndim", c_int),
        ("format", c_char_p),
        ("shape", c_void_p),
        ("strides", c_void_p),
        ("suboffsets", c_void_p),
        ("internal", c_void_p),
    ]


_get_buffer = pythonapi.PyObject_GetBuffer
_get_buffer.argtypes = [py_object, c_void_p, c_int]
_release_buffer = pythonapi.PyBuffer_Release
_release_buffer.argtypes = [c_void_p]
_release_buffer.restype = None


_memory_at = pythonapi.PyMemoryView_FromMemory
_memory_at.argtypes = [c_void_p, c_ssize_t, c_int]
_memory_at.restype = py_object


def _described(interface: Mapping[str, object]) -> memoryview:
    """Return a view of adjacent samples that an array interface describes; TypeError for others."""
    shape, kind, data = interface["shape"], str(interface["typestr"]), interface["data"]
    if kind[:1] not in _ORDERS or kind[1:] not in _FORMATS or interface.get("strides") is not None:
        raise TypeError(f"{kind} samples, or samples that are not adjacent")
    assert isinstance(shape, tuple)
    if isinstance(data, tuple):
        memory: memoryview = _memory_at(data[0], math.prod(shape) * int(kind[2:]), _READ_ONLY)
    else:
        memory = memoryview(data).cast("B")  # type: ignore[arg-type]
    return memory.cast(_FORMATS[kind[1:]], shape)


def _view(source: object) -> memoryview:
    try:
        return memoryview(source)  # type: ignore[arg-type]
    except (TypeError, ValueError):
        pass
    array = getattr(source, "__array__", None)
    if array is not None:
        return memoryview(array())
    interface = getattr(source, "__array_interface__", None)
    if interface is not None:
        return _described(interface)
    raise TypeError(f"not a {type(source).__name__}")


def view_of(pixels: Pixels) -> memoryview:
    """Return a view, which is valid as long as the object; TypeError if it shows no memory of numbers."""
    try:
        return _view(pixels)
    except (TypeError, ValueError) as error:
        required = "an object with the buffer protocol, __array__ or __array_interface__ is required"
        raise TypeError(f"pixels: {required}: {error}") from error


@contextmanager
def address_of(view: memoryview) -> Iterator[int]:
    """Give the address of the first item; with a negative stride it is the last in memory."""
    buffer = _PyBuffer()
    _get_buffer(view, byref(buffer), _STRIDED_READ_ONLY)
    try:
        yield buffer.buf or 0
    finally:
        _release_buffer(byref(buffer))


def rows_of(view: memoryview) -> tuple[memoryview, int]:
    """Return the view, or a copy if the items of a row are not adjacent, and the bytes from row to row."""
    shape, strides = view.shape or (), view.strides or ()
    row, is_adjacent = view.itemsize, True
    for extent, stride in zip(shape[:0:-1], strides[:0:-1]):
        is_adjacent = is_adjacent and (extent == 1 or stride == row)
        row *= extent
    return (view, strides[0]) if is_adjacent else (memoryview(view.tobytes()), row)
