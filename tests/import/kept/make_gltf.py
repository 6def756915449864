#!/usr/bin/env python3
"""Makes all.gltf: a small scene with everything that the reader of glTF knows."""
import base64
import json
import math
import pathlib
import struct

HERE = pathlib.Path(__file__).parent
KINDS = {'b': 5120, 'B': 5121, 'h': 5122, 'H': 5123, 'I': 5125, 'f': 5126}
COMPONENTS = {'SCALAR': 1, 'VEC2': 2, 'VEC3': 3, 'VEC4': 4, 'MAT4': 16}

OCTAHEDRA = (
    'a0013f0000006c6bfe010f000000916f000000000000000000000000000000000000000000000000'
    '00000000000000007f00'
)
LONG_OCTAHEDRA = (
    'a0013d000000494a013f0000006c6bfe010f0000004746010f000000936d00000000000000000000'
    '00000000000000000000000000000000000000000000ff7f0000'
)
QUATERNIONS = (
    'a0013c000000fbfc013c000000b4b3013f000000fb34c8013f000000b424d7013e000000fbfc013f'
    '000000b4b3ff013f0000000506050000000000000000000000000000000000000000000000000000'
    '0000000000ff7f'
)
EXPONENTS = (
    'a000013f000000401f1f00012800000000010c0000004000012800000000013f000000100f100001'
    '280000000000000000000000000000000000000000000000000000f2000000f2000000f2'
)
SEQUENCE = (
    'd000040406080400000000'
)
TRIANGLES = (
    'e0f000007687566778a9866589689801690000'
)
DRACO = (
    '445241434f0202010000000204010001020002030106000903000001010300010304020002020204'
    '0003040404000404090400050001010101000000000000000000000000000000803f000000000000'
    '803e0000803f000000400000000000000000000000400000003f00010100091f014001000000fe98'
    '003197cc3300cb6881ffffff7f00000000010100100301103301300300508204000080008000a000'
    'e0ff0f00000000ffff0000000101000903011013011001200300509129089801000267ce010100cd'
    '00000000ff00000000010100020301400100200300000000010000000000803f0000000000000000'
    '000000000000003f0000003f00000000000000000000803e0000403f00000000000000000000803f'
    '000000000000000000000000'
)

data = bytearray()
views = []
accessors = []


def view(content, **more):
    data.extend(b'\0' * (-len(data) % 4))
    views.append({'buffer': 0, 'byteOffset': len(data), 'byteLength': len(content), **more})
    data.extend(content)
    return len(views) - 1


def packed(kind, numbers):
    return struct.pack('<%d%s' % (len(numbers), kind), *numbers)


def accessor(kind, shape, numbers, **more):
    accessors.append(
        {
            'bufferView': view(packed(kind, numbers)),
            'componentType': KINDS[kind],
            'type': shape,
            'count': len(numbers) // COMPONENTS[shape],
            **more,
        }
    )
    return len(accessors) - 1


square = accessor('f', 'VEC3', [0, 0, 0, 1, 0, 0.25, 1, 2, 0, 0, 2, 0.5])
slope = accessor('f', 'VEC3', [0, 0, 1, 0.6, 0, 0.8, 0, 0.8, 0.6, 0, 0, 1])
first_uvs = accessor('f', 'VEC2', [0, 0, 1, 0.125, 1, 1, 0, 0.75])
second_uvs = accessor('H', 'VEC2', [0, 0, 13107, 0, 65535, 26214, 0, 65535], normalized=True)
colors = accessor('B', 'VEC4', [255, 0, 0, 255, 0, 255, 51, 255, 0, 0, 255, 102, 255, 255, 255,
    255],
                  normalized=True)
