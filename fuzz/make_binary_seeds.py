"""Writes the binary DXF seeds in seeds/dxf_reader/ (run once; the .dxf files are committed)."""
import struct

SENTINEL = b"AutoCAD Binary DXF\r\n\x1a\x00"


def value(code, v):
    if isinstance(v, str):
        return v.encode("ascii") + b"\x00"
    if 10 <= code <= 59 or 110 <= code <= 149 or 210 <= code <= 239 or 1010 <= code <= 1059:
        return struct.pack("<d", v)
    if 60 <= code <= 79 or 170 <= code <= 179 or 270 <= code <= 289 or 370 <= code <= 389:
        return struct.pack("<h", v)
    if 90 <= code <= 99 or 420 <= code <= 429 or 440 <= code <= 449:
        return struct.pack("<i", v)
    if 290 <= code <= 299:
        return struct.pack("<B", v)
    raise ValueError(code)


def write(path, pairs, one_byte_codes):
    out = bytearray(SENTINEL)
    for code, v in pairs:
        if one_byte_codes:  # R12: one byte, 255 then a 16-bit code for codes >= 255
            out += struct.pack("<B", code) if code < 255 else struct.pack("<Bh", 255, code)
        else:
            out += struct.pack("<h", code)
        out += value(code, v)
    open(path, "wb").write(out)


def drawing(version):
    return [(0, "SECTION"), (2, "HEADER"), (9, "$ACADVER"), (1, version),
            (9, "$INSUNITS"), (70, 6), (0, "ENDSEC"),
            (0, "SECTION"), (2, "ENTITIES"),
            (0, "LINE"), (5, "20"), (8, "0"), (10, 0.0), (20, 0.0), (30, 0.0),
            (11, 10.0), (21, 5.5), (31, 0.0),
            (0, "CIRCLE"), (5, "21"), (8, "0"), (10, 2.0), (20, 3.0), (30, 0.0), (40, 1.25),
            (0, "ENDSEC"), (0, "EOF")]


write("seeds/dxf_reader/r12_binary.dxf", drawing("AC1009"), one_byte_codes=True)
write("seeds/dxf_reader/r2000_binary.dxf", drawing("AC1015"), one_byte_codes=False)
