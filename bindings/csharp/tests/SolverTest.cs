// The solver against elimination, its files, and its memory, whatever disposes or collects it meanwhile.

using System;
using System.Collections.Generic;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Runtime.Serialization;
using System.Runtime.Serialization.Formatters.Binary;
using System.Threading;
using Quor;
using static QuorTest;

static class SolverTest
{
    internal static readonly Action[] All = {
        SolveAgreesWithElimination, OutputMayBeAnInput, MeshReadsBackInSolverOrder,
        WrittenFilesReadBack, RefusalsNameTheCulprit, ProgressCancelsAndPassesExceptionsOn,
        SingularMatrixIsTold, SolversAreNotSerialized, DisposedSolverThrows, SolversSurviveCollectionDuringCalls,
        SolversSurviveDisposalDuringCalls, ForgottenSolversAreFreed };

    // K from the gradients of the hat functions: edges and areas, no cotangent.
    static double[,] DenseStiffness(Sample s)
    {
        var n = s.Tags.Length;
        var k = new double[n, n];
        for (var t = 0; t < s.Triangles.Length; t += 3)
        {
            Func<int, int, double> edge = (corner, axis) =>
                s.Vertices[3 * s.Triangles[t + (corner + 2) % 3] + axis]
                - s.Vertices[3 * s.Triangles[t + (corner + 1) % 3] + axis];
            Func<int, int, double> dot = (a, b) =>
                Enumerable.Range(0, 3).Sum(axis => edge(a, axis) * edge(b, axis));
            var area = Math.Sqrt(dot(0, 0) * dot(1, 1) - dot(0, 1) * dot(0, 1)) / 2;
            for (var a = 0; a < 3; a++)
                for (var b = 0; b < 3; b++)
                    k[s.Triangles[t + a], s.Triangles[t + b]] += dot(a, b) / (4 * area);
        }
        return k;
    }

    static void SolveAgreesWithElimination()
    {
        var s = BumpySheet(8);
        var n = s.Tags.Length;
        foreach (var source in new[] { null, s.Source })
        {
            var k = DenseStiffness(s);
            var x = Enumerable.Range(0, n).Select(
                i => s.IsPrescribed(i) ? s.Values[i] : -(source?[i] ?? 0)).ToArray();
            for (var i = 0; i < n; i++)
                for (var j = 0; j < n && s.IsPrescribed(i); j++)
                    k[i, j] = i == j ? 1 : 0;
            for (var pivot = 0; pivot < n; pivot++)
            {
                for (var i = 0; i < n; i++)
                {
                    var factor = i == pivot ? 0 : k[i, pivot] / k[pivot, pivot];
                    for (var j = 0; j < n && factor != 0; j++)
                        k[i, j] -= factor * k[pivot, j];
                    x[i] -= factor * x[pivot];
                }
            }
            using (var solver = s.Build())
            {
                Expect(solver.Info == Factorization.Success, "info");
                var field = source == null ? solver.Solve(s.Values)
                                           : solver.SolveWithSource(s.Values, source);
                for (var i = 0; i < n; i++)
                {
                    Expect(Math.Abs(field[i] - x[i] / k[i, i]) < 1e-11, $"field at {i}");
                    Expect(!s.IsPrescribed(i) || field[i] == s.Values[i], $"prescribed value at {i}");
                }
            }
        }
    }

    static void OutputMayBeAnInput()
    {
        var s = BumpySheet(20);
        using (var solver = s.Build())
        {
            var plain = solver.Solve(s.Values);
            var expected = solver.SolveWithSource(s.Values, s.Source);
            var values = (double[])s.Values.Clone();
            Expect(solver.Solve(values, values) == values && values.SequenceEqual(plain), "values");
            var source = (double[])s.Source.Clone();
            Expect(solver.SolveWithSource(s.Values, source, source) == source
                   && source.SequenceEqual(expected), "source");
        }
    }

