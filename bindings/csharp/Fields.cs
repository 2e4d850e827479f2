// What is done with a field: areas, flow, gradients, colours, files.

using System;
using System.IO;

namespace Quor
{
    public static partial class Mesh
    {
        /// <summary>A third of the areas around each vertex, to multiply densities with.</summary>
        /// <exception cref="ArgumentException">As for <see cref="Clean"/>.</exception>
        public static double[] Areas(double[] vertices, int[] triangles)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            var areas = new double[n];
            Native.Call((out NativeError error) => Native.quorkitAreas(
                n, vertices, m, triangles, areas, out error));
            return areas;
        }

        /// <summary>The total flow through each region, such as the heat that a hot face gives off; positive
        /// where the region feeds the surface. See quorkitFlow in quorkit.h.</summary>
        /// <param name="vertices">Three coordinates per vertex.</param>
        /// <param name="triangles">Three different indices per triangle.</param>
        /// <param name="field">One value per vertex.</param>
        /// <param name="regions">One number per vertex, below regionCount; a negative one is in no region.
        /// Tags will do, with a regionCount of 4.</param>
        /// <param name="regionCount">How many flows there are.</param>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length; a number out of
        /// range; equal corners.</exception>
        public static double[] Flow(double[] vertices, int[] triangles, double[] field, int[] regions,
                                    int regionCount)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            Check.Length(field, n, nameof(field));
            Check.Length(regions, n, nameof(regions));
            if (regionCount < 0)
                throw new ArgumentOutOfRangeException(nameof(regionCount), regionCount, "is below 0");
            var flows = new double[regionCount];
            Native.Call((out NativeError error) => Native.quorkitFlow(
                n, vertices, m, triangles, field, regions, regionCount, flows, out error));
            return flows;
        }

        /// <summary>The gradient of a field in each triangle, three components each. Heat flows against
        /// it. NaN in a triangle without area.</summary>
        /// <exception cref="ArgumentException">An array is missing or has the wrong length; an index is out of
        /// range.</exception>
        public static double[] Gradients(double[] vertices, int[] triangles, double[] field)
        {
            var n = Check.Triples(vertices, nameof(vertices));
            var m = Check.Triangles(triangles, n);
            Check.Length(field, n, nameof(field));
            var gradients = new double[triangles.Length];
            Native.Call((out NativeError error) => Native.quorkitGradients(
                n, vertices, m, triangles, field, gradients, out error));
            return gradients;
        }

        /// <summary>A field as red, green, blue and alpha bytes, from dark violet at low to yellow at
        /// high; NaN is grey.</summary>
        /// <exception cref="ArgumentException">The field is missing, an end is not finite.</exception>
        public static byte[] Colours(double[] field, double low, double high)
        {
            if (field == null)
                throw new ArgumentNullException(nameof(field));
            var rgba = new byte[4 * field.Length];
            Native.Call((out NativeError error) => Native.quorkitColours(
                field.Length, field, low, high, rgba, out error));
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
            byte[] file = Native.Utf8(path, nameof(path)),
                image = ramp == null ? null : Native.Utf8(ramp, nameof(ramp));
            Native.Call((out NativeError error) => Native.quorkitWrite(
                n, vertices, m, triangles, field, file, image, margin, out error));
        }
    }
}
