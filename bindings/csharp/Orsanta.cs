// Drives the constant-force thickness gauge Orsanta from .NET and Mono: the eighteen functions of orsanta.h (Native),
// and a safe class over them (Gauge with its Stations). One file, for C# 5 and later: compile it with your host.
//
// Units: forces are grams, lengths millimetres, times milliseconds. Stations are numbered from 1. One gauge runs in a
// process. Any thread may call; calls on one station wait for each other, those on several run side by side.
//
// What an operator can see to is shown by the library in message boxes, which hold the thread that meets one until they
// are answered. Without a display a box is one line on the standard error stream and counts as answered.
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Runtime.InteropServices;
using System.Threading;
using System.Threading.Tasks;

namespace Orsanta
{
    /// <summary>One station's place on the bus: VCM_Resource_struct of orsanta.h, which tells the fields.</summary>
    [StructLayout(LayoutKind.Sequential, Pack = 4)]
    public struct StationRecord
    {
        public int CanID, AxisNum, AuxAxisNum, ControllerNum, SpareNum, ConnectServer, Reserved1, Reserved2, Reserved3;

        public StationRecord(int canId, int axis, int sensorInput, int instructionThread, bool connectServer)
        {
            CanID = canId;
            AxisNum = axis;
            AuxAxisNum = sensorInput;
            ControllerNum = instructionThread;
            SpareNum = instructionThread + 1;
            ConnectServer = connectServer ? 1 : 0;
            Reserved1 = Reserved2 = Reserved3 = -1;
        }

        /// <summary>The record that a station has in a system without a table: CAN id, axis and input of its number.</summary>
        public static StationRecord Default(int number)
        {
            return new StationRecord(number, number, number, 2 * number, true);
        }
    }

    /// <summary>The functions as orsanta.h tells them. A call outside the calling order ends the process.</summary>
    public static class Native
    {
        public const string Library = "liborsanta.so.1";
        public const int TaskMeasure = 1, TaskForceBack = 2, TaskForceDifference = 3, TaskMeasureSlow = 4;

        [DllImport(Library)] public static extern void ORSA_resource_alloc([In] StationRecord[] records, int count);
        [DllImport(Library)] public static extern void Orsanta_dll_init(int IoMode);
        [DllImport(Library)] public static extern void Orsanta_dll_uninit();
        [DllImport(Library)] public static extern int do_test(int station, int task_code);
        [DllImport(Library)] public static extern int get_ans(int station, out double thickness, out double force);
        [DllImport(Library)] public static extern void Check_User_Zero(int station);
        [DllImport(Library)] public static extern int Get_Force_Back_Finish(int station);
        [DllImport(Library)] public static extern int GoZero(int station);
        [DllImport(Library)] public static extern void Set_Force(int station, double force);
        [DllImport(Library)] public static extern void Set_Force2(int station, double force);
        [DllImport(Library)] public static extern void Get_Force(int station, out double force);
        [DllImport(Library)] public static extern void Save_Parameter2file(int station);
        [DllImport(Library)] public static extern void Set_Ans_Offset(int station, double offset);
        [DllImport(Library)] public static extern void Get_Ans_Offset(int station, out double offset);
        [DllImport(Library)] public static extern void set_test_distance(int station, double distance);
        [DllImport(Library)] public static extern int SetIO(int channel, int value);
        [DllImport(Library)] public static extern int GetIO(int channel);
        [DllImport(Library)] public static extern void show_dlg();
    }

    /// <summary>What went wrong with the gauge.</summary>
    public class GaugeException : Exception
    {
        public GaugeException(string message) : base(message) { }
    }

    /// <summary>The library could not be loaded.</summary>
    public class LibraryNotFoundException : GaugeException
    {
        public LibraryNotFoundException(Exception why)
            : base(Native.Library + " cannot be used (" + why.Message + "); install the library, or put the folder that " +
                   "it is in into LD_LIBRARY_PATH") { }
    }

    /// <summary>A result came, and it is no thickness of a part.</summary>
    public class MeasurementFailedException : GaugeException
    {
        public readonly Measurement Measurement;

        public MeasurementFailedException(Measurement measurement, string expected)
            : base(string.Format("station {0} gave {1:F3} mm, which is not {2}: the measurement failed, as the messages " +
                                 "of the library say, or the station never had a reference (Zero)",
                                 measurement.Station, measurement.Thickness, expected))
        {
            Measurement = measurement;
        }
    }

