# Compares the JSON Schema with the reader: CheckSchema.py OVERLAY_STAMP SCHEMA FOLDER...
# What the reader takes is valid. What it refuses is not, but for complaints of what a schema can't say.
import json
import pathlib
import re
import subprocess
import sys

import jsonschema

program, schema_file, *folders = sys.argv[1:]
schema = json.loads(pathlib.Path(schema_file).read_text())
validator = jsonschema.Draft7Validator(schema)
validator.check_schema(schema)
BEYOND = re.compile(r"line \d+, column|can't read|bytes at most|a family of|so many lines|single precision|text: .*{")
counts = {"taken": 0, "refused": 0, "beyond": 0}
for path in sorted(path for folder in folders for path in pathlib.Path(folder).glob("*.json")):
    run = subprocess.run([program, "--check", path], capture_output=True, text=True)
    try:
        is_valid = validator.is_valid(json.loads(path.read_text()))
    except ValueError:
        is_valid = False
    is_beyond = run.returncode != 0 and bool(BEYOND.search(run.stderr))
    kind = "taken" if run.returncode == 0 else "beyond" if is_beyond else "refused"
    counts[kind] += 1
    if not is_beyond and is_valid != (run.returncode == 0):
        sys.exit(f"{path}: the schema {'takes' if is_valid else 'refuses'} it. {run.stderr or 'The reader takes it.'}")
print(counts)
if counts["taken"] < 3 or counts["refused"] < 20:
    sys.exit("too few files")
