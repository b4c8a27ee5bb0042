#!/usr/bin/python3
"""Writes resources.dxf, the drawing that classes.txt imports resources from: the block
HYDRANT (with an attribute ID), the text style NOTES and the layer HYDRANTS.

Made with ezdxf (Debian's python3-ezdxf), like site.dxf. Run it again only to change it.
"""
import ezdxf

doc = ezdxf.new("R2000")
doc.header["$INSUNITS"] = 6  # metres

doc.layers.add("HYDRANTS", color=5)
doc.styles.add("NOTES", font="isocp.shx").dxf.width = 0.8

hydrant = doc.blocks.new("HYDRANT")
hydrant.add_circle((0, 0), 0.5)
hydrant.add_line((-0.5, 0), (0.5, 0))
hydrant.add_attdef("ID", (0.7, 0), dxfattribs={"height": 0.3}).dxf.prompt = "Hydrant id"

doc.saveas("resources.dxf")