    /// <summary>The station takes no task, since its CAN id is not its own.</summary>
    public class StationRestsException : GaugeException
    {
        public StationRestsException(int station)
            : base(string.Format("station {0} takes no task; the message of the library says why", station)) { }
    }

    /// <summary>The station did not get done in time, as when its drive has gone silent. Measurement: the result, good
    /// or not, where one had come and only the lift-off after it was late; else null.</summary>
    public class TimedOutException : GaugeException
    {
        public readonly Measurement? Measurement;

        public TimedOutException(string message, Measurement? measurement = null) : base(message)
        {
            Measurement = measurement;
        }
    }

    /// <summary>One result of a station. Good: the thickness is one that the parts can have; a measurement that failed
    /// has a number too, which is not. SetForce was set, it is not a measured one.</summary>
    public struct Measurement
    {
        public readonly int Station;
        public readonly double Thickness, SetForce;
        public readonly bool Good;

        public Measurement(int station, double thickness, double setForce, bool good)
        {
            Station = station;
            Thickness = thickness;
            SetForce = setForce;
            Good = good;
        }
    }

    /// <summary>One station, from gauge[number].</summary>
    public sealed class Station
    {
        public const int DefaultTimeoutMs = 60000; // longer than any measurement of a drive that answers

        public readonly int Number;
        private readonly Gauge _gauge;
        private readonly object _work = new object();
        private bool _overdue; // a measurement that was given up has yet to bring its result

        internal Station(Gauge gauge, int number)
        {
            _gauge = gauge;
            Number = number;
        }

        /// <summary>Lands on the part, measures it, and lifts the probe again; blocks until it is up. Throws
        /// MeasurementFailedException, after the lift-off, when the result is no thickness of a part, and
        /// TimedOutException: the probe may be down then. Where only the lift-off was late, the exception has the result;
        /// a result that comes late itself is never taken for the next one.</summary>
        public Measurement Measure(int timeoutMs = DefaultTimeoutMs, bool slow = false, bool lift = true)
        {
            Measurement result = Land(timeoutMs, slow ? Native.TaskMeasureSlow : Native.TaskMeasure, lift);
            if (!result.Good) throw new MeasurementFailedException(result, _gauge.RangeText);
            return result;
        }

        /// <summary>As Measure, on a thread of the pool.</summary>
        public Task<Measurement> MeasureAsync(int timeoutMs = DefaultTimeoutMs, bool slow = false, bool lift = true)
        {
            return Task.Run(() => Measure(timeoutMs, slow, lift));
        }

        /// <summary>The difference between the thicknesses under Force and the second force; lifts the probe. No range
        /// tells a failed one: a difference that the part cannot have is for the caller to notice.</summary>
        public double MeasureDifference(int timeoutMs = DefaultTimeoutMs)
        {
            return Land(timeoutMs, Native.TaskForceDifference, true).Thickness;
        }

        /// <summary>Lifts the probe off the part that was measured, and waits until it is up.</summary>
        public void Lift(int timeoutMs = DefaultTimeoutMs)
        {
            lock (_work) LiftHeld(Stopwatch.StartNew(), timeoutMs);
        }

        /// <summary>Takes the surface of the reference block under the probe as the reference, measures the block as
        /// proof, and saves. Throws MeasurementFailedException where that is further off than the tolerance, which has
        /// to be above the correction that the operator has set; nothing is saved then.</summary>
        public Measurement Zero(double block, double tolerance = 0.05, int timeoutMs = DefaultTimeoutMs)
        {
            Block = block;
            Native.Check_User_Zero(Number);
            Measurement proof = Land(timeoutMs, Native.TaskMeasure, true);
            if (!(Math.Abs(proof.Thickness - block) <= tolerance))
                throw new MeasurementFailedException(
                    proof, string.Format("the {0} mm of the reference block within {1} mm", block, tolerance));
            Save();
            return proof;
        }

        /// <summary>Results as they come, whoever asked for them; ends when none has come for that long. A failed one
        /// comes too, with Good false.</summary>
        public IEnumerable<Measurement> Results(int withinMs = Timeout.Infinite)
        {
            for (;;)
            {
                Stopwatch waited = Stopwatch.StartNew();
                Measurement result;
                while (!Take(out result))
                {
                    if (withinMs != Timeout.Infinite && waited.ElapsedMilliseconds >= withinMs) yield break;
                    Thread.Sleep(1);
                }
                yield return result;
            }
        }

