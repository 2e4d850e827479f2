// The binding against plain loops, and against everything that must not reach the library.

using System;
using System.Collections.Generic;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Threading;
using Quor;

static class QuorTest
{
    static readonly Random Random = new Random(7);
    static int failures;

    static int Main()
    {
        foreach (var test in new Action[] {
            WeldAgreesWithComparingAllPairs, SolveAgreesWithElimination, OutputMayBeAnInput,
            MeshReadsBackInSolverOrder, WrittenFilesReadBack, BadArgumentsAreRefused,
            RefusalsNameTheCulprit, RawMeshesAreLookedAtMendedAndRefined,
            ProgressCancelsAndPassesExceptionsOn, SingularMatrixIsTold, DisposedSolverThrows,
            SolversSurviveCollectionDuringCalls, SolversSurviveDisposalDuringCalls,
            ForgottenSolversAreFreed, AllLabelsSurviveTheSphere })
        {
            try
            {
                test();
            }
            catch (Exception error)
            {
                failures++;
                Console.Error.WriteLine($"FAILED {test.Method.Name}: {error}");
            }
        }
        Console.WriteLine(failures == 0 ? "all C# tests passed" : $"{failures} C# tests failed");
        return failures == 0 ? 0 : 1;
    }

    static void Expect(bool holds, string what)
    {
        if (!holds)
            throw new Exception(what);
    }

    static void Throws<T>(Action action, string words) where T : Exception
    {
        try
        {
            action();
        }
        catch (T error)
        {
            Expect(error.Message.Contains(words), $"'{words}' is not in '{error.Message}'");
            return;
        }
        throw new Exception($"no {typeof(T).Name} with '{words}'");
    }

    sealed class Sample
    {
        internal double[] Vertices, Values, Source;
        internal int[] Triangles, Tags;
        internal bool IsPrescribed(int i) => Tags[i] >= 1 && Tags[i] <= 3;
        internal Solver Build() => new Solver(Vertices, Triangles, Tags);
    }

    // A bumpy sheet of side*side vertices with tags of every kind.
    static Sample BumpySheet(int side)
    {
        var n = side * side;
        var triangles = new List<int>();
        for (var a = 0; a < n - side; a++)
        {
            if (a % side < side - 1)
                triangles.AddRange(new[] { a, a + 1, a + side + 1, a, a + side + 1, a + side });
        }
        return new Sample
        {
            Vertices = Enumerable.Range(0, n).SelectMany(
                i => new[] { i % side, i / side, Random.NextDouble() }).ToArray(),
            Triangles = triangles.ToArray(),
            Tags = Enumerable.Range(0, n).Select(_ => Random.Next(-1, 6)).ToArray(),
            Values = Enumerable.Range(0, n).Select(_ => Random.NextDouble()).ToArray(),
            Source = Enumerable.Range(0, n).Select(_ => Random.NextDouble()).ToArray()
        };
    }

    static void WeldAgreesWithComparingAllPairs()
    {
        const int n = 120;
        var points = Enumerable.Range(0, 3 * n).Select(_ => Random.Next(12) / 4.0).ToArray();
        var triangles = Enumerable.Range(0, 600).Select(_ => Random.Next(n)).ToArray();
        foreach (var tolerance in new[] { 0, 0.3, 0.36, double.PositiveInfinity })
        {
            var root = Enumerable.Range(0, n).ToArray();
            for (var i = 0; i < n; i++)
            {
                for (var j = i + 1; j < n; j++)
                {
                    double d = 0;
                    for (var axis = 0; axis < 3; axis++)
                        d += Math.Pow(points[3 * i + axis] - points[3 * j + axis], 2);
                    int low = Math.Min(root[i], root[j]), high = Math.Max(root[i], root[j]);
                    if (d < tolerance * tolerance)
                        root = root.Select(r => r == high ? low : r).ToArray();
                }
            }
            var kept = root.Distinct().OrderBy(r => r).ToList();
            var map = root.Select(r => kept.IndexOf(r)).ToArray();
            var seen = new HashSet<string>();
            var expected = new List<int>();
            for (var t = 0; t < triangles.Length; t += 3)
            {
                var corners = triangles.Skip(t).Take(3).Select(p => map[p]).ToArray();
                if (corners.Distinct().Count() == 3
                    && seen.Add(string.Join(" ", corners.OrderBy(c => c))))
                    expected.AddRange(corners);
            }
            var mesh = Mesh.Weld(points, triangles, tolerance);
            Expect(mesh.PointMap.SequenceEqual(map), $"point map at {tolerance}");
            Expect(mesh.Triangles.SequenceEqual(expected), $"triangles at {tolerance}");
            Expect(mesh.Vertices.SequenceEqual(kept.SelectMany(p => points.Skip(3 * p).Take(3))),
                   $"vertices at {tolerance}");
        }
        Expect(Mesh.Weld(new double[0], new int[0], 1).PointMap.Length == 0, "nothing");
    }

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

