"""Writes candidate seeds of the class_file, command_session and dxf_writer fuzzers into
OUT/<target>/ (default: a folder "candidates" here). scripts/fuzz.sh --minimize-seeds merges
them with the committed seeds, keeping only those that add coverage, into seeds/<target>/.

    python3 fuzz/make_seeds.py [OUT]
"""
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
OUT = sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, "candidates")


def write(target, name, data):
    folder = os.path.join(OUT, target)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data if isinstance(data, bytes) else data.encode("utf-8"))


def read(path):
    with open(os.path.join(ROOT, path), "rb") as f:
        return f.read()


# --- Class files: every keyword, the lexical corners, each encoding the reader meets.
CLASSES = (
    "# every keyword once\n"
    "define\tLAYER\tWalls\n"
    "define\tbad name\tx\n"
    "define\tw\t$(w)x\n"
    "define\tLAYER\tWalls2\n"
    "variable\tLTSCALE\t2.5\n"
    "variable\tINSBASE\t1,2,3\n"
    "variable\tNOSUCHVAR\t1\n"
    "autoconst\t1\n"
    "layer\tblocks.dxf\n"
    "linetype\t*.lin\n"
    "pattern\thatch.pat\n"
    "mline\tstyles.mln\n"
    "font\tfont.shx\n"
    "blockreferencefile\tDoor.dwg\n"
    "class\tBuildings\t0\tThe buildings\n"
    "  OBJ_NAME\tWall\t1\t10\tIcons/wall.png   # a comment\n"
    "obj_type\tPolyline, Line\n"
    "obj_prop\tlayer\t$(layer)\n"
    "obj_prop\tcolor\t1\t*\n"
    "obj_prop\tlinetype\tDASHED\n"
    "obj_prop\tnosuchkey\t1\n"
    "variable\tCLAYER\tWalls\n"
    "vel_name\tWALLS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tHEIGHT\tHeight\trequired real\t2.5\t2:3\n"
    "vel_fld\tMATERIAL\tMaterial\tconst notempty character\tbrick\tbrick,concrete\n"
    "vel_fld\tCOUNT\tCount\tinteger\t3\t1:5:10\n"
    "vel_fld\tNOTE\tA\\\tB\tcharacter\ta\\\tb\n"
    "vel_name\tILL\n"
    "vel_fld\tX\tX\tinteger\n"
    "/class\n"
    "obj_name\tDoor\t1\t8000\n"
    "obj_type\tBlockReference\n"
    "obj_prop\tblock\tDoor\n"
    "/class\n"
)
write("class_file", "keywords.txt", CLASSES)
write("class_file", "bom_crlf.txt", b"\xef\xbb\xbf" + CLASSES.replace("\n", "\r\n").encode())
write("class_file", "latin1.txt", "obj_name\tMäuer\t1\t1\nobj_type\tLine\n".encode("latin-1"))
write("class_file", "utf16.txt", "obj_name\tWall\t1\t1\nobj_type\tLine\n".encode("utf-16"))
write("class_file", "nul.txt", b"obj_name\tW\x00all\t1\t1\nobj_type\tLi\x00ne\n\x00\n")
write("class_file", "overlong.txt",
      "obj_name\t" + "W" * 10300 + "\t1\t1\nobj_type\tLine\n" + "\U0001F600" * 5200 + "\n")
for i, bad in enumerate([
        "class\tA\t1\n", "/class\n", "obj_type\tLine\n", "obj_name\tA\t1\n",
        "obj_name\tA\t1\t1\nvel_name\tT\n", "vel_key\tK\n", "layer\tnothing.dwg\n",
        "obj_name\tA\t1\t1\nobj_type\tLine\nobj_name\ta\t1\t1\nobj_type\tLine\n",
        "whatever\n", "autoconst\n", "variable\tINSBASE\t1\n", "define\tx\n"]):
    write("class_file", "bad%02d.txt" % i, bad)
write("class_file", "example.txt", read("examples/classes.txt"))

# --- Command scripts: each command with typical answers; "~c" lines pick from the table.
SCRIPTS = {
    "demo.scr": read("examples/demo.scr").decode(),
    "classify.scr": "TAXOR_CLASSIFY\nWall\n1\n1\n1\n101\n\nTAXOR_CLASSIFY\nCable\n1\n1\n0\nALL\n\n",
    "auto.scr": "TAXOR_CLASSIFY_AUTO\n1\n1\nALL\n\nTAXOR_RESTORE\n\nALL\n\n",
    "remove.scr": "TAXOR_REMOVE\nCable\nALL\n\nTAXOR_REMOVE_ALL\nALL\n\nTAXOR_STAT\nALL\n\n",
    "select.scr": "TAXOR_SEL\nCable\nTAXOR_SEL_CLASS\nNetworks\nTAXOR_SEL_EXT\nWall\n1\n1\nALL\n\n"
                  "TAXOR_SEL_ALL\n0\nALL\n\nTAXOR_SEL_NULL\n0\nALL\n\n"
                  "TAXOR_SEL_CLASSIFIED\n1\nALL\n\n",
    "duplicates.scr": "TAXOR_SEL_DUPLICATES\nALL\n\n1\nTAXOR_DEL_DUPLICATES\nFirst\nALL\n\n1\n",
    "maintain.scr": "TAXOR_ROUND\nALL\n\nTAXOR_SORT\nALL\n\nTAXOR_ASSERT\n0\nALL\n\n",
    "template.scr": "TAXOR_TYPE\nALL\n\nTAXOR_TEMPLATE\nALL\n\ntemplate.txt\n\n",
    "load.scr": "TAXOR_LOAD\nclasses.txt\nTAXOR_RELOAD\nTAXOR_LOAD\nmissing.txt\nTAXOR_STAT\nALL\n\n",
    "cancel.scr": "TAXOR_CLASSIFY\n\x1b\nTAXOR_CLASSIFY\nWall\n\x1b\nTAXOR_ROUND\n" + "x" * 140 + "\n",
    "picks.scr": "~\x00\n~\x35\n~\x25\n~\x25\n~\x25\n~\x50\n~\x21\n~\x0e\n~\x21\n~\x29\n~\x21\n",
}
for name, text in SCRIPTS.items():
    write("command_session", name, text)

# --- Drawings with edits: the test drawings and the reader's seeds, each with edit bytes.
DRAWINGS = ["tests/data/resource_target.dxf", "tests/data/resource_target_r12.dxf"] + [
    "fuzz/seeds/dxf_reader/" + n for n in sorted(os.listdir(os.path.join(HERE, "seeds/dxf_reader")))]
EDITS = [bytes(range(10)) * 3, bytes([6, 0, 0, 0, 1, 7, 4, 0, 1, 65, 3, 0x40, 0, 0, 0, 0, 2, 1, 6]),
         bytes([3, 0, 0, 0, 0, 5, 0, 0, 0, 1, 0, 0, 0, 0, 4, 0, 0, 0, 2, 8, 0, 0, 0, 3, 9])]
for path in DRAWINGS:
    base = os.path.splitext(os.path.basename(path))[0]
    for i, edits in enumerate(EDITS):
        write("dxf_writer", "%s_%d.dxf" % (base, i), read(path) + b"\0EDITS" + edits)