    static void MeshReadsBackInSolverOrder()
    {
        var s = BumpySheet(6);
        var all = Enumerable.Range(0, s.Tags.Length).ToArray();
        var order = all.Where(s.IsPrescribed).Concat(all.Where(i => !s.IsPrescribed(i)).Reverse()).ToArray();
        using (var solver = s.Build())
        {
            Expect(solver.PrescribedCount == all.Count(s.IsPrescribed), "prescribed count");
            Expect(solver.GetVertices().SequenceEqual(
                order.SelectMany(i => s.Vertices.Skip(3 * i).Take(3))), "vertices");
            Expect(solver.GetTriangles().Select(k => order[k]).SequenceEqual(s.Triangles),
                   "triangles");
            Expect(solver.ToSolverOrder(s.Values).SequenceEqual(order.Select(i => s.Values[i])),
                   "field");
        }
    }

    static void WrittenFilesReadBack()
    {
        var s = BumpySheet(5);
        var folder = Path.Combine(Path.GetTempPath(), Path.GetRandomFileName());
        Directory.CreateDirectory(folder);
        try
        {
            using (var solver = s.Build())
            {
                var field = solver.ToSolverOrder(solver.Solve(s.Values));
                var baseName = Path.Combine(folder, "Wärme");
                solver.Write(field, baseName);
                var lines = File.ReadAllLines(baseName + ".obj");
                Expect(lines[0] == "mtllib Wärme.mtl", "material");
                Func<string, double[]> numbers = key => lines.Where(line => line.StartsWith(key))
                    .SelectMany(line => line.Substring(key.Length).Split(' '))
                    .Select(word => double.Parse(word.Split('/')[0], CultureInfo.InvariantCulture))
                    .ToArray();
                Func<IEnumerable<double>, IEnumerable<double>, bool> close = (a, b) =>
                    a.Count() == b.Count() && a.Zip(b, (x, y) => Math.Abs(x - y)).Max() < 1e-4;
                double low = field.Min(), high = field.Max();
                Expect(close(numbers("v "), solver.GetVertices()), "v");
                Expect(close(numbers("vt "), field.SelectMany(
                    value => new[] { (high - value) / (high - low), 0.5 })), "vt");
                Expect(close(numbers("f "), solver.GetTriangles().Select(
                    i => i + 1.0)), "f");
                Expect(File.ReadAllText(baseName + ".mtl").Contains("map_Kd viridis.PNG"), "ramp");
                Throws<IOException>(() => solver.Write(field, folder + "/no/x"), "no");
                Throws<ArgumentException>(() => solver.Write(field, folder + "/a\0b"), "");
            }
        }
        finally
        {
            Directory.Delete(folder, true);
        }
    }

    static void RefusalsNameTheCulprit()
    {
        Action<Status, string, int, int[]> refused = (status, words, n, triangles) =>
            Throws<QuorException>(() =>
            {
                try
                {
                    new Solver(new double[3 * n], triangles, new int[n]);
                }
                catch (QuorException error) when (error.Status != status)
                {
                    throw new Exception($"status {error.Status}, not {status}");
                }
            }, words);
        refused(Status.NoVertex, "there are none", 0, new int[0]);
        refused(Status.UnusedVertex, "uses vertex 0", 4, new int[0]);
        refused(Status.UnusedVertex, "uses vertex 2", 4, new[] { 0, 1, 3 });
        refused(Status.RepeatedCorner, "triangle 1 has the corners 3, 1, 3: drop it with Mesh.Clean", 4, new[] { 0, 1, 2, 3, 1, 3 });
    }

    static void ProgressCancelsAndPassesExceptionsOn()
    {
        var s = BumpySheet(4);
        var last = -1.0;
        using (new Solver(s.Vertices, s.Triangles, s.Tags, done => { last = done; return false; }))
            Expect(last == 1, "progress");
        Throws<OperationCanceledException>(
            () => new Solver(s.Vertices, s.Triangles, s.Tags, done => true), "cancelled");
        Throws<InvalidTimeZoneException>(
            () => new Solver(s.Vertices, s.Triangles, s.Tags,
                             done => throw new InvalidTimeZoneException("mine")), "mine");
    }

