"""An add-on for Blender: temperatures on the active mesh, between vertex groups that are hot and cold.

Install it (Edit > Preferences > Add-ons > Install...), make the vertex groups "hot" and "cold", then
Object > Heat Map. Esc cancels while it solves. The result is an object of its own, with a colour
attribute, a legend, and a material that shows it. Change values in the panel that appears at the lower
left: the same groups are not solved anew. The ZIP of a release has the Python module quor inside. For this
file alone, README.md says where to put the module.
"""

import math
import threading

import blf
import bpy
import gpu
import numpy as np
from gpu_extras.batch import batch_for_shader

try:
    if __package__:  # from the ZIP of a release, which has the module inside
        from . import quor
    else:
        import quor
except ImportError as missing:
    quor, why_not = None, (
        f"the module quor cannot be loaded ({missing}): put the folder quor, with the library in it, into "
        f"{bpy.utils.user_resource('SCRIPTS')}/addons/modules and start Blender again; README.md says more")

bl_info = {"name": "Heat Map", "blender": (3, 4, 0), "version": (1, 1, 0), "category": "Object",
           "location": "Object > Heat Map", "description": "Temperatures between two vertex groups"}

FREE, COLD, HOT = 0, 1, 2  # the higher one wins where they meet
WITHIN = 0.01  # the tolerance that is offered, as a share of the difference of hot and cold


class Soup:
    """What is read of a mesh object as its modifiers leave it: coordinates in its own frame, triangles,
    edges, tags of vertices. Raises ValueError, which says what is wrong."""

    def __init__(self, item, hot, cold):
        evaluated = item.evaluated_get(bpy.context.evaluated_depsgraph_get())
        mesh = evaluated.to_mesh(preserve_all_data_layers=True, depsgraph=bpy.context.evaluated_depsgraph_get())
        try:
            self.read(mesh)
            for tag, name in ((COLD, cold), (HOT, hot)):
                self.tag(item, mesh, tag, name)
        finally:
            evaluated.to_mesh_clear()
        for tag, name in ((COLD, cold), (HOT, hot)):
            if not (self.tags[self.edges] == tag).all(axis=1).any():
                raise ValueError(f'the vertex group "{name}" of {item.name} has no edge: add a second vertex '
                                 "beside one of it, for the field around single vertices depends on the mesh alone")

    def read(self, mesh):
        mesh.calc_loop_triangles()
        self.points = np.empty((len(mesh.vertices), 3))
        mesh.vertices.foreach_get("co", self.points.ravel())
        self.triangles = np.empty((len(mesh.loop_triangles), 3), np.int32)
        mesh.loop_triangles.foreach_get("vertices", self.triangles.ravel())
        self.edges = np.empty((len(mesh.edges), 2), np.int32)
        mesh.edges.foreach_get("vertices", self.edges.ravel())
        self.tags = np.full(len(self.points), FREE, np.int32)

    def tag(self, item, mesh, tag, name):
        group = item.vertex_groups.get(name)
        if group is None:
            raise ValueError(f'{item.name} has no vertex group "{name}"')
        inside = [v.index for v in mesh.vertices if any(g.group == group.index for g in v.groups)]
        if not inside:
            raise ValueError(f'the vertex group "{name}" of {item.name} is empty')
        self.tags[inside] = tag

    def key(self):
        """Equal for equal content."""
        return tuple(array.tobytes() for array in (self.points, self.triangles, self.edges, self.tags))


def edge_numbers(edges, count):
    """One number for each edge, whichever end comes first."""
    return edges.min(axis=1).astype(np.int64) * count + edges.max(axis=1)


