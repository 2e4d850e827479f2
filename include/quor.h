/*
 * quor - numeric geometry on triangle meshes, for plug-ins of CAD hosts.
 *
 * Four jobs, eleven functions:
 *
 *   1. weld a triangle soup                       quorWeld
 *   2. build a Laplace solver on a tagged mesh    quorctorTagged, quorinfo, quorfree
 *   3. solve for a field, any number of times     quorsolveTagged, quorsolvePTagged
 *   4. read the stored mesh back                  quoverts, quotris
 *      write mesh and field as a coloured OBJ     wobj
 *
 * and two helpers that carry a label in a direction: encode_integer_to_sphere,
 * decode_integer_from_sphere.
 *
 * The order of use:
 *
 *   quorWeld -> quorctorTagged -> quorinfo -> quorsolveTagged ... -> wobj -> quorfree
 *
 * This header is valid C99 and C++, includes only <stdint.h>, and is the whole manual.
 *
 * ARRAYS. Coordinates are three doubles per vertex, x y z x y z ...; triangles are three 0-based
 * vertex indices each, a b c a b c ...; tags and values are one entry per vertex. Lengths have no
 * unit of their own: a tolerance is in the unit of the coordinates. Every array belongs to the
 * caller. Inputs are only read, during the call; outputs are only written, and are allocated by
 * the caller with the room that each function states.
 *
 * WHAT IS CHECKED. Counts, and the pointers named below; nothing else. A corner index outside the
 * mesh, an array that is too short, a handle that is not alive: undefined behaviour. No value is
 * ever refused for being NaN, infinite or large; each function says what becomes of it.
 *
 * EXCEPTIONS. When memory runs out std::bad_alloc leaves the function; when a size cannot be
 * represented (each function says which) std::length_error with the text "vector" does. All memory
 * of the call has been released by then, no status has been written, a handle lives on unharmed.
 * The functions are callable from C, but only a C++ caller can catch these, and on Windows only one
 * from the same kind of compiler as the library: MSVC does not catch what a DLL made with mingw-w64
 * throws. With MSVC compile the catching code with /EHs: plain /EHsc takes every extern "C"
 * function for one that never throws.
 *
 * THREADS. No function starts a thread, takes a lock or keeps global state, and every one of them
 * runs on a 128 KB stack. Calls on different data run at the same time freely. On one handle any
 * number of quorinfo, quorsolveTagged, quorsolvePTagged, quoverts, quotris and wobj may overlap,
 * each with output arrays (or file names) of its own; quorfree must not overlap any of them. Same
 * input, same bits out, on one machine, however the calls overlap.
 *
 * ENVIRONMENT. Results are for the default floating-point environment: rounding to nearest, no
 * flush to zero. Another one set by the host changes rounding but breaks nothing. With
 * floating-point traps unmasked (invalid operation, division by zero, overflow) nothing traps
 * within the ranges of numbers that quorWeld, quorctorTagged and wobj state. The C locale
 * (setlocale) has no influence; see wobj for the C++ one.
 */
#ifndef QUOR_H
#define QUOR_H

#include <stdint.h>

/*
 * The version of this header, by which #if can choose. A program that was compiled with one version
 * may meet a library of another: the eleven functions, what they answer and the numbers below stay
 * as they are, before 1.0 too. What may change, and when, is promised in docs/installing.md.
 */
#define QUOR_VERSION_MAJOR 0
#define QUOR_VERSION_MINOR 1
#define QUOR_VERSION_PATCH 0
#define QUOR_VERSION_STRING "0.1.0"

#if defined(_WIN32) && !defined(QUOR_STATIC) /* QUOR_STATIC: linked as a static library */
#if defined(QUOR_BUILDING)
#define QUOR_API __declspec(dllexport)
#else
#define QUOR_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define QUOR_API __attribute__((visibility("default")))
#else
#define QUOR_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * What quorctorTagged and the two solves write through statusOut. The numbers are fixed. The short
 * name is for programs whose own names leave room for it: with QUOR_NO_STATUSCODE defined before
 * this header only QuorStatusCode is declared.
 */
