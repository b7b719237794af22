"""PNG pictures of up to 8 bits a channel, without any library but zlib: none of what is tested takes part.

As a program: takes such a picture on standard input and writes its pixels to standard output: red, green, blue and
alpha, from the top.
"""
import struct
import sys
import zlib

SIGNATURE = b'\x89PNG\r\n\x1a\n'
GREY, RGB, INDEXED, GREY_ALPHA, RGBA = 0, 2, 3, 4, 6
CHANNELS = {GREY: 1, RGB: 3, INDEXED: 1, GREY_ALPHA: 2, RGBA: 4}


def chunk(kind: bytes, data: bytes) -> bytes:
    return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))


def encode(width: int, height: int, rgba: bytes) -> bytes:
    rows = b''.join(b'\0' + rgba[4 * width * y:4 * width * (y + 1)] for y in range(height))
    head = struct.pack('>IIBBBBB', width, height, 8, RGBA, 0, 0, 0)
    return SIGNATURE + chunk(b'IHDR', head) + chunk(b'IDAT', zlib.compress(rows)) + chunk(b'IEND', b'')


def chunks(data: bytes) -> dict[bytes, bytes]:
    """Chunks of one kind are joined."""
    found, at = {}, len(SIGNATURE)
    while at < len(data):
        size, kind = struct.unpack('>I4s', data[at:at + 8])
        found[kind] = found.get(kind, b'') + data[at + 8:at + 8 + size]
        at += 12 + size
    return found


def filtered_back(raw: bytes, height: int, stride: int, step: int):
    above = bytearray(stride)
    for y in range(height):
        how, row = raw[y * (stride + 1)], bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride if how else 0):
            left, up, corner = row[i - step] if i >= step else 0, above[i], above[i - step] if i >= step else 0
            nearest = min((left, up, corner), key=lambda value: abs(left + up - corner - value))
            row[i] = (row[i] + (0, left, up, (left + up) // 2, nearest)[how]) & 255
        yield row
        above = row


def decode(data: bytes) -> tuple[int, int, bytes]:
    found = chunks(data)
    width, height, depth, kind, _, _, interlaced = struct.unpack('>IIBBBBB', found[b'IHDR'])
    assert depth <= 8 and not interlaced
    channels, palette, hidden = CHANNELS[kind], found.get(b'PLTE', b''), found.get(b'tRNS', b'')
    colors = {bytes((i,)): palette[3 * i:3 * i + 3] + (hidden[i:i + 1] or b'\xff') for i in range(len(palette) // 3)}
    most, out = (1 << depth) - 1, bytearray()

    def rgba(pixel: bytes) -> bytes:
        if kind == INDEXED:
            return colors[pixel]
        color = bytes(255 * level // most for level in pixel)
        alpha = b'' if kind in (GREY_ALPHA, RGBA) else b'\0' if hidden and pixel == hidden[1::2] else b'\xff'
        return (3 * color[:1] + color[1:] if kind in (GREY, GREY_ALPHA) else color) + alpha

    stride = (width * channels * depth + 7) // 8
    for row in filtered_back(zlib.decompress(found[b'IDAT']), height, stride, max(1, channels * depth // 8)):
        levels = row if depth == 8 else bytes(
            row[x * depth // 8] >> 8 - depth - x * depth % 8 & most for x in range(width * channels))
        out += b''.join(rgba(bytes(levels[i:i + channels])) for i in range(0, width * channels, channels))
    return width, height, bytes(out)


if __name__ == '__main__':
    sys.stdout.buffer.write(decode(sys.stdin.buffer.read())[2])
