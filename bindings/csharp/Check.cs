// What is checked before a call: nulls, lengths, indices.

using System;

namespace Quor
{
    static class Check
    {
        // The length must be this; returns the array.
        internal static T[] Length<T>(T[] array, int length, string name)
        {
            if (array == null)
                throw new ArgumentNullException(name);
            if (array.Length != length)
                throw new ArgumentException($"has {array.Length} entries, not {length}", name);
            return array;
        }

        // An array that may be null.
        internal static void Optional<T>(T[] array, int length, string name)
        {
            if (array != null)
                Length(array, length, name);
        }

        // The length must be a multiple of three; returns how many threes.
        internal static int Triples<T>(T[] array, string name)
        {
            if (array == null)
                throw new ArgumentNullException(name);
            if (array.Length % 3 != 0)
                throw new ArgumentException($"has {array.Length} entries, no multiple of 3", name);
            return array.Length / 3;
        }

        // The message names the triangle too: the index alone may occur anywhere.
        internal static int Triangles(int[] triangles, int vertexCount, string name = "triangles")
        {
            var count = Triples(triangles, name);
            for (var k = 0; k < triangles.Length; k++)
            {
                if ((uint)triangles[k] < (uint)vertexCount)
                    continue;
                var error = new ArgumentOutOfRangeException(
                    name, triangles[k], $"a corner of triangle {k / 3} is not in 0 .. {vertexCount - 1}");
                error.Data["Index"] = k / 3;
                throw error;
            }
            return count;
        }
    }
}
