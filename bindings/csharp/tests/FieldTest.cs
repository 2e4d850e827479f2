// Regions, faces, fields within a tolerance, and what is computed from a field.

using System;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using Quor;
using static QuorTest;

static class FieldTest
{
    internal static readonly Action[] All = {
        WeldKeepsTrackOfTriangles, RegionsThatTouchAreFound, FacesOfAnAngle, FlipsKeepToTheirFace, CleaningCountsWhatIsLeft,
        FlowAndGradientsOfASlope, ManyFieldsAreTheSingleOnes, SolvesWithinATolerance,
        SaysWhyThereIsNoField, LibraryIsNotLookedForInTheCurrentDirectory };

    // A plate of 8 x 4 cells of size 1.
    static Sample Plate()
    {
        var plate = new Sample { Vertices = new double[3 * 45], Triangles = new int[3 * 64] };
        for (var v = 0; v < 45; v++)
        {
            plate.Vertices[3 * v] = v % 9;
            plate.Vertices[3 * v + 1] = v / 9;
        }
        for (var cell = 0; cell < 32; cell++)
        {
            var a = cell / 8 * 9 + cell % 8;
            new[] { a, a + 1, a + 10, a, a + 10, a + 9 }.CopyTo(plate.Triangles, 6 * cell);
        }
        return plate;
    }

    static double[] Every(int count, Func<int, double> value) =>
        Enumerable.Range(0, count).Select(value).ToArray();

    static void WeldKeepsTrackOfTriangles()
    {
        double[] points = { 0, 0, 0, 0, 0, .1, 1, 0, 0, 0, 1, 0 };
        int[] triangles = { 0, 1, 2, 0, 2, 3, 1, 2, 3 };  // the first collapses, the last repeats
        var mesh = Mesh.WeldWithOrigins(points, triangles, .2);
        Expect(mesh.TriangleOrigins.SequenceEqual(new[] { 1 }), "origins");
        var plain = Mesh.Weld(points, triangles, .2);
        Expect(plain.Triangles.SequenceEqual(mesh.Triangles) && plain.TriangleOrigins == null, "plain");
    }

    static void RegionsThatTouchAreFound()
    {
        var plate = Plate();
        var regions = Enumerable.Range(0, 45).Select(v => v % 9 < 2 ? v % 9 : v == 22 ? 7 : -1).ToArray();
        var report = Mesh.LookAtRegions(plate.Vertices, plate.Triangles, regions);
        Expect(report.TouchingRegions.Count == 10 && report.TouchingRegions.First == 0, "touching");
        Expect(report.IsolatedPrescribed.Count == 1 && report.IsolatedPrescribed.First == 22, "isolated");
        report = Mesh.LookAtRegions(plate.Vertices, plate.Triangles, regions, new double[45]);
        Expect(report.TouchingRegions.Count == 0, "equal values");
        Throws<ArgumentException>(() => Mesh.LookAtRegions(plate.Vertices, plate.Triangles, new int[2]),
                                  "regions");
        Throws<ArgumentException>(() => Mesh.LookAtRegions(plate.Vertices, plate.Triangles, regions,
                                                           new double[2]), "values");
    }

    static void FacesOfAnAngle()
    {
        double[] vertices = { 0, 0, 0, 4, 0, 0, 4, 1, 0, 0, 1, 0, 0, 1, 2, 4, 1, 2 };
        int[] triangles = { 0, 1, 2, 0, 2, 3, 3, 2, 5, 3, 5, 4 };
        var part = Mesh.Faces(vertices, triangles);
        Expect(part.FaceCount == 2 && part.Faces.SequenceEqual(new[] { 0, 0, 1, 1 }), "faces");
        Expect(part.ChainCount == 7 && part.Chains.Length == 7 && part.Edges.Length == 14, "edges");
        Expect(part.Edges.Take(2).SequenceEqual(new[] { 0, 1 }), "first edge");
        Throws<ArgumentException>(() => Mesh.Faces(vertices, triangles, 90), "angle");
    }

    static void FlipsKeepToTheirFace()
    {
        double[] kite = { 0, 0, 0, 9, 0, 0, 5, 1, 0, 5, -1, 0 };
        int[] triangles = { 0, 1, 2, 1, 0, 3 };
        Func<DerivedMesh, bool> isFlipped = mesh => mesh.Triangles.Take(3).Except(new[] { 0, 1 }).Count() == 2;
        var flipped = Mesh.Flip(kite, triangles);
        Expect(isFlipped(flipped) && flipped.Vertices.SequenceEqual(kite), "flipped");
        Expect(flipped.VertexOrigins.Length == 8 && flipped.DegenerateCount == 0, "origins");
        Expect(!isFlipped(Mesh.Flip(kite, triangles, new[] { 7, 8 })), "two faces");
        Throws<ArgumentException>(() => Mesh.Flip(kite, triangles, new[] { 1 }), "faces");
    }

