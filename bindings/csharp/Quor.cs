// Numeric geometry on triangle meshes from C#: weld, harmonic fields, coloured export.
//
// A thin layer over the eleven C functions of the shared library quor; their manual, with the exact
// rules, is the header quor.h. Arrays are flat: coordinates x y z x y z ... in any unit of length,
// triangles a b c a b c ... with 0-based indices, tags and values one entry per vertex. The library
// reads and writes them in place, pinned for the duration of a call.
//
// Nulls, lengths and indices are checked before a call. When memory runs out, or a factor would
// need more than 2,147,483,647 entries, a C++ exception leaves the library: only .NET on Windows
// makes an SEHException of it, elsewhere the process ends.
//
// C# 7 without unsafe code, for .NET Framework 4.6, .NET and mono; the tests run with mono.

using System;
using System.IO;
using System.Runtime.InteropServices;
using Microsoft.Win32.SafeHandles;

namespace Quor
{
    /// <summary>Why a solver could not be built.</summary>
    public enum Status : uint
    {
        /// <summary>There is no vertex.</summary>
        NoVertex = 1,
        /// <summary>A triangle has two equal corner indices.</summary>
        RepeatedCorner = 23,
        /// <summary>There is no triangle, or a vertex that none uses.</summary>
        UnusedVertex = 24
    }

    /// <summary>What became of a solver's factorization.</summary>
    public enum Factorization : uint
    {
        /// <summary>The solver is ready.</summary>
        Success = 0,
        /// <summary>A pivot was exactly zero: solves give 0 at the free vertices.</summary>
        NumericalIssue = 1,
        /// <summary>Does not occur.</summary>
        NoConvergence = 2,
        /// <summary>Does not occur.</summary>
        InvalidInput = 3
    }

    /// <summary>The library refused a mesh.</summary>
    public sealed class QuorException : Exception
    {
        /// <summary>The reason, as the library's own number.</summary>
        public Status Status { get; }

        internal QuorException(Status status, string message) : base(message)
        {
            Status = status;
        }
    }

    /// <summary>A welded mesh: what <see cref="Mesh.Weld"/> returns.</summary>
    public sealed class WeldedMesh
    {
        /// <summary>Three coordinates per vertex.</summary>
        public double[] Vertices { get; }
        /// <summary>Three vertex indices per kept triangle.</summary>
        public int[] Triangles { get; }
        /// <summary>For each point the vertex that it became.</summary>
        public int[] PointMap { get; }

        internal WeldedMesh(double[] vertices, int[] triangles, int[] pointMap)
        {
            Vertices = vertices;
            Triangles = triangles;
            PointMap = pointMap;
        }
    }

    /// <summary>Operations on meshes that need no solver.</summary>
    public static class Mesh
    {
        /// <summary>
        /// Welds points closer than a tolerance into one vertex and drops collapsed and repeated
        /// triangles; chains of close points become one vertex too. A vertex has the coordinates of
        /// its point of lowest index; vertices and triangles keep the order of the input.
        /// </summary>
        /// <param name="points">Three coordinates per point.</param>
        /// <param name="triangles">Three point indices per triangle.</param>
        /// <param name="tolerance">Absolute distance in the unit of the coordinates, 0 or more, may
        /// be infinite; points at exactly this distance stay apart, so 0 welds nothing.</param>
        /// <returns>New arrays of exactly the length needed.</returns>
        /// <exception cref="ArgumentNullException">An array is null.</exception>
        /// <exception cref="ArgumentException">A length is no multiple of three.</exception>
        /// <exception cref="ArgumentOutOfRangeException">The tolerance is negative or NaN, or a
        /// triangle has an index that no point has.</exception>
        public static WeldedMesh Weld(double[] points, int[] triangles, double tolerance)
        {
            var pointCount = Check.Triples(points, nameof(points));
            var triangleCount = Check.Triangles(triangles, pointCount);
            var vertices = new double[points.Length];
            var kept = new int[triangles.Length];
            var pointMap = new int[pointCount];
            if (Native.quorWeld(pointCount, points, triangleCount, triangles, vertices, kept,
                                pointMap, out var n, out var m, tolerance) != 0)
                throw new ArgumentOutOfRangeException(nameof(tolerance), tolerance,
                                                      "is not 0 or more");
            Array.Resize(ref vertices, 3 * n);
            Array.Resize(ref kept, 3 * m);
            return new WeldedMesh(vertices, kept, pointMap);
        }
    }

