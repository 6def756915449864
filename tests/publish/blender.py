"""Has Blender open published binary files and holds what it shows against what the files say: objects, names, places and
sizes in the world, triangles, materials, cameras and lights. For people who want to know; it needs no display:

    blender -b --factory-startup --python-exit-code 3 -P tests/publish/blender.py -- FILE...
"""

import json
import re
import struct
import sys

import numpy

numpy.bool = bool  # the importer of Blender 3.4 wants it from numpy, which has it no longer

import bpy
from mathutils import Matrix, Quaternion, Vector


def read(path):
    data = open(path, "rb").read()
    length = struct.unpack("<I", data[12:16])[0]
    return json.loads(data[20:20 + length]), data[28 + length:]


def frame(node):
    if "matrix" in node:
        m = node["matrix"]
        return Matrix([m[row::4] for row in range(4)])
    x, y, z, w = node.get("rotation", (0, 0, 0, 1))
    return Matrix.LocRotScale(Vector(node.get("translation", (0, 0, 0))), Quaternion((w, x, y, z)),
                              Vector(node.get("scale", (1, 1, 1))))


def points(file, data, primitive):
    accessor = file["accessors"][primitive["attributes"]["POSITION"]]
    view = file["bufferViews"][accessor["bufferView"]]
    begin = view.get("byteOffset", 0) + accessor.get("byteOffset", 0)
    return numpy.frombuffer(data, numpy.float32, accessor["count"] * 3, begin).reshape(-1, 3)


def box(world, places):
    matrix = numpy.array(world)
    there = places @ matrix[:3, :3].T + matrix[:3, 3]
    return there.min(axis=0), there.max(axis=0)


def described(path):
    """Name, triangles and box of each node with a mesh; number of cameras and lights; names of the materials in use."""
    file, data = read(path)
    meshes, cameras, lights, materials = [], 0, 0, set()
    z_up = Matrix(((1, 0, 0, 0), (0, 0, -1, 0), (0, 1, 0, 0), (0, 0, 0, 1)))
    todo = [(root, z_up) for root in file["scenes"][0].get("nodes", [])]
    while todo:
        index, above = todo.pop()
        node = file["nodes"][index]
        world = above @ frame(node)
        todo += [(child, world) for child in node.get("children", [])]
        cameras += "camera" in node
        lights += "KHR_lights_punctual" in node.get("extensions", {})
        if "mesh" not in node:
            continue
        primitive = file["meshes"][node["mesh"]]["primitives"][0]
        triangles = file["accessors"][primitive["indices"]]["count"] // 3
        meshes.append((node["name"], triangles, box(world, points(file, data, primitive))))
        materials.add(primitive["material"])
    names = sorted(file["materials"][i].get("name", "") for i in materials)
    return meshes, cameras, lights, names


def shown():
    """The same of what Blender has in its scene; it numbers names that are there already."""
    meshes, materials = [], set()
    for thing in bpy.context.scene.objects:
        if thing.type != "MESH":
            continue
        places = numpy.array([vertex.co for vertex in thing.data.vertices])
        triangles = sum(len(polygon.vertices) - 2 for polygon in thing.data.polygons)
        meshes.append((thing.name, triangles, box(thing.matrix_world, places)))
        materials.update(slot.material for slot in thing.material_slots)
    kinds = [thing.type for thing in bpy.context.scene.objects]
    return meshes, kinds.count("CAMERA"), kinds.count("LIGHT"), sorted(material.name for material in materials)


def plain(name):
    return re.sub(r"\.\d{3}$", "", name)


def key(mesh):
    name, triangles, (low, high) = mesh
    return (plain(name), triangles, *numpy.round(numpy.concatenate([low, high]), 2))


def differences(wanted, found):
    for what, a, b in zip(("cameras", "lights"), wanted[1:3], found[1:3]):
        if a != b:
            yield f"{a} {what}, Blender has {b}"
    if [plain(name) for name in wanted[3]] != [plain(name) for name in found[3]]:
        yield f"materials {wanted[3]}, Blender has {found[3]}"
    if len(wanted[0]) != len(found[0]):
        yield f"{len(wanted[0])} meshes, Blender has {len(found[0])}"
    for a, b in zip(sorted(wanted[0], key=key), sorted(found[0], key=key)):
        size = max(1.0, float(numpy.abs(a[2]).max()))
        if plain(a[0]) != plain(b[0]) or a[1] != b[1] or numpy.abs(numpy.array(a[2]) - numpy.array(b[2])).max() > 1e-4 * size:
            yield f"{a}, Blender has {b}"


def main():
    wrong = 0
    for path in sys.argv[sys.argv.index("--") + 1:]:
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.import_scene.gltf(filepath=path)
        wanted, found = described(path), shown()
        lines = list(differences(wanted, found))
        wrong += len(lines)
        print(f"{path}: {len(found[0])} meshes, {sum(mesh[1] for mesh in found[0])} triangles, {len(found[3])} materials, "
              f"{found[1]} cameras, {found[2]} lights; {len(lines)} differences")
        for line in lines:
            print("  " + line)
    if wrong:
        raise SystemExit(1)


main()
