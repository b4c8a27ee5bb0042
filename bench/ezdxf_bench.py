#!/usr/bin/python3
"""Times ezdxf on the same tasks as dxf_bench, for comparison.

    ezdxf_bench.py FILE [--tasks load,save,xrecords]   one line per task
    ezdxf_bench.py --task TASK FILE                     run one task in this process
    ezdxf_bench.py --check FILE                         load + audit, print every problem

Each task runs in a fresh interpreter so that its peak resident size is its own. A result
line has the same keys as dxf_bench's:
    task=... files=1 bytes=... seconds=... load_s=... edit_s=... save_s=...
    entities=... peak_rss_kb=... failed=0
Times exclude interpreter start-up and importing ezdxf; the peak includes them.
"""

import argparse
import logging
import os
import resource
import subprocess
import sys
import tempfile
import time

TASKS = ("load", "save", "xrecords")
# The same values dxf_bench writes: text, real, integer, point.
XRECORD_VALUES = [(1, "abc"), (40, 1.5), (90, 7), (10, (1.0, 2.0, 3.0))]


def run_task(task, path):
    import ezdxf  # imported here so the parent process stays small

    load_s = edit_s = save_s = 0.0
    entities = 0
    start = time.perf_counter()
    doc = ezdxf.readfile(path)
    load_s = time.perf_counter() - start

    if task == "xrecords":
        start = time.perf_counter()
        for entity in doc.modelspace():
            xdict = (entity.get_extension_dict() if entity.has_extension_dict
                     else entity.new_extension_dict())
            xrecord = xdict.add_xrecord("TAXOR_BENCH")
            xrecord.extend(XRECORD_VALUES)
            entities += 1
        edit_s = time.perf_counter() - start

    if task in ("save", "xrecords"):
        fd, out = tempfile.mkstemp(prefix="ezdxf_bench_", suffix=".dxf")
        os.close(fd)
        try:
            start = time.perf_counter()
            doc.saveas(out)
            save_s = time.perf_counter() - start
        finally:
            os.unlink(out)

    peak_kb = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss  # KiB on Linux
    print(f"task={task} files=1 bytes={os.path.getsize(path)} "
          f"seconds={load_s + edit_s + save_s:.6f} load_s={load_s:.6f} "
          f"edit_s={edit_s:.6f} save_s={save_s:.6f} entities={entities} "
          f"peak_rss_kb={peak_kb} failed=0", flush=True)


def check(path):
    """Loads and audits; returns the number of problems found."""
    import ezdxf

    messages = []

    class Collect(logging.Handler):
        def emit(self, record):
            messages.append(f"{record.levelname}: {record.getMessage()}")

    logger = logging.getLogger("ezdxf")
    logger.addHandler(Collect(level=logging.INFO))
    logger.setLevel(logging.INFO)

    doc = ezdxf.readfile(path)
    auditor = doc.audit()
    for message in messages:
        print(f"log {message}")
    for error in auditor.errors:
        print(f"audit error {error.code}: {error.message}")
    for fix in auditor.fixes:
        print(f"audit fix {fix.code}: {fix.message}")
    print(f"check file={path} dxfversion={doc.dxfversion} "
          f"entities={len(doc.modelspace())} log={len(messages)} "
          f"errors={len(auditor.errors)} fixes={len(auditor.fixes)}")
    return len(auditor.errors) + len(auditor.fixes)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("file")
    parser.add_argument("--task", choices=TASKS, help="run one task in this process")
    parser.add_argument("--tasks", default=",".join(TASKS),
                        help="comma-separated tasks, each in its own process")
    parser.add_argument("--check", action="store_true", help="load and audit only")
    args = parser.parse_args()

    if args.check:
        return 1 if check(args.file) else 0
    if args.task:
        run_task(args.task, args.file)
        return 0

    status = 0
    for task in args.tasks.split(","):
        if task not in TASKS:
            sys.exit(f"unknown task {task}")
        result = subprocess.run([sys.executable, __file__, "--task", task, args.file],
                                stdout=subprocess.PIPE, text=True)
        if result.returncode != 0:
            print(f"task={task} files=1 bytes={os.path.getsize(args.file)} failed=1",
                  flush=True)
            status = 1
        else:
            sys.stdout.write(result.stdout)
            sys.stdout.flush()
    return status


if __name__ == "__main__":
    sys.exit(main())
