"""The Python package on the simulator, and on a library that does what no simulator does on command."""

import asyncio
import concurrent.futures
import ctypes
import os
import tempfile
import unittest
from unittest import mock

import orsanta
from orsanta import _gauge, _library

RANGE = {"thinnest_mm": 0.1, "thickest_mm": 8.0}


class OnTheSimulator(unittest.TestCase):
    """One system for all of them: a start takes its time."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.before = os.getcwd()
        os.chdir(cls.folder.name)
        cls.gauge = orsanta.Gauge(2, **RANGE)
        cls.gauge.start()
        os.chdir(cls.before)

    @classmethod
    def tearDownClass(cls):
        cls.gauge.stop()
        cls.folder.cleanup()

    def test_stations_measure_side_by_side_and_give_each_result_once(self):
        for station in self.gauge:
            station.force_g = 100.0
            self.assertEqual(station.force_g, 100.0)
        with concurrent.futures.ThreadPoolExecutor() as pool:
            for proof in pool.map(lambda station: station.zero(5.0), self.gauge):
                self.assertAlmostEqual(proof.thickness_mm, 5.0, delta=0.001)

        async def both():
            return await asyncio.gather(self.gauge[1].measure_async(), self.gauge[2].measure_async(lift=False))

        results = asyncio.run(both())
        self.assertEqual([result.station for result in results], [1, 2])
        self.assertAlmostEqual(results[0].thickness_mm, 5.0, delta=0.001)
        self.gauge[2].lift()
        self.assertEqual(list(self.gauge[1].results(within_s=0.0)), [])
        self.gauge[1].start(slow=True)
        self.assertTrue(next(self.gauge[1].results(within_s=20.0)).good)
        self.gauge[1].lift()

    def test_stores_stay_in_the_folder_of_the_start(self):
        store = os.path.join(self.folder.name, "音圈电机2参数")
        self.gauge[2].force_g = 77.0
        with open(store, encoding="utf-8") as saved:
            self.assertIn("Val_Force_Set[0] 0 = double 77", saved.read())
        self.assertFalse(os.path.exists("音圈电机2参数"))

    def test_what_would_end_the_process_raises(self):
        refused = [
            (IndexError, lambda: self.gauge[0]),
            (IndexError, lambda: self.gauge[3]),
            (ValueError, lambda: setattr(self.gauge[1], "force_g", float("nan"))),
            (ValueError, lambda: self.gauge.write_output(8, True)),
            (orsanta.OrsantaError, lambda: orsanta.Gauge(1, **RANGE).start()),
            (orsanta.OrsantaError, lambda: orsanta.Gauge(1, **RANGE).read_input(0)),
            (ValueError, lambda: orsanta.Gauge([orsanta.StationRecord.default(3)] * 2, **RANGE)),
        ]
        for error, call in refused:
            with self.subTest(error=error), self.assertRaises(error):
                call()
        self.assertIsNone(self.gauge.read_input(0))


class Scripted:
    """A library whose results come when the test says so."""

    def __init__(self):
        self.results = []
        self.asked = 0
        self.back = 1

    def do_test(self, station, task):
        self.asked += task != _library.TASK_FORCE_BACK
        return 1

    def get_ans(self, station, thickness, force):
        if not self.results or self.results[0] is None:
            return 0
        thickness.value, force.value = self.results.pop(0), 100.0
        return 1

    def Get_Force_Back_Finish(self, station):
        return self.back

    def __getattr__(self, name):
        return lambda *arguments: None


class OnAScript(unittest.TestCase):
    def setUp(self):
        self.library = Scripted()
        with mock.patch.object(_gauge, "load", return_value=self.library):
            self.gauge = orsanta.Gauge(1, **RANGE)
        running = mock.patch.object(_gauge, "_running", _gauge.threading.Lock())
        running.start()
        self.addCleanup(running.stop)
        self.gauge.start()
        self.station = self.gauge[1]

    def answer(self, *thicknesses):
        """These results come, each after a task of its own."""
        take, asked = self.library.get_ans, self.library.asked

        def get_ans(station, thickness, force):
            given = len(thicknesses) - len(waiting)
            if waiting and self.library.asked - asked > given:
                self.library.results.append(waiting.pop(0))
            return take(station, thickness, force)

        waiting = list(thicknesses)
        self.library.get_ans = get_ans

    def test_a_result_that_no_part_has_fails_after_the_lift(self):
        for thickness in (-99.0, 0.0, 9.0, float("nan")):
            self.answer(thickness)
            with self.assertRaises(orsanta.MeasurementFailed):
                self.station.measure(1.0)
        self.answer(3.0, 7.0)
        self.assertEqual(self.station.measure(1.0).thickness_mm, 3.0)
        with self.assertRaises(orsanta.MeasurementFailed):
            self.station.zero(5.0, timeout_s=1.0)

    def test_a_late_or_foreign_result_is_never_the_next_one(self):
        for give_up in (
            lambda: self.station.measure(0.02),
            lambda: asyncio.run(asyncio.wait_for(self.station.measure_async(9.0), 0.02)),
        ):
            with self.assertRaises((orsanta.TimedOut, asyncio.TimeoutError)):
                give_up()
            asked = self.library.asked
            with self.assertRaises(orsanta.TimedOut):
                self.station.measure(0.02)
            self.assertEqual(self.library.asked, asked, "no second task while the first one is out")
            self.library.results.append(1.0)  # the late one
            self.answer(2.0)
            self.assertEqual(self.station.measure(1.0).thickness_mm, 2.0)
        self.library.results.append(4.0)  # of an IO input
        self.answer(3.0)
        self.assertEqual(self.station.measure(1.0).thickness_mm, 3.0)

    def test_a_probe_that_stays_down_is_told_in_time_with_what_was_measured(self):
        with self.assertRaises(orsanta.TimedOut) as nothing:
            self.station.measure(0.01)
        self.assertIsNone(nothing.exception.measurement)
        self.library.results.append(1.0)
        self.library.back = 0
        with self.assertRaises(orsanta.TimedOut):
            self.station.lift(0.01)
        for thickness, good in ((5.0, True), (-99.0, False)):
            self.answer(thickness)
            with self.assertRaisesRegex(orsanta.TimedOut, f"gave {thickness:.3f} mm, but its probe was not up") as late:
                self.station.measure(0.05)
            self.assertEqual(late.exception.measurement, orsanta.Measurement(1, thickness, 100.0, good))
        self.library.back = 1
        self.answer(3.0)
        self.assertEqual(self.station.measure(1.0).thickness_mm, 3.0)

    def test_a_stopped_gauge_takes_no_call(self):
        self.gauge.stop()
        with self.assertRaises(orsanta.OrsantaError):
            self.station.measure(0.01)
        self.assertEqual(len(self.gauge), 0)


class Loading(unittest.TestCase):
    def test_a_missing_library_is_named_with_what_to_do(self):
        with mock.patch.dict(os.environ, {_library.LIBRARY_VARIABLE: "/nowhere/liborsanta.so"}):
            with self.assertRaisesRegex(orsanta.LibraryNotFound, "/nowhere/liborsanta.so.*set ORSANTA_LIBRARY"):
                orsanta.Gauge(1, **RANGE)

    def test_a_record_has_no_gaps(self):
        record = orsanta.StationRecord(7, 8, 9, 10, connect_server=False)
        self.assertEqual(list((ctypes.c_int32 * 9).from_buffer(record)), [7, 8, 9, 10, 11, 0, -1, -1, -1])


if __name__ == "__main__":
    unittest.main()
