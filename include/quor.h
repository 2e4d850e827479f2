/*
 * quor - numeric geometry on triangle meshes, for plug-ins of CAD hosts.
 *
 * The eleven functions solve for a field, such as a temperature, on a surface mesh:
 *
 *   1. weld a triangle soup                       quorWeld
 *   2. build a Laplace solver on a tagged mesh    quorctorTagged, quorinfo, quorfree
 *   3. solve for a field, any number of times     quorsolveTagged, quorsolvePTagged
 *   4. read the stored mesh back                  quoverts, quotris
 *      write mesh and field as a coloured OBJ     wobj
 *
 * Two more functions carry a label in a direction: encode_integer_to_sphere,
 * decode_integer_from_sphere.
 *
 * The order of use:
 *
 *   quorWeld -> quorctorTagged -> quorinfo -> quorsolveTagged ... -> wobj -> quorfree
 *
 * The equation is Laplace's, or Poisson's, on the surface, with linear finite elements. The inside
 * of a solid takes no part. This header is valid C99 and C++, includes only <stdint.h>, and is the
 * whole manual.
 *
 * A first plug-in is easier to write with quorkit.h. It checks its arguments, returns statuses
 * instead of exceptions, and takes and returns fields in the caller's order.
 *
 * ARRAYS. Coordinates are three doubles per vertex: x y z x y z ... Triangles are three 0-based
 * vertex indices each: a b c a b c ... Tags and values have one entry per vertex. A tolerance has
 * the unit of the coordinates, whatever that is. Every array belongs to the caller. The library
 * reads inputs only during the call. The caller allocates the outputs with the room that each
 * function states, and the library only writes them.
 *
 * WHAT IS CHECKED. Counts and the pointers named below are checked, and nothing else. A corner
 * index outside the mesh, an array that is too short and a handle after quorfree are undefined
 * behaviour. NaN, infinite and very large values are never refused. Each function says what they
 * lead to.
 *
 * EXCEPTIONS. Out of memory throws std::bad_alloc. A size that cannot be represented throws
 * std::length_error with the text "vector"; each function says which sizes. By then the call has
 * released all its memory and written no status, and an existing handle is unharmed. C code can
 * call the functions, but only C++ can catch the exceptions. On Windows the caller must also be
 * compiled by the same kind of compiler: MSVC does not catch what a DLL made with mingw-w64 throws.
 * With MSVC, compile the catching code with /EHs: under plain /EHsc every extern "C" function
 * counts as one that never throws.
 *
 * THREADS. No function starts a thread, takes a lock or keeps global state. Each runs on a stack of
 * 128 KB. Calls on different data may overlap freely. On one handle all functions but quorfree may
 * overlap, each call with its own output arrays or file names. Calls of quorfree must not overlap
 * any other call on the handle. The same input gives the same bits, however calls overlap, on every
 * platform that docs/platforms.md lists.
 *
 * ENVIRONMENT. Results are for the default floating-point environment: rounding to nearest, no
 * flush to zero. Another environment changes rounding but breaks nothing. quorWeld, quorctorTagged
 * and wobj state ranges of numbers. Within them nothing traps, even if the host has unmasked the
 * traps for invalid operation, division by zero and overflow. The C locale (setlocale) has no
 * influence; wobj says what the C++ locale does.
 */
#ifndef QUOR_H
#define QUOR_H

#include <stdint.h>

/*
 * The version of this header, for #if. A program compiled with one version may load a library of
 * another. The eleven functions, their results and the numbers below never change, not even before
 * 1.0. See docs/installing.md for what else may change, and when.
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
 * What quorctorTagged and the two solves write through statusOut. The numbers are fixed. Define
 * QUOR_NO_STATUSCODE before this header if your program has another StatusCode: then only
 * QuorStatusCode is declared.
 */