    static void CleaningCountsWhatIsLeft()
    {
        // Three triangles at one edge, one of them without height: dropping it would open a crack.
        double[] vertices = { 4, 1e-6, 0, 3, 0, 0, 3, 1e-6, 0, 4, 0, 0, 4, 2e-6, 0 };
        var clean = Mesh.Clean(vertices, new[] { 0, 4, 3, 3, 4, 1, 4, 3, 2, 2, 3, 1 });
        Expect(clean.DegenerateCount == 1, "count");
        Expect(Mesh.Look(clean.Vertices, clean.Triangles).FlatTriangles.Count == 1, "flat");
    }

    static void FlowAndGradientsOfASlope()
    {
        var plate = Plate();
        var field = Every(45, v => 5.0 * (v % 9));
        var regions = Enumerable.Range(0, 45).Select(v => v % 9 == 0 ? 0 : v % 9 == 8 ? 2 : -1).ToArray();
        var flows = Mesh.Flow(plate.Vertices, plate.Triangles, field, regions, 4);
        Expect(flows.Zip(new[] { -20.0, 0, 20, 0 }, (a, b) => Math.Abs(a - b)).Max() < 1e-12, "flows");
        var gradients = Mesh.Gradients(plate.Vertices, plate.Triangles, field);
        Expect(gradients.Length == 3 * 64, "one per triangle");
        Expect(gradients.Where((g, k) => Math.Abs(g - (k % 3 == 0 ? 5 : 0)) > 1e-12).Count() == 0, "slope");
        Throws<ArgumentException>(() => Mesh.Flow(plate.Vertices, plate.Triangles, field, regions, 2),
                                  "regions", 8);
        Throws<ArgumentException>(() => Mesh.Flow(plate.Vertices, plate.Triangles, field, regions, -1),
                                  "regionCount");
        Throws<ArgumentException>(() => Mesh.Flow(plate.Vertices, plate.Triangles, field, new int[3], 1),
                                  "regions");
        Throws<ArgumentException>(() => Mesh.Gradients(plate.Vertices, plate.Triangles, new double[3]),
                                  "field");
    }

    static void ManyFieldsAreTheSingleOnes()
    {
        var s = BumpySheet(8);
        var values = Every(192, k => Math.Sin(k));
        var sources = Every(192, k => Math.Cos(k));
        using (var solver = s.Build())
        {
            var plain = solver.SolveMany(values);
            var fields = solver.SolveMany(values, sources);
            for (var k = 0; k < 3; k++)
            {
                Func<double[], double[]> column = all => all.Skip(64 * k).Take(64).ToArray();
                Expect(column(plain).SequenceEqual(solver.Solve(column(values))), $"column {k}");
                Expect(column(fields).SequenceEqual(
                    solver.SolveWithSource(column(values), column(sources))), $"with a source {k}");
            }
            Expect(solver.SolveMany(values, sources, values) == values && values.SequenceEqual(fields),
                   "in place");
            Expect(solver.SolveMany(new double[0]).Length == 0, "no column");
            Throws<ArgumentException>(() => solver.SolveMany(new double[65]), "no multiple of the 64");
            Throws<ArgumentException>(() => solver.SolveMany(values, new double[64]), "source");
            Throws<ArgumentException>(() => solver.SolveMany(values, null, new double[64]), "output");
        }
    }

