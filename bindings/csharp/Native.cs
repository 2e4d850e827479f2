// The functions and structures of the library, and its statuses as exceptions.

using System;
using System.IO;
using System.Runtime.ExceptionServices;
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
        internal int DegenerateCount;
    }

    [StructLayout(LayoutKind.Sequential)]
    struct NativeFaces
    {
        internal int FaceCount;
        internal int ChainCount;
        internal int EdgeCount;
        internal IntPtr Faces;
        internal IntPtr Edges;
        internal IntPtr Chains;
    }

    [StructLayout(LayoutKind.Sequential)]
    struct NativeProblem
    {
        internal int VertexCount;
        internal IntPtr Vertices;
        internal int TriangleCount;
        internal IntPtr Triangles;
        internal IntPtr TriangleValues;
        internal int EdgeCount;
        internal IntPtr Edges;
        internal IntPtr EdgeValues;
        internal IntPtr VertexValues;
        internal IntPtr Sources;
        internal IntPtr Faces;
        internal double Tolerance;
        internal int IsShareOfSpan;
        internal int TriangleLimit;
    }

    [StructLayout(LayoutKind.Sequential)]
    struct NativeSolution
    {
        internal int Outcome;
        internal int Vertex;
        internal int VertexCount;
        internal int TriangleCount;
        internal IntPtr Vertices;
        internal IntPtr Triangles;
        internal IntPtr TriangleOrigins;
        internal IntPtr VertexOrigins;
        internal IntPtr Field;
        internal double Error;
        internal double Tolerance;
        internal int IsReached;
        internal int Rounds;
        internal int JumpCount;
        internal IntPtr Jumps;
        internal double JumpRadius;
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

    // Passes progress on to a function of the caller's, and an exception of it back to the caller.
    sealed class Watch
    {
        readonly Func<double, bool> progress;
        ExceptionDispatchInfo thrown;

        internal Watch(Func<double, bool> progress)
        {
            this.progress = progress;
            Function = progress == null ? null : new NativeProgress(Report);
        }

        internal NativeProgress Function { get; }

        int Report(double fraction, IntPtr context)
        {
            try
            {
                return progress(fraction) ? 1 : 0;
            }
            catch (Exception exception)
            {
                thrown = ExceptionDispatchInfo.Capture(exception);
                return 1;
            }
        }

        internal void Call(NativeCall call)
        {
            try
            {
                Native.Call(call);
            }
            catch (OperationCanceledException) when (thrown != null)
            {
                thrown.Throw();
            }
            GC.KeepAlive(Function);
        }
    }

    // A call of the library, whose status it returns.
    delegate int NativeCall(out NativeError error);

    static class Native
    {
        const string Library = "quorkit";
        const CallingConvention C = CallingConvention.Cdecl;
        const int OutOfRange = 2;

        // Beside the assembly and the program and where the system keeps libraries, not in the current
        // directory, where anybody may have placed one. Each method says so, because the files are compiled
        // into an assembly that may have other imports.
        const DllImportSearchPath Paths = DllImportSearchPath.AssemblyDirectory
            | DllImportSearchPath.SafeDirectories;

        // Makes a call, and an exception of its status unless it is done.
        internal static void Call(NativeCall call)
        {
            int status;
            NativeError error;
            try
            {
                status = call(out error);
            }
            catch (DllNotFoundException reason)
            {
                throw new DllNotFoundException(
                    "quor: the library quorkit is not found: put quorkit.dll (Windows), libquorkit.so " +
                    "(Linux) or libquorkit.dylib (macOS) beside the program, or install it", reason);
            }
            catch (EntryPointNotFoundException reason)
            {
                throw new EntryPointNotFoundException(
                    "quor: the library quorkit is older than the C# files: install the one of their version",
                    reason);
            }
            catch (BadImageFormatException reason)
            {
                throw new BadImageFormatException(
                    "quor: the library quorkit is for another processor than this process: take the one " +
                    "for " + (IntPtr.Size == 8 ? "64" : "32") + " bits", reason);
            }
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

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitWeld(
            int pointCount, [In] double[] points, int triangleCount, [In] int[] triangles,
            [Out] double[] outVertices, [Out] int[] outTriangles, [Out] int[] outPointMap,
            out int outVertexCount, out int outTriangleCount, double tolerance,
            out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitWeldOrigins(
            int pointCount, [In] double[] points, int triangleCount, [In] int[] triangles,
            [Out] double[] outVertices, [Out] int[] outTriangles, [Out] int[] outPointMap,
            [Out] int[] outTriangleOrigins, out int outVertexCount, out int outTriangleCount,
            double tolerance, out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitCheck(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [In] int[] tags,
                                                out MeshReport reportOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitCheckRegions(int n, [In] double[] vertices, int m,
                                                       [In] int[] triangles, [In] int[] regions,
                                                       [In] double[] values,
                                                       out MeshReport reportOut,
                                                       out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitClean(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, out IntPtr meshOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitRefine(int n, [In] double[] vertices, int m,
                                                 [In] int[] triangles, double longestEdge,
                                                 out IntPtr meshOut,
                                                 out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitRefineGraded(int n, [In] double[] vertices, int m,
                                                       [In] int[] triangles, double longestEdge,
                                                       [In] double[] sizes, out IntPtr meshOut,
                                                       out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitRefineTo(int n, [In] double[] vertices, int m,
                                                   [In] int[] triangles, int triangleCount,
                                                   out IntPtr meshOut,
                                                   out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitFlip(int n, [In] double[] vertices, int m,
                                               [In] int[] triangles, [In] int[] faces,
                                               out IntPtr meshOut, out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitFaces(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, double angle,
                                                out IntPtr facesOut, out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern void quorkitFreeFaces(IntPtr faces);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern void quorkitFreeMesh(IntPtr mesh);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitConstruct(
            int n, [In] double[] vertices, int m, [In] int[] triangles, [In] int[] tags,
            NativeProgress progress, IntPtr context, out SolverHandle solverOut,
            out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitSolverInfo(SolverHandle solver, out NativeSolver infoOut,
                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitSolve(SolverHandle solver, [In] double[] prescribedValues,
                                                [In] double[] sourceValues, [Out] double[] fieldOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitSolveMany(SolverHandle solver, int columnCount,
                                                    [In] double[] prescribedValues,
                                                    [In] double[] sourceValues,
                                                    [Out] double[] fieldsOut,
                                                    out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitSolveWithin(ref NativeProblem problem,
                                                      NativeProgress progress, IntPtr context,
                                                      out IntPtr solutionOut,
                                                      out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern void quorkitFreeSolution(IntPtr solution);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern void quorkitFreeSolver(IntPtr solver);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitAreas(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [Out] double[] areasOut,
                                                out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitFlow(int n, [In] double[] vertices, int m,
                                               [In] int[] triangles, [In] double[] field,
                                               [In] int[] regions, int regionCount,
                                               [Out] double[] flowsOut, out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitGradients(int n, [In] double[] vertices, int m,
                                                    [In] int[] triangles, [In] double[] field,
                                                    [Out] double[] gradientsOut,
                                                    out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitColours(int n, [In] double[] field, double low, double high,
                                                  [Out] byte[] rgbaOut,
                                                  out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitWrite(int n, [In] double[] vertices, int m,
                                                [In] int[] triangles, [In] double[] field,
                                                [In] byte[] path, [In] byte[] ramp, double margin,
                                                out NativeError errorOut);

        // The same with arrays of a solver.
        [DllImport(Library, CallingConvention = C, ExactSpelling = true, EntryPoint = "quorkitWrite"),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitWriteStored(int n, IntPtr vertices, int m, IntPtr triangles,
                                                      [In] double[] field, [In] byte[] path,
                                                      [In] byte[] ramp, double margin,
                                                      out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitEncodeToSphere(int value, out float xOut, out float yOut,
                                                         out float zOut,
                                                         out NativeError errorOut);

        [DllImport(Library, CallingConvention = C, ExactSpelling = true),
         DefaultDllImportSearchPaths(Paths)]
        internal static extern int quorkitDecodeFromSphere(float x, float y, float z);
    }
}
