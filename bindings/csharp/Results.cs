// What the operations on meshes return.

using System;
using System.Runtime.InteropServices;

namespace Quor
{
    /// <summary>A welded mesh: what <see cref="Mesh.Weld"/> and
    /// <see cref="Mesh.WeldWithOrigins"/> return.</summary>
    public sealed class WeldedMesh
    {
        /// <summary>Three coordinates per vertex.</summary>
        public double[] Vertices { get; }
        /// <summary>Three vertex indices per kept triangle.</summary>
        public int[] Triangles { get; }
        /// <summary>For each point the vertex that it became.</summary>
        public int[] PointMap { get; }
        /// <summary>For each triangle the input triangle that it was, from
        /// <see cref="Mesh.WeldWithOrigins"/>; else null.</summary>
        public int[] TriangleOrigins { get; }

        internal WeldedMesh(double[] vertices, int[] triangles, int[] pointMap, int[] origins)
        {
            Vertices = vertices;
            Triangles = triangles;
            PointMap = pointMap;
            TriangleOrigins = origins;
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

    /// <summary>What is wrong with a mesh: what <see cref="Mesh.Look"/> and
    /// <see cref="Mesh.LookAtRegions"/> return. See quorkitCheck in quorkit.h.</summary>
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
    /// <see cref="Mesh.Refine"/>, <see cref="Mesh.RefineTo"/> and <see cref="Mesh.Flip"/> return.</summary>
    public sealed class DerivedMesh
    {
        /// <summary>Three coordinates per vertex. A refined mesh begins with those of its
        /// input.</summary>
        public double[] Vertices { get; internal set; }
        /// <summary>Three vertex indices per triangle.</summary>
        public int[] Triangles { get; internal set; }
        /// <summary>For each triangle the input triangle that it is a part of; flipped: one of the same
        /// face.</summary>
        public int[] TriangleOrigins { get; internal set; }
        /// <summary>Two per vertex. Refined: the vertices whose midpoint it is, or twice itself. Cleaned:
        /// twice the input vertex that it was. Flipped: twice itself.</summary>
        public int[] VertexOrigins { get; internal set; }
        /// <summary>Cleaned: what each input vertex became, -1 if it was dropped. Else
        /// empty.</summary>
        public int[] VertexMap { get; internal set; }
        /// <summary>The length it was refined to.</summary>
        public double LongestEdge { get; internal set; }
        /// <summary>Cleaned: degenerate triangles that could not be removed without a crack. Else
        /// 0.</summary>
        public int DegenerateCount { get; internal set; }

        // Copies what the library made and releases it.
        internal static DerivedMesh Of(IntPtr address)
        {
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
                    LongestEdge = mesh.LongestEdge,
                    DegenerateCount = mesh.DegenerateCount
                };
            }
            finally
            {
                Native.quorkitFreeMesh(address);
            }
        }
    }

    /// <summary>The faces and feature edges of a part: what <see cref="Mesh.Faces"/> returns. See
    /// quorkitFaces in quorkit.h.</summary>
    public sealed class PartFaces
    {
        /// <summary>The number of faces.</summary>
        public int FaceCount { get; private set; }
        /// <summary>The number of chains of feature edges.</summary>
        public int ChainCount { get; private set; }
        /// <summary>For each triangle its face, 0 .. FaceCount-1.</summary>
        public int[] Faces { get; private set; }
        /// <summary>Two vertices per feature edge, the lower first.</summary>
        public int[] Edges { get; private set; }
        /// <summary>For each feature edge its chain, 0 .. ChainCount-1.</summary>
        public int[] Chains { get; private set; }

        // Copies what the library made of so many triangles, and releases it.
        internal static PartFaces Of(IntPtr address, int triangleCount)
        {
            try
            {
                var faces = (NativeFaces)Marshal.PtrToStructure(address, typeof(NativeFaces));
                return new PartFaces
                {
                    FaceCount = faces.FaceCount,
                    ChainCount = faces.ChainCount,
                    Faces = Native.Integers(faces.Faces, triangleCount),
                    Edges = Native.Integers(faces.Edges, 2L * faces.EdgeCount),
                    Chains = Native.Integers(faces.Chains, faces.EdgeCount)
                };
            }
            finally
            {
                Native.quorkitFreeFaces(address);
            }
        }
    }
}