plain_colors = accessor('f', 'VEC3', [1, 0, 0, 0, 0.5, 0, 0, 0, 0.25, 1, 1, 1])
short_colors = accessor('f', 'VEC3', [1, 0, 0])
two_faces = accessor('H', 'SCALAR', [0, 1, 2, 0, 2, 3])
last_face = accessor('B', 'SCALAR', [1, 2, 3, 0])
without_one = accessor('B', 'SCALAR', [0, 2, 3])
moved = accessor('f', 'VEC3', [0, 0, 1, 0, 0, 0, 2, 0, 0, 0, -1, 0])
turned = accessor('f', 'VEC3', [1, 0, 0, 0, 0, 0, 0, 0, -0.5, 0, 0, 0])
# A skin of three joints; points 0 to 3 hang on the first, on two of them, on all, and on none.
joints = accessor('B', 'VEC4', [0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 2, 0, 1, 0, 0, 0])
weights = accessor('f', 'VEC4', [1, 0, 0, 0, 0.25, 0.75, 0, 0, 0.5, 0.25, 0, 0.125, 0, 0, 0, 0])
more_joints = accessor('H', 'VEC4', [0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0])
more_weights = accessor('H', 'VEC4', [0, 0, 0, 0, 0, 0, 0, 0, 8191, 0, 0, 0, 0, 0, 0, 0],
    normalized=True)
binds = accessor('f', 'MAT4', [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1,
                               0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0.5, -1, 2, 1,
                               2, 0, 0, 0, 0, 1, 0.5, 0, 0, 0, 1, 0, 0, 3, 0, 1])
sparse_places = view(packed('I', [1, 3, 4]))
sparse_values = view(packed('f', [4, 5, 6, -1, -2, -3, 2, 1, 0.5]))
accessors.append({'componentType': 5126, 'type': 'VEC3', 'count': 5, 'sparse': {
    'count': 3,
    'indices': {'bufferView': sparse_places, 'componentType': 5125},
    'values': {'bufferView': sparse_values}}})
sparse = len(accessors) - 1
many = accessor('h', 'VEC3', [0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 2, 0, 1, 2, 3])


def packed_view(packing, stride, count, mode, filter):
    inner = view(bytes.fromhex(packing))
    views.append(
        {
            'buffer': 0,
            'byteLength': stride * count,
            'byteStride': stride,
            'extensions': {
                'EXT_meshopt_compression': {
                    **views[inner],
                    'byteStride': stride,
                    'count': count,
                    'mode': mode,
                    'filter': filter,
                }
            },
        }
    )
    return len(views) - 1


def described(kind, shape, count, **more):
    accessors.append({'componentType': KINDS[kind], 'type': shape, 'count': count, **more})
    return len(accessors) - 1


# The square, its normals, turns for colors and its corners, as the packing library writes them.
packed_square = described('f', 'VEC3', 4, bufferView=packed_view(EXPONENTS, 12, 4, 'ATTRIBUTES', 'EXPONENTIAL'))
packed_slope = described('b', 'VEC3', 4, normalized=True,
                         bufferView=packed_view(OCTAHEDRA, 4, 4, 'ATTRIBUTES', 'OCTAHEDRAL'))
long_slope = described('h', 'VEC3', 4, normalized=True,
                       bufferView=packed_view(LONG_OCTAHEDRA, 8, 4, 'ATTRIBUTES', 'OCTAHEDRAL'))
turns = described('h', 'VEC4', 4, normalized=True,
                  bufferView=packed_view(QUATERNIONS, 8, 4, 'ATTRIBUTES', 'QUATERNION'))
packed_faces = described('H', 'SCALAR', 6, bufferView=packed_view(SEQUENCE, 2, 6, 'INDICES', 'NONE'))
packed_triangles = described('I', 'SCALAR', 6, bufferView=packed_view(TRIANGLES, 4, 6, 'TRIANGLES', ''))
# The whole square by Draco, with its attributes in this order.
draco = view(bytes.fromhex(DRACO))
draco_attributes = {
    'POSITION': described('f', 'VEC3', 4),
    'NORMAL': described('b', 'VEC3', 4, normalized=True),
    'TEXCOORD_0': described('H', 'VEC2', 4, normalized=True),
    'COLOR_0': described('B', 'VEC4', 4, normalized=True),
    'JOINTS_0': described('H', 'VEC4', 4),
    'WEIGHTS_0': described('f', 'VEC4', 4),
}
inside = view(b'\x89PNG inside')
webp = view(b'RIFF....WEBP')