typedef uint32_t QuorStatusCode;
#ifndef QUOR_NO_STATUSCODE
typedef QuorStatusCode StatusCode;
#endif
enum {
  QUOR_SUCCESS = 0,          /* done; also when the factorization failed, which quorinfo tells    */
  QUOR_NO_VERTEX = 1,        /* quorctorTagged: n < 1                                             */
  QUOR_NULL_HANDLE = 1,      /* solves: the handle is null                                        */
  QUOR_EMPTY_HANDLE = 2,     /* solves: the handle has no vertices (quorctorTagged makes no such) */
  QUOR_REPEATED_CORNER = 23, /* quorctorTagged: a triangle has two equal corner indices          */
  QUOR_UNUSED_VERTEX = 24,   /* quorctorTagged: m < 1, or a vertex that no triangle uses          */
  QUOR_NULL_ARRAY = 25       /* quorctorTagged: vertices, triangles or tags is null               */
};

/* What quorinfo returns. The numbers are fixed. */
enum {
  QUOR_INFO_SUCCESS = 0,         /* factorized                                                   */
  QUOR_INFO_NUMERICAL_ISSUE = 1, /* a pivot was exactly zero: solves give 0 at free vertices      */
  QUOR_INFO_NO_CONVERGENCE = 2,  /* kept for completeness, does not occur                        */
  QUOR_INFO_INVALID_INPUT = 3,   /* kept for completeness, does not occur                        */
  QUOR_INFO_NULL_HANDLE = 7      /* the handle is null                                           */
};

/*
 * Welds an indexed mesh whose points may be repeated (typically every triangle owning three).
 *
 * Two points whose differences dx, dy, dz satisfy
 *
 *   ((dx*dx + dy*dy) + dz*dz) < tolerance*tolerance,
 *
 * both sides computed in double, become one vertex, and so do the ends of every chain of such
 * pairs. The rule is exact: a pair at exactly the tolerance stays apart, nothing is snapped or
 * averaged. A vertex takes the coordinates of its point of lowest index, and vertices are numbered
 * in the order of these points, so outPointMap[0] is always 0. With tolerance 0 (or one whose
 * square underflows to 0) nothing merges, not even identical points; with +infinity all points
 * merge whose distances are finite. A point with a NaN or infinite coordinate merges with nothing.
 * Points that no triangle uses become vertices like all others.
 *
 * A triangle is dropped when two of its corners have become one vertex, or when an earlier kept
 * triangle has the same three vertices in whatever order. Kept triangles keep their order and
 * their corner order.
 *
 * Time: one pass with a hash table where most points repeat others and the tolerance is well below
 * the spacing of the vertices, as in most soups; else about that of a sort, about three times as
 * long. Surfaces that are almost, but not quite, within the tolerance of each other take up to
 * about ten times the sort for a million points, and grow with about the 4/3rd power of their
 * number; with the square of it where they come nearer to the tolerance than a 1e-12th of it, or
 * where the tolerance is outside 1e-140 .. 1e140. No choice of coordinates or triangles makes the
 * hash tables slow.
 *
 *   pointCount        number of points, 0 or more
 *   points            in   3*pointCount coordinates
 *   triangleCount     number of triangles, 0 or more
 *   triangles         in   3*triangleCount point indices, each in 0 .. pointCount-1
 *   outVertices       out  room for 3*pointCount; 3 * *outVertexCount are written
 *   outTriangles      out  room for 3*triangleCount; 3 * *outTriangleCount are written
 *   outPointMap       out  pointCount entries: the vertex that each point became
 *   outVertexCount    out  number of vertices
 *   outTriangleCount  out  number of kept triangles
 *   tolerance         absolute distance, 0 or more; -0.0 and +infinity are fine
 *
 * Returns 0 on success. Returns 1, and writes nothing at all, when a count is negative or the
 * tolerance is negative or NaN. With pointCount 0 it sets both counts to 0 (a null count pointer
 * is skipped, in this case only) and returns 0 without looking at the triangles.
 *
 * Floating-point traps: none for finite coordinates of at most 3e153 and a tolerance of at most
 * 1e154 or +infinity; triangles without an area are fine.
 *
 * In place is fine: outVertices may be points, outTriangles may be triangles. No other overlap.
 * When an exception leaves, the counts may be 0 already and the output arrays partly written.
 */
QUOR_API int32_t quorWeld(int32_t pointCount, const double* points, int32_t triangleCount,
                          const int32_t* triangles, double* outVertices, int32_t* outTriangles,
                          int32_t* outPointMap, int32_t* outVertexCount, int32_t* outTriangleCount,
                          double tolerance);