        /// <summary>Queues a measurement and returns at once; its result comes from Results.</summary>
        public void Start(bool slow = false)
        {
            Queue(slow ? Native.TaskMeasureSlow : Native.TaskMeasure);
        }

        /// <summary>Runs the drive's own zero routine, blocks until it has ended, and tells whether it succeeded.</summary>
        public bool GoZero()
        {
            _gauge.CheckRunning();
            return Native.GoZero(Number) == 1;
        }

        /// <summary>The set force of the next measurement. Setting it saves the station.</summary>
        public double Force
        {
            get { return Read(Native.Get_Force); }
            set { Native.Set_Force(Number, Checked(value)); }
        }

        /// <summary>The second force of MeasureDifference. Setting it saves the station.</summary>
        public double Force2
        {
            set { Native.Set_Force2(Number, Checked(value)); }
        }

        /// <summary>The size of the reference block, which is added to every thickness.</summary>
        public double Block
        {
            get { return Read(Native.Get_Ans_Offset); }
            set { Native.Set_Ans_Offset(Number, Checked(value)); }
        }

        /// <summary>How far down the probe goes that meets no part.</summary>
        public double Travel
        {
            set { Native.set_test_distance(Number, Checked(value)); }
        }

        /// <summary>Saves the parameters to the station's store.</summary>
        public void Save()
        {
            _gauge.CheckRunning();
            Native.Save_Parameter2file(Number);
        }

        private delegate void Getter(int station, out double value);

        private double Read(Getter get)
        {
            _gauge.CheckRunning();
            double value;
            get(Number, out value);
            return value;
        }

        private double Checked(double value)
        {
            _gauge.CheckRunning();
            if (double.IsNaN(value) || double.IsInfinity(value))
                throw new ArgumentException("a finite number is wanted, not " + value);
            return value;
        }

        private void Queue(int task)
        {
            _gauge.CheckRunning();
            if (Native.do_test(Number, task) != 1) throw new StationRestsException(Number);
        }

        private bool Take(out Measurement result)
        {
            _gauge.CheckRunning();
            double thickness, force;
            bool taken = Native.get_ans(Number, out thickness, out force) == 1;
            if (taken) _overdue = false;
            result = new Measurement(Number, thickness, force, _gauge.IsPart(thickness));
            return taken;
        }

        private Measurement Land(int timeoutMs, int task, bool lift)
        {
            lock (_work)
            {
                Stopwatch waited = Stopwatch.StartNew();
                Measurement result;
                while (_overdue && !Take(out result)) Wait(waited, timeoutMs);
                Take(out result); // one that nobody has asked for is not this one's
                Queue(task);
                _overdue = true;
                while (!Take(out result)) Wait(waited, timeoutMs);
                if (lift) LiftAfter(result, waited, timeoutMs);
                return result;
            }
        }

        private void LiftAfter(Measurement result, Stopwatch waited, int timeoutMs)
        {
            try
            {
                LiftHeld(waited, timeoutMs);
            }
            catch (TimedOutException)
            {
                throw new TimedOutException(string.Format("station {0} gave {1:F3} mm, but its probe was not up within {2} ms",
                                                          Number, result.Thickness, timeoutMs), result);
            }
        }

        private void LiftHeld(Stopwatch waited, int timeoutMs)
        {
            Queue(Native.TaskForceBack);
            while (Native.Get_Force_Back_Finish(Number) == 0) Wait(waited, timeoutMs);
        }

        private void Wait(Stopwatch waited, int timeoutMs)
        {
            if (waited.ElapsedMilliseconds >= timeoutMs)
                throw new TimedOutException(string.Format(
                    "station {0} was not done within {1} ms; does its drive answer?", Number, timeoutMs));
            Thread.Sleep(1);
        }
    }

    /// <summary>The gauge with all its stations, from its construction to Dispose.</summary>
    public sealed class Gauge : IDisposable
    {
        private const int IoChannels = 8, HighestCanId = 63;
        private static int running; // 1 while a system runs: there is one in a process

        private readonly double _thinnest, _thickest;
        private Station[] _stations;

