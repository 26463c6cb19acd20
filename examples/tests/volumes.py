"""Writes small volumes, sound and unsound, for the tests of the demo."""

import gzip
import hashlib
import io
import struct
import tarfile
import zlib

CODES = {'B': 2, 'h': 4, 'H': 512, 'i': 8, 'I': 768, 'f': 16, 'd': 64}
EXTENT = (14, 11, 9)
SPACING = (1.0, 1.25, 2.0)
SLIM = (1.0, 1.25, 8.0)


def scene(x, y, z):
    """No two axes and no two directions look alike."""
    return 20 + 7 * x + 4 * y * (y > 3) + 5 * z + (60 if x > 8 and z > 4 else 0)


def voxels(extent=EXTENT, value=scene):
    """The first axis runs fastest."""
    return [value(x, y, z) for z in range(extent[2]) for y in range(extent[1])
            for x in range(extent[0])]


def header(order='<', code=2, bits=8, extent=EXTENT, spacing=SPACING, slope=0.0, intercept=0.0,
           rows=((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0)), orientation=1, offset=352.0,
           magic=b'n+1\0', size=348, dimensions=None, qform=0):
    data = bytearray(352)
    dim = [dimensions or len(extent), *extent] + [1] * (7 - len(extent))
    pixdim = [1.0, *spacing] + [1.0] * (7 - len(spacing))
    struct.pack_into(order + 'i', data, 0, size)
    struct.pack_into(order + '8h', data, 40, *dim)
    struct.pack_into(order + '2h', data, 70, code, bits)
    struct.pack_into(order + '8f', data, 76, *pixdim)
    struct.pack_into(order + '3f', data, 108, offset, slope, intercept)
    data[123] = 2  # millimetres
    struct.pack_into(order + '2h', data, 252, qform, orientation)  # no rotation
    for row, values in enumerate(rows):
        struct.pack_into(order + '4f', data, 280 + 16 * row, *values)
    data[344:348] = magic
    return bytes(data)


def nifti(kind='B', order='<', values=None, **fields):
    values = voxels() if values is None else values
    body = struct.pack(f'{order}{len(values)}{kind}', *values)
    return header(order, CODES[kind], 8 * struct.calcsize(kind), **fields) + body


def slim(*arguments, **fields):
    """Tall, so that its tiles are narrow and soon drawn."""
    return nifti(*arguments, **{'spacing': SLIM, **fields})


def plist(shape, spacing, dtype='int16'):
    integers = ''.join(f'<integer>{n}</integer>' for n in shape)
    reals = ''.join(f'<real>{n}</real>' for n in spacing)
    return (f'<plist><dict><key>matrix</key><dict><key>dtype</key><string>{dtype}</string>'
            f'<key>shape</key><array>{integers}</array></dict>'
            f'<key>spacing</key><array>{reals}</array></dict></plist>').encode()


def archive(files):
    """A compressed tar archive of the files, given by name."""
    memory = io.BytesIO()
    with tarfile.open(fileobj=memory, mode='w:gz') as tar:
        for name, contents in files.items():
            entry = tarfile.TarInfo('project/' + name)
            entry.size = len(contents)
            tar.addfile(entry, io.BytesIO(contents))
    return memory.getvalue()


def inv3(extent=(10, 12, 6), **wrong):
    """A box of bone in air."""
    def density(x, y, z):
        return 1200 if 2 < x < 7 and 2 < y < 9 and 1 < z < 5 else -1000
    matrix = struct.pack(f'<{extent[0] * extent[1] * extent[2]}h', *voxels(extent, density))
    files = {'main.plist': plist(extent[::-1], (1.0, 1.0, 1.5)), 'matrix.dat': matrix}
    files.update({name.replace('_', '.'): contents for name, contents in wrong.items()})
    return archive({name: contents for name, contents in files.items() if contents is not None})


def compressed(data):
    return gzip.compress(data, mtime=0)


