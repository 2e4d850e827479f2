/*
 * quorkit - for raw meshes, and for hosts that cannot catch C++ exceptions.
 *
 *   1. weld a triangle soup                      quorkitWeld, quorkitWeldOrigins
 *   2. find what is wrong with a mesh            quorkitCheck, quorkitCheckRegions
 *   3. repair it, make it fine enough            quorkitClean, quorkitRefine, ...Graded, ...To,
 *                                                quorkitFlip
 *   4. build a solver, with progress and cancel  quorkitConstruct, quorkitSolverInfo
 *   5. solve for a field, any number of times    quorkitSolve, quorkitSolveMany, quorkitAreas
 *   6. or solve within a tolerance, in one call  quorkitSolveWithin
 *   7. what flows where                          quorkitFlow, quorkitGradients
 *   8. show it                                   quorkitColours, quorkitWrite
 *
 * quorkitFaces finds the faces of bare triangles. quorkitEncodeToSphere and quorkitDecodeFromSphere
 * carry a label in a direction.
 *
 * The equation is Laplace's, or Poisson's, on the surface mesh. The solid inside takes no part.
 * That suits sheet metal and shells, values interpolated over a surface, harmonic weights,
 * smoothing and parametrization, and a first look at a solid. It is stationary, without convection.
 *
 * The order of use, on the tessellation of a CAD part:
 *
 *   quorkitWeld -> quorkitClean -> quorkitRefine -> tags -> quorkitCheck -> quorkitConstruct
 *     -> quorkitSolve ... -> quorkitColours or quorkitWrite -> quorkitFreeSolver
 *
 * or, for one field that keeps a tolerance:
 *
 *   quorkitWeld -> quorkitClean -> quorkitSolveWithin -> quorkitWrite -> quorkitFreeSolution
 *
 * The shared library quorkit holds all of it and needs no other library, not even quor. This header
 * is valid C99 and C++, includes only <stdint.h>, and is the whole manual. The rules of welding,
 * building and solving are in quor.h. They hold here too, to the last bit.
 *
 * ARRAYS. As in quor.h: coordinates are three doubles per vertex, triangles three 0-based vertex
 * indices each, tags and values one entry per vertex. All of them are in the caller's order, except
 * in QuorkitSolverInfo. The library reads inputs only during the call. Where the caller cannot know
 * a size, the library allocates the result, such as a QuorkitMesh, and a function such as
 * quorkitFreeMesh releases it. An output must not overlap another array unless the function says
 * that it may.
 *
 * WHAT IS CHECKED. Null pointers, negative counts, corner indices outside the mesh, and numbers
 * without a meaning are refused. An array of no entries may be null. Three faults are undefined
 * behaviour: an array that is too short, an address that no function gave, and anything used after
 * it was freed.
 *
 * FAILURE. Every function that can fail returns a status. It names the argument and the entry, or
 * the file, in the QuorkitError that is its last argument. It throws nothing and keeps no memory.
 * On failure it writes no output, with two exceptions. When out of memory, quorkitWeld,
 * quorkitWeldOrigins and quorkitSolve may leave their arrays partly written. And a pointer to what
 * could not be made is set to null, unless its own address is null.
 *
 * THREADS. No function starts a thread, takes a lock or keeps global state, and every one of them
 * runs on a 128 KB stack. Calls on different data may overlap freely. On one solver any number of
 * quorkitSolverInfo, quorkitSolve and quorkitSolveMany may overlap, each with its own output
 * arrays. quorkitFreeSolver must not overlap any of them. The same input gives the same bits on
 * every platform that docs/platforms.md lists.
 */
#ifndef QUORKIT_H
#define QUORKIT_H

#include <stdint.h>

/* The version of this header, for #if. It is always that of quor.h. docs/installing.md says what
   may change, and when. */
#define QUORKIT_VERSION_MAJOR 0
#define QUORKIT_VERSION_MINOR 1
#define QUORKIT_VERSION_PATCH 0
#define QUORKIT_VERSION_STRING "0.1.0"

#if defined(_WIN32) && !defined(QUOR_STATIC) /* QUOR_STATIC: linked as a static library */
#if defined(QUORKIT_BUILDING)
#define QUORKIT_API __declspec(dllexport)
#else
#define QUORKIT_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define QUORKIT_API __attribute__((visibility("default")))
#else
#define QUORKIT_API
#endif