        /// <summary>As the other one, with that many stations on CAN ids 1, 2, ...</summary>
        public Gauge(int stations, double thinnest, double thickest, bool ioCard = false)
            : this(DefaultRecords(stations), thinnest, thickest, ioCard) { }

        /// <summary>Starts the system: builds every station, and lifts every probe. Blocks for some seconds. Thinnest
        /// and thickest are what the parts can be: a result outside is a measurement that failed. The stores of the
        /// stations are in the working directory.</summary>
        public Gauge(StationRecord[] records, double thinnest, double thickest, bool ioCard = false)
        {
            if (!(thinnest < thickest)) throw new ArgumentException("thinnest must be below thickest");
            CheckIds(records);
            if (Interlocked.Exchange(ref running, 1) == 1)
                throw new GaugeException("a gauge runs in this process already; dispose of it first");
            try
            {
                Native.ORSA_resource_alloc(records, records.Length);
                Native.Orsanta_dll_init(ioCard ? 1 : 0);
            }
            catch (TypeLoadException why) // no such library, or one without these functions
            {
                Interlocked.Exchange(ref running, 0);
                throw new LibraryNotFoundException(why);
            }
            _thinnest = thinnest;
            _thickest = thickest;
            _stations = new Station[records.Length];
            for (int i = 0; i < records.Length; ++i) _stations[i] = new Station(this, i + 1);
        }

        /// <summary>Stops the system and saves all stations. Waits for running tasks, for ever where a drive has gone
        /// silent. No other call may run meanwhile. Close the panel first.</summary>
        public void Dispose()
        {
            if (Interlocked.Exchange(ref _stations, null) == null) return;
            Native.Orsanta_dll_uninit();
            Interlocked.Exchange(ref running, 0);
        }

        /// <summary>How many stations there are.</summary>
        public int Count
        {
            get
            {
                CheckRunning();
                return _stations.Length;
            }
        }

        /// <summary>A station, by its number from 1.</summary>
        public Station this[int number]
        {
            get
            {
                if (number < 1 || number > Count)
                    throw new ArgumentOutOfRangeException("number", "stations are 1 to " + Count + ", not " + number);
                return _stations[number - 1];
            }
        }

        /// <summary>Shows the operator's panel and returns when it is closed. Needs a display.</summary>
        public void ShowPanel()
        {
            CheckRunning();
            Native.show_dlg();
        }

        /// <summary>The IO input of channel 0 to 7; null without an IO card.</summary>
        public bool? ReadInput(int channel)
        {
            CheckChannel(channel);
            int level = Native.GetIO(channel);
            if (level < 0) throw new GaugeException("the IO input " + channel + " could not be read; does the card answer?");
            return level > 1 ? (bool?)null : level == 1;
        }

        /// <summary>Sets the IO output of channel 0 to 7.</summary>
        public void WriteOutput(int channel, bool level)
        {
            CheckChannel(channel);
            Native.SetIO(channel, level ? 1 : 0);
        }

        // The library ends the process at a call while no system runs.
        internal void CheckRunning()
        {
            if (_stations == null) throw new ObjectDisposedException("Gauge");
        }

        internal bool IsPart(double thickness)
        {
            return thickness >= _thinnest && thickness <= _thickest;
        }

        internal string RangeText
        {
            get { return string.Format("from {0} to {1} mm", _thinnest, _thickest); }
        }

        private void CheckChannel(int channel)
        {
            CheckRunning();
            if (channel < 0 || channel >= IoChannels)
                throw new ArgumentOutOfRangeException("channel", "IO channels are 0 to 7, not " + channel);
        }

        private static StationRecord[] DefaultRecords(int count)
        {
            var records = new StationRecord[Math.Max(count, 0)];
            for (int i = 0; i < records.Length; ++i) records[i] = StationRecord.Default(i + 1);
            return records;
        }

        private static void CheckIds(StationRecord[] records)
        {
            var ids = new HashSet<int>();
            foreach (StationRecord record in records)
                if (record.CanID < 1 || record.CanID > HighestCanId || !ids.Add(record.CanID))
                    throw new ArgumentException("stations need CAN ids from 1 to 63, each another one, not " + record.CanID);
            if (ids.Count == 0) throw new ArgumentException("a gauge needs a station");
        }
    }
}