    /// <summary>
    /// The cotangent Laplacian of a mesh, factorized once for any number of solves. Values and
    /// fields are in the caller's order of vertices; only <see cref="GetVertices"/>,
    /// <see cref="GetTriangles"/> and <see cref="Write"/> speak solver order, to which
    /// <see cref="ToSolverOrder"/> brings a field: prescribed vertices first, then the free ones in
    /// reverse. Any number of threads may use one solver. The memory goes with
    /// <see cref="Dispose"/>, after calls still under way, or with the collection of the object.
    /// Every use after that throws <see cref="ObjectDisposedException"/>.
    /// </summary>
    public sealed class Solver : IDisposable
    {
        // Beyond this the library throws; the bounds for vertices exceed what an array can hold.
        const int TriangleLimit = 238609294;

        readonly SolverHandle handle;
        readonly int[] order;
        readonly int triangleCount;

        /// <summary>Builds and factorizes. The arrays are copied.</summary>
        /// <param name="vertices">Three coordinates per vertex, at least one vertex.</param>
        /// <param name="triangles">Three vertex indices per triangle; every vertex is used. Flat
        /// triangles, and free vertices that no edges connect to a prescribed one, are not refused:
        /// look at <see cref="Info"/> before solving.</param>
        /// <param name="tags">One per vertex: 1, 2, 3 prescribed, all others free.</param>
        /// <exception cref="QuorException">The mesh is refused, see
        /// <see cref="Status"/>.</exception>
        /// <exception cref="ArgumentNullException">An array is null.</exception>
        /// <exception cref="ArgumentException">An array has the wrong length.</exception>
        /// <exception cref="ArgumentOutOfRangeException">A triangle has an index that no vertex
        /// has.</exception>
        public Solver(double[] vertices, int[] triangles, int[] tags)
        {
            VertexCount = Check.Triples(vertices, nameof(vertices));
            triangleCount = Check.Triangles(triangles, VertexCount);
            if (triangleCount > TriangleLimit)
                throw new ArgumentException("more than 238,609,294 triangles", nameof(triangles));
            Check.Length(tags, VertexCount, nameof(tags));
            Native.quorctorTagged(VertexCount, vertices, triangleCount, triangles, tags,
                                  out var prescribed, out var status, out handle);
            if (status != 0)
            {
                handle.Dispose();
                throw new QuorException((Status)status, Reason(status, triangles));
            }
            PrescribedCount = (int)prescribed;
            order = new int[VertexCount];
            for (int i = 0, before = 0; i < VertexCount; i++)
            {
                if (tags[i] >= 1 && tags[i] <= 3)
                    order[before++] = i;
                else
                    order[before + VertexCount - 1 - i] = i;
            }
        }

        /// <summary>The number of vertices.</summary>
        public int VertexCount { get; }

        /// <summary>The number of prescribed vertices; they come first in solver order.</summary>
        public int PrescribedCount { get; }

        /// <summary>Whether the factorization succeeded.</summary>
        public Factorization Info => (Factorization)Native.quorinfo(handle);

        /// <summary>
        /// Computes the field that has the given values at the prescribed vertices and is harmonic
        /// at the free ones.
        /// </summary>
        /// <param name="prescribed">One value per vertex, of which those at prescribed vertices are
        /// read.</param>
        /// <param name="output">Room for the field, one entry per vertex; may be the array
        /// <paramref name="prescribed"/>; a new array if null.</param>
        /// <returns>The field in the caller's order: <paramref name="output"/> if given.</returns>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length.
        /// </exception>
        public double[] Solve(double[] prescribed, double[] output = null)
        {
            Check.Length(prescribed, VertexCount, nameof(prescribed));
            output = Check.Length(output ?? new double[VertexCount], VertexCount, nameof(output));
            Native.quorsolveTagged(handle, prescribed, output, out _);
            return output;
        }

