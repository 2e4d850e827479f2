"""Renders an OBJ file as VTK imports it, nothing set but where the camera stands:

    render_in_vtk.py PNG OBJ POSITION FOCUS ANGLE
"""

import pathlib
import sys

import vtk

png, obj, position, focus, angle = sys.argv[1:]
renderer, window, importer = vtk.vtkRenderer(), vtk.vtkRenderWindow(), vtk.vtkOBJImporter()
window.OffScreenRenderingOn()
window.SetSize(600, 400)
window.AddRenderer(renderer)
importer.SetFileName(obj)
importer.SetFileNameMTL(str(pathlib.Path(obj).with_suffix(".mtl")))
importer.SetTexturePath(str(pathlib.Path(obj).parent))
importer.SetRenderWindow(window)
importer.Update()
camera = renderer.GetActiveCamera()
camera.SetPosition([float(number) for number in position.split(",")])
camera.SetFocalPoint([float(number) for number in focus.split(",")])
camera.SetViewUp(0, 0, 1)
camera.SetViewAngle(float(angle))
renderer.ResetCameraClippingRange()
window.Render()
image, writer = vtk.vtkWindowToImageFilter(), vtk.vtkPNGWriter()
image.SetInput(window)
writer.SetFileName(png)
writer.SetInputConnection(image.GetOutputPort())
writer.Write()