#ifdef __cplusplus
#define QUORKIT_OPTIONAL = nullptr /* the argument may be left out */
extern "C" {
#else
#define QUORKIT_OPTIONAL
#endif

/* What the functions return. The numbers are fixed. */
typedef int32_t QuorkitStatus;
enum {
  QUORKIT_DONE = 0,
  QUORKIT_BAD_ARGUMENT = 1,  /* an argument is not what the function asks for                    */
  QUORKIT_OUT_OF_MEMORY = 2, /* out of memory                                                    */
  QUORKIT_TOO_LARGE = 3,     /* the result does not fit 32-bit indices                           */
  QUORKIT_FILE = 4,          /* a file cannot be read or written, or the disk is full            */
  QUORKIT_CANCELLED = 5,     /* the progress callback cancelled                                  */
  QUORKIT_INTERNAL = 6       /* a fault of the library: please report it                         */
};

/* The English text of a status, one line without a full stop; never null, lives for ever. */
QUORKIT_API const char* quorkitStatusText(QuorkitStatus status);

/* What is wrong with a bad argument. The numbers are fixed; more may be added. */
enum {
  QUORKIT_NULL = 1,             /* a pointer is null where there is something to read or write    */
  QUORKIT_OUT_OF_RANGE = 2,     /* a number, a count or an index                                  */
  QUORKIT_NOT_FINITE = 3,       /* a NaN or an infinity                                           */
  QUORKIT_DEGENERATE = 4,       /* a triangle of zero area                                        */
  QUORKIT_NO_EDGE = 5,          /* two vertices that no edge of the mesh joins                    */
  QUORKIT_REPEATED_CORNER = 23, /* a triangle with two equal corners; the number is quor.h's      */
  QUORKIT_UNUSED_VERTEX = 24    /* a vertex that no triangle uses; the number is quor.h's         */
};

/*
 * Why a call failed. Every function that can fail takes the address of one as its last argument. It
 * writes there unless the status is QUORKIT_DONE. The address may be null; in C++ the argument may
 * be left out. The error belongs to the caller and holds nothing to be released.
 *
 *   status    what the function returned
 *   reason    of QUORKIT_BAD_ARGUMENT: what is wrong, from the list above; else 0
 *   argument  of QUORKIT_BAD_ARGUMENT: the name of the argument in this header, or of the member of
 *             QuorkitProblem; else "". Never null, lives for ever
 *   index     which entry of the argument: the vertex, triangle, edge or value, from 0. A corner is
 *             reported by its triangle. -1 if the argument has no entries or all are meant
 *   system    of QUORKIT_FILE: the number of the operating system (errno); 0 if unknown
 *   text      one line of English without a full stop: the argument or the file, what was found and
 *             what to do. UTF-8. A path that is too long loses its beginning
 *
 * If several arguments are bad the first one found is reported; which one that is may change.
 */
typedef struct QuorkitError {
  QuorkitStatus status;
  int32_t reason;
  const char* argument;
  int32_t index;
  int32_t system;
  char text[512];
} QuorkitError;

/*
 * Merges points closer than a tolerance, exactly and along chains, and drops collapsed and repeated
 * triangles. Rule, arguments, results and aliasing are those of quorWeld in quor.h. Bad arguments
 * are also null arrays and count pointers, and a corner index outside 0 .. pointCount-1. After
 * QUORKIT_OUT_OF_MEMORY both counts are 0 and the arrays may be partly written.
 */
QUORKIT_API QuorkitStatus quorkitWeld(int32_t pointCount, const double* points,
                                      int32_t triangleCount, const int32_t* triangles,
                                      double* outVertices, int32_t* outTriangles,
                                      int32_t* outPointMap, int32_t* outVertexCount,
                                      int32_t* outTriangleCount, double tolerance,
                                      QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Welds like quorkitWeld, and also returns the input triangle that each kept triangle was. What the
 * caller knows of its triangles, such as the number of the face that each belongs to, then survives
 * the weld:
 *
 *   for (t = 0; t < *outTriangleCount; ++t) newFaces[t] = faces[origins[t]];
 *
 * All arguments but one are those of quorkitWeld, and so are results, aliasing and failure.
 *
 *   outTriangleOrigins  out  room for triangleCount; *outTriangleCount ascending indices of input
 *                            triangles are written. Must not overlap another array
 *
 * Memory: a copy of the input triangles if outTriangles is triangles, else none of its own.
 */
QUORKIT_API QuorkitStatus quorkitWeldOrigins(int32_t pointCount, const double* points,
                                             int32_t triangleCount, const int32_t* triangles,
                                             double* outVertices, int32_t* outTriangles,
                                             int32_t* outPointMap, int32_t* outTriangleOrigins,
                                             int32_t* outVertexCount, int32_t* outTriangleCount,
                                             double tolerance,
                                             QuorkitError* errorOut QUORKIT_OPTIONAL);

/* How often something was found, and the index of the first one; -1 if there is none. */
typedef struct QuorkitFinding {
  int32_t count;
  int32_t first;
} QuorkitFinding;

/* What quorkitCheck writes. "t" stands for findings whose index is a triangle's, "v" a vertex'. */
typedef struct QuorkitReport {
  double longestEdge; /* of the triangles that are sound; 0 if there is none                      */
  double area;        /* the sum of their areas                                                   */
  double diagonal;    /* of the box around all vertices that are finite and used; 0 if none is    */
  QuorkitFinding cornersOutOfRange;  /* t  triangles with a corner outside 0 .. n-1               */
  QuorkitFinding repeatedCorners;    /* t  triangles with two equal corners                       */
  QuorkitFinding notFinite;          /* v  vertices with a NaN or infinite coordinate             */
  QuorkitFinding flatTriangles;      /* t  height at most a millionth of the longest side         */
  QuorkitFinding needles;            /* t  height below a thousandth of the longest side          */
  QuorkitFinding unusedVertices;     /* v  vertices that are a corner of no triangle              */
  QuorkitFinding prescribedVertices; /* v  vertices tagged 1, 2 or 3                              */
  QuorkitFinding pieces;             /* v  parts of the mesh that share no vertex                 */
  QuorkitFinding unprescribedPieces; /* v  pieces without a prescribed vertex                     */
  QuorkitFinding negativeWeights;    /* t  edges of two or more triangles with a negative weight  */
  QuorkitFinding obtuseBorders;      /* t  edges of one triangle with a negative weight           */
  QuorkitFinding isolatedPrescribed; /* v  prescribed, and joined to no other of their region     */
  QuorkitFinding touchingRegions;    /* v  joined to a vertex of another region                   */
} QuorkitReport;

/*
 * Checks a mesh and its tags, whatever they hold. It reports what quorkitConstruct would refuse and
 * what would spoil a field:
 *
 *   cornersOutOfRange, repeatedCorners, unusedVertices  refused. quorkitClean fixes the latter two.
 *   notFinite, flatTriangles  the field is NaN or meaningless. quorkitClean removes the latter.
 *   unprescribedPieces        its field is meaningless: nothing says what it is.
 *   needles                   slow to converge, not wrong. Refining shortens their long sides.
 *
 *   negativeWeights, obtuseBorders  the field may leave the range of the prescribed values near
 *                             there. Without any it cannot.
 *   isolatedPrescribed        the field near the vertex depends on the mesh: a point is too small
 *                             to prescribe a value at. Prescribe an edge or a face.
 *
 * The weight of an edge is half the sum of the cotangents of the angles opposite to it, in its
 * triangles that are sound. A weight above -1e-9 counts as rounding. An edge is reported by its
 * triangle of lowest index. Vertices are joined if they are the ends of an edge. Here all
 * prescribed vertices are one region, so touchingRegions is always 0. quorkitCheckRegions takes
 * several regions.
 *
 * A triangle is counted once, as the first of these that applies: corners out of range, repeated
 * corners, corner not finite, flat, needle. Of a corner that is not finite the vertex is counted.
 * Its height is the one over its longest side. Flat is 2 * area <= 1e-6 * side^2, and a needle is 2
 * * area < 1e-3 * side^2. Connected components, here called pieces, are made of all triangles with
 * three different corners in range, also flat ones. A component is reported by its vertex of lowest
 * index. Memory: about 30 bytes per vertex.
 *
 *   n, vertices   0 or more; 3n coordinates
 *   m, triangles  0 or more; 3m vertex indices, any numbers
 *   tags          in   n tags; null for none yet: prescribedVertices, unprescribedPieces are 0 then
 *   reportOut     out  what was found; not null
 */
QUORKIT_API QuorkitStatus quorkitCheck(int32_t n, const double* vertices, int32_t m,
                                       const int32_t* triangles, const int32_t* tags,
                                       QuorkitReport* reportOut,
                                       QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Checks a mesh like quorkitCheck, with regions in place of tags. A region is a set of vertices
 * whose values are prescribed together, such as a hot face; inside it they may vary. Two findings
 * depend on regions:
 *
 *   isolatedPrescribed  a vertex of a region that no edge joins to another vertex of the region
 *   touchingRegions     a vertex of a region that an edge joins to a vertex of another region.
 * Either the regions touch: then no continuous field exists, and near this vertex both field and
 * flow depend on the mesh. Or they are apart, and no vertex lies between them: then the mesh is too
 * coarse there.
 *
 * To distinguish the two, refine near these vertices and check again: regions that touch still do.
 * Two joined vertices with equal values count as vertices of one region, whatever their numbers.
 *
 *   n, vertices   0 or more; 3n coordinates
 *   m, triangles  0 or more; 3m vertex indices, any numbers
 *   regions       in   n region numbers; a vertex with a negative one is free
 *   values        in   n values, read at vertices of regions; NaN equals no value. Null: no two
 *                      values are equal
 *   reportOut     out  what was found; not null
 */
QUORKIT_API QuorkitStatus quorkitCheckRegions(int32_t n, const double* vertices, int32_t m,
                                              const int32_t* triangles, const int32_t* regions,
                                              const double* values, QuorkitReport* reportOut,
                                              QuorkitError* errorOut QUORKIT_OPTIONAL);

/* A mesh that the library made, with where it comes from. All arrays belong to it, are to be read
   only, and live until quorkitFreeMesh. */
typedef struct QuorkitMesh {
  int32_t vertexCount;
  int32_t triangleCount;
  const double* vertices;         /* 3 * vertexCount coordinates                                  */
  const int32_t* triangles;       /* 3 * triangleCount vertex indices                             */
  const int32_t* triangleOrigins; /* triangleCount: the input triangle that each is a part of     */
  const int32_t* vertexOrigins;   /* 2 * vertexCount: see quorkitClean, quorkitRefine             */
  const int32_t* vertexMap;       /* vertexMapCount: what each input vertex became, -1 if dropped */
  int32_t vertexMapCount;         /* number of input vertices from quorkitClean, else 0           */
  double longestEdge;             /* the length that it was refined to; 0 from quorkitClean       */
  int32_t degenerateCount;        /* what quorkitClean could not remove; else 0                   */
} QuorkitMesh;

/* Releases a mesh; null is ignored. Exactly once per mesh. */
QUORKIT_API void quorkitFreeMesh(const QuorkitMesh* mesh);

/*
 * Makes a mesh fit to be solved on: removes degenerate triangles without opening cracks, and drops
 * vertices that no triangle uses. Degenerate is what quorkitCheck calls flat, and two equal
 * corners.
 *
 * A degenerate triangle is no loss, but its neighbours meet through it. So degenerate triangles are
 * removed one at a time, always the one with the longest side that can be, in one of two ways:
 *
 *   - If its shortest side is at most a millionth of its longest side, that side is contracted to
 *     its end of lower index. Triangles with that side vanish. Each of these is degenerate, or has
 *     no side longer than 1e-5 of the longest side.
 *   - Otherwise, or if that is not allowed, its middle corner lies on its longest side. Each
 *     triangle across that side is split there into two with the same origin. Nothing moves. Each
 *     part has an area, or all its sides are shorter than the one that is split.
 *
 * Neither may take the area of another triangle that stays. Neither may turn such a triangle by
 * more than 60 degrees from the input triangle that it is part of.
 *
 * On any input:
 *
 *   - An edge of two triangles never becomes an edge of one. A closed mesh stays closed. Where a
 *     degenerate triangle reaches the border along its longest side, the border then runs through
 *     its middle corner.
 *   - No part of a triangle with an area turns by more than 60 degrees.
 *   - A triangle that cannot be removed that way stays. degenerateCount says how many did; 0 means
 *     that the mesh is clean.
 *
 * Degenerate triangles that are joined by edges only to each other are dropped. The rest keeps its
 * order: kept vertices ascend, and the parts of a triangle stand where it stood. A clean mesh is
 * returned unchanged. The time is that of a few sorts. Cleaning ends after 64 looks at triangles
 * per triangle; many degenerate triangles around one vertex then stay.
 *
 *   n, vertices   0 or more; 3n coordinates, finite where a triangle uses them
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1
 *   meshOut       out  the mesh, to be released with quorkitFreeMesh; not null
 *
 * In the mesh, both vertexOrigins of a vertex are the input vertex that it was. In vertexMap, which
 * leads the other way, vertices that became one have equal entries. To carry tags along:
 *
 *   for (i = 0; i < n; ++i) if (map[i] >= 0 && tags[i] != 0) newTags[map[i]] = tags[i];
 */
QUORKIT_API QuorkitStatus quorkitClean(int32_t n, const double* vertices, int32_t m,
                                       const int32_t* triangles, const QuorkitMesh** meshOut,
                                       QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Splits a mesh until no edge is longer than a length. The surface does not change. A CAD
 * tessellation has no vertices inside flat faces, only long slivers. Linear elements on it are
 * wrong by several per cent of the field, whatever the solver. A thirty-second of the part's
 * diagonal (QuorkitReport) is a length to begin with.
 *
 * Every edge longer than the length is split at its midpoint, and so on until none is left. Longer
 * means, in double, dx*dx + dy*dy + dz*dz > s*s. Here s is the length, or sixteen rounding steps if
 * they are more: 16 * 2^-52 times the largest absolute coordinate of both ends. The midpoint of x
 * and y is 0.5*x + 0.5*y. An edge whose midpoint is one of its ends is left as well.
 *
 * Whether an edge is split depends only on its two ends, so all its triangles split it alike. The
 * mesh has no hanging vertices unless the input had some.
 *
 * With p, q and r on the midpoints of ab, bc and ca, triangle abc becomes, in this order,
 *
 *   if ab is split          apc pbc
 *   if bc and ca are split  abr bqr rqc if br is shorter than aq, else abq aqr rqc
 *   if all are split        apr pbq pqr rqc
 *
 * and so for the other sides, with the corners rotated. Each part is divided to its end before the
 * next one. All parts have the orientation of their triangle, and the order of the input.
 *
 * Input vertices keep their numbers and bits. New ones follow, in the order in which their edges
 * are first met, those of a triangle as ab, bc, ca.
 *
 *   n, vertices   0 or more; 3n finite coordinates
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1, of a triangle all different
 *   longestEdge   the length, finite and above 0
 *   meshOut       out  the mesh, to be released with quorkitFreeMesh; not null
 *
 * In the mesh, the two vertexOrigins of vertex v are the vertices whose midpoint it is. They are in
 * the mesh's own numbers, both below v, the lower one first. Of an input vertex both are v itself.
 * vertexMap is null. Tags by face are best: give each triangle the tag of its origin, and each
 * vertex those of its triangles,
 *
 *   for (k = 0; k < 3 * mesh->triangleCount; ++k)
 *     if (faceTags[mesh->triangleOrigins[k / 3]] != 0)
 *       tags[mesh->triangles[k]] = faceTags[mesh->triangleOrigins[k / 3]];
 *
 * A midpoint of two prescribed vertices need not be prescribed: its edge may cross a free face.
 * Triangles of the same three vertices, of which quorkitWeld leaves one, are split alike too.
 *
 * Returns QUORKIT_TOO_LARGE for more than 238,609,294 triangles, the most that a solver takes. It
 * also does so if there would be more than 2,147,483,647 vertices, counting one for each new
 * triangle. The refusal comes before the splitting, without memory, and mostly at once, from
 * areas and sides. Near the limit it counts triangles one by one, for up to ten seconds.
 *
 * Ten million triangles take a second or two. Memory, apart from the mesh: 8 to 16 bytes per new
 * vertex.
 */
QUORKIT_API QuorkitStatus quorkitRefine(int32_t n, const double* vertices, int32_t m,
                                        const int32_t* triangles, double longestEdge,
                                        const QuorkitMesh** meshOut,
                                        QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Refines like quorkitRefine, with shorter edges near vertices where a field bends most. On a
 * surface these are the vertices around which angles add up to more than a full turn, as where a
 * fin meets a plate. The field has a singular point there, and its error grows with the edges at
 * it.
 *
 * Every vertex has a size, an input vertex the lesser of its own and longestEdge. An edge is split
 * if it is longer than the lesser size of its ends, as quorkitRefine compares. The size of its
 * midpoint is the lesser size plus a quarter of the edge's length, but not more than longestEdge.
 * Everything else is as in quorkitRefine.
 *
 *   sizes  in  n lengths above 0; infinity where longestEdge will do
 */
QUORKIT_API QuorkitStatus quorkitRefineGraded(int32_t n, const double* vertices, int32_t m,
                                              const int32_t* triangles, double longestEdge,
                                              const double* sizes, const QuorkitMesh** meshOut,
                                              QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Refines like quorkitRefine to about a number of triangles. It finds the length and returns it as
 * longestEdge of the mesh.
 *
 * The result never has more triangles than requested, unless the input has. Then it is the input,
 * unchanged, with the longest edge of the input as longestEdge. Where edges have many different
 * lengths the number is met within a few per cent. On a uniform grid every edge splits at once, so
 * the result may have only a quarter of the requested triangles. The length is found to a
 * thousandth, from the sides of the triangles, in little time compared with the splitting.
 *
 *   triangleCount  the number wanted, 1 .. 238,609,294
 */
QUORKIT_API QuorkitStatus quorkitRefineTo(int32_t n, const double* vertices, int32_t m,
                                          const int32_t* triangles, int32_t triangleCount,
                                          const QuorkitMesh** meshOut,
                                          QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * A progress callback. It is called during quorkitConstruct and quorkitSolveWithin, on the thread
 * that called them, with the fraction of the predicted operations that is done. The first call has
 * 0, before the work begins, and the last has 1. The fraction never decreases, and calls are at
 * least five milliseconds apart.
 *
 * That is often enough to repaint: several times a second with a million triangles, and two or
 * three times with ten million. Copying the mesh and analysing the matrix report nothing before
 * they are done. One case reports less: if the factorization meets a pivot of zero, it starts again
 * without reports. Only meshes that quorkitCheck would report do that: with degenerate triangles,
 * numbers that are not finite, or components without a prescribed vertex.
 *
 *   fraction  0 .. 1
 *   context   what was passed with the function
 *
 * Returns 0 to go on, anything else to cancel. It must return: neither an exception nor a longjmp
 * may leave it. If the library was built by the same kind of compiler, a C++ exception that leaves
 * it is caught and cancels. Otherwise the process ends.
 */
typedef int32_t (*QuorkitProgress)(double fraction, void* context);

/* A solver: opaque, made by quorkitConstruct, released by quorkitFreeSolver. */
typedef struct QuorkitSolver QuorkitSolver;

/*
 * Builds a solver for a mesh and factorizes once, like quorctorTagged. Vertices tagged 1, 2 or 3
 * are prescribed, all others are free. The three tags act alike.
 *
 *   n, vertices   1 or more; 3n coordinates
 *   m, triangles  1 or more; 3m vertex indices in 0 .. n-1, of a triangle all different; every
 *                 vertex is used
 *   tags          in   n tags
 *   progress      called now and then, see QuorkitProgress; null for none
 *   context       handed to progress
 *   solverOut     out  the solver, null unless the status is QUORKIT_DONE; not null
 *
 * Neither the shape of the triangles nor components without a prescribed vertex are checked:
 * quorkitCheck does that. Returns QUORKIT_TOO_LARGE for more than 1,431,655,765 vertices or
 * 238,609,294 triangles. It also does so when the ordering or the factor would need more than
 * 2,147,483,647 entries. The solver refers to none of the arrays.
 */
QUORKIT_API QuorkitStatus quorkitConstruct(int32_t n, const double* vertices, int32_t m,
                                           const int32_t* triangles, const int32_t* tags,
                                           QuorkitProgress progress, void* context,
                                           QuorkitSolver** solverOut,
                                           QuorkitError* errorOut QUORKIT_OPTIONAL);

/* What quorkitSolverInfo writes. The arrays belong to the solver, until quorkitFreeSolver. */
typedef struct QuorkitSolverInfo {
  int32_t vertexCount;
  int32_t triangleCount;
  int32_t prescribedCount;
  uint32_t factorization; /* 0; 1 if a pivot was exactly zero: solves give 0 at free vertices     */
  const double* vertices; /* 3 * vertexCount, in solver order: the prescribed vertices in the
                             caller's order, then the free ones in reverse                        */
  const int32_t* triangles; /* 3 * triangleCount indices in solver order, caller's triangles      */
  const int32_t* order;     /* vertexCount: of each place in solver order the caller's vertex     */
} QuorkitSolverInfo;

/* Returns what a solver holds. `factorization` is what quorinfo returns: ask once. */
QUORKIT_API QuorkitStatus quorkitSolverInfo(const QuorkitSolver* solver, QuorkitSolverInfo* infoOut,
                                            QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Computes the field that has the given values at the prescribed vertices and is harmonic at the
 * free ones, like quorsolveTagged. With source values s it solves K x = -s there, like
 * quorsolvePTagged. A positive source value lowers the field. Multiply a density by quorkitAreas.
 *
 *   prescribedValues  in   n values; only those of prescribed vertices are read
 *   sourceValues      in   n values; only those of free vertices are read; null for none
 *   fieldOut          out  n values; may be either input
 */
QUORKIT_API QuorkitStatus quorkitSolve(const QuorkitSolver* solver, const double* prescribedValues,
                                       const double* sourceValues, double* fieldOut,
                                       QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Solves for several fields at once: column k of the result has every bit that quorkitSolve gives
 * for column k of the inputs. The stored factor is read once for eight columns, so eight fields
 * take two to four times as long as one. Typical columns are the fields of one region each, of
 * which all other fields are sums: docs/solve.md shows how.
 *
 *   columnCount       0 or more
 *   prescribedValues  in   columnCount * n values, column after column; only those of prescribed
 *                          vertices are read
 *   sourceValues      in   columnCount * n values; only those of free vertices are read;
 *                          null for none
 *   fieldsOut         out  columnCount * n values; may be either input
 *
 * After QUORKIT_OUT_OF_MEMORY nothing is written. Memory: 64 bytes per vertex.
 */
QUORKIT_API QuorkitStatus quorkitSolveMany(const QuorkitSolver* solver, int32_t columnCount,
                                           const double* prescribedValues,
                                           const double* sourceValues, double* fieldsOut,
                                           QuorkitError* errorOut QUORKIT_OPTIONAL);

/* Releases a solver; null is ignored. Exactly once per solver. */
QUORKIT_API void quorkitFreeSolver(QuorkitSolver* solver);

/* What quorkitFaces found. All arrays belong to it and live until quorkitFreeFaces. */
typedef struct QuorkitFaces {
  int32_t faceCount;
  int32_t chainCount;
  int32_t edgeCount;
  const int32_t* faces;  /* m: the face of each triangle, 0 .. faceCount-1                        */
  const int32_t* edges;  /* 2 * edgeCount: the ends of each feature edge, the lower vertex first  */
  const int32_t* chains; /* edgeCount: the chain of each feature edge, 0 .. chainCount-1          */
} QuorkitFaces;

/*
 * Finds the faces and edges of a part in its bare triangles, as its CAD system would call them.
 *
 * Planes come first. Connected triangles within 0.1 degrees of one plane are a plane of the part if
 * no neighbour continues them smoothly. They are one too if they have 2.5 times the area and 2.5
 * times the extent of all that do. Everything else is curved: triangles that share an edge are of
 * one face if their normals differ by less than the angle. So fillets do not join a whole part.
 *
 * An edge between two faces, of one triangle, or of more than two is a feature edge. Feature edges
 * form a chain as long as exactly two meet at a vertex and turn by less than the angle. Faces and
 * chains are numbered in the order of their first triangles and edges.
 *
 *   n, vertices   0 or more; 3n finite coordinates
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1, of a triangle all different; weld a
 *                 soup first
 *   angle         in degrees, above 0 and below 90; 30 suits most parts
 *   facesOut      out  the faces, to be released with quorkitFreeFaces; not null
 *
 * This is a good guess, not a proof: tessellations do not say where a face ends. Angles other than
 * 30 use the platform's cosine. Pass the numbers of your CAD system instead where you have them.
 */
QUORKIT_API QuorkitStatus quorkitFaces(int32_t n, const double* vertices, int32_t m,
                                       const int32_t* triangles, double angle,
                                       const QuorkitFaces** facesOut,
                                       QuorkitError* errorOut QUORKIT_OPTIONAL);

/* Releases faces; null is ignored. Exactly once each. */
QUORKIT_API void quorkitFreeFaces(const QuorkitFaces* faces);

/* What quorkitSolveWithin is asked for. Set it to zero first: zero means none, or the default. */
typedef struct QuorkitProblem {
  int32_t n;                /* number of vertices, 1 or more; each is used by a triangle          */
  const double* vertices;   /* 3n finite coordinates                                              */
  int32_t m;                /* number of triangles, 1 or more                                     */
  const int32_t* triangles; /* 3m vertex indices in 0 .. n-1, of a triangle all different         */

  const double*
      triangleValues;         /* m values of prescribed triangles, NaN for free ones; null: none */
  int32_t edgeCount;          /* number of prescribed edges                                      */
  const int32_t* edges;       /* 2 * edgeCount vertices, the ends of edges of the mesh           */
  const double* edgeValues;   /* edgeCount values                                                */
  const double* vertexValues; /* n values of prescribed vertices, NaN for free ones; null: none  */

  const double* sources; /* m source densities, per area; null: none                             */
  const int32_t* faces;  /* m face numbers, any; edges between two stay; null: all are one face  */
  double tolerance;      /* the largest error, above 0                                           */
  int32_t isShareOfSpan; /* 1: the tolerance is a share of the field's span; 0: in its unit      */
  int32_t triangleLimit; /* the most triangles, or 4m if that is more; 0: 4,000,000              */
} QuorkitProblem;

/* Why quorkitSolveWithin has no field. */
enum {
  QUORKIT_SOLVED = 0,
  QUORKIT_ISOLATED_VERTEX = 1, /* `vertex` has a value, but no edge at it is prescribed           */
  QUORKIT_UNPRESCRIBED = 2,    /* nothing is prescribed on the component of `vertex`              */
  QUORKIT_NOT_SOLVABLE = 3     /* the equations have no finite solution: clean the mesh           */
};

/* What quorkitSolveWithin made. All arrays belong to it and live until quorkitFreeSolution. */
typedef struct QuorkitSolution {
  int32_t outcome; /* QUORKIT_SOLVED, or why there is no field: then all counts are 0            */
  int32_t vertex;  /* the vertex of the input that the outcome names, or -1                       */
  int32_t vertexCount;
  int32_t triangleCount;
  const double* vertices;         /* 3 * vertexCount; those of the input come first, bit for bit  */
  const int32_t* triangles;       /* 3 * triangleCount                                            */
  const int32_t* triangleOrigins; /* triangleCount: an input triangle of the same face            */
  const int32_t* vertexOrigins; /* 2 * vertexCount: the vertices whose midpoint each was made as */
  const double* field;          /* vertexCount values                                           */
  double error;                 /* the estimated largest error, in the unit of the field        */
  double tolerance;             /* what was asked for, in the unit of the field                 */
  int32_t isReached;            /* 1 if the error is at most the tolerance                      */
  int32_t rounds;               /* how often it was solved                                      */
  int32_t jumpCount;            /* vertices where regions of different values meet              */
  const int32_t* jumps; /* jumpCount ascending input vertices, where values meet: the field has   */
                        /* the middle of the lowest and the highest there                         */
  double jumpRadius;    /* no error is promised nearer to them than this, nor to the
                           edges along which such regions meet                          */
} QuorkitSolution;

/*
 * Solves for a field and refines the mesh until the estimated error is at most a tolerance
 * everywhere. The field is that of Laplace's or Poisson's equation on the surface of the input
 * mesh.
 *
 * What is prescribed is bound to the input and does not move when the mesh is refined:
 *
 *   triangleValues  the triangle has this value everywhere, with its edges and corners
 *   edgeValues      the edge has this value along its whole length
 *   vertexValues    an edge of the mesh between two vertices with values is prescribed, linearly
 *                   between them
 *
 * A vertex with a value and no such edge has no solution. The field around a single point depends
 * on the mesh, however fine it is. The outcome is then QUORKIT_ISOLATED_VERTEX. Borders without
 * values are insulated.
 *
 * Where regions of different values meet, no continuous field exists. The field there depends on
 * the mesh. No error is promised within jumpRadius, a hundredth of the diagonal, of the jumps and
 * of the edges along which the regions meet.
 *
 * The error is estimated from two solutions, on the mesh and on a finer one. The estimate is meant
 * to be one to four times the largest true error on the surface. It is not a proof. The equations
 * use the weights of the intrinsic Delaunay triangulation, so the shape of the triangles does not
 * spoil the field. Without a source the field never leaves the range of the prescribed values.
 *
 *   problem      in   see QuorkitProblem
 *   progress     called now and then, see QuorkitProgress; null for none
 *   context      handed to progress
 *   solutionOut  out  the solution, to be released with quorkitFreeSolution; null unless the status
 *                     is QUORKIT_DONE; not null
 *
 * A source density is positive where it lowers the field, as in quorkitSolve. If the span is asked
 * for, it is that of the field: the largest value minus the smallest. A degenerate triangle is a
 * bad argument: quorkitClean removes them. If the limit ends the refinement, the solution is the
 * best one so far, with its error, and isReached is 0. The same input gives the same bits.
 */
QUORKIT_API QuorkitStatus quorkitSolveWithin(const QuorkitProblem* problem,
                                             QuorkitProgress progress, void* context,
                                             const QuorkitSolution** solutionOut,
                                             QuorkitError* errorOut QUORKIT_OPTIONAL);

/* Releases a solution; null is ignored. Exactly once per solution. */
QUORKIT_API void quorkitFreeSolution(const QuorkitSolution* solution);

/*
 * Flips edges inside flat faces until the triangles there are Delaunay: of all triangulations of
 * these vertices the one with the largest smallest angle. The surface stays what it is. Long
 * slivers of a CAD tessellation become as well shaped as their vertices allow.
 *
 * An edge is flipped if all of this holds. Its two triangles have the same face number. The four
 * corners are within a millionth of their longest distance of one plane. The angles opposite to the
 * edge add up to more than pi. Edges of one triangle, or of more than two, stay.
 *
 *   n, vertices   0 or more; 3n finite coordinates
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1, of a triangle all different
 *   faces         in   m face numbers, any; edges between two of them stay; null: all are one face
 *   meshOut       out  the mesh, to be released with quorkitFreeMesh; not null
 *
 * In the mesh, vertices keep their numbers and bits, and both vertexOrigins of a vertex are itself.
 * The origin of a flipped triangle is one of the input triangles of the same face.
 */
QUORKIT_API QuorkitStatus quorkitFlip(int32_t n, const double* vertices, int32_t m,
                                      const int32_t* triangles, const int32_t* faces,
                                      const QuorkitMesh** meshOut,
                                      QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Computes the area that belongs to each vertex: a third of each of its triangles. The source value
 * of a density f, such as watts per area, is f times this. The areas sum to that of the mesh.
 *
 *   n, vertices   0 or more; 3n coordinates; NaN and infinity enter the arithmetic like any value
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1
 *   areasOut      out  n areas, 0 where no triangle is
 */
QUORKIT_API QuorkitStatus quorkitAreas(int32_t n, const double* vertices, int32_t m,
                                       const int32_t* triangles, double* areasOut,
                                       QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Computes the total flow through each region, such as the heat that a hot face gives off.
 *
 * The flow through vertex v is entry v of K u, where K is the stiffness matrix and u the field.
 * That is the sum over the edges v-w of the edge's weight times (u_v - u_w). It is positive where
 * the region feeds the surface and negative where it drains it. A region's flow is the sum over its
 * vertices. For a sheet of a thickness and a conductivity, multiply the flow by both to get watts.
 *
 * For a field of quorkitSolve, the flows of all prescribed regions sum to the source values of the
 * free vertices. Without a source they sum to 0. Vertex regions that cover the whole mesh sum to 0.
 * Both hold up to rounding. A flow is more exact than a sum of gradients along the region's border.
 * Where the field is smooth, its error shrinks with the square of the edge length.
 *
 *   n, vertices   0 or more; 3n coordinates, in the range that quor.h gives for quorctorTagged
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1, of a triangle all different
 *   field         in   n values; NaN and infinity enter the arithmetic like any value
 *   regions       in   n region numbers below regionCount; vertices of negative ones are in no
 *                      region. Tags will do, with a regionCount of 4: flow 0 is then that of the
 *                      free vertices
 *   regionCount   0 or more; n, and vertex v in region v, gives the flow through each vertex
 *   flowsOut      out  regionCount flows, 0 for a region without a vertex; must not overlap an
 * input
 *
 * A degenerate triangle makes the flows of its corners' regions meaningless or NaN. Where regions
 * touch, the flow grows without bound as the mesh gets finer: see quorkitCheckRegions. Allocates
 * nothing.
 */
QUORKIT_API QuorkitStatus quorkitFlow(int32_t n, const double* vertices, int32_t m,
                                      const int32_t* triangles, const double* field,
                                      const int32_t* regions, int32_t regionCount, double* flowsOut,
                                      QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Computes the gradient of a field in each triangle. It is the vector in the triangle's plane that
 * points to where the field grows fastest. Its length is the growth per unit of length. Heat flows
 * against it. The field is linear inside a triangle, so its gradient is constant there. It is
 * first-order exact at most: for the total flow through a region use quorkitFlow.
 *
 *   n, vertices   0 or more; 3n coordinates
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1
 *   field         in   n values
 *   gradientsOut  out  3m components, x y z per triangle; must not overlap an input
 *
 * A triangle without area gets NaN. NaN and infinite values enter the arithmetic like any other.
 * No finite coordinates overflow or vanish, whatever their unit. Allocates nothing.
 */
QUORKIT_API QuorkitStatus quorkitGradients(int32_t n, const double* vertices, int32_t m,
                                           const int32_t* triangles, const double* field,
                                           double* gradientsOut,
                                           QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Returns a field as colours, for hosts that colour vertices. There are 256 colours from dark
 * violet (low) to yellow (high), those of the image viridis.PNG that comes with the library. Each
 * is four bytes, red, green, blue and alpha, as a screen shows them (sRGB, not linear); alpha is
 * 255.
 *
 *   n, field  0 or more; n values
 *   low    the value of the first colour, finite; what is below has it too
 *   high   the value of the last colour, finite; what is above has it too; may be below `low`,
 *          which turns the colours round. With low == high equal values are in the middle
 *   rgbaOut  out  4n bytes; NaN becomes the grey 128 128 128 255, which is none of the colours
 */
QUORKIT_API QuorkitStatus quorkitColours(int32_t n, const double* field, double low, double high,
                                         uint8_t* rgbaOut, QuorkitError* errorOut QUORKIT_OPTIONAL);

/*
 * Writes a mesh and a field as an OBJ file, which viewers show as colours, and its material. The
 * text is that of wobj with two differences. The material is named without directory, so that
 * viewers find it. The texture coordinates may keep a margin, and are never NaN.
 *
 * The field is the first texture coordinate u. The largest value is at the left end of the ramp (u
 * = 0), the smallest at its right end (u = 1). Blender, VTK and f3d repeat textures by default,
 * which mixes both ends. With a margin of 0.001 the ends of the field lie a thousandth of its range
 * inside the image, and the colours are right. Where all values are equal u is 0.5.
 *
 *   n, vertices   1 or more; 3n finite coordinates, in the order of the field
 *   m, triangles  0 or more; 3m vertex indices in 0 .. n-1
 *   field     in  n finite values
 *   path      in  where to write, UTF-8, with or without directories, which exist, and with or
 *                 without ".obj" at its end: `path`.obj and `path`.mtl
 *   ramp      in  path of the ramp image, UTF-8, to be copied next to them as viridis.PNG; null: no
 *                 copy. A file that is already there is replaced, unless it is the ramp itself.
 *   margin    fraction of the field's range, 0 .. 1; 0 for none, 0.001 for viewers that repeat
 *
 * Numbers have six significant digits. Coordinates have more, up to 17, where an edge is so short
 * that its ends would coincide. Neither locale nor current directory matters beyond the path. Each
 * file is written whole under a temporary name and then renamed, the OBJ last. After QUORKIT_FILE
 * (no such directory, permission denied, disk full, ramp unreadable) the temporary files are
 * removed and an older OBJ is unchanged. If the renaming failed, material or ramp may be new. Two
 * calls at a time must not write the same path, nor two with a ramp into the same directory.
 */
QUORKIT_API QuorkitStatus quorkitWrite(int32_t n, const double* vertices, int32_t m,
                                       const int32_t* triangles, const double* field,
                                       const char* path, const char* ramp, double margin,
                                       QuorkitError* errorOut QUORKIT_OPTIONAL);

/* Packs a label into a direction and unpacks it, like encode_integer_to_sphere and
   decode_integer_from_sphere of quor.h. A null pointer and a value outside -1 .. 65534 are
   QUORKIT_BAD_ARGUMENT, and nothing is written. Decoding cannot fail. */
QUORKIT_API QuorkitStatus quorkitEncodeToSphere(int32_t value, float* xOut, float* yOut,
                                                float* zOut,
                                                QuorkitError* errorOut QUORKIT_OPTIONAL);
QUORKIT_API int32_t quorkitDecodeFromSphere(float x, float y, float z);

#ifdef __cplusplus
}
#endif

#endif
