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
            float a = 0, b = 0, c = 0;
            if (label < -1 || label > 65534)
                throw new ArgumentOutOfRangeException(nameof(label), label,
                                                      "is not in -1 .. 65534");
            Native.Call((out NativeError error) => Native.quorkitEncodeToSphere(
                label, out a, out b, out c, out error));
            x = a;
            y = b;
            z = c;
        }

        /// <summary>Unpacks the label from a vector made by <see cref="Encode"/>, or from its
        /// mirror image. Any other vector gives some label.</summary>
        public static int Decode(float x, float y, float z) =>
            Native.quorkitDecodeFromSphere(x, y, z);
    }
}
