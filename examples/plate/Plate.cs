using System;
using Quor;

static class Plate
{
    static void Main()
    {
        const int side = 40, m = 2 * side * side;
        int[] dx = { 0, 1, 1, 0, 1, 0 }, dy = { 0, 0, 1, 0, 1, 1 };  // two triangles of a cell
        var points = new double[9 * m];
        var triangles = new int[3 * m];
        for (var point = 0; point < 3 * m; point++)  // every triangle owns its points
        {
            var cell = point / 6;
            points[3 * point] = cell % side + dx[point % 6];
            points[3 * point + 1] = cell / side + dy[point % 6];
            triangles[point] = point;
        }

        var mesh = Mesh.Weld(points, triangles, 1e-6);
        var tags = new int[mesh.Vertices.Length / 3];  // 1 and 2: prescribed, 0: free
        var degrees = new double[tags.Length];         // read where the vertex is prescribed
        for (var i = 0; i < tags.Length; i++)
        {
            double x = mesh.Vertices[3 * i], y = mesh.Vertices[3 * i + 1];
            tags[i] = x == 0 ? 1 : x + y > 2 * side - 8 ? 2 : 0;
            degrees[i] = tags[i] == 2 ? 100 : 20;
        }

        using (var solver = new Solver(mesh.Vertices, mesh.Triangles, tags))
        {
            var field = solver.Solve(degrees);
            solver.Write(solver.ToSolverOrder(field), "plate");
        }
        System.IO.File.WriteAllText("plate.json",  // what the colours mean, for the viewer
            "{\"quor\": 1, \"unit\": \"°C\", \"minimum\": 20, \"maximum\": 100}\n");
    }
}
