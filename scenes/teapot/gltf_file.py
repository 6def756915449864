"""A glTF file in the making."""

import base64
import json
import math
import struct

from shapes import cross, sub, triangles, unit


class Scene:
    def __init__(self):
        self.bytes = bytearray()
        self.json = {
            'asset': {'version': '2.0', 'generator': 'make_scene.py'},
            'scene': 0,
            'scenes': [{'nodes': []}],
            'nodes': [],
            'meshes': [],
            'materials': [],
            'textures': [],
            'images': [],
            'accessors': [],
            'bufferViews': [],
            'cameras': [],
            'extensionsUsed': [
                'KHR_lights_punctual',
                'KHR_texture_transform',
                'KHR_materials_emissive_strength',
                'KHR_materials_specular',
            ],
            'extensions': {'KHR_lights_punctual': {'lights': []}},
        }
        self.materials = {}
        self.textures = {}

    def view(self, data):
        self.bytes += b'\0' * (-len(self.bytes) % 4)
        self.json['bufferViews'].append(
            {'buffer': 0, 'byteOffset': len(self.bytes), 'byteLength': len(data)}
        )
        self.bytes += data
        return len(self.json['bufferViews']) - 1

    def accessor(self, rows, kind, component, letter):
        flat = [x for row in rows for x in row] if kind != 'SCALAR' else list(rows)
        entry = {
            'bufferView': self.view(struct.pack('<%d%s' % (len(flat), letter), *flat)),
            'componentType': component,
            'count': len(rows),
            'type': kind,
        }
        if kind == 'VEC3':
            packed = [struct.unpack('<3f', struct.pack('<3f', *row)) for row in rows]
            entry['min'] = [min(row[i] for row in packed) for i in range(3)]
            entry['max'] = [max(row[i] for row in packed) for i in range(3)]
        self.json['accessors'].append(entry)
        return len(self.json['accessors']) - 1

    def texture(self, name, data):
        if name not in self.textures:
            self.json['images'].append(
                {'bufferView': self.view(data), 'mimeType': 'image/png', 'name': name}
            )
            self.json['textures'].append({'source': len(self.json['images']) - 1})
            self.textures[name] = len(self.json['textures']) - 1
        return self.textures[name]

    def material(
        self,
        name,
        color,
        rough,
        metal=0.0,
        texture=None,
        relief=None,
        tiles=None,
        glow=None,
        alpha=None,
        strength=1.0,
        specular=None,
        both=False,
    ):
        """`color` linear; `texture` and `relief` are (name, bytes)."""

        def use(picture):
            entry = {'index': self.texture(*picture)}
            if tiles:
                entry['extensions'] = {'KHR_texture_transform': {'scale': list(tiles)}}
            return entry

        surface = {
            'baseColorFactor': [*color, 1.0 if alpha is None else alpha],
            'metallicFactor': metal,
            'roughnessFactor': rough,
        }
        made = {'name': name, 'pbrMetallicRoughness': surface}
        if texture:
            surface['baseColorTexture'] = use(texture)
        if relief:
            made['normalTexture'] = {**use(relief), 'scale': strength}
        if glow:
            most = max(1.0, *glow)
            made['emissiveFactor'] = [part / most for part in glow]
            made['extensions'] = {'KHR_materials_emissive_strength': {'emissiveStrength': most}}
        if specular is not None:
            made.setdefault('extensions', {})['KHR_materials_specular'] = {
                'specularFactor': specular
            }
        if alpha is not None:
            made['alphaMode'] = 'BLEND'
        if both:
            made['doubleSided'] = True
        self.json['materials'].append(made)
        self.materials[name] = len(self.json['materials']) - 1

    def node(self, name, parent=None, layer=None, **more):
        entry = {'name': name, **more}
        if layer:
            entry['extras'] = {'layer': layer}
        self.json['nodes'].append(entry)
        index = len(self.json['nodes']) - 1
        where = (
            self.json['scenes'][0]['nodes']
            if parent is None
            else self.json['nodes'][parent].setdefault('children', [])
        )
        where.append(index)
        return index

    def shape(self, name, patches, material, parent=None, layer=None, at=(0, 0, 0)):
        positions, normals, uvs, indices = triangles(patches)
        self.json['meshes'].append(
            {
                'name': name,
                'primitives': [
                    {
                        'attributes': {
                            'POSITION': self.accessor(positions, 'VEC3', 5126, 'f'),
                            'NORMAL': self.accessor(normals, 'VEC3', 5126, 'f'),
                            'TEXCOORD_0': self.accessor(uvs, 'VEC2', 5126, 'f'),
                        },
                        'indices': self.accessor(indices, 'SCALAR', 5125, 'I'),
                        'material': self.materials[material],
                    }
                ],
            }
        )
        return self.node(
            name, parent, layer, mesh=len(self.json['meshes']) - 1, translation=list(at)
        )

    def camera(self, name, eye, target, degrees, parent=None):
        back = unit(sub(eye, target))
        right = unit(cross((0, 1, 0), back))
        up = cross(back, right)
        self.json['cameras'].append(
            {
                'type': 'perspective',
                'perspective': {
                    'yfov': math.radians(degrees),
                    'aspectRatio': 16 / 9,
                    'znear': 0.02,
                },
            }
        )
        self.node(
            name,
            parent,
            matrix=[*right, 0, *up, 0, *back, 0, *eye, 1],
            camera=len(self.json['cameras']) - 1,
        )

    def lamp(self, name, at, color, strength, radius, parent, layer, reach=None):
        light = {
            'type': 'point',
            'name': name,
            'color': list(color),
            'intensity': 8 * strength,
            'extras': {'radius': radius},
        }
        if reach:
            light['range'] = reach
        lights = self.json['extensions']['KHR_lights_punctual']['lights']
        lights.append(light)
        self.node(
            name,
            parent,
            layer,
            translation=list(at),
            extensions={'KHR_lights_punctual': {'light': len(lights) - 1}},
        )

    def write(self, path):
        self.json['buffers'] = [
            {
                'byteLength': len(self.bytes),
                'uri': 'data:application/octet-stream;base64,'
                + base64.b64encode(self.bytes).decode(),
            }
        ]
        path.write_text(json.dumps(self.json))
