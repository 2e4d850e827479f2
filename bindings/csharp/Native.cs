// The functions and structures of the library, and its statuses as exceptions.

using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

namespace Quor
{
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
