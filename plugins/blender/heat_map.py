"""An add-on for Blender: temperatures on the active mesh, between vertex groups that are hot and cold.

Install it (Edit > Preferences > Add-ons > Install...), make the vertex groups "hot" and "cold", then
Object > Heat Map. Esc cancels while it builds. The result is an object of its own, with a colour
attribute and a material that shows it. Change values in the panel that appears at the lower left: the
same groups are not built anew. It needs the Python module quor; README.md tells where it may lie.
"""

import threading

import bpy
import numpy as np
import quor

bl_info = {"name": "Heat Map", "blender": (3, 4, 0), "version": (1, 0, 0), "category": "Object",
           "location": "Object > Heat Map", "description": "Temperatures between two vertex groups"}

FREE, COLD, HOT = 0, 1, 2  # the higher one wins where they meet
EDGES_PER_DIAGONAL = 64  # flat faces have no vertices inside, and a field can only bend at vertices


class Soup:
    """What is read of a mesh object: coordinates in its own frame, triangles, tags of vertices."""

    def __init__(self, item, hot, cold):
        mesh = item.data
        mesh.calc_loop_triangles()
        self.points = np.empty((len(mesh.vertices), 3))
        mesh.vertices.foreach_get("co", self.points.ravel())
        self.triangles = np.empty((len(mesh.loop_triangles), 3), np.int32)
        mesh.loop_triangles.foreach_get("vertices", self.triangles.ravel())
        self.tags = np.full(len(self.points), FREE, np.int32)
        for tag, name in ((COLD, cold), (HOT, hot)):
            group = item.vertex_groups.get(name)
            if group is None:
                raise ValueError(f'{item.name} has no vertex group "{name}"')
            inside = [v.index for v in mesh.vertices if any(g.group == group.index for g in v.groups)]
            if not inside:
                raise ValueError(f'the vertex group "{name}" of {item.name} is empty')
            self.tags[inside] = tag

    def key(self):
        """Equal for equal content."""
        return self.points.tobytes(), self.triangles.tobytes(), self.tags.tobytes()


class Model:
    """A refined and factorized mesh, ready for solving.

    progress  called with the fraction done, 0 .. 1; cancels if it returns a true value
    """

    def __init__(self, soup, progress=None):
        diagonal = quor.check(soup.points, soup.triangles).diagonal
        welded = quor.weld(soup.points, soup.triangles, 1e-6 * diagonal)
        tags = np.zeros(len(welded.vertices), np.int32)
        np.maximum.at(tags, welded.point_map, soup.tags)
        clean = quor.clean(welded.vertices, welded.triangles)
        was = np.flatnonzero(clean.vertex_map >= 0)
        kept = np.zeros(len(clean.vertices), np.int32)
        kept[clean.vertex_map[was]] = tags[was]
        mesh = quor.refine(clean.vertices, clean.triangles, diagonal / EDGES_PER_DIAGONAL)
        self.vertices, self.triangles = mesh.vertices, mesh.triangles
        self.tags = np.full(len(mesh.vertices), FREE, np.int32)
        self.tags[:len(kept)] = kept
        for tag in (COLD, HOT):  # new vertices of triangles that lie in a group as a whole
            inside = (kept[clean.triangles] == tag).all(axis=1)
            self.tags[mesh.triangles[inside[mesh.triangle_origins]]] = tag
        self.solver = quor.Solver(mesh.vertices, mesh.triangles, self.tags, progress)

    def solve(self, hot_value, cold_value):
        """The temperature at each vertex."""
        values = np.select([self.tags == HOT, self.tags == COLD], [hot_value, cold_value], 0.0)
        return self.solver.solve(values)


def material():
    """Shows the colour attribute."""
    made = bpy.data.materials.get("Heat Map")
    if made is None:
        made = bpy.data.materials.new("Heat Map")
        made.use_nodes = True
        nodes = made.node_tree.nodes
        colour, surface = nodes.new("ShaderNodeVertexColor"), nodes["Principled BSDF"]
        colour.layer_name = "heat"
        surface.inputs["Roughness"].default_value, surface.inputs["Specular"].default_value = 1, 0
        made.node_tree.links.new(colour.outputs["Color"], surface.inputs["Base Color"])
    return made


