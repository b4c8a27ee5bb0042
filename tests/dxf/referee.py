#!/usr/bin/python3
"""Checks a drawing that TAXOR changed against the original with ezdxf.

usage: referee.py ORIGINAL CHANGED EXPECTATIONS.json

Fails (exit code 1, reasons on stdout) when ezdxf cannot read the changed drawing where it
read the original, when its audit of the changed drawing reports problems that the original
did not have, or when an expectation is not met. Exit code 2: bad usage.
"""

import collections
import contextlib
import json
import logging
import math
import re
import sys

import ezdxf
from ezdxf import recover
from ezdxf.lldxf.encoding import decode_dxf_unicode


class LogCollector(logging.Handler):
    def __init__(self):
        super().__init__(logging.WARNING)
        self.messages = []

    def emit(self, record):
        self.messages.append(record.getMessage())


def normalize(message):
    """Handles differ between the drawings; the problem they describe does not."""
    message = re.sub(r"#[0-9A-Fa-f]+", "#H", message)
    message = re.sub(r"(?i)(handle|owner)\s*:?\s*['\"]?[0-9A-F]+['\"]?", r"\1 H", message)
    return message


@contextlib.contextmanager
def logging_to(log):
    logger = logging.getLogger("ezdxf")
    logger.addHandler(log)
    try:
        yield
    finally:
        logger.removeHandler(log)


def load(path):
    """Returns (doc, log, failures); `log` collects the loader's warnings."""
    log, failures = LogCollector(), []
    with logging_to(log):
        try:
            doc = ezdxf.readfile(path)
        except Exception as error:  # whatever stops the strict reader is a finding
            failures.append(f"ezdxf.readfile failed: {error}")
            doc, auditor = recover.readfile(path)
            failures += [f"recover error [{e.code}] {e.message}" for e in auditor.errors]
    return doc, log, failures


def audit(doc, log):
    """Audit findings and loader warnings, by kind, code and message. The audit may remove
    entities, so it runs after the expectations are checked."""
    with logging_to(log):
        auditor = doc.audit()
    problems = collections.Counter()
    for kind, entries in (("error", auditor.errors), ("fix", auditor.fixes)):
        for entry in entries:
            problems[(kind, int(entry.code), normalize(entry.message))] += 1
    for message in log.messages:
        problems[("log", 0, normalize(message))] += 1
    return problems


def decode_escapes(text):
    """Characters a code page lacks are written as \\U+XXXX escapes of UTF-16 units, which
    CAD programs decode and ezdxf leaves as they are."""
    text = decode_dxf_unicode(text)
    return text.encode("utf-16-le", "surrogatepass").decode("utf-16-le", "replace")


def same(actual, expected):
    if isinstance(expected, dict) or isinstance(actual, dict):
        return isinstance(actual, dict) and isinstance(expected, dict) and \
            actual.keys() == expected.keys() and all(same(actual[k], expected[k]) for k in actual)
    if isinstance(expected, bool):
        return bool(actual) == expected
    if isinstance(expected, (int, float)):
        return actual is not None and math.isclose(float(actual), float(expected),
                                                   rel_tol=1e-9, abs_tol=1e-9)
    if isinstance(expected, list):
        values = list(actual) if actual is not None else []
        return len(values) == len(expected) and all(map(same, values, expected))
    if isinstance(expected, str) and isinstance(actual, str):
        return decode_escapes(actual) == expected
    return actual == expected


def xrecord_values(xrecord):
    return [[t.code, list(t.value) if isinstance(t.value, (tuple, list)) or hasattr(t.value, "x")
             else t.value] for t in xrecord.tags]


