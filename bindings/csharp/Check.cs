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

        // The length must be a multiple of three; returns how many threes.
        internal static int Triples<T>(T[] array, string name)
        {
            if (array == null)
                throw new ArgumentNullException(name);
            if (array.Length % 3 != 0)
                throw new ArgumentException($"has {array.Length} entries, no multiple of 3", name);
            return array.Length / 3;
        }

        internal static int Triangles(int[] triangles, int vertexCount)
        {
            var count = Triples(triangles, nameof(triangles));
            foreach (var index in triangles)
            {
                if ((uint)index >= (uint)vertexCount)
                    throw new ArgumentOutOfRangeException(nameof(triangles), index,
                                                          $"is not in 0 .. {vertexCount - 1}");
            }
            return count;
        }
    }
}
