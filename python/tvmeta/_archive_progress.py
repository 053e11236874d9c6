"""Shows how far a run is: one line that changes on a terminal, else a line every 30 seconds."""

from __future__ import annotations

import sys
import time
from typing import Optional

_TERMINAL_SECONDS = 0.5
_LINE_SECONDS = 30.0


def _duration(seconds: float) -> str:
    minutes, seconds = divmod(round(seconds), 60)
    hours, minutes = divmod(minutes, 60)
    return f"{hours}:{minutes:02}:{seconds:02}" if hours else f"{minutes}:{seconds:02}"


class Progress:
    """Prints to standard error."""

    def __init__(self) -> None:
        """Start the clock."""
        self.is_terminal = sys.stderr is not None and sys.stderr.isatty()
        self.interval = _TERMINAL_SECONDS if self.is_terminal else _LINE_SECONDS
        self.start = self.shown = time.monotonic()
        self.width = 0

    def text(self, done: int, total: Optional[int], failures: int) -> str:
        """Return the line; `total` is None until all folders are listed."""
        seconds = max(time.monotonic() - self.start, 1e-3)
        rate = done / seconds
        words = [f"{done:,} files" if total is None else f"{done:,} of {total:,} files", f"{rate:,.0f} files/s"]
        if total is None:
            words.append("listing")
        elif done:
            words.append(f"{_duration((total - done) / rate)} left")
        if failures:
            words.append(f"{failures:,} failures")
        return ", ".join(words)

    def show(self, done: int, total: Optional[int], failures: int) -> None:
        """Print the line if it is time."""
        if time.monotonic() - self.shown < self.interval:
            return
        self.shown = time.monotonic()
        self._print(self.text(done, total, failures), "\r" if self.is_terminal else "\n")

    def message(self, text: str) -> None:
        """Print a line that stays."""
        self._print(f"tvmeta: {text}", "\n")

    def clear(self) -> None:
        """Remove the line of a terminal."""
        if self.width:
            self._print("", "\r")

    def _print(self, text: str, end: str) -> None:
        if sys.stderr is not None:
            print(text.ljust(self.width), end=end, file=sys.stderr, flush=True)
        self.width = len(text) if end == "\r" else 0