class Model:
    """The field on a mesh with these vertices hot and cold. Fields are linear in what is prescribed, so one
    that is 1 and 0 there gives all others.

    progress  called with the fraction done, 0 .. 1; cancels if it returns a true value
    """

    def __init__(self, soup, progress=None, within=None):
        diagonal = quor.check(soup.points, soup.triangles).diagonal
        welded = quor.weld(soup.points, soup.triangles, 1e-6 * diagonal)
        clean = quor.clean(welded.vertices, welded.triangles)
        became = np.where(welded.point_map >= 0, clean.vertex_map[welded.point_map], -1)
        tags, count = np.zeros(len(clean.vertices), np.int32), len(clean.vertices)
        np.maximum.at(tags, became[became >= 0], soup.tags[became >= 0])

        edges = became[soup.edges]  # of those, the ones that the mesh still has
        edges = edges[(edges >= 0).all(axis=1) & (edges[:, 0] != edges[:, 1])]
        sides = clean.triangles[:, [0, 1, 1, 2, 2, 0]].reshape(-1, 2)
        edges = edges[np.isin(edge_numbers(edges, count), edge_numbers(sides, count))]
        ends = tags[edges]
        prescribed = (ends[:, 0] == ends[:, 1]) & (ends[:, 0] != FREE)
        corners = tags[clean.triangles]
        inside = (corners == corners[:, :1]).all(axis=1)
        values = np.select([inside & (corners[:, 0] == HOT), inside & (corners[:, 0] == COLD)], [1.0, 0.0], np.nan)
        solved = quor.solve_within(
            clean.vertices, clean.triangles, within or WITHIN, share_of_span=True, triangle_values=values,
            edges=edges[prescribed], edge_values=(ends[prescribed, 0] == HOT).astype(float), progress=progress)
        self.vertices, self.triangles = solved.vertices, solved.triangles
        self.unit_field, self.unit_error = solved.field.clip(0, 1), solved.error
        self.is_reached = solved.is_reached
        self.jump_radius = solved.jump_radius if len(solved.jumps) else 0

    def solve(self, hot_value, cold_value):
        """The temperature at each vertex."""
        return cold_value + (hot_value - cold_value) * self.unit_field

    def error(self, hot_value, cold_value):
        """By how much it may differ from the exact one, as estimated."""
        return abs(hot_value - cold_value) * self.unit_error

    def warnings(self):
        """What the error does not cover, in words."""
        return (["The tolerance is not reached."] if not self.is_reached else []) + (
            [f"Nothing is promised within {self.jump_radius:.3g} of where hot and cold meet."]
            if self.jump_radius else [])


def error_text(error):
    """Two digits, rounded up."""
    if error > 0:
        step = 10 ** (math.floor(math.log10(error)) - 1)
        error = math.ceil(error / step - 1e-9) * step
    return f"\u00b1 {error:.2g}"


def take_gloss_away(inputs):
    """Of a material, by its inputs. Blender 4.0 gave one of them another name."""
    for name, value in (("Roughness", 1), ("Specular", 0), ("Specular IOR Level", 0)):
        if name in inputs:
            inputs[name].default_value = value


def material():
    """Shows the colour attribute."""
    made = bpy.data.materials.get("Heat Map")
    if made is None:
        made = bpy.data.materials.new("Heat Map")
        made.use_nodes = True
        nodes = made.node_tree.nodes
        colour = nodes.new("ShaderNodeVertexColor")
        surface = next(node for node in nodes if node.type == "BSDF_PRINCIPLED")
        colour.layer_name = "heat"
        take_gloss_away(surface.inputs)
        made.node_tree.links.new(colour.outputs["Color"], surface.inputs["Base Color"])
    return made


def show(item, model, hot_value, cold_value):
    """Puts the result into an object beside the item: the last one again, if there is one."""
    name, field = f"{item.name} heat", model.solve(hot_value, cold_value)
    low, high = min(hot_value, cold_value), max(hot_value, cold_value)
    mesh = bpy.data.meshes.new(name)
    mesh.from_pydata(model.vertices.tolist(), [], model.triangles.tolist())
    mesh.materials.append(material())
    temperatures = mesh.attributes.new("temperature", "FLOAT", "POINT")
    temperatures.data.foreach_set("value", field.astype(np.float32))
    colours = mesh.color_attributes.new("heat", "BYTE_COLOR", "POINT")
    rgba = quor.colours(np.append(field, [low, high]))[:-2]
    colours.data.foreach_set("color_srgb", (rgba / 255).astype(np.float32).ravel())
    mesh.color_attributes.active_color = mesh.color_attributes["heat"]
    result = bpy.data.objects.get(name)
    if result is None:
        result = bpy.data.objects.new(name, mesh)
        item.users_collection[0].objects.link(result)
    else:
        old, result.data = result.data, mesh
        bpy.data.meshes.remove(old)
    result.matrix_world = item.matrix_world
    result["heat_map"] = [low, high, model.error(hot_value, cold_value)]  # for the legend
    result.hide_set(False)
    item.hide_set(True)
    show_colours_in_solid_shading()
    return result


