"""Work that waits, written once for threads and for asyncio: a generator yields wherever it has to wait a little."""

from __future__ import annotations

import asyncio
import time
from typing import Generator, TypeVar, cast

from ._results import TimedOut

T = TypeVar("T")
Steps = Generator[None, None, T]

POLL_S = 0.001


class Deadline:
    """The end of a time-out that begins now."""

    def __init__(self, timeout_s: float, late: str) -> None:
        """late: what to say when it has passed."""
        self._end = time.monotonic() + timeout_s
        self._late = late

    def check(self) -> None:
        """Raises TimedOut when the time is over."""
        if time.monotonic() >= self._end:
            raise TimedOut(self._late)


def run(steps: Steps[T]) -> T:
    """Does the work on this thread."""
    while True:
        try:
            next(steps)
        except StopIteration as end:
            return cast(T, end.value)
        time.sleep(POLL_S)


async def run_async(steps: Steps[T]) -> T:
    """Does the work on the event loop; a cancellation ends it where it waits."""
    try:
        while True:
            try:
                next(steps)
            except StopIteration as end:
                return cast(T, end.value)
            await asyncio.sleep(POLL_S)
    finally:
        steps.close()