class Referee:
    def __init__(self, doc):
        self.doc = doc
        self.failures = []

    def fail(self, message):
        self.failures.append(message)

    def layout(self, name):
        return self.doc.modelspace() if name == "*Model_Space" else self.doc.blocks.get(name)

    def check_xrecord(self, where, dictionary, key, values):
        xrecord = dictionary.get(key)
        if xrecord is None or xrecord.dxftype() != "XRECORD":
            return self.fail(f"{where}: no XRECORD under the key {key}")
        if xrecord.dxf.owner != dictionary.dxf.handle:
            self.fail(f"{where}: owned by {xrecord.dxf.owner}")
        actual = xrecord_values(xrecord)
        if not same(actual, values):
            self.fail(f"{where}: values {actual} != {values}")

    def check_xrecords(self, expected):
        for item in expected:
            owner = self.doc.entitydb.get(item["owner"])
            where = f"xrecord {item['key']} of {item['owner']}"
            if owner is None or not owner.has_extension_dict:
                self.fail(f"{where}: the owner or its extension dictionary is missing")
            else:
                xdict = owner.get_extension_dict().dictionary
                self.check_xrecord(where, xdict, item["key"], item["values"])

    def check_dictionary(self, item):
        where = f"named dictionary {item['key']}"
        dictionary = self.doc.rootdict.get(item["key"])
        if dictionary is None or dictionary.dxftype() != "DICTIONARY":
            self.fail(f"{where}: missing from the root dictionary")
        else:
            self.check_xrecord(where, dictionary, item["xrecord"], item["values"])

    DERIVED = {  # values that are not plain DXF attributes
        "vertex_count": lambda e: len(list(e.vertices)) if e.dxftype() == "POLYLINE" else len(e),
        "closed": lambda e: e.is_closed if e.dxftype() == "POLYLINE" else e.closed,
        "polyline_3d": lambda e: e.is_3d_polyline,
        "bulges": lambda e: [v[4] for v in e.get_points("xyseb")],
        "text": lambda e: e.text,
        "control_points": lambda e: len(e.control_points),
        "fit_points": lambda e: len(e.fit_points),
        "knots": lambda e: len(e.knots),
        "paths": lambda e: len(e.paths),
        "pattern_lines": lambda e: len(e.pattern.lines) if e.pattern else 0,
        "attribs": lambda e: {a.dxf.tag: a.dxf.text for a in e.attribs},
    }

    def check_entities(self, expected):
        members = {}
        for item in expected:
            handle, where = item["handle"], f"{item['type']} {item['handle']}"
            entity = self.doc.entitydb.get(handle)
            if entity is None or not entity.is_alive:
                self.fail(f"{where}: missing")
                continue
            if entity.dxftype() != item["type"]:
                self.fail(f"{where}: is a {entity.dxftype()}")
                continue
            layout = self.layout(item["layout"])
            if layout is None:
                self.fail(f"{where}: layout {item['layout']} missing")
                continue
            if entity.dxf.owner != layout.block_record_handle:
                self.fail(f"{where}: owner {entity.dxf.owner}, not {item['layout']}")
            if item["layout"] not in members:
                members[item["layout"]] = {e.dxf.handle for e in layout}
            if handle not in members[item["layout"]]:
                self.fail(f"{where}: not in the entities of {item['layout']}")
            if entity.dxf.layer != item["layer"]:
                self.fail(f"{where}: layer {entity.dxf.layer}")
            for name, value in item.get("checks", {}).items():
                try:
                    get = self.DERIVED[name[1:]] if name.startswith("#") else None
                    actual = get(entity) if get else entity.dxf.get(name)
                except Exception as error:  # a check that cannot run is a failure
                    self.fail(f"{where}: {name}: {type(error).__name__} {error}")
                    continue
                if not same(actual, value):
                    self.fail(f"{where}: {name} is {actual!r}, expected {value!r}")

    def check_erased(self, handles):
        for handle in handles:
            entity = self.doc.entitydb.get(handle)
            if entity is not None and entity.is_alive:
                self.fail(f"erased {handle}: still there as {entity.dxftype()}")

    def check_order(self, relative, full):
        msp = self.doc.modelspace()
        mapping = dict(msp.get_redraw_order())
        if relative and not mapping:
            self.fail("model space has no sort-entities table")
        order = [e.dxf.handle for e in msp.entities_in_redraw_order()]
        position = {handle: i for i, handle in enumerate(order)}
        missing = [h for h in relative if h not in position]
        if missing:
            self.fail(f"draw order: {missing} are not in model space")
            return
        drawn = sorted(relative, key=position.get)
        if drawn != relative:
            self.fail(f"draw order: drawn as {drawn}, expected {relative}")
        if full is not None and order != full:
            diff = next(i for i, (a, b) in enumerate(zip(order + [None], full + [None])) if a != b)
            self.fail(f"draw order differs from TAXOR's from position {diff}: "
                      f"ezdxf {order[diff:diff + 5]}, TAXOR {full[diff:diff + 5]}")


def main(argv):
    if len(argv) != 4:
        print(__doc__)
        return 2
    original_path, changed_path, expectations_path = argv[1:]
    with open(expectations_path, encoding="utf-8") as f:
        expected = json.load(f)

    original, original_log, original_failures = load(original_path)
    changed, changed_log, failures = load(changed_path)
    if original_failures:
        # What the original already suffers from is not the change's fault.
        failures = [f for f in failures if f not in original_failures]

    referee = Referee(changed)
    referee.check_xrecords(expected.get("xrecords", []))
    if "dictionary" in expected:
        referee.check_dictionary(expected["dictionary"])
    referee.check_entities(expected.get("entities", []))
    referee.check_erased(expected.get("erased", []))
    if "relative_order" in expected or "draw_order" in expected:
        referee.check_order(expected.get("relative_order", []), expected.get("draw_order"))
    failures += referee.failures

    new_problems = audit(changed, changed_log) - audit(original, original_log)
    for (kind, code, message), count in sorted(new_problems.items()):
        failures.append(f"new audit {kind} [{code}] x{count}: {message}")

    if failures:
        print(f"{changed_path}: {len(failures)} problem(s)\n  " + "\n  ".join(failures))
        return 1
    print(f"{changed_path}: OK ({len(expected.get('entities', []))} new entities checked)")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