/*
 * Builds a solver for the mesh: copies it, assembles its stiffness matrix (linear finite elements,
 * the cotangent Laplacian with positive diagonal) and factorizes the part that belongs to the free
 * vertices, once. Vertices tagged 1, 2 or 3 are prescribed, all others are free.
 *
 * The handle keeps everything in solver order: the prescribed vertices first, in the caller's
 * order, then the free vertices in reverse order of the caller. quoverts, quotris and wobj speak
 * solver order, everything else the caller's. With p prescribed vertices before it, vertex i of n
 * stands in solver order at
 *
 *   p              if it is prescribed
 *   p + (n-1-i)    if it is free
 *
 *   n              number of vertices, 1 or more
 *   vertices       in   3n coordinates
 *   m              number of triangles, 1 or more
 *   triangles      in   3m vertex indices, each in 0 .. n-1
 *   tags           in   n tags
 *   prescribedOut  out  number of prescribed vertices; may be null
 *   statusOut      out  the status, see below; not null
 *   handleOut      out  the handle, null unless the status is 0; not null
 *
 * Always returns 1: look at the status. The checks, in this order:
 *
 *   n < 1                                        status  1, *prescribedOut 0
 *   m < 1                                        status 24, *prescribedOut 0
 *   vertices, triangles or tags null             status 25, *prescribedOut 0
 *   a triangle with two equal corner indices     status 23, *prescribedOut counts as on success
 *   a vertex that no triangle uses               status 24, *prescribedOut counts as on success
 *
 * The shape of the triangles is not checked: one of no area puts infinities or NaNs into the
 * matrix, and then into the solutions, while the status stays 0; or finite nonsense, where the
 * differences of points on a line are rounded to those of a tiny triangle. So does a set of free
 * vertices that no edges connect to a prescribed one: the matrix is singular; quorinfo says 1 if a
 * pivot came out as exactly 0, otherwise the field there is meaningless.
 *
 * The unit of length is free: the solver is meant for coordinates of at most 1e76 and triangles
 * whose heights are at least 1e-76 and at least a 1e-14th of the largest coordinate. In this range
 * nothing overflows or traps, as long as prescribed values and sources are at most 1e200, and
 * another power of two as the unit changes no bit of a field. Fourth powers of lengths occur: a
 * little beyond the range digits are lost, and with triangles above 1e78 or below 1e-81 free values
 * are infinite or NaN, the status being 0 all the same.
 *
 * Throws std::length_error("vector") when 3n or 9m has no place in the 32-bit indices of the
 * matrices (n > 1,431,655,765 or m > 238,609,294), before any array is read; and when the ordering
 * or the factor would need more than 2,147,483,647 entries, before the factor is computed. On any
 * exception *handleOut is null, *prescribedOut is 0 and *statusOut is untouched.
 *
 * Large problems are factorized with the widest vector instructions that the machine has, which
 * changes the time and not a bit of the result.
 *
 * The arrays are not referenced after the call. Release the handle with quorfree.
 */
QUOR_API uint32_t quorctorTagged(int32_t n, const double* vertices, int32_t m,
                                 const int32_t* triangles, const int32_t* tags,
                                 uint32_t* prescribedOut, QuorStatusCode* statusOut,
                                 void** handleOut);

/*
 * Tells whether the factorization succeeded: QUOR_INFO_SUCCESS or one of the other QUOR_INFO_
 * numbers; QUOR_INFO_NULL_HANDLE for a null handle. Ask once after quorctorTagged.
 */
QUOR_API uint32_t quorinfo(const void* handle);

/*
 * Computes the field that takes the given values at the prescribed vertices and is harmonic at the
 * free ones: the temperature of a plate that is kept at given temperatures at its prescribed
 * vertices. Costs one pass over the stored factor.
 *
 *   handle            the solver
 *   prescribedValues  in   n values, caller's order; only those of prescribed vertices are read
 *   fieldOut          out  n values, caller's order; may be the array prescribedValues
 *   statusOut         out  0; 1 if the handle is null, 2 if it is empty, and then nothing else is
 *                          read or written; not null
 *
 * Prescribed vertices get their value back bit for bit. NaN and infinity enter the arithmetic like
 * any value; so do numbers below 2.2e-308 (denormal ones), with which some processors compute up to
 * twenty times slower. After a failed factorization (quorinfo not 0) all free vertices get 0.0. The
 * status is written last; on an exception (memory) nothing is written.
 */
QUOR_API void quorsolveTagged(const void* handle, const double* prescribedValues, double* fieldOut,
                              QuorStatusCode* statusOut);

