#!/usr/bin/env python3
"""Checks JSON files against their published schema: schema_test.py SCHEMA FILE..."""

import json
import sys

import jsonschema


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        schema = json.load(file)
    validator = jsonschema.Draft202012Validator(schema)
    validator.check_schema(schema)
    faults = 0
    for name in sys.argv[2:]:
        with open(name, encoding="ascii") as file:
            for error in validator.iter_errors(json.load(file)):
                print(f"{name}: {error.json_path}: {error.message}")
                faults += 1
    return 1 if faults or len(sys.argv) < 3 else 0


if __name__ == "__main__":
    sys.exit(main())
