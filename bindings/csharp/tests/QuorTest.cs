// The binding against plain loops, and against everything that must not reach the library: what all tests
// share, and those of meshes and arguments. SolverTest.cs has the solver's.

using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using Quor;

static class QuorTest
{
    static readonly Random Random = new Random(7);
    static int failures;

    static int Main(string[] arguments)
    {
        var own = new Action[] {
            WeldAgreesWithComparingAllPairs, BadArgumentsAreRefused,
            RawMeshesAreLookedAtMendedAndRefined, AllLabelsSurviveTheSphere };
        var tests = arguments.Contains("without-library") ? new Action[] { AMissingLibraryIsTold }
            : arguments.Contains("other-library") ? new Action[] { AnotherLibraryIsTold }
            : own.Concat(SolverTest.All).Concat(FieldTest.All).ToArray();
        foreach (var test in tests)
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
        Console.WriteLine($"{tests.Length - failures} passed, {failures} failed");
        return failures == 0 ? 0 : 1;
    }

    internal static void Expect(bool holds, string what)
    {
        if (!holds)
            throw new Exception(what);
    }

    internal static void Throws<T>(Action action, string words, int index = -1) where T : Exception
    {
        try
        {
            action();
        }
        catch (T error)
        {
            Expect(error.Message.Contains(words), $"'{words}' is not in '{error.Message}'");
            var found = (error as QuorException)?.Index ?? (int?)error.Data["Index"] ?? -1;
            Expect(index == -1 || index == found, $"index {found}, not {index}, of '{error.Message}'");
            return;
        }
        throw new Exception($"no {typeof(T).Name} with '{words}'");
    }

    internal sealed class Sample
    {
        internal double[] Vertices, Values, Source;
        internal int[] Triangles, Tags;
        internal bool IsPrescribed(int i) => Tags[i] >= 1 && Tags[i] <= 3;
        internal Solver Build() => new Solver(Vertices, Triangles, Tags);
    }

    // A bumpy sheet of side*side vertices with tags of every kind.
    internal static Sample BumpySheet(int side)
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
            Throws<ArgumentException>(() => Mesh.Clean(three, bad), "triangle 0", 0);
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
        Throws<ArgumentException>(() => Mesh.Refine(square, crack, 0), "longestEdge is 0: give");
        Throws<QuorException>(() => Mesh.Refine(square, new[] { 0, 1, 2 }, 1e-9), "32-bit");
        Throws<QuorException>(() => new Solver(mesh.Vertices, mesh.Triangles,
                                               new int[mesh.Vertices.Length / 3]), "1 of 1 connected components", 0);
        Throws<ArgumentException>(() => Mesh.Refine(new[] { 0, 0, 0, 1, double.NaN, 0, 0, 1, 0 },
                                                    new[] { 0, 1, 2 }, 1), "vertices", 1);
        Throws<QuorException>(() => Mesh.Refine(square, new[] { 0, 1, 2, 1, 1, 2 }, 1), "triangle 1", 1);
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

    static void AMissingLibraryIsTold()
    {
        foreach (var use in new Action[] {
            () => Mesh.Weld(new double[9], new[] { 0, 1, 2 }, 1), () => BumpySheet(3).Build(),
            () => SphereLabel.Encode(1, out _, out _, out _) })
        {
            Throws<DllNotFoundException>(use, "quorkit is not found: put");
        }
    }

    static void AnotherLibraryIsTold()
    {
        Throws<EntryPointNotFoundException>(() => Mesh.Weld(new double[9], new[] { 0, 1, 2 }, 1), "is older");
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
