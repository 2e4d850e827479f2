// What makes a mesh ready: weld, look, clean, refine, flip, faces.

using System;

namespace Quor
{
    /// <summary>Operations on meshes that need no solver.</summary>
    public static partial class Mesh
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
        public static WeldedMesh Weld(double[] points, int[] triangles, double tolerance) =>
            Welded(points, triangles, tolerance, false);

        /// <summary><see cref="Weld"/>, and which input triangle each kept triangle
        /// was. Face numbers, for instance, then survive the weld.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Weld"/>.</exception>
        public static WeldedMesh WeldWithOrigins(double[] points, int[] triangles, double tolerance) =>
            Welded(points, triangles, tolerance, true);

        static WeldedMesh Welded(double[] points, int[] triangles, double tolerance, bool hasOrigins)
        {
            var pointCount = Check.Triples(points, nameof(points));
            var triangleCount = Check.Triangles(triangles, pointCount);
            var vertices = new double[points.Length];
            var kept = new int[triangles.Length];
            var pointMap = new int[pointCount];
            var origins = hasOrigins ? new int[triangleCount] : null;
            int n = 0, m = 0;
            Native.Call((out NativeError error) => hasOrigins
                ? Native.quorkitWeldOrigins(pointCount, points, triangleCount, triangles, vertices, kept,
                                            pointMap, origins, out n, out m, tolerance, out error)
                : Native.quorkitWeld(pointCount, points, triangleCount, triangles, vertices, kept,
                                     pointMap, out n, out m, tolerance, out error));
            Array.Resize(ref vertices, 3 * n);
            Array.Resize(ref kept, 3 * m);
            if (hasOrigins)
                Array.Resize(ref origins, m);
            return new WeldedMesh(vertices, kept, pointMap, origins);
        }

        /// <summary>Looks what is wrong with a mesh, and with its tags if there are any. Indices that no
        /// vertex has and coordinates that are not finite are found, not refused.</summary>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length.
        /// </exception>
        public static MeshReport Look(double[] vertices, int[] triangles, int[] tags = null)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triples(triangles, nameof(triangles));
            Check.Optional(tags, n, nameof(tags));
            var report = new MeshReport();
            Native.Call((out NativeError error) => Native.quorkitCheck(
                n, vertices, m, triangles, tags, out report, out error));
            return report;
        }

        /// <summary>As <see cref="Look"/>, with regions in place of tags: whether each has an edge, and which
        /// of them touch.</summary>
        /// <param name="vertices">Three coordinates per vertex.</param>
        /// <param name="triangles">Three indices per triangle.</param>
        /// <param name="regions">One number per vertex; a negative one is in no region.</param>
        /// <param name="values">One prescribed value per vertex: regions of equal values do not count as
        /// touching. Null: any two regions do.</param>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length.
        /// </exception>
        public static MeshReport LookAtRegions(double[] vertices, int[] triangles, int[] regions,
                                               double[] values = null)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triples(triangles, nameof(triangles));
            Check.Length(regions, n, nameof(regions));
            Check.Optional(values, n, nameof(values));
            var report = new MeshReport();
            Native.Call((out NativeError error) => Native.quorkitCheckRegions(
                n, vertices, m, triangles, regions, values, out report, out error));
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
            var mesh = IntPtr.Zero;
            Native.Call((out NativeError error) => Native.quorkitClean(
                n, vertices, m, triangles, out mesh, out error));
            return DerivedMesh.Of(mesh);
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
            var mesh = IntPtr.Zero;
            Native.Call((out NativeError error) => Native.quorkitRefine(
                n, vertices, m, triangles, longestEdge, out mesh, out error));
            return DerivedMesh.Of(mesh);
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
            var mesh = IntPtr.Zero;
            Native.Call((out NativeError error) => Native.quorkitRefineGraded(
                n, vertices, m, triangles, longestEdge, sizes, out mesh, out error));
            return DerivedMesh.Of(mesh);
        }

        /// <summary>Refines to about so many triangles, never more unless there are already.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Refine"/>; a number outside 1 ..
        /// 238,609,294.</exception>
        public static DerivedMesh RefineTo(double[] vertices, int[] triangles, int triangleCount)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            var mesh = IntPtr.Zero;
            Native.Call((out NativeError error) => Native.quorkitRefineTo(
                n, vertices, m, triangles, triangleCount, out mesh, out error));
            return DerivedMesh.Of(mesh);
        }

        /// <summary>Flips edges inside flat faces until the triangles there are as well shaped as their
        /// vertices allow. The surface stays what it is.</summary>
        /// <param name="vertices">Three finite coordinates per vertex.</param>
        /// <param name="triangles">Three different indices per triangle.</param>
        /// <param name="faces">One face number per triangle; edges between two faces stay. Null: all are one
        /// face.</param>
        /// <exception cref="ArgumentException">As for <see cref="Clean"/>; equal corners.</exception>
        public static DerivedMesh Flip(double[] vertices, int[] triangles, int[] faces = null)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            Check.Optional(faces, m, nameof(faces));
            var mesh = IntPtr.Zero;
            Native.Call((out NativeError error) => Native.quorkitFlip(
                n, vertices, m, triangles, faces, out mesh, out error));
            return DerivedMesh.Of(mesh);
        }

        /// <summary>Finds the faces and feature edges of a part, as its CAD system would call
        /// them.</summary>
        /// <param name="vertices">Three finite coordinates per vertex.</param>
        /// <param name="triangles">Three different indices per triangle.</param>
        /// <param name="angle">In degrees, above 0 and below 90: where normals differ by more, a curved face
        /// ends.</param>
        /// <exception cref="ArgumentException">As for <see cref="Flip"/>; an angle out of range.</exception>
        public static PartFaces Faces(double[] vertices, int[] triangles, double angle = 30)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            var faces = IntPtr.Zero;
            Native.Call((out NativeError error) => Native.quorkitFaces(
                n, vertices, m, triangles, angle, out faces, out error));
            return PartFaces.Of(faces, m);
        }
    }
}
