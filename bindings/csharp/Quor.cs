// Numeric geometry on triangle meshes from C#: weld, harmonic fields, coloured export.
//
// A thin layer over the C functions of the shared library quorkit; their manuals, with the exact rules,
// are the headers quorkit.h and quor.h. Arrays are flat: coordinates x y z x y z ... in any unit of
// length, triangles a b c a b c ... with 0-based indices, tags and values one entry per vertex. The
// library reads and writes them in place, pinned for the duration of a call.
//
// Nulls, lengths and indices are checked before a call. An exception names the argument; which triangle,
// vertex or value it is about is QuorException.Index, or Data["Index"] of an ArgumentException. Nothing is thrown through .NET: what happens
// inside the library comes back as an exception of .NET's own, OutOfMemoryException when memory runs
// out, IOException when a file cannot be written, the disk being full included.
//
// C# 7 without unsafe code, for .NET Framework 4.6, .NET and mono; the tests run with mono. The files of
// this folder belong together: compile all of them in.

using System;

namespace Quor
{
    /// <summary>Why the library refused something.</summary>
    public enum Status : uint
    {
        /// <summary>There is no vertex.</summary>
        NoVertex = 1,
        /// <summary>A triangle has two equal corner indices.</summary>
        RepeatedCorner = 23,
        /// <summary>There is no triangle, or a vertex that none uses.</summary>
        UnusedVertex = 24,
        /// <summary>A connected component of the mesh has no prescribed vertex, so it has no
        /// field.</summary>
        UnprescribedPiece = 100,
        /// <summary>The result has no place in 32-bit indices.</summary>
        TooLarge = 101,
        /// <summary>A fault of the library.</summary>
        Internal = 102,
        /// <summary>A vertex has a value, but no edge at it is prescribed: its field depends on the
        /// mesh.</summary>
        IsolatedVertex = 103,
        /// <summary>The equations have no single solution.</summary>
        SingularMatrix = 104
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

        /// <summary>The first triangle or vertex that it is about, -1 if none.</summary>
        public int Index { get; }

        internal QuorException(Status status, string message, int index = -1) : base(message)
        {
            Status = status;
            Index = index;
        }
    }
}
