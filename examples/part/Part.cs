// Part FILE.stl RAMP: a part from a CAD system, 80 degrees at the low end of x and 30 at the
// other: from the triangles to a coloured OBJ, part.obj, with numbers on its legend, part.json.
using System;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Text;
using Quor;

static class Part
{
    // Binary STL is 80 bytes of anything, a count, and per triangle twelve floats, of which the first three
    // are a normal, and two bytes; the lowest byte comes first. Null if it is not that.
    static double[] ReadBinary(byte[] bytes)
    {
        var count = bytes.Length < 84 ? 0 : BitConverter.ToUInt32(bytes, 80);
        if (count == 0 || bytes.Length != 84 + 50L * count)
            return null;
        var points = new double[9 * count];
        for (var k = 0; k < points.Length; k++)
            points[k] = BitConverter.ToSingle(bytes, 84 + 50 * (k / 9) + 12 + 4 * (k % 9));
        return points;
    }

    // The other STL is text: the coordinates follow the word "vertex", of every corner of a triangle.
    static double[] ReadText(string text)
    {
        var words = text.Split((char[])null, StringSplitOptions.RemoveEmptyEntries);
        var points = Enumerable.Range(0, words.Length).Where(k => words[k] == "vertex")
            .SelectMany(k => new ArraySegment<string>(words, k + 1, 3))
            .Select(word => double.Parse(word, NumberStyles.Float, CultureInfo.InvariantCulture)).ToArray();
        if (points.Length == 0 || points.Length % 9 != 0 || !words.Contains("endsolid"))
            throw new InvalidDataException("the part is not an STL file, or damaged");
        return points;
    }

    // The corners of all triangles.
    static double[] ReadStl(string path)
    {
        var bytes = File.ReadAllBytes(path);
        return ReadBinary(bytes) ?? ReadText(Encoding.ASCII.GetString(bytes));
    }

    // Files have six digits and viewers floats, too few far away from zero: coordinates there become relative
    // to whole numbers near the low corner, which are returned.
    static double[] MoveNearZero(double[] points, double diagonal)
    {
        var origin = new double[3];
        for (var axis = 0; axis < 3; axis++)
        {
            var low = points.Where((value, k) => k % 3 == axis).Min();
            var size = Math.Abs(low);
            origin[axis] = size > 10 * diagonal && size < 1e15 ? Math.Truncate(low) + 0.0 : 0.0;
        }
        for (var k = 0; k < points.Length; k++)
            points[k] -= origin[k % 3];
        return origin;
    }

    // Welded, without flat triangles, and fine enough: no edge longer than a 32nd part of the diagonal.
    static DerivedMesh Prepare(double[] points, out double[] origin)
    {
        var triangles = Enumerable.Range(0, points.Length / 3).ToArray();  // each owns its points
        var report = Mesh.Look(points, triangles);
        if (report.NotFinite.Count > 0)
            throw new InvalidDataException("the part is damaged: a coordinate is not finite");
        var diagonal = report.Diagonal;
        origin = MoveNearZero(points, diagonal);
        var soup = Mesh.Weld(points, triangles, 1e-6 * diagonal);
        var clean = Mesh.Clean(soup.Vertices, soup.Triangles);
        if (clean.Triangles.Length / 3 <= points.Length / 9 / 2)
            throw new InvalidDataException(
                "most triangles have no area: export the part again, near zero or as text");
        return Mesh.Refine(clean.Vertices, clean.Triangles, diagonal / 32);
    }

    // The outermost 2 % at both ends of x: 1 and 2 are prescribed, 0 is free.
    static int[] TagEnds(DerivedMesh mesh)
    {
        var x = mesh.Vertices.Where((value, k) => k % 3 == 0).ToArray();
        double low = x.Min(), high = x.Max();
        return x.Select(value => (value - low) / (high - low))
                .Select(share => share <= 0.02 ? 1 : share >= 0.98 ? 2 : 0).ToArray();
    }

    static void Colour(string path, string ramp)
    {
        var points = ReadStl(path);
        double[] origin;
        var mesh = Prepare(points, out origin);
        var tags = TagEnds(mesh);
        var degrees = tags.Select(tag => tag == 1 ? 80.0 : 30.0).ToArray();  // read where prescribed
        double[] field;
        using (var solver = new Solver(mesh.Vertices, mesh.Triangles, tags))
            field = solver.Solve(degrees);
        Mesh.Write(mesh.Vertices, mesh.Triangles, field, "part", ramp);
        File.WriteAllText("part.json", "{\"quor\": 1, \"field\": \"temperature\", \"unit\": \"°C\", "
                                           + "\"minimum\": 30, \"maximum\": 80, \"origin\": ["
                                           + string.Join(", ", origin.Select(x => x.ToString("F0",
                                               CultureInfo.InvariantCulture))) + "]}\n");
        Console.WriteLine($"part.obj: {field.Length} vertices, {mesh.Triangles.Length / 3} triangles of "
                          + points.Length / 9);
    }

    static int Main(string[] arguments)
    {
        try
        {
            if (arguments.Length != 2)
                throw new ArgumentException("usage: Part FILE.stl viridis.PNG");
            Colour(arguments[0], arguments[1]);
            return 0;
        }
        catch (Exception error)
        {
            Console.Error.WriteLine("part: " + error.Message);
            return 1;
        }
    }
}
