// The safe class of the C# binding, on a library that does what no simulator does on command (scripted_library.cpp).
using System;
using System.Collections.Generic;
using System.Linq;
using System.Runtime.InteropServices;
using System.Threading.Tasks;
using Orsanta;

static class CsharpTest
{
    const int Now = 0, NextTask = 1, Lifted = 2, TakesTasks = 3;
    [DllImport(Native.Library)] static extern void Script(int station, int what, double value);
    [DllImport(Native.Library)] static extern int Measurements(int station);
    [DllImport(Native.Library)] static extern int Running();

    static int failures;

    static void Check(bool good, string what)
    {
        if (good) return;
        ++failures;
        Console.WriteLine("FAILED: " + what);
    }

    static T Throws<T>(string what, Action call) where T : Exception
    {
        try { call(); }
        catch (T expected) { return expected; }
        catch (Exception other) { Check(false, what + " threw " + other); return null; }
        Check(false, what + " threw nothing");
        return null;
    }

    static void A_Result_That_No_Part_Has_Fails_After_The_Lift(Gauge gauge)
    {
        foreach (double thickness in new[] { -99.0, 0.0, 9.0, double.NaN })
        {
            Script(1, NextTask, thickness);
            var failed = Throws<MeasurementFailedException>("measuring " + thickness, () => gauge[1].Measure(1000));
            if (failed != null) Check(failed.Measurement.Thickness.Equals(thickness) && !failed.Measurement.Good, failed.Message);
        }
        Script(1, NextTask, 5.04);
        Check(gauge[1].Zero(5.0, timeoutMs: 1000).Thickness == 5.04, "a proof inside the tolerance");
        Script(1, NextTask, 5.06);
        Throws<MeasurementFailedException>("a proof outside the tolerance", () => gauge[1].Zero(5.0, timeoutMs: 1000));
        Script(1, NextTask, -0.02);
        Check(gauge[1].MeasureDifference(1000) == -0.02, "a difference has no range");
    }

    static void A_Late_Or_Foreign_Result_Is_Never_The_Next_One(Gauge gauge)
    {
        var late = Throws<TimedOutException>("no result", () => gauge[1].Measure(20));
        if (late != null) Check(late.Measurement == null, "nothing was measured");
        int asked = Measurements(1);
        Throws<TimedOutException>("the first is still out", () => gauge[1].Measure(20));
        Check(Measurements(1) == asked, "no second task while the first one is out");
        Script(1, Now, 1.0);
        Script(1, NextTask, 2.0);
        Check(gauge[1].Measure(1000).Thickness == 2.0, "not the late one");
        Script(1, Now, 4.0);
        Script(1, NextTask, 3.0);
        Check(gauge[1].Measure(1000).Thickness == 3.0, "not that of an IO input");
    }

    static void A_Probe_That_Stays_Down_Is_Told_With_What_Was_Measured(Gauge gauge)
    {
        Script(1, Lifted, 0);
        Throws<TimedOutException>("the lift", () => gauge[1].Lift(10));
        foreach (double thickness in new[] { 5.0, -99.0 })
        {
            Script(1, NextTask, thickness);
            var late = Throws<TimedOutException>("the lift after " + thickness, () => gauge[1].Measure(50));
            if (late == null) continue;
            Check(late.Measurement.HasValue && late.Measurement.Value.Thickness == thickness &&
                  late.Measurement.Value.Good == (thickness == 5.0), late.Message);
        }
        Script(1, NextTask, 6.0);
        Check(gauge[1].Measure(1000, lift: false).Thickness == 6.0, "without a lift the probe may stay down");
        Script(1, Lifted, 1);
    }

    static void Stations_Measure_Side_By_Side_And_Results_End(Gauge gauge)
    {
        Script(1, NextTask, 1.0);
        Script(2, NextTask, 2.0);
        Measurement[] both = Task.WhenAll(gauge[1].MeasureAsync(1000), gauge[2].MeasureAsync(1000)).Result;
        Check(both.Select(one => one.Thickness).SequenceEqual(new[] { 1.0, 2.0 }), "each its own result");
        Script(2, NextTask, 9.0);
        gauge[2].Start();
        List<Measurement> came = gauge[2].Results(20).ToList();
        Check(came.Count == 1 && came[0].Station == 2 && !came[0].Good, "a failed result comes too");
        Script(2, TakesTasks, 0);
        Throws<StationRestsException>("a station that rests", () => gauge[2].Measure(1000));
        Check(gauge[2].Force == 200.0 && gauge[2].Block == 10.0, "parameters of the station itself");
        Check(gauge.ReadInput(0) == null && gauge.ReadInput(2) == true && gauge.ReadInput(3) == false, "IO inputs");
        Throws<GaugeException>("an input that cannot be read", () => gauge.ReadInput(1));
    }

    static void What_Would_End_The_Process_Throws(Gauge gauge)
    {
        Throws<ArgumentOutOfRangeException>("station 0", () => gauge[0].Save());
        Throws<ArgumentOutOfRangeException>("station 3", () => gauge[3].Save());
        Throws<ArgumentOutOfRangeException>("channel 8", () => gauge.WriteOutput(8, true));
        Throws<ArgumentException>("no number", () => gauge[1].Force = double.NaN);
        Throws<ArgumentException>("no number", () => gauge[1].Zero(double.PositiveInfinity));
        Throws<GaugeException>("a second gauge", () => new Gauge(1, 0.1, 8.0));
        Throws<ArgumentException>("a range upside down", () => new Gauge(1, 8.0, 0.1));
        Throws<ArgumentException>("no station", () => new Gauge(0, 0.1, 8.0));
        Throws<ArgumentException>("one id twice", () => new Gauge(new[] { StationRecord.Default(3), StationRecord.Default(3) }, 0.1, 8.0));
    }

    static void A_Gauge_That_Was_Disposed_Of_Takes_No_Call_And_Makes_Room(Gauge gauge)
    {
        Station station = gauge[1];
        gauge.Dispose();
        gauge.Dispose();
        Check(Running() == 0, "the system has stopped");
        foreach (Action call in new Action[] {
                     () => station.Measure(10), () => station.Lift(10), () => station.Zero(5.0), () => station.Save(),
                     () => station.GoZero(), () => station.Start(), () => station.Force = 1.0, () => station.Results(0).ToList(),
                     () => gauge.ReadInput(0), () => gauge.ShowPanel(), () => gauge[1].Save() })
            Throws<ObjectDisposedException>("a call after Dispose", call);
        using (new Gauge(1, 0.1, 8.0)) Check(Running() == 1, "the next one starts");
    }

    static int Main(string[] arguments)
    {
        if (arguments.Contains("without-library"))
        {
            for (int time = 1; time <= 2; ++time) Throws<LibraryNotFoundException>("start " + time, () => new Gauge(1, 0.1, 8.0));
            return failures;
        }
        var gauge = new Gauge(2, 0.1, 8.0);
        A_Result_That_No_Part_Has_Fails_After_The_Lift(gauge);
        A_Late_Or_Foreign_Result_Is_Never_The_Next_One(gauge);
        A_Probe_That_Stays_Down_Is_Told_With_What_Was_Measured(gauge);
        Stations_Measure_Side_By_Side_And_Results_End(gauge);
        What_Would_End_The_Process_Throws(gauge);
        A_Gauge_That_Was_Disposed_Of_Takes_No_Call_And_Makes_Room(gauge);
        return failures;
    }
}
