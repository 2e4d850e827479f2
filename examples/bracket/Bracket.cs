using System;
using System.Globalization;
using System.IO;
using System.Linq;
using Quor;

static class Bracket
{
    // The nine coordinates of each triangle. Binary STL: 80 bytes, a count, and for each triangle
    // twelve floats, of which the first three are its normal, and two bytes.
    static double[] ReadStl(string path)
    {
        var bytes = File.ReadAllBytes(path);
        var points = new double[9 * BitConverter.ToInt32(bytes, 80)];
        for (var k = 0; k < points.Length; k++)
            points[k] = BitConverter.ToSingle(bytes, 84 + k / 9 * 50 + 12 + k % 9 * 4);
        return points;
    }

    static void Main()
    {
        var points = ReadStl("bracket.stl");
        var triangles = Enumerable.Range(0, points.Length / 3).ToArray();  // each owns its points
        var soup = Mesh.Weld(points, triangles, 1e-4);
        var part = Mesh.Clean(soup.Vertices, soup.Triangles);

        var x = part.Triangles.Select(corner => part.Vertices[3 * corner]).ToArray();
        double low = x.Min(), high = x.Max();
        var values = new double[x.Length / 3];  // degrees; NaN: free
        for (var t = 0; t < values.Length; t++)
        {
            double a = x[3 * t], b = x[3 * t + 1], c = x[3 * t + 2];
            values[t] = Math.Max(a, Math.Max(b, c)) < low + 0.001 ? 80
                : Math.Min(a, Math.Min(b, c)) > high - 0.001 ? 30 : double.NaN;
        }

        var result = Mesh.SolveWithin(new Problem
        {
            Vertices = part.Vertices,
            Triangles = part.Triangles,
            TriangleValues = values,
            Tolerance = 0.01,
            IsShareOfSpan = true
        });
        Mesh.Write(result.Vertices, result.Triangles, result.Field, "bracket", "viridis.PNG");
        var error = result.Error.ToString("F2", CultureInfo.InvariantCulture);
        File.WriteAllText("bracket.json", "{\"quor\": 1, \"unit\": \"\\u00b0C\", " +
            $"\"minimum\": 30, \"maximum\": 80, \"error\": {error}}}");
        Console.WriteLine($"{result.Triangles.Length / 3} triangles, estimated error {error} degrees");
    }
}