def picture(content):
    return 'data:image/jpeg;base64,' + base64.b64encode(content).decode()


def transformed(index, **transform):
    return {'index': index, 'extensions': {'KHR_texture_transform': transform}}


def part(material=None, **more):
    return {'attributes': {'POSITION': square}, 'indices': two_faces,
            **({} if material is None else {'material': material}), **more}


def varied(*mappings):
    return {'extensions': {'KHR_materials_variants': {
        'mappings': [{'material': m, 'variants': v} for m, v in mappings]}}}


def lamp(light):
    return {'extensions': {'KHR_lights_punctual': {'light': light}}}


half = math.sqrt(0.5)
scene = {
    'asset': {'version': '2.0'},
    'extensionsUsed': ['KHR_lights_punctual', 'KHR_materials_variants', 'EXT_of_nobody',
        'EXT_unused',
                       'KHR_materials_odd'],
    'extensionsRequired': ['KHR_materials_odd'],
    'scene': 1,
    'scenes': [{'name': 'Left out', 'nodes': [0]},
               {'name': 'Shown', 'nodes': [0, 12, 13, 14, 15, 16, 17, 20, 22, 24, 26, 27, 28, 29, 30, 31, 32],
                   'extras': {'mood': 'calm', 'n': [1, 2]}}],
    'animations': [{}, {}],
    'extensions': {
        'KHR_lights_punctual': {'lights': [
            {'type': 'directional', 'intensity': 20000, 'color': [1, 0.75, 0.5]},
            {'type': 'directional', 'intensity': 5000},
            {'type': 'point', 'intensity': 40, 'range': 2.5, 'extras': {'radius': 0.125}},
            {'type': 'spot', 'intensity': 10, 'spot': {'innerConeAngle': 0.25,
                'outerConeAngle': 0.5}},
            {'type': 'spot'},
            {'type': 'point', 'color': [2, 4, 1], 'extras': {'radius': -1}}]},
        'KHR_materials_variants': {'variants': [{'name': 'Day'}, {'name': 'Night'},
            {'name': 'Dusk'}]}},
    'extras': {'stagemarks': {'version': 1, 'states': [
        {'name': 'By day', 'date': '2025-02-03T04:05:06', 'variant': 0, 'camera': 4, 'hidden': [3,
            12],
         'size': [640, 480]},
        {'name': 'By night', 'date': '2024-12-31T23:58:59', 'variant': 1, 'camera': 6,
            'hidden': [12],
         'size': [65536, 65537]},
        {'name': 'Alone', 'date': '2023-01-01T00:00:00', 'hidden': [], 'variant': 3}]}},
    'nodes': [
        {'name': 'Group', 'matrix': [0, 2, 0, 0, -1, 0, 0.5, 0, 0, 0.25, 3, 0, 1, 2, 3, 1],
         'children': [1, 2, 3, 4, 5, 6]},
        {'name': 'Turned', 'mesh': 0, 'rotation': [0.1, -0.3, 0.5, 0.8], 'scale': [2, 0.5, -1.5],
         'translation': [0.5, -0.25, 4], 'extras': {'layer': 'Walls', 'a': 1}, 'children': [7]},
        {'mesh': 0, 'rotation': [0, 0, 0, 0]},
        {'name': 'Parts', 'mesh': 1, 'extras': {'layer': 'Walls'}, **lamp(3), 'camera': 0,
         'children': [8]},
        {'camera': 1, 'rotation': [0, 2, 0, 2], 'translation': [0, 1, 0]},
        {'camera': 2, 'scale': [3, 3, 3], 'name': 'Wide'},
        {'name': 'Eye and more', 'camera': 3, 'mesh': 0, 'children': [9]},
        {'name': 'Below', **lamp(0), 'rotation': [-half, 0, 0, half]},
        {**lamp(1)},
        {**lamp(2), 'scale': [2, 2, 2], 'children': [10]},
        {'name': 'Under a lamp', 'children': [11]},
        {'name': 'Hidden', **lamp(4)},
        {'name': 'Unseen', 'mesh': 2,
         'extensions': {'KHR_node_visibility': {'visible': False}, 'EXT_of_nobody': {}}},
        {'name': 'Seen', 'mesh': 2, 'weights': [0, 0.5],
            'extensions': {'KHR_node_visibility': {'visible': True}}},
        {'name': 'Bent', 'mesh': 3, 'skin': 0, 'translation': [7, 8, 9], 'rotation': [0, 0, half,
            half]},
        {'name': 'Joint', 'children': [18, 19], 'translation': [0, 0, 1]},
        {'name': 'Strip, fan and others', 'mesh': 4},
        {'name': 'Strange', 'mesh': 5},
        {'name': 'Joint 1', 'translation': [1, 0, 0], 'scale': [1, 2, 1]},
        {'name': 'Joint 2', 'rotation': [half, 0, 0, half]},
        {'name': 'Flat', 'scale': [1, 0, 1], 'children': [21]},
        {'name': 'Bent and flat', 'mesh': 3, 'skin': 0},
        {'name': 'Bound where they are', 'mesh': 6, 'skin': 1, 'children': [23]},
        {'name': 'Named twice', **lamp(5)},
        {'name': 'Once more', 'children': [23, 25]},
        {'extras': {'layer': 7}},
        {'name': 'Lost', 'translation': [0, 1e300, 0]},
        {'name': 'Lost', 'scale': [1e300, 1, 1]},
        {'name': 'Lost', 'scale': [1, 1e300, 1]},
        {'name': 'Lost', 'scale': [1, 1, 1e300]},
        {'name': 'Packed', 'mesh': 7},
        {'name': 'Packed and bent', 'mesh': 8, 'skin': 0},
        {'name': 'Bound to nothing', 'mesh': 6, 'skin': 2},
    ],
    'skins': [{'joints': [15, 18, 19], 'inverseBindMatrices': binds}, {'joints': [15, 18, 19]},
              {'joints': [15, 18], 'inverseBindMatrices': described('f', 'MAT4', 2)}],
    'cameras': [
        {'type': 'perspective', 'perspective': {'yfov': 0.5, 'aspectRatio': 0.8, 'znear': 0.5,
            'zfar': 75}},
        {'type': 'perspective', 'perspective': {'yfov': 0.75, 'znear': 0.25}},
        {'type': 'orthographic', 'orthographic': {'xmag': 1.25, 'ymag': 3, 'znear': 2, 'zfar': 40}},
        {'type': 'orthographic'}],
    'meshes': [
        {'name': 'Square', 'extras': {'of': 'the mesh'}, 'primitives': [{
            'attributes': {'POSITION': square, 'NORMAL': slope, 'TEXCOORD_0': first_uvs,
                'COLOR_0': colors},
            'indices': two_faces, 'material': 0, **varied((1, [1]), (2, [2, 0]))}]},
        {'name': 'Parts', 'extras': {'parts': 3}, 'primitives': [
            part(1, **varied((3, [0, 1]))), part(),
            {'attributes': {'POSITION': square, 'TEXCOORD_0': first_uvs, 'TEXCOORD_1': second_uvs},
             'indices': last_face, 'material': 2}]},
        {'name': 'Morphed', 'weights': [0.5, 0.25, 0], 'primitives': [{
            'attributes': {'POSITION': square, 'NORMAL': slope}, 'indices': two_faces,
            'targets': [{'POSITION': moved, 'NORMAL': turned}, {'POSITION': turned},
                        {'POSITION': moved}]}]},
        {'name': 'Bent', 'primitives': [{
            'attributes': {'POSITION': square, 'NORMAL': slope, 'JOINTS_0': joints,
                'WEIGHTS_0': weights,
                           'JOINTS_1': more_joints, 'WEIGHTS_1': more_weights},
                               'indices': two_faces}]},
        {'name': 'Modes', 'primitives': [
            {'attributes': {'POSITION': many}, 'mode': 5, 'material': 3},
            {'attributes': {'POSITION': many}, 'mode': 6, 'material': 4},
            {'attributes': {'POSITION': many}, 'mode': 0},
            {'attributes': {'POSITION': many}, 'mode': 1},
            {'attributes': {'POSITION': many}, 'mode': 2},
            {'attributes': {'POSITION': many}, 'mode': 3}]},
        {'name': 'Strange', 'primitives': [
            {'attributes': {'POSITION': sparse}, 'material': 5},
            {'attributes': {'POSITION': square, 'COLOR_0': plain_colors, 'NORMAL': binds},
                'material': 6},
            {'attributes': {'POSITION': square, 'COLOR_0': short_colors,
                'TEXCOORD_0': short_colors},
             'indices': two_faces, 'material': 7},
            {'attributes': {'POSITION': square, 'TEXCOORD_0': first_uvs}, 'material': 2},
            {'attributes': {'POSITION': many}},
            {'attributes': {}},
            {'attributes': {'POSITION': sparse}, 'indices': last_face},
            {'attributes': {'POSITION': square}, 'indices': without_one}]},
        {'name': 'Unbound', 'primitives': [{
            'attributes': {'POSITION': square, 'JOINTS_0': joints, 'WEIGHTS_0': weights}}]},
        {'name': 'Packed', 'primitives': [
            {'attributes': {'POSITION': packed_square, 'NORMAL': packed_slope, 'COLOR_0': turns},
             'indices': packed_faces},
            {'attributes': {'POSITION': packed_square, 'NORMAL': long_slope},
             'indices': packed_triangles}]},
        {'name': 'Packed by Draco', 'primitives': [{
            'attributes': draco_attributes, 'extensions': {'KHR_draco_mesh_compression': {
                'bufferView': draco,
                'attributes': {name: i for i, name in enumerate(draco_attributes)}}}}]},
    ],
    'materials': [
        {'name': 'Painted', 'extras': {'kept': True}, 'doubleSided': True,
            'emissiveFactor': [0.25, 0.5, 1],
         'normalTexture': {'index': 1, 'scale': 0.5}, 'occlusionTexture': {'index': 2,
             'strength': 0.25},
         'emissiveTexture': transformed(3, rotation=0.25, offset=[0.5, 0.75], scale=[2, 3]),
         'extensions': {'KHR_materials_emissive_strength': {'emissiveStrength': 3},
                        'KHR_materials_specular': {'specularFactor': 0.5},
                        'KHR_materials_transmission': {'transmissionFactor': 0.375,
                                                       'transmissionTexture': {'index': 1}},
                        'EXT_of_nobody': {'EXT_of_nobody': 1}},
         'pbrMetallicRoughness': {'baseColorFactor': [0.5, 0.25, 0.75, 1], 'metallicFactor': 0.375,
                                  'roughnessFactor': 0.625, 'baseColorTexture': transformed(0,
                                      scale=[1, 4]),
                                  'metallicRoughnessTexture': transformed(4, offset=[0, 0.25])}},
        {'name': 'Cut', 'alphaMode': 'MASK', 'pbrMetallicRoughness': {'baseColorFactor': [1, 1, 1,
            0.5]}},
        {'name': 'By the second set', 'alphaMode': 'BLEND',
         'occlusionTexture': {'index': 1},
         'emissiveTexture': {'index': 0, 'texCoord': 0,
                             'extensions': {'KHR_texture_transform': {'texCoord': 1}}},
         'pbrMetallicRoughness': {'baseColorFactor': [0, 1, 0, 0.75], 'baseColorTexture':
                                  {'index': 0, 'texCoord': 1}}},
        {'extensions': {'KHR_materials_pbrSpecularGlossiness': {
            'diffuseFactor': [0.25, 0.5, 0.125, 0.5], 'glossinessFactor': 0.75,
                'diffuseTexture': {'index': 5},
            'specularGlossinessTexture': {'index': 1}}}},
        {'name': 'Old, as preset', 'extensions': {'KHR_materials_pbrSpecularGlossiness': {}}},
        {'name': 'Sharp', 'alphaMode': 'OPAQUE', 'pbrMetallicRoughness': {
            'baseColorFactor': [1, 1, 1, 0.5], 'baseColorTexture': {'index': 6}}},
        {'name': 'Of several kinds', 'normalTexture': {'index': 7},
            'occlusionTexture': {'index': 8},
         'emissiveTexture': {'index': 9}, 'pbrMetallicRoughness': {
             'baseColorTexture': {'index': 10}, 'metallicRoughnessTexture': {'index': 11}}},
        {'name': 'Cut lower', 'alphaMode': 'MASK', 'alphaCutoff': 0.25, 'emissiveFactor': [0.5, 0, 0.25],
            'normalTexture': {'index': 12}}],
    'textures': [{'source': 0}, {'source': 1, 'sampler': 0}, {'source': 2, 'sampler': 1},
                 {'source': 3, 'sampler': 2}, {'source': 4}, {'source': 5}, {'source': 6,
                     'sampler': 3},
                 {'extensions': {'EXT_texture_webp': {'source': 7}}},
                 {'extensions': {'KHR_texture_basisu': {'source': 8}}},
                 {'extensions': {'MSFT_texture_dds': {'source': 9}}},
                 {'extensions': {'EXT_texture_avif': {'source': 10}}},
                 {'source': 0, 'extensions': {'EXT_texture_webp': {'source': 7}}}, {}],
    'samplers': [{'wrapS': 33071, 'wrapT': 10497}, {'wrapS': 10497, 'wrapT': 33648,
        'magFilter': 9728},
                 {'wrapS': 33648, 'wrapT': 33071, 'magFilter': 9729}, {}],
    'images': [{'uri': 'missing.png'}, {'bufferView': inside, 'name': 'in/side'},
               {'uri': picture(b'\xff\xd8\xff of a camera'), 'name': 'photo.001'},
               {'uri': picture(b'of \xfb\xef\xbe some \xff kind').replace('+', '-').replace('/', '_')
                .replace('image_jpeg', 'image/jpeg')},
               {'bufferView': inside, 'mimeType': 'image/png'},
               {'uri': 'data:image/png;base64,????', 'name': 'damaged'},
               {'uri': 'data:image/gif,GIF8%39a%', 'name': 'plain'},
               {'bufferView': webp, 'name': 'moving', 'mimeType': 'image/webp'},
               {'uri': picture(b'\xabKTX 20'), 'name': 'packed'},
               {'uri': picture(b'DDS of its own'), 'name': 'surface.dds'},
               {'uri': 'a%20b.avif'}],
    'bufferViews': views,
    'accessors': accessors,
}
scene['buffers'] = [{'byteLength': len(data),
                     'uri': 'data:application/octet-stream;base64,' + base64.b64encode(data).decode()}]


def compact(value, depth):
    """Lists and objects that fit stand in one line."""
    line = json.dumps(value)
    if len(line) <= 96 - depth or not isinstance(value, (dict, list)):
        return line
    indent = ' ' * (depth + 1)
    if isinstance(value, dict):
        parts = ['%s%s: %s' % (indent, json.dumps(k), compact(v, depth + 1)) for k,
            v in value.items()]
        return '{\n' + ',\n'.join(parts) + '\n' + indent[1:] + '}'
    return '[\n' + ',\n'.join(indent + compact(v,
        depth + 1) for v in value) + '\n' + indent[1:] + ']'


(HERE / 'all.gltf').write_text(compact(scene, 0) + '\n')