        /// <summary>
        /// As <see cref="Solve"/>, with a source: at the free vertices the field x solves K x = -s
        /// with the stiffness matrix K. A positive source value lowers the field.
        /// </summary>
        /// <param name="prescribed">As for <see cref="Solve"/>.</param>
        /// <param name="source">One value s per vertex, of which those at free vertices are read.
        /// Not weighted by area.</param>
        /// <param name="output">As for <see cref="Solve"/>; may also be the array
        /// <paramref name="source"/>.</param>
        /// <returns>As <see cref="Solve"/>.</returns>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length.
        /// </exception>
        public double[] SolveWithSource(double[] prescribed, double[] source,
                                        double[] output = null)
        {
            Check.Length(prescribed, VertexCount, nameof(prescribed));
            Check.Length(source, VertexCount, nameof(source));
            output = Check.Length(output ?? new double[VertexCount], VertexCount, nameof(output));
            Native.quorsolvePTagged(handle, prescribed, source, output, out _);
            return output;
        }

        /// <summary>A copy of the vertices in solver order, three coordinates each.</summary>
        public double[] GetVertices()
        {
            var vertices = new double[3 * VertexCount];
            WhileAlive(() =>
            {
                Native.quoverts(handle, out var address);
                Marshal.Copy(address, vertices, 0, vertices.Length);
            });
            return vertices;
        }

        /// <summary>A copy of the triangles, three indices in solver order each. Triangles and
        /// corners are in the caller's order.</summary>
        public int[] GetTriangles()
        {
            var triangles = new int[3 * triangleCount];
            WhileAlive(() =>
            {
                Native.quotris(handle, out var address);
                Marshal.Copy(address, triangles, 0, triangles.Length);
            });
            return triangles;
        }

        /// <summary>Brings a field from the caller's order to solver order: a new array.</summary>
        /// <param name="field">One value per vertex.</param>
        /// <exception cref="ArgumentException">The array is missing or has the wrong length.
        /// </exception>
        public double[] ToSolverOrder(double[] field)
        {
            Check.Length(field, VertexCount, nameof(field));
            return Array.ConvertAll(order, i => field[i]);
        }

        /// <summary>
        /// Writes the mesh and a field as two files, <paramref name="baseName"/> + ".obj" and
        /// ".mtl", which show the field as colours: the smallest value at the right end of the
        /// image viridis.PNG, the largest at the left end. Put that image beside the files. Numbers
        /// have six significant digits; if all values are equal every texture coordinate is NaN. A
        /// disk that runs full is not noticed.
        /// </summary>
        /// <param name="field">One value per vertex in SOLVER order, see
        /// <see cref="ToSolverOrder"/>.</param>
        /// <param name="baseName">Path without extension. The OBJ names its material by the same
        /// text, so a viewer finds it only when there is no directory in it: set the current
        /// directory first, or move both files afterwards.</param>
        /// <exception cref="ArgumentException">The field is missing or has the wrong length, or the
        /// name is missing or cannot be one.</exception>
        /// <exception cref="IOException">A file cannot be opened.</exception>
        /// <exception cref="UnauthorizedAccessException">A file cannot be opened.</exception>
        public void Write(double[] field, string baseName)
        {
            Check.Length(field, VertexCount, nameof(field));
            if (baseName == null)
                throw new ArgumentNullException(nameof(baseName));
            WhileAlive(() =>
            {
                // The library only prints a line when it cannot open one.
                foreach (var extension in new[] { ".obj", ".mtl" })
                    new FileStream(baseName + extension, FileMode.Append).Dispose();
                Native.wobj(handle, field, baseName);
            });
        }

        /// <summary>Gives the memory back, at once or after the last call under way.</summary>
        public void Dispose() => handle.Dispose();

        // Keeps the handle through several calls, whatever other threads dispose.
        void WhileAlive(Action action)
        {
            var held = false;
            try
            {
                handle.DangerousAddRef(ref held);
                action();
            }
            finally
            {
                if (held)
                    handle.DangerousRelease();
            }
        }

        string Reason(uint status, int[] triangles)
        {
            switch ((Status)status)
            {
                case Status.NoVertex:
                    return "there are no vertices";
                case Status.RepeatedCorner:
                    for (var t = 0; ; t += 3)
                    {
                        int a = triangles[t], b = triangles[t + 1], c = triangles[t + 2];
                        if (a == b || b == c || c == a)
                            return $"triangle {t / 3} has two equal indices";
                    }
                case Status.UnusedVertex:
                    var used = new bool[VertexCount];
                    foreach (var index in triangles)
                        used[index] = true;
                    return $"vertex {Array.IndexOf(used, false)} is used by no triangle";
                default:
                    return $"the library answered {status}";
            }
        }
    }