typedef uint32_t QuorStatusCode;
#ifndef QUOR_NO_STATUSCODE
typedef QuorStatusCode StatusCode;
#endif
enum {
  QUOR_SUCCESS = 0,          /* done; quorinfo says whether the factorization succeeded           */
  QUOR_NO_VERTEX = 1,        /* quorctorTagged: n < 1                                             */
  QUOR_NULL_HANDLE = 1,      /* solves: the handle is null                                        */
  QUOR_EMPTY_HANDLE = 2,     /* solves: the handle has no vertices; does not occur                */
  QUOR_REPEATED_CORNER = 23, /* quorctorTagged: a triangle has two equal corner indices          */
  QUOR_UNUSED_VERTEX = 24,   /* quorctorTagged: m < 1, or a vertex that no triangle uses          */
  QUOR_NULL_ARRAY = 25       /* quorctorTagged: vertices, triangles or tags is null               */
};

/* What quorinfo returns. The numbers are fixed. */
enum {
  QUOR_INFO_SUCCESS = 0,         /* factorized                                                   */
  QUOR_INFO_NUMERICAL_ISSUE = 1, /* a pivot was exactly zero: solves give 0 at free vertices      */
  QUOR_INFO_NO_CONVERGENCE = 2,  /* reserved, does not occur                                     */
  QUOR_INFO_INVALID_INPUT = 3,   /* reserved, does not occur                                     */
  QUOR_INFO_NULL_HANDLE = 7      /* the handle is null                                           */
};

/*
 * Welds an indexed mesh whose points may be repeated, typically three per triangle.
 *
 * Two points are near when their differences dx, dy, dz satisfy
 *
 *   ((dx*dx + dy*dy) + dz*dz) < tolerance*tolerance,
 *
 * both sides computed in double. Near points become one vertex. The two ends of every chain of near
 * points become one too. The rule is exact: a pair at exactly the tolerance stays apart, and
 * nothing is snapped or averaged.
 *
 * A vertex takes the coordinates of its point of lowest index. Vertices are numbered in the order
 * of these points, so outPointMap[0] is always 0. Points that no triangle uses become vertices too.
 *
 *   tolerance 0, or its square underflows to 0    nothing merges, not even identical points
 *   tolerance +infinity                           all points at finite distances merge
 *   a NaN or infinite coordinate                  the point merges with nothing
 *
 * A triangle is dropped when two of its corners have become one vertex. It is also dropped when an
 * earlier kept triangle has the same three vertices in any order. Kept triangles keep their order
 * and their corner order.
 *
 * Time: one pass with a hash table for most soups. In these most points are repeated, and the
 * tolerance is well below the spacing of the vertices. Otherwise about three times as long, like a
 * sort. Surfaces that lie just beyond the tolerance of each other take up to ten times the sort for
 * a million points. Their time grows with the power 4/3 of the number of points. It grows with the
 * square if they come nearer to the tolerance than a 1e-12th of it, or if the tolerance is outside
 * 1e-140 .. 1e140. No coordinates or triangles make the hash tables slow.
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
 *   tolerance         absolute distance, 0 or more; -0.0 and +infinity are allowed
 *
 * Returns 0 on success. Returns 1 and writes nothing if a count is negative, or if the tolerance is
 * negative or NaN. If pointCount is 0, it sets both counts to 0, ignores the triangles and returns
 * 0. Only then may a count pointer be null: it is skipped.
 *
 * Floating-point traps: none for finite coordinates of at most 3e153 and a tolerance of at most
 * 1e154 or +infinity, whatever the shape of the triangles.
 *
 * Aliasing: outVertices may be points, and outTriangles may be triangles. Nothing else may overlap.
 * After an exception the counts may be 0 and the output arrays partly written.
 */
QUOR_API int32_t quorWeld(int32_t pointCount, const double* points, int32_t triangleCount,
                          const int32_t* triangles, double* outVertices, int32_t* outTriangles,
                          int32_t* outPointMap, int32_t* outVertexCount, int32_t* outTriangleCount,
                          double tolerance);

