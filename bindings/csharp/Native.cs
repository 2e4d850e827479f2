// The functions and structures of the library, and its statuses as exceptions.

using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;
using System.Text.RegularExpressions;

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

    [StructLayout(LayoutKind.Sequential)]
    struct NativeError
    {
        internal int Status;
        internal int Reason;
        internal IntPtr Argument;
        internal int Index;
        internal int System;
        [MarshalAs(UnmanagedType.ByValArray, SizeConst = 512)]
        internal byte[] Text;  // ends with a zero
    }

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate int NativeProgress(double fraction, IntPtr context);

    static class Native
    {
        const string Library = "quorkit";
        const CallingConvention C = CallingConvention.Cdecl;
        const int OutOfRange = 2;

        // Turns a status of the library into an exception, unless it is done.
        internal static void Require(int status, NativeError error)
        {
            if (status != 0)
                throw ExceptionOf(status, error);
        }

        static Exception ExceptionOf(int status, NativeError error)
        {
            var length = Array.IndexOf(error.Text, (byte)0);
            var text = Encoding.UTF8.GetString(error.Text, 0, length);
            text = Regex.Replace(text, @"\bquorkit(?=[A-Z])", "Mesh.");
            var reason = (Status)error.Reason;
            if (reason == Status.RepeatedCorner || reason == Status.UnusedVertex)
                return new QuorException(reason, text, error.Index);
            switch (status)
            {
                case 1:
                    var name = Marshal.PtrToStringAnsi(error.Argument);
                    var bad = error.Reason == OutOfRange
                        ? new ArgumentOutOfRangeException(name, text)
                        : new ArgumentException(text, name);
                    bad.Data["Index"] = error.Index;
                    return bad;
                case 2:
                    return new OutOfMemoryException(text);
                case 3:
                    return new QuorException(Status.TooLarge, text);
                case 4:
                    return new IOException(text);
                case 5:
                    return new OperationCanceledException(text);
                default:
                    return new QuorException(Status.Internal, text);
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
        internal static extern int quorkitWeld(
            int pointCount, [In] double[] points, int triangleCount, [In] int[] triangles,
            [Out] double[] outVertices, [Out] int[] outTriangles, [Out] int[] outPointMap,
            out int outVertexCount, out int outTriangleCount, double tolerance,
            out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitCheck(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [In] int[] tags,
                                                out MeshReport reportOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitClean(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, out IntPtr meshOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitRefine(int n, [In] double[] vertices, int m,
                                                 [In] int[] triangles, double longestEdge,
                                                 out IntPtr meshOut,
                                                 out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitRefineGraded(int n, [In] double[] vertices, int m,
                                                       [In] int[] triangles, double longestEdge,
                                                       [In] double[] sizes, out IntPtr meshOut,
                                                       out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitRefineTo(int n, [In] double[] vertices, int m,
                                                   [In] int[] triangles, int triangleCount,
                                                   out IntPtr meshOut,
                                                   out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern void quorkitFreeMesh(IntPtr mesh);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitConstruct(
            int n, [In] double[] vertices, int m, [In] int[] triangles, [In] int[] tags,
            NativeProgress progress, IntPtr context, out SolverHandle solverOut,
            out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitSolverInfo(SolverHandle solver, out NativeSolver infoOut,
                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitSolve(SolverHandle solver, [In] double[] prescribedValues,
                                                [In] double[] sourceValues, [Out] double[] fieldOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern void quorkitFreeSolver(IntPtr solver);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitAreas(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [Out] double[] areasOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitColours(int n, [In] double[] field, double low, double high,
                                                  [Out] byte[] rgbaOut,
                                                  out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitWrite(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [In] double[] field,
                                                [In] byte[] path, [In] byte[] ramp, double margin,
                                                out NativeError errorOut);

        // The same with arrays of a solver.
        [DllImport(Library, CallingConvention = C, ExactSpelling = true, EntryPoint = "quorkitWrite")]
        internal static extern int quorkitWriteStored(int n, IntPtr vertices, int m, IntPtr triangles,
                                                      [In] double[] field, [In] byte[] path,
                                                      [In] byte[] ramp, double margin,
                                                      out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitEncodeToSphere(int value, out float xOut, out float yOut,
                                                         out float zOut,
                                                         out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true)]
        internal static extern int quorkitDecodeFromSphere(float x, float y, float z);
    }
}
