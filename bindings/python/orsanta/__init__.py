"""Drives the constant-force thickness gauge Orsanta: stations that land on parts with a set force and measure them.

    import orsanta

    with orsanta.Gauge(stations=1, thinnest_mm=0.1, thickest_mm=8.0) as gauge:
        station = gauge[1]
        station.force_g = 100.0
        print(station.measure().thickness_mm)

Units: forces are grams, lengths millimetres, times seconds. Stations are numbered from 1. One gauge runs in a process.
Any thread may call; calls on one station wait for each other, those on several run side by side.

What an operator can see to is shown by the library in message boxes, which hold the thread that meets one until they
are answered. Without a display a box is one line on the standard error stream and counts as answered.
"""

from ._gauge import Gauge, Station
from ._library import LibraryNotFound, OrsantaError, StationRecord
from ._results import MeasurementFailed, Measurement, StationRests, TimedOut

__version__ = "1.0.0"

__all__ = [
    "Gauge",
    "LibraryNotFound",
    "Measurement",
    "MeasurementFailed",
    "OrsantaError",
    "Station",
    "StationRecord",
    "StationRests",
    "TimedOut",
]