    static void SingularMatrixIsTold()
    {
        // Entries 1, 0.5 and 0 only: the elimination is exact and its last pivot is 0.
        using (var solver = new Solver(new double[] { 0, 0, 0, 1, 0, 0, 0, 1, 0 },
                                       new[] { 0, 1, 2 }, new int[3], mayFloat: true))
        {
            Expect(solver.Info == Factorization.NumericalIssue, solver.Info.ToString());
        }
        // The weights of the free corners with the far one are lost in that with each other.
        Throws<QuorException>(() => new Solver(new[] { 0, 0, 0, 1e20, 0, 0, 1e20, 1, 0 },
                                               new[] { 0, 1, 2 }, new[] { 1, 0, 0 }), "singular");
        var wide = new[] { 0, 0, 0, 1, 0, 0, 0, double.PositiveInfinity, 0 };
        int[] triangle = { 0, 1, 2 }, tags = { 1, 0, 0 };
        Throws<ArgumentException>(() => new Solver(wide, triangle, tags), "vertex 2 is not finite", 2);
        new Solver(wide, triangle, tags, mayFloat: true).Dispose();
    }

    // Two of the same memory would release it twice.
    static void SolversAreNotSerialized()
    {
        using (var solver = BumpySheet(3).Build())
            Throws<SerializationException>(
                () => new BinaryFormatter().Serialize(new MemoryStream(), solver), "");
    }

    static void DisposedSolverThrows()
    {
        var s = BumpySheet(3);
        var solver = s.Build();
        solver.Dispose();
        solver.Dispose();
        foreach (var use in new Action[] {
            () => solver.Info.ToString(), () => solver.Solve(s.Values), () => solver.GetVertices(),
            () => solver.SolveWithSource(s.Values, s.Source), () => solver.GetTriangles(),
            () => solver.SolveMany(s.Values), () => solver.Write(s.Values, "never") })
        {
            Throws<ObjectDisposedException>(use, "");
        }
        Expect(!File.Exists("never.obj"), "a disposed solver wrote a file");
    }

    static void SolversSurviveCollectionDuringCalls()
    {
        var s = BumpySheet(40);
        var expected = s.Build().Solve(s.Values);
        var done = false;
        var collector = new Thread(() =>
        {
            while (!Volatile.Read(ref done))
            {
                GC.Collect();
                GC.WaitForPendingFinalizers();
            }
        });
        collector.Start();
        var right = true;
        for (var round = 0; round < 100; round++)  // nothing refers to the solver during its call
            right &= s.Build().Solve(s.Values).SequenceEqual(expected);
        Volatile.Write(ref done, true);
        collector.Join();
        Expect(right, "a solver changed under its call");
    }

    static void SolversSurviveDisposalDuringCalls()
    {
        var s = BumpySheet(150);  // large enough that a solve takes a while
        for (var round = 0; round < 5; round++)
        {
            var solver = s.Build();
            var solves = 0;
            ThreadStart work = () =>
            {
                try
                {
                    for (;; Interlocked.Increment(ref solves))
                        solver.Solve(s.Values);
                }
                catch (ObjectDisposedException)
                {
                }
            };
            var threads = new[] { new Thread(work), new Thread(work) };
            foreach (var thread in threads)
                thread.Start();
            while (Volatile.Read(ref solves) < 10)
                Thread.Yield();
            solver.Dispose();
            foreach (var thread in threads)
                thread.Join();
        }
    }

    static void ForgottenSolversAreFreed()
    {
        var s = BumpySheet(60);
        Func<long> resident = () =>
            4096 * long.Parse(File.ReadAllText("/proc/self/statm").Split(' ')[1]);
        Action<int> build = count =>
        {
            for (var i = 0; i < count; i++)
                s.Build();
        };
        var before = resident();
        var kept = Enumerable.Range(0, 40).Select(_ => s.Build()).ToList();
        var grown = resident() - before;
        Expect(grown > 40e5, $"what solvers take is not visible: {grown}");
        kept.ForEach(solver => solver.Dispose());
        before = resident();
        for (var round = 0; round < 20; round++)
        {
            build(10);
            GC.Collect();
            GC.WaitForPendingFinalizers();
        }
        Expect(resident() - before < grown, $"{resident() - before}, 40 solvers take {grown}");
    }
}
