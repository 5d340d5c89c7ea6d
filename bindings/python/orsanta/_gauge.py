"""The gauge and its stations."""

from __future__ import annotations

import ctypes
import math
import threading
from typing import Callable, Iterator, Sequence

from ._library import (
    TASK_FORCE_BACK,
    TASK_FORCE_DIFFERENCE,
    TASK_MEASURE,
    TASK_MEASURE_SLOW,
    OrsantaError,
    StationRecord,
    load,
)
from ._results import Measurement, MeasurementFailed, StationRests, TimedOut
from ._waiting import Deadline, Steps, run, run_async

TIMEOUT_S = 60.0  # longer than any measurement of a drive that answers
IO_CHANNELS = 8
HIGHEST_CAN_ID = 63

_running = threading.Lock()  # held while a system runs: there is one in a process


def _finite(name: str, value: float) -> float:
    if not math.isfinite(value):
        raise ValueError(f"{name} must be a finite number, not {value}")
    return value


class Station:
    """One station of a gauge, from `gauge[number]`."""

    def __init__(self, gauge: Gauge, number: int) -> None:
        self._gauge = gauge
        self.number = number
        self._work = threading.Lock()
        self._overdue = False  # a measurement that was given up has yet to bring its result

    # --- Measuring ---

    def measure(self, timeout_s: float = TIMEOUT_S, *, slow: bool = False, lift: bool = True) -> Measurement:
        """Lands on the part, measures it, and lifts the probe again; blocks until it is up.

        slow: lands at 3 mm/s, for a part of unknown height. lift: False leaves the probe on the part, under force.
        Raises MeasurementFailed, after the lift-off, when the result is no thickness of a part, TimedOut, and
        StationRests. After a time-out the probe may be down. Where only the lift-off was late, the exception has the
        result in `measurement`; a result that comes late itself is never taken for the next one.
        """
        return run(self._measure(timeout_s, TASK_MEASURE_SLOW if slow else TASK_MEASURE, lift, judge=True))

    async def measure_async(
        self, timeout_s: float = TIMEOUT_S, *, slow: bool = False, lift: bool = True
    ) -> Measurement:
        """As `measure`, on the event loop."""
        return await run_async(self._measure(timeout_s, TASK_MEASURE_SLOW if slow else TASK_MEASURE, lift, judge=True))

    def measure_difference(self, timeout_s: float = TIMEOUT_S) -> float:
        """The difference in mm between the thicknesses under `force_g` and `force2_g`; lifts the probe afterwards.

        A difference has no range that tells a failed measurement: one that the part cannot have is for the caller to
        notice.
        """
        return run(self._measure(timeout_s, TASK_FORCE_DIFFERENCE, lift=True, judge=False)).thickness_mm

    def lift(self, timeout_s: float = TIMEOUT_S) -> None:
        """Lifts the probe off the part that was measured, and waits until it is up. Raises TimedOut, StationRests."""
        run(self._lift(timeout_s))

    def zero(self, block_mm: float, tolerance_mm: float = 0.05, timeout_s: float = TIMEOUT_S) -> Measurement:
        """Takes the surface of the reference block under the probe, `block_mm` thick, as the reference, and saves it.

        The block is then measured, as proof, and that measurement is returned. Raises MeasurementFailed when it is
        further from `block_mm` than `tolerance_mm`, which has to be above the correction that the operator has set on
        the panel; nothing is saved then, and the reference is not to be used. Blocks for two landings; `timeout_s`
        bounds the second.
        """
        self.block_mm = block_mm
        self._library.Check_User_Zero(self.number)
        proof = run(self._measure(timeout_s, TASK_MEASURE, lift=True, judge=False))
        if not abs(proof.thickness_mm - block_mm) <= tolerance_mm:
            raise MeasurementFailed(proof, f"the {block_mm} mm of the reference block within {tolerance_mm} mm")
        self.save()
        return proof

    def results(self, within_s: float | None = None) -> Iterator[Measurement]:
        """Results as they come, whoever asked for them: an IO input, a serial line, the panel or `start`.

        Ends when none has come for `within_s`; None: never. A failed one comes too, with `good` False.
        """
        while True:
            try:
                yield run(self._next_result(math.inf if within_s is None else within_s))
            except TimedOut:
                return

    def start(self, *, slow: bool = False) -> None:
        """Queues a measurement and returns at once; its result comes from `results`. Raises StationRests."""
        self._queue(TASK_MEASURE_SLOW if slow else TASK_MEASURE)

    def go_zero(self) -> bool:
        """Runs the drive's own zero routine, blocks until it has ended, and tells whether it succeeded."""
        return bool(self._library.GoZero(self.number) == 1)

    # --- Parameters ---

    @property
    def force_g(self) -> float:
        """The set force of the next measurement. Setting it saves the station."""
        return self._read(self._library.Get_Force)

    @force_g.setter
    def force_g(self, value: float) -> None:
        self._library.Set_Force(self.number, _finite("force_g", value))

    def set_force2(self, force_g: float) -> None:
        """Sets the second force of `measure_difference`, and saves the station."""
        self._library.Set_Force2(self.number, _finite("force_g", force_g))

    @property
    def block_mm(self) -> float:
        """The size of the reference block, which is added to every thickness."""
        return self._read(self._library.Get_Ans_Offset)

    @block_mm.setter
    def block_mm(self, value: float) -> None:
        self._library.Set_Ans_Offset(self.number, _finite("block_mm", value))

    def set_travel(self, greatest_mm: float) -> None:
        """Sets how far down the probe goes that meets no part."""
        self._library.set_test_distance(self.number, _finite("greatest_mm", greatest_mm))

    def save(self) -> None:
        """Saves the parameters to the station's store."""
        self._library.Save_Parameter2file(self.number)

    # --- Inside ---

    @property
    def _library(self) -> ctypes.CDLL:
        self._gauge._check_running()  # the library ends the process at a call while no system runs
        return self._gauge._library

    def _read(self, get: Callable[[int, ctypes.c_double], None]) -> float:
        value = ctypes.c_double()
        get(self.number, value)
        return value.value

    def _queue(self, task: int) -> None:
        if self._library.do_test(self.number, task) != 1:
            raise StationRests(f"station {self.number} takes no task; the message of the library says why")

    def _take(self) -> Measurement | None:
        thickness, force = ctypes.c_double(), ctypes.c_double()
        if self._library.get_ans(self.number, thickness, force) == 0:
            return None
        self._overdue = False
        return Measurement(self.number, thickness.value, force.value, self._gauge._is_part(thickness.value))

    def _next_result(self, timeout_s: float) -> Steps[Measurement]:
        deadline = Deadline(timeout_s, f"station {self.number} gave no result within {timeout_s} s")
        while (result := self._take()) is None:
            deadline.check()
            yield
        return result

    def _measure(self, timeout_s: float, task: int, lift: bool, judge: bool) -> Steps[Measurement]:
        deadline = Deadline(timeout_s, f"station {self.number} was not done within {timeout_s} s; does its drive answer?")
        yield from self._hold(deadline)
        try:
            while self._overdue and self._take() is None:
                deadline.check()
                yield
            self._take()  # one that nobody has asked for is not this one's
            self._queue(task)
            self._overdue = True
            while (result := self._take()) is None:
                deadline.check()
                yield
            if lift:
                try:
                    yield from self._lift_held(deadline)
                except TimedOut:
                    text = f"station {self.number} gave {result.thickness_mm:.3f} mm, but its probe was not up within {timeout_s} s"
                    raise TimedOut(text, result) from None
        finally:
            self._work.release()
        if judge and not result.good:
            raise MeasurementFailed(result, self._gauge._range_text())
        return result

    def _lift(self, timeout_s: float) -> Steps[None]:
        deadline = Deadline(timeout_s, f"the probe of station {self.number} was not up within {timeout_s} s")
        yield from self._hold(deadline)
        try:
            yield from self._lift_held(deadline)
        finally:
            self._work.release()

    def _lift_held(self, deadline: Deadline) -> Steps[None]:
        self._queue(TASK_FORCE_BACK)
        while self._library.Get_Force_Back_Finish(self.number) == 0:
            deadline.check()
            yield

    def _hold(self, deadline: Deadline) -> Steps[None]:
        while not self._work.acquire(blocking=False):
            deadline.check()
            yield