def png_rows(png):
    """Width, height and the filtered rows; raises an error for a file that is not whole."""
    if png[:8] != b'\x89PNG\r\n\x1a\n':
        raise ValueError('no PNG signature')
    at, rows, kind = 8, b'', b''
    while at < len(png):
        length, kind = struct.unpack_from('>I4s', png, at)
        body = png[at + 8:at + 8 + length]
        if zlib.crc32(kind + body) != struct.unpack_from('>I', png, at + 8 + length)[0]:
            raise ValueError('wrong checksum')
        if kind == b'IHDR':
            width, height = struct.unpack_from('>II', body)
        rows += body if kind == b'IDAT' else b''
        at += 12 + length
    if kind != b'IEND':
        raise ValueError('no end')
    rows = zlib.decompress(rows)
    if len(rows) != height * (1 + 3 * width):
        raise ValueError('rows are missing')
    return width, height, rows


def gif_blocks(gif, at):
    """What a chain of blocks holds, and where it ends."""
    contents = b''
    while gif[at]:
        contents += gif[at + 1:at + 1 + gif[at]]
        at += 1 + gif[at]
    return contents, at + 1


def gif_frames(gif):
    """Width, height, palette and (left, top, columns, rows, code size, codes) of each frame; raises
    an error for a file that is not whole."""
    width, height = struct.unpack_from('<HH', gif, 6)
    if gif[:6] != b'GIF89a' or gif[10] & 0x87 != 0x87:
        raise ValueError('no GIF of 256 colours')
    palette, at, frames = gif[13:13 + 768], 13 + 768, []
    while gif[at] != 0x3B:
        if gif[at] == 0x21:
            _, at = gif_blocks(gif, at + 2)
        elif gif[at] == 0x2C:
            place = struct.unpack_from('<4H', gif, at + 1)
            codes, end = gif_blocks(gif, at + 11)
            frames.append((*place, gif[at + 10], codes))
            at = end
        else:
            raise ValueError('no block')
    if at + 1 != len(gif):
        raise ValueError('bytes after the end')
    return width, height, palette, frames


def gif_codes(size, packed):
    """The codes of a frame, one after the other, and the first free one at each."""
    clear, bits, held, width, free = 1 << size, 0, 0, size + 1, (1 << size) + 2
    for byte in packed:
        held |= byte << bits
        bits += 8
        while bits >= width:
            code, held, bits = held & ((1 << width) - 1), held >> width, bits - width
            if code == clear + 1:
                return
            yield code
            free = clear + 1 if code == clear else min(free + 1, 4096)
            width = min(max(size + 1, free.bit_length()), 12)


def gif_pixels(size, packed):
    """The colours of a frame as indices."""
    clear, shown, before, table = 1 << size, [], b'', []
    for code in gif_codes(size, packed):
        if code == clear:
            table, before = [bytes([n]) for n in range(clear)] + [b'', b''], b''
            continue
        entry = table[code] if code < len(table) else before + before[:1]
        if before and len(table) < 4096:
            table.append(before + entry[:1])
        shown.append(entry)
        before = entry
    return b''.join(shown)


def fingerprint(picture):
    """Equal for equal pictures; raises an error for a file that is not whole."""
    if picture[:3] == b'GIF':
        width, height, _, frames = gif_frames(picture)
        return f'{width} x {height}, {len(frames)}, {hashlib.sha256(picture).hexdigest()}'
    width, height, rows = png_rows(picture)
    return f'{width} x {height}, {hashlib.sha256(rows).hexdigest()}'


def predictor(kind, left, up, corner):
    """What a PNG filter expects of a byte."""
    if kind == 4:
        guess = left + up - corner
        return min((left, up, corner), key=lambda near: abs(guess - near))
    return (0, left, up, (left + up) // 2)[kind]


def greys(png):
    """The red channel of the picture, row by row."""
    width, height, rows = png_rows(png)
    stride = 3 * width
    above, picture = bytes(stride), []
    for start in range(0, height * (stride + 1), stride + 1):
        kind, row = rows[start], bytearray(rows[start + 1:start + 1 + stride])
        for i, byte in enumerate(row):
            left, corner = (row[i - 3], above[i - 3]) if i > 2 else (0, 0)
            row[i] = (byte + predictor(kind, left, above[i], corner)) & 255
        picture.append(bytes(row[::3]))
        above = row
    return picture
