"""Pixels in any object with the buffer protocol, without a copy where that is possible."""

from __future__ import annotations

from contextlib import contextmanager
from ctypes import Structure, byref, c_char_p, c_int, c_ssize_t, c_void_p, py_object, pythonapi
from typing import Any, Iterator

_STRIDED_READ_ONLY = 0x18  # PyBUF_STRIDES


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


def view_of(pixels: Any) -> memoryview:
    """Return a view; TypeError if the object has no buffer of numbers."""
    try:
        return memoryview(pixels)
    except (TypeError, ValueError) as error:
        raise TypeError(f"pixels: an object with the buffer protocol is required: {error}") from error


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
    row = view.itemsize
    is_adjacent = abs(strides[0]) < 2**31
    for extent, stride in zip(shape[:0:-1], strides[:0:-1]):
        is_adjacent = is_adjacent and (extent == 1 or stride == row)
        row *= extent
    return (view, strides[0]) if is_adjacent else (memoryview(view.tobytes()), row)