    /// <summary>Labels carried in directions: the integers -1 .. 65534 as unit vectors.</summary>
    public static class SphereLabel
    {
        /// <summary>Packs a label into a unit vector around +z.</summary>
        /// <exception cref="ArgumentOutOfRangeException">The label is not in -1 ..
        /// 65534.</exception>
        public static void Encode(int label, out float x, out float y, out float z)
        {
            if (Native.encode_integer_to_sphere(label, out x, out y, out z) != 0)
                throw new ArgumentOutOfRangeException(nameof(label), label,
                                                      "is not in -1 .. 65534");
        }

        /// <summary>Unpacks the label from a vector made by <see cref="Encode"/>, or from its
        /// mirror image. Any other vector gives some label.</summary>
        public static int Decode(float x, float y, float z) =>
            Native.decode_integer_from_sphere(x, y, z);
    }

    /// <summary>Owns a handle of the library. The marshaller keeps it alive during every call that
    /// takes it, so neither the collector nor another thread can free it under one.</summary>
    sealed class SolverHandle : SafeHandleZeroOrMinusOneIsInvalid
    {
        public SolverHandle() : base(true) { }

        protected override bool ReleaseHandle()
        {
            Native.quorfree(handle);
            return true;
        }
    }

    static class Check
    {
        // The length must be this; returns the array.
        internal static T[] Length<T>(T[] array, int length, string name)
        {
            if (array == null)
                throw new ArgumentNullException(name);
            if (array.Length != length)
                throw new ArgumentException($"has {array.Length} entries, not {length}", name);
            return array;
        }

        // The length must be a multiple of three; returns how many threes.
        internal static int Triples<T>(T[] array, string name)
        {
            if (array == null)
                throw new ArgumentNullException(name);
            if (array.Length % 3 != 0)
                throw new ArgumentException($"has {array.Length} entries, no multiple of 3", name);
            return array.Length / 3;
        }

        internal static int Triangles(int[] triangles, int vertexCount)
        {
            var count = Triples(triangles, nameof(triangles));
            foreach (var index in triangles)
            {
                if ((uint)index >= (uint)vertexCount)
                    throw new ArgumentOutOfRangeException(nameof(triangles), index,
                                                          $"is not in 0 .. {vertexCount - 1}");
            }
            return count;
        }
    }

    static class Native
    {
        const string Library = "quor";
        const CallingConvention C = CallingConvention.Cdecl;

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorWeld(
            int pointCount, [In] double[] points, int triangleCount, [In] int[] triangles,
            [Out] double[] outVertices, [Out] int[] outTriangles, [Out] int[] outPointMap,
            out int outVertexCount, out int outTriangleCount, double tolerance);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern uint quorctorTagged(
            int n, [In] double[] vertices, int m, [In] int[] triangles, [In] int[] tags,
            out uint prescribedOut, out uint statusOut, out SolverHandle handleOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern uint quorinfo(SolverHandle handle);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern void quorsolveTagged(
            SolverHandle handle, [In] double[] prescribedValues, [Out] double[] fieldOut,
            out uint statusOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern void quorsolvePTagged(
            SolverHandle handle, [In] double[] prescribedValues, [In] double[] sourceValues,
            [Out] double[] fieldOut, out uint statusOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern ulong quoverts(SolverHandle handle, out IntPtr verticesOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern ulong quotris(SolverHandle handle, out IntPtr trianglesOut);

        // LPStr is what the library opens files by: UTF-8, on Windows the ANSI code page.
        [DllImport(Library, CallingConvention = C, ExactSpelling = true, BestFitMapping = false,
                   ThrowOnUnmappableChar = true)]
        internal static extern void wobj(SolverHandle handle, [In] double[] field,
                                         [MarshalAs(UnmanagedType.LPStr)] string baseName);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern void quorfree(IntPtr handle);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int encode_integer_to_sphere(int value, out float xOut,
                                                            out float yOut, out float zOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int decode_integer_from_sphere(float x, float y, float z);
    }
}
