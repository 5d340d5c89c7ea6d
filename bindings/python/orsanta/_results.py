"""What a measurement gives, and how it can fail."""

from __future__ import annotations

from dataclasses import dataclass

from ._library import OrsantaError


@dataclass(frozen=True)
class Measurement:
    """One result of a station.

    good: the thickness is one that the parts can have. A measurement that failed has a number too, which is not.
    set_force_g: the force that was set, not a measured one.
    """

    station: int
    thickness_mm: float
    set_force_g: float
    good: bool


class MeasurementFailed(OrsantaError):
    """A result came, and it is no thickness of a part."""

    def __init__(self, measurement: Measurement, expected: str) -> None:
        super().__init__(
            f"station {measurement.station} gave {measurement.thickness_mm:.3f} mm, which is not {expected}: the "
            "measurement failed, as the messages of the library say, or the station never had a reference (zero)"
        )
        self.measurement = measurement


class StationRests(OrsantaError):
    """The station takes no task, since its CAN id is not its own; the library's message names the other one."""


class TimedOut(OrsantaError, TimeoutError):
    """The station did not get done in time, as when its drive has gone silent.

    measurement: the result, good or not, where one had come and only the lift-off after it was late; else None.
    """

    def __init__(self, message: str, measurement: Measurement | None = None) -> None:
        super().__init__(message)
        self.measurement = measurement
