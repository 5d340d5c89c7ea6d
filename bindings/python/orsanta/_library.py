"""The eighteen functions of orsanta.h, by ctypes. A call lets other Python threads run meanwhile."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, c_double, c_int, c_int32
from typing import Any

LIBRARY_NAME = "liborsanta.so.1"
LIBRARY_VARIABLE = "ORSANTA_LIBRARY"  # path of another one

TASK_MEASURE = 1
TASK_FORCE_BACK = 2
TASK_FORCE_DIFFERENCE = 3
TASK_MEASURE_SLOW = 4


class OrsantaError(Exception):
    """What went wrong with the gauge."""


class LibraryNotFound(OrsantaError):
    """The library could not be loaded."""


class StationRecord(ctypes.Structure):
    """One station's place on the bus: VCM_Resource_struct of orsanta.h, which tells the fields.

    can_id: of the drive, 1 to 63. axis: of the interpolation device that reads the temperature, where one is fitted;
    sensor_input: of that device. instruction_thread: of the motion server. connect_server: whether this station may
    open the connection to the motion server.
    """

    _fields_ = [
        ("CanID", c_int32),
        ("AxisNum", c_int32),
        ("AuxAxisNum", c_int32),
        ("ControllerNum", c_int32),
        ("SpareNum", c_int32),
        ("ConnectServer", c_int32),
        ("Reserved1", c_int32),
        ("Reserved2", c_int32),
        ("Reserved3", c_int32),
    ]

    def __init__(
        self, can_id: int, axis: int, sensor_input: int, instruction_thread: int, connect_server: bool = True
    ) -> None:
        super().__init__(
            can_id, axis, sensor_input, instruction_thread, instruction_thread + 1, int(connect_server), -1, -1, -1
        )

    @classmethod
    def default(cls, number: int) -> StationRecord:
        """The record that station `number` has in a system without a table: CAN id, axis and input of that number."""
        return cls(number, number, number, 2 * number)


Double = POINTER(c_double)

# Name: result and arguments, in the order of orsanta.h.
FUNCTIONS: dict[str, tuple[Any, list[Any]]] = {
    "ORSA_resource_alloc": (None, [POINTER(StationRecord), c_int]),
    "Orsanta_dll_init": (None, [c_int]),
    "Orsanta_dll_uninit": (None, []),
    "do_test": (c_int, [c_int, c_int]),
    "get_ans": (c_int, [c_int, Double, Double]),
    "Check_User_Zero": (None, [c_int]),
    "Get_Force_Back_Finish": (c_int, [c_int]),
    "GoZero": (c_int, [c_int]),
    "Set_Force": (None, [c_int, c_double]),
    "Set_Force2": (None, [c_int, c_double]),
    "Get_Force": (None, [c_int, Double]),
    "Save_Parameter2file": (None, [c_int]),
    "Set_Ans_Offset": (None, [c_int, c_double]),
    "Get_Ans_Offset": (None, [c_int, Double]),
    "set_test_distance": (None, [c_int, c_double]),
    "SetIO": (c_int, [c_int, c_int]),
    "GetIO": (c_int, [c_int]),
    "show_dlg": (None, []),
}


def load() -> ctypes.CDLL:
    """The library that ORSANTA_LIBRARY names, or else the installed one, with its functions declared."""
    path = os.environ.get(LIBRARY_VARIABLE, LIBRARY_NAME)
    try:
        library = ctypes.CDLL(path)
        for name, (result, arguments) in FUNCTIONS.items():
            function = getattr(library, name)
            function.restype = result
            function.argtypes = arguments
    except (OSError, AttributeError) as error:
        raise LibraryNotFound(
            f"{path} cannot be used: {error}; install the library, or set {LIBRARY_VARIABLE} to its path"
        ) from error
    return library