def show_colours_in_solid_shading():
    """Solid shading is grey unless it is told to show attributes; flat, so that they are the legend's."""
    for screen in bpy.data.screens:
        for area in screen.areas:
            if area.type == "VIEW_3D":
                shading = area.spaces.active.shading
                shading.color_type, shading.light = "VERTEX", "FLAT"


class Legend:
    """A bar with numbers at the right of each 3D view, for the result that is active or else visible."""

    handler = None

    @staticmethod
    def lines(context):
        """From the lowest number to the highest, and the error; nothing if no result is to be seen."""
        items = [item for item in (context.object, *context.visible_objects) if item and item.visible_get()]
        found = next((item["heat_map"] for item in items if "heat_map" in item), None)
        if found is None:
            return []
        low, high, error = found
        return [f"{low + share * (high - low):.4g}" for share in (0, 0.25, 0.5, 0.75, 1)] + [error_text(error)]

    @classmethod
    def draw(cls):
        lines = cls.lines(bpy.context)
        if not lines:
            return
        size = bpy.context.preferences.system.ui_scale
        left, bottom, height = bpy.context.region.width - 110 * size, 60 * size, bpy.context.region.height / 3
        shares = np.linspace(0, 1, 65)
        rgba = np.repeat(quor.colours(shares) / 255, 2, axis=0)
        corners = [(left + x, bottom + share * height) for share in shares for x in (0, 16 * size)]
        name = "SMOOTH_COLOR" if bpy.app.version >= (4, 0, 0) else "2D_SMOOTH_COLOR"
        shader = gpu.shader.from_builtin(name)
        batch_for_shader(shader, "TRI_STRIP", {"pos": corners, "color": rgba.tolist()}).draw(shader)
        blf.color(0, 1, 1, 1, 1)
        blf.size(0, 13 * size) if bpy.app.version >= (4, 0, 0) else blf.size(0, round(13 * size), 72)
        for number, text in enumerate(lines[:-1]):
            blf.position(0, left + 24 * size, bottom + height * number / 4 - 4 * size, 0)
            blf.draw(0, text)
        blf.position(0, left, bottom - 26 * size, 0)
        blf.draw(0, lines[-1])


class HeatMap(bpy.types.Operator):
    """Computes temperatures between two vertex groups"""

    bl_idname, bl_label, bl_options = "object.heat_map", "Heat Map", {"REGISTER", "UNDO"}

    hot: bpy.props.StringProperty(name="Hot group", default="hot")
    cold: bpy.props.StringProperty(name="Cold group", default="cold")
    hot_value: bpy.props.FloatProperty(name="Hot", default=80)
    cold_value: bpy.props.FloatProperty(name="Cold", default=20)
    within: bpy.props.FloatProperty(name="Within %", default=100 * WITHIN, min=0.01, max=10)
    last = None  # (what the model was built of, the model)

    @classmethod
    def poll(cls, context):
        return context.object is not None and context.object.type == "MESH" and context.mode == "OBJECT"

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
            if quor is None:
                raise ValueError(why_not)
            self.soup = Soup(self.item, self.hot, self.cold)
        except ValueError as error:
            self.report({"ERROR"}, f"Heat Map: {error}")
            return False
        return True

    def build(self):
        """Touches nothing of Blender's, so that it may run in a thread."""
        try:
            key = self.soup.key(), self.within
            if HeatMap.last is None or HeatMap.last[0] != key:
                HeatMap.last = None
                HeatMap.last = key, Model(self.soup, self.go_on, self.within / 100)
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
        show(self.item, model, self.hot_value, self.cold_value)
        error = error_text(model.error(self.hot_value, self.cold_value))
        self.report({"WARNING" if model.warnings() else "INFO"}, " ".join([f"Heat Map: {error}.", *model.warnings()]))
        return {"FINISHED"}


def menu(self, _context):
    self.layout.operator(HeatMap.bl_idname)


def register():
    bpy.utils.register_class(HeatMap)
    bpy.types.VIEW3D_MT_object.append(menu)
    if not bpy.app.background:
        Legend.handler = bpy.types.SpaceView3D.draw_handler_add(Legend.draw, (), "WINDOW", "POST_PIXEL")


def unregister():
    if Legend.handler:
        bpy.types.SpaceView3D.draw_handler_remove(Legend.handler, "WINDOW")
        Legend.handler = None
    bpy.types.VIEW3D_MT_object.remove(menu)
    bpy.utils.unregister_class(HeatMap)
