// Integers carried in directions.

using System;

namespace Quor
{
    /// <summary>Labels carried in directions: the integers -1 .. 65534 as unit vectors.</summary>
    public static class SphereLabel
    {
        /// <summary>Packs a label into a unit vector around +z.</summary>
        /// <exception cref="ArgumentOutOfRangeException">The label is not in -1 ..
        /// 65534.</exception>
        public static void Encode(int label, out float x, out float y, out float z)
        {
            if (Native.quorkitEncodeToSphere(label, out x, out y, out z, out _) != 0)
                throw new ArgumentOutOfRangeException(nameof(label), label,
                                                      "is not in -1 .. 65534");
        }

        /// <summary>Unpacks the label from a vector made by <see cref="Encode"/>, or from its
        /// mirror image. Any other vector gives some label.</summary>
        public static int Decode(float x, float y, float z) =>
            Native.quorkitDecodeFromSphere(x, y, z);
    }
}
