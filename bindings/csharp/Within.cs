// A field within a tolerance, without a solver.

using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace Quor
{
    /// <summary>What <see cref="Mesh.SolveWithin"/> is asked for. What is prescribed is bound to the input
    /// mesh and does not move when it is refined. Arrays may be null where there is nothing of their
    /// kind. See quorkitSolveWithin in quorkit.h.</summary>
    public sealed class Problem
    {
        /// <summary>Three finite coordinates per vertex; each vertex is used by a triangle.</summary>
        public double[] Vertices { get; set; }
        /// <summary>Three different vertex indices per triangle.</summary>
        public int[] Triangles { get; set; }
        /// <summary>One value per triangle, prescribed everywhere on it; NaN for free ones.</summary>
        public double[] TriangleValues { get; set; }
        /// <summary>Two vertices per prescribed edge, the ends of an edge of the mesh.</summary>
        public int[] Edges { get; set; }
        /// <summary>One value per prescribed edge.</summary>
        public double[] EdgeValues { get; set; }
        /// <summary>One value per vertex, NaN for free ones: prescribes the edges between two with values,
        /// linearly.</summary>
        public double[] VertexValues { get; set; }
        /// <summary>One source density per triangle, per area; positive where it lowers the
        /// field.</summary>
        public double[] Sources { get; set; }
        /// <summary>One face number per triangle; edges between two faces stay.</summary>
        public int[] Faces { get; set; }
        /// <summary>The largest error, above 0.</summary>
        public double Tolerance { get; set; }
        /// <summary>Whether the tolerance is a share of the field's span, and not in its
        /// unit.</summary>
        public bool IsShareOfSpan { get; set; }
        /// <summary>The most triangles of the result, or four times those of the mesh if that is more;
        /// 0: 4,000,000.</summary>
        public int TriangleLimit { get; set; }

        // Calls the library with the addresses of the arrays, which stay where they are meanwhile.
        internal IntPtr Solve(Func<double, bool> progress)
        {
            var n = Check.Triples(Vertices, nameof(Vertices));
            var m = Check.Triangles(Triangles, n, nameof(Triangles));
            var edges = EdgeValues?.Length ?? 0;
            Check.Optional(TriangleValues, m, nameof(TriangleValues));
            if (EdgeValues != null)
                Check.Length(Edges, 2 * edges, nameof(Edges));
            else
                Check.Optional(Edges, 0, nameof(Edges));
            Check.Optional(VertexValues, n, nameof(VertexValues));
            Check.Optional(Sources, m, nameof(Sources));
            Check.Optional(Faces, m, nameof(Faces));
            var pins = new List<GCHandle>();
            Func<Array, IntPtr> pinned = array =>
            {
                if (array == null)
                    return IntPtr.Zero;
                pins.Add(GCHandle.Alloc(array, GCHandleType.Pinned));
                return pins[pins.Count - 1].AddrOfPinnedObject();
            };
            try
            {
                var problem = new NativeProblem
                {
                    VertexCount = n,
                    Vertices = pinned(Vertices),
                    TriangleCount = m,
                    Triangles = pinned(Triangles),
                    TriangleValues = pinned(TriangleValues),
                    EdgeCount = edges,
                    Edges = pinned(Edges),
                    EdgeValues = pinned(EdgeValues),
                    VertexValues = pinned(VertexValues),
                    Sources = pinned(Sources),
                    Faces = pinned(Faces),
                    Tolerance = Tolerance,
                    IsShareOfSpan = IsShareOfSpan ? 1 : 0,
                    TriangleLimit = TriangleLimit
                };
                var solution = IntPtr.Zero;
                var watch = new Watch(progress);
                watch.Call((out NativeError error) => Native.quorkitSolveWithin(
                    ref problem, watch.Function, IntPtr.Zero, out solution, out error));
                return solution;
            }
            finally
            {
                pins.ForEach(pin => pin.Free());
            }
        }
    }

    /// <summary>A field within a tolerance, on the mesh that was made for it: what
    /// <see cref="Mesh.SolveWithin"/> returns.</summary>
    public sealed class Solution
    {
        /// <summary>Three coordinates per vertex; those of the input come first.</summary>
        public double[] Vertices { get; private set; }
        /// <summary>Three vertex indices per triangle.</summary>
        public int[] Triangles { get; private set; }
        /// <summary>One value per vertex.</summary>
        public double[] Field { get; private set; }
        /// <summary>The estimated largest error, in the unit of the field.</summary>
        public double Error { get; private set; }
        /// <summary>What was asked for, in the unit of the field.</summary>
        public double Tolerance { get; private set; }
        /// <summary>Whether the error is at most the tolerance.</summary>
        public bool IsReached { get; private set; }
        /// <summary>How often it was solved.</summary>
        public int Rounds { get; private set; }
        /// <summary>For each triangle an input triangle of the same face.</summary>
        public int[] TriangleOrigins { get; private set; }
        /// <summary>Two per vertex: the vertices whose midpoint it was made as.</summary>
        public int[] VertexOrigins { get; private set; }
        /// <summary>Input vertices where regions of different values meet.</summary>
        public int[] Jumps { get; private set; }
        /// <summary>No error is promised nearer to them than this.</summary>
        public double JumpRadius { get; private set; }

        // Copies what the library made and releases it; throws where there is no field.
        internal static Solution Of(IntPtr address)
        {
            try
            {
                var made = (NativeSolution)Marshal.PtrToStructure(address, typeof(NativeSolution));
                RequireField(made);
                return new Solution
                {
                    Vertices = Native.Doubles(made.Vertices, 3L * made.VertexCount),
                    Triangles = Native.Integers(made.Triangles, 3L * made.TriangleCount),
                    Field = Native.Doubles(made.Field, made.VertexCount),
                    Error = made.Error,
                    Tolerance = made.Tolerance,
                    IsReached = made.IsReached != 0,
                    Rounds = made.Rounds,
                    TriangleOrigins = Native.Integers(made.TriangleOrigins, made.TriangleCount),
                    VertexOrigins = Native.Integers(made.VertexOrigins, 2L * made.VertexCount),
                    Jumps = Native.Integers(made.Jumps, made.JumpCount),
                    JumpRadius = made.JumpRadius
                };
            }
            finally
            {
                Native.quorkitFreeSolution(address);
            }
        }

        static void RequireField(NativeSolution made)
        {
            switch (made.Outcome)
            {
                case 0:
                    return;
                case 1:
                    throw new QuorException(
                        Status.IsolatedVertex,
                        $"VertexValues: vertex {made.Vertex} has a value, but no edge at it is " +
                        "prescribed: prescribe an edge or a triangle", made.Vertex);
                case 2:
                    throw new QuorException(
                        Status.UnprescribedPiece,
                        $"nothing is prescribed on the connected component of vertex {made.Vertex}",
                        made.Vertex);
                default:
                    throw new QuorException(
                        Status.SingularMatrix,
                        "the equations have no finite solution: clean the mesh");
            }
        }
    }

    public static partial class Mesh
    {
        /// <summary>Solves for a field and refines the mesh until the estimated error is at most a tolerance
        /// everywhere.</summary>
        /// <param name="problem">The mesh, what is prescribed, and the tolerance.</param>
        /// <param name="progress">As for <see cref="Solver"/>.</param>
        /// <exception cref="QuorException">There is no field: see <see cref="Status"/>.</exception>
        /// <exception cref="ArgumentException">An array is missing, has the wrong length or a value that makes
        /// no sense; a tolerance that is not above 0.</exception>
        /// <exception cref="OperationCanceledException">progress returned true.</exception>
        public static Solution SolveWithin(Problem problem, Func<double, bool> progress = null)
        {
            if (problem == null)
                throw new ArgumentNullException(nameof(problem));
            return Solution.Of(problem.Solve(progress));
        }
    }
}