class Gauge:
    """The gauge with all its stations; runs between `start` and `stop`, or inside a `with` block.

    stations: how many, on CAN ids 1, 2, ..., or a record for each. thinnest_mm, thickest_mm: what the parts can be;
    a result outside is a measurement that failed. io_card: an IO card is in use.
    Raises LibraryNotFound, and ValueError for a table that cannot be.
    """

    def __init__(
        self,
        stations: int | Sequence[StationRecord],
        *,
        thinnest_mm: float,
        thickest_mm: float,
        io_card: bool = False,
    ) -> None:
        if not thinnest_mm < thickest_mm:
            raise ValueError(f"thinnest_mm must be below thickest_mm, not {thinnest_mm} and {thickest_mm}")
        if isinstance(stations, int):
            stations = [StationRecord.default(number) for number in range(1, stations + 1)]
        ids = [record.CanID for record in stations]
        if not ids or len(set(ids)) < len(ids) or not all(1 <= can_id <= HIGHEST_CAN_ID for can_id in ids):
            raise ValueError(f"stations need CAN ids from 1 to {HIGHEST_CAN_ID}, each another one, not {ids}")
        self._records = list(stations)
        self._thinnest_mm, self._thickest_mm = thinnest_mm, thickest_mm
        self._io_card = io_card
        self._library = load()
        self._stations: list[Station] = []

    def start(self) -> None:
        """Starts the system: builds every station, and lifts every probe. Blocks for some seconds.

        The stores of the stations are in the working directory. Raises OrsantaError when a system runs already.
        """
        if not _running.acquire(blocking=False):
            raise OrsantaError("a gauge runs in this process already; stop it first")
        count = len(self._records)
        self._library.ORSA_resource_alloc((StationRecord * count)(*self._records), count)
        self._library.Orsanta_dll_init(1 if self._io_card else 0)
        self._stations = [Station(self, number) for number in range(1, count + 1)]

    def stop(self) -> None:
        """Stops the system and saves all stations. Waits for running tasks, for ever where a drive has gone silent.

        No other call may run meanwhile. Does nothing when it does not run. Close the panel first.
        """
        if self._stations:
            self._stations = []
            self._library.Orsanta_dll_uninit()
            _running.release()

    def __enter__(self) -> Gauge:
        self.start()
        return self

    def __exit__(self, *_: object) -> None:
        self.stop()

    def __len__(self) -> int:
        return len(self._stations)

    def __getitem__(self, number: int) -> Station:
        """Station `number`, from 1. Raises IndexError."""
        if not 1 <= number <= len(self._stations):
            raise IndexError(f"there is no station {number}: {len(self._stations)} stand, from 1 on, while the gauge runs")
        return self._stations[number - 1]

    def __iter__(self) -> Iterator[Station]:
        return iter(self._stations)

    def show_panel(self) -> None:
        """Shows the operator's panel and returns when it is closed. Needs a display."""
        self._check_running()
        self._library.show_dlg()

    def read_input(self, channel: int) -> bool | None:
        """The IO input of channel 0 to 7; None without an IO card. Raises OrsantaError when it cannot be read."""
        self._check_channel(channel)
        level = self._library.GetIO(channel)
        if level < 0:
            raise OrsantaError(f"the IO input {channel} could not be read; does the card answer?")
        return None if level > 1 else level == 1

    def write_output(self, channel: int, level: bool) -> None:
        """Sets the IO output of channel 0 to 7."""
        self._check_channel(channel)
        self._library.SetIO(channel, int(level))

    def _check_running(self) -> None:
        if not self._stations:
            raise OrsantaError("the gauge does not run; start it first")

    def _check_channel(self, channel: int) -> None:
        self._check_running()
        if not 0 <= channel < IO_CHANNELS:
            raise ValueError(f"IO channels are 0 to {IO_CHANNELS - 1}, not {channel}")

    def _is_part(self, thickness_mm: float) -> bool:
        return self._thinnest_mm <= thickness_mm <= self._thickest_mm

    def _range_text(self) -> str:
        return f"from {self._thinnest_mm} to {self._thickest_mm} mm"
