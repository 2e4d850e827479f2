// The solver: a factorized mesh, its solves, and why one is refused.

using System;
using System.IO;
using Microsoft.Win32.SafeHandles;

namespace Quor
{
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
        /// 1; returns true to cancel. An exception of its own cancels too, and is passed on.</param>
        /// <param name="mayFloat">Whether to accept what has no field: a connected component without a
        /// prescribed vertex, a singular matrix, coordinates that are not finite.</param>
        /// <exception cref="OperationCanceledException">progress returned true.</exception>
        /// <exception cref="QuorException">The mesh is refused, see
        /// <see cref="Status"/>.</exception>
        /// <exception cref="ArgumentNullException">An array is null.</exception>
        /// <exception cref="ArgumentException">An array has the wrong length, or a coordinate is not
        /// finite.</exception>
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
            if (VertexCount == 0)
                throw new QuorException(Status.NoVertex, "vertices: there are none");
            if (triangleCount == 0)
                throw new QuorException(Status.UnusedVertex, "vertices: no triangle uses vertex 0", 0);
            if (!mayFloat)
                RequireField(Mesh.Look(vertices, triangles, tags));
            SolverHandle made = null;
            var watch = new Watch(progress);
            watch.Call((out NativeError error) => Native.quorkitConstruct(
                VertexCount, vertices, triangleCount, triangles, tags, watch.Function, IntPtr.Zero,
                out made, out error));
            handle = made;
            info = Read();
            if (!mayFloat && info.Factorization != (uint)Factorization.Success)
            {
                handle.Dispose();
                throw new QuorException(Status.SingularMatrix,
                                        "triangles: the matrix is singular, a pivot is exactly zero: " +
                                        "clean the mesh");
            }
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
        public Factorization Info => (Factorization)Read().Factorization;

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
            Native.Call((out NativeError error) => Native.quorkitSolve(
                handle, prescribed, null, output, out error));
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
            Native.Call((out NativeError error) => Native.quorkitSolve(
                handle, prescribed, source, output, out error));
            return output;
        }

        /// <summary>
        /// Computes several fields at once, in less time than one after the other. Each has every bit that
        /// <see cref="Solve"/> or <see cref="SolveWithSource"/> gives for it.
        /// </summary>
        /// <param name="prescribed">As for <see cref="Solve"/>, one field after the other.</param>
        /// <param name="source">As for <see cref="SolveWithSource"/>, one field after the other; null for
        /// none.</param>
        /// <param name="output">As for <see cref="SolveWithSource"/>.</param>
        /// <returns>One field after the other: <paramref name="output"/> if given.</returns>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length.
        /// </exception>
        public double[] SolveMany(double[] prescribed, double[] source = null, double[] output = null)
        {
            if (prescribed == null)
                throw new ArgumentNullException(nameof(prescribed));
            var count = prescribed.Length / VertexCount;
            if (prescribed.Length % VertexCount != 0)
                throw new ArgumentException($"has {prescribed.Length} entries, no multiple of the " +
                                            $"{VertexCount} vertices", nameof(prescribed));
            Check.Optional(source, prescribed.Length, nameof(source));
            output = Check.Length(output ?? new double[prescribed.Length], prescribed.Length,
                                  nameof(output));
            Native.Call((out NativeError error) => Native.quorkitSolveMany(
                handle, count, prescribed, source, output, out error));
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
            WhileAlive(() => Native.Call((out NativeError error) => Native.quorkitWriteStored(
                VertexCount, info.Vertices, info.TriangleCount, info.Triangles, field, path, null, 0,
                out error)));
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

        NativeSolver Read()
        {
            var now = new NativeSolver();
            Native.Call((out NativeError error) => Native.quorkitSolverInfo(handle, out now, out error));
            return now;
        }

        // The library refuses meshes that are not sound for a reason of their own.
        static void RequireField(MeshReport report)
        {
            if (report.UnusedVertices.Count > 0 || report.RepeatedCorners.Count > 0)
                return;
            if (report.NotFinite.Count > 0)
            {
                var error = new ArgumentException(
                    $"a coordinate of vertex {report.NotFinite.First} is not finite", "vertices");
                error.Data["Index"] = report.NotFinite.First;
                throw error;
            }
            if (report.UnprescribedPieces.Count > 0)
                throw new QuorException(
                    Status.UnprescribedPiece,
                    $"tags: {report.UnprescribedPieces.Count} of {report.Pieces.Count} connected " +
                    "components have no prescribed vertex; the first one is that of vertex " +
                    $"{report.UnprescribedPieces.First}: tag one of its vertices 1, 2 or 3", report.UnprescribedPieces.First);
        }
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
}