def show(item, model, field):
    """Puts the result into an object beside the item: the last one again, if there is one."""
    name = f"{item.name} heat"
    mesh = bpy.data.meshes.new(name)
    mesh.from_pydata(model.vertices.tolist(), [], model.triangles.tolist())
    mesh.materials.append(material())
    temperatures = mesh.attributes.new("temperature", "FLOAT", "POINT")
    temperatures.data.foreach_set("value", field.astype(np.float32))
    colours = mesh.color_attributes.new("heat", "BYTE_COLOR", "POINT")
    colours.data.foreach_set("color_srgb", (quor.colours(field) / 255).astype(np.float32).ravel())
    result = bpy.data.objects.get(name)
    if result is None:
        result = bpy.data.objects.new(name, mesh)
        item.users_collection[0].objects.link(result)
    else:
        old, result.data = result.data, mesh
        bpy.data.meshes.remove(old)
    result.matrix_world = item.matrix_world
    item.hide_set(True)
    return result


class HeatMap(bpy.types.Operator):
    """Computes temperatures between two vertex groups"""

    bl_idname, bl_label, bl_options = "object.heat_map", "Heat Map", {"REGISTER", "UNDO"}

    hot: bpy.props.StringProperty(name="Hot group", default="hot")
    cold: bpy.props.StringProperty(name="Cold group", default="cold")
    hot_value: bpy.props.FloatProperty(name="Hot", default=80)
    cold_value: bpy.props.FloatProperty(name="Cold", default=20)
    last = None  # (what the model was built of, the model)

    @classmethod
    def poll(cls, context):
        return context.object is not None and context.object.type == "MESH"

    def execute(self, context):
        """All at once: from scripts, and when values are changed afterwards."""
        if not self.begin(context):
            return {"CANCELLED"}
        self.build()
        return self.finish(context)

    def invoke(self, context, _event):
        """From the menu: in a thread, with a timer that looks how far it is."""
        if not self.begin(context):
            return {"CANCELLED"}
        self.thread = threading.Thread(target=self.build)
        self.thread.start()
        self.timer = context.window_manager.event_timer_add(0.05, window=context.window)
        context.window_manager.modal_handler_add(self)
        return {"RUNNING_MODAL"}

    def modal(self, context, event):
        if event.type == "ESC":
            self.is_cancelled = True
        if self.thread.is_alive():
            context.workspace.status_text_set(f"Heat Map: {self.fraction:.0%}, Esc cancels")
            return {"PASS_THROUGH"}
        context.workspace.status_text_set(None)
        context.window_manager.event_timer_remove(self.timer)
        return self.finish(context)

    def begin(self, context):
        self.item, self.problem, self.fraction, self.is_cancelled = context.object, None, 0, False
        try:
            self.soup = Soup(self.item, self.hot, self.cold)
        except ValueError as error:
            self.report({"ERROR"}, str(error))
        return hasattr(self, "soup")

    def build(self):
        """Touches nothing of Blender's, so that it may run in a thread."""
        try:
            key = self.soup.key()
            if HeatMap.last is None or HeatMap.last[0] != key:
                HeatMap.last = None
                HeatMap.last = key, Model(self.soup, self.go_on)
        except (Exception, MemoryError) as error:
            self.problem = "cancelled" if isinstance(error, quor.Cancelled) else str(error) or repr(error)

    def go_on(self, fraction):
        self.fraction = fraction
        return self.is_cancelled

    def finish(self, context):
        if self.problem:
            self.report({"INFO" if self.is_cancelled else "ERROR"}, f"Heat Map: {self.problem}")
            return {"CANCELLED"}
        model = HeatMap.last[1]
        show(self.item, model, model.solve(self.hot_value, self.cold_value))
        return {"FINISHED"}


def menu(self, _context):
    self.layout.operator(HeatMap.bl_idname)


def register():
    bpy.utils.register_class(HeatMap)
    bpy.types.VIEW3D_MT_object.append(menu)


def unregister():
    bpy.types.VIEW3D_MT_object.remove(menu)
    bpy.utils.unregister_class(HeatMap)
