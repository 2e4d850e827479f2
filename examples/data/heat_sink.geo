// A finned heat sink, all lengths in millimetres: a base plate with four mounting holes, nine fins
// with rounded tips, and a round boss below that takes the heat. Mesh it with gmsh:
//
//   gmsh -2 -format stl -o heat_sink.stl heat_sink.geo
SetFactory("OpenCASCADE");

length    = 60;   // x
width     = 50;   // y
base      = 4;    // base plate thickness, z from 0 to base
fins      = 9;
fin       = 2;    // fin thickness, y
finHeight = 22;   // above the base plate
finInset  = 9;    // fins leave this much of the plate free at both x ends
hole      = 2.2;  // mounting hole radius
boss      = 11;   // boss radius
bossDepth = 6;    // below the plate, z from -bossDepth to 0
If (!Exists(edge))
  edge = 1.2;  // target edge length of the triangles
EndIf

Box(1) = {-length/2, -width/2, 0, length, width, base};
Cylinder(2) = {0, 0, -bossDepth, 0, 0, bossDepth + base/2, boss};

solids[] = {2};
pitch = (width - fin) / (fins - 1);
For i In {0 : fins - 1}
  y = -width/2 + i*pitch;
  box = newv;
  Box(box) = {-length/2 + finInset, y, base/2, length - 2*finInset, fin, finHeight + base/2 - fin/2};
  top = newv;
  Cylinder(top) = {-length/2 + finInset, y + fin/2, base + finHeight - fin/2, length - 2*finInset, 0, 0, fin/2};
  solids[] += {box, top};
EndFor
body[] = BooleanUnion{ Volume{1}; Delete; }{ Volume{solids[]}; Delete; };

holes[] = {};
For sx In {-1 : 1 : 2}
  For sy In {-1 : 1 : 2}
    h = newv;
    Cylinder(h) = {sx*(length/2 - finInset/2), sy*(width/2 - 6), -1, 0, 0, base + 2, hole};
    holes[] += h;
  EndFor
EndFor
part[] = BooleanDifference{ Volume{body[]}; Delete; }{ Volume{holes[]}; Delete; };

Mesh.MeshSizeMin = edge;
Mesh.MeshSizeMax = edge;
Mesh.Algorithm = 6;   // Frontal-Delaunay: even, well-shaped triangles
Mesh.Binary = 1;
