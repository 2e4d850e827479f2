// What needs no solver: weld, look, clean, refine, areas, colours, write; and what they return.

using System;
using System.IO;
using System.Runtime.InteropServices;

namespace Quor
{
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
        /// <summary>Edges of two or more triangles with a negative weight, each by its first
        /// triangle.</summary>
        public Finding NegativeWeights;
        /// <summary>Edges of one triangle with a negative weight.</summary>
        public Finding ObtuseBorders;
        /// <summary>Prescribed vertices that no edge joins to another of their region.</summary>
        public Finding IsolatedPrescribed;
        /// <summary>Vertices that an edge joins to another region.</summary>
        public Finding TouchingRegions;
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
            Native.Require(Native.quorkitWeld(pointCount, points, triangleCount, triangles, vertices,
                                              kept, pointMap, out var n, out var m, tolerance,
                                              out var error), error);
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
            Native.Require(Native.quorkitCheck(n, vertices, m, triangles, tags, out var report,
                                               out var error), error);
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
            return Derived(Native.quorkitClean(n, vertices, m, triangles, out var mesh, out var error),
                           mesh, error);
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
            return Derived(Native.quorkitRefine(n, vertices, m, triangles, longestEdge, out var mesh,
                                                out var error), mesh, error);
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
                                                      out var mesh, out var error), mesh, error);
        }

        /// <summary>Refines to about so many triangles, never more unless there are already.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Refine"/>; a number outside 1 ..
        /// 238,609,294.</exception>
        public static DerivedMesh RefineTo(double[] vertices, int[] triangles, int triangleCount)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            return Derived(Native.quorkitRefineTo(n, vertices, m, triangles, triangleCount,
                                                  out var mesh, out var error), mesh, error);
        }

        /// <summary>A third of the areas around each vertex, to multiply densities with.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Clean"/>.</exception>
        public static double[] Areas(double[] vertices, int[] triangles)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            var areas = new double[n];
            Native.Require(Native.quorkitAreas(n, vertices, m, triangles, areas, out var error), error);
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
            Native.Require(Native.quorkitColours(field.Length, field, low, high, rgba,
                                                 out var error), error);
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
                                               margin, out var error), error);
        }

        static DerivedMesh Derived(int status, IntPtr address, NativeError error)
        {
            Native.Require(status, error);
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
}