    static void BadArgumentsAreRefused()
    {
        double[] three = new double[9], none = null;
        int[] triangle = { 0, 1, 2 }, tags = { 1, 1, 1 };
        Throws<ArgumentNullException>(() => Mesh.Weld(none, triangle, 1), "points");
        Throws<ArgumentException>(() => Mesh.Weld(new double[8], triangle, 1), "8 entries");
        Throws<ArgumentException>(() => Mesh.Weld(three, new int[4], 1), "4 entries");
        foreach (var index in new[] { 3, -1, int.MinValue })
        {
            var bad = new[] { 0, index, 2 };
            Throws<ArgumentOutOfRangeException>(() => Mesh.Weld(three, bad, 1), "0 .. 2");
            Throws<ArgumentOutOfRangeException>(() => new Solver(three, bad, tags), "0 .. 2");
        }
        foreach (var bad in new[] { double.NaN, -1e-300 })
            Throws<ArgumentOutOfRangeException>(() => Mesh.Weld(three, triangle, bad), "0 or more");
        Throws<ArgumentNullException>(() => new Solver(three, null, tags), "triangles");
        Throws<ArgumentException>(() => new Solver(three, triangle, new int[2]), "2 entries");
        foreach (var label in new[] { -2, 65535 })
            Throws<ArgumentOutOfRangeException>(
                () => SphereLabel.Encode(label, out _, out _, out _), "65534");
        using (var solver = new Solver(new double[] { 0, 0, 0, 1, 0, 0, 0, 1, 0 }, triangle, tags))
        {
            double[] good = new double[3], bad = new double[2];
            Throws<ArgumentNullException>(() => solver.Solve(null), "prescribed");
            Throws<ArgumentException>(() => solver.Solve(bad), "2 entries");
            Throws<ArgumentException>(() => solver.Solve(good, bad), "2 entries");
            Throws<ArgumentException>(() => solver.SolveWithSource(bad, good), "2 entries");
            Throws<ArgumentException>(() => solver.SolveWithSource(good, bad), "2 entries");
            Throws<ArgumentException>(() => solver.SolveWithSource(good, good, bad), "2 entries");
            Throws<ArgumentException>(() => solver.ToSolverOrder(bad), "2 entries");
            Throws<ArgumentException>(() => solver.Write(bad, "never"), "2 entries");
            Throws<ArgumentNullException>(() => solver.Write(good, null), "baseName");
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
        refused(Status.NoVertex, "no vertices", 0, new int[0]);
        refused(Status.UnusedVertex, "vertex 0 is", 4, new int[0]);
        refused(Status.UnusedVertex, "vertex 2 is", 4, new[] { 0, 1, 3 });
        refused(Status.RepeatedCorner, "triangle 1 has", 4, new[] { 0, 1, 2, 3, 1, 3 });
    }

    static void RawMeshesAreLookedAtMendedAndRefined()
    {
        double[] square = { 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, .5, .5, 0, 9, 9, 9 };
        int[] crack = { 0, 1, 2, 0, 2, 4, 0, 4, 3, 4, 2, 3 };
        var report = Mesh.Look(square, crack, new[] { 1, 0, 0, 0, 0, 2 });
        Expect(report.FlatTriangles.Count == 1 && report.FlatTriangles.First == 1, "flat");
        Expect(report.UnusedVertices.First == 5 && report.PrescribedVertices.Count == 2, "counts");
        Expect(Mesh.Look(square, new[] { 0, 1, 99 }).CornersOutOfRange.Count == 1, "range");
        var clean = Mesh.Clean(square, crack);
        Expect(clean.Triangles.Length == 12 && clean.VertexMap.SequenceEqual(
            new[] { 0, 1, 2, 3, 4, -1 }), "clean");
        var mesh = Mesh.Refine(clean.Vertices, clean.Triangles, 0.1);
        Expect(mesh.LongestEdge == 0.1 && mesh.VertexMap.Length == 0, "refined");
        Expect(mesh.TriangleOrigins.Length == mesh.Triangles.Length / 3 &&
               mesh.VertexOrigins.Length == mesh.Vertices.Length / 3 * 2, "origins");
        Expect(Math.Abs(Mesh.Areas(mesh.Vertices, mesh.Triangles).Sum() - 1) < 1e-12, "areas");
        var sizes = new[] { 0.01, 9, 9, 9, 9 };
        var graded = Mesh.RefineGraded(clean.Vertices, clean.Triangles, 0.1, sizes).Triangles;
        Expect(graded.Length > mesh.Triangles.Length, "graded");
        Throws<ArgumentException>(() => Mesh.RefineGraded(clean.Vertices, clean.Triangles, 0.1,
                                                          new[] { 1.0 }), "sizes");
        var count = Mesh.RefineTo(mesh.Vertices, mesh.Triangles, 9000).Triangles.Length / 3;
        Expect(count > 2000 && count <= 9000, "number");
        Expect(Mesh.Colours(new[] { 0, 2, double.NaN }, 0, 2).SequenceEqual(
            new byte[] { 68, 1, 84, 255, 253, 231, 36, 255, 128, 128, 128, 255 }), "colours");
        Throws<ArgumentException>(() => Mesh.Refine(square, crack, 0), "argument");
        Throws<QuorException>(() => Mesh.Refine(square, new[] { 0, 1, 2 }, 1e-9), "32-bit");
        Throws<QuorException>(() => new Solver(mesh.Vertices, mesh.Triangles,
                                               new int[mesh.Vertices.Length / 3]), "1 of 1 pieces");
        var folder = Path.Combine(Path.GetTempPath(), Path.GetRandomFileName());
        Directory.CreateDirectory(folder);
        try
        {
            var field = Enumerable.Range(0, mesh.Vertices.Length / 3)
                .Select(i => mesh.Vertices[3 * i]).ToArray();
            Mesh.Write(mesh.Vertices, mesh.Triangles, field, Path.Combine(folder, "ä.obj"));
            Expect(File.Exists(Path.Combine(folder, "ä.mtl")), "files");
            Throws<IOException>(() => Mesh.Write(mesh.Vertices, mesh.Triangles, field,
                                                 folder + "/no/x"), "no/x");
        }
        finally
        {
            Directory.Delete(folder, true);
        }
    }

    static void ProgressCancelsAndPassesExceptionsOn()
    {
        var s = BumpySheet(4);
        var last = -1.0;
        using (new Solver(s.Vertices, s.Triangles, s.Tags, done => { last = done; return true; }))
            Expect(last == 1, "progress");
        Throws<OperationCanceledException>(
            () => new Solver(s.Vertices, s.Triangles, s.Tags, done => false), "cancelled");
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
            () => solver.Write(s.Values, "never") })
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

    static void AllLabelsSurviveTheSphere()
    {
        for (var label = -1; label < 65535; label++)
        {
            SphereLabel.Encode(label, out var x, out var y, out var z);
            Expect(SphereLabel.Decode(x, y, z) == label, $"label {label}");
            Expect(SphereLabel.Decode(-x, -y, -z) == label, $"mirrored label {label}");
        }
    }
}