    static void SolvesWithinATolerance()
    {
        var plate = Plate();
        var last = -1.0;
        var slope = new Problem
        {
            Vertices = plate.Vertices, Triangles = plate.Triangles, Tolerance = 0.001, IsShareOfSpan = true,
            VertexValues = Every(45, v => v % 9 == 0 ? 0 : v % 9 == 8 ? 40 : double.NaN)
        };
        var solution = Mesh.SolveWithin(slope, done => { last = done; return false; });
        Expect(last == 1 && solution.IsReached && solution.Rounds >= 1, "done");
        Expect(Math.Abs(solution.Tolerance - 0.04) < 1e-12 && solution.Error <= 0.04, "error");
        Expect(solution.Field.Where((u, v) => Math.Abs(u - 5 * solution.Vertices[3 * v]) > 1e-9).Count() == 0,
               "field");
        Expect(solution.TriangleOrigins.Length == solution.Triangles.Length / 3 &&
               solution.VertexOrigins.Length == 2 * solution.Field.Length, "origins");

        // u'' = -1, u = 3 below, u' = 0 above, at 4; and a limit.
        var warm = new Problem
        {
            Vertices = plate.Vertices, Triangles = plate.Triangles, Tolerance = 0.1, TriangleLimit = 5000,
            Edges = Enumerable.Range(0, 16).Select(k => (k + 1) / 2).ToArray(), EdgeValues = Every(8, k => 3),
            Sources = Every(64, t => -1), Faces = new int[64]
        };
        solution = Mesh.SolveWithin(warm);
        Func<int, double> exact = v => 3 + 4 * solution.Vertices[3 * v + 1] -
                                       Math.Pow(solution.Vertices[3 * v + 1], 2) / 2;
        Expect(solution.Field.Where((u, v) => Math.Abs(u - exact(v)) > 0.1).Count() == 0, "parabola");
        Expect(solution.Field.Max() > 10.9, "its height");
        var jump = new Problem
        {
            Vertices = plate.Vertices, Triangles = plate.Triangles, Tolerance = 1,
            TriangleValues = Every(64, t => t == 0 ? 1 : t == 2 ? 2 : double.NaN)
        };
        solution = Mesh.SolveWithin(jump);
        Expect(solution.Jumps.SequenceEqual(new[] { 1 }) && solution.JumpRadius > 0, "jumps");
    }

    static void SaysWhyThereIsNoField()
    {
        var plate = Plate();
        Func<Action<Problem>, Action> solve = change => () =>
        {
            var problem = new Problem { Vertices = plate.Vertices, Triangles = plate.Triangles, Tolerance = 1,
                                        VertexValues = Every(45, v => v) };
            change(problem);
            Mesh.SolveWithin(problem);
        };
        Throws<QuorException>(solve(p => p.VertexValues = Every(45, v => v == 22 ? 1 : double.NaN)),
                              "vertex 22 has a value, but no edge", 22);
        Throws<QuorException>(solve(p => p.VertexValues = null), "component of vertex 0", 0);
        Throws<ArgumentException>(solve(p => p.Tolerance = 0), "tolerance is 0");
        Throws<ArgumentException>(solve(p =>
        {
            p.Edges = new[] { 0, 1, 0, 30 };
            p.EdgeValues = new double[2];
        }), "0 and 30", 1);
        Throws<ArgumentException>(solve(p => p.Edges = new[] { 0, 1 }), "Edges");
        Throws<ArgumentException>(solve(p => p.EdgeValues = new double[1]), "Edges");
        Throws<ArgumentException>(solve(p => p.TriangleValues = new double[1]), "TriangleValues");
        Throws<ArgumentException>(solve(p => p.VertexValues = new double[1]), "VertexValues");
        Throws<ArgumentException>(solve(p => p.Sources = new double[1]), "Sources");
        Throws<ArgumentException>(solve(p => p.Faces = new int[1]), "Faces");
        Throws<ArgumentException>(solve(p => p.Vertices = null), "Vertices");
        Throws<ArgumentException>(solve(p => p.Triangles = new[] { 0, 1, 45 }), "Triangles", 0);
        Throws<ArgumentNullException>(() => Mesh.SolveWithin(null), "problem");
        var good = new Problem { Vertices = plate.Vertices, Triangles = plate.Triangles, Tolerance = 1,
                                 VertexValues = Every(45, v => v) };
        Throws<OperationCanceledException>(() => Mesh.SolveWithin(good, done => true), "");
        Throws<InvalidTimeZoneException>(
            () => Mesh.SolveWithin(good, done => throw new InvalidTimeZoneException("mine")), "mine");
    }

    static void LibraryIsNotLookedForInTheCurrentDirectory()
    {
        // Without these flags Windows also looks in the current directory and along PATH.
        const DllImportSearchPath safe = DllImportSearchPath.AssemblyDirectory
            | DllImportSearchPath.SafeDirectories;
        var imports = typeof(Mesh).Assembly.GetTypes()
            .SelectMany(type => type.GetMethods(BindingFlags.Static | BindingFlags.NonPublic | BindingFlags.Public))
            .Where(method => method.GetCustomAttribute<DllImportAttribute>() != null).ToList();
        Expect(imports.Count > 20, "no imports");
        foreach (var import in imports)
            Expect(import.GetCustomAttribute<DefaultDllImportSearchPathsAttribute>()?.Paths == safe, import.Name);
    }
}