/*
 * Builds a solver for a mesh. It copies the mesh, assembles its stiffness matrix and factorizes,
 * once, the block that belongs to the free vertices. The matrix is that of linear finite elements:
 * the cotangent Laplacian with a positive diagonal. Vertices tagged 1, 2 or 3 are prescribed, all
 * others are free. The three tags act alike.
 *
 * The handle keeps everything in solver order. The prescribed vertices come first, in the caller's
 * order, then the free vertices in the reverse of it. Only quoverts, quotris and wobj use solver
 * order. With p prescribed vertices before it, vertex i of n has this place in solver order:
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
 * Two faults of a mesh spoil the field while the status stays 0:
 *
 * Degenerate triangles. The shape of triangles is not checked. A triangle of zero area puts
 * infinities or NaNs into the matrix and the solutions. If rounding turns it into a tiny triangle,
 * the result is finite but meaningless.
 *
 * Free vertices that no edges connect to a prescribed one. The matrix is then singular. quorinfo
 * returns 1 if a pivot was exactly 0; otherwise the field on that component is meaningless.
 *
 * Units of length are free. The solver is meant for coordinates of at most 1e76. The heights of
 * triangles are to be at least 1e-76 and at least a 1e-14th of the largest coordinate. In this
 * range nothing overflows or traps if prescribed values and sources are at most 1e200. Changing the
 * unit by a power of two changes no bit of a field. A little beyond the range digits are lost,
 * because fourth powers of lengths occur. With triangles above 1e78 or below 1e-81 free values are
 * infinite or NaN, and the status is still 0.
 *
 * Throws std::length_error("vector") before it reads any array if n > 1,431,655,765 or m >
 * 238,609,294. The matrices have 32-bit indices. Throws the same before it computes the factor if
 * the ordering or the factor would need more than 2,147,483,647 entries. On any exception
 * *handleOut is null, *prescribedOut is 0 and *statusOut is untouched.
 *
 * Large problems are factorized with the widest vector instructions of the machine. They change the
 * time and no bit of the result.
 *
 * The handle refers to none of the arrays. Release it with quorfree.
 */
QUOR_API uint32_t quorctorTagged(int32_t n, const double* vertices, int32_t m,
                                 const int32_t* triangles, const int32_t* tags,
                                 uint32_t* prescribedOut, QuorStatusCode* statusOut,
                                 void** handleOut);

/*
 * Returns whether the factorization succeeded: QUOR_INFO_SUCCESS or another QUOR_INFO_ number, and
 * QUOR_INFO_NULL_HANDLE for a null handle. Ask once after quorctorTagged.
 */
QUOR_API uint32_t quorinfo(const void* handle);

/*
 * Computes the field that has the given values at the prescribed vertices and is harmonic at the
 * free ones. Think of a thin plate whose prescribed vertices are kept at given temperatures. The
 * cost is one pass over the stored factor.
 *
 *   handle            the solver
 *   prescribedValues  in   n values, caller's order; only those of prescribed vertices are read
 *   fieldOut          out  n values, caller's order; may be the array prescribedValues
 *   statusOut         out  0; 1 if the handle is null, 2 if it is empty; not null
 *
 * With status 1 or 2 nothing else is read or written. Prescribed vertices get their value back bit
 * for bit. NaN, infinity and denormal numbers enter the arithmetic like any other value. Some
 * processors handle denormal numbers, below 2.2e-308, up to twenty times slower. After a failed
 * factorization (quorinfo is not 0) all free vertices get 0.0. The status is written last. On an
 * exception nothing is written.
 */
QUOR_API void quorsolveTagged(const void* handle, const double* prescribedValues, double* fieldOut,
                              QuorStatusCode* statusOut);

/*
 * Like quorsolveTagged, with a source: at the free vertices the field x solves K x = -s. K is the
 * stiffness matrix and s holds the source values. They are used as given, not weighted by area or
 * mass. Mind the sign: a positive source value lowers the field.
 *
 *   handle            the solver
 *   prescribedValues  in   n values, caller's order; only those of prescribed vertices are read
 *   sourceValues      in   n values, caller's order; only those of free vertices are read
 *   fieldOut          out  n values; may be the array prescribedValues or sourceValues
 *   statusOut         out  as for quorsolveTagged; not null
 */