/*
 * As quorsolveTagged, with a source: at the free vertices the field x solves K x = -s, where K is
 * the stiffness matrix and s the given source values. They enter as they are, not weighted by area
 * or mass, and with the minus sign: a positive source value lowers the field.
 *
 *   sourceValues      in   n values, caller's order; only those of free vertices are read
 *   fieldOut          out  n values; may be the array prescribedValues or sourceValues
 */
QUOR_API void quorsolvePTagged(const void* handle, const double* prescribedValues,
                               const double* sourceValues, double* fieldOut,
                               QuorStatusCode* statusOut);

/*
 * Hands out the handle's copy of the vertices: 3n coordinates in solver order, valid and unchanged
 * until quorfree, to be read only. Returns n. A null handle returns 0 and leaves *verticesOut.
 */
QUOR_API uint64_t quoverts(const void* handle, const double** verticesOut);

/*
 * Hands out the handle's copy of the triangles: 3m vertex indices in solver order, triangles and
 * corners in the caller's order, valid and unchanged until quorfree, to be read only. Returns the
 * number of VERTICES, exactly as quoverts does; the number of triangles is the m that the caller
 * passed. A null handle returns 0 and leaves *trianglesOut.
 */
QUOR_API uint64_t quotris(const void* handle, const int32_t** trianglesOut);

/*
 * Writes the handle's mesh and a field as two files, baseName + ".obj" and baseName + ".mtl", that
 * any viewer shows as colours: the field is the first texture coordinate, the material "Heat" maps
 * the image "viridis.PNG" over it. The smallest value stands at the right end of the image (u = 1),
 * the largest at the left end (u = 0). Put the image beside the two files, and let the viewer clamp
 * the texture rather than repeat it.
 *
 *   handle    the solver; null: nothing happens
 *   field     in  one value per vertex, in SOLVER order: reorder what a solve returned
 *   baseName  in  path without extension. It is repeated as it stands in the OBJ's "mtllib" line,
 *                 so a viewer finds the material only when baseName has no directory: change to the
 *                 directory first, or move both files afterwards.
 *
 * Existing files are replaced. Numbers have six significant digits.
 *
 * The field is meant to be finite, its range (largest value less smallest) neither 0 nor below
 * 6e-309 nor above 1.79e308; of other fields no u can be relied on, and with floating-point traps
 * unmasked they trap. If all values are equal every u is NaN, and a NaN or infinite value has a NaN
 * u. A NaN also hides values from the search for the smallest and the largest: first or last in the
 * field it makes every u NaN, elsewhere some u may leave 0 .. 1. With +infinity, or a range that
 * overflows, the finite u are 1; with -infinity all are NaN; a range below 6e-309 gives NaN and
 * -infinity.
 *
 * Each line ends in a line feed alone, on Windows too, and is flushed when it is written. A file
 * that cannot be opened is reported by one line on the standard error stream; an OBJ written before
 * stays. Nothing reports a disk that runs full.
 *
 * The streams use the global C++ locale of the moment (std::locale::global): keep it at the classic
 * one, or numbers come out with its decimal comma and digit grouping.
 *
 * Throws std::length_error("vector") after the first two lines when the handle has no vertices
 * (quorctorTagged makes no such) or more than 715,827,882. When an exception leaves, the files hold
 * what had been written by then.
 */
QUOR_API void wobj(const void* handle, const double* field, const char* baseName);

/*
 * Releases the handle and all it holds; a null handle is ignored. Exactly once per handle; the
 * addresses that quoverts and quotris handed out are invalid afterwards.
 */
QUOR_API void quorfree(void* handle);

/*
 * Packs an integer in -1 .. 65534 into a point of the unit sphere around +z, for hosts that can
 * carry directions but not labels. All 65,536 values survive the way through floats exactly, and
 * so does the point mirrored through the origin.
 *
 * Returns 0. Returns -1 and writes nothing if an out pointer is null; returns -1 and writes 0.0 to
 * all three if the value is out of range.
 */
QUOR_API int32_t encode_integer_to_sphere(int32_t value, float* xOut, float* yOut, float* zOut);

/*
 * Unpacks the integer from a point made by encode_integer_to_sphere, or from its mirror image
 * (-x, -y, -z). Any other point gives some integer in -1 .. 65534, never a failure; -1 is also what
 * was encoded as -1.
 */
QUOR_API int32_t decode_integer_from_sphere(float x, float y, float z);

#ifdef __cplusplus
}
#endif

#endif
