// Numeric geometry on triangle meshes from C#: weld, harmonic fields, coloured export.
//
// A thin layer over the C functions of the shared library quorkit; their manuals, with the exact rules,
// are the headers quorkit.h and quor.h. Arrays are flat: coordinates x y z x y z ... in any unit of
// length, triangles a b c a b c ... with 0-based indices, tags and values one entry per vertex. The
// library reads and writes them in place, pinned for the duration of a call.
//
// Nulls, lengths and indices are checked before a call. Nothing is thrown through .NET: what happens
// inside the library comes back as an exception of .NET's own, OutOfMemoryException when memory runs
// out, IOException when a file cannot be written, the disk being full included.
//
// C# 7 without unsafe code, for .NET Framework 4.6, .NET and mono; the tests run with mono.

using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;
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
        UnusedVertex = 24,
        /// <summary>A piece of the mesh has no prescribed vertex: nothing says what its field
        /// is.</summary>
        UnprescribedPiece = 100,
        /// <summary>The result has no place in 32-bit indices.</summary>
        TooLarge = 101,
        /// <summary>A fault of the library.</summary>
        Internal = 102
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

    /// <summary>How often something was found, and the index of the first one, -1 if there is
    /// none.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct Finding
    {
        /// <summary>How often.</summary>
        public int Count;
        /// <summary>The first one.</summary>
        public int First;
    }

    /// <summary>What is wrong with a mesh: what <see cref="Mesh.Look"/> returns. See quorkitCheck in
    /// quorkit.h.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct MeshReport
    {
        /// <summary>The longest edge of the sound triangles.</summary>
        public double LongestEdge;
        /// <summary>The sum of their areas.</summary>
        public double Area;
        /// <summary>The diagonal of the box around all used vertices.</summary>
        public double Diagonal;
        /// <summary>Triangles with an index that no vertex has.</summary>
        public Finding CornersOutOfRange;
        /// <summary>Triangles with two equal indices.</summary>
        public Finding RepeatedCorners;
        /// <summary>Vertices with a coordinate that is not finite.</summary>
        public Finding NotFinite;
        /// <summary>Triangles of no height.</summary>
        public Finding FlatTriangles;
        /// <summary>Triangles of little height.</summary>
        public Finding Needles;
        /// <summary>Vertices of no triangle.</summary>
        public Finding UnusedVertices;
        /// <summary>Vertices tagged 1, 2 or 3.</summary>
        public Finding PrescribedVertices;
        /// <summary>Parts that share no vertex, each by its first one.</summary>
        public Finding Pieces;
        /// <summary>Those without a prescribed vertex.</summary>
        public Finding UnprescribedPieces;
    }

    /// <summary>A mesh that the library made of another: what <see cref="Mesh.Clean"/>,
    /// <see cref="Mesh.Refine"/> and <see cref="Mesh.RefineTo"/> return.</summary>
    public sealed class DerivedMesh
    {
        /// <summary>Three coordinates per vertex. A refined mesh begins with those of its
        /// input.</summary>
        public double[] Vertices { get; internal set; }
        /// <summary>Three vertex indices per triangle.</summary>
        public int[] Triangles { get; internal set; }
        /// <summary>For each triangle the input triangle that it is a part of.</summary>
        public int[] TriangleOrigins { get; internal set; }
        /// <summary>Two per vertex. Refined: the vertices whose midpoint it is, or twice itself. Cleaned:
        /// twice the input vertex that it was.</summary>
        public int[] VertexOrigins { get; internal set; }
        /// <summary>Cleaned: what each input vertex became, -1 if it was dropped. Refined:
        /// empty.</summary>
        public int[] VertexMap { get; internal set; }
        /// <summary>The length it was refined to.</summary>
        public double LongestEdge { get; internal set; }
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
            if (!(tolerance >= 0))
                throw new ArgumentOutOfRangeException(nameof(tolerance), tolerance,
                                                      "is not 0 or more");
            Native.Require(Native.quorkitWeld(pointCount, points, triangleCount, triangles, vertices,
                                              kept, pointMap, out var n, out var m, tolerance));
            Array.Resize(ref vertices, 3 * n);
            Array.Resize(ref kept, 3 * m);
            return new WeldedMesh(vertices, kept, pointMap);
        }

        /// <summary>Looks what is wrong with a mesh, and with its tags if there are any. Indices that no
        /// vertex has and coordinates that are not finite are found, not refused.</summary>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length.
        /// </exception>
        public static MeshReport Look(double[] vertices, int[] triangles, int[] tags = null)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triples(triangles, nameof(triangles));
            if (tags != null)
                Check.Length(tags, n, nameof(tags));
            Native.Require(Native.quorkitCheck(n, vertices, m, triangles, tags, out var report));
            return report;
        }

        /// <summary>Drops flat triangles without opening cracks, and vertices that no triangle
        /// uses.</summary>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length, an index is
        /// out of range, a coordinate is not finite.</exception>
        public static DerivedMesh Clean(double[] vertices, int[] triangles)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            return Derived(Native.quorkitClean(n, vertices, m, triangles, out var mesh), mesh);
        }

        /// <summary>Splits edges at their midpoints until none is longer than a length. A thirty-second
        /// part of the diagonal is one to begin with.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Clean"/>; equal corners; a length that is
        /// not above 0.</exception>
        /// <exception cref="QuorException">There would be more than 238,609,294 triangles.</exception>
        public static DerivedMesh Refine(double[] vertices, int[] triangles, double longestEdge)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            return Derived(Native.quorkitRefine(n, vertices, m, triangles, longestEdge, out var mesh),
                           mesh);
        }

        /// <summary>Refines with shorter edges near some vertices: none at vertex v is longer than
        /// sizes[v], and from there they grow with the distance.</summary>
        /// <remarks>One size per vertex, infinity where longestEdge will do.</remarks>
        /// <exception cref="ArgumentException">As for <see cref="Refine"/>; a size that is not above 0;
        /// an array of the wrong length.</exception>
        public static DerivedMesh RefineGraded(double[] vertices, int[] triangles, double longestEdge,
                                               double[] sizes)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            Check.Length(sizes, n, nameof(sizes));
            return Derived(Native.quorkitRefineGraded(n, vertices, m, triangles, longestEdge, sizes,
                                                      out var mesh), mesh);
        }

        /// <summary>Refines to about so many triangles, never more unless there are already.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Refine"/>; a number outside 1 ..
        /// 238,609,294.</exception>
        public static DerivedMesh RefineTo(double[] vertices, int[] triangles, int triangleCount)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            return Derived(Native.quorkitRefineTo(n, vertices, m, triangles, triangleCount,
                                                  out var mesh), mesh);
        }

        /// <summary>A third of the areas around each vertex, to multiply densities with.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Clean"/>.</exception>
        public static double[] Areas(double[] vertices, int[] triangles)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            var areas = new double[n];
            Native.Require(Native.quorkitAreas(n, vertices, m, triangles, areas));
            return areas;
        }

        /// <summary>A field as red, green, blue and alpha bytes, from dark violet at low to yellow at
        /// high; NaN is grey.</summary>
        /// <exception cref="ArgumentException">The field is missing, an end is not finite.</exception>
        public static byte[] Colours(double[] field, double low, double high)
        {
            if (field == null)
                throw new ArgumentNullException(nameof(field));
            var rgba = new byte[4 * field.Length];
            Native.Require(Native.quorkitColours(field.Length, field, low, high, rgba));
            return rgba;
        }

        /// <summary>Writes a mesh and a field as an OBJ file and its material, which viewers show as
        /// colours: the largest value yellow, the smallest violet.</summary>
        /// <param name="vertices">Three finite coordinates per vertex.</param>
        /// <param name="triangles">Three indices per triangle.</param>
        /// <param name="field">One finite value per vertex.</param>
        /// <param name="path">With or without directories and ".obj".</param>
        /// <param name="ramp">Path of the image viridis.PNG, to be copied beside the files; null: no
        /// copy.</param>
        /// <param name="margin">How far the ends of the field stay away from those of the ramp, as a part
        /// of its range: viewers that repeat textures would mix the ends.</param>
        /// <exception cref="ArgumentException">An array or the path is missing or makes no sense.
        /// </exception>
        /// <exception cref="IOException">A file cannot be written whole; what was there before is as it
        /// was.</exception>
        public static void Write(double[] vertices, int[] triangles, double[] field, string path,
                                 string ramp = null, double margin = 0.001)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            Check.Length(field, n, nameof(field));
            Native.Require(Native.quorkitWrite(n, vertices, m, triangles, field,
                                               Native.Utf8(path, nameof(path)),
                                               ramp == null ? null : Native.Utf8(ramp, nameof(ramp)),
                                               margin), path);
        }

        static DerivedMesh Derived(int status, IntPtr address)
        {
            Native.Require(status);
            try
            {
                var mesh = (NativeMesh)Marshal.PtrToStructure(address, typeof(NativeMesh));
                return new DerivedMesh
                {
                    Vertices = Native.Doubles(mesh.Vertices, 3L * mesh.VertexCount),
                    Triangles = Native.Integers(mesh.Triangles, 3L * mesh.TriangleCount),
                    TriangleOrigins = Native.Integers(mesh.TriangleOrigins, mesh.TriangleCount),
                    VertexOrigins = Native.Integers(mesh.VertexOrigins, 2L * mesh.VertexCount),
                    VertexMap = Native.Integers(mesh.VertexMap, mesh.VertexMapCount),
                    LongestEdge = mesh.LongestEdge
                };
            }
            finally
            {
                Native.quorkitFreeMesh(address);
            }
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
        // The bounds for vertices exceed what an array can hold.
        const int TriangleLimit = 238609294;

        readonly SolverHandle handle;
        readonly int[] order;
        readonly NativeSolver info;

        /// <summary>Builds and factorizes. The arrays are copied.</summary>
        /// <param name="vertices">Three coordinates per vertex, at least one vertex.</param>
        /// <param name="triangles">Three vertex indices per triangle; every vertex is used. Flat
        /// triangles are not refused: see <see cref="Mesh.Clean"/>.</param>
        /// <param name="tags">One per vertex: 1, 2, 3 prescribed, all others free.</param>
        /// <param name="progress">Called now and then, on this thread, with the fraction that is done, 0 ..
        /// 1; returns false to cancel. An exception of its own cancels too, and is passed on.</param>
        /// <param name="mayFloat">Whether a piece of the mesh may have no prescribed vertex, though
        /// nothing says what its field is then.</param>
        /// <exception cref="OperationCanceledException">progress returned false.</exception>
        /// <exception cref="QuorException">The mesh is refused, see
        /// <see cref="Status"/>.</exception>
        /// <exception cref="ArgumentNullException">An array is null.</exception>
        /// <exception cref="ArgumentException">An array has the wrong length.</exception>
        /// <exception cref="ArgumentOutOfRangeException">A triangle has an index that no vertex
        /// has.</exception>
        public Solver(double[] vertices, int[] triangles, int[] tags,
                      Func<double, bool> progress = null, bool mayFloat = false)
        {
            VertexCount = Check.Triples(vertices, nameof(vertices));
            var triangleCount = Check.Triangles(triangles, VertexCount);
            if (triangleCount > TriangleLimit)
                throw new ArgumentException("more than 238,609,294 triangles", nameof(triangles));
            Check.Length(tags, VertexCount, nameof(tags));
            if (!mayFloat)
                RequirePrescribedPieces(Mesh.Look(vertices, triangles, tags));
            Exception thrown = null;
            NativeProgress call = (fraction, context) =>
            {
                try
                {
                    return progress(fraction) ? 0 : 1;
                }
                catch (Exception error)
                {
                    thrown = error;
                    return 1;
                }
            };
            var status = Native.quorkitConstruct(VertexCount, vertices, triangleCount, triangles, tags,
                                                 progress == null ? null : call, IntPtr.Zero,
                                                 out handle);
            GC.KeepAlive(call);
            if (status != 0)
            {
                handle.Dispose();
                if (thrown != null)
                    throw thrown;
                if (status == Native.BadArgument)
                    throw Refusal(triangles);
                Native.Require(status);
            }
            Native.Require(Native.quorkitSolverInfo(handle, out info));
            PrescribedCount = info.PrescribedCount;
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
        public Factorization Info
        {
            get
            {
                Native.Require(Native.quorkitSolverInfo(handle, out var now));
                return (Factorization)now.Factorization;
            }
        }

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
            Native.Require(Native.quorkitSolve(handle, prescribed, null, output));
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
            Native.Require(Native.quorkitSolve(handle, prescribed, source, output));
            return output;
        }

        /// <summary>A copy of the vertices in solver order, three coordinates each.</summary>
        public double[] GetVertices()
        {
            double[] vertices = null;
            WhileAlive(() => vertices = Native.Doubles(info.Vertices, 3L * VertexCount));
            return vertices;
        }

        /// <summary>A copy of the triangles, three indices in solver order each. Triangles and
        /// corners are in the caller's order.</summary>
        public int[] GetTriangles()
        {
            int[] triangles = null;
            WhileAlive(() => triangles = Native.Integers(info.Triangles, 3L * info.TriangleCount));
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
        /// Writes the solver's mesh and a field as <paramref name="baseName"/> + ".obj" and ".mtl": the
        /// text of wobj, in solver order. <see cref="Mesh.Write"/> does the same with any mesh, keeps the
        /// margin that most viewers need, and copies the ramp.
        /// </summary>
        /// <param name="field">One value per vertex in SOLVER order, see
        /// <see cref="ToSolverOrder"/>.</param>
        /// <param name="baseName">Path without extension.</param>
        /// <exception cref="ArgumentException">The field is missing, has the wrong length or is not
        /// finite, or the name is missing or cannot be one.</exception>
        /// <exception cref="IOException">A file cannot be written whole.</exception>
        public void Write(double[] field, string baseName)
        {
            Check.Length(field, VertexCount, nameof(field));
            var path = Native.Utf8(baseName, nameof(baseName));
            WhileAlive(() => Native.Require(
                Native.quorkitWriteStored(VertexCount, info.Vertices, info.TriangleCount,
                                          info.Triangles, field, path, null, 0), baseName));
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

        // The constructor refuses meshes that are not sound for a reason of their own.
        static void RequirePrescribedPieces(MeshReport report)
        {
            if (report.UnprescribedPieces.Count > 0 && report.UnusedVertices.Count == 0 &&
                report.RepeatedCorners.Count == 0)
                throw new QuorException(
                    Status.UnprescribedPiece,
                    $"{report.UnprescribedPieces.Count} of {report.Pieces.Count} pieces have no " +
                    "prescribed vertex, so nothing says what their field is; the first one is that of " +
                    $"vertex {report.UnprescribedPieces.First}");
        }

        QuorException Refusal(int[] triangles)
        {
            if (VertexCount == 0)
                return new QuorException(Status.NoVertex, "there are no vertices");
            for (var t = 0; t < triangles.Length; t += 3)
            {
                int a = triangles[t], b = triangles[t + 1], c = triangles[t + 2];
                if (a == b || b == c || c == a)
                    return new QuorException(Status.RepeatedCorner,
                                             $"triangle {t / 3} has two equal indices");
            }
            var used = new bool[VertexCount];
            foreach (var index in triangles)
                used[index] = true;
            return new QuorException(
                Status.UnusedVertex,
                $"vertex {Array.IndexOf(used, false)} is used by no triangle");
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
            if (Native.quorkitEncodeToSphere(label, out x, out y, out z) != 0)
                throw new ArgumentOutOfRangeException(nameof(label), label,
                                                      "is not in -1 .. 65534");
        }

        /// <summary>Unpacks the label from a vector made by <see cref="Encode"/>, or from its
        /// mirror image. Any other vector gives some label.</summary>
        public static int Decode(float x, float y, float z) =>
            Native.quorkitDecodeFromSphere(x, y, z);
    }

    /// <summary>Owns a handle of the library. The marshaller keeps it alive during every call that
    /// takes it, so neither the collector nor another thread can free it under one.</summary>
    sealed class SolverHandle : SafeHandleZeroOrMinusOneIsInvalid
    {
        public SolverHandle() : base(true) { }

        protected override bool ReleaseHandle()
        {
            Native.quorkitFreeSolver(handle);
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

    [StructLayout(LayoutKind.Sequential)]
    struct NativeMesh
    {
        internal int VertexCount;
        internal int TriangleCount;
        internal IntPtr Vertices;
        internal IntPtr Triangles;
        internal IntPtr TriangleOrigins;
        internal IntPtr VertexOrigins;
        internal IntPtr VertexMap;
        internal int VertexMapCount;
        internal double LongestEdge;
    }

    [StructLayout(LayoutKind.Sequential)]
    struct NativeSolver
    {
        internal int VertexCount;
        internal int TriangleCount;
        internal int PrescribedCount;
        internal uint Factorization;
        internal IntPtr Vertices;
        internal IntPtr Triangles;
        internal IntPtr Order;
    }

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate int NativeProgress(double fraction, IntPtr context);

    static class Native
    {
        const string Library = "quorkit";
        const CallingConvention C = CallingConvention.Cdecl;

        internal const int BadArgument = 1;

        // Turns a status of the library into an exception, unless it is done.
        internal static void Require(int status, string path = null)
        {
            var text = Marshal.PtrToStringAnsi(quorkitStatusText(status));
            switch (status)
            {
                case 0:
                    return;
                case BadArgument:
                    throw new ArgumentException(text);
                case 2:
                    throw new OutOfMemoryException(text);
                case 3:
                    throw new QuorException(Status.TooLarge, text);
                case 4:
                    throw new IOException($"{path}: {text}");
                case 5:
                    throw new OperationCanceledException(text);
                default:
                    throw new QuorException(Status.Internal, text);
            }
        }

        // A path as the library takes it.
        internal static byte[] Utf8(string path, string name)
        {
            if (path == null)
                throw new ArgumentNullException(name);
            if (path.IndexOf('\0') >= 0)
                throw new ArgumentException("has a null character", name);
            return Encoding.UTF8.GetBytes(path + "\0");
        }

        internal static double[] Doubles(IntPtr address, long count)
        {
            var array = new double[count];
            if (count > 0)
                Marshal.Copy(address, array, 0, array.Length);
            return array;
        }

        internal static int[] Integers(IntPtr address, long count)
        {
            var array = new int[count];
            if (count > 0)
                Marshal.Copy(address, array, 0, array.Length);
            return array;
        }

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern IntPtr quorkitStatusText(int status);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitWeld(
            int pointCount, [In] double[] points, int triangleCount, [In] int[] triangles,
            [Out] double[] outVertices, [Out] int[] outTriangles, [Out] int[] outPointMap,
            out int outVertexCount, out int outTriangleCount, double tolerance);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitCheck(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [In] int[] tags,
                                                out MeshReport reportOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitClean(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, out IntPtr meshOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitRefine(int n, [In] double[] vertices, int m,
                                                 [In] int[] triangles, double longestEdge,
                                                 out IntPtr meshOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitRefineGraded(int n, [In] double[] vertices, int m,
                                                       [In] int[] triangles, double longestEdge,
                                                       [In] double[] sizes, out IntPtr meshOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitRefineTo(int n, [In] double[] vertices, int m,
                                                   [In] int[] triangles, int triangleCount,
                                                   out IntPtr meshOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern void quorkitFreeMesh(IntPtr mesh);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitConstruct(
            int n, [In] double[] vertices, int m, [In] int[] triangles, [In] int[] tags,
            NativeProgress progress, IntPtr context, out SolverHandle solverOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitSolverInfo(SolverHandle solver, out NativeSolver infoOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitSolve(SolverHandle solver, [In] double[] prescribedValues,
                                                [In] double[] sourceValues, [Out] double[] fieldOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern void quorkitFreeSolver(IntPtr solver);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitAreas(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [Out] double[] areasOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitColours(int n, [In] double[] field, double low, double high,
                                                  [Out] byte[] rgbaOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitWrite(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [In] double[] field,
                                                [In] byte[] path, [In] byte[] ramp, double margin);

        // The same with arrays of a solver.
        [DllImport(Library, CallingConvention = C, ExactSpelling = true, EntryPoint = "quorkitWrite")]
        internal static extern int quorkitWriteStored(int n, IntPtr vertices, int m, IntPtr triangles,
                                                      [In] double[] field, [In] byte[] path,
                                                      [In] byte[] ramp, double margin);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitEncodeToSphere(int value, out float xOut, out float yOut,
                                                         out float zOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitDecodeFromSphere(float x, float y, float z);
    }
}