QUOR_API void quorsolvePTagged(const void* handle, const double* prescribedValues,
                               const double* sourceValues, double* fieldOut,
                               QuorStatusCode* statusOut);

/*
 * Returns n and writes the address of the handle's vertices: 3n coordinates in solver order. The
 * array belongs to the handle, stays unchanged until quorfree, and must not be written to. A null
 * handle returns 0 and leaves *verticesOut.
 */
QUOR_API uint64_t quoverts(const void* handle, const double** verticesOut);

/*
 * Writes the address of the handle's triangles: 3m vertex indices in solver order, with triangles
 * and corners in the caller's sequence. The array belongs to the handle, stays unchanged until
 * quorfree, and must not be written to. Returns the number of VERTICES, exactly as quoverts does;
 * the number of triangles is the m that the caller passed. A null handle returns 0 and leaves
 * *trianglesOut.
 */
QUOR_API uint64_t quotris(const void* handle, const int32_t** trianglesOut);

/*
 * Writes the handle's mesh and a field as two files, baseName + ".obj" and baseName + ".mtl". A
 * viewer that supports textures shows the field as colours. The field is the first texture
 * coordinate u, and the material "Heat" maps the image "viridis.PNG" over it. The smallest value is
 * at the right end of the image (u = 1), the largest at the left end (u = 0). Put the image next to
 * the two files, and let the viewer clamp the texture, not repeat it.
 *
 *   handle    the solver; null: nothing happens
 *   field     in  one value per vertex, in SOLVER order: reorder what a solve returned
 *   baseName  in  path without extension. The "mtllib" line of the OBJ repeats it as it is, so a
 *                 viewer finds the material only if baseName has no directory: change to the
 *                 directory first, or move both files afterwards.
 *
 * Existing files are replaced. Numbers have six significant digits.
 *
 * The field should be finite, and its range (largest minus smallest value) between 6e-309 and
 * 1.79e308. For any other field do not rely on u; with floating-point traps unmasked it traps.
 *
 *   all values equal          every u is NaN
 *   a NaN or infinite value   its u is NaN
 *   NaN first or last         every u is NaN
 *   NaN elsewhere             some u may lie outside 0 .. 1: a NaN hides values from the search
 *   +infinity, or overflow    every finite u is 1
 *   -infinity                 every u is NaN
 *   a range below 6e-309      u may be NaN or -infinity
 *
 * Each line ends in a line feed, on Windows too, and is flushed when it is written. If a file
 * cannot be opened, one line on the standard error stream says so; an OBJ written before stays. A
 * full disk is not reported.
 *
 * The streams use the current global C++ locale (std::locale::global). Keep it at the classic
 * locale, or numbers get its decimal comma and digit grouping.
 *
 * Throws std::length_error("vector") after the first two lines if the handle has no vertices, which
 * quorctorTagged never makes, or more than 715,827,882. After an exception the files hold what had
 * been written by then.
 */
QUOR_API void wobj(const void* handle, const double* field, const char* baseName);

/*
 * Releases the handle and all it holds; null is ignored. Call it exactly once per handle. The
 * addresses from quoverts and quotris are invalid afterwards.
 */
QUOR_API void quorfree(void* handle);

/*
 * Packs an integer in -1 .. 65534 into a point of the unit sphere around +z, for hosts that can
 * carry directions but not labels. All 65,536 values survive the conversion to float and back
 * exactly, also from the point mirrored through the origin.
 *
 * Returns 0. Returns -1 and writes nothing if an out pointer is null. Returns -1 and writes 0.0 to
 * all three if the value is out of range.
 */
QUOR_API int32_t encode_integer_to_sphere(int32_t value, float* xOut, float* yOut, float* zOut);

/*
 * Unpacks the integer from a point made by encode_integer_to_sphere, or from its mirror image (-x,
 * -y, -z). Any other point gives some integer in -1 .. 65534, and never a failure. The value -1 is
 * also the result for a point that encodes -1.
 */
QUOR_API int32_t decode_integer_from_sphere(float x, float y, float z);

#ifdef __cplusplus
}
#endif

#endif
