#!/usr/bin/python3
"""Writes site.dxf, the example drawing: a small street with utilities, trees and houses.

The drawing is made with ezdxf (Debian's python3-ezdxf), an independent DXF library, so the
example is not shaped by TAXOR's own writer. Run it again only to change the example.

Two entities already carry object data from an earlier survey, written as TAXOR stores it,
and each breaks a rule of its class in classes.txt, so that checking the records has
something to find.
"""
import math
import random

import ezdxf

random.seed(7)
doc = ezdxf.new("R2000", setup=True)
doc.header["$INSUNITS"] = 6  # metres
doc.header["$LUPREC"] = 3
msp = doc.modelspace()

for name, color, linetype in [
    ("WATER", 5, "CONTINUOUS"),
    ("SEWER", 30, "DASHED"),
    ("CABLES", 1, "CENTER"),
    ("TREES", 3, "CONTINUOUS"),
    ("BUILDINGS", 7, "CONTINUOUS"),
    ("ROAD", 8, "CONTINUOUS"),
    ("LABELS", 7, "CONTINUOUS"),
    ("MANHOLES", 30, "CONTINUOUS"),
]:
    doc.layers.add(name, color=color, linetype=linetype)
# The surveyor's note style; the same as the one classes.txt imports from resources.dxf.
doc.styles.add("NOTES", font="isocp.shx").dxf.width = 0.8

manhole = doc.blocks.new("MANHOLE")
manhole.add_circle((0, 0), 0.6)
manhole.add_circle((0, 0), 0.4)
manhole.add_attdef("ID", (0.8, 0.2), dxfattribs={"height": 0.3}).dxf.prompt = "Manhole id"
manhole.add_attdef("DEPTH", (0.8, -0.3), dxfattribs={"height": 0.3}).dxf.text = "2.50"

lamp = doc.blocks.new("LAMP")
lamp.add_circle((0, 0), 0.2)
lamp.add_line((-0.3, 0), (0.3, 0))
lamp.add_line((0, -0.3), (0, 0.3))

# The street: two kerb lines and a centre line.
msp.add_lwpolyline([(0, 0), (200, 0)], dxfattribs={"layer": "ROAD"})
msp.add_lwpolyline([(0, 12), (200, 12)], dxfattribs={"layer": "ROAD"})
msp.add_line((0, 6), (200, 6), dxfattribs={"layer": "ROAD", "linetype": "CENTER"})

# Utilities along the street; a few pieces drawn off their layer or with odd colours, as
# real deliveries have them.
mains = []
for i in range(10):
    x0, x1 = i * 20, i * 20 + 20
    mains.append(msp.add_lwpolyline([(x0, 3), (x1, 3)],
                                    dxfattribs={"layer": "WATER", "const_width": 0.2}))
    sewer = msp.add_lwpolyline([(x0, 8), (x1, 8)], dxfattribs={"layer": "SEWER"})
    if i == 4:
        sewer.dxf.color = 1
    msp.add_line((x0, 10), (x1, 10), dxfattribs={"layer": "CABLES" if i != 7 else "0"})

manholes = []
for i in range(11):
    ref = msp.add_blockref("MANHOLE", (i * 20, 8), dxfattribs={"layer": "MANHOLES"})
    ref.add_auto_attribs({"ID": f"S{i + 1:02d}", "DEPTH": f"{2.0 + 0.1 * i:.2f}"})
    manholes.append(ref)

for i in range(8):
    msp.add_blockref("LAMP", (12 + i * 25, 13), dxfattribs={"layer": "ROAD"})

for i in range(24):
    x = random.uniform(2, 198)
    y = random.choice([random.uniform(15, 22), random.uniform(-10, -3)])
    msp.add_circle((x, y), random.choice([1.5, 2.0, 2.5]), dxfattribs={"layer": "TREES"})

for i in range(6):
    x = 10 + i * 32
    outline = [(x, 25), (x + 14, 25), (x + 14, 35), (x, 35)]
    msp.add_lwpolyline(outline, close=True, dxfattribs={"layer": "BUILDINGS"})
    hatch = msp.add_hatch(dxfattribs={"layer": "BUILDINGS"})
    hatch.paths.add_polyline_path(outline, is_closed=True)
    hatch.set_pattern_fill("ANSI31", color=253, scale=0.5)
    # The service pipe from the main to the house; cyan tells it from the main.
    msp.add_lwpolyline([(x + 7, 3), (x + 7, 25)],
                       dxfattribs={"layer": "WATER", "color": 4, "const_width": 0.1})
    msp.add_text(f"No. {2 * i + 1}", dxfattribs={"layer": "LABELS", "height": 1.5}).set_placement(
        (x + 7, 30), align=ezdxf.enums.TextEntityAlignment.MIDDLE_CENTER)

msp.add_text("Station Road", dxfattribs={"layer": "LABELS", "height": 2.5}).set_placement((90, 4.5))
msp.add_mtext("Utilities surveyed 2026-10\\PWater, sewer and cables",
              dxfattribs={"layer": "LABELS", "char_height": 1.2, "insert": (150, 45),
                          "style": "NOTES"})

# The pavement on the houses' side, in the square slabs of patterns.pat.
pavement = msp.add_hatch(dxfattribs={"layer": "ROAD"})
pavement.paths.add_polyline_path([(0, 12), (200, 12), (200, 14), (0, 14)], is_closed=True)
pavement.set_pattern_fill("PAVING", scale=0.5, pattern_type=2,
                          definition=[[0, (0, 0), (0, 1), []], [90, (0, 0), (0, 1), []]])

# Object data of an earlier survey, stored as TAXOR stores it: in the named-objects dictionary
# VELEMUDATA each table is an XRECORD of (1 field name, typed placeholder) pairs, in the order
# of classes.txt with the key field CLASS first; an entity's extension dictionary holds, under
# the table name, an XRECORD with one value per field.
PLACEHOLDER = {"integer": (90, 0), "real": (40, 0.0), "character": (1, "")}
TABLES = {
    "WATER_PIPES": [("CLASS", "character"), ("DN", "integer"), ("MATERIAL", "character"),
                    ("LAID", "integer"), ("DEPTH", "real"), ("STATUS", "character"),
                    ("NOTE", "character")],
    "MANHOLES": [("CLASS", "character"), ("ID", "character"), ("DEPTH", "real"),
                 ("COVER", "character"), ("BUILT", "integer")],
}
tables = doc.rootdict.add_new_dict("VELEMUDATA")
for table, fields in TABLES.items():
    tags = []
    for name, kind in fields:
        tags += [(1, name), PLACEHOLDER[kind]]
    tables.add_xrecord(table).reset(tags)


def add_record(entity, table, values):
    codes = [PLACEHOLDER[kind][0] for _, kind in TABLES[table]]
    entity.new_extension_dict().add_xrecord(table).reset(list(zip(codes, values)))


# DN 125 is no nominal diameter of the class: invalid even when only required fields count.
add_record(mains[2], "WATER_PIPES", ["Water main", 125, "Cast iron", 1962, 1.4, "existing",
                                     "DN from the 1962 plan"])
# A depth beyond the class's 0.5 to 8 m: invalid when the optional fields count as well.
add_record(manholes[6], "MANHOLES", ["Manhole", "S07", 9.6, "D400", 1978])

doc.saveas("site.dxf")
