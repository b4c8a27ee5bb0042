#!/usr/bin/python3
"""Checks the object data of a classified drawing with ezdxf, which shares no code with TAXOR.

usage: check_records.py DRAWING CLASSES.json

CLASSES.json maps each class name to its tables and their key fields:
{"Street lamp": {"LAMPS": "CLASS", "MAINTENANCE": "CLASS"}, ...}

Prints one line per class found, "NAME<TAB>ENTITIES", sorted by name. Exit code 1, with the
problems on stdout, when the stored tables or the records are malformed, when a record's key
field names no class, when an entity lacks a table of a class it carries, or when ezdxf's
audit finds errors. Exit code 2: bad usage.
"""

import collections
import json
import sys

import ezdxf

PLACEHOLDERS = {90: 0, 40: 0.0, 1: "", 10: (0.0, 0.0, 0.0)}


def value(tag):
    return tuple(tag.value) if tag.code == 10 else tag.value


def stored_tables(doc, fail):
    """Table name -> list of (field name, group code)."""
    tables = {}
    dictionary = doc.rootdict.get("VELEMUDATA")
    if dictionary is None or dictionary.dxftype() != "DICTIONARY":
        fail("the named-objects dictionary has no VELEMUDATA dictionary")
        return tables
    for name, xrecord in dictionary.items():
        where = f"stored table {name}"
        if xrecord is None or xrecord.dxftype() != "XRECORD":
            fail(f"{where}: not an XRECORD")
            continue
        tags = list(xrecord.tags)
        if not tags or len(tags) % 2:
            fail(f"{where}: {len(tags)} values, not pairs")
            continue
        fields = []
        for label, placeholder in zip(tags[0::2], tags[1::2]):
            if label.code != 1 or not label.value:
                fail(f"{where}: field name tag {label.code} {label.value!r}")
            elif PLACEHOLDERS.get(placeholder.code, object()) != value(placeholder):
                fail(f"{where}: field {label.value}: placeholder {placeholder.code} "
                     f"{placeholder.value!r}")
            else:
                fields.append((label.value, placeholder.code))
        tables[name] = fields
    return tables


def record_classes(entity, name, xrecord, fields, key, fail):
    """The key field's value of each record in the container."""
    where = f"{entity.dxftype()} {entity.dxf.handle}: {name}"
    tags = list(xrecord.tags)
    if not tags or len(tags) % len(fields):
        fail(f"{where}: {len(tags)} values for {len(fields)} fields")
        return []
    for i, tag in enumerate(tags):
        field, code = fields[i % len(fields)]
        if tag.code != code:
            fail(f"{where}: field {field} has code {tag.code}, stored as {code}")
            return []
    index = [f.upper() for f, _ in fields].index(key.upper())
    return [tags[start + index].value for start in range(0, len(tags), len(fields))]


def main(argv):
    if len(argv) != 3:
        print(__doc__)
        return 2
    with open(argv[2], encoding="utf-8") as f:
        catalogue = json.load(f)
    by_lower = {name.lower(): name for name in catalogue}
    problems = []
    fail = problems.append

    doc = ezdxf.readfile(argv[1])
    tables = stored_tables(doc, fail)
    keys = {}  # table -> key field, from the catalogue
    for class_tables in catalogue.values():
        keys.update({table.upper(): key for table, key in class_tables.items()})

    counts = collections.Counter()
    for entity in doc.modelspace():
        if not entity.has_extension_dict:
            continue
        xdict = entity.get_extension_dict()
        carried = collections.defaultdict(set)  # class -> tables naming it
        for name, xrecord in xdict.items():
            if name not in tables:
                continue  # another application's entry
            where = f"{entity.dxftype()} {entity.dxf.handle}: {name}"
            if xrecord is None or xrecord.dxftype() != "XRECORD":
                fail(f"{where}: not an XRECORD")
                continue
            if xrecord.dxf.owner != xdict.dictionary.dxf.handle:
                fail(f"{where}: owned by {xrecord.dxf.owner}")
            key = keys.get(name.upper())
            if key is None or key.upper() not in [f.upper() for f, _ in tables[name]]:
                fail(f"{where}: no key field in the stored table")
                continue
            for text in record_classes(entity, name, xrecord, tables[name], key, fail):
                cls = by_lower.get(str(text).lower())
                if cls is None:
                    fail(f"{where}: key {text!r} names no class")
                else:
                    carried[cls].add(name.upper())
        for cls, found in carried.items():
            missing = {t.upper() for t in catalogue[cls]} - found
            if missing:
                fail(f"{entity.dxftype()} {entity.dxf.handle}: {cls} lacks {sorted(missing)}")
            counts[cls] += 1

    auditor = doc.audit()
    problems += [f"audit: [{e.code}] {e.message}" for e in auditor.errors]

    if problems:
        print("\n".join(problems))
        return 1
    for cls in sorted(counts):
        print(f"{cls}\t{counts[cls]}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
